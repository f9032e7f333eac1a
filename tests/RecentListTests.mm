/*
 * The recent-mailbox list as Mail's transfers feed it: new mailboxes at the front,
 * listed ones touched in place, eviction by age or by use when full, lookups by index
 * and by the mailbox object, pruning of deleted mailboxes, and the deferred-work flags.
 */
#import "LVProviderFixture.h"

#include <objc/runtime.h>

#include <vector>

// An account whose mailbox list Mail has not refreshed yet: it still lists what it is given.
@interface RLStaleAccount : NSObject
{
    NSArray *_mailboxes;
}
- (id)initWithMailboxes:(NSArray *)mailboxes;
- (NSArray *)allMailboxUids;
@end

@implementation RLStaleAccount
- (id)initWithMailboxes:(NSArray *)mailboxes
{
    if (nil == (self = [super init]))
        return nil;
    _mailboxes = [mailboxes copy];
    return self;
}
- (void)dealloc
{
    [_mailboxes release];
    [super dealloc];
}
- (NSArray *)allMailboxUids
{
    return _mailboxes;
}
@end

namespace {

class RecentList : public LVHomeAccountTest {
protected:
    // Adds the mailboxes in order, then dates the records so that the first added is
    // the oldest, one minute apart, and gives them the counts asked for.
    void fill(LorvaneBundle_Provider *provider, NSArray *names, std::vector<int> counts)
    {
        for (NSString *name in names)
            [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(name))];
        NSUInteger count = [names count];
        for (NSUInteger i = 0; i < count; i++) {
            LorvaneMailbox *record = [provider getRecentMailboxAtIndex:(int)[provider getRecentMailboxIndexWithUid:LVUid(mailbox([names objectAtIndex:i]))]];
            [record setDate:[NSDate dateWithTimeIntervalSinceNow:-60.0 * (double)(count - i)]];
            [record setAccesses:counts[i]];
        }
        LVRefileRecords(provider);
        LVSetFlag(provider, @"_updateMenu", NO);
    }
};

} // namespace

TEST_F(RecentList, NewMailboxGoesToTheFrontWithCountOneAndMailsNameAndFlagsTheMenusAndIndexesPastTheListRaise)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(10, 0, YES);
    MailboxUid *work = mailbox(@"Work");
    MailboxUid *lists = mailbox(@"Lists");

    [provider addOrTouchRecentMailboxFromUid:LVUid(work)];
    EXPECT_TRUE(LVFlag(provider, @"_updateMenu"));
    EXPECT_FALSE(LVFlag(provider, @"_removeDeletedMailboxes"));
    [provider addOrTouchRecentMailboxFromUid:LVUid(lists)];

    NSArray *list = LVProviderList(provider);
    ASSERT_EQ(2u, [list count]);
    EXPECT_EQ((id)lists, (id)[provider getRecentMailboxUidAtIndex:0]);
    EXPECT_EQ((id)work, (id)[provider getRecentMailboxUidAtIndex:1]);
    EXPECT_EQ([list objectAtIndex:0], [provider getRecentMailboxAtIndex:0]);
    EXPECT_EQ(1, [[provider getRecentMailboxAtIndex:0] accesses]);
    EXPECT_NSEQ((@[ @"Lists", @"Work" ]), LVDisplayNames(list));
    for (int index : { 2, -1 }) {
        @try {
            [provider getRecentMailboxAtIndex:index];
            ADD_FAILURE() << "no exception for index " << index;
        } @catch (NSException *exception) {
            EXPECT_NSEQ(NSRangeException, [exception name]) << index;
        }
    }
}

TEST_F(RecentList, ListedMailboxIsTouchedInPlaceEvenInAFullListAndFlagsTheMenus)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(3, 0, YES);
    fill(provider, @[ @"Work", @"Lists", @"Family" ], { 4, 1, 1 });
    MailboxUid *work = mailbox(@"Work");
    LorvaneMailbox *record = [provider getRecentMailboxAtIndex:2];
    ASSERT_EQ((id)work, (id)[record uid]);

    NSDate *before = [NSDate date];
    [provider addOrTouchRecentMailboxFromUid:LVUid(work)];

    EXPECT_EQ(3u, [LVProviderList(provider) count]);
    EXPECT_EQ(record, [provider getRecentMailboxAtIndex:2]);
    EXPECT_EQ(5, [record accesses]);
    EXPECT_GE([[record date] timeIntervalSinceDate:before], 0.0);
    EXPECT_TRUE(LVFlag(provider, @"_updateMenu"));
}

