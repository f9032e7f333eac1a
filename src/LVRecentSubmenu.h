#import <AppKit/AppKit.h>

@class LVShortestEdit;

/*
 * One of the five recent submenus, with its items: one pre-made item per possible list entry,
 * each with the submenu's action and no target (the choice travels the responder chain to the
 * viewer in front), above a separator and "Clear Menu".
 *
 * It remembers the rows it shows and brings itself to new rows by the shortest edit
 * (LVShortestEdit): a row that stays keeps its item untouched; a row that goes, comes or
 * changes has its item taken out and, re-titled while out, put back where it belongs. GNUstep
 * lays a menu out again on every change to an item it holds, so an item is never changed in
 * place. Nothing else is expected to add or remove items above the separator; when the item
 * count says something did, the submenu takes out every item there and starts again.
 */
@interface LVRecentSubmenu : NSMenu
{
    SEL _itemAction;
    NSMutableArray *_premadeItems; // owned; the items rows are shown with
    NSMenuItem *_clearItem;        // held by the menu; nil until added
    NSMutableArray *_shownRows;    // owned: the LVMenuRow objects shown, top to bottom
    LVShortestEdit *_edit;         // owned
    struct LVShownItems *_itemUse;  // owned: which pre-made item shows each row, and the free ones
}

- (id)initWithTitle:(NSString *)title itemAction:(SEL)action;

/* The pre-made items, made once: a rebuild only re-titles them. */
- (NSMutableArray *)premadeItems;
/* Makes `count` items. GNUstep makes a new item several times slower than it copies one: the
   first item is the pattern the others are copied from. */
- (void)makePremadeItems:(int)count;

/* Adds a separator, then "Clear Menu", disabled until -setClearItemEnabled:. */
- (void)addSeparator;
- (NSMenuItem *)addClearItemTitled:(NSString *)title;
- (NSMenuItem *)clearItem;

/* Shows these LVMenuRow objects, at most one per pre-made item. */
- (void)showRows:(NSArray *)rows;

/* Only a change is made, taking the item out for it, as for a recent item. */
- (void)setClearItemEnabled:(BOOL)enabled;

@end
