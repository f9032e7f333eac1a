#import "LorvaneBundle_Provider.h"
#import "LVMailboxNames.h"
#import "LVMenuOrder.h"
#import "LVPlainMenuOrder.h"
#import "LVPreferencesFile.h"
#import "LVRecentItemsLimit.h"
#import "LVRecentList.h"
#import "LVRecentSubmenu.h"
#import "LVSavedList.h"
#import "LorvaneMailbox.h"
#import "Utilities.h"

#include <cstdio>

// Carbon's system-version call. Mail's process provides it; the symbol is resolved when
// the bundle is loaded, so the plug-in never links against Carbon.
extern "C" short Gestalt(unsigned int selector, int *response);

// The process-wide start-up flag: cleared when the system is too old or the provider
// fails to start, after which the plug-in stays inert and never touches the preferences.
static BOOL initOK = YES;
// The provider singleton, stored by the provider's -init; nil until start-up has finished.
static id _activeLorvaneBundle_Provider = nil;

// Gestalt's gestaltSystemVersion selector, the four characters 'sysv'.
static const unsigned int LVGestaltSystemVersion = 0x73797376;
// 10.6.0 in Gestalt's one-digit-per-nibble form; anything older lacks what Mail's hooks need.
static const int LVOldestSupportedSystem = 0x1060;

// The two start-up alerts: modal on purpose, so the user knows why Lorvane does nothing
// before Mail finishes starting. The icon comes from the bundle of the class given.
static void showStartupAlert(NSString *text, Class iconClass)
{
    NSAlert *alert = [NSAlert alertWithMessageText:@"Lorvane Plugin Notification"
                                     defaultButton:nil
                                   alternateButton:nil
                                       otherButton:nil
                         informativeTextWithFormat:@"%@", text];
    [alert setAlertStyle:NSCriticalAlertStyle];
    NSString *iconPath = [[NSBundle bundleForClass:iconClass] pathForImageResource:@"icon"];
    NSImage *icon = iconPath != nil ? [[NSImage alloc] initWithContentsOfFile:iconPath] : nil;
    [alert setIcon:icon];
    [icon release];
    [alert runModal];
}

// Gathers the names of the other installed plug-ins. The line is a diagnostic that is kept
// quiet on purpose: it is built and dropped.
static void gatherInstalledBundleNames(void)
{
    NSMutableString *line = [NSMutableString stringWithString:@"Installed bundles: "];
    NSString *folder = [NSHomeDirectory() stringByAppendingPathComponent:@"Library/Mail/Bundles"];
    for (NSString *entry in [[NSFileManager defaultManager] contentsOfDirectoryAtPath:folder error:NULL]) {
        if (![[entry pathExtension] isEqualToString:@"mailbundle"])
            continue;
        [line appendString:[entry stringByDeletingPathExtension]];
        [line appendString:@" "];
    }
}

// The debugging dumps: Mail's name and address of each listed mailbox, and its path.
static void printList(NSArray *list, const char *beginLine, const char *endLine, BOOL withPaths)
{
    std::printf("%s\n", beginLine);
    for (LorvaneMailbox *record in list) {
        id<LVMailboxUid> uid = [record uid];
        const char *name = [[uid displayName] UTF8String];
        const char *path = [[uid fullPath] UTF8String];
        if (withPaths)
            std::printf("%s, %p, %s\n", name != NULL ? name : "(null)", (void *)uid, path != NULL ? path : "(null)");
        else
            std::printf("%s, %p\n", name != NULL ? name : "(null)", (void *)uid);
    }
    std::printf("%s\n", endLine);
}

// The five recent submenus, in the orders the passes over them keep: most visit them in one
// order; showing rows and adding the separators keep orders of their own.
enum LVMenuFamily {
    LVMoveFamily,
    LVCopyFamily,
    LVGoToFamily,
    LVMoveContextualFamily,
    LVCopyContextualFamily,
};
static const LVMenuFamily LVFamilyOrder[] = { LVMoveFamily, LVCopyFamily, LVMoveContextualFamily, LVCopyContextualFamily, LVGoToFamily };
static const LVMenuFamily LVFamilyShowingOrder[] = { LVMoveFamily, LVCopyFamily, LVGoToFamily, LVMoveContextualFamily, LVCopyContextualFamily };
static const LVMenuFamily LVFamilySeparatorOrder[] = { LVMoveFamily, LVMoveContextualFamily, LVCopyFamily, LVCopyContextualFamily, LVGoToFamily };

