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

@interface LBRebuildOnOpeningMenu : NSObject <NSMenuDelegate>
{
    struct LBLastUseTable *_lastUse;   // owned; a mailbox's time of last use, by mailbox
    unsigned long _clock;              // counts transfers: only the order of uses matters
    NSUInteger _limit;
    NSMenu *_submenu;
    NSArray *_items;                   // made once; the first ones are in the submenu
    BOOL _rebuilding;                  // an opening is under way
}

- (id)initWithLimit:(NSUInteger)limit;

/* The submenu the openings fill, with this object as its delegate; the caller places it. */
- (NSMenu *)submenu;

/* A transfer into the mailbox: all this design keeps is when it happened. */
- (void)noteTransferTo:(id<LVMailboxUid>)mailbox;

/* An opening: the list is made again from every mailbox Mail has. */
- (void)menuNeedsUpdate:(NSMenu *)menu;

@end
