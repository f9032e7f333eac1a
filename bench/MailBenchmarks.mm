/*
 * What the plug-in costs Mail, measured inside the stand-in Mail with the plug-in loaded
 * from the built bundle as Mail loads it. Built twice: with LV_BENCH_WITH_PLUGIN=0 the
 * same program never loads the bundle, and its transfer figures are Mail's own cost.
 *
 * Stores live in memory (accounts without folders) so that 50,000 mailboxes are cheap to
 * make. Several accounts hold the same folder names, so the menus meet duplicate names.
 * Counters interposed here, never in the plug-in, tell how many rebuilds an opening causes.
 * Start-up's memory is read from the kernel once per process, in both programs.
 *
 * Two yardsticks run beside the plug-in in the same process: the list's costly steps done
 * the plain way (LiteralListSteps) and the recent menu as other mail clients make it, rebuilt
 * from all mailboxes on each opening (LBRebuildOnOpeningMenu).
 */
#import <AppKit/AppKit.h>
#import "MHAlertRecorder.h"
#import "MHPrivateFolders.h"
#import "MailApp.h"
#import "MailModel.h"
#import "MessageTransfer.h"
#import "MessageViewer.h"
#import "PluginHost.h"
#import "LorvaneBundle_Provider.h"
#import "MHMailMenus.h"
#import "LiteralListSteps.h"
#import "RebuildOnOpeningMenu.h"

#include <benchmark/benchmark.h>
#include <objc/runtime.h>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

NSString *temporaryRoot;
NSString *libraryFolder;

// GNUstep finds the user's Library folder through its configuration: a private one keeps
// the benchmarks away from the real preferences.
void redirectUserFolders(void)
{
    char pattern[] = "/tmp/lorvane-bench-XXXXXX";
    temporaryRoot = [[NSString alloc] initWithUTF8String:mkdtemp(pattern)];
    libraryFolder = [MHUsePrivateUserFolders(temporaryRoot) retain];
}

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

// The plug-in's preferences file, inside the Library folder.
NSString *const LBPreferencesFile = @"Preferences/org.lorvane.mailbundle.plist";

// A preferences file naming the mailboxes, the first one most used.
void writePreferences(NSArray *mailboxes)
{
    NSMutableArray *records = [NSMutableArray array];
    NSString *date = [[NSDate date] description];
    int accesses = (int)[mailboxes count];
    for (MailboxUid *mailbox in mailboxes)
        [records addObject:@{ @"FullPath" : [mailbox fullPath], @"Accesses" : @(accesses--), @"Date" : date }];
    writePlist(@{ @"SortType" : @0, @"ExcludeSpecialMailboxes" : @(YES), @"RecentMailboxes" : records },
               LBPreferencesFile, NO);
}

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

// Mail messaging its classes before it loads plug-ins, timed in main() for the report.
double preparationSeconds;

// A "Vm...:" line of /proc/self/status, in KiB; -1 where there is none.
long statusKilobytes(const char *field)
{
    FILE *status = fopen("/proc/self/status", "r");
    if (status == NULL)
        return -1;
    char line[256];
    long kilobytes = -1;
    size_t length = strlen(field);
    while (kilobytes < 0 && fgets(line, sizeof line, status) != NULL) {
        if (strncmp(line, field, length) == 0)
            kilobytes = strtol(line + length, NULL, 10);
    }
    fclose(status);
    return kilobytes;
}

long heapInUseKilobytes(void)
{
    struct mallinfo2 heap = mallinfo2();
    return (long)((heap.uordblks + heap.hblkhd) / 1024);
}

// Memory of the part of start-up where Mail loads plug-ins and opens its first viewer.
// Freed heap is handed back and the kernel's high-water mark of resident memory reset
// first, so the mark's rise over the resident size counts everything that part brings in
// at its peak: code, data, heap, a preferences file being parsed. Mail without the plug-in
// measures the same part, and the report subtracts its figures.
struct StartupMemory {
    bool peakReset;      // the kernel let the high-water mark be reset
    long residentBefore;
    long heapBefore;
    long peakAdded;      // KiB; -1 when the mark could not be reset
    long heapKept;       // KiB still in use once start-up is over
};
StartupMemory startupMemory;