// The provider's own helpers. Mail sees them as methods of its MVMailBundle subclass, so each
// bears a prefix Mail's methods never do.
@interface LorvaneBundle_Provider (LVStartUp)
- (void)lv_loadMenuTitles;
- (void)lv_installMenuBarItems;
- (void)lv_createRecentSubmenus;
- (void)lv_createPremadeRecentItems;
- (void)lv_finishRecentSubmenus;
- (NSMenuItem *)lv_placeContextualItemTitled:(NSString *)title action:(SEL)action below:(SEL)above inMenu:(NSMenu *)menu orLogLine:(NSString *)logLine;
@end

@interface LorvaneBundle_Provider (LVMenuFamilies) <LVMailboxDescribing>
- (LVRecentSubmenu *)lv_submenuOfFamily:(LVMenuFamily)family;
@end

// On a Mac every NSMenuDelegate method is optional; GNUstep declares them all required,
// and the provider answers only menuNeedsUpdate:.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wprotocol"

@implementation LorvaneBundle_Provider

#pragma mark Loading into Mail

+ (void)lv_startInMail
{
    initOK = YES;
    int MacVersion = 0;
    short status = Gestalt(LVGestaltSystemVersion, &MacVersion);
    if (status != 0) {
        initOK = NO;
        showStartupAlert(@"Gestalt(gestaltSystemVersion, &MacVersion) FAILED. Notify developer.", [LorvaneBundle_Provider class]);
    } else if (MacVersion < LVOldestSupportedSystem) {
        initOK = NO;
        showStartupAlert(@"You must be using at least OS X 10.6 (Snow Leopard) for this plugin to work.", [LorvaneBundle_Provider class]);
    }
    if (!initOK)
        return;

    Class subclass = [LVBundleUtilities subclass:LVMailClass("MVMailBundle")
                                  usingClassName:@"LorvaneBundle"
                                   providerClass:[LorvaneBundle_Provider class]];
    // Mail can still run without the plug-in, so this failure is logged, not alerted, and
    // leaves the start-up flag alone: nothing was registered that could write preferences.
    if (subclass == Nil) {
        NSLog(@"[Lorvane] Failed to create subclass LorvaneBundle of MVMailBundle.");
        return;
    }
    // The first message to the new class runs its +initialize, which registers it with Mail.
    [NSClassFromString(@"LorvaneBundle") logBundleVersion];
    gatherInstalledBundleNames();
}

+ (void)initialize
{
    if (!initOK)
        return;
    // Only Mail's copy of this class registers; the provider itself is never Mail's plug-in.
    if (self == NSClassFromString(@"LorvaneBundle_Provider"))
        return;
    Class bundleClass = NSClassFromString(@"LorvaneBundle");
    if (bundleClass == Nil)
        return;
    [(Class<LVMailBundle>)bundleClass registerBundle];
}

+ (id)activeLorvaneBundle_Provider
{
    return _activeLorvaneBundle_Provider;
}

+ (void)logBundleVersion
{
    NSBundle *bundle = [NSBundle bundleWithIdentifier:LVBundleIdentifier];
    id version = [bundle objectForInfoDictionaryKey:@"CFBundleVersion"];
    NSLog(@"[Lorvane] Loaded %@ bundle %@", NSClassFromString(@"LorvaneBundle"), version);
}

#pragma mark The list

