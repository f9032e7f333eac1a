#import "MHMailboxPaths.h"
#import "MailAccount.h"
#import "MailboxUid.h"

MailboxUid *MHActiveMailboxAtPath(NSString *path)
{
    for (MailAccount *account in [MailAccount activeAccounts]) {
        NSString *prefix = [[account displayName] stringByAppendingString:@"/"];
        if (![path hasPrefix:prefix])
            continue;
        MailboxUid *mailbox = [account mailboxUidForRelativePath:[path substringFromIndex:[prefix length]]];
        if (mailbox != nil)
            return mailbox;
    }
    return nil;
}

NSString *MHPathOfMailbox(MailboxUid *mailbox)
{
    return [NSString stringWithFormat:@"%@/%@", [[mailbox account] displayName], [mailbox accountRelativePath]];
}