bool resetPeakResidentSize(void)
{
    FILE *clearRefs = fopen("/proc/self/clear_refs", "w");
    if (clearRefs == NULL)
        return false;
    bool written = fputs("5", clearRefs) >= 0;
    return fclose(clearRefs) == 0 && written;
}

void beginStartupMemory(void)
{
    malloc_trim(0);
    startupMemory.peakReset = resetPeakResidentSize();
    startupMemory.residentBefore = statusKilobytes("VmRSS:");
    startupMemory.heapBefore = heapInUseKilobytes();
}

void endStartupMemory(void)
{
    startupMemory.peakAdded = startupMemory.peakReset ? statusKilobytes("VmHWM:") - startupMemory.residentBefore : -1;
    startupMemory.heapKept = heapInUseKilobytes() - startupMemory.heapBefore;
}

void BM_StartupMemory(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(startupMemory.peakAdded);
    state.counters["mailboxes"] = 10000;
    state.counters["records"] = 50;
    state.counters["peak_rss_added_kib"] = (double)startupMemory.peakAdded;
    state.counters["heap_kept_kib"] = (double)startupMemory.heapKept;
}
BENCHMARK(BM_StartupMemory)->Iterations(1);

// One step per iteration, for each of `count` turns in a cycle.
template <typename Step>
void timeStepsInTurn(benchmark::State &state, NSUInteger count, Step step)
{
    NSUInteger next = 0;
    for (auto _ : state) {
        step(next);
        if (++next == count)
            next = 0;
    }
}

#if LV_BENCH_WITH_PLUGIN

template <typename Step>
double secondsFor(Step step)
{
    Clock::time_point start = Clock::now();
    step();
    return secondsSince(start);
}

double median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    std::nth_element(values.begin(), values.begin() + (long)values.size() / 2, values.end());
    return values[values.size() / 2];
}

// One step per iteration after an untimed preparation, for each of `count` turns in a
// cycle: only the step is timed. Steps are few and short, so one preemption on this shared
// machine would swing their mean: the median step is reported beside it, and the report
// reads that.
template <typename Prepare, typename Step>
void timeStepsAfterPreparing(benchmark::State &state, NSUInteger count, Prepare prepare, Step step)
{
    std::vector<double> steps;
    NSUInteger next = 0;
    for (auto _ : state) {
        prepare(next);
        steps.push_back(secondsFor([&] { step(next); }));
        state.SetIterationTime(steps.back());
        if (++next == count)
            next = 0;
    }
    state.counters["median_step_s"] = median(steps);
}

// An opening with nothing to do is far too short to time alone: a run of them is timed.
const int LBOpeningsPerRun = 1000;

double secondsPerOpeningInRun(NSMenu *menu)
{
    double run = secondsFor([&] {
        for (int i = 0; i < LBOpeningsPerRun; i++)
            [menu update];
    });
    return run / LBOpeningsPerRun;
}

// Puts a submenu in Mail's Message menu, where the plug-in's "Move to Recent" goes.
void placeInMessageMenu(NSMenu *submenu)
{
    NSMenu *messageMenu = [[MHMailMenus itemTitled:@"Message" inMenu:[NSApp mainMenu]] submenu];
    NSMenuItem *item = (NSMenuItem *)[messageMenu addItemWithTitle:[submenu title] action:NULL keyEquivalent:@""];
    [messageMenu setSubmenu:submenu forItem:item];
}

void removeFromSupermenu(NSMenu *submenu)
{
    NSMenu *supermenu = [submenu supermenu];
    NSInteger index = supermenu != nil ? [supermenu indexOfItemWithSubmenu:submenu] : -1;
    if (index >= 0)
        [supermenu removeItemAtIndex:index];
}

// Mailboxes to open menus of `entries` after changes: the list starts with the second half,
// and transfers cycling through all of them then always bring in a mailbox it lacks, which
// pushes out the oldest entry, so every opening has one entry to add and one to drop.
NSArray *changingMailboxes(const Store &store, int entries)
{
    return firstBoxes(store, 2 * entries);
}