// The record is made before the list is searched, so that one that cannot be made leaves the
// list as it was on a hit too. A hit dates the listed record with the new record's date: both
// are the time of this use.
- (void)addOrTouchRecentMailboxFromUid:(id<LVMailboxUid>)uid
{
    if (_maxMailboxes == 0)
        return;
    if (_excludeSpecialMailboxes && ![(Class<LVMailboxUid>)LVMailClass(@"MailboxUid") typeIsGeneric:[uid type]])
        return;
    LorvaneMailbox *record = [[LorvaneMailbox alloc] init];
    if (record == nil) {
        NSLog(@"[Lorvane:addOrTouchRecentMailboxFromUid] failed to allocate LorvaneMailbox object.");
        return;
    }
    if ([_recentMailboxes touchRecordOfMailbox:uid date:[record date]] == nil) {
        // Only a list that is exactly full makes room: one that outgrew a lowered limit
        // keeps its records rather than losing several at once.
        if ([_recentMailboxes count] == (NSUInteger)_maxMailboxes)
            [_recentMailboxes removeLastRecordInEvictionOrder];
        [record setUid:uid];
        [_recentMailboxes insertObject:record atIndex:0];
    }
    [record release];
    // The list tells the menus itself what changed: only the flag is raised here.
    _updateMenu = YES;
}

- (id<LVMailboxUid>)getRecentMailboxUidAtIndex:(int)index
{
    return [[self getRecentMailboxAtIndex:index] uid];
}

- (LorvaneMailbox *)getRecentMailboxAtIndex:(int)index
{
    return [_recentMailboxes objectAtIndex:(NSUInteger)index];
}

- (int)getRecentMailboxIndexWithUid:(id<LVMailboxUid>)uid
{
    return _recentMailboxes != nil ? [_recentMailboxes indexOfMailbox:uid] : -1;
}

- (int)getSortType
{
    return _sortType;
}

- (void)incrementAccessesForItemAtIndex:(int)index
{
    [_recentMailboxes incrementAccessesOfRecordAtIndex:(NSUInteger)index];
}

- (id<LVMailboxUid>)mailboxUidForFullPath:(NSString *)fullPath
{
    return [LVSavedList mailboxWithFullPath:fullPath];
}

- (void)clearRecentMailboxes
{
    [_recentMailboxes removeAllObjects];
    [self signalUpdateMenu];
}

- (void)removeDeletedMailboxes
{
    NSIndexSet *deleted = [LVSavedList indexesOfRecordsWithoutMailboxIn:_recentMailboxes];
    if ([deleted count] == 0)
        return;
    [_recentMailboxes removeObjectsAtIndexes:deleted];
    [self signalUpdateMenu];
}

// Whoever signals may have changed what Mail says of a listed mailbox (a rename, an account
// that changed): the next opening asks Mail again about every one of them.
- (void)signalUpdateMenu
{
    _updateMenu = YES;
    [[_recentMailboxes menuOrder] forgetWhatMailSaid];
}

- (void)signalRemoveDeletedMailboxes
{
    _removeDeletedMailboxes = YES;
}

- (void)listRecentMailboxUids
{
    printList(_recentMailboxes, "***************** BEGIN listRecentMailboxUids *****************",
        "***************** END listRecentMailboxUids *****************", NO);
}

- (void)listRecentMailboxes
{
    printList(_recentMailboxes, "***************** BEGIN listRecentMailboxes *****************",
        "***************** END listRecentMailboxes *****************", YES);
}

#pragma mark Names for duplicates

- (BOOL)multipleAccountsInRecentMailboxes:(NSArray *)group
{
    return [LVMailboxNames accountsDifferIn:group];
}

- (void)extendNamesForDuplicateMailboxes:(NSArray *)group includesMultipleAccounts:(BOOL)multipleAccounts
{
    [LVMailboxNames nameNamesakes:group byAccount:multipleAccounts];
}

- (NSMutableString *)accountRelativePathWithoutPrefixForUid:(id<LVMailboxUid>)uid
{
    return [LVMailboxNames pathInAccountOfMailbox:uid];
}

#pragma mark The preferences file

