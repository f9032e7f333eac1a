/*
 * What opening a recent submenu costs: after a change to the list, after a touch that changes
 * nothing visible, with nothing changed, and the first opening after start-up. Beside them,
 * the floor the toolkit sets (one item moved in each of the five submenus), the plain rebuild
 * (every item out and in again), and recent menus made the way other mail clients make them,
 * rebuilt from all of Mail's mailboxes at each opening (LBRebuildOnOpeningMenu).
 */
#import "BenchSupport.h"
#import "MailboxesController.h"
#import "RebuildOnOpeningMenu.h"

#if LV_BENCH_WITH_PLUGIN

namespace {

// Mailboxes for openings after changes: the list starts with the second half, and transfers
// cycling through all of them always bring in a mailbox it lacks, which pushes out the oldest
// entry, so every opening has one entry to add and one to drop.
NSArray *changingMailboxes(const LBStore &store, int entries)
{
    return LBFirstBoxes(store, 2 * entries);
}

NSArray *startingHalf(NSArray *changing)
{
    NSUInteger half = [changing count] / 2;
    return [changing subarrayWithRange:NSMakeRange(half, [changing count] - half)];
}

void openAfterChanges(benchmark::State &state, const LBStore &store, int entries)
{
    NSArray *changing = changingMailboxes(store, entries);
    LorvaneBundle_Provider *provider = LBProviderWithList(entries, startingHalf(changing));
    NSMenu *menu = [provider moveToRecentSubmenu];
    NSArray *transfers = LBTransfersTo(changing);
    long rebuildsBefore = LBRebuildCount(), titlesBefore = LBTitlesSetCount();
    LBTimeStepsAfterPreparing(state, [transfers count], [&](NSUInteger i) { LBSendEvent([transfers objectAtIndex:i]); },
                              [&](NSUInteger) { [menu update]; });
    double openings = (double)state.iterations();
    state.counters["rebuilds_per_opening"] = (double)(LBRebuildCount() - rebuildsBefore) / openings;
    state.counters["titles_set_per_opening"] = (double)(LBTitlesSetCount() - titlesBefore) / openings;
    state.counters["entries"] = entries;
    LBRetireProvider(provider);
}

// Box names shared by the five accounts: an entry that comes or goes can also rename a
// namesake, which then shows its account.
void BM_OpenSubmenuAfterChange(benchmark::State &state)
{
    LBStore store = LBStoreOfSize((int)state.range(1));
    LBUseStore(store);
    openAfterChanges(state, store, (int)state.range(0));
    state.counters["mailboxes"] = (double)state.range(1);
}
BENCHMARK(BM_OpenSubmenuAfterChange)->Args({ 10, 10000 })->Args({ 50, 10000 })->Args({ 500, 10000 })->UseManualTime()->Unit(benchmark::kMicrosecond);

// Every name its own: a change is one row in and one row out.
void BM_OpenSubmenuAfterChangePlainNames(benchmark::State &state)
{
    LBStore store = LBStoreOfSize((int)state.range(1), false);
    LBUseStore(store);
    openAfterChanges(state, store, (int)state.range(0));
    state.counters["mailboxes"] = (double)state.range(1);
}
BENCHMARK(BM_OpenSubmenuAfterChangePlainNames)->Args({ 50, 10000 })->Args({ 500, 10000 })->UseManualTime()->Unit(benchmark::kMicrosecond);

// A listed mailbox used again: in the order by name, nothing a user sees changes.
void BM_OpenSubmenuAfterTouch(benchmark::State &state)
{
    int entries = (int)state.range(0);
    LBStore store = LBStoreOfSize(10000);
    LBUseStore(store);
    NSArray *listed = LBFirstBoxes(store, entries);
    LorvaneBundle_Provider *provider = LBProviderWithList(entries, listed);
    NSMenu *menu = [provider moveToRecentSubmenu];
    NSArray *transfers = LBTransfersTo(listed);
    long titlesBefore = LBTitlesSetCount();
    LBTimeStepsAfterPreparing(state, [transfers count], [&](NSUInteger i) { LBSendEvent([transfers objectAtIndex:i]); },
                              [&](NSUInteger) { [menu update]; });
    state.counters["titles_set_per_opening"] = (double)(LBTitlesSetCount() - titlesBefore) / (double)state.iterations();
    state.counters["entries"] = entries;
    LBRetireProvider(provider);
}
BENCHMARK(BM_OpenSubmenuAfterTouch)->Arg(50)->Arg(500)->UseManualTime()->Unit(benchmark::kMicrosecond);

// The first opening after start-up fills all five submenus from a saved list.
void BM_FirstOpening(benchmark::State &state)
{
    int records = (int)state.range(1);
    LBStore store = LBStoreOfSize((int)state.range(0));
    LBUseStore(store);
    std::vector<double> openings;
    for (auto _ : state) {
        LorvaneBundle_Provider *provider = LBNewProvider(records, LBFirstBoxes(store, records));
        NSMenu *menu = [provider moveToRecentSubmenu];
        openings.push_back(LBSecondsFor([&] { [menu update]; }));
        state.SetIterationTime(openings.back());
        LBRetireProvider(provider);
    }
    state.counters["median_step_s"] = LBMedian(openings);
    state.counters["mailboxes"] = (double)state.range(0);
    state.counters["records"] = records;
}
BENCHMARK(BM_FirstOpening)->Args({ 10000, 50 })->Args({ 50000, 500 })->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

/* ---- The toolkit's floor and the plain rebuild ---- */

// Five submenus of `count` items in Mail's Message menu, each ending in a separator and a
// clear item, as the plug-in's are.
std::vector<NSMenu *> fiveSubmenus(int count)
{
    std::vector<NSMenu *> submenus;
    for (int family = 0; family < 5; family++) {
        NSMenu *submenu = [[NSMenu alloc] initWithTitle:[NSString stringWithFormat:@"Floor %d", family]];
        [submenu setAutoenablesItems:NO];
        for (int i = 0; i < count; i++)
            [submenu addItemWithTitle:[NSString stringWithFormat:@"Box %d", i] action:@selector(moveToRecentFromSubmenu:) keyEquivalent:@""];
        [submenu addItem:[NSMenuItem separatorItem]];
        [submenu addItemWithTitle:@"Clear Menu" action:@selector(clearRecentMenus:) keyEquivalent:@""];
        LBPlaceInMessageMenu(submenu);
        submenus.push_back(submenu);
    }
    return submenus;
}

void retireSubmenus(const std::vector<NSMenu *> &submenus)
{
    for (NSMenu *submenu : submenus) {
        LBRemoveFromSupermenu(submenu);
        [submenu release];
    }
}

// Least the toolkit lets one changed row cost: one item taken out of each of the five
// submenus, given a title, tool tip and icon while out, and put back at the top.
void BM_ToolkitFloorOneRow(benchmark::State &state)
{
    int count = (int)state.range(0);
    std::vector<NSMenu *> submenus = fiveSubmenus(count);
    NSImage *icon = [MailboxesController iconForMailboxUid:nil smallSize:YES];
    NSUInteger turn = 0;
    for (auto _ : state) {
        NSString *title = [NSString stringWithFormat:@"Moved %lu", (unsigned long)turn++];
        for (NSMenu *submenu : submenus) {
            NSMenuItem *item = [[submenu itemAtIndex:count - 1] retain];
            [submenu removeItemAtIndex:count - 1];
            [item setToolTip:title];
            [item setTitle:title];
            [item setImage:icon];
            [submenu insertItem:item atIndex:0];
            [item release];
        }
    }
    retireSubmenus(submenus);
    state.counters["items"] = count;
}
BENCHMARK(BM_ToolkitFloorOneRow)->Arg(50)->Arg(500)->Unit(benchmark::kMicrosecond);

// The plain rebuild's work in the menus: every recent item out of all five, then every one
// titled and put back.
void BM_LiteralMenuRebuild(benchmark::State &state)
{
    int count = (int)state.range(0);
    std::vector<NSMenu *> submenus = fiveSubmenus(count);
    NSImage *icon = [MailboxesController iconForMailboxUid:nil smallSize:YES];
    for (auto _ : state) {
        std::vector<std::vector<NSMenuItem *>> items(submenus.size());
        for (size_t family = 0; family < submenus.size(); family++) {
            for (int i = 0; i < count; i++) {
                items[family].push_back([[submenus[family] itemAtIndex:0] retain]);
                [submenus[family] removeItemAtIndex:0];
            }
        }
        for (int i = count; i-- > 0;) {
            for (size_t family = 0; family < submenus.size(); family++) {
                NSMenuItem *item = items[family][(size_t)i];
                [item setToolTip:[item title]];
                [item setTitle:[item title]];
                [item setImage:icon];
                [submenus[family] insertItem:item atIndex:0];
                [item release];
            }
        }
    }
    retireSubmenus(submenus);
    state.counters["items"] = count;
}
BENCHMARK(BM_LiteralMenuRebuild)->Arg(50)->Arg(500)->Unit(benchmark::kMicrosecond);

// The toolkit's own part of an opening with nothing changed: the submenu opened with no
// delegate to ask.
void BM_OpenSubmenuWithoutDelegate(benchmark::State &state)
{
    LBStore store = LBStoreOfSize(10000);
    LBUseStore(store);
    LorvaneBundle_Provider *provider = LBProviderWithList(50, LBFirstBoxes(store, 50));
    NSMenu *menu = [provider moveToRecentSubmenu];
    [menu setDelegate:nil];
    std::vector<double> openings;
    for (auto _ : state) {
        openings.push_back(LBSecondsPerOpeningInRun(menu));
        state.SetIterationTime(openings.back() * LBOpeningsPerRun);
    }
    state.counters["median_step_s"] = LBMedian(openings);
    [menu setDelegate:provider];
    LBRetireProvider(provider);
}
BENCHMARK(BM_OpenSubmenuWithoutDelegate)->UseManualTime()->Unit(benchmark::kNanosecond);

/* ---- Beside menus rebuilt from all mailboxes at each opening ---- */

LBRebuildOnOpeningMenu *rebuildOnOpeningMenu(int limit, NSArray *mailboxes, LBMailboxIdentity identity)
{
    LBRebuildOnOpeningMenu *recentMenu = [[LBRebuildOnOpeningMenu alloc] initWithLimit:(NSUInteger)limit identity:identity];
    LBPlaceInMessageMenu([recentMenu submenu]);
    for (id<LVMailboxUid> mailbox in mailboxes)
        [recentMenu noteTransferTo:mailbox];
    [[recentMenu submenu] update];
    return recentMenu;
}

// The plug-in's "Move to Recent" and both other designs, made from the same mailboxes and
// opened in turn within each iteration, so that all meet the same load on a shared machine.
// Their median openings are reported; an iteration's time is the sum.
struct SideBySide {
    LorvaneBundle_Provider *provider;
    LBRebuildOnOpeningMenu *knownByObject;
    LBRebuildOnOpeningMenu *knownByPath;
    std::vector<double> openings[3];