NSArray *startingHalf(NSArray *changing)
{
    NSUInteger half = [changing count] / 2;
    return [changing subarrayWithRange:NSMakeRange(half, [changing count] - half)];
}

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
    for (NSMenu *submenu in @[ [provider moveToRecentSubmenu], [provider copyToRecentSubmenu], [provider goToRecentSubmenu] ])
        removeFromSupermenu(submenu);
}

void removePreferences(void)
{
    [[NSFileManager defaultManager] removeItemAtPath:[libraryFolder stringByAppendingPathComponent:LBPreferencesFile] error:NULL];
}

// The records of the preferences file, parsed as the plug-in parses the file.
NSArray *savedRecordsInPreferencesFile(void)
{
    NSData *data = [NSData dataWithContentsOfFile:[libraryFolder stringByAppendingPathComponent:LBPreferencesFile]];
    NSDictionary *preferences = [NSPropertyListSerialization propertyListWithData:data
                                                                          options:NSPropertyListImmutable
                                                                           format:NULL
                                                                            error:NULL];
    return [preferences objectForKey:@"RecentMailboxes"];
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
    timeStepsInTurn(state, [transfers count], [&](NSUInteger i) { [(MessageTransfer *)[transfers objectAtIndex:i] setDelegate:viewer()]; });
#if LV_BENCH_WITH_PLUGIN
    retireProvider(provider);
#endif
    state.counters["limit"] = limit;
}
BENCHMARK(BM_TransferEvent)->Arg(10)->Arg(50)->Arg(500);

#if LV_BENCH_WITH_PLUGIN

// Each event after an opening waits for an untimed rebuild (of five submenus at 500 entries,
// tens of milliseconds): a fixed count keeps the run short, and the median step steady.
const int LBEventsAfterOpenings = 50;

// The same event right after an opening left the list in name order, where the next miss
// must still find the oldest entry to drop. Only the event is timed.
void BM_TransferEventAfterOpening(benchmark::State &state)
{
    int limit = (int)state.range(0);
    Store store = storeOfSize(2000);
    useStore(store);
    LorvaneBundle_Provider *provider = newProvider(limit, nil);
    NSMenu *menu = [provider moveToRecentSubmenu];
    NSArray *transfers = transfersTo(firstBoxes(store, 2 * limit));
    for (MessageTransfer *transfer in transfers)
        sendEvent(transfer);
    timeStepsAfterPreparing(state, [transfers count], [&](NSUInteger) { [menu update]; },
                            [&](NSUInteger i) { sendEvent([transfers objectAtIndex:i]); });
    retireProvider(provider);
    state.counters["limit"] = limit;
}
BENCHMARK(BM_TransferEventAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(LBEventsAfterOpenings);

// Opening a recent submenu after a change, a transfer into a mailbox the list lacks: all
// five submenus are rebuilt, with duplicate names across accounts. Only the opening is timed.
void BM_OpenSubmenuAfterChange(benchmark::State &state)
{
    int entries = (int)state.range(0);
    int mailboxes = (int)state.range(1);
    Store store = storeOfSize(mailboxes);
    useStore(store);
    NSArray *changing = changingMailboxes(store, entries);
    LorvaneBundle_Provider *provider = providerWithList(entries, startingHalf(changing));
    NSMenu *menu = [provider moveToRecentSubmenu];
    NSArray *transfers = transfersTo(changing);
    long rebuildsBefore = rebuilds, requestsBefore = menuRequests, titlesBefore = titlesSet;
    timeStepsAfterPreparing(state, [transfers count], [&](NSUInteger i) { sendEvent([transfers objectAtIndex:i]); },
                            [&](NSUInteger) { [menu update]; });
    double openings = (double)state.iterations();
    state.counters["rebuilds_per_opening"] = (double)(rebuilds - rebuildsBefore) / openings;
    state.counters["menuNeedsUpdate_per_opening"] = (double)(menuRequests - requestsBefore) / openings;
    state.counters["titles_set_per_opening"] = (double)(titlesSet - titlesBefore) / openings;
    state.counters["entries"] = entries;
    state.counters["mailboxes"] = mailboxes;
    retireProvider(provider);
}

// Entries for the list's limits, in a store of 10,000 mailboxes.
void listSizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Args({ 10, 10000 })->Args({ 50, 10000 })->Args({ 500, 10000 });
}
BENCHMARK(BM_OpenSubmenuAfterChange)->Apply(listSizes)->UseManualTime()->Unit(benchmark::kMicrosecond);

