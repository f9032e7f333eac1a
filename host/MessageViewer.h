/*
 * Mail's viewer window: the mailbox list on the left, the message list on the right, a
 * toolbar above. The viewer is its window's delegate, so it stands in the responder
 * chain: menu items without a target (Mail's and plug-ins') reach it.
 */
#import <AppKit/AppKit.h>

@class MailboxUid, MessageTransfer, MHMailboxList, TableViewManager;

/* Posted after a mailbox was renamed; the object is the MailboxUid. */
extern NSString *const MHMailboxWasRenamedNotification;

@interface MessageViewer : NSObject
{
    NSWindow *_window;
    NSToolbar *_toolbar;                // read by plug-ins as "_toolbar"
    TableViewManager *_tableManager;    // the message list; read by plug-ins as "_tableManager"
    MHMailboxList *_mailboxList;
    NSArray *_selectedMailboxes;
    MessageTransfer *_lastTransfer;
}

/* Builds the window, hidden, and gives the toolbar this viewer as its delegate. */
- (id)init;
- (NSWindow *)window;
/* Brings the window to the front, key and main. */
- (void)showWindow;

- (NSArray *)selectedMailboxes;
/* Shows these mailboxes as selected and lists their messages. */
- (void)setSelectedMailboxes:(NSArray *)mailboxes;
- (TableViewManager *)messageList;

/* Moves (YES) or copies (NO) the selected messages into the mailbox: makes a
   MessageTransfer, sets this viewer as its delegate, then carries it out. Nothing
   happens without a mailbox or a selection. */
- (void)transferSelectedMessagesToMailbox:(MailboxUid *)mailbox deleteOriginals:(BOOL)deleteOriginals;
/* The transfer most recently made by this viewer, or nil. */
- (MessageTransfer *)lastTransfer;

/* Message > Move To… and Copy To…: ask for a mailbox, then transfer. */
- (void)moveMessagesToMailbox:(id)sender;
- (void)copyMessagesToMailbox:(id)sender;
/* Mailbox > Go To items: the item's represented object is the mailbox. */
- (void)showMailbox:(id)sender;

/* Mail's handler of a renamed mailbox: shows the new name. */
- (void)_mailboxWasRenamed:(NSNotification *)notification;
- (void)windowDidBecomeMain:(NSNotification *)notification;
/* Accounts or mailboxes changed: the lists show them anew. */
- (void)mailboxesDidChange;

@end
