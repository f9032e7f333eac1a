#import "LorvaneBundle_Provider.h"

/*
 * The provider's menus: the three items it adds to Mail's menu bar, the two it adds to the
 * message list's contextual menu, and the five recent submenus under them, each with one
 * pre-made item per possible list entry and a "Clear Menu" item.
 *
 * A step that fails clears the provider's _menusOK; the steps after it then leave the menus
 * alone, and the submenus are not rebuilt.
 */
@interface LorvaneBundle_Provider (LVMenus)

/* Start-up, in this order. */
- (void)lv_loadMenuTitles;
- (void)lv_installMenuBarItems;
- (void)lv_createRecentSubmenus;
- (void)lv_createRecentItemArrays;
- (void)lv_createPremadeRecentItems;
- (void)lv_finishRecentSubmenus;

/* A new item in the contextual menu below the item with action `above`; nil, with the line
   logged, when there is none. */
- (NSMenuItem *)lv_placeContextualItemTitled:(NSString *)title action:(SEL)action below:(SEL)above inMenu:(NSMenu *)menu orLogLine:(NSString *)logLine;

/* Rebuilding: the recent items from the list's menu order, or from the list as it stands. */
- (void)lv_showRowsOfMenuOrder;
- (void)lv_showRowsOfList;
- (void)lv_enableClearItems;
/* "Account/Path/In/Account", autoreleased. */
- (NSString *)lv_toolTipForUid:(id<LVMailboxUid>)uid;

@end
