#import "BenchSupport.h"
#import "MHMailMenus.h"
#import "MHMailSession.h"

#include <objc/runtime.h>

#include <malloc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <utility>

namespace {

const int LBStoreAccounts = 5;
NSString *const LBPreferencesFileName = @"org.lorvane.mailbundle.plist";
MHMailSession *session;

} // namespace

MHMailSession *LBStartSession(void)
{
    char pattern[] = "/tmp/lorvane-bench-XXXXXX";
    session = [[MHMailSession alloc] initWithPrivateFolder:[NSString stringWithUTF8String:mkdtemp(pattern)]];
#if LV_BENCH_WITH_PLUGIN
    [session addBundlePath:@LORVANE_BUNDLE_PATH];
#endif
    return session;
}

MHMailSession *LBSession(void)
{
    return session;
}

LBStore LBStoreOfSize(int size, bool sharedNames)
{
    static std::map<std::pair<int, bool>, LBStore> stores;
    auto found = stores.find({ size, sharedNames });
    if (found != stores.end())
        return found->second;
    NSArray *boxes = [session openGeneratedStoreOfMailboxes:size accounts:LBStoreAccounts sharedNames:sharedNames];
    LBStore store = { [[MailAccount activeAccounts] copy], [boxes copy] };
    stores[{ size, sharedNames }] = store;
    return store;
}

void LBUseStore(const LBStore &store)
{
    [MailAccount setActiveAccounts:store.accounts];
}

NSArray *LBFirstBoxes(const LBStore &store, int count)
{
    return [store.boxes subarrayWithRange:NSMakeRange(0, std::min((NSUInteger)count, [store.boxes count]))];
}

MessageViewer *LBViewer(void)
{
    static MessageViewer *shared;
    if (shared == nil)
        shared = [[MessageViewer alloc] init];
    return shared;
}

// The message file is never moved: only the event is measured.
NSArray *LBTransfersTo(NSArray *destinations)
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

void LBSendEvent(MessageTransfer *transfer)
{
    [transfer setDelegate:LBViewer()];
}

NSString *LBPreferencesFilePath(void)
{
    return [[session preferencesFolder] stringByAppendingPathComponent:LBPreferencesFileName];
}

void LBWritePreferences(NSArray *mailboxes)
{
    NSMutableArray *records = [NSMutableArray array];
    NSString *date = [[NSDate date] description];
    int accesses = (int)[mailboxes count];
    for (MailboxUid *mailbox in mailboxes)
        [records addObject:@{ @"FullPath" : [mailbox fullPath], @"Accesses" : @(accesses--), @"Date" : date }];
    [session writePreferencesFileNamed:LBPreferencesFileName contents:@{ @"SortType" : @0, @"ExcludeSpecialMailboxes" : @(YES), @"RecentMailboxes" : records }];
}

void LBRemovePreferences(void)
{
    [session writePreferencesFileNamed:LBPreferencesFileName contents:nil];
}

#if LV_BENCH_WITH_PLUGIN

