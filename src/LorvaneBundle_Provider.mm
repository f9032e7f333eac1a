#import "LorvaneBundle_Provider.h"
#import "LorvaneMailbox.h"
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

// Identifies the plug-in's bundle and names its preferences file.
static NSString *const LVBundleIdentifier = @"org.lorvane.mailbundle";

// Gestalt's gestaltSystemVersion selector, the four characters 'sysv'.
static const unsigned int LVGestaltSystemVersion = 0x73797376;
// 10.6.0 in Gestalt's one-digit-per-nibble form; anything older lacks what Mail's hooks need.
static const int LVOldestSupportedSystem = 0x1060;

static NSString *const LVExcludeSpecialMailboxesKey = @"ExcludeSpecialMailboxes";
static NSString *const LVSortTypeKey = @"SortType";
static NSString *const LVRecentMailboxesKey = @"RecentMailboxes";
static NSString *const LVAccessesKey = @"Accesses";
static NSString *const LVDateKey = @"Date";
static NSString *const LVCalendarDateKey = @"CalendarDate";  // what older versions called "Date"
static NSString *const LVFullPathKey = @"FullPath";

// The sort type that orders by use; under every other one the oldest record makes room.
static const int LVSortByAccesses = 2;

#pragma mark - Helpers

// Helpers are plain functions rather than methods: Mail only ever sees the run-time copy of
// this class, and functions need no copying.

static SEL evictionComparatorForSortType(int sortType)
{
    return sortType == LVSortByAccesses ? @selector(sortCompareAccesses:) : @selector(sortCompareDate:);
}

static NSComparisonResult compareForEviction(int sortType, LorvaneMailbox *receiver, LorvaneMailbox *other)
{
    if (sortType == LVSortByAccesses)
        return [receiver sortCompareAccesses:other];
    return [receiver sortCompareDate:other];
}

static NSArray *activeAccounts(void)
{
    return [(Class<LVMailAccount>)LVMailClass("MailAccount") activeAccounts];
}

// Rebuilt from the one literal identifier each time, so a renamed bundle keeps its settings.
static NSString *preferencesFilePath(void)
{
    NSArray *libraries = NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES);
    if ([libraries count] == 0)
        return nil;
    NSMutableString *path = [NSMutableString stringWithCapacity:255];
    [path appendString:[[libraries objectAtIndex:0] stringByExpandingTildeInPath]];
    [path appendString:@"/Preferences/"];
    [path appendString:LVBundleIdentifier];
    [path appendString:@".plist"];
    return path;
}

// The file is edited by hand, so anything may be in it: unreadable bytes, a damaged binary
// list (which the parser may raise on) and a root that is not a dictionary all count as no file.
static NSDictionary *readPreferencesDictionary(NSString *path)
{
    NSData *data = path != nil ? [NSData dataWithContentsOfFile:path] : nil;
    if ([data length] == 0)
        return nil;
    id plist = nil;
    @try {
        plist = [NSPropertyListSerialization propertyListWithData:data options:NSPropertyListImmutable format:NULL error:NULL];
    } @catch (NSException *exception) {
        return nil;
    }
    return [plist isKindOfClass:[NSDictionary class]] ? plist : nil;
}

// A value of the wrong kind is treated as missing, except that anything that can answer
// the conversion is taken at its word (a "2" under "SortType" reads as 2).
static id valueAnswering(NSDictionary *dictionary, NSString *key, SEL conversion)
{
    id value = [dictionary objectForKey:key];
    return [value respondsToSelector:conversion] ? value : nil;
}

static id valueOfClass(NSDictionary *dictionary, NSString *key, Class expected)
{
    id value = [dictionary objectForKey:key];
    return [value isKindOfClass:expected] ? value : nil;
}

static NSString *savedDateText(NSDictionary *saved)
{
    NSString *text = valueOfClass(saved, LVDateKey, [NSString class]);
    if (text == nil)
        text = valueOfClass(saved, LVCalendarDateKey, [NSString class]);
    if (text == nil)
        text = [[NSDate date] description];
    return text;
}

