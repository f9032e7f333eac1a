#import "LorvaneBundle_Provider.h"
#import "LorvaneBundle_Provider+Menus.h"
#import "LVMenuOrder.h"
#import "LVPreferencesFile.h"
#import "LVRecentList.h"
#import "LorvaneMailbox.h"
#import "PropertyListReader.h"
#import "Utilities.h"

#include <cstdio>
#include <unordered_set>
#include <vector>

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

#pragma mark - Helpers

static NSArray *activeAccounts(void)
{
    return [(Class<LVMailAccount>)LVMailClass("MailAccount") activeAccounts];
}

// The value under the key when it is a dictionary; nil for anything else, a nil list included.
static NSDictionary *dictionaryIn(id plist, NSString *key)
{
    id value = [plist isKindOfClass:[NSDictionary class]] ? [plist objectForKey:key] : nil;
    return [value isKindOfClass:[NSDictionary class]] ? value : nil;
}

static NSComparisonResult compareForEviction(int sortType, LorvaneMailbox *receiver, LorvaneMailbox *other)
{
    if (sortType == LVSortByAccesses)
        return [receiver sortCompareAccesses:other];
    return [receiver sortCompareDate:other];
}

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

// A loaded record takes one of the mailboxes that bear its saved path and a place, unless the
// list is full and the record ranks no better than the worst one kept: ties go to the record
// loaded first. A limit of 0 keeps nothing (the empty list has no last record).
static void placeLoadedRecord(LorvaneMailbox *record, id<LVMailboxUid> mailbox, LVRecentList *list, int limit, int sortType)
{
    [record setUid:mailbox];
    if ([list count] == (NSUInteger)limit) {
        [list sortInEvictionOrder];
        if (compareForEviction(sortType, [list lastObject], record) != NSOrderedDescending)
            return;
        [list removeLastObject];
    }
    [list insertObject:record atIndex:0];
}

// Mailboxes are found again by their full path alone, over every active account. The
// accounts are walked once for all records; then each record, in file order, takes every
// mailbox that bears its path, in the order Mail lists them.
static NSArray *loadSavedRecords(NSArray *records, NSArray *paths, int limit, int sortType)
{
    NSMutableDictionary *recordIndexesByPath = [NSMutableDictionary dictionaryWithCapacity:[paths count]];
    for (NSUInteger index = 0; index < [paths count]; index++) {
        NSMutableArray *indexes = [recordIndexesByPath objectForKey:[paths objectAtIndex:index]];
        if (indexes == nil) {
            indexes = [NSMutableArray array];
            [recordIndexesByPath setObject:indexes forKey:[paths objectAtIndex:index]];
        }
        [indexes addObject:[NSNumber numberWithUnsignedInteger:index]];
    }
    std::vector<std::vector<id<LVMailboxUid>>> matches([records count]);
    if ([records count] > 0) {
        for (id<LVMailAccount> account in activeAccounts()) {
            for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
                NSString *fullPath = [mailbox fullPath];
                if (fullPath == nil)
                    continue;
                for (NSNumber *index in [recordIndexesByPath objectForKey:fullPath])
                    matches[[index unsignedIntegerValue]].push_back(mailbox);
            }
        }
    }
    // A record that matches two mailboxes takes them in turn: the list is filled first and
    // handed over once every record has its last mailbox.
    LVRecentList *loading = [[[LVRecentList alloc] initWithSortType:sortType] autorelease];
    for (NSUInteger index = 0; index < [records count]; index++) {
        for (id<LVMailboxUid> mailbox : matches[index])
            placeLoadedRecord([records objectAtIndex:index], mailbox, loading, limit, sortType);
    }
    return loading;
}

// Names that the name order takes as equal ("work" and "Work", or an "é" written as one
// character or as two) are kept in a fixed order by their exact spelling. Exactly equal names
// then always sit together, and the menus keep their order when a restart reverses the list.
@interface LorvaneMailbox (LVSpellingOrder)
- (NSComparisonResult)lv_sortCompareDisplayNameThenSpelling:(LorvaneMailbox *)other;
@end

@implementation LorvaneMailbox (LVSpellingOrder)

- (NSComparisonResult)lv_sortCompareDisplayNameThenSpelling:(LorvaneMailbox *)other
{
    NSComparisonResult order = [self sortCompareDisplayName:other];
    return order != NSOrderedSame ? order : [[self displayName] compare:[other displayName] options:NSLiteralSearch];
}

@end

// The provider's own helpers. Mail sees them as methods of its MVMailBundle subclass, so each
// bears a prefix Mail's methods never do.
@interface LorvaneBundle_Provider (LVStartUp)
- (int)lv_readRecentItemsLimit;
@end

@interface LorvaneBundle_Provider (LVRebuilding) <LVMailboxDescribing>
- (void)lv_nameDuplicateMailboxes;
- (void)lv_sortRecentMailboxesForMenus;
@end

#pragma mark -

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
    for (id<LVMailAccount> account in activeAccounts()) {
        for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
            if ([[mailbox fullPath] isEqualToString:fullPath])
                return mailbox;
        }
    }
    return nil;
}

