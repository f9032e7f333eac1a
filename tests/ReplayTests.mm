/*
 * Days in Mail played at random from a seed, each beside the plain steps of the plug-in
 * (LVLiteralSteps), and compared with them: the list as the provider's methods report it
 * after every step, all five recent submenus after every opening, what Mail receives from
 * every recent action, and the preferences file written when the day ends.
 *
 * A day starts Lorvane again with a recent-items limit and a preferences file of its own:
 * sorted by name, date or use (or by a value out of range), special mailboxes in or out,
 * saved records with dates to the second or none, old date keys, missing counts, paths saved
 * twice or naming nothing. Then: transfers into listed and new mailboxes, openings of each
 * submenu, items chosen with and without messages selected, "Clear Menu", renames,
 * deletions, new mailboxes, accounts leaving and coming back. The clock is the day's own:
 * it stands still now and then, and steps back, so that dates tie and orders have to break
 * ties as the plain steps do.
 *
 * LORVANE_REPLAY_DAYS and LORVANE_REPLAY_STEPS set the size (default 3 days of 400 steps per
 * setting), LORVANE_REPLAY_SEED the seed; every failure names the seed, day and step.
 */
#import "LVDayComparison.h"
#import "LVLiteralSteps.h"
#import "LVLorvane.h"
#import "MailboxesController.h"

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

// GNUstep's allocation counting: its header declares it only where NDEBUG is not set, but
// the library always carries it.
extern "C" {
BOOL GSDebugAllocationActive(BOOL active);
int GSDebugAllocationCount(Class cls);
}

namespace {

// Few names, so that namesakes across accounts and folders are common, and two that differ
// only in case.
const char *const LVNamePool[] = { "Archive", "Projects", "Receipts", "Travel", "work", "Work", "Later", "Apollo", "Old" };
const char *const LVAccountNamePool[] = { "Home", "Work", "Club" };
const NSUInteger LVMostMailboxesPerAccount = 16;
const NSUInteger LVMostAccounts = 5;

unsigned long environmentNumber(const char *name, unsigned long fallback)
{
    const char *text = getenv(name);
    return text != NULL && *text != '\0' ? strtoul(text, NULL, 10) : fallback;
}

struct ReplaySettings {
    const char *name;
    int sortTypeInFile;    // 3 and -1 read as 0
    int limits[3];         // one a day, in turn
};

void PrintTo(const ReplaySettings &settings, std::ostream *out)
{
    *out << settings.name;
}

class Replay : public testing::TestWithParam<ReplaySettings> {
protected:
    MailApp *mail = nil;
    MHMailStore *store = nil;
    MessageViewer *viewer = nil;
    LorvaneBundle_Provider *provider = nil;
    LVLiteralLorvane *oracle = nil;
    std::mt19937 random;
    std::string where;

    void SetUp() override
    {
        mail = LVStartMail();
        store = LVSampleStore();
        viewer = [mail openMessageViewer];
        LVStartDayClock(780000000.0);
    }

    void TearDown() override
    {
        LVStopDayClock();
        [oracle release];
    }

    /* ---- Random choices ---- */

    NSUInteger below(NSUInteger count)
    {
        return std::uniform_int_distribution<NSUInteger>(0, count - 1)(random);
    }

    bool chance(double probability)
    {
        return std::bernoulli_distribution(probability)(random);
    }

    id pick(NSArray *items)
    {
        return [items count] != 0 ? [items objectAtIndex:below([items count])] : nil;
    }

    NSString *freeRelativePath(MailAccount *account, MailboxUid *parent)
    {
        NSUInteger poolSize = sizeof LVNamePool / sizeof LVNamePool[0];
        NSUInteger start = below(poolSize);
        for (NSUInteger i = 0; i < poolSize; i++) {
            NSString *name = [NSString stringWithUTF8String:LVNamePool[(start + i) % poolSize]];
            NSString *path = parent != nil ? [[parent accountRelativePath] stringByAppendingFormat:@"/%@", name] : name;
            if ([account mailboxUidForRelativePath:path] == nil)
                return path;
        }
        return nil;
    }

    /* ---- A day's start ---- */

