#import "LorvaneBundle_Provider.h"
#import "LorvaneMailbox.h"
#import "PropertyListReader.h"
#import "Utilities.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>
#include <unordered_map>
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

#pragma mark - Notes beside the list

// Mail reports every move and copy, so the transfer path must neither walk nor sort the
// whole list. Beside the running provider's list sit two notes: which record holds each
// listed mailbox, and how far the list already stands in the order that picks the record
// to drop. Both are checked against the list before each use and made again when the
// list changed without them, so they can only ever save work, never change an answer.

namespace {

enum class ListOrder {
    Unknown,
    ForEviction,              // sorted as the eviction comparator sorts it
    ForEvictionExceptOne,     // the same but for the record at `outOfPlace`
};

struct ListNotes {
    NSMutableArray *list = nil;       // the list described; not retained
    NSUInteger count = 0;             // its length when the notes last followed it
    // Each listed mailbox's record, retained while noted, so that a record dropped behind
    // the notes' back is never a dangling pointer.
    std::unordered_map<const void *, LorvaneMailbox *> recordOfMailbox;
    // Mailboxes that several records hold (saved paths listed twice): found by the walk.
    std::unordered_set<const void *> mailboxesListedTwice;
    ListOrder order = ListOrder::Unknown;
    bool orderByAccesses = false;
    NSUInteger outOfPlace = 0;
    unsigned long mutationsWhenOrdered = 0;
    unsigned long keyChangesWhenOrdered = 0;
};

// Made once and kept, like the provider it serves: nothing must run at Mail's exit.
ListNotes &listNotes()
{
    static ListNotes *notes = new ListNotes;
    return *notes;
}

// The array's own count of changes, order included: what fast enumeration watches.
bool readMutations(NSMutableArray *list, unsigned long *mutations)
{
    NSFastEnumerationState state = {};
    id first[1];
    [list countByEnumeratingWithState:&state objects:first count:1];
    if (state.mutationsPtr == NULL)
        return false;
    *mutations = *state.mutationsPtr;
    return true;
}

void forgetListNotes()
{
    ListNotes &notes = listNotes();
    for (auto &entry : notes.recordOfMailbox)
        [entry.second release];
    notes.recordOfMailbox.clear();
    notes.mailboxesListedTwice.clear();
    notes.list = nil;
    notes.count = 0;
    notes.order = ListOrder::Unknown;
}

void noteListedRecord(LorvaneMailbox *record)
{
    ListNotes &notes = listNotes();
    const void *mailbox = (const void *)[record uid];
    if (notes.recordOfMailbox.count(mailbox) != 0) {
        notes.mailboxesListedTwice.insert(mailbox);
        return;
    }
    notes.recordOfMailbox[mailbox] = [record retain];
}

void forgetListedRecord(LorvaneMailbox *record)
{
    ListNotes &notes = listNotes();
    auto found = notes.recordOfMailbox.find((const void *)[record uid]);
    if (found == notes.recordOfMailbox.end() || found->second != record)
        return;
    notes.recordOfMailbox.erase(found);
    [record release];
}

// Insertions and removals made through the notes keep them; any other change of length, or
// another list, makes them again from the list (once, not per event).
void followList(NSMutableArray *list)
{
    ListNotes &notes = listNotes();
    if (notes.list == list && notes.count == [list count])
        return;
    forgetListNotes();
    for (LorvaneMailbox *record in list)
        noteListedRecord(record);
    notes.list = list;
    notes.count = [list count];
}

void noteListLength(NSMutableArray *list)
{
    listNotes().count = [list count];
}

#pragma mark The eviction order

// Sort keys that order records exactly as the eviction comparators do: the newest date, or
// the highest count, first. A record without a date ties with every other, which is no order
// at all; such a list is left to the comparator itself.
bool readEvictionKey(LorvaneMailbox *record, bool byAccesses, double *key)
{
    if (byAccesses) {
        *key = [record accesses];
        return true;
    }
    NSDate *date = [record date];
    if (date == nil)
        return false;
    *key = [date timeIntervalSinceReferenceDate];
    return !std::isnan(*key);
}

bool ranksBefore(double key, double other)
{
    return key > other;
}

void noteEvictionOrder(NSMutableArray *list, bool byAccesses, ListOrder order, NSUInteger outOfPlace)
{
    ListNotes &notes = listNotes();
    notes.order = readMutations(list, &notes.mutationsWhenOrdered) ? order : ListOrder::Unknown;
    notes.keyChangesWhenOrdered = LVRecordSortKeyChanges();
    notes.orderByAccesses = byAccesses;
    notes.outOfPlace = outOfPlace;
}

bool evictionOrderNoted(NSMutableArray *list, bool byAccesses)
{
    ListNotes &notes = listNotes();
    unsigned long mutations = 0;
    return notes.order != ListOrder::Unknown && notes.list == list && notes.orderByAccesses == byAccesses
        && readMutations(list, &mutations) && mutations == notes.mutationsWhenOrdered
        && notes.keyChangesWhenOrdered == LVRecordSortKeyChanges();
}

// The platform's sort is stable, so the order it gives is the keys' order with ties kept
// in list order. Sorting keys and moving records is much cheaper than messaging the
// comparator n log n times.
bool sortByEvictionKeys(NSMutableArray *list, bool byAccesses)
{
    NSUInteger count = [list count];
    std::vector<std::pair<double, NSUInteger>> keys(count);
    for (NSUInteger index = 0; index < count; index++) {
        if (!readEvictionKey([list objectAtIndex:index], byAccesses, &keys[index].first))
            return false;
        keys[index].second = index;
    }
    std::stable_sort(keys.begin(), keys.end(), [](const std::pair<double, NSUInteger> &a, const std::pair<double, NSUInteger> &b) {
        return ranksBefore(a.first, b.first);
    });
    // Follows each cycle of the permutation with swaps, which move records without
    // retaining or releasing them.
    std::vector<NSUInteger> target(count);
    for (NSUInteger position = 0; position < count; position++)
        target[keys[position].second] = position;
    for (NSUInteger index = 0; index < count; index++) {
        while (target[index] != index) {
            NSUInteger destination = target[index];
            [list exchangeObjectAtIndex:index withObjectAtIndex:destination];
            std::swap(target[index], target[destination]);
        }
    }
    return true;
}

// The first position in [low, high) whose key fails `passes`, over keys that pass it only
// as a prefix (a binary search); false when a record on the way has no key.
template <typename KeyAt, typename Passes>
bool partitionPoint(NSUInteger low, NSUInteger high, KeyAt keyAt, Passes passes, NSUInteger *point)
{
    while (low < high) {
        NSUInteger middle = low + (high - low) / 2;
        double key = 0;
        if (!keyAt(middle, &key))
            return false;
        if (passes(key))
            low = middle + 1;
        else
            high = middle;
    }
    *point = low;
    return true;
}

// The list is in eviction order but for one record: where a stable sort would put it is
// after every record that ranks before it and, among its ties, where it stood.
bool moveIntoEvictionPlace(NSMutableArray *list, NSUInteger outOfPlace, bool byAccesses)
{
    NSUInteger count = [list count];
    LorvaneMailbox *record = [list objectAtIndex:outOfPlace];
    double key = 0;
    if (!readEvictionKey(record, byAccesses, &key))
        return false;
    // Binary searches over the others, in list order, by their position among the others.
    auto keyOfOther = [&](NSUInteger position, double *other) {
        return readEvictionKey([list objectAtIndex:position < outOfPlace ? position : position + 1], byAccesses, other);
    };
    // Most often it already stands where it belongs: nothing before it ranks after it and
    // nothing after it ranks before it.
    double previous = 0, next = 0;
    bool afterPrevious = outOfPlace == 0 || (keyOfOther(outOfPlace - 1, &previous) && !ranksBefore(key, previous));
    bool beforeNext = outOfPlace + 1 == count || (keyOfOther(outOfPlace, &next) && !ranksBefore(next, key));
    if (afterPrevious && beforeNext)
        return true;
    NSUInteger firstNotBefore = 0, firstAfter = 0;
    if (!partitionPoint(0, count - 1, keyOfOther, [&](double other) { return ranksBefore(other, key); }, &firstNotBefore)
        || !partitionPoint(firstNotBefore, count - 1, keyOfOther, [&](double other) { return !ranksBefore(key, other); }, &firstAfter))
        return false;
    NSUInteger place = std::max(firstNotBefore, std::min(firstAfter, outOfPlace));
    if (place == outOfPlace)
        return true;
    [record retain];
    [list removeObjectAtIndex:outOfPlace];
    [list insertObject:record atIndex:place];
    [record release];
    return true;
}

} // namespace

