#import "LorvaneBundle_Provider+Menus.h"
#import "LVMenuOrder.h"
#import "LVRecentList.h"
#import "LVRecentSubmenu.h"
#import "LorvaneMailbox.h"
#import "Utilities.h"

#include <vector>

// The five recent submenus, each with its top item, pre-made items and "Clear Menu".
// Most passes visit them in one order; filling them and adding the separators keep
// orders of their own.
enum LVMenuFamily { LVMoveFamily,
    LVCopyFamily,
    LVGoToFamily,
    LVMoveContextualFamily,
    LVCopyContextualFamily };
static const LVMenuFamily LVFamilyOrder[] = { LVMoveFamily, LVCopyFamily, LVMoveContextualFamily, LVCopyContextualFamily, LVGoToFamily };
static const LVMenuFamily LVFamilyFillingOrder[] = { LVMoveFamily, LVCopyFamily, LVGoToFamily, LVMoveContextualFamily, LVCopyContextualFamily };
static const LVMenuFamily LVFamilySeparatorOrder[] = { LVMoveFamily, LVMoveContextualFamily, LVCopyFamily, LVCopyContextualFamily, LVGoToFamily };

// One family's parts, as the provider's fields hold them now. Items have no target: the choice
// travels the responder chain to the viewer in front.
struct LVFamilyParts {
    NSMenu *submenu;
    NSMutableArray *items;
    NSMenuItem *clearItem;
    SEL action;
};

// The steps behind the menus' start-up and rebuild.
@interface LorvaneBundle_Provider (LVMenuParts)
- (NSString *)lv_localizedMenuTitle:(NSString *)english;
- (void)lv_noteMenuBarItem:(NSMenuItem *)item titled:(NSString *)title;
- (NSMenuItem *)lv_menuBarItemTitled:(NSString *)title action:(SEL)action belowItemWithAction:(SEL)above;
- (NSMenu *)lv_newRecentSubmenuTitled:(NSString *)title;
- (void)lv_attachSubmenu:(NSMenu *)submenu toMenuBarItem:(NSMenuItem *)item;
- (void)lv_becomeDelegateOfRecentSubmenus;
- (NSMenuItem *)lv_addClearItemToSubmenu:(NSMenu *)submenu;
- (void)lv_showRows:(const LVMenuRow *)rows count:(NSUInteger)count;
- (LVFamilyParts)lv_partsOfFamily:(LVMenuFamily)family;
@end

@implementation LorvaneBundle_Provider (LVMenus)

#pragma mark Start-up

- (void)lv_loadMenuTitles
{
    _moveToRecentMenuTitle = [[self lv_localizedMenuTitle:@"Move to Recent"] retain];
    _copyToRecentMenuTitle = [[self lv_localizedMenuTitle:@"Copy to Recent"] retain];
    _goToRecentMenuTitle = [[self lv_localizedMenuTitle:@"Go to Recent"] retain];
    _clearMenuTitle = [[self lv_localizedMenuTitle:@"Clear Menu"] retain];
    _gotoMenuTitle = [[self lv_localizedMenuTitle:@"Go To"] retain];
}

// "Copy to Recent" is placed by the action just given to "Move to Recent", so it lands
// right below it. All three are placed before any submenu hangs under them, and each is
// attempted whatever became of the others.
- (void)lv_installMenuBarItems
{
    _moveToRecentMenuItem = [self lv_menuBarItemTitled:_moveToRecentMenuTitle
                                                action:@selector(moveToRecentFromSubmenu:)
                                   belowItemWithAction:@selector(moveMessagesToMailbox:)];
    _copyToRecentMenuItem = [self lv_menuBarItemTitled:_copyToRecentMenuTitle
                                                action:@selector(copyToRecentFromSubmenu:)
                                   belowItemWithAction:@selector(moveToRecentFromSubmenu:)];
    _goToRecentMenuItem = [LVBundleUtilities newMenuItemWithTitle:_goToRecentMenuTitle
                                                           action:@selector(goToRecentFromSubmenu:)
                                                 andKeyEquivalent:@""
                                                           inMenu:[NSApp mainMenu]
                                            underSubmenuWithTitle:_gotoMenuTitle];
    [self lv_noteMenuBarItem:_goToRecentMenuItem titled:_goToRecentMenuTitle];
}

// The contextual submenus are made now but hang under nothing until the first viewer's
// toolbar hands over the message list's menu.
- (void)lv_createRecentSubmenus
{
    _moveToRecentSubmenu = [self lv_newRecentSubmenuTitled:@"_moveToRecentSubmenu"];
    [self lv_attachSubmenu:_moveToRecentSubmenu toMenuBarItem:_moveToRecentMenuItem];
    _copyToRecentSubmenu = [self lv_newRecentSubmenuTitled:@"_copyToRecentSubmenu"];
    [self lv_attachSubmenu:_copyToRecentSubmenu toMenuBarItem:_copyToRecentMenuItem];
    _goToRecentSubmenu = [self lv_newRecentSubmenuTitled:@"_goToRecentSubmenu"];
    [self lv_attachSubmenu:_goToRecentSubmenu toMenuBarItem:_goToRecentMenuItem];

    _moveToRecentContextualSubmenu = [self lv_newRecentSubmenuTitled:@"_moveToRecentContextualSubmenu"];
    _copyToRecentContextualSubmenu = [self lv_newRecentSubmenuTitled:@"_copyToRecentContextualSubmenu"];
    if (!_menusOK)
        return;
    [_moveToRecentContextualSubmenu setAutoenablesItems:NO];
    [_copyToRecentContextualSubmenu setAutoenablesItems:NO];
    [self lv_becomeDelegateOfRecentSubmenus];
}

