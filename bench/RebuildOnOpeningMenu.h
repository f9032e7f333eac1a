/*
 * A recent-mailboxes submenu made the way other mail clients make theirs, as a yardstick
 * for the plug-in's: only each mailbox's time of last use is kept, and every opening walks
 * all mailboxes of all active accounts for the most recent ones, sorts them by name and
 * shows them in one submenu.
 *
 * It is modelled at its cheapest, so that the plug-in is not flattered: one hash lookup per
 * mailbox, a heap bounded by the limit for the most recent ones, names compared without the
 * locale's rules, and the submenu's items made once and re-titled only where a title changes.
 */
#import <AppKit/AppKit.h>
#import "MailInterfaces.h"

struct LBLastUseTable;

/* How the yardstick knows a mailbox again at each opening: by the object Mail keeps for it
   this session (cheaper than any client can be), or by the path that names it across
   launches, which is what a client that keeps its list from one launch to the next must ask
   Mail for, mailbox by mailbox. */
typedef enum { LBKnownByObject, LBKnownByPath } LBMailboxIdentity;

@interface LBRebuildOnOpeningMenu : NSObject <NSMenuDelegate>
{
    struct LBLastUseTable *_lastUse;   // owned; a mailbox's time of last use, by mailbox
    unsigned long _clock;              // counts transfers: only the order of uses matters
    NSUInteger _limit;
    NSMenu *_submenu;
    NSArray *_items;                   // made once; the first ones are in the submenu
    BOOL _rebuilding;                  // an opening is under way
    LBMailboxIdentity _identity;
}

- (id)initWithLimit:(NSUInteger)limit identity:(LBMailboxIdentity)identity;

/* The submenu the openings fill, with this object as its delegate; the caller places it. */
- (NSMenu *)submenu;

/* A transfer into the mailbox: all this design keeps is when it happened. */
- (void)noteTransferTo:(id<LVMailboxUid>)mailbox;

/* An opening: the list is made again from every mailbox Mail has. */
- (void)menuNeedsUpdate:(NSMenu *)menu;

@end