// Leaves the list as -sortUsingSelector: with the eviction comparator would; true when it
// could also note that order.
static bool sortForEviction(NSMutableArray *list, int sortType)
{
    bool byAccesses = sortType == LVSortByAccesses;
    ListNotes &notes = listNotes();
    bool sorted = false;
    if (evictionOrderNoted(list, byAccesses))
        sorted = notes.order == ListOrder::ForEviction || moveIntoEvictionPlace(list, notes.outOfPlace, byAccesses);
    if (!sorted)
        sorted = sortByEvictionKeys(list, byAccesses);
    if (!sorted) {
        [list sortUsingSelector:evictionComparatorForSortType(sortType)];
        notes.order = ListOrder::Unknown;
        return false;
    }
    noteEvictionOrder(list, byAccesses, ListOrder::ForEviction, 0);
    return notes.order == ListOrder::ForEviction;
}

// Where a listed record stands while the list is noted in eviction order, found by its
// key; NSNotFound when the order is not known.
static NSUInteger placeInEvictionOrder(NSMutableArray *list, LorvaneMailbox *record, int sortType)
{
    bool byAccesses = sortType == LVSortByAccesses;
    ListNotes &notes = listNotes();
    if (!evictionOrderNoted(list, byAccesses))
        return NSNotFound;
    if (notes.order == ListOrder::ForEvictionExceptOne)
        return [list objectAtIndex:notes.outOfPlace] == record ? notes.outOfPlace : NSNotFound;
    double key = 0;
    if (!readEvictionKey(record, byAccesses, &key))
        return NSNotFound;
    NSUInteger count = [list count];
    auto keyAt = [&](NSUInteger position, double *other) { return readEvictionKey([list objectAtIndex:position], byAccesses, other); };
    NSUInteger low = 0;
    if (!partitionPoint(0, count, keyAt, [&](double other) { return ranksBefore(other, key); }, &low))
        return NSNotFound;
    // Among its ties the record is found by identity.
    for (NSUInteger index = low; index < count; index++) {
        if ([list objectAtIndex:index] == record)
            return index;
    }
    return NSNotFound;
}

