/*
 * What the plug-in costs Mail, measured inside the stand-in Mail with the plug-in loaded
 * from the built bundle as Mail loads it. Built twice: with LV_BENCH_WITH_PLUGIN=0 the
 * same program never loads the bundle, and its transfer figures are Mail's own cost.
 *
 * Stores live in memory (accounts without folders) so that 50,000 mailboxes are cheap to
 * make. Several accounts hold the same folder names, so the menus meet duplicate names.
 * Counters interposed here, never in the plug-in, tell how many rebuilds an opening causes.
 */
#import <AppKit/AppKit.h>
#import "MHAlertRecorder.h"
#import "MailApp.h"
#import "MailModel.h"
#import "MessageTransfer.h"
#import "MessageViewer.h"
#import "PluginHost.h"
#import "LorvaneBundle_Provider.h"

#include <benchmark/benchmark.h>
#include <objc/runtime.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

#if LV_BENCH_WITH_PLUGIN
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}
#endif

NSString *temporaryRoot;
NSString *libraryFolder;

// GNUstep finds the user's Library folder through its configuration: a private one keeps
// the benchmarks away from the real preferences.
void redirectUserFolders(void)
{
    char pattern[] = "/tmp/lorvane-bench-XXXXXX";
    temporaryRoot = [[NSString alloc] initWithUTF8String:mkdtemp(pattern)];
    libraryFolder = [[temporaryRoot stringByAppendingPathComponent:@"Library"] retain];
    NSString *defaults = [temporaryRoot stringByAppendingPathComponent:@"Defaults"];
    NSString *home = [temporaryRoot stringByAppendingPathComponent:@"Home"];
    for (NSString *folder in @[ defaults, home, [libraryFolder stringByAppendingPathComponent:@"Preferences"] ])
        [[NSFileManager defaultManager] createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:NULL];
    NSMutableDictionary *config = GNUstepConfig(nil);
    [config setObject:libraryFolder forKey:@"GNUSTEP_USER_DIR_LIBRARY"];
    [config setObject:defaults forKey:@"GNUSTEP_USER_DEFAULTS_DIR"];
    GNUstepConfig(config);
    setenv("HOME", [home fileSystemRepresentation], 1);
}

#if LV_BENCH_WITH_PLUGIN
void writePlist(id plist, NSString *name, BOOL binary)
{
    NSPropertyListFormat format = binary ? NSPropertyListBinaryFormat_v1_0 : NSPropertyListXMLFormat_v1_0;
    NSData *data = [NSPropertyListSerialization dataWithPropertyList:plist format:format options:0 error:NULL];
    [data writeToFile:[libraryFolder stringByAppendingPathComponent:name] atomically:YES];
}

// The system's "Number of Recent Items", which sets the list's limit when a provider starts.
void setRecentItemsLimit(int limit)
{
    writePlist(@{ @"RecentDocuments" : @{ @"MaxAmount" : @(limit) } }, @"Preferences/com.apple.recentitems.plist", YES);
}

// A preferences file naming the mailboxes, the first one most used.
void writePreferences(NSArray *mailboxes)
{
    NSMutableArray *records = [NSMutableArray array];
    NSString *date = [[NSDate date] description];
    int accesses = (int)[mailboxes count];
    for (MailboxUid *mailbox in mailboxes)
        [records addObject:@{ @"FullPath" : [mailbox fullPath], @"Accesses" : @(accesses--), @"Date" : date }];
    writePlist(@{ @"SortType" : @0, @"ExcludeSpecialMailboxes" : @(YES), @"RecentMailboxes" : records },
               @"Preferences/org.lorvane.mailbundle.plist", NO);
}

void removePreferences(void)
{
    [[NSFileManager defaultManager] removeItemAtPath:[libraryFolder stringByAppendingPathComponent:@"Preferences/org.lorvane.mailbundle.plist"]
                                               error:NULL];
}
#endif

const int LVStoreAccounts = 5;

// A store of about `size` mailboxes over five in-memory accounts: each account holds
// "Archive/Box n" for the same n, so every box name appears once per account.
struct Store {
    NSArray *accounts;      // retained for the process
    NSArray *boxes;         // "Archive/Box n" of account (i % 5), n = i / 5: neighbours share names
};