- (void)clearRecentMailboxes
{
    [_recentMailboxes removeAllObjects];
    [self signalUpdateMenu];
}

// A record's mailbox is live only while Mail still lists that very object and calls it
// valid: a mailbox deleted and made again under the same path is a different mailbox.
- (void)removeDeletedMailboxes
{
    std::unordered_set<const void *> listed;
    for (LorvaneMailbox *record in _recentMailboxes)
        listed.insert((const void *)[record uid]);

    std::unordered_set<const void *> seen;
    for (id<LVMailAccount> account in activeAccounts()) {
        for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
            if (listed.count((const void *)mailbox) != 0)
                seen.insert((const void *)mailbox);
        }
    }

    NSMutableIndexSet *deleted = [NSMutableIndexSet indexSet];
    NSUInteger index = 0;
    for (LorvaneMailbox *record in _recentMailboxes) {
        id<LVMailboxUid> uid = [record uid];
        if (seen.count((const void *)uid) == 0 || ![uid isValid])
            [deleted addIndex:index];
        index++;
    }
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
    std::printf("***************** BEGIN listRecentMailboxUids *****************\n");
    for (LorvaneMailbox *record in _recentMailboxes) {
        id<LVMailboxUid> uid = [record uid];
        const char *name = [[uid displayName] UTF8String];
        std::printf("%s, %p\n", name != NULL ? name : "(null)", (void *)uid);
    }
    std::printf("***************** END listRecentMailboxUids *****************\n");
}

- (void)listRecentMailboxes
{
    std::printf("***************** BEGIN listRecentMailboxes *****************\n");
    for (LorvaneMailbox *record in _recentMailboxes) {
        id<LVMailboxUid> uid = [record uid];
        const char *name = [[uid displayName] UTF8String];
        const char *path = [[uid fullPath] UTF8String];
        std::printf("%s, %p, %s\n", name != NULL ? name : "(null)", (void *)uid, path != NULL ? path : "(null)");
    }
    std::printf("***************** END listRecentMailboxes *****************\n");
}

#pragma mark Names for duplicates

// Accounts are told apart by the name the user sees: two accounts that share a name
// would not be told apart by showing it.
- (BOOL)multipleAccountsInRecentMailboxes:(NSArray *)group
{
    BOOL first = YES;
    NSString *reference = nil;
    for (LorvaneMailbox *record in group) {
        NSString *accountName = [[[record uid] account] displayName];
        if (first) {
            reference = accountName;
            first = NO;
            continue;
        }
        if (![accountName isEqualToString:reference])
            return YES;
    }
    return NO;
}

// Everything before the last "/" of a mailbox's path. Mail's names are text, not path syntax:
// an empty name, or one holding a "\", would lose its folder to the platform's path methods
// (they trim a trailing "/", and GNUstep also reads "\" as a separator). The search is literal
// so that a name beginning with a combining mark still ends its folder at the "/".
static NSString *folderOfMailboxPath(NSString *relativePath)
{
    NSRange separator = [relativePath rangeOfString:@"/" options:NSBackwardsSearch | NSLiteralSearch];
    return separator.location != NSNotFound ? [relativePath substringToIndex:separator.location] : @"";
}

- (void)extendNamesForDuplicateMailboxes:(NSArray *)group includesMultipleAccounts:(BOOL)multipleAccounts
{
    for (LorvaneMailbox *record in group) {
        id<LVMailboxUid> uid = [record uid];
        NSString *relativePath = [self accountRelativePathWithoutPrefixForUid:uid];
        NSString *mailName = [uid displayName];
        NSMutableString *name = [NSMutableString stringWithString:mailName != nil ? mailName : @""];

        // A mailbox at the top of its account has its bare name as its path: no parent.
        NSString *parent = @"";
        if (![relativePath isEqualToString:name])
            parent = folderOfMailboxPath(relativePath);

        if (!multipleAccounts && [parent length] == 0) {
            [record setDisplayName:name];
            continue;
        }
        if (multipleAccounts) {
            [name appendString:@" ("];
            NSString *accountName = [[uid account] displayName];
            if (accountName != nil)
                [name appendString:accountName];
        }
        if ([parent length] > 0) {
            [name appendString:multipleAccounts ? @"/" : @" ("];
            [name appendString:parent];
        }
        [name appendString:@")"];
        [record setDisplayName:name];
    }
}