    // Saved dates to the second, a few of them shared, some written under the old key or not
    // at all, or unreadable.
    NSDictionary *savedRecord(MailboxUid *mailbox)
    {
        NSMutableDictionary *saved = [NSMutableDictionary dictionary];
        [saved setObject:chance(0.05) ? @"/nowhere/at/all" : [mailbox fullPath] forKey:@"FullPath"];
        if (!chance(0.1))
            [saved setObject:@(1 + (int)below(6)) forKey:@"Accesses"];
        NSString *date = savedDate(LVDayClockNow() - 60.0 * (double)below(4));
        double kind = std::uniform_real_distribution<double>(0, 1)(random);
        if (kind < 0.75)
            [saved setObject:date forKey:@"Date"];
        else if (kind < 0.85)
            [saved setObject:date forKey:@"CalendarDate"];
        else if (kind < 0.9)
            [saved setObject:@"last Tuesday" forKey:@"Date"];
        return saved;
    }

    // As NSDate writes it, or as a hand-edited file may have it, in another time zone.
    NSString *savedDate(NSTimeInterval when)
    {
        static const int offsets[] = { 0, 0, 0, 330, -480, 60, -30 };
        return LVSavedDateText(when, offsets[below(sizeof offsets / sizeof offsets[0])]);
    }

    NSDictionary *preferencesFile(int sortType)
    {
        if (chance(0.15))
            return nil;
        NSMutableArray *records = [NSMutableArray array];
        NSArray *mailboxes = LVLiveMailboxes(NO);
        for (NSUInteger i = below(14); i > 0; i--) {
            NSDictionary *saved = savedRecord(pick(mailboxes));
            [records addObject:saved];
            if (chance(0.05))
                [records addObject:saved];
        }
        return @{ @"SortType" : @(sortType), @"ExcludeSpecialMailboxes" : @(chance(0.6)), @"RecentMailboxes" : records };
    }

    void startDay(int limit)
    {
        NSDictionary *preferences = preferencesFile(GetParam().sortTypeInFile);
        NSPropertyListFormat format = chance(0.3) ? NSPropertyListBinaryFormat_v1_0 : NSPropertyListXMLFormat_v1_0;
        provider = LVStartProvider(limit, preferences ? [NSPropertyListSerialization dataWithPropertyList:preferences format:format options:0 error:NULL] : nil);
        // The viewer in front, as Mail reports it when a window becomes main.
        [viewer windowDidBecomeMain:nil];
        [oracle release];
        oracle = [[LVLiteralLorvane alloc] initWithLimit:limit preferences:preferences];
        MHClearRecordedAlerts();
        LVClearLog();
        expectSameList();
    }

    // Mail quitting: the plug-in writes its file before Mail's own handler runs.
    void endDay()
    {
        [mail applicationWillTerminate:nil];
        NSData *data = [NSData dataWithContentsOfFile:LVPreferencesFilePath()];
        id written = data != nil ? [NSPropertyListSerialization propertyListWithData:data options:0 format:NULL error:NULL] : nil;
        EXPECT_EQ("", LVSavedFileDifference(written, oracle)) << where;
    }

    /* ---- Steps ---- */

    // Half the time a mailbox the list already holds, so that hits and misses both come often.
    MailboxUid *pickDestination()
    {
        NSMutableArray *listed = [NSMutableArray array];
        for (LVLiteralRecord *record in [oracle records])
            if ([record->uid isValid])
                [listed addObject:record->uid];
        if ([listed count] != 0 && chance(0.5))
            return pick(listed);
        return pick(LVLiveMailboxes(NO));
    }

    BOOL selectAMessage(MailboxUid *besides)
    {
        NSMutableArray *sources = [[LVLiveMailboxes(NO) mutableCopy] autorelease];
        [sources removeObjectIdenticalTo:besides];
        MailboxUid *source = pick(sources);
        if (source == nil)
            return NO;
        if ([[source messagePaths] count] == 0)
            [store addMessageTo:source from:@"replay@example.org" subject:@"Replay" date:nil];
        return [LVSelectFirstMessages(viewer, source, 1) count] == 1;
    }

    void transfer()
    {
        MailboxUid *destination = pickDestination();
        if (destination == nil || !selectAMessage(destination))
            return;
        [viewer transferSelectedMessagesToMailbox:destination deleteOriginals:YES];
        [oracle addOrTouch:destination];
    }

    // Several messages filed before any menu opens, as a user files a morning's mail.
    void burstOfTransfers()
    {
        for (NSUInteger i = 2 + below(6); i > 0; i--) {
            transfer();
            if (chance(0.5))
                tickClock();
        }
    }

    void openSubmenu()
    {
        LVOpenRecentMenu(pick(LVRecentSubmenus(provider)));
        [oracle open];
        expectSameMenus();
    }