- (void)readPreferences
{
    LVPreferencesFile *file = [LVPreferencesFile userPreferencesFile];
    [file read];
    _excludeSpecialMailboxes = [file excludesSpecialMailboxes];
    _sortType = [file sortType];
    NSArray *paths = nil;
    NSArray *records = [file savedRecordsWithPaths:&paths];
    NSArray *loaded = [LVSavedList listRestoredFromRecords:records paths:paths limit:_maxMailboxes sortType:_sortType];
    [_recentMailboxes release];
    _recentMailboxes = [[LVRecentList alloc] initWithSortType:_sortType];
    [_recentMailboxes addObjectsFromArray:loaded];
    [self signalUpdateMenu];
}

- (void)writePreferences
{
    // A plug-in that did not start has only defaults: the user's file is left as it is.
    if (!initOK)
        return;
    if (![[LVPreferencesFile userPreferencesFile] writeSortType:_sortType excludeSpecialMailboxes:_excludeSpecialMailboxes records:_recentMailboxes])
        NSLog(@"[Lorvane] error writing to preferences file.");
}

#pragma mark Start-up

- (id)init
{
    if (!initOK)
        return self; // loading already failed: stay inert, and do not become the singleton
    _activeLorvaneBundle_Provider = self;
    _thisBundle = [[NSBundle bundleWithIdentifier:LVBundleIdentifier] retain];
    _menusOK = YES;
    if (nil == (self = [super init])) {
        initOK = NO;
        NSLog(@"Lorvane bundle FAILED to initialize itself (in init).");
        return nil;
    }

    _maxMailboxes = [LVRecentItemsLimit systemLimit];
    // Only exactly 0 is worth a word: a negative limit simply makes no items.
    if (_maxMailboxes == 0)
        showStartupAlert(@"\"Number of Recent Items\" must be > 0.", [self class]);
    [self readPreferences];
    [self lv_loadMenuTitles];
    [self lv_installMenuBarItems];
    [self lv_createRecentSubmenus];
    [self lv_createPremadeRecentItems];
    [self lv_finishRecentSubmenus];
    if (!_menusOK)
        initOK = NO;
    return self;
}

// Mail hands over the message list's menu once per process. Later calls only hang the
// submenus under the existing contextual items again; they insert nothing.
- (void)createContextualSubmenusUnderMenu:(NSMenu *)menu
{
    if (_menusOK && _moveToRecentContextualMenuItem == nil)
        _moveToRecentContextualMenuItem = [self lv_placeContextualItemTitled:_moveToRecentMenuTitle
                                                                      action:@selector(moveToRecentFromContextualSubmenu:)
                                                                       below:@selector(moveMessagesToMailbox:)
                                                                      inMenu:menu
                                                                   orLogLine:@"[Lorvane] Failed to set Move to Recent contextual menu."];
    if (_menusOK && _copyToRecentContextualMenuItem == nil)
        _copyToRecentContextualMenuItem = [self lv_placeContextualItemTitled:_copyToRecentMenuTitle
                                                                      action:@selector(copyToRecentFromContextualSubmenu:)
                                                                       below:@selector(moveToRecentFromContextualSubmenu:)
                                                                      inMenu:menu
                                                                   orLogLine:@"[Lorvane] Failed to set Copy to Recent contextual menu."];
    if (!_menusOK)
        return;
    [_moveToRecentContextualMenuItem setSubmenu:_moveToRecentContextualSubmenu];
    [_copyToRecentContextualMenuItem setSubmenu:_copyToRecentContextualSubmenu];
}

#pragma mark Rebuilding

// One rebuild serves all five submenus, whichever of them is opening.
- (void)menuNeedsUpdate:(NSMenu *)menu
{
    if (_removeDeletedMailboxes) {
        [self removeDeletedMailboxes];
        _removeDeletedMailboxes = NO;
    }
    if (!_updateMenu)
        return;
    // Cleared before the rebuild rather than after: GNUstep asks again while, or right
    // after, items are inserted and removed, and those calls must find nothing to do.
    _updateMenu = NO;
    if (_menusOK)
        [self updateMenus];
}