// A record that cannot be made: the plug-in's records answer nil to -init while set.
static bool recordsCannotBeMade = false;
static IMP recordInit;

static id initUnlessRecordsCannotBeMade(id self, SEL _cmd)
{
    if (!recordsCannotBeMade)
        return ((id (*)(id, SEL))recordInit)(self, _cmd);
    [self release];
    return nil;
}

TEST_F(RecentList, ARecordThatCannotBeMadeIsLoggedAndLeavesTheListAsItWasOnHitsAndMissesAlike)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(3, 0, YES);
    MailboxUid *work = mailbox(@"Work");
    [provider addOrTouchRecentMailboxFromUid:LVUid(work)];
    LVSetFlag(provider, @"_updateMenu", NO);
    recordInit = method_setImplementation(class_getInstanceMethod(LVPluginClass("LorvaneMailbox"), @selector(init)), (IMP)initUnlessRecordsCannotBeMade);

    recordsCannotBeMade = true;
    [provider addOrTouchRecentMailboxFromUid:LVUid(work)];
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"New"))];
    recordsCannotBeMade = false;
    EXPECT_EQ(2u, LVLogCount(@"[Lorvane:addOrTouchRecentMailboxFromUid] failed to allocate LorvaneMailbox object."));
    EXPECT_NSEQ((@[ @"Work" ]), LVMailboxNames(LVProviderList(provider)));
    EXPECT_EQ(1, [[provider getRecentMailboxAtIndex:0] accesses]);
    EXPECT_FALSE(LVFlag(provider, @"_updateMenu"));

    [provider addOrTouchRecentMailboxFromUid:LVUid(work)];
    EXPECT_EQ(2, [[provider getRecentMailboxAtIndex:0] accesses]);
}

TEST_F(RecentList, ExclusionKeepsMailsSpecialMailboxesOutAndLimitZeroKeepsEveryMailboxOut)
{
    struct Row {
        NSString *mailbox;
        int limit;
        BOOL exclude;
        BOOL listed;
    } rows[] = {
        { @"Inbox", 10, YES, NO },          { @"Sent", 10, YES, NO },  { @"Trash", 10, YES, NO },
        { @"Projects", 10, YES, YES },      { @"Inbox", 10, NO, YES }, { @"Junk", 10, NO, YES },
        { @"Projects/Inbox", 10, YES, YES }, // only Mail's own top-level Inbox is special
        { @"Work", 0, NO, NO },
    };
    for (const Row &row : rows) {
        LorvaneBundle_Provider *provider = LVMakeListProvider(row.limit, 0, row.exclude);
        MailboxUid *uid = mailbox(row.mailbox);
        [provider addOrTouchRecentMailboxFromUid:LVUid(uid)];
        EXPECT_EQ(row.listed ? 0 : -1, [provider getRecentMailboxIndexWithUid:LVUid(uid)]) << [row.mailbox UTF8String] << " exclude " << (int)row.exclude;
        EXPECT_EQ(row.listed, LVFlag(provider, @"_updateMenu")) << [row.mailbox UTF8String];
        EXPECT_EQ(row.listed ? 1u : 0u, [LVProviderList(provider) count]) << [row.mailbox UTF8String];
    }
}

TEST_F(RecentList, LookupByMailboxIsByIdentityAndByFullPathFindsTheFirstInMailsOrderExactly)
{
    // Two accounts kept in memory with one name give their mailboxes the same full path.
    MailAccount *first = [[[MailAccount alloc] initWithDisplayName:@"Twin" path:nil] autorelease];
    MailAccount *second = [[[MailAccount alloc] initWithDisplayName:@"Twin" path:nil] autorelease];
    MailboxUid *listed = [first createMailboxWithRelativePath:@"Work"];
    MailboxUid *samePath = [second createMailboxWithRelativePath:@"Work"];
    MailboxUid *nested = [second createMailboxWithRelativePath:@"Projects/Zürich %@"];
    ASSERT_NSEQ([listed fullPath], [samePath fullPath]);
    [MailAccount setActiveAccounts:@[ first, second ]];

    LorvaneBundle_Provider *provider = LVMakeListProvider(10, 0, YES);
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Lists"))];
    [provider addOrTouchRecentMailboxFromUid:LVUid(listed)];

    EXPECT_EQ(0, [provider getRecentMailboxIndexWithUid:LVUid(listed)]);
    EXPECT_EQ(-1, [provider getRecentMailboxIndexWithUid:LVUid(samePath)]);
    EXPECT_EQ(-1, [provider getRecentMailboxIndexWithUid:nil]);

    // The same path from another account is another mailbox: it gets its own record.
    [provider addOrTouchRecentMailboxFromUid:LVUid(samePath)];
    EXPECT_EQ(3u, [LVProviderList(provider) count]);
    EXPECT_EQ(1, [[provider getRecentMailboxAtIndex:1] accesses]);

    EXPECT_EQ((id)listed, (id)[provider mailboxUidForFullPath:[listed fullPath]]);
    EXPECT_EQ((id)nested, (id)[provider mailboxUidForFullPath:[nested fullPath]]);
    EXPECT_TRUE([provider mailboxUidForFullPath:[[listed fullPath] uppercaseString]] == nil);
    EXPECT_TRUE([provider mailboxUidForFullPath:@"Twin/Nowhere"] == nil);
    [MailAccount setActiveAccounts:@[]];
    EXPECT_TRUE([provider mailboxUidForFullPath:[listed fullPath]] == nil);
}

