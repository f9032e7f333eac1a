/*
 * What a transfer costs Mail: the event Mail raises for every move and copy, with the plug-in
 * behind it and without, and the plug-in's list operation beside the same step done plainly.
 */
#import "BenchSupport.h"
#import "LVLiteralSteps.h"

namespace {

// Twice the limit of mailboxes in turn: every event past the first lap misses and evicts.
void BM_TransferEvent(benchmark::State &state)
{
    int limit = (int)state.range(0);
    LBStore store = LBStoreOfSize(2000);
    LBUseStore(store);
#if LV_BENCH_WITH_PLUGIN
    LorvaneBundle_Provider *provider = LBNewProvider(limit, nil);
#endif
    NSArray *transfers = LBTransfersTo(LBFirstBoxes(store, 2 * limit));
    LBTimeStepsInTurn(state, [transfers count], [&](NSUInteger i) { LBSendEvent([transfers objectAtIndex:i]); });
#if LV_BENCH_WITH_PLUGIN
    LBRetireProvider(provider);
#endif
    state.counters["limit"] = limit;
}
BENCHMARK(BM_TransferEvent)->Arg(10)->Arg(50)->Arg(500);

// The limit of mailboxes in turn, all listed: every event touches its record.
void BM_TransferEventTouch(benchmark::State &state)
{
    int limit = (int)state.range(0);
    LBStore store = LBStoreOfSize(2000);
    LBUseStore(store);
#if LV_BENCH_WITH_PLUGIN
    LorvaneBundle_Provider *provider = LBNewProvider(limit, nil);
#endif
    NSArray *transfers = LBTransfersTo(LBFirstBoxes(store, limit));
    LBTimeStepsInTurn(state, [transfers count], [&](NSUInteger i) { LBSendEvent([transfers objectAtIndex:i]); });
#if LV_BENCH_WITH_PLUGIN
    LBRetireProvider(provider);
#endif
    state.counters["limit"] = limit;
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
    LBTimeStepsAfterPreparing(state, [transfers count], [&](NSUInteger) { [menu update]; },
                              [&](NSUInteger i) { LBSendEvent([transfers objectAtIndex:i]); });
    LBRetireProvider(provider);
    state.counters["limit"] = limit;
}
BENCHMARK(BM_TransferEventAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(LBEventsAfterOpenings);

// The list operation itself, called directly, beside the plain steps (which walk the list for
// the mailbox and sort it whole before dropping a record).
void BM_AddOrTouch(benchmark::State &state)
{
    int limit = (int)state.range(0);
    LBStore store = LBStoreOfSize(2000);
    LBUseStore(store);
    LorvaneBundle_Provider *provider = LBNewProvider(limit, nil);
    NSArray *mailboxes = LBFirstBoxes(store, 2 * limit);
    LBTimeStepsInTurn(state, [mailboxes count], [&](NSUInteger i) { [provider addOrTouchRecentMailboxFromUid:[mailboxes objectAtIndex:i]]; });
    LBRetireProvider(provider);
    state.counters["limit"] = limit;
}
BENCHMARK(BM_AddOrTouch)->Arg(10)->Arg(50)->Arg(500);

LVLiteralLorvane *plainSteps(int limit)
{
    return [[[LVLiteralLorvane alloc] initWithLimit:limit preferences:@{ @"SortType" : @0, @"ExcludeSpecialMailboxes" : @(YES) }] autorelease];
}

void BM_LiteralAddOrTouch(benchmark::State &state)
{
    int limit = (int)state.range(0);
    LBStore store = LBStoreOfSize(2000);
    LBUseStore(store);
    LVLiteralLorvane *literal = plainSteps(limit);
    NSArray *mailboxes = LBFirstBoxes(store, 2 * limit);
    LBTimeStepsInTurn(state, [mailboxes count], [&](NSUInteger i) { [literal addOrTouch:[mailboxes objectAtIndex:i]]; });
    state.counters["limit"] = limit;
}
BENCHMARK(BM_LiteralAddOrTouch)->Arg(10)->Arg(50)->Arg(500);

void BM_AddOrTouchAfterOpening(benchmark::State &state)
{
    int limit = (int)state.range(0);
    LBStore store = LBStoreOfSize(2000);
    LBUseStore(store);
    LorvaneBundle_Provider *provider = LBNewProvider(limit, nil);
    NSMenu *menu = [provider moveToRecentSubmenu];
    NSArray *mailboxes = LBFirstBoxes(store, 2 * limit);
    for (id<LVMailboxUid> mailbox in mailboxes)
        [provider addOrTouchRecentMailboxFromUid:mailbox];
    LBTimeStepsAfterPreparing(state, [mailboxes count], [&](NSUInteger) { [menu update]; },
                              [&](NSUInteger i) { [provider addOrTouchRecentMailboxFromUid:[mailboxes objectAtIndex:i]]; });
    LBRetireProvider(provider);
    state.counters["limit"] = limit;
}
BENCHMARK(BM_AddOrTouchAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(LBEventsAfterOpenings);

void BM_LiteralAddOrTouchAfterOpening(benchmark::State &state)
{
    int limit = (int)state.range(0);
    LBStore store = LBStoreOfSize(2000);
    LBUseStore(store);
    LVLiteralLorvane *literal = plainSteps(limit);
    NSArray *mailboxes = LBFirstBoxes(store, 2 * limit);
    for (id mailbox in mailboxes)
        [literal addOrTouch:mailbox];
    LBTimeStepsAfterPreparing(state, [mailboxes count], [&](NSUInteger) { [literal open]; },
                              [&](NSUInteger i) { [literal addOrTouch:[mailboxes objectAtIndex:i]]; });
    state.counters["limit"] = limit;
}
BENCHMARK(BM_LiteralAddOrTouchAfterOpening)->Arg(10)->Arg(50)->Arg(500)->UseManualTime()->Iterations(LBEventsAfterOpenings);

#endif

} // namespace