// The same with the toolkit's menu-changed messages held back around the rebuild (done
// here, not by the plug-in): the difference is GNUstep laying its menus out change by change.
void BM_OpenSubmenuAfterChangeMessagesHeld(benchmark::State &state)
{
    batchMenuChanges = true;
    BM_OpenSubmenuAfterChange(state);
    batchMenuChanges = false;
}
BENCHMARK(BM_OpenSubmenuAfterChangeMessagesHeld)->Apply(listSizes)->UseManualTime()->Unit(benchmark::kMicrosecond);

// The toolkit's own part of an opening with nothing changed: the plug-in's submenu opened
// with no delegate to ask, timed like the openings of BM_OpeningsUnchangedSideBySide.
void BM_OpenSubmenuWithoutDelegate(benchmark::State &state)
{
    int entries = (int)state.range(0);
    int mailboxes = (int)state.range(1);
    Store store = storeOfSize(mailboxes);
    useStore(store);
    LorvaneBundle_Provider *provider = providerWithList(entries, firstBoxes(store, entries));
    NSMenu *menu = [provider moveToRecentSubmenu];
    [menu setDelegate:nil];
    std::vector<double> openings;
    for (auto _ : state) {
        openings.push_back(secondsPerOpeningInRun(menu));
        state.SetIterationTime(openings.back() * LBOpeningsPerRun);
    }
    state.counters["median_step_s"] = median(openings);
    [menu setDelegate:provider];
    retireProvider(provider);
}
BENCHMARK(BM_OpenSubmenuWithoutDelegate)->Args({ 50, 10000 })->UseManualTime();

// A store of 100 has too few mailboxes for 500 records.
void startupSizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Args({ 100, 10 })->Args({ 100, 50 })->ArgsProduct({ { 1000, 10000, 50000 }, { 10, 50, 500 } });
}

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
BENCHMARK(BM_StartupInit)->Apply(startupSizes)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

void BM_FirstOpening(benchmark::State &state)
{
    int mailboxes = (int)state.range(0);
    int records = (int)state.range(1);
    Store store = storeOfSize(mailboxes);
    useStore(store);
    for (auto _ : state) {
        state.PauseTiming();
        LorvaneBundle_Provider *provider = newProvider(records, firstBoxes(store, records));
        NSMenu *menu = [provider moveToRecentSubmenu];
        state.ResumeTiming();
        [menu update];
        state.PauseTiming();
        retireProvider(provider);
        state.ResumeTiming();
    }
}
BENCHMARK(BM_FirstOpening)->Args({ 10000, 50 })->Args({ 50000, 500 })->Unit(benchmark::kMillisecond)->Iterations(10);

// Loading the bundle happens once per process: timed by loadPlugin(), before any benchmark, for
// a 10,000-mailbox store and a 50-record file, and reported here.
double bundleLoadSeconds;

void BM_StartupLoadBundle(benchmark::State &state)
{
    for (auto _ : state)
        state.SetIterationTime(bundleLoadSeconds);
    state.counters["mailboxes"] = 10000;
    state.counters["records"] = 50;
    state.counters["mail_preparation_ms"] = preparationSeconds * 1e3;
}
BENCHMARK(BM_StartupLoadBundle)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

// Loads the bundle as Mail does, timed; NO when the plug-in did not start.
bool loadPlugin(void)
{
    Clock::time_point start = Clock::now();
    NSBundle *bundle = MHLoadMailBundle(@LORVANE_BUNDLE_PATH);
    bundleLoadSeconds = secondsSince(start);
    providerClass = NSClassFromString(@"LorvaneBundle_Provider");
    if (bundle == nil || providerClass == Nil || [providerClass activeLorvaneBundle_Provider] == nil) {
        fprintf(stderr, "The plug-in did not load from %s\n", LORVANE_BUNDLE_PATH);
        return false;
    }
    return true;
}

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