TEST_F(RecentList, FullListDropsTheOldestUnlessSortedByUse)
{
    // Work is the oldest and the most used; Family the least used.
    struct Row {
        int sortType;
        NSArray *afterAdding;
    } rows[] = {
        { 0, @[ @"New", @"Lists", @"Family" ] },
        { 1, @[ @"New", @"Lists", @"Family" ] },
        { 2, @[ @"New", @"Work", @"Lists" ] },
        { 3, @[ @"New", @"Lists", @"Family" ] },
        { -1, @[ @"New", @"Lists", @"Family" ] },
    };
    for (const Row &row : rows) {
        LorvaneBundle_Provider *provider = LVMakeListProvider(3, row.sortType, YES);
        fill(provider, @[ @"Work", @"Family", @"Lists" ], { 9, 1, 4 });
        [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"New"))];
        EXPECT_NSEQ(row.afterAdding, LVMailboxNames(LVProviderList(provider))) << "sort type " << row.sortType;
        EXPECT_EQ(1, [[provider getRecentMailboxAtIndex:0] accesses]);
        EXPECT_TRUE(LVFlag(provider, @"_updateMenu"));
    }
}

TEST_F(RecentList, FullListUnderUseOrderDropsOneOfTheLeastUsed)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(3, 2, YES);
    fill(provider, @[ @"Work", @"Family", @"Lists" ], { 5, 1, 1 });
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"New"))];

    NSArray *names = LVMailboxNames(LVProviderList(provider));
    ASSERT_EQ(3u, [names count]);
    EXPECT_NSEQ(@"New", [names objectAtIndex:0]);
    EXPECT_NSEQ(@"Work", [names objectAtIndex:1]);
    EXPECT_TRUE([[names objectAtIndex:2] isEqualToString:@"Family"] || [[names objectAtIndex:2] isEqualToString:@"Lists"]);
}

TEST_F(RecentList, ListLongerThanALoweredLimitGrowsByOne)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(5, 0, YES);
    fill(provider, @[ @"A", @"B", @"C", @"D", @"E" ], { 1, 1, 1, 1, 1 });
    LVSetIntField(provider, @"_maxMailboxes", 3);

    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"F"))];

    EXPECT_NSEQ((@[ @"F", @"E", @"D", @"C", @"B", @"A" ]), LVMailboxNames(LVProviderList(provider)));
}

TEST_F(RecentList, PruningRemovesEveryGoneMailboxInOneCall)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(10, 0, YES);
    fill(provider, @[ @"Work", @"Projects", @"Projects/Old", @"Lists", @"Family" ], { 1, 1, 1, 1, 1 });

    // Deleting Projects takes Projects/Old with it; Lists goes behind Mail's back.
    ASSERT_TRUE([home deleteMailbox:mailbox(@"Projects") reflectToServer:YES]);
    ASSERT_TRUE([[NSFileManager defaultManager] removeItemAtPath:[mailbox(@"Lists") fullPath] error:NULL]);
    [home rescan];
    [provider removeDeletedMailboxes];

    EXPECT_NSEQ((@[ @"Family", @"Work" ]), LVMailboxNames(LVProviderList(provider)));
    EXPECT_TRUE(LVFlag(provider, @"_updateMenu"));
}