// After a record at `place` changed its date and count, or arrived there in a list that
// was in eviction order: the list is now in that order but for it.
static void noteEvictionOrderButFor(NSMutableArray *list, int sortType, NSUInteger place)
{
    if (place == NSNotFound) {
        listNotes().order = ListOrder::Unknown;
        return;
    }
    noteEvictionOrder(list, sortType == LVSortByAccesses, ListOrder::ForEvictionExceptOne, place);
}

// The record that holds the mailbox, found through the notes; the first in list order when
// several do.
static LorvaneMailbox *listedRecordWithUid(LorvaneBundle_Provider *provider, id<LVMailboxUid> uid)
{
    ListNotes &notes = listNotes();
    if (notes.mailboxesListedTwice.count((const void *)uid) != 0) {
        int index = [provider getRecentMailboxIndexWithUid:uid];
        return index >= 0 ? [provider getRecentMailboxAtIndex:index] : nil;
    }
    auto found = notes.recordOfMailbox.find((const void *)uid);
    return found != notes.recordOfMailbox.end() ? found->second : nil;
}

// A record is made before the list is searched, so that one that cannot be made leaves
// the list as it was on a hit too. It is kept while the events are hits rather than made
// and thrown away on each of them.
static LorvaneMailbox *spare = nil;

// This run-time looks a class up by its name at every message sent to it: the transfer
// path looks up the two it uses once.
static NSDate *now(void)
{
    static Class dateClass = [NSDate class];
    return [dateClass date];
}

static LorvaneMailbox *newRecord(void)
{
    static Class recordClass = [LorvaneMailbox class];
    return [[recordClass alloc] init];
}

static LorvaneMailbox *spareRecord(BOOL *madeNow)
{
    if (spare == nil) {
        spare = newRecord();
        *madeNow = YES;
    }
    return spare;
}

// The spare becomes this event's new record; the caller owns it.
static LorvaneMailbox *takeSpareRecord(void)
{
    LorvaneMailbox *record = spare;
    spare = nil;
    return record;
}