#pragma mark The list's steps beside the same steps done plainly

// What a provider with no preferences file uses: the order by name, special mailboxes left out.
const int LBDefaultSortType = 0;
const BOOL LBExcludeSpecialMailboxes = YES;

// The list operation every transfer ends in, called directly, in a burst over twice the
// limit of mailboxes so that every event past the first lap evicts.
void BM_AddOrTouch(benchmark::State &state)
{
    int limit = (int)state.range(0);
    Store store = storeOfSize(2000);
    useStore(store);
    LorvaneBundle_Provider *provider = newProvider(limit, nil);
    NSArray *mailboxes = firstBoxes(store, 2 * limit);
    timeStepsInTurn(state, [mailboxes count], [&](NSUInteger i) { [provider addOrTouchRecentMailboxFromUid:[mailboxes objectAtIndex:i]]; });
    retireProvider(provider);
    state.counters["limit"] = limit;
}
BENCHMARK(BM_AddOrTouch)->Arg(10)->Arg(50)->Arg(500);

void BM_LiteralAddOrTouch(benchmark::State &state)
{
    int limit = (int)state.range(0);
    Store store = storeOfSize(2000);
    useStore(store);
    NSMutableArray *list = [NSMutableArray array];
    NSArray *mailboxes = firstBoxes(store, 2 * limit);
    timeStepsInTurn(state, [mailboxes count], [&](NSUInteger i) {
        LBLiteralAddOrTouch(list, [mailboxes objectAtIndex:i], limit, LBDefaultSortType, LBExcludeSpecialMailboxes);
    });
    state.counters["limit"] = limit;
}
BENCHMARK(BM_LiteralAddOrTouch)->Arg(10)->Arg(50)->Arg(500);

// The same right after an opening left the list in name order. Only the event is timed.
void BM_AddOrTouchAfterOpening(benchmark::State &state)
{
    int limit = (int)state.range(0);
    Store store = storeOfSize(2000);
    useStore(store);
    LorvaneBundle_Provider *provider = newProvider(limit, nil);
    NSMenu *menu = [provider moveToRecentSubmenu];
    NSArray *mailboxes = firstBoxes(store, 2 * limit);
    for (id<LVMailboxUid> mailbox in mailboxes)
        [provider addOrTouchRecentMailboxFromUid:mailbox];
    timeStepsAfterPreparing(state, [mailboxes count], [&](NSUInteger) { [menu update]; },
                            [&](NSUInteger i) { [provider addOrTouchRecentMailboxFromUid:[mailboxes objectAtIndex:i]]; });
    retireProvider(provider);
    state.counters["limit"] = limit;
}
BENCHMARK(BM_AddOrTouchAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(LBEventsAfterOpenings);

void BM_LiteralAddOrTouchAfterOpening(benchmark::State &state)
{
    int limit = (int)state.range(0);
    Store store = storeOfSize(2000);
    useStore(store);
    NSMutableArray *list = [NSMutableArray array];
    NSArray *mailboxes = firstBoxes(store, 2 * limit);
    for (id<LVMailboxUid> mailbox in mailboxes)
        LBLiteralAddOrTouch(list, mailbox, limit, LBDefaultSortType, LBExcludeSpecialMailboxes);
    timeStepsAfterPreparing(state, [mailboxes count], [&](NSUInteger) { [list sortUsingSelector:@selector(sortCompareDisplayName:)]; },
                            [&](NSUInteger i) {
                                LBLiteralAddOrTouch(list, [mailboxes objectAtIndex:i], limit, LBDefaultSortType, LBExcludeSpecialMailboxes);
                            });
    state.counters["limit"] = limit;
}
BENCHMARK(BM_LiteralAddOrTouchAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(LBEventsAfterOpenings);

// Start-up's search for the saved mailboxes: readPreferences on a started provider, and
// the same file parsed alike and loaded comparing every saved path with every mailbox.
// Each reading gets its own pool, so that a long run does not pile up parsed files.
void BM_ReadPreferences(benchmark::State &state)
{
    int mailboxes = (int)state.range(0);
    int records = (int)state.range(1);
    Store store = storeOfSize(mailboxes);
    useStore(store);
    LorvaneBundle_Provider *provider = newProvider(records, firstBoxes(store, records));
    for (auto _ : state) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        [provider readPreferences];
        [pool release];
    }
    retireProvider(provider);
    state.counters["mailboxes"] = mailboxes;
    state.counters["records"] = records;
}

void BM_LiteralReadPreferences(benchmark::State &state)
{
    int mailboxes = (int)state.range(0);
    int records = (int)state.range(1);
    Store store = storeOfSize(mailboxes);
    useStore(store);
    writePreferences(firstBoxes(store, records));
    NSUInteger loaded = 0;
    for (auto _ : state) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        loaded = [LBLiteralLoadSavedRecords(savedRecordsInPreferencesFile(), records, LBDefaultSortType) count];
        [pool release];
    }
    state.counters["mailboxes"] = mailboxes;
    state.counters["records"] = records;
    state.counters["records_loaded"] = (double)loaded;
}