// Made even when a menu step failed, so that the rebuild always finds its arrays.
- (void)lv_createRecentItemArrays
{
    _moveToRecentSubmenuItems = [[NSMutableArray alloc] init];
    _copyToRecentSubmenuItems = [[NSMutableArray alloc] init];
    _moveToRecentContextualSubmenuItems = [[NSMutableArray alloc] init];
    _copyToRecentContextualSubmenuItems = [[NSMutableArray alloc] init];
    _goToRecentSubmenuItems = [[NSMutableArray alloc] init];
}

// One item per possible list entry and family, made once: a rebuild only re-titles them.
// GNUstep makes a new item several times slower than it copies one: each family's first item
// is the pattern its others are copied from.
- (void)lv_createPremadeRecentItems
{
    if (!_menusOK || _maxMailboxes <= 0)
        return;
    for (LVMenuFamily family : LVFamilyOrder) {
        NSMenuItem *item = [[NSMenuItem alloc] initWithTitle:@"" action:[self lv_partsOfFamily:family].action keyEquivalent:@""];
        [[self lv_partsOfFamily:family].items addObject:item];
        [item release];
    }
    for (int i = 1; i < _maxMailboxes; i++) {
        for (LVMenuFamily family : LVFamilyOrder) {
            NSMutableArray *items = [self lv_partsOfFamily:family].items;
            NSMenuItem *item = [[items objectAtIndex:0] copy];
            [items addObject:item];
            [item release];
        }
    }
}

- (void)lv_finishRecentSubmenus
{
    if (!_menusOK)
        return;
    for (LVMenuFamily family : LVFamilySeparatorOrder)
        [[self lv_partsOfFamily:family].submenu addItem:[NSMenuItem separatorItem]];
    _moveClearMenuItem = [self lv_addClearItemToSubmenu:_moveToRecentSubmenu];
    _copyClearMenuItem = [self lv_addClearItemToSubmenu:_copyToRecentSubmenu];
    _moveClearContextualMenuItem = [self lv_addClearItemToSubmenu:_moveToRecentContextualSubmenu];
    _copyClearContextualMenuItem = [self lv_addClearItemToSubmenu:_copyToRecentContextualSubmenu];
    _goClearMenuItem = [self lv_addClearItemToSubmenu:_goToRecentSubmenu];
    // The first opening of any recent submenu fills all five from the list just read.
    [self signalUpdateMenu];
}

// A contextual item that cannot be placed stops all menu work, the menu bar's included.
- (NSMenuItem *)lv_placeContextualItemTitled:(NSString *)title action:(SEL)action below:(SEL)above inMenu:(NSMenu *)menu orLogLine:(NSString *)logLine
{
    NSMenuItem *item = [LVBundleUtilities newMenuItemWithTitle:title action:action andKeyEquivalent:@"" inMenu:menu underItemWithSelector:above];
    if (item == nil) {
        NSLog(@"%@", logLine);
        _menusOK = NO;
    }
    return item;
}

#pragma mark Rebuilding

- (void)lv_showRowsOfMenuOrder
{
    std::vector<LVMenuRow> rows([_moveToRecentSubmenuItems count]);
    NSUInteger count = [[_recentMailboxes menuOrder] getRows:rows.data() capacity:rows.size()];
    [self lv_showRows:rows.data() count:count];
}

// Entry k of the list takes item k, whether or not entries before it could be shown; a list
// longer than its pre-made items (a negative limit lets it grow) shows the entries that have one.
- (void)lv_showRowsOfList
{
    Class mailboxesController = LVMailClass("MailboxesController");
    NSUInteger itemCount = [_moveToRecentSubmenuItems count];
    std::vector<LVMenuRow> rows;
    NSUInteger k = 0;
    for (LorvaneMailbox *record in _recentMailboxes) {
        id<LVMailboxUid> uid = [record uid];
        if (uid == nil)
            NSLog(@"[Lorvane:updateMenus] invalid recentMailbox UID while updating menus.");
        else if (k < itemCount)
            rows.push_back(LVMenuRow { record, [[([record displayName] ?: @"[error: NULL mailboxName]") copy] autorelease],
                [self lv_toolTipForUid:uid], [mailboxesController iconForMailboxUid:uid smallSize:YES] });
        k++;
    }
    [self lv_showRows:rows.data() count:rows.size()];
}