// A saved record without a path names no mailbox and is left out.
static NSDictionary *savedRecord(LorvaneMailbox *record)
{
    NSString *fullPath = [[record uid] fullPath];
    if (fullPath == nil)
        return nil;
    NSMutableDictionary *saved = [NSMutableDictionary dictionaryWithCapacity:3];
    [saved setObject:[NSNumber numberWithInt:[record accesses]] forKey:LVAccessesKey];
    // A date that did not parse when it was read has nothing to save; the next launch then
    // dates the record at loading, as it does for any record saved without a date.
    NSString *dateText = [[record date] description];
    if (dateText != nil)
        [saved setObject:dateText forKey:LVDateKey];
    [saved setObject:fullPath forKey:LVFullPathKey];
    return saved;
}

// Gives a loaded record one of the mailboxes that bear its saved path and places it, unless
// the list is full and the record ranks no better than the worst one kept: ties go to the
// record loaded first. A limit of 0 keeps nothing (the empty list has no last record).
static void placeLoadedRecord(LorvaneMailbox *record, id<LVMailboxUid> mailbox, NSMutableArray *list, int limit, int sortType)
{
    [record setUid:mailbox];
    if ([list count] == (NSUInteger)limit) {
        [list sortUsingSelector:evictionComparatorForSortType(sortType)];
        if (compareForEviction(sortType, [list lastObject], record) != NSOrderedDescending)
            return;
        [list removeLastObject];
    }
    [list insertObject:record atIndex:0];
}

// Mailboxes are found again by their full path alone, over every active account. The
// accounts are walked once for all records; then each record, in file order, takes every
// mailbox that bears its path, in the order Mail lists them.
static void loadSavedRecords(NSArray *saved, NSMutableArray *list, int limit, int sortType)
{
    NSMutableArray *records = [NSMutableArray arrayWithCapacity:[saved count]];
    NSMutableDictionary *recordIndexesByPath = [NSMutableDictionary dictionary];
    for (id entry in saved) {
        // A saved record that names no mailbox could never be found again.
        NSString *fullPath = [entry isKindOfClass:[NSDictionary class]] ? valueOfClass(entry, LVFullPathKey, [NSString class]) : nil;
        if (fullPath == nil)
            continue;
        LorvaneMailbox *record = [[LorvaneMailbox alloc] init];
        [record setAccesses:[valueAnswering(entry, LVAccessesKey, @selector(intValue)) intValue]];
        [record setDate:[NSDate dateWithString:savedDateText(entry)]];
        NSMutableArray *indexes = [recordIndexesByPath objectForKey:fullPath];
        if (indexes == nil) {
            indexes = [NSMutableArray array];
            [recordIndexesByPath setObject:indexes forKey:fullPath];
        }
        [indexes addObject:[NSNumber numberWithUnsignedInteger:[records count]]];
        [records addObject:record];
        [record release];
    }
    if ([records count] == 0)
        return;

    std::vector<std::vector<id<LVMailboxUid>>> matches([records count]);
    for (id<LVMailAccount> account in activeAccounts()) {
        for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
            NSString *fullPath = [mailbox fullPath];
            if (fullPath == nil)
                continue;
            for (NSNumber *index in [recordIndexesByPath objectForKey:fullPath])
                matches[[index unsignedIntegerValue]].push_back(mailbox);
        }
    }

    for (NSUInteger index = 0; index < [records count]; index++) {
        for (id<LVMailboxUid> mailbox : matches[index])
            placeLoadedRecord([records objectAtIndex:index], mailbox, list, limit, sortType);
    }
}