BENCHMARK(BM_ReadPreferences)->Apply(startupSizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LiteralReadPreferences)->Apply(startupSizes)->Unit(benchmark::kMillisecond);

// Pruning done plainly, with nothing to prune: beside BM_PruneScan.
void BM_LiteralPruneScan(benchmark::State &state)
{
    int mailboxes = (int)state.range(0);
    Store store = storeOfSize(mailboxes);
    useStore(store);
    NSMutableArray *list = [NSMutableArray array];
    for (id<LVMailboxUid> mailbox in firstBoxes(store, 50)) {
        id record = LBNewRecordFor(mailbox);
        [list addObject:record];
        [record release];
    }
    for (auto _ : state)
        LBLiteralRemoveDeletedMailboxes(list);
    state.counters["mailboxes"] = mailboxes;
    state.counters["entries_kept"] = (double)[list count];
}
BENCHMARK(BM_LiteralPruneScan)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

#pragma mark Openings beside the menu rebuilt from all mailboxes

// The other clients' design with the limit's time of last use noted for each of the
// mailboxes, in Mail's Message menu, opened once.
LBRebuildOnOpeningMenu *rebuildOnOpeningMenuAfterUses(int limit, NSArray *mailboxes, LBMailboxIdentity identity)
{
    LBRebuildOnOpeningMenu *recentMenu = [[LBRebuildOnOpeningMenu alloc] initWithLimit:(NSUInteger)limit identity:identity];
    placeInMessageMenu([recentMenu submenu]);
    for (id<LVMailboxUid> mailbox in mailboxes)
        [recentMenu noteTransferTo:mailbox];
    [[recentMenu submenu] update];
    return recentMenu;
}

// Openings of 50 entries are compared in stores of three sizes.
void comparedStores(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Args({ 50, 1000 })->Args({ 50, 10000 })->Args({ 50, 50000 });
}

// The plug-in's "Move to Recent" and the yardstick's submenu, both made from the same
// mailboxes and opened in turn within each iteration, so that both meet the same load on
// this shared machine. Their median openings are reported; an iteration's time is the sum.
struct SideBySide {
    LorvaneBundle_Provider *provider;
    LBRebuildOnOpeningMenu *recentMenu;     // knows mailboxes by object
    LBRebuildOnOpeningMenu *rescanMenu;     // knows mailboxes by path
    NSMenu *ours;
    NSMenu *theirs;
    NSMenu *rescan;
    std::vector<double> ourOpenings;
    std::vector<double> theirOpenings;
    std::vector<double> rescanOpenings;
};

SideBySide sideBySide(int entries, NSArray *mailboxes)
{
    SideBySide menus;
    menus.provider = providerWithList(entries, mailboxes);
    menus.recentMenu = rebuildOnOpeningMenuAfterUses(entries, mailboxes, LBKnownByObject);
    menus.rescanMenu = rebuildOnOpeningMenuAfterUses(entries, mailboxes, LBKnownByPath);
    menus.ours = [menus.provider moveToRecentSubmenu];
    menus.theirs = [menus.recentMenu submenu];
    menus.rescan = [menus.rescanMenu submenu];
    return menus;
}