// "Account/Path/In/Account": the menu shows only the mailbox's name.
- (NSString *)lv_toolTipForUid:(id<LVMailboxUid>)uid
{
    NSString *accountName = [[uid account] displayName] ?: @"[error: NULL accountName]";
    NSString *path = [self accountRelativePathWithoutPrefixForUid:uid] ?: @"[error: NULL accountRelativePath]";
    NSMutableString *toolTip = [NSMutableString stringWithCapacity:1024];
    [toolTip appendString:accountName];
    [toolTip appendString:@"/"];
    [toolTip appendString:path];
    return toolTip;
}

// Runs even when the recent items could not be rebuilt: "Clear Menu" always tells whether
// there is anything to clear. Only a change is passed on, and made as for a recent item.
- (void)lv_enableClearItems
{
    BOOL listHasEntries = [_recentMailboxes count] != 0;
    for (LVMenuFamily family : LVFamilyOrder) {
        LVFamilyParts parts = [self lv_partsOfFamily:family];
        [(LVRecentSubmenu *)parts.submenu setItem:parts.clearItem enabled:listHasEntries];
    }
}

@end

@implementation LorvaneBundle_Provider (LVMenuParts)

// The English text is the key; it also stands in when the bundle cannot be found, so
// the menus never show an empty title.
- (NSString *)lv_localizedMenuTitle:(NSString *)english
{
    if (_thisBundle == nil)
        return english;
    return [_thisBundle localizedStringForKey:english value:english table:@"Localizable"];
}

- (void)lv_noteMenuBarItem:(NSMenuItem *)item titled:(NSString *)title
{
    if (item != nil)
        return;
    NSLog(@"[Lorvane] bundle failed to add \"%@\" menu item.", title);
    _menusOK = NO;
}

- (NSMenuItem *)lv_menuBarItemTitled:(NSString *)title action:(SEL)action belowItemWithAction:(SEL)above
{
    NSMenuItem *item = [LVBundleUtilities newMenuItemWithTitle:title action:action andKeyEquivalent:@"" inMenu:[NSApp mainMenu] underItemWithSelector:above];
    [self lv_noteMenuBarItem:item titled:title];
    return item;
}

- (NSMenu *)lv_newRecentSubmenuTitled:(NSString *)title
{
    NSMenu *submenu = [[LVRecentSubmenu alloc] initWithTitle:title];
    if (submenu == nil)
        _menusOK = NO;
    return submenu;
}

// Each item is enabled by its own flag: the clear items follow the list, not a validator.
- (void)lv_attachSubmenu:(NSMenu *)submenu toMenuBarItem:(NSMenuItem *)item
{
    if (!_menusOK)
        return;
    [submenu setAutoenablesItems:NO];
    [item setSubmenu:submenu];
}

- (void)lv_becomeDelegateOfRecentSubmenus
{
    // GNUstep may ask a new delegate for an update at once, while the submenus are still
    // bare. The update that loading the list asked for waits for the signal that ends
    // start-up, when there is something to fill.
    _updateMenu = NO;
    for (LVMenuFamily family : LVFamilyOrder)
        [[self lv_partsOfFamily:family].submenu setDelegate:self];
}

// The submenu owns its clear item; it starts disabled until the list has an entry.
- (NSMenuItem *)lv_addClearItemToSubmenu:(NSMenu *)submenu
{
    NSMenuItem *clearItem = (NSMenuItem *)[submenu addItemWithTitle:_clearMenuTitle action:@selector(clearRecentMenus:) keyEquivalent:@""];
    [clearItem setEnabled:NO];
    return clearItem;
}

- (void)lv_showRows:(const LVMenuRow *)rows count:(NSUInteger)count
{
    for (LVMenuFamily family : LVFamilyFillingOrder) {
        LVFamilyParts parts = [self lv_partsOfFamily:family];
        [(LVRecentSubmenu *)parts.submenu showRows:rows count:count items:parts.items];
    }
}

#pragma mark The five families

- (LVFamilyParts)lv_partsOfFamily:(LVMenuFamily)family
{
    switch (family) {
    case LVMoveFamily:
        return
        {
            _moveToRecentSubmenu, _moveToRecentSubmenuItems, _moveClearMenuItem, @selector(moveToRecentFromSubmenu:)
        };
    case LVCopyFamily:
        return
        {
            _copyToRecentSubmenu, _copyToRecentSubmenuItems, _copyClearMenuItem, @selector(copyToRecentFromSubmenu:)
        };
    case LVGoToFamily:
        return
        {
            _goToRecentSubmenu, _goToRecentSubmenuItems, _goClearMenuItem, @selector(goToRecentFromSubmenu:)
        };
    case LVMoveContextualFamily:
        return
        {
            _moveToRecentContextualSubmenu, _moveToRecentContextualSubmenuItems, _moveClearContextualMenuItem,
                @selector(moveToRecentFromContextualSubmenu:)
        };
    case LVCopyContextualFamily:
        return
        {
            _copyToRecentContextualSubmenu, _copyToRecentContextualSubmenuItems, _copyClearContextualMenuItem,
                @selector(copyToRecentFromContextualSubmenu:)
        };
    }
    return {};
}

@end