    // An item chosen as a click would. Moves and copies check the item's title against the
    // mailbox the list now holds at its place; Mail then transfers the selected messages
    // (which it reports, as every transfer) and the action counts the use again.
    void chooseItem()
    {
        NSUInteger family = below(5);
        NSMenu *submenu = [LVRecentSubmenus(provider) objectAtIndex:family];
        NSUInteger shown = (NSUInteger)[submenu numberOfItems] - 2;
        if (shown == 0)
            return;
        NSUInteger index = below(shown);
        // An item past the end of a list that shrank since the opening would make the action
        // raise, as it may: not a step a day here takes.
        if (index >= [[oracle records] count])
            return;
        NSString *title = [[submenu itemAtIndex:(NSInteger)index] title];
        MailboxUid *mailbox = [(LVLiteralRecord *)[[oracle records] objectAtIndex:index] uid];
        BOOL selected = chance(0.7) && selectAMessage(mailbox);
        if (!selected)
            [viewer setSelectedMailboxes:@[]];
        [[mail mailboxesController] setCurrentTransferMailbox:nil deletedOriginals:NO];
        MHClearRecordedAlerts();
        LVChooseItem(submenu, (NSInteger)index);

        if (family == 2) {
            EXPECT_NSEQ(@[ mailbox ], [viewer selectedMailboxes]) << where;
            return;
        }
        if (![title hasPrefix:[mailbox displayName]]) {
            EXPECT_EQ(1u, [MHRecordedAlerts() count]) << where << ": a stale title was not refused";
            EXPECT_TRUE([[mail mailboxesController] currentTransferMailbox] == nil) << where;
            return;
        }
        EXPECT_EQ(0u, [MHRecordedAlerts() count]) << where;
        EXPECT_EQ(mailbox, [[mail mailboxesController] currentTransferMailbox]) << where;
        EXPECT_EQ(family == 0 || family == 3, (bool)[[mail mailboxesController] currentTransferDeletesOriginals]) << where;
        if (selected)
            [oracle addOrTouch:mailbox];
        [oracle addOrTouch:mailbox];
    }

    // Chosen only while enabled, as a click can: that is, while the last opening showed entries.
    void clearFromSubmenu()
    {
        NSMenu *submenu = pick(LVRecentSubmenus(provider));
        LVChooseItem(submenu, [submenu numberOfItems] - 1);
        if ([oracle clearItemsEnabled])
            [oracle clear];
    }

    void renameMailbox()
    {
        MailboxUid *mailbox = pick(LVLiveMailboxes(YES));
        NSString *path = mailbox != nil ? freeRelativePath([mailbox account], [mailbox parent]) : nil;
        if (path == nil)
            return;
        ASSERT_TRUE([mail renameMailbox:mailbox toName:[path lastPathComponent]]) << [path UTF8String];
        [oracle signalUpdateMenu];
    }

    void deleteMailbox()
    {
        MailboxUid *mailbox = pick(LVLiveMailboxes(YES));
        if (mailbox == nil)
            return;
        ASSERT_TRUE([mail deleteMailbox:mailbox]) << where;
        [oracle signalRemoveDeletedMailboxes];
        [oracle signalUpdateMenu];
    }

    void addMailbox()
    {
        MailAccount *account = pick([MailAccount activeAccounts]);
        if (account == nil || [[account allMailboxUids] count] >= LVMostMailboxesPerAccount)
            return;
        NSMutableArray *parents = [NSMutableArray array];
        for (MailboxUid *mailbox in LVLiveMailboxes(YES))
            if ([mailbox account] == account)
                [parents addObject:mailbox];
        NSString *path = freeRelativePath(account, chance(0.3) ? pick(parents) : nil);
        if (path != nil && [account createMailboxWithRelativePath:path] != nil)
            [mail mailboxesDidChange];
    }

    // Mail keeps at least one account in use; one taken out of use may come back.
    void changeAccounts()
    {
        NSArray *active = [MailAccount activeAccounts];
        NSMutableArray *inactive = [NSMutableArray array];
        for (MailAccount *account in [store accounts])
            if ([active indexOfObjectIdenticalTo:account] == NSNotFound)
                [inactive addObject:account];
        NSMutableArray *next = [[active mutableCopy] autorelease];
        if ([[store accounts] count] < LVMostAccounts && chance(0.2))
            [next addObject:newAccount()];
        else if ([inactive count] != 0 && ([active count] == 1 || chance(0.5)))
            [next addObject:pick(inactive)];
        else if ([active count] > 1)
            [next removeObjectIdenticalTo:pick(active)];
        [mail setActiveAccounts:next];
        [oracle signalRemoveDeletedMailboxes];
        [oracle signalUpdateMenu];
    }

