/*
 * Mail's IMAP account: a MailAccount whose mailbox paths on the server may start with a
 * prefix ("INBOX").
 *
 * Class and selector names are Mail's: the plug-in finds them by name at run time.
 */
#import "MailAccount.h"

@interface IMAPAccount : MailAccount
{
    NSString *_serverPathPrefix;
}
- (NSString *)serverPathPrefix;
- (void)setServerPathPrefix:(NSString *)prefix;
@end
