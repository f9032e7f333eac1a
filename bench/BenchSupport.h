/*
 * What every benchmark of the plug-in shares: the stand-in Mail with the plug-in loaded from
 * the built bundle as Mail loads it (or without it, in the baseline program), stores of many
 * mailboxes held in memory, providers started as Mail starts one, counters interposed on the
 * plug-in's rebuilds, the timing loops and start-up's memory.
 *
 * Two programs are built from the same sources: LV_BENCH_WITH_PLUGIN is 1 in the one that
 * loads the plug-in and 0 in Mail's own baseline, so that the plug-in's share of a transfer
 * is measured in the same run.
 */
#import <AppKit/AppKit.h>
#import "LorvaneBundle_Provider.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "MessageTransfer.h"
#import "MessageViewer.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <vector>

/* ---- Mail ---- */

@class MHMailSession;
/* The program's Mail, in a private folder; made by LBStartSession at the start of main(). */
MHMailSession *LBStartSession(void);
MHMailSession *LBSession(void);

/* ---- Stores ---- */

/* About `size` mailboxes over five in-memory accounts, made once per size. In a shared store
   each account holds "Archive/Box n" for the same n, so every box name is also in four other
   accounts and the menus name duplicates; in a plain one every name is its own. */
struct LBStore {
    NSArray *accounts;  // retained for the process
    NSArray *boxes;     // neighbours are in different accounts
};
LBStore LBStoreOfSize(int size, bool sharedNames = true);
void LBUseStore(const LBStore &store);
NSArray *LBFirstBoxes(const LBStore &store, int count);

/* Mail's viewer, and one transfer per destination; setting the viewer as a transfer's
   delegate is the event the plug-in watches. */
MessageViewer *LBViewer(void);
NSArray *LBTransfersTo(NSArray *destinations);
void LBSendEvent(MessageTransfer *transfer);

/* ---- Providers ---- */

#if LV_BENCH_WITH_PLUGIN
/* The plug-in's provider class, once the bundle is loaded. */
Class LBProviderClass(void);
/* A provider started as Mail starts one again, on a fresh menu bar, with the limit and a
   preferences file naming these mailboxes (none when nil), the first most used; it becomes
   the one the hooks report to. */
LorvaneBundle_Provider *LBNewProvider(int limit, NSArray *savedMailboxes);
/* The list filled by transfers into the mailboxes, and the menus opened once. */
LorvaneBundle_Provider *LBProviderWithList(int limit, NSArray *mailboxes);
/* Takes a provider's items out of Mail's menu bar; the provider itself lives on, as Mail's does. */
void LBRetireProvider(LorvaneBundle_Provider *provider);
/* Puts a submenu in Mail's Message menu, where "Move to Recent" goes, and takes it out. */
void LBPlaceInMessageMenu(NSMenu *submenu);
void LBRemoveFromSupermenu(NSMenu *submenu);

/* Rebuilds and titles set since the process started. */
long LBRebuildCount(void);
long LBTitlesSetCount(void);
#endif

/* Lorvane's preferences file: naming the mailboxes, all dated now, the first one most used. */
NSString *LBPreferencesFilePath(void);
void LBWritePreferences(NSArray *mailboxes);
void LBRemovePreferences(void);

/* ---- Timing ---- */

using LBClock = std::chrono::steady_clock;

double LBSecondsSince(LBClock::time_point start);
double LBMedian(std::vector<double> values);

template <typename Step>
double LBSecondsFor(Step step)
{
    LBClock::time_point start = LBClock::now();
    step();
    return LBSecondsSince(start);
}

/* One step per iteration, for each of `count` turns in a cycle. */
template <typename Step>
void LBTimeStepsInTurn(benchmark::State &state, NSUInteger count, Step step)
{
    NSUInteger next = 0;
    for (auto _ : state) {
        step(next);
        if (++next == count)
            next = 0;
    }
}

/* One step per iteration after an untimed preparation, for each of `count` turns in a cycle:
   only the step is timed. Steps are few and short, so one preemption on a shared machine
   would swing their mean: the median step is reported beside it, and the report reads that. */
template <typename Prepare, typename Step>
void LBTimeStepsAfterPreparing(benchmark::State &state, NSUInteger count, Prepare prepare, Step step)
{
    std::vector<double> steps;
    NSUInteger next = 0;
    for (auto _ : state) {
        prepare(next);
        steps.push_back(LBSecondsFor([&] { step(next); }));
        state.SetIterationTime(steps.back());
        if (++next == count)
            next = 0;
    }
    state.counters["median_step_s"] = LBMedian(steps);
}

/* An opening with nothing to do is too short to time alone: a run of them is timed. */
const int LBOpeningsPerRun = 1000;
double LBSecondsPerOpeningInRun(NSMenu *menu);

/* ---- Start-up's memory ---- */

/* The part of start-up where Mail loads plug-ins and opens its first viewer: freed heap is
   handed back and the kernel's high-water mark reset first, so the mark's rise counts all that
   part brings in at its peak. Mail without the plug-in measures the same part. */
void LBBeginStartupMemory(void);
void LBEndStartupMemory(void);
long LBStartupPeakAddedKilobytes(void);    // -1 when the mark could not be reset
long LBStartupHeapKeptKilobytes(void);

/* Loads the plug-ins as Mail does (this program's: none in the baseline), timed; NO when the
   plug-in did not start. */
BOOL LBLoadPlugin(double *seconds);
