#import <AppKit/AppKit.h>
#import "LVRecentList.h"
#import "MailInterfaces.h"

@class LorvaneMailbox;
@class LVRecentList;

/* One recent item as the submenus show it. Nothing here is retained for the caller. */
typedef struct {
    LorvaneMailbox *record;
    NSString *title;
    NSString *toolTip;
    NSImage *icon;
} LVMenuRow;

/* What the menus need to ask of Mail about the listed mailboxes. */
@protocol LVMailboxDescribing <NSObject>
/* Gives each record of a group whose mailboxes share Mail's name a name that tells it apart. */
- (void)lv_nameMailboxesSharingName:(NSArray *)group;
- (NSString *)lv_toolTipForMailbox:(id<LVMailboxUid>)mailbox;
- (NSImage *)lv_iconForMailbox:(id<LVMailboxUid>)mailbox;
@end

/*
 * The order and the names the recent submenus show, kept from one opening to the next.
 *
 * An opening sorts the list by Mail's names, names each run of records whose mailboxes share
 * a name after their account and folder, then sorts the list by the sort type: by those
 * names, newest first, or most used first, ties kept in the order the runs left. This class
 * gives the same order and names while doing only what the changes since the last opening
 * call for. It remembers what Mail said of each listed mailbox (its name, tool tip and icon),
 * compares names by collation keys made once per name, names again only the runs whose
 * names or members changed, and moves only the records whose place may have changed.
 *
 * Every opening asks Mail each listed mailbox's name, so a rename always shows. A mailbox's
 * account, folder and icon are asked again when its record is new, when its name changed,
 * and after -forgetWhatMailSaid.
 */
@interface LVMenuOrder : NSObject <LVRecentListObserver>
{
    LVRecentList *_list;             // not retained: the list owns this order
    struct LVMenuOrderState *_state; // owned
}

- (id)initWithList:(LVRecentList *)list;

/* Puts the list in the order the menus show under the sort type and gives its records their
   names, as the full name pass and sorts would. Answers NO, having changed nothing, when a
   listed record has no mailbox or its mailbox no name: only the plain steps know what to do. */
- (BOOL)orderList:(LVRecentList *)list sortType:(int)sortType describer:(id<LVMailboxDescribing>)describer;

/* The rows of the last ordering, front first, at most `capacity`; answers how many. */
- (NSUInteger)getRows:(LVMenuRow *)rows capacity:(NSUInteger)capacity;

/* Mail may have renamed accounts or folders or changed icons: ask it again at the next ordering. */
- (void)forgetWhatMailSaid;

@end