// A dropped record that nothing but the list holds, nor its name, becomes the next spare:
// emptied and counted once, it is what a new record would be, without making one.
static void dropLastRecord(NSMutableArray *list)
{
    LorvaneMailbox *last = [[list lastObject] retain];
    forgetListedRecord(last);
    [list removeLastObject];
    if (spare != nil || [last retainCount] != 1 || [[last displayName] retainCount] != 1) {
        [last release];
        return;
    }
    [last setUid:nil];
    [[last displayName] setString:@""];
    [last setAccesses:1];
    spare = last;
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

// Reads both files the plug-in takes from outside, its own preferences (edited by hand) and
// the system's recent items: a file the reader refuses or cannot parse and a root that is
// not a dictionary all count as no file.
static NSDictionary *readPreferencesDictionary(NSString *path)
{
    id plist = [LVPropertyListReader propertyListWithContentsOfFile:path];
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

// Names that the name order takes as equal ("work" and "Work", or an "é" written as one
// character or as two) are kept in a fixed order by their exact spelling. Exactly equal names
// then always sit together, and the menus keep their order when a restart reverses the list.
@interface LorvaneMailbox (LVSpellingOrder)
- (NSComparisonResult)sortCompareDisplayNameThenSpelling:(LorvaneMailbox *)other;
@end

@implementation LorvaneMailbox (LVSpellingOrder)

- (NSComparisonResult)sortCompareDisplayNameThenSpelling:(LorvaneMailbox *)other
{
    NSComparisonResult order = [self sortCompareDisplayName:other];
    return order != NSOrderedSame ? order : [[self displayName] compare:[other displayName] options:NSLiteralSearch];
}

@end

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
    static Class mailboxUidClass = Nil;
    if (_maxMailboxes == 0)
        return;
    if (_excludeSpecialMailboxes && ![(Class<LVMailboxUid>)LVKeptMailClass(&mailboxUidClass, "MailboxUid") typeIsGeneric:[uid type]])
        return;
    BOOL madeNow = NO;
    LorvaneMailbox *record = spareRecord(&madeNow);
    if (record == nil) {
        NSLog(@"[Lorvane:addOrTouchRecentMailboxFromUid] failed to allocate LorvaneMailbox object.");
        return;
    }

    followList(_recentMailboxes);
    LorvaneMailbox *listed = listedRecordWithUid(self, uid);
    if (listed != nil) {
        NSUInteger place = placeInEvictionOrder(_recentMailboxes, listed, _sortType);
        [listed incrementAccesses];
        [listed setDate:now()];
        noteEvictionOrderButFor(_recentMailboxes, _sortType, place);
    } else {
        // Only a list that is exactly full makes room: one that outgrew a lowered limit
        // keeps its records rather than losing several at once.
        bool inEvictionOrder = false;
        takeSpareRecord();
        if ([_recentMailboxes count] == (NSUInteger)_maxMailboxes) {
            inEvictionOrder = sortForEviction(_recentMailboxes, _sortType);
            dropLastRecord(_recentMailboxes);
        } else {
            inEvictionOrder = evictionOrderNoted(_recentMailboxes, _sortType == LVSortByAccesses)
                && listNotes().order == ListOrder::ForEviction;
        }
        // A spare kept from an earlier event is dated now, as if made for this one.
        if (!madeNow)
            [record setDate:now()];
        [record setUid:uid];
        [_recentMailboxes insertObject:record atIndex:0];
        [record release];
        if (_recentMailboxes != nil)
            noteListedRecord(record);
        noteEvictionOrderButFor(_recentMailboxes, _sortType, inEvictionOrder ? 0 : NSNotFound);
    }
    noteListLength(_recentMailboxes);
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

// A file that was there at start-up but did not read, as its bytes; nil when it read, was
// missing or was empty. Mail makes one provider, which reads once and writes at quitting.
static NSData *unreadPreferencesBytes = nil;

// An empty file holds nothing worth keeping, and keeping it would push out an older copy that does.
static void rememberUnreadPreferences(NSString *path, NSDictionary *preferences)
{
    NSData *bytes = preferences == nil && path != nil ? [NSData dataWithContentsOfFile:path] : nil;
    [unreadPreferencesBytes release];
    unreadPreferencesBytes = [bytes length] > 0 ? [bytes retain] : nil;
}

static BOOL writeEveryByte(int file, NSData *data)
{
    const char *bytes = (const char *)[data bytes];
    size_t left = [data length];
    while (left > 0) {
        ssize_t written = write(file, bytes, left);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return NO;
        bytes += written;
        left -= (size_t)written;
    }
    return YES;
}

// GNUstep's atomic write renames before its bytes are on the disk, so a machine that stops
// just after Mail quits can come back to an empty file. Here the bytes are synced under a
// temporary name in the same folder first and only then take the path's name: whatever
// fails, the path names its old file or the whole new one, and no temporary file is left.
static BOOL writeAtomically(NSData *data, NSString *path)
{
    std::string temporary = std::string([path fileSystemRepresentation]) + ".XXXXXX";
    int file = mkstemp(&temporary[0]);
    if (file < 0)
        return NO;
    BOOL written = writeEveryByte(file, data) && fsync(file) == 0;
    written = close(file) == 0 && written;
    if (written && rename(temporary.c_str(), [path fileSystemRepresentation]) == 0)
        return YES;
    unlink(temporary.c_str());
    return NO;
}

// A missing folder is made private to the user, as a Mac makes its Preferences folder.
static BOOL makeFolderOfFile(NSString *path)
{
    NSString *folder = [path stringByDeletingLastPathComponent];
    NSFileManager *fileManager = [NSFileManager defaultManager];
    if ([fileManager fileExistsAtPath:folder])
        return YES;
    NSDictionary *privateToUser = [NSDictionary dictionaryWithObject:[NSNumber numberWithUnsignedLong:0700] forKey:NSFilePosixPermissions];
    return [fileManager createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:privateToUser error:NULL];
}

// What the user had when Mail started goes beside the file before anything replaces it, so a
// hand-edited file with one typo can be mended rather than typed again. It replaces an older
// copy: that one was followed by a file the plug-in wrote, so the newest holds the latest edits.
// Until the copy is safe, the file itself is not replaced.
static BOOL keepUnreadPreferences(NSString *path)
{
    if (unreadPreferencesBytes == nil)
        return YES;
    if (!writeAtomically(unreadPreferencesBytes, [path stringByAppendingString:@".bak"]))
        return NO;
    [unreadPreferencesBytes release];
    unreadPreferencesBytes = nil;
    return YES;
}

// The text of an element. Markup characters go as character references, and so do control
// characters, which a reader would otherwise drop or fold (a carriage return reads as a line feed).
static NSString *xmlText(NSString *text)
{
    NSUInteger length = [text length];
    std::vector<unichar> characters(length);
    [text getCharacters:characters.data() range:NSMakeRange(0, length)];
    NSMutableString *xml = [NSMutableString stringWithCapacity:length];
    NSUInteger plainFrom = 0;
    for (NSUInteger i = 0; i < length; i++) {
        unichar c = characters[i];
        if (c != '&' && c != '<' && c != '>' && (c >= 0x20 || c == '\t' || c == '\n'))
            continue;
        [xml appendString:[text substringWithRange:NSMakeRange(plainFrom, i - plainFrom)]];
        [xml appendFormat:@"&#%u;", (unsigned)c];
        plainFrom = i + 1;
    }
    [xml appendString:[text substringFromIndex:plainFrom]];
    return xml;
}

static BOOL isBooleanNumber(id value)
{
    return value == [NSNumber numberWithBool:YES] || value == [NSNumber numberWithBool:NO];
}

// The file holds only dictionaries, arrays, texts, integers and booleans.
static void appendPlistXML(NSMutableString *xml, id value, NSString *indent)
{
    NSString *inner = [indent stringByAppendingString:@"\t"];
    if ([value isKindOfClass:[NSDictionary class]]) {
        [xml appendFormat:@"%@<dict>\n", indent];
        for (NSString *key in [[value allKeys] sortedArrayUsingSelector:@selector(compare:)]) {
            [xml appendFormat:@"%@<key>%@</key>\n", inner, xmlText(key)];
            appendPlistXML(xml, [value objectForKey:key], inner);
        }
        [xml appendFormat:@"%@</dict>\n", indent];
    } else if ([value isKindOfClass:[NSArray class]]) {
        [xml appendFormat:@"%@<array>\n", indent];
        for (id element in value)
            appendPlistXML(xml, element, inner);
        [xml appendFormat:@"%@</array>\n", indent];
    } else if ([value isKindOfClass:[NSString class]]) {
        [xml appendFormat:@"%@<string>%@</string>\n", indent, xmlText(value)];
    } else if (isBooleanNumber(value)) {
        [xml appendFormat:@"%@<%@/>\n", indent, [value boolValue] ? @"true" : @"false"];
    } else {
        [xml appendFormat:@"%@<integer>%lld</integer>\n", indent, [value longLongValue]];
    }
}

// Written here rather than by GNUstep's serialiser, which spells characters beyond the Basic
// Multilingual Plane (emoji) as "\U" escapes of its own: other readers keep them as text and
// GNUstep itself reads them back wrong, so a mailbox named with an emoji would be gone at the
// next start. Plain UTF-8 XML reads back the same everywhere.
static NSData *xmlPropertyListData(NSDictionary *plist)
{
    NSMutableString *xml = [NSMutableString stringWithString:@"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                             "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                                             "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                                             "<plist version=\"1.0\">\n"];
    appendPlistXML(xml, plist, @"");
    [xml appendString:@"</plist>\n"];
    // A text Mail could hold but UTF-8 cannot (half a surrogate pair) loses that character,
    // not the whole file.
    return [xml dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
}

static NSData *serializedPreferences(int sortType, BOOL excludeSpecialMailboxes, NSArray *list)
{
    NSMutableDictionary *preferences = [NSMutableDictionary dictionaryWithCapacity:0];
    [preferences setObject:[NSNumber numberWithInt:sortType] forKey:LVSortTypeKey];
    [preferences setObject:[NSNumber numberWithBool:excludeSpecialMailboxes] forKey:LVExcludeSpecialMailboxesKey];
    NSMutableArray *saved = [NSMutableArray arrayWithCapacity:[list count]];
    for (LorvaneMailbox *record in list) {
        NSDictionary *entry = savedRecord(record);
        if (entry != nil)
            [saved addObject:entry];
    }
    [preferences setObject:saved forKey:LVRecentMailboxesKey];
    // XML, as on a Mac: the platform's own text format is not what other tools read.
    return xmlPropertyListData(preferences);
}

- (void)readPreferences
{
    NSString *path = preferencesFilePath();
    NSDictionary *preferences = readPreferencesDictionary(path);
    rememberUnreadPreferences(path, preferences);

    // Normalised to YES or NO so that a stored 2 cannot pass for a third state.
    id exclude = valueAnswering(preferences, LVExcludeSpecialMailboxesKey, @selector(boolValue));
    _excludeSpecialMailboxes = exclude != nil ? ([exclude boolValue] ? YES : NO) : YES;

    _sortType = [valueAnswering(preferences, LVSortTypeKey, @selector(intValue)) intValue];
    if ((unsigned int)_sortType > 2)
        _sortType = 0;

    // A new list may take the old one's address: what was noted of that one must go.
    forgetListNotes();
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
    NSData *data = serializedPreferences(_sortType, _excludeSpecialMailboxes, _recentMailboxes);
    NSString *path = preferencesFilePath();
    if (data == nil || path == nil || !makeFolderOfFile(path) || !keepUnreadPreferences(path) || !writeAtomically(data, path))
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
    return readPreferencesDictionary([library stringByAppendingPathComponent:@"Preferences/com.apple.recentitems.plist"]);
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
// by name; each such run is told apart by account and folder. The sort starts from Mail's
// names, not the last rebuild's: "" and " (Folder)" need not sort side by side.
- (void)nameDuplicateMailboxes
{
    for (LorvaneMailbox *record in _recentMailboxes)
        [record setDisplayName:[[record uid] displayName]];
    [_recentMailboxes sortUsingSelector:@selector(sortCompareDisplayNameThenSpelling:)];
    NSUInteger count = [_recentMailboxes count];
    // Sorted a second time, as it always has been; with the spelling deciding ties it
    // changes nothing.
    [_recentMailboxes sortUsingSelector:@selector(sortCompareDisplayNameThenSpelling:)];
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
        [_recentMailboxes sortUsingSelector:@selector(sortCompareDisplayNameThenSpelling:)];
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