Store storeOfSize(int size)
{
    static std::map<int, Store> stores;
    auto found = stores.find(size);
    if (found != stores.end())
        return found->second;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    int perAccount = size / LVStoreAccounts - 1;    // less the "Archive" parent
    NSMutableArray *accounts = [NSMutableArray array];
    std::vector<std::vector<MailboxUid *>> byAccount(LVStoreAccounts);
    for (int a = 0; a < LVStoreAccounts; a++) {
        NSString *name = [NSString stringWithFormat:@"Account %d (%d)", a + 1, size];
        MailAccount *account = [[MailAccount alloc] initWithDisplayName:name path:nil];
        for (int n = 0; n < perAccount; n++)
            byAccount[a].push_back([account createMailboxWithRelativePath:[NSString stringWithFormat:@"Archive/Box %05d", n]]);
        [accounts addObject:account];
        [account release];
    }
    NSMutableArray *boxes = [NSMutableArray array];
    for (int n = 0; n < perAccount; n++)
        for (int a = 0; a < LVStoreAccounts; a++)
            [boxes addObject:byAccount[a][n]];
    Store store = { [accounts copy], [boxes copy] };
    // Mail's accounts answer their mailboxes in order; ordering happens on first request.
    for (MailAccount *account in accounts)
        [account allMailboxUids];
    [pool release];
    stores[size] = store;
    return store;
}

void useStore(const Store &store)
{
    [MailAccount setActiveAccounts:store.accounts];
}

MessageViewer *viewer(void)
{
    static MessageViewer *shared;
    if (shared == nil)
        shared = [[MessageViewer alloc] init];
    return shared;
}

// One transfer per destination, made once; setting the viewer as delegate is the event
// the plug-in watches. The file is never moved.
NSArray *transfersTo(NSArray *destinations)
{
    NSMutableArray *transfers = [NSMutableArray arrayWithCapacity:[destinations count]];
    for (MailboxUid *destination in destinations) {
        MessageTransfer *transfer = [[MessageTransfer alloc] initWithMessagesAtPaths:@[ @"/nonexistent/1.eml" ]
                                                                   destinationMailbox:destination
                                                                      deleteOriginals:NO];
        [transfers addObject:transfer];
        [transfer release];
    }
    return transfers;
}

NSArray *firstBoxes(const Store &store, int count)
{
    NSUInteger available = [store.boxes count];
    return [store.boxes subarrayWithRange:NSMakeRange(0, MIN((NSUInteger)count, available))];
}

#if LV_BENCH_WITH_PLUGIN

Class providerClass;
long rebuilds;          // -updateMenus calls
long menuRequests;      // -menuNeedsUpdate: calls
long titlesSet;         // -[NSMenuItem setTitle:] calls
IMP originalUpdateMenus;
IMP originalMenuNeedsUpdate;
IMP originalSetTitle;

void countingUpdateMenus(id self, SEL _cmd)
{
    rebuilds++;
    ((void (*)(id, SEL))originalUpdateMenus)(self, _cmd);
}

// When set, the five submenus hold back AppKit's menu-changed messages during the call, as
// an experiment: it tells how much of an opening is the toolkit re-laying out its menus.
bool batchMenuChanges;

void countingMenuNeedsUpdate(id self, SEL _cmd, id menu)
{
    menuRequests++;
    if (!batchMenuChanges) {
        ((void (*)(id, SEL, id))originalMenuNeedsUpdate)(self, _cmd, menu);
        return;
    }
    LorvaneBundle_Provider *provider = self;
    NSArray *submenus = @[ [provider moveToRecentSubmenu], [provider copyToRecentSubmenu], [provider goToRecentSubmenu],
                           [provider moveToRecentContextualSubmenu], [provider copyToRecentContextualSubmenu] ];
    for (NSMenu *submenu in submenus)
        [submenu setMenuChangedMessagesEnabled:NO];
    ((void (*)(id, SEL, id))originalMenuNeedsUpdate)(self, _cmd, menu);
    for (NSMenu *submenu in submenus)
        [submenu setMenuChangedMessagesEnabled:YES];
}