// The prefix test is on characters, not path components, and the character after the
// prefix goes with it whatever it is: the server's folder separator is not known here.
- (NSMutableString *)accountRelativePathWithoutPrefixForUid:(id<LVMailboxUid>)uid
{
    NSMutableString *path = [NSMutableString stringWithCapacity:1024];
    NSString *relativePath = [uid accountRelativePath];
    if (relativePath != nil)
        [path setString:relativePath];

    id account = [uid ancestralAccount];
    Class imapAccountClass = LVMailClass(@"IMAPAccount");
    if (imapAccountClass == Nil || ![account isKindOfClass:imapAccountClass])
        return path;
    NSString *prefix = [(id<LVIMAPAccount>)account serverPathPrefix];
    if ([prefix length] == 0 || ![path hasPrefix:prefix])
        return path;

    NSUInteger length = [prefix length];
    if ([path length] > length)
        length++;
    [path deleteCharactersInRange:NSMakeRange(0, length)];
    return path;
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
    NSArray *loaded = loadSavedRecords(records, paths, _maxMailboxes, _sortType);
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

    _maxMailboxes = [self lv_readRecentItemsLimit];
    // Only exactly 0 is worth a word: a negative limit simply makes no items.
    if (_maxMailboxes == 0)
        showStartupAlert(@"\"Number of Recent Items\" must be > 0.", [self class]);
    [self readPreferences];
    [self lv_loadMenuTitles];
    [self lv_installMenuBarItems];
    [self lv_createRecentSubmenus];
    [self lv_createRecentItemArrays];
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

// The list's menu order gives the order and names the full name pass and sorts would give,
// doing only what changed; a list it cannot order takes those steps themselves.
- (void)updateMenus
{
    if (_recentMailboxes == nil)
        return;
    if (_menusOK && [[_recentMailboxes menuOrder] orderList:_recentMailboxes sortType:_sortType describer:self]) {
        [self lv_showRowsOfMenuOrder];
    } else {
        [self lv_nameDuplicateMailboxes];
        if (_menusOK) {
            [self lv_sortRecentMailboxesForMenus];
            [self lv_showRowsOfList];
        }
    }
    [self lv_enableClearItems];
}

// Records that share Mail's name for their mailbox sit next to each other once sorted
// by name; each such run is told apart by account and folder. The sort starts from Mail's
// names, not the last rebuild's: "" and " (Folder)" need not sort side by side.
- (void)lv_nameDuplicateMailboxes
{
    for (LorvaneMailbox *record in _recentMailboxes)
        [record setDisplayName:[[record uid] displayName]];
    [_recentMailboxes sortUsingSelector:@selector(lv_sortCompareDisplayNameThenSpelling:)];
    NSUInteger count = [_recentMailboxes count];
    NSUInteger i = 0;
    while (i < count) {
        LorvaneMailbox *first = [_recentMailboxes objectAtIndex:i];
        id<LVMailboxUid> uid = [first uid];
        if (uid == nil) {
            // Deliberately not skipped: the pass stays on a record it cannot name and
            // says so on every turn, rather than give it a name it may not have.
            NSLog(@"[Lorvane:updateMenus] invalid recentMailbox UID while searching for duplicates.");
            continue;
        }
        NSString *baseName = [uid displayName] ?: @"[error: NULL baseMailboxName]";
        [first setDisplayName:baseName];
        NSUInteger groupStart = i++;
        while (i < count && [[[[_recentMailboxes objectAtIndex:i] uid] displayName] isEqualToString:baseName])
            i++;
        // A record alone in its run keeps the bare name; only real groups get an array.
        if (i - groupStart > 1)
            [self lv_nameMailboxesSharingName:[_recentMailboxes subarrayWithRange:NSMakeRange(groupStart, i - groupStart)]];
    }
}

// The order the menus show is the order the actions count their indexes in.
- (void)lv_sortRecentMailboxesForMenus
{
    switch (_sortType) {
    case LVSortByDate:
        [_recentMailboxes sortUsingSelector:@selector(sortCompareDate:)];
        break;
    case LVSortByAccesses:
        [_recentMailboxes sortUsingSelector:@selector(sortCompareAccesses:)];
        break;
    default:
        [_recentMailboxes sortUsingSelector:@selector(lv_sortCompareDisplayNameThenSpelling:)];
        break;
    }
}

#pragma mark What the menus ask of Mail

- (void)lv_nameMailboxesSharingName:(NSArray *)group
{
    BOOL multipleAccounts = [self multipleAccountsInRecentMailboxes:group];
    [self extendNamesForDuplicateMailboxes:group includesMultipleAccounts:multipleAccounts];
}

- (NSString *)lv_toolTipForMailbox:(id<LVMailboxUid>)mailbox
{
    return [self lv_toolTipForUid:mailbox];
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

// The system's "Number of Recent Items". The file is binary on a Mac and comes from
// outside the plug-in, so unreadable bytes and values of the wrong kind count as absent.
- (int)lv_readRecentItemsLimit
{
    NSString *path = [LVUserLibraryFolder() stringByAppendingPathComponent:@"Preferences/com.apple.recentitems.plist"];
    id recentItems = [LVPropertyListReader propertyListWithContentsOfFile:path];
    NSDictionary *documents = dictionaryIn(recentItems, @"RecentDocuments");
    if (documents == nil) {
        NSLog(@"[Lorvane] failed to find RecentDocuments dictionary.");
        documents = dictionaryIn(recentItems, @"Documents");
    }
    if (documents == nil) {
        NSLog(@"[Lorvane] failed to find the RecentDocuments or Documents dictionaries.");
        return 0;
    }
    id maxAmount = [documents objectForKey:@"MaxAmount"];
    return [maxAmount respondsToSelector:@selector(intValue)] ? [maxAmount intValue] : 0;
}

@end

#pragma clang diagnostic pop