// The list's menu order gives the order and names the plain passes would give, doing only
// what changed; a list it cannot order takes the plain passes. Without menus, the records are
// only named.
- (void)updateMenus
{
    if (_recentMailboxes == nil)
        return;
    NSArray *rows = nil;
    LVMenuOrder *menuOrder = [_recentMailboxes menuOrder];
    if (!_menusOK) {
        [LVPlainMenuOrder nameList:_recentMailboxes describer:self];
    } else if ([menuOrder orderList:_recentMailboxes sortType:_sortType describer:self]) {
        rows = [menuOrder rows];
    } else {
        [LVPlainMenuOrder orderList:_recentMailboxes sortType:_sortType describer:self];
        rows = [LVPlainMenuOrder rowsOfList:_recentMailboxes capacity:[_moveToRecentSubmenuItems count] describer:self];
    }
    if (_menusOK)
        for (LVMenuFamily family : LVFamilyShowingOrder)
            [[self lv_submenuOfFamily:family] showRows:rows];
    // "Clear Menu" always tells whether there is anything to clear.
    for (LVMenuFamily family : LVFamilyOrder)
        [[self lv_submenuOfFamily:family] setClearItemEnabled:[_recentMailboxes count] != 0];
}

- (void)lv_nameMailboxesSharingName:(NSArray *)group
{
    BOOL multipleAccounts = [self multipleAccountsInRecentMailboxes:group];
    [self extendNamesForDuplicateMailboxes:group includesMultipleAccounts:multipleAccounts];
}

- (NSString *)lv_toolTipForMailbox:(id<LVMailboxUid>)mailbox
{
    return [LVMailboxNames toolTipOfMailbox:mailbox];
}

- (NSImage *)lv_iconForMailbox:(id<LVMailboxUid>)mailbox
{
    return [(Class<LVMailboxesController>)LVMailClass(@"MailboxesController") iconForMailboxUid:mailbox smallSize:YES];
}

#pragma mark Accessors

- (NSMenu *)moveToRecentSubmenu
{
    return _moveToRecentSubmenu;
}

- (NSMenu *)copyToRecentSubmenu
{
    return _copyToRecentSubmenu;
}

- (NSMenu *)moveToRecentContextualSubmenu
{
    return _moveToRecentContextualSubmenu;
}

- (NSMenu *)copyToRecentContextualSubmenu
{
    return _copyToRecentContextualSubmenu;
}

- (NSMenu *)goToRecentSubmenu
{
    return _goToRecentSubmenu;
}

// Not retained: the viewer outlives the reference or a newer one replaces it.
- (void)setFrontmostMessageViewer:(id)viewer
{
    _frontmostMessageViewer = viewer;
}

- (id)frontmostMessageViewer
{
    return _frontmostMessageViewer;
}

@end

@implementation LorvaneBundle_Provider (LVStartUp)

// The English text is the key; it also stands in when the bundle cannot be found, so
// the menus never show an empty title.
- (NSString *)lv_localizedMenuTitle:(NSString *)english
{
    if (_thisBundle == nil)
        return english;
    return [_thisBundle localizedStringForKey:english value:english table:@"Localizable"];
}

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

- (NSMenuItem *)lv_menuBarItemTitled:(NSString *)title action:(SEL)action belowItemWithAction:(SEL)above
{
    NSMenuItem *item = [LVBundleUtilities newMenuItemWithTitle:title action:action andKeyEquivalent:@"" inMenu:[NSApp mainMenu] underItemWithSelector:above];
    [self lv_noteMenuBarItem:item titled:title];
    return item;
}

- (void)lv_noteMenuBarItem:(NSMenuItem *)item titled:(NSString *)title
{
    if (item != nil)
        return;
    NSLog(@"[Lorvane] bundle failed to add \"%@\" menu item.", title);
    _menusOK = NO;
}