namespace {

Class providerClass;
long rebuilds;
long titlesSet;
IMP originalUpdateMenus;
IMP originalSetTitle;

void countingUpdateMenus(id self, SEL _cmd)
{
    rebuilds++;
    ((void (*)(id, SEL))originalUpdateMenus)(self, _cmd);
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

} // namespace

Class LBProviderClass(void)
{
    return providerClass;
}

LorvaneBundle_Provider *LBNewProvider(int limit, NSArray *savedMailboxes)
{
    [session setRecentItemsLimit:limit];
    if (savedMailboxes != nil)
        LBWritePreferences(savedMailboxes);
    else
        LBRemovePreferences();
    return [session startPluginAgain];
}

LorvaneBundle_Provider *LBProviderWithList(int limit, NSArray *mailboxes)
{
    LorvaneBundle_Provider *provider = LBNewProvider(limit, nil);
    for (MessageTransfer *transfer in LBTransfersTo(mailboxes))
        LBSendEvent(transfer);
    [[provider moveToRecentSubmenu] update];
    return provider;
}

void LBPlaceInMessageMenu(NSMenu *submenu)
{
    NSMenu *messageMenu = [[MHMailMenus itemTitled:@"Message" inMenu:[NSApp mainMenu]] submenu];
    NSMenuItem *item = (NSMenuItem *)[messageMenu addItemWithTitle:[submenu title] action:NULL keyEquivalent:@""];
    [messageMenu setSubmenu:submenu forItem:item];
}

void LBRemoveFromSupermenu(NSMenu *submenu)
{
    NSMenu *supermenu = [submenu supermenu];
    NSInteger index = supermenu != nil ? [supermenu indexOfItemWithSubmenu:submenu] : -1;
    if (index >= 0)
        [supermenu removeItemAtIndex:index];
}

void LBRetireProvider(LorvaneBundle_Provider *provider)
{
    for (NSMenu *submenu in @[ [provider moveToRecentSubmenu], [provider copyToRecentSubmenu], [provider goToRecentSubmenu] ])
        LBRemoveFromSupermenu(submenu);
}

long LBRebuildCount(void)
{
    return rebuilds;
}

long LBTitlesSetCount(void)
{
    return titlesSet;
}

#endif

BOOL LBLoadPlugin(double *seconds)
{
    LBClock::time_point start = LBClock::now();
    BOOL loaded = [session loadPlugins];
    *seconds = LBSecondsSince(start);
#if LV_BENCH_WITH_PLUGIN
    providerClass = [[session bundle] principalClass];
    if (!loaded || providerClass == Nil || [session provider] == nil) {
        fprintf(stderr, "The plug-in did not load from %s\n", LORVANE_BUNDLE_PATH);
        return NO;
    }
    originalUpdateMenus = interpose(providerClass, @selector(updateMenus), (IMP)countingUpdateMenus);
    originalSetTitle = interpose([NSMenuItem class], @selector(setTitle:), (IMP)countingSetTitle);
#endif
    return loaded;
}

double LBSecondsSince(LBClock::time_point start)
{
    return std::chrono::duration<double>(LBClock::now() - start).count();
}

double LBMedian(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    std::nth_element(values.begin(), values.begin() + (long)values.size() / 2, values.end());
    return values[values.size() / 2];
}

double LBSecondsPerOpeningInRun(NSMenu *menu)
{
    return LBSecondsFor([&] {
        for (int i = 0; i < LBOpeningsPerRun; i++)
            [menu update];
    }) / LBOpeningsPerRun;
}

namespace {

struct StartupMemory {
    bool peakReset;
    long residentBefore;
    long heapBefore;
    long peakAdded;
    long heapKept;
} startupMemory;

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

bool resetPeakResidentSize(void)
{
    FILE *clearRefs = fopen("/proc/self/clear_refs", "w");
    if (clearRefs == NULL)
        return false;
    bool written = fputs("5", clearRefs) >= 0;
    return fclose(clearRefs) == 0 && written;
}

} // namespace

void LBBeginStartupMemory(void)
{
    malloc_trim(0);
    startupMemory.peakReset = resetPeakResidentSize();
    startupMemory.residentBefore = statusKilobytes("VmRSS:");
    startupMemory.heapBefore = heapInUseKilobytes();
}

void LBEndStartupMemory(void)
{
    startupMemory.peakAdded = startupMemory.peakReset ? statusKilobytes("VmHWM:") - startupMemory.residentBefore : -1;
    startupMemory.heapKept = heapInUseKilobytes() - startupMemory.heapBefore;
}

long LBStartupPeakAddedKilobytes(void)
{
    return startupMemory.peakAdded;
}

long LBStartupHeapKeptKilobytes(void)
{
    return startupMemory.heapKept;
}