TEST_F(RecentList, PruningKeepsOnlyTheVerySameLiveMailboxObjects)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(10, 0, YES);
    MailAccount *other = [store addAccountNamed:@"Other" type:@"POP" serverPathPrefix:nil];
    MailboxUid *elsewhere = [other createMailboxWithRelativePath:@"Elsewhere"];
    fill(provider, @[ @"Work", @"Lists" ], { 1, 1 });
    [provider addOrTouchRecentMailboxFromUid:LVUid(elsewhere)];
    LVSetFlag(provider, @"_updateMenu", NO);

    // Lists deleted and made again under the same path is another mailbox, even while an
    // account Mail has not refreshed still lists the deleted one.
    MailboxUid *lists = mailbox(@"Lists");
    ASSERT_TRUE([home deleteMailbox:lists reflectToServer:YES]);
    ASSERT_TRUE(mailbox(@"Lists") != nil);
    RLStaleAccount *stale = [[[RLStaleAccount alloc] initWithMailboxes:@[ lists ]] autorelease];
    // An account Mail stopped using takes its mailboxes along, valid as they still are.
    [MailAccount setActiveAccounts:@[ home, stale ]];
    ASSERT_TRUE([elsewhere isValid]);

    [provider removeDeletedMailboxes];
    EXPECT_NSEQ((@[ @"Work" ]), LVMailboxNames(LVProviderList(provider)));
    EXPECT_TRUE(LVFlag(provider, @"_updateMenu"));
}

TEST_F(RecentList, PruningALiveListFlagsNothingAndAListOfGoneMailboxesEmptiesIt)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(10, 0, YES);
    fill(provider, @[ @"Work", @"Lists" ], { 1, 1 });
    [provider removeDeletedMailboxes];
    EXPECT_NSEQ((@[ @"Lists", @"Work" ]), LVMailboxNames(LVProviderList(provider)));
    EXPECT_FALSE(LVFlag(provider, @"_updateMenu"));

    [MailAccount setActiveAccounts:@[]];
    [provider removeDeletedMailboxes];
    EXPECT_EQ(0u, [LVProviderList(provider) count]);
    EXPECT_TRUE(LVFlag(provider, @"_updateMenu"));
}

TEST_F(RecentList, EachSignalSetsOnlyItsOwnFlagAndClearingButNotCountingFlagsTheMenus)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(10, 2, YES);
    fill(provider, @[ @"Work" ], { 3 });
    [provider signalRemoveDeletedMailboxes];
    EXPECT_TRUE(LVFlag(provider, @"_removeDeletedMailboxes"));
    EXPECT_FALSE(LVFlag(provider, @"_updateMenu"));

    LVSetFlag(provider, @"_removeDeletedMailboxes", NO);
    [provider signalUpdateMenu];
    EXPECT_TRUE(LVFlag(provider, @"_updateMenu"));
    EXPECT_FALSE(LVFlag(provider, @"_removeDeletedMailboxes"));

    LVSetFlag(provider, @"_updateMenu", NO);
    EXPECT_EQ(2, [provider getSortType]);
    [provider incrementAccessesForItemAtIndex:0];
    EXPECT_EQ(4, [[provider getRecentMailboxAtIndex:0] accesses]);
    EXPECT_FALSE(LVFlag(provider, @"_updateMenu"));
    [provider clearRecentMailboxes];
    EXPECT_EQ(0u, [LVProviderList(provider) count]);
    EXPECT_TRUE(LVFlag(provider, @"_updateMenu"));
}

TEST_F(RecentList, DebugDumpsShowMailsNamesAddressesAndPathsInListOrder)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(10, 0, YES);
    MailboxUid *work = mailbox(@"Projects/Work %n");
    MailboxUid *lists = mailbox(@"Lists");
    [provider addOrTouchRecentMailboxFromUid:LVUid(work)];
    [provider addOrTouchRecentMailboxFromUid:LVUid(lists)];
    [[provider getRecentMailboxAtIndex:1] setDisplayName:@"Work %n (Projects)"];

    LVBeginCapturingStandardOutput();
    [provider listRecentMailboxUids];
    [provider listRecentMailboxes];
    NSString *printed = LVEndCapturingStandardOutput();

    NSString *expected = [NSString stringWithFormat:
        @"***************** BEGIN listRecentMailboxUids *****************\n"
         "%@, %p\n%@, %p\n"
         "***************** END listRecentMailboxUids *****************\n"
         "***************** BEGIN listRecentMailboxes *****************\n"
         "%@, %p, %@\n%@, %p, %@\n"
         "***************** END listRecentMailboxes *****************\n",
        @"Lists", (void *)lists, @"Work %n", (void *)work,
        @"Lists", (void *)lists, [lists fullPath], @"Work %n", (void *)work, [work fullPath]];
    EXPECT_NSEQ(expected, printed);
}