static void showStartupAlert(NSString *text)
{
    NSAlert *alert = [NSAlert alertWithMessageText:@"Lorvane Plugin Notification"
                                     defaultButton:nil
                                   alternateButton:nil
                                       otherButton:nil
                         informativeTextWithFormat:@"%@", text];
    [alert setAlertStyle:NSCriticalAlertStyle];
    NSString *iconPath = [[NSBundle bundleForClass:[LorvaneBundle_Provider class]] pathForImageResource:@"icon"];
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

// The five recent submenus, each with its top item, pre-made items and "Clear Menu".
// Most passes visit them in one order; filling them and adding the separators keep
// orders of their own, so Mail sees the same sequence of menu changes as it always has.
enum LVMenuFamily { LVMoveFamily, LVCopyFamily, LVGoToFamily, LVMoveContextualFamily, LVCopyContextualFamily };
static const LVMenuFamily LVFamilyOrder[] = { LVMoveFamily, LVCopyFamily, LVMoveContextualFamily, LVCopyContextualFamily, LVGoToFamily };
static const LVMenuFamily LVFamilyFillingOrder[] = { LVMoveFamily, LVCopyFamily, LVGoToFamily, LVMoveContextualFamily, LVCopyContextualFamily };
static const LVMenuFamily LVFamilySeparatorOrder[] = { LVMoveFamily, LVMoveContextualFamily, LVCopyFamily, LVCopyContextualFamily, LVGoToFamily };

#pragma mark -

// On a Mac every NSMenuDelegate method is optional; GNUstep declares them all required,
// and the provider answers only menuNeedsUpdate:.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wprotocol"

@implementation LorvaneBundle_Provider

#pragma mark Loading into Mail

+ (void)load
{
    initOK = YES;
    int MacVersion = 0;
    short status = Gestalt(LVGestaltSystemVersion, &MacVersion);
    if (status != 0) {
        initOK = NO;
        showStartupAlert(@"Gestalt(gestaltSystemVersion, &MacVersion) FAILED. Notify developer.");
    } else if (MacVersion < LVOldestSupportedSystem) {
        initOK = NO;
        showStartupAlert(@"You must be using at least OS X 10.6 (Snow Leopard) for this plugin to work.");
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

- (void)addOrTouchRecentMailboxFromUid:(id<LVMailboxUid>)uid
{
    if (_maxMailboxes == 0)
        return;
    if (_excludeSpecialMailboxes && ![(Class<LVMailboxUid>)LVMailClass("MailboxUid") typeIsGeneric:[uid type]])
        return;
    LorvaneMailbox *record = [[LorvaneMailbox alloc] init];
    if (record == nil) {
        NSLog(@"[Lorvane:addOrTouchRecentMailboxFromUid] failed to allocate LorvaneMailbox object.");
        return;
    }

    int index = [self getRecentMailboxIndexWithUid:uid];
    if (index >= 0) {
        [self incrementAccessesForItemAtIndex:index];
        [[self getRecentMailboxAtIndex:index] setDate:[NSDate date]];
    } else {
        // Only a list that is exactly full makes room: one that outgrew a lowered limit
        // keeps its records rather than losing several at once.
        if ([_recentMailboxes count] == (NSUInteger)_maxMailboxes) {
            [_recentMailboxes sortUsingSelector:evictionComparatorForSortType(_sortType)];
            [_recentMailboxes removeLastObject];
        }
        [record setUid:uid];
        [_recentMailboxes insertObject:record atIndex:0];
    }
    [record release];
    [self signalUpdateMenu];
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
    int count = (int)[_recentMailboxes count];
    for (int index = 0; index < count; index++) {
        if ([[_recentMailboxes objectAtIndex:(NSUInteger)index] uid] == uid)
            return index;
    }
    return -1;
}

- (int)getSortType
{
    return _sortType;
}

- (void)incrementAccessesForItemAtIndex:(int)index
{
    [[self getRecentMailboxAtIndex:index] incrementAccesses];
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

- (void)signalUpdateMenu
{
    _updateMenu = YES;
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
            parent = [relativePath stringByDeletingLastPathComponent];

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
    Class imapAccountClass = LVMailClass("IMAPAccount");
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
    NSDictionary *preferences = readPreferencesDictionary(preferencesFilePath());

    // Normalised to YES or NO so that a stored 2 cannot pass for a third state.
    id exclude = valueAnswering(preferences, LVExcludeSpecialMailboxesKey, @selector(boolValue));
    _excludeSpecialMailboxes = exclude != nil ? ([exclude boolValue] ? YES : NO) : YES;

    _sortType = [valueAnswering(preferences, LVSortTypeKey, @selector(intValue)) intValue];
    if ((unsigned int)_sortType > 2)
        _sortType = 0;

    [_recentMailboxes release];
    _recentMailboxes = [[NSMutableArray alloc] init];
    loadSavedRecords(valueOfClass(preferences, LVRecentMailboxesKey, [NSArray class]), _recentMailboxes, _maxMailboxes, _sortType);
    [self signalUpdateMenu];
}

- (void)writePreferences
{
    // A plug-in that did not start has only defaults: the user's file is left as it is.
    if (!initOK)
        return;
    NSMutableDictionary *preferences = [NSMutableDictionary dictionaryWithCapacity:0];
    [preferences setObject:[NSNumber numberWithInt:_sortType] forKey:LVSortTypeKey];
    [preferences setObject:[NSNumber numberWithBool:_excludeSpecialMailboxes] forKey:LVExcludeSpecialMailboxesKey];
    NSMutableArray *saved = [NSMutableArray arrayWithCapacity:[_recentMailboxes count]];
    for (LorvaneMailbox *record in _recentMailboxes) {
        NSDictionary *entry = savedRecord(record);
        if (entry != nil)
            [saved addObject:entry];
    }
    [preferences setObject:saved forKey:LVRecentMailboxesKey];

    // XML, as on a Mac: the platform's own text format is not what other tools read.
    NSData *data = [NSPropertyListSerialization dataWithPropertyList:preferences
                                                              format:NSPropertyListXMLFormat_v1_0
                                                             options:0
                                                               error:NULL];
    NSString *path = preferencesFilePath();
    if (data == nil || path == nil || ![data writeToFile:path atomically:YES])
        NSLog(@"[Lorvane] error writing to preferences file.");
}


#pragma mark Start-up

- (id)init
{
    if (!initOK)
        return self;    // loading already failed: stay inert, and do not become the singleton
    _activeLorvaneBundle_Provider = self;
    _thisBundle = [[NSBundle bundleWithIdentifier:@"org.lorvane.mailbundle"] retain];
    _menusOK = YES;
    if (nil == (self = [super init])) {
        initOK = NO;
        NSLog(@"Lorvane bundle FAILED to initialize itself (in init).");
        return nil;
    }

    _maxMailboxes = [self readRecentItemsLimit];
    // Only exactly 0 is worth a word: a negative limit simply makes no items.
    if (_maxMailboxes == 0)
        [self warnThatRecentItemsAreOff];
    [self readPreferences];
    [self loadMenuTitles];
    [self installMenuBarItems];
    [self createRecentSubmenus];
    [self createRecentItemArrays];
    [self createPremadeRecentItems];
    [self finishRecentSubmenus];
    if (!_menusOK)
        initOK = NO;
    return self;
}

// The system's "Number of Recent Items". The file is binary on a Mac and comes from
// outside the plug-in, so unreadable bytes and values of the wrong kind count as absent.
- (int)readRecentItemsLimit
{
    NSDictionary *recentItems = [self recentItemsPreferences];
    NSDictionary *documents = [self dictionaryIn:recentItems forKey:@"RecentDocuments"];
    if (documents == nil) {
        NSLog(@"[Lorvane] failed to find RecentDocuments dictionary.");
        documents = [self dictionaryIn:recentItems forKey:@"Documents"];
    }
    if (documents == nil) {
        NSLog(@"[Lorvane] failed to find the RecentDocuments or Documents dictionaries.");
        return 0;
    }
    id maxAmount = [documents objectForKey:@"MaxAmount"];
    return [maxAmount respondsToSelector:@selector(intValue)] ? [maxAmount intValue] : 0;
}

- (NSDictionary *)recentItemsPreferences
{
    NSString *library = [NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES) firstObject];
    NSString *path = [library stringByAppendingPathComponent:@"Preferences/com.apple.recentitems.plist"];
    NSData *data = [NSData dataWithContentsOfFile:path];
    if (data == nil)
        return nil;
    id plist = nil;
    @try {
        plist = [NSPropertyListSerialization propertyListWithData:data options:NSPropertyListImmutable format:NULL error:NULL];
    } @catch (NSException *exception) {
        return nil;     // GNUstep raises on some malformed binary lists: as unreadable as a missing file
    }
    return [plist isKindOfClass:[NSDictionary class]] ? plist : nil;
}

- (NSDictionary *)dictionaryIn:(NSDictionary *)dictionary forKey:(NSString *)key
{
    id value = [dictionary objectForKey:key];
    return [value isKindOfClass:[NSDictionary class]] ? value : nil;
}

// Modal on purpose: with a limit of 0 the plug-in keeps no list, and the user should
// know why its menus stay empty before Mail finishes starting.
- (void)warnThatRecentItemsAreOff
{
    NSAlert *alert = [NSAlert alertWithMessageText:@"Lorvane Plugin Notification"
                                     defaultButton:nil
                                   alternateButton:nil
                                       otherButton:nil
                         informativeTextWithFormat:@"\"Number of Recent Items\" must be > 0."];
    [alert setAlertStyle:NSCriticalAlertStyle];
    NSString *iconPath = [[NSBundle bundleForClass:[self class]] pathForImageResource:@"icon"];
    if (iconPath != nil) {
        NSImage *icon = [[NSImage alloc] initWithContentsOfFile:iconPath];
        [alert setIcon:icon];
        [icon release];
    }
    [alert runModal];
}

- (void)loadMenuTitles
{
    _moveToRecentMenuTitle = [[self localizedMenuTitle:@"Move to Recent"] retain];
    _copyToRecentMenuTitle = [[self localizedMenuTitle:@"Copy to Recent"] retain];
    _goToRecentMenuTitle = [[self localizedMenuTitle:@"Go to Recent"] retain];
    _clearMenuTitle = [[self localizedMenuTitle:@"Clear Menu"] retain];
    _gotoMenuTitle = [[self localizedMenuTitle:@"Go To"] retain];
}

// The English text is the key; it also stands in when the bundle cannot be found, so
// the menus never show an empty title.
- (NSString *)localizedMenuTitle:(NSString *)english
{
    if (_thisBundle == nil)
        return english;
    return [_thisBundle localizedStringForKey:english value:english table:@"Localizable"];
}

// "Copy to Recent" is placed by the action just given to "Move to Recent", so it lands
// right below it. All three are placed before any submenu hangs under them, and each is
// attempted whatever became of the others.
- (void)installMenuBarItems
{
    NSMenu *mainMenu = [NSApp mainMenu];
    _moveToRecentMenuItem = [LVBundleUtilities newMenuItemWithTitle:_moveToRecentMenuTitle
                                                             action:@selector(moveToRecentFromSubmenu:)
                                                   andKeyEquivalent:@""
                                                             inMenu:mainMenu
                                              underItemWithSelector:@selector(moveMessagesToMailbox:)];
    [self noteMenuBarItem:_moveToRecentMenuItem titled:_moveToRecentMenuTitle];
    _copyToRecentMenuItem = [LVBundleUtilities newMenuItemWithTitle:_copyToRecentMenuTitle
                                                             action:@selector(copyToRecentFromSubmenu:)
                                                   andKeyEquivalent:@""
                                                             inMenu:mainMenu
                                              underItemWithSelector:@selector(moveToRecentFromSubmenu:)];
    [self noteMenuBarItem:_copyToRecentMenuItem titled:_copyToRecentMenuTitle];
    _goToRecentMenuItem = [LVBundleUtilities newMenuItemWithTitle:_goToRecentMenuTitle
                                                           action:@selector(goToRecentFromSubmenu:)
                                                 andKeyEquivalent:@""
                                                           inMenu:mainMenu
                                            underSubmenuWithTitle:_gotoMenuTitle];
    [self noteMenuBarItem:_goToRecentMenuItem titled:_goToRecentMenuTitle];
}

- (void)noteMenuBarItem:(NSMenuItem *)item titled:(NSString *)title
{
    if (item != nil)
        return;
    NSLog(@"[Lorvane] bundle failed to add \"%@\" menu item.", title);
    _menusOK = NO;
}

// The contextual submenus are made now but hang under nothing until the first viewer's
// toolbar hands over the message list's menu.
- (void)createRecentSubmenus
{
    _moveToRecentSubmenu = [self newRecentSubmenuTitled:@"_moveToRecentSubmenu"];
    [self attachSubmenu:_moveToRecentSubmenu toMenuBarItem:_moveToRecentMenuItem];
    _copyToRecentSubmenu = [self newRecentSubmenuTitled:@"_copyToRecentSubmenu"];
    [self attachSubmenu:_copyToRecentSubmenu toMenuBarItem:_copyToRecentMenuItem];
    _goToRecentSubmenu = [self newRecentSubmenuTitled:@"_goToRecentSubmenu"];
    [self attachSubmenu:_goToRecentSubmenu toMenuBarItem:_goToRecentMenuItem];

    _moveToRecentContextualSubmenu = [self newRecentSubmenuTitled:@"_moveToRecentContextualSubmenu"];
    _copyToRecentContextualSubmenu = [self newRecentSubmenuTitled:@"_copyToRecentContextualSubmenu"];
    if (!_menusOK)
        return;
    [_moveToRecentContextualSubmenu setAutoenablesItems:NO];
    [_copyToRecentContextualSubmenu setAutoenablesItems:NO];
    [self becomeDelegateOfRecentSubmenus];
}

- (NSMenu *)newRecentSubmenuTitled:(NSString *)title
{
    NSMenu *submenu = [[NSMenu alloc] initWithTitle:title];
    if (submenu == nil)
        _menusOK = NO;
    return submenu;
}

// Each item is enabled by its own flag: the clear items follow the list, not a validator.
- (void)attachSubmenu:(NSMenu *)submenu toMenuBarItem:(NSMenuItem *)item
{
    if (!_menusOK)
        return;
    [submenu setAutoenablesItems:NO];
    [item setSubmenu:submenu];
}

- (void)becomeDelegateOfRecentSubmenus
{
    // GNUstep may ask a new delegate for an update at once, while the submenus are still
    // bare. The update that loading the list asked for waits for the signal that ends
    // start-up, when there is something to fill.
    _updateMenu = NO;
    for (LVMenuFamily family : LVFamilyOrder)
        [[self submenuOfFamily:family] setDelegate:self];
}

// Made even when a menu step failed, so that the rebuild always finds its arrays.
- (void)createRecentItemArrays
{
    _moveToRecentSubmenuItems = [[NSMutableArray alloc] init];
    _copyToRecentSubmenuItems = [[NSMutableArray alloc] init];
    _moveToRecentContextualSubmenuItems = [[NSMutableArray alloc] init];
    _copyToRecentContextualSubmenuItems = [[NSMutableArray alloc] init];
    _goToRecentSubmenuItems = [[NSMutableArray alloc] init];
}

// One item per possible list entry and family, made once: a rebuild only re-titles them.
- (void)createPremadeRecentItems
{
    if (!_menusOK)
        return;
    for (int i = 0; i < _maxMailboxes; i++) {
        for (LVMenuFamily family : LVFamilyOrder) {
            NSMenuItem *item = [[NSMenuItem alloc] initWithTitle:@"" action:[self actionOfFamily:family] keyEquivalent:@""];
            [[self itemsOfFamily:family] addObject:item];
            [item release];
        }
    }
}

- (void)finishRecentSubmenus
{
    if (!_menusOK)
        return;
    for (LVMenuFamily family : LVFamilySeparatorOrder)
        [[self submenuOfFamily:family] addItem:[NSMenuItem separatorItem]];
    _moveClearMenuItem = [self addClearItemToSubmenu:_moveToRecentSubmenu];
    _copyClearMenuItem = [self addClearItemToSubmenu:_copyToRecentSubmenu];
    _moveClearContextualMenuItem = [self addClearItemToSubmenu:_moveToRecentContextualSubmenu];
    _copyClearContextualMenuItem = [self addClearItemToSubmenu:_copyToRecentContextualSubmenu];
    _goClearMenuItem = [self addClearItemToSubmenu:_goToRecentSubmenu];
    // The first opening of any recent submenu fills all five from the list just read.
    [self signalUpdateMenu];
}

// The submenu owns its clear item; it starts disabled until the list has an entry.
- (NSMenuItem *)addClearItemToSubmenu:(NSMenu *)submenu
{
    NSMenuItem *clearItem = (NSMenuItem *)[submenu addItemWithTitle:_clearMenuTitle action:@selector(clearRecentMenus:) keyEquivalent:@""];
    [clearItem setEnabled:NO];
    return clearItem;
}

// Mail hands over the message list's menu once per process. Later calls only hang the
// submenus under the existing contextual items again; they insert nothing.
- (void)createContextualSubmenusUnderMenu:(NSMenu *)menu
{
    if (_menusOK && _moveToRecentContextualMenuItem == nil) {
        _moveToRecentContextualMenuItem = [LVBundleUtilities newMenuItemWithTitle:_moveToRecentMenuTitle
                                                                           action:@selector(moveToRecentFromContextualSubmenu:)
                                                                 andKeyEquivalent:@""
                                                                           inMenu:menu
                                                            underItemWithSelector:@selector(moveMessagesToMailbox:)];
        if (_moveToRecentContextualMenuItem == nil) {
            NSLog(@"[Lorvane] Failed to set Move to Recent contextual menu.");
            _menusOK = NO;
        }
    }
    if (_menusOK && _copyToRecentContextualMenuItem == nil) {
        _copyToRecentContextualMenuItem = [LVBundleUtilities newMenuItemWithTitle:_copyToRecentMenuTitle
                                                                           action:@selector(copyToRecentFromContextualSubmenu:)
                                                                 andKeyEquivalent:@""
                                                                           inMenu:menu
                                                            underItemWithSelector:@selector(moveToRecentFromContextualSubmenu:)];
        if (_copyToRecentContextualMenuItem == nil) {
            NSLog(@"[Lorvane] Failed to set Copy to Recent contextual menu.");
            _menusOK = NO;
        }
    }
    if (!_menusOK)
        return;
    [_moveToRecentContextualMenuItem setSubmenu:_moveToRecentContextualSubmenu];
    [_copyToRecentContextualMenuItem setSubmenu:_copyToRecentContextualSubmenu];
}

#pragma mark The menu families

- (NSMenu *)submenuOfFamily:(LVMenuFamily)family
{
    switch (family) {
    case LVMoveFamily: return _moveToRecentSubmenu;
    case LVCopyFamily: return _copyToRecentSubmenu;
    case LVGoToFamily: return _goToRecentSubmenu;
    case LVMoveContextualFamily: return _moveToRecentContextualSubmenu;
    case LVCopyContextualFamily: return _copyToRecentContextualSubmenu;
    }
    return nil;
}

- (NSMutableArray *)itemsOfFamily:(LVMenuFamily)family
{
    switch (family) {
    case LVMoveFamily: return _moveToRecentSubmenuItems;
    case LVCopyFamily: return _copyToRecentSubmenuItems;
    case LVGoToFamily: return _goToRecentSubmenuItems;
    case LVMoveContextualFamily: return _moveToRecentContextualSubmenuItems;
    case LVCopyContextualFamily: return _copyToRecentContextualSubmenuItems;
    }
    return nil;
}

- (NSMenuItem *)clearItemOfFamily:(LVMenuFamily)family
{
    switch (family) {
    case LVMoveFamily: return _moveClearMenuItem;
    case LVCopyFamily: return _copyClearMenuItem;
    case LVGoToFamily: return _goClearMenuItem;
    case LVMoveContextualFamily: return _moveClearContextualMenuItem;
    case LVCopyContextualFamily: return _copyClearContextualMenuItem;
    }
    return nil;
}

// Items have no target: the choice travels the responder chain to the viewer in front.
- (SEL)actionOfFamily:(LVMenuFamily)family
{
    switch (family) {
    case LVMoveFamily: return @selector(moveToRecentFromSubmenu:);
    case LVCopyFamily: return @selector(copyToRecentFromSubmenu:);
    case LVGoToFamily: return @selector(goToRecentFromSubmenu:);
    case LVMoveContextualFamily: return @selector(moveToRecentFromContextualSubmenu:);
    case LVCopyContextualFamily: return @selector(copyToRecentFromContextualSubmenu:);
    }
    return NULL;
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

- (void)updateMenus
{
    if (_recentMailboxes == nil)
        return;
    [self nameDuplicateMailboxes];
    if (_menusOK) {
        [self removeRecentItems];
        [self sortRecentMailboxesForMenus];
        [self insertRecentItems];
    }
    [self enableClearItems];
}

// Records that share Mail's name for their mailbox sit next to each other once sorted
// by name; each such run is told apart by account and folder.
- (void)nameDuplicateMailboxes
{
    [_recentMailboxes sortUsingSelector:@selector(sortCompareDisplayName:)];
    NSUInteger count = [_recentMailboxes count];
    // Sorted a second time, as it always has been; equal names may trade places, which
    // the grouping below does not mind.
    [_recentMailboxes sortUsingSelector:@selector(sortCompareDisplayName:)];
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
            [self extendNamesOfGroup:[_recentMailboxes subarrayWithRange:NSMakeRange(groupStart, i - groupStart)]];
    }
}

- (void)extendNamesOfGroup:(NSArray *)group
{
    BOOL multipleAccounts = [self multipleAccountsInRecentMailboxes:group];
    [self extendNamesForDuplicateMailboxes:group includesMultipleAccounts:multipleAccounts];
}

// The count comes from the move submenu alone: the five always hold the same items.
// Each keeps its separator and "Clear Menu".
- (void)removeRecentItems
{
    int staleItems = (int)[_moveToRecentSubmenu numberOfItems] - 2;
    for (int i = 0; i < staleItems; i++) {
        for (LVMenuFamily family : LVFamilyOrder)
            [[self submenuOfFamily:family] removeItemAtIndex:0];
    }
}

// The order the menus show is the order the actions count their indexes in.
- (void)sortRecentMailboxesForMenus
{
    switch (_sortType) {
    case 1:
        [_recentMailboxes sortUsingSelector:@selector(sortCompareDate:)];
        break;
    case 2:
        [_recentMailboxes sortUsingSelector:@selector(sortCompareAccesses:)];
        break;
    default:
        [_recentMailboxes sortUsingSelector:@selector(sortCompareDisplayName:)];
        break;
    }
}

// Walked from the end and each item put at the top, so every submenu shows the list in
// its order. Item k of each array stands for entry k, whether or not entries before it
// could be shown.
- (void)insertRecentItems
{
    Class mailboxesController = LVMailClass("MailboxesController");
    NSInteger k = (NSInteger)[_recentMailboxes count];
    for (LorvaneMailbox *record in [_recentMailboxes reverseObjectEnumerator]) {
        k--;
        NSString *title = [record displayName] ?: @"[error: NULL mailboxName]";
        id<LVMailboxUid> uid = [record uid];
        if (uid == nil) {
            NSLog(@"[Lorvane:updateMenus] invalid recentMailbox UID while updating menus.");
            continue;
        }
        // A list longer than its pre-made items (a negative limit lets it grow) shows the
        // entries that have items instead of running off the end of the arrays.
        if (k >= (NSInteger)[_moveToRecentSubmenuItems count])
            continue;
        NSString *toolTip = [self toolTipForUid:uid];
        NSImage *icon = [mailboxesController iconForMailboxUid:uid smallSize:YES];
        for (LVMenuFamily family : LVFamilyFillingOrder) {
            NSMenuItem *item = [[self itemsOfFamily:family] objectAtIndex:(NSUInteger)k];
            [item setToolTip:toolTip];
            [item setTitle:title];
            [item setImage:icon];
            [[self submenuOfFamily:family] insertItem:item atIndex:0];
        }
    }
}

// "Account/Path/In/Account": the menu shows only the mailbox's name.
- (NSString *)toolTipForUid:(id<LVMailboxUid>)uid
{
    NSString *accountName = [[uid account] displayName] ?: @"[error: NULL accountName]";
    NSString *path = [self accountRelativePathWithoutPrefixForUid:uid] ?: @"[error: NULL accountRelativePath]";
    NSMutableString *toolTip = [NSMutableString stringWithCapacity:1024];
    [toolTip appendString:accountName];
    [toolTip appendString:@"/"];
    [toolTip appendString:path];
    return toolTip;
}

// Runs even when the recent items could not be rebuilt: "Clear Menu" always tells
// whether there is anything to clear.
// An item told its current state again still makes GNUstep lay its menu out anew, which
// costs more than the rest of a rebuild: only a change is passed on.
- (void)enableClearItems
{
    BOOL listHasEntries = [_recentMailboxes count] != 0;
    for (LVMenuFamily family : LVFamilyOrder) {
        NSMenuItem *clearItem = [self clearItemOfFamily:family];
        if ([clearItem isEnabled] != listHasEntries)
            [clearItem setEnabled:listHasEntries];
    }
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

#pragma clang diagnostic pop
