/*
 * What pruning costs: the walk over all of Mail's mailboxes that finds the listed ones gone,
 * beside the plain steps, and the opening after a listed mailbox was deleted.
 */
#import "BenchSupport.h"
#import "LVLiteralSteps.h"

#if LV_BENCH_WITH_PLUGIN

namespace {

const int LBPrunedListLength = 50;

// With nothing to prune.
void BM_PruneScan(benchmark::State &state)
{
    LBStore store = LBStoreOfSize((int)state.range(0));
    LBUseStore(store);
    LorvaneBundle_Provider *provider = LBProviderWithList(LBPrunedListLength, LBFirstBoxes(store, LBPrunedListLength));
    for (auto _ : state)
        [provider removeDeletedMailboxes];
    state.counters["mailboxes"] = (double)state.range(0);
    LBRetireProvider(provider);
}
BENCHMARK(BM_PruneScan)->Arg(1000)->Arg(10000)->Arg(50000)->Unit(benchmark::kMicrosecond);

// The plain steps look each record up among all of Mail's mailboxes.
void BM_LiteralPruneScan(benchmark::State &state)
{
    LBStore store = LBStoreOfSize((int)state.range(0));
    LBUseStore(store);
    LVLiteralLorvane *literal = [[[LVLiteralLorvane alloc] initWithLimit:LBPrunedListLength preferences:nil] autorelease];
    for (id mailbox in LBFirstBoxes(store, LBPrunedListLength))
        [literal addOrTouch:mailbox];
    [literal open];
    for (auto _ : state) {
        [literal signalRemoveDeletedMailboxes];
        [literal open];
    }
    state.counters["mailboxes"] = (double)state.range(0);
    state.counters["entries_kept"] = (double)[[literal records] count];
}
BENCHMARK(BM_LiteralPruneScan)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

// A listed mailbox deleted, then an opening: the list is pruned and the menus brought up to date.
void BM_OpenSubmenuAfterDelete(benchmark::State &state)
{
    LBStore store = LBStoreOfSize((int)state.range(0));
    LBUseStore(store);
    LorvaneBundle_Provider *provider = LBProviderWithList(LBPrunedListLength, LBFirstBoxes(store, LBPrunedListLength - 1));
    NSMenu *menu = [provider moveToRecentSubmenu];
    MailAccount *account = [store.accounts objectAtIndex:0];
    int pruned = 0;
    for (auto _ : state) {
        state.PauseTiming();
        MailboxUid *doomed = [account createMailboxWithRelativePath:@"Scratch/Doomed"];
        LBSendEvent([LBTransfersTo(@[ doomed ]) objectAtIndex:0]);
        [menu update];
        [account deleteMailbox:doomed reflectToServer:NO];
        state.ResumeTiming();
        [menu update];
        pruned += [provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)doomed] < 0;
    }
    state.counters["mailboxes"] = (double)state.range(0);
    state.counters["pruned_fraction"] = (double)pruned / (double)state.iterations();
    LBRetireProvider(provider);
}
BENCHMARK(BM_OpenSubmenuAfterDelete)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond)->Iterations(100);

} // namespace

#endif