void countingSetTitle(id self, SEL _cmd, id title)
{
    titlesSet++;
    ((void (*)(id, SEL, id))originalSetTitle)(self, _cmd, title);
}

IMP interpose(Class cls, SEL selector, IMP counter)
{
    Method method = class_getInstanceMethod(cls, selector);
    return method != NULL ? method_setImplementation(method, counter) : NULL;
}

void interposeCounters(void)
{
    originalUpdateMenus = interpose(providerClass, @selector(updateMenus), (IMP)countingUpdateMenus);
    originalMenuNeedsUpdate = interpose(providerClass, @selector(menuNeedsUpdate:), (IMP)countingMenuNeedsUpdate);
    originalSetTitle = interpose([NSMenuItem class], @selector(setTitle:), (IMP)countingSetTitle);
}

// Takes a provider's three items out of Mail's menu bar, so that providers made one after
// another do not pile up items there. The provider itself stays alive, as Mail's does.
void retireProvider(LorvaneBundle_Provider *provider)
{
    for (NSMenu *submenu in @[ [provider moveToRecentSubmenu], [provider copyToRecentSubmenu], [provider goToRecentSubmenu] ]) {
        NSMenu *supermenu = [submenu supermenu];
        NSInteger index = supermenu != nil ? [supermenu indexOfItemWithSubmenu:submenu] : -1;
        if (index >= 0)
            [supermenu removeItemAtIndex:index];
    }
}

// A provider started as Mail starts one, with the limit and the preferences file given;
// it becomes the one the hooks report to.
LorvaneBundle_Provider *newProvider(int limit, NSArray *savedMailboxes)
{
    setRecentItemsLimit(limit);
    if (savedMailboxes != nil)
        writePreferences(savedMailboxes);
    else
        removePreferences();
    return [[providerClass alloc] init];
}

void sendEvent(MessageTransfer *transfer)
{
    [transfer setDelegate:viewer()];
}

// The provider's list filled with the mailboxes, and its menus rebuilt once.
LorvaneBundle_Provider *providerWithList(int limit, NSArray *mailboxes)
{
    LorvaneBundle_Provider *provider = newProvider(limit, nil);
    for (MessageTransfer *transfer in transfersTo(mailboxes))
        sendEvent(transfer);
    [[provider moveToRecentSubmenu] update];
    return provider;
}

#endif

// Mail's transfer event, with or without the plug-in behind it: a burst over twice the
// limit of mailboxes, so every event past the first lap misses and evicts.
void BM_TransferEvent(benchmark::State &state)
{
    int limit = (int)state.range(0);
    Store store = storeOfSize(2000);
    useStore(store);
#if LV_BENCH_WITH_PLUGIN
    LorvaneBundle_Provider *provider = newProvider(limit, nil);
#endif
    NSArray *transfers = transfersTo(firstBoxes(store, 2 * limit));
    NSUInteger count = [transfers count];
    NSUInteger next = 0;
    for (auto _ : state) {
        [(MessageTransfer *)[transfers objectAtIndex:next] setDelegate:viewer()];
        if (++next == count)
            next = 0;
    }
#if LV_BENCH_WITH_PLUGIN
    retireProvider(provider);
#endif
    state.counters["limit"] = limit;
}
BENCHMARK(BM_TransferEvent)->Arg(10)->Arg(50)->Arg(500);

#if LV_BENCH_WITH_PLUGIN

