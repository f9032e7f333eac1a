/*
 * Mail's manager of the message list: the table of the shown mailboxes' messages
 * (sender, subject, date), its selection, and its contextual menu.
 */
#import <AppKit/AppKit.h>

@interface TableViewManager : NSObject
{
    NSScrollView *_scrollView;
    NSTableView *_tableView;    // its menu is the message list's contextual menu
    NSArray *_mailboxes;        // the mailboxes whose messages are shown
    NSArray *_messages;         // MHMessageSummary, in list order
}

/* A message list filling the frame; the table's menu is a new contextual menu with
   Mail's "Move To…" and "Copy To…". */
- (id)initWithFrame:(NSRect)frame;

- (NSTableView *)tableView;
/* The view to place in a window: the table inside its scroll view. */
- (NSScrollView *)scrollView;

/* Shows the messages of these mailboxes (none for nil), selecting nothing. */
- (void)showMessagesOfMailboxes:(NSArray *)mailboxes;
/* Reads the shown mailboxes' message files again; the selection is cleared. */
- (void)reloadMessages;

/* Paths of the shown messages, in list order, and of the selected ones. */
- (NSArray *)messagePaths;
- (NSArray *)selectedMessagePaths;
/* Selects exactly these rows; NO (selecting nothing) when any index is out of range. */
- (BOOL)selectMessagesAtIndexes:(NSIndexSet *)indexes;

@end
