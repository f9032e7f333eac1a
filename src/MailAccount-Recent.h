#import <AppKit/AppKit.h>

/*
 * Tells the provider a mailbox is about to be deleted, so it leaves the list at the next opening.
 * At start-up, +lv_installInMail copies these methods into Mail's MailAccount and patches MailAccount.
 */
@interface MailAccount_LVAdditions : NSObject

+ (void)lv_installInMail;
- (BOOL)LVdeleteMailbox:(id)mailbox reflectToServer:(BOOL)reflectToServer;

@end
