/*
 * Mailboxes named as a scenario names them, "Account/Path/To/Mailbox", among the accounts
 * Mail is using.
 */
#import <Foundation/Foundation.h>

@class MailboxUid;

/* The active account's mailbox at that path, or nil. Account names may hold "/": each active
   account is tried as the path's beginning. */
MailboxUid *MHActiveMailboxAtPath(NSString *path);
/* "Account/Path" of the mailbox. */
NSString *MHPathOfMailbox(MailboxUid *mailbox);