    SideBySide(int entries, NSArray *mailboxes)
    {
        provider = LBProviderWithList(entries, mailboxes);
        knownByObject = rebuildOnOpeningMenu(entries, mailboxes, LBKnownByObject);
        knownByPath = rebuildOnOpeningMenu(entries, mailboxes, LBKnownByPath);
    }

    void noteTransferTo(id mailbox)
    {
        [knownByObject noteTransferTo:mailbox];
        [knownByPath noteTransferTo:mailbox];
    }

    template <typename Open>
    void open(benchmark::State &state, Open openOurs)
    {
        openings[0].push_back(openOurs([provider moveToRecentSubmenu]));
        openings[1].push_back(LBSecondsFor([&] { [[knownByObject submenu] update]; }));
        openings[2].push_back(LBSecondsFor([&] { [[knownByPath submenu] update]; }));
        state.SetIterationTime(openings[0].back() + openings[1].back() + openings[2].back());
    }

    void retire(benchmark::State &state)
    {
        state.counters["lorvane_median_s"] = LBMedian(openings[0]);
        state.counters["prepared_list_median_s"] = LBMedian(openings[1]);
        state.counters["rescan_by_path_median_s"] = LBMedian(openings[2]);
        for (LBRebuildOnOpeningMenu *menu : { knownByObject, knownByPath }) {
            LBRemoveFromSupermenu([menu submenu]);
            [menu release];
        }
        LBRetireProvider(provider);
    }
};

void comparedStores(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Args({ 50, 1000 })->Args({ 50, 10000 })->Args({ 50, 50000 });
}

void BM_OpeningsAfterChangeSideBySide(benchmark::State &state)
{
    int entries = (int)state.range(0);
    LBStore store = LBStoreOfSize((int)state.range(1));
    LBUseStore(store);
    NSArray *changing = changingMailboxes(store, entries);
    NSArray *transfers = LBTransfersTo(changing);
    SideBySide menus(entries, startingHalf(changing));
    NSUInteger next = 0;
    for (auto _ : state) {
        LBSendEvent([transfers objectAtIndex:next]);
        menus.noteTransferTo([changing objectAtIndex:next]);
        menus.open(state, [](NSMenu *ours) { return LBSecondsFor([&] { [ours update]; }); });
        if (++next == [changing count])
            next = 0;
    }
    menus.retire(state);
}
BENCHMARK(BM_OpeningsAfterChangeSideBySide)->Apply(comparedStores)->UseManualTime()->Unit(benchmark::kMicrosecond);

void BM_OpeningsUnchangedSideBySide(benchmark::State &state)
{
    int entries = (int)state.range(0);
    LBStore store = LBStoreOfSize((int)state.range(1));
    LBUseStore(store);
    SideBySide menus(entries, LBFirstBoxes(store, entries));
    for (auto _ : state)
        menus.open(state, [](NSMenu *ours) { return LBSecondsPerOpeningInRun(ours); });
    menus.retire(state);
}
BENCHMARK(BM_OpeningsUnchangedSideBySide)->Apply(comparedStores)->UseManualTime()->Unit(benchmark::kMicrosecond);

} // namespace

#endif
