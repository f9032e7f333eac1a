/*
 * What a transfer costs Mail: the event Mail raises for every move and copy, with the plug-in
 * behind it and without, and the plug-in's list operation beside the same step done plainly.
 */
#import "BenchSupport.h"
#import "LVLiteralSteps.h"

namespace {

// Transfers into `lap` mailboxes in turn, timed one by one as Mail sends them.
void timeTransfersInTurn(benchmark::State &state, NSUInteger lap)
{
    LBStore store = LBStoreOfSize(2000);
    LBUseStore(store);
#if LV_BENCH_WITH_PLUGIN
    LorvaneBundle_Provider *provider = LBNewProvider((int)state.range(0), nil);
#endif
    NSArray *transfers = LBTransfersTo(LBFirstBoxes(store, lap));
    LBTimeStepsInTurn(state, [transfers count], [&](NSUInteger i) { LBSendEvent([transfers objectAtIndex:i]); });
#if LV_BENCH_WITH_PLUGIN
    LBRetireProvider(provider);
#endif
    state.counters["limit"] = (double)state.range(0);
}

// Twice the limit of mailboxes: every event past the first lap misses and evicts.
void BM_TransferEvent(benchmark::State &state)
{
    timeTransfersInTurn(state, 2 * (NSUInteger)state.range(0));
}
BENCHMARK(BM_TransferEvent)->Arg(10)->Arg(50)->Arg(500);

// The limit of mailboxes, all listed: every event touches its record.
void BM_TransferEventTouch(benchmark::State &state)
{
    timeTransfersInTurn(state, (NSUInteger)state.range(0));
}
BENCHMARK(BM_TransferEventTouch)->Arg(50)->Arg(500);

#if LV_BENCH_WITH_PLUGIN

// Each event waits for an untimed opening (all five submenus brought up to date): a fixed
// count keeps the run short, and the median step steady.
const int LBEventsAfterOpenings = 60;

// The first event after an opening reordered the list by name, where a miss must still find
// the oldest entry to drop. Only the event is timed.
void BM_TransferEventAfterOpening(benchmark::State &state)
{
    int limit = (int)state.range(0);
    LBStore store = LBStoreOfSize(2000);
    LBUseStore(store);
    LorvaneBundle_Provider *provider = LBNewProvider(limit, nil);
    NSMenu *menu = [provider moveToRecentSubmenu];
    NSArray *transfers = LBTransfersTo(LBFirstBoxes(store, 2 * limit));
    for (MessageTransfer *transfer in transfers)
        LBSendEvent(transfer);
    LBTimeStepsAfterPreparing(
        state, [transfers count], [&](NSUInteger) { [menu update]; },
        [&](NSUInteger i) { LBSendEvent([transfers objectAtIndex:i]); });
    LBRetireProvider(provider);
    state.counters["limit"] = limit;
}
BENCHMARK(BM_TransferEventAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(LBEventsAfterOpenings);

// The list operation itself, called directly, beside the plain steps (which walk the list for
// the mailbox and sort it whole before dropping a record): each use alone, or right after an
// opening has brought the menus up to date.
void timeAddOrTouch(benchmark::State &state, bool plainSteps, bool afterOpening)
{
    int limit = (int)state.range(0);
    LBStore store = LBStoreOfSize(2000);
    LBUseStore(store);
    NSArray *mailboxes = LBFirstBoxes(store, 2 * limit);
    LorvaneBundle_Provider *provider = plainSteps ? nil : LBNewProvider(limit, nil);
    LVLiteralLorvane *literal = plainSteps ? [[LVLiteralLorvane alloc] initWithLimit:limit preferences:@{@"SortType" : @0}] : nil;
    auto use = [&](NSUInteger i) {
        id mailbox = [mailboxes objectAtIndex:i];
        plainSteps ? [literal addOrTouch:mailbox] : [provider addOrTouchRecentMailboxFromUid:mailbox];
    };
    auto open = [&](NSUInteger) { plainSteps ? [literal open] : [[provider moveToRecentSubmenu] update]; };
    if (afterOpening) {
        for (NSUInteger i = 0; i < [mailboxes count]; i++)
            use(i);
        LBTimeStepsAfterPreparing(state, [mailboxes count], open, use);
    } else {
        LBTimeStepsInTurn(state, [mailboxes count], use);
    }
    if (provider != nil)
        LBRetireProvider(provider);
    [literal release];
    state.counters["limit"] = limit;
}

void BM_AddOrTouch(benchmark::State &state)
{
    timeAddOrTouch(state, false, false);
}
BENCHMARK(BM_AddOrTouch)->Arg(10)->Arg(50)->Arg(500);

void BM_LiteralAddOrTouch(benchmark::State &state)
{
    timeAddOrTouch(state, true, false);
}
BENCHMARK(BM_LiteralAddOrTouch)->Arg(10)->Arg(50)->Arg(500);

void BM_AddOrTouchAfterOpening(benchmark::State &state)
{
    timeAddOrTouch(state, false, true);
}
BENCHMARK(BM_AddOrTouchAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(LBEventsAfterOpenings);

void BM_LiteralAddOrTouchAfterOpening(benchmark::State &state)
{
    timeAddOrTouch(state, true, true);
}
BENCHMARK(BM_LiteralAddOrTouchAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(LBEventsAfterOpenings);

#endif

} // namespace
