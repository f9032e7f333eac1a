/*
 * Mail's keeper of the mailbox list: it hands out mailbox icons and remembers where
 * the coming transfer goes.
 */
#import <AppKit/AppKit.h>

@class MailboxUid;

@interface MailboxesController : NSObject
{
    MailboxUid *_currentTransferMailbox;    // not retained: the account keeps its mailboxes
    BOOL _currentTransferDeletesOriginals;
}

/* The mailbox kind's icon, 16 points square when small, else 32. Drawn once per kind and
   size and kept for the life of the process; a nil mailbox gets the folder icon. */
+ (NSImage *)iconForMailboxUid:(MailboxUid *)mailbox smallSize:(BOOL)smallSize;

/* Tells Mail where the next transfer goes and whether it deletes the originals. */
- (void)setCurrentTransferMailbox:(MailboxUid *)mailbox deletedOriginals:(BOOL)deleteOriginals;
- (MailboxUid *)currentTransferMailbox;
- (BOOL)currentTransferDeletesOriginals;

@end