// The same event right after an opening re-sorted the list by name: the next miss sorts
// it back by date to find the oldest. Only the event is timed.
void BM_TransferEventAfterOpening(benchmark::State &state)
{
    int limit = (int)state.range(0);
    Store store = storeOfSize(2000);
    useStore(store);
    LorvaneBundle_Provider *provider = newProvider(limit, nil);
    NSMenu *menu = [provider moveToRecentSubmenu];
    NSArray *transfers = transfersTo(firstBoxes(store, 2 * limit));
    NSUInteger count = [transfers count];
    NSUInteger next = 0;
    for (NSUInteger i = 0; i < count; i++)
        sendEvent([transfers objectAtIndex:i]);
    for (auto _ : state) {
        [menu update];
        MessageTransfer *transfer = [transfers objectAtIndex:next];
        Clock::time_point start = Clock::now();
        [transfer setDelegate:viewer()];
        state.SetIterationTime(secondsSince(start));
        if (++next == count)
            next = 0;
    }
    retireProvider(provider);
    state.counters["limit"] = limit;
}
// Each event waits for an untimed rebuild of five submenus: a fixed count keeps the run short.
BENCHMARK(BM_TransferEventAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(100);

// Opening a recent submenu after a change (a transfer to a listed mailbox): all five
// submenus are rebuilt, with duplicate names across accounts. Only the opening is timed.
void BM_OpenSubmenuAfterChange(benchmark::State &state)
{
    int limit = (int)state.range(0);
    Store store = storeOfSize(2000);
    useStore(store);
    NSArray *listed = firstBoxes(store, limit);
    LorvaneBundle_Provider *provider = providerWithList(limit, listed);
    NSMenu *menu = [provider moveToRecentSubmenu];
    NSArray *transfers = transfersTo(listed);
    NSUInteger next = 0;
    long rebuildsBefore = rebuilds, requestsBefore = menuRequests, titlesBefore = titlesSet;
    for (auto _ : state) {
        sendEvent([transfers objectAtIndex:next]);
        if (++next == [transfers count])
            next = 0;
        Clock::time_point start = Clock::now();
        [menu update];
        state.SetIterationTime(secondsSince(start));
    }
    double openings = (double)state.iterations();
    state.counters["rebuilds_per_opening"] = (double)(rebuilds - rebuildsBefore) / openings;
    state.counters["menuNeedsUpdate_per_opening"] = (double)(menuRequests - requestsBefore) / openings;
    state.counters["titles_set_per_opening"] = (double)(titlesSet - titlesBefore) / openings;
    state.counters["entries"] = limit;
    retireProvider(provider);
}
BENCHMARK(BM_OpenSubmenuAfterChange)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Unit(benchmark::kMicrosecond);

// The same with the toolkit's menu-changed messages held back around the rebuild (done
// here, not by the plug-in): the difference is GNUstep laying its menus out change by change.
void BM_OpenSubmenuAfterChangeMessagesHeld(benchmark::State &state)
{
    batchMenuChanges = true;
    BM_OpenSubmenuAfterChange(state);
    batchMenuChanges = false;
}
BENCHMARK(BM_OpenSubmenuAfterChangeMessagesHeld)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Unit(benchmark::kMicrosecond);

// Start-up for a store and a preferences file: a new provider reads the limit and the
// file, finds each record's mailbox among all of Mail's and makes its menus.
void BM_StartupInit(benchmark::State &state)
{
    int mailboxes = (int)state.range(0);
    int records = (int)state.range(1);
    Store store = storeOfSize(mailboxes);
    useStore(store);
    setRecentItemsLimit(records);
    writePreferences(firstBoxes(store, records));
    int listed = 0;
    for (auto _ : state) {
        Clock::time_point start = Clock::now();
        LorvaneBundle_Provider *provider = [[providerClass alloc] init];
        state.SetIterationTime(secondsSince(start));
        listed = [provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)[store.boxes objectAtIndex:0]] >= 0 ? 1 : 0;
        retireProvider(provider);
    }
    state.counters["mailboxes"] = mailboxes;
    state.counters["records"] = records;
    state.counters["first_record_found"] = listed;
}
// A store of 100 has too few mailboxes for 500 records.
BENCHMARK(BM_StartupInit)
    ->Args({ 100, 10 })->Args({ 100, 50 })
    ->ArgsProduct({ { 1000, 10000, 50000 }, { 10, 50, 500 } })
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(20);

// Loading the bundle happens once per process: timed in main(), before any benchmark, for
// a 10,000-mailbox store and a 50-record file, and reported here.
double bundleLoadSeconds;
double preparationSeconds;

void BM_StartupLoadBundle(benchmark::State &state)
{
    for (auto _ : state)
        state.SetIterationTime(bundleLoadSeconds);
    state.counters["mailboxes"] = 10000;
    state.counters["records"] = 50;
    state.counters["mail_preparation_ms"] = preparationSeconds * 1e3;
}
BENCHMARK(BM_StartupLoadBundle)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

