/*
 * The viewer's mailbox list: each active account's name, then its mailboxes, indented by
 * depth, each with its kind's icon. Choosing mailboxes tells the target.
 */
#import <AppKit/AppKit.h>

@class MailAccount, MailboxUid;

@interface MHMailboxList : NSObject
{
    NSScrollView *_scrollView;
    NSTableView *_tableView;
    NSArray *_rows;             // MailAccount (a heading) or MailboxUid, in display order
    id _target;                 // not retained: the viewer owns the list
    SEL _action;                // sent with this list when the user changes the selection
    BOOL _selectingProgrammatically;
}

/* The account's mailboxes as Mail lists them: at the top Inbox, Drafts, Sent, Junk and
   Trash first, then the others in the account's order; each followed by the mailboxes
   inside it. */
+ (NSArray *)mailboxesInDisplayOrder:(MailAccount *)account;

- (id)initWithFrame:(NSRect)frame;
- (NSScrollView *)scrollView;
- (NSTableView *)tableView;
- (void)setTarget:(id)target action:(SEL)action;

/* Rebuilds the rows from the active accounts, keeping the selected mailboxes selected. */
- (void)reload;
/* The selected mailboxes, in list order. */
- (NSArray *)selectedMailboxes;
/* Selects the rows of these mailboxes without telling the target. */
- (void)selectMailboxes:(NSArray *)mailboxes;

@end
