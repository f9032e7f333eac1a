/*
 * What start-up costs: loading the bundle, the provider's -init with its preferences file,
 * reading that file beside the plain steps, and the memory start-up adds. The program itself
 * starts as Mail does (application, store, plug-ins, viewer), and that start is measured.
 */
#import "BenchSupport.h"
#import "LVLiteralSteps.h"
#import "MHMailSession.h"
#import "MailApp.h"

#include <cstdio>
#include <cstdlib>
#include <unistd.h>

namespace {

double mailPreparationSeconds;
double bundleLoadSeconds;

void BM_StartupMemory(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(state.iterations());
    state.counters["mailboxes"] = 10000;
    state.counters["records"] = 50;
    state.counters["peak_rss_added_kib"] = (double)LBStartupPeakAddedKilobytes();
    state.counters["heap_kept_kib"] = (double)LBStartupHeapKeptKilobytes();
}
BENCHMARK(BM_StartupMemory)->Iterations(1);

#if LV_BENCH_WITH_PLUGIN

void startupSizes(benchmark::internal::Benchmark *benchmark)
{
    for (int mailboxes : { 1000, 10000, 50000 })
        for (int records : { 10, 50, 500 })
            benchmark->Args({ mailboxes, records });
}

// Loading the bundle happens once per process, in main(), with a 10,000-mailbox store and a
// 50-record file: reported here.
void BM_StartupLoadBundle(benchmark::State &state)
{
    for (auto _ : state)
        state.SetIterationTime(bundleLoadSeconds);
    state.counters["mailboxes"] = 10000;
    state.counters["records"] = 50;
    state.counters["mail_preparation_ms"] = mailPreparationSeconds * 1e3;
}
BENCHMARK(BM_StartupLoadBundle)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1);

// Mail making the plug-in's object: the limit, the preferences file, the menus.
void BM_StartupInit(benchmark::State &state)
{
    int records = (int)state.range(1);
    LBStore store = LBStoreOfSize((int)state.range(0));
    LBUseStore(store);
    [LBSession() setRecentItemsLimit:records];
    LBWritePreferences(LBFirstBoxes(store, records));
    int listed = 0;
    for (auto _ : state) {
        [[LBSession() application] prepareToLaunchAgain];
        LBClock::time_point start = LBClock::now();
        LorvaneBundle_Provider *provider = [LBSession() newPluginInstance];
        state.SetIterationTime(LBSecondsSince(start));
        listed = [provider getRecentMailboxIndexWithUid:[store.boxes objectAtIndex:0]] >= 0;
        LBRetireProvider(provider);
    }
    state.counters["mailboxes"] = (double)state.range(0);
    state.counters["records"] = records;
    state.counters["first_record_found"] = listed;
}
BENCHMARK(BM_StartupInit)->Apply(startupSizes)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

// The file read on a started provider, and read by the plain steps (which compare every saved
// path with every mailbox). Each reading has its own pool.
void BM_ReadPreferences(benchmark::State &state)
{
    int records = (int)state.range(1);
    LBStore store = LBStoreOfSize((int)state.range(0));
    LBUseStore(store);
    LorvaneBundle_Provider *provider = LBNewProvider(records, LBFirstBoxes(store, records));
    for (auto _ : state) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        [provider readPreferences];
        [pool release];
    }
    LBRetireProvider(provider);
    state.counters["mailboxes"] = (double)state.range(0);
    state.counters["records"] = records;
}
BENCHMARK(BM_ReadPreferences)->Apply(startupSizes)->Unit(benchmark::kMillisecond);

void BM_LiteralReadPreferences(benchmark::State &state)
{
    int records = (int)state.range(1);
    LBStore store = LBStoreOfSize((int)state.range(0));
    LBUseStore(store);
    LBWritePreferences(LBFirstBoxes(store, records));
    NSData *data = [NSData dataWithContentsOfFile:LBPreferencesFilePath()];
    NSUInteger loaded = 0;
    for (auto _ : state) {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        id preferences = [NSPropertyListSerialization propertyListWithData:data options:0 format:NULL error:NULL];
        loaded = [[[[LVLiteralLorvane alloc] initWithLimit:records preferences:preferences] autorelease] records].count;
        [pool release];
    }
    state.counters["mailboxes"] = (double)state.range(0);
    state.counters["records"] = records;
    state.counters["records_loaded"] = (double)loaded;
}
BENCHMARK(BM_LiteralReadPreferences)->Apply(startupSizes)->Unit(benchmark::kMillisecond);

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

// Mail's order: application, store, plug-ins, viewer windows. Both programs start alike, so
// that their start-up memory differs by the plug-in alone.
int main(int argc, char **argv)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    benchmark::Initialize(&argc, argv);
    MHMailSession *mail = LBStartSession();
    if (getenv("LORVANE_BENCH_LOG") == NULL)
        _NSLog_printf_handler = dropLogLine;
    NSSetUncaughtExceptionHandler(failOnUncaughtException);

    if (![mail launchApplication])
        return 2;
    LBStore store = LBStoreOfSize(10000);
    LBUseStore(store);
    [mail setRecentItemsLimit:50];
    LBWritePreferences(LBFirstBoxes(store, 50));
    mailPreparationSeconds = LBSecondsFor([&] { [mail prepareForPlugins]; });
    LBBeginStartupMemory();
    if (!LBLoadPlugin(&bundleLoadSeconds))
        return 2;
    LBViewer();
    LBEndStartupMemory();

    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    [pool release];
    return 0;
}
