#import <AppKit/AppKit.h>

/*
 * Saves the recent list when Mail quits, before Mail's own handler runs.
 * At start-up, +lv_installInMail copies these methods into Mail's MailApp and patches MailApp.
 */
@interface MailApp_LVAdditions : NSObject

+ (void)lv_installInMail;
- (void)LVapplicationWillTerminate:(id)notification;

@end
