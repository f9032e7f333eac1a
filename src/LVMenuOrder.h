#import <AppKit/AppKit.h>
#import "LVRecentList.h"
#import "MailInterfaces.h"

@class LVCollator;

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
 * names or members changed, and moves only the records whose place may have changed. It
 * learns of the list's changes through LVRecentListObserver.
 *
 * Every opening asks Mail each listed mailbox's name, so a rename always shows. A mailbox's
 * account, folder and icon are asked again when its record is new, when its name changed,
 * and after -forgetWhatMailSaid.
 */
@interface LVMenuOrder : NSObject <LVRecentListObserver>
{
    LVCollator *_collator;           // owned
    NSMutableArray *_mailNames;      // owned, by slot: Mail's name of the mailbox when last asked
    NSMutableArray *_shownNames;     // owned, by slot: the record's name in the menus
    NSMutableArray *_rowsBySlot;     // owned, by slot: the LVMenuRow showing the record
    NSMutableArray *_rows;           // owned: the rows in menu order, as last ordered
    struct LVMenuOrderState *_state; // owned: plain values only
}

/* Puts the list in the order the menus show under the sort type and gives its records their
   names, as the plain passes would (LVPlainMenuOrder). Answers NO, having changed nothing,
   when a listed record has no mailbox or its mailbox no name: only the plain passes know
   what to do. */
- (BOOL)orderList:(LVRecentList *)list sortType:(int)sortType describer:(id<LVMailboxDescribing>)describer;

/* The LVMenuRow objects of the last ordering, front first. A row that did not change is the
   same object from one ordering to the next. */
- (NSArray *)rows;

/* Mail may have renamed accounts or folders or changed icons: ask it again at the next ordering. */
- (void)forgetWhatMailSaid;

@end