    MailAccount *newAccount()
    {
        NSUInteger poolSize = sizeof LVAccountNamePool / sizeof LVAccountNamePool[0];
        NSString *name = [NSString stringWithUTF8String:LVAccountNamePool[below(poolSize)]];
        MailAccount *account = [store addAccountNamed:name type:chance(0.5) ? @"IMAP" : @"POP" serverPathPrefix:chance(0.5) ? @"INBOX" : nil];
        for (NSString *path in @[ @"Inbox", @"Sent", @"Archive", @"INBOX/Work" ])
            [account createMailboxWithRelativePath:path];
        return account;
    }

    // Mostly forward; sometimes not at all, so that uses tie; now and then a little back.
    void tickClock()
    {
        static const double steps[] = { 0, 0, 1, 1, 1, 0.25, 60, 3600, -1, -30 };
        LVAdvanceDayClock(steps[below(sizeof steps / sizeof steps[0])]);
    }

    /* ---- Comparisons ---- */

    void expectSameList() { EXPECT_EQ("", LVListDifference(provider, oracle)) << where; }

    void expectSameMenus() { EXPECT_EQ("", LVMenusDifference(provider, oracle)) << where; }

    /* ---- The days ---- */

    typedef void (Replay::*Step)();

    struct WeightedStep {
        const char *name;
        double weight;
        Step run;
    };

    const WeightedStep &pickStep()
    {
        static const WeightedStep steps[] = {
            { "transfer", 30, &Replay::transfer },     { "burst", 6, &Replay::burstOfTransfers },
            { "opening", 22, &Replay::openSubmenu },
            { "choice", 10, &Replay::chooseItem },     { "clock", 12, &Replay::tickClock },
            { "new mailbox", 6, &Replay::addMailbox }, { "rename", 5, &Replay::renameMailbox },
            { "deletion", 4, &Replay::deleteMailbox }, { "accounts", 3, &Replay::changeAccounts },
            { "clear", 0.5, &Replay::clearFromSubmenu },
        };
        std::vector<double> weights;
        for (const WeightedStep &step : steps)
            weights.push_back(step.weight);
        return steps[std::discrete_distribution<size_t>(weights.begin(), weights.end())(random)];
    }

    // Each step in a pool of its own, as each event in Mail's run loop.
    void playStep(unsigned long day, unsigned long number)
    {
        const WeightedStep &step = pickStep();
        where = "day " + std::to_string(day) + ", step " + std::to_string(number) + " (" + step.name + ")";
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        (this->*step.run)();
        [pool release];
        expectSameList();
        EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane")) << where << ": " << LVText([LVLoggedLines() description]);
        LVClearLog();
    }
};

} // namespace

TEST_P(Replay, EveryStepOfADayLeavesTheListTheMenusMailAndTheFileAsThePlainStepsDo)
{
    unsigned long days = environmentNumber("LORVANE_REPLAY_DAYS", 3);
    unsigned long steps = environmentNumber("LORVANE_REPLAY_STEPS", 400);
    unsigned long seed = environmentNumber("LORVANE_REPLAY_SEED", 20261124);
    SCOPED_TRACE(testing::Message() << "replay with LORVANE_REPLAY_SEED=" << seed << " LORVANE_REPLAY_DAYS=" << days
                                    << " LORVANE_REPLAY_STEPS=" << steps);
    random.seed((std::mt19937::result_type)(seed + (unsigned long)GetParam().sortTypeInFile * 7919u));
    GSDebugAllocationActive(YES);
    for (unsigned long day = 1; day <= days && !HasFailure(); day++) {
        where = "day " + std::to_string(day) + " at its start";
        startDay(GetParam().limits[(day - 1) % 3]);
        for (unsigned long step = 1; step <= steps && !HasFailure(); step++)
            playStep(day, step);
        where = "day " + std::to_string(day) + " at its end";
        endDay();
    }
    // However long the day, the plug-in keeps no more records than the days' lists hold.
    EXPECT_LE(GSDebugAllocationCount(LVPluginClass("LorvaneMailbox")), (int)(days * 50 + 11));
}

INSTANTIATE_TEST_SUITE_P(SortTypesAndLimits, Replay,
                         testing::Values(ReplaySettings{ "ByName", 0, { 10, 3, 50 } }, ReplaySettings{ "ByDate", 1, { 4, 50, 1 } },
                                         ReplaySettings{ "ByUse", 2, { 5, 1, 20 } }, ReplaySettings{ "OutOfRangeReadAsByName", 3, { 2, 7, 30 } },
                                         ReplaySettings{ "NegativeReadAsByName", -1, { 50, 6, 12 } }),
                         [](const testing::TestParamInfo<ReplaySettings> &info) { return std::string(info.param.name); });