// The opening after a listed mailbox was deleted: the list is pruned against all of Mail's
// mailboxes, then the menus are rebuilt. Only the opening is timed.
void BM_OpenSubmenuAfterDelete(benchmark::State &state)
{
    int mailboxes = (int)state.range(0);
    const int limit = 50;
    Store store = storeOfSize(mailboxes);
    useStore(store);
    LorvaneBundle_Provider *provider = providerWithList(limit, firstBoxes(store, limit - 1));
    NSMenu *menu = [provider moveToRecentSubmenu];
    MailAccount *account = [store.accounts objectAtIndex:0];
    long timedRebuilds = 0;
    int pruned = 0;
    for (auto _ : state) {
        MailboxUid *doomed = [account createMailboxWithRelativePath:@"Scratch/Doomed"];
        NSArray *transfers = transfersTo(@[ doomed ]);
        sendEvent([transfers objectAtIndex:0]);
        [menu update];
        [account deleteMailbox:doomed reflectToServer:NO];
        long rebuildsBefore = rebuilds;
        Clock::time_point start = Clock::now();
        [menu update];
        state.SetIterationTime(secondsSince(start));
        timedRebuilds += rebuilds - rebuildsBefore;
        pruned += [provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)doomed] < 0 ? 1 : 0;
    }
    state.counters["mailboxes"] = mailboxes;
    state.counters["entries"] = limit;
    state.counters["pruned_fraction"] = (double)pruned / (double)state.iterations();
    state.counters["rebuilds_per_opening"] = (double)timedRebuilds / (double)state.iterations();
    retireProvider(provider);
}
BENCHMARK(BM_OpenSubmenuAfterDelete)->Arg(1000)->Arg(10000)->UseManualTime()->Unit(benchmark::kMicrosecond)->Iterations(100);

// The pruning pass alone, with nothing to prune: the walk over every mailbox.
void BM_PruneScan(benchmark::State &state)
{
    int mailboxes = (int)state.range(0);
    Store store = storeOfSize(mailboxes);
    useStore(store);
    LorvaneBundle_Provider *provider = providerWithList(50, firstBoxes(store, 50));
    for (auto _ : state)
        [provider removeDeletedMailboxes];
    state.counters["mailboxes"] = mailboxes;
    retireProvider(provider);
}
BENCHMARK(BM_PruneScan)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

#endif

void dropLogLine(NSString *message)
{
    (void)message;
}

void failOnUncaughtException(NSException *exception)
{
    fprintf(stderr, "Uncaught exception %s: %s\n", [[exception name] UTF8String], [[exception reason] UTF8String]);
    _exit(3);
}

} // namespace

int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    benchmark::Initialize(&argc, argv);
    redirectUserFolders();
    if (getenv("LORVANE_BENCH_LOG") == NULL)
        _NSLog_printf_handler = dropLogLine;
    NSSetUncaughtExceptionHandler(failOnUncaughtException);

    // Mail's order: application, store, plug-ins, viewer windows.
    MHSetRecordsAlerts(YES);
    if ([MailApp sharedMailApp] == nil)
        return 2;
#if LV_BENCH_WITH_PLUGIN
    Store store = storeOfSize(10000);
    useStore(store);
    setRecentItemsLimit(50);
    writePreferences(firstBoxes(store, 50));
    Clock::time_point start = Clock::now();
    MHPrepareMailClassesForPlugins();
    preparationSeconds = secondsSince(start);
    start = Clock::now();
    NSBundle *bundle = MHLoadMailBundle(@LORVANE_BUNDLE_PATH);
    bundleLoadSeconds = secondsSince(start);
    providerClass = NSClassFromString(@"LorvaneBundle_Provider");
    if (bundle == nil || providerClass == Nil || [providerClass activeLorvaneBundle_Provider] == nil) {
        fprintf(stderr, "The plug-in did not load from %s\n", LORVANE_BUNDLE_PATH);
        return 2;
    }
    interposeCounters();
#else
    MHPrepareMailClassesForPlugins();
#endif
    viewer();

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    [[NSFileManager defaultManager] removeItemAtPath:temporaryRoot error:NULL];
    [pool release];
    return 0;
}
