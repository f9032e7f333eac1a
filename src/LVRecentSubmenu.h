#import <AppKit/AppKit.h>
#import "LVMenuOrder.h"

/*
 * One of the five recent submenus.
 *
 * It remembers the rows it shows above its separator and "Clear Menu" and brings itself to
 * new rows by the smallest edit: a row that stays keeps its item untouched; a row that goes,
 * comes or changes has its item taken out and, re-titled while out, put back where it
 * belongs. GNUstep lays a menu out again on every change to an item it holds, so an item is
 * never changed in place.
 *
 * Each row shows one of the family's pre-made items. Nothing else is expected to add or
 * remove items above the separator; when the item count says something did, the submenu
 * takes out every item there and starts again.
 */
@interface LVRecentSubmenu : NSMenu
{
    struct LVShownRows *_shown; // owned
}

/* Shows these rows, at most one per item of `items`, the family's pre-made items. */
- (void)showRows:(const LVMenuRow *)rows count:(NSUInteger)count items:(NSArray *)items;

/* Enables or disables one of its items, taking it out for the change when the state changes. */
- (void)setItem:(NSMenuItem *)item enabled:(BOOL)enabled;

@end
