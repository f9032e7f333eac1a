/*
 * Changes a user makes in Mail's account settings: an account's name, and a mailbox taken as
 * one of its account's special mailboxes, whose icon changes with its kind. Mail then tells
 * its accounts pane that the accounts changed. The changes last until Mail quits; the store's
 * files keep the settings they had.
 */
#import "MailApp.h"

@class MailAccount;

@interface MailApp (MHAccountSettings)
- (void)renameAccount:(MailAccount *)account toName:(NSString *)name;
/* One of the kinds in MailboxUid.h; MHMailboxTypeGeneric makes it a plain mailbox again. */
- (void)useMailbox:(MailboxUid *)mailbox asMailboxOfType:(int)type;
@end