// The contextual submenus are made now but hang under nothing until the first viewer's
// toolbar hands over the message list's menu. Each family's item array is its submenu's own.
- (void)lv_createRecentSubmenus
{
    _moveToRecentSubmenu = [self lv_newRecentSubmenuTitled:@"_moveToRecentSubmenu" itemAction:@selector(moveToRecentFromSubmenu:) underItem:_moveToRecentMenuItem items:&_moveToRecentSubmenuItems];
    _copyToRecentSubmenu = [self lv_newRecentSubmenuTitled:@"_copyToRecentSubmenu" itemAction:@selector(copyToRecentFromSubmenu:) underItem:_copyToRecentMenuItem items:&_copyToRecentSubmenuItems];
    _goToRecentSubmenu = [self lv_newRecentSubmenuTitled:@"_goToRecentSubmenu" itemAction:@selector(goToRecentFromSubmenu:) underItem:_goToRecentMenuItem items:&_goToRecentSubmenuItems];
    _moveToRecentContextualSubmenu = [self lv_newRecentSubmenuTitled:@"_moveToRecentContextualSubmenu" itemAction:@selector(moveToRecentFromContextualSubmenu:) underItem:nil items:&_moveToRecentContextualSubmenuItems];
    _copyToRecentContextualSubmenu = [self lv_newRecentSubmenuTitled:@"_copyToRecentContextualSubmenu" itemAction:@selector(copyToRecentFromContextualSubmenu:) underItem:nil items:&_copyToRecentContextualSubmenuItems];
    if (!_menusOK)
        return;
    // GNUstep may ask a new delegate for an update at once, while the submenus are still
    // bare. The update that loading the list asked for waits for the signal that ends
    // start-up, when there is something to fill.
    _updateMenu = NO;
    for (LVMenuFamily family : LVFamilyOrder)
        [[self lv_submenuOfFamily:family] setDelegate:self];
}

// Each item is enabled by its own flag: the clear items follow the list, not a validator.
- (LVRecentSubmenu *)lv_newRecentSubmenuTitled:(NSString *)title itemAction:(SEL)action underItem:(NSMenuItem *)item items:(NSMutableArray **)items
{
    LVRecentSubmenu *submenu = [[LVRecentSubmenu alloc] initWithTitle:title itemAction:action];
    *items = [[submenu premadeItems] retain];
    if (submenu == nil)
        _menusOK = NO;
    if (!_menusOK)
        return submenu;
    [submenu setAutoenablesItems:NO];
    [item setSubmenu:submenu];
    return submenu;
}

// One item per possible list entry and family, made once: a rebuild only re-titles them.
- (void)lv_createPremadeRecentItems
{
    if (!_menusOK)
        return;
    for (LVMenuFamily family : LVFamilyOrder)
        [[self lv_submenuOfFamily:family] makePremadeItems:_maxMailboxes];
}

- (void)lv_finishRecentSubmenus
{
    if (!_menusOK)
        return;
    for (LVMenuFamily family : LVFamilySeparatorOrder)
        [[self lv_submenuOfFamily:family] addSeparator];
    _moveClearMenuItem = [(LVRecentSubmenu *)_moveToRecentSubmenu addClearItemTitled:_clearMenuTitle];
    _copyClearMenuItem = [(LVRecentSubmenu *)_copyToRecentSubmenu addClearItemTitled:_clearMenuTitle];
    _moveClearContextualMenuItem = [(LVRecentSubmenu *)_moveToRecentContextualSubmenu addClearItemTitled:_clearMenuTitle];
    _copyClearContextualMenuItem = [(LVRecentSubmenu *)_copyToRecentContextualSubmenu addClearItemTitled:_clearMenuTitle];
    _goClearMenuItem = [(LVRecentSubmenu *)_goToRecentSubmenu addClearItemTitled:_clearMenuTitle];
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

@end

@implementation LorvaneBundle_Provider (LVMenuFamilies)

- (LVRecentSubmenu *)lv_submenuOfFamily:(LVMenuFamily)family
{
    NSMenu *submenus[] = { _moveToRecentSubmenu, _copyToRecentSubmenu, _goToRecentSubmenu, _moveToRecentContextualSubmenu, _copyToRecentContextualSubmenu };
    return (LVRecentSubmenu *)submenus[family];
}

@end

#pragma clang diagnostic pop
