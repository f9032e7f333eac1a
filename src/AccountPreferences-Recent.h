#import <AppKit/AppKit.h>

/*
 * Tells the provider when the user's accounts changed, so mailboxes that went with an account leave the list.
 * At start-up, +lv_installInMail copies these methods into Mail's AccountPreferences and patches AccountPreferences.
 */
@interface AccountPreferences_MFAdditions : NSObject

+ (void)lv_installInMail;
- (void)LVaccountsDidChange:(id)notification;

@end