void noteOpenings(benchmark::State &state, SideBySide &menus, double ours, double theirs, double rescan)
{
    menus.ourOpenings.push_back(ours);
    menus.theirOpenings.push_back(theirs);
    menus.rescanOpenings.push_back(rescan);
    state.SetIterationTime(ours + theirs + rescan);
}

void retireSideBySide(benchmark::State &state, SideBySide &menus)
{
    state.counters["lorvane_median_s"] = median(menus.ourOpenings);
    state.counters["rebuild_on_opening_median_s"] = median(menus.theirOpenings);
    state.counters["rescan_by_path_median_s"] = median(menus.rescanOpenings);
    removeFromSupermenu(menus.theirs);
    removeFromSupermenu(menus.rescan);
    [menus.recentMenu release];
    [menus.rescanMenu release];
    retireProvider(menus.provider);
}

// After the same changes as in BM_OpenSubmenuAfterChange.
void BM_OpeningsAfterChangeSideBySide(benchmark::State &state)
{
    int entries = (int)state.range(0);
    Store store = storeOfSize((int)state.range(1));
    useStore(store);
    NSArray *changing = changingMailboxes(store, entries);
    NSArray *transfers = transfersTo(changing);
    SideBySide menus = sideBySide(entries, startingHalf(changing));
    NSUInteger next = 0;
    for (auto _ : state) {
        sendEvent([transfers objectAtIndex:next]);
        [menus.recentMenu noteTransferTo:[changing objectAtIndex:next]];
        [menus.rescanMenu noteTransferTo:[changing objectAtIndex:next]];
        double ours = secondsFor([&] { [menus.ours update]; });
        double theirs = secondsFor([&] { [menus.theirs update]; });
        noteOpenings(state, menus, ours, theirs, secondsFor([&] { [menus.rescan update]; }));
        if (++next == [changing count])
            next = 0;
    }
    retireSideBySide(state, menus);
}
BENCHMARK(BM_OpeningsAfterChangeSideBySide)->Apply(comparedStores)->UseManualTime()->Unit(benchmark::kMicrosecond);

// With nothing changed: each iteration times a run of the plug-in's openings, then one of
// the yardstick's.
void BM_OpeningsUnchangedSideBySide(benchmark::State &state)
{
    int entries = (int)state.range(0);
    Store store = storeOfSize((int)state.range(1));
    useStore(store);
    SideBySide menus = sideBySide(entries, firstBoxes(store, entries));
    for (auto _ : state) {
        double ours = secondsPerOpeningInRun(menus.ours);
        double theirs = secondsFor([&] { [menus.theirs update]; });
        noteOpenings(state, menus, ours, theirs, secondsFor([&] { [menus.rescan update]; }));
    }
    retireSideBySide(state, menus);
}
BENCHMARK(BM_OpeningsUnchangedSideBySide)->Apply(comparedStores)->UseManualTime()->Unit(benchmark::kMicrosecond);

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

    // Mail's order: application, store, plug-ins, viewer windows. Both programs start
    // alike, so that their start-up memory differs by the plug-in alone.
    MHSetRecordsAlerts(YES);
    if ([MailApp sharedMailApp] == nil)
        return 2;
    Store store = storeOfSize(10000);
    useStore(store);
    setRecentItemsLimit(50);
    writePreferences(firstBoxes(store, 50));
    Clock::time_point start = Clock::now();
    MHPrepareMailClassesForPlugins();
    preparationSeconds = secondsSince(start);
    beginStartupMemory();
#if LV_BENCH_WITH_PLUGIN
    if (!loadPlugin())
        return 2;
#endif
    viewer();
    endStartupMemory();
#if LV_BENCH_WITH_PLUGIN
    interposeCounters();
#endif

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    [[NSFileManager defaultManager] removeItemAtPath:temporaryRoot error:NULL];
    [pool release];
    return 0;
}
