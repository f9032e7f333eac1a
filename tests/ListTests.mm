/*
 * The recent-mailbox list as Mail's transfers feed it, and the record it holds: what a use
 * does to the list, what leaves it when it is full or a mailbox goes, how it is looked up, and
 * what the records answer.
 */
#import "LVLorvane.h"

#include <objc/runtime.h>

#include <unistd.h>

#include <climits>
#include <functional>

namespace {

// Mail's mailboxes for the list: a POP account "Home" with its folders on disk.
class List : public LVHomeStoreTest {
protected:
    // Each mailbox used as often as its count asks, one after the other: the last is the newest.
    LorvaneBundle_Provider *listAfterUsing(int limit, int sortType, NSArray *names, std::vector<int> uses)
    {
        LorvaneBundle_Provider *provider = LVStartProvider(limit, LVPreferences(sortType, YES, nil));
        for (NSUInteger i = 0; i < [names count]; i++)
            for (int use = 0; use < uses[i]; use++)
                [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox([names objectAtIndex:i]))];
        return provider;
    }
};

LorvaneMailbox *newRecord(void)
{
    return [[[LVPluginClass("LorvaneMailbox") alloc] init] autorelease];
}

LorvaneMailbox *recordWith(int accesses, NSDate *date, NSString *name)
{
    LorvaneMailbox *record = newRecord();
    [record setAccesses:accesses];
    [record setDate:date];
    [record setDisplayName:name];
    return record;
}

} // namespace

TEST_F(List, AUseAddsANewMailboxAtTheFrontOrTouchesTheListedOneInPlace)
{
    LorvaneBundle_Provider *provider = listAfterUsing(3, 0, @[ @"Work", @"Lists", @"Family" ], { 4, 1, 1 });
    ASSERT_NSEQ((@[ @"Family", @"Lists", @"Work" ]), LVListedNames(provider));
    NSDate *before = [NSDate date];

    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Work"))];

    EXPECT_NSEQ((@[ @"Family", @"Lists", @"Work" ]), LVListedNames(provider));
    EXPECT_NSEQ((@[ @1, @1, @5 ]), LVListedCounts(provider));
    EXPECT_GE([[[provider getRecentMailboxAtIndex:2] date] timeIntervalSinceDate:before], 0.0);
    EXPECT_EQ((id)mailbox(@"Family"), (id)[provider getRecentMailboxUidAtIndex:0]);
    // A use counted by index keeps its place and its date.
    NSDate *dated = [[provider getRecentMailboxAtIndex:1] date];
    [provider incrementAccessesForItemAtIndex:1];
    EXPECT_NSEQ((@[ @1, @2, @5 ]), LVListedCounts(provider));
    EXPECT_EQ(dated, [[provider getRecentMailboxAtIndex:1] date]);
    for (int index : { 3, -1 })
        EXPECT_TRUE(LVRaises([&] { [provider getRecentMailboxAtIndex:index]; })) << index;
    // The list answers as a plain array does, a range past its end included.
    NSArray *list = [provider valueForKey:@"_recentMailboxes"];
    id records[4] = { nil };
    EXPECT_TRUE(LVRaises([&] { [list getObjects:records range:NSMakeRange(1, 3)]; }));
    EXPECT_FALSE(LVRaises([&] { [list getObjects:records range:NSMakeRange(1, 2)]; }));
    EXPECT_EQ([provider getRecentMailboxAtIndex:2], records[1]);
    NSArray *again = [[[[list class] alloc] initWithObjects:records count:2] autorelease];
    EXPECT_NSEQ((@[ records[0], records[1] ]), again);
}

TEST_F(List, SpecialMailboxesStayOutWhenExcludedAndLimitZeroKeepsEveryMailboxOut)
{
    struct Row {
        NSString *mailbox;
        int limit;
        BOOL exclude;
        BOOL listed;
    } rows[] = {
        { @"Inbox", 10, YES, NO },           { @"Sent", 10, YES, NO },  { @"Trash", 10, YES, NO }, { @"Projects", 10, YES, YES },
        { @"Inbox", 10, NO, YES },           { @"Junk", 10, NO, YES },
        { @"Projects/Inbox", 10, YES, YES }, // only Mail's own top-level Inbox is special
        { @"Work", 0, NO, NO },
    };
    for (const Row &row : rows) {
        LorvaneBundle_Provider *provider = LVStartProvider(row.limit, LVPreferences(0, row.exclude, nil));
        [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(row.mailbox))];
        EXPECT_EQ(row.listed ? 1u : 0u, [LVListedNames(provider) count]) << [row.mailbox UTF8String] << " exclude " << (int)row.exclude;
        EXPECT_TRUE(LVSubmenusShow(provider, row.listed ? @[ [mailbox(row.mailbox) displayName] ] : @[]));
    }
}

// A record that cannot be made: the plug-in's records answer nil to -init while set.
static bool recordsCannotBeMade = false;
static IMP recordInit;

static id initUnlessRecordsCannotBeMade(id self, SEL _cmd)
{
    if (!recordsCannotBeMade)
        return ((id(*)(id, SEL))recordInit)(self, _cmd);
    [self release];
    return nil;
}

TEST_F(List, ARecordThatCannotBeMadeIsLoggedAndLeavesTheListAndMenusAsTheyWere)
{
    LorvaneBundle_Provider *provider = listAfterUsing(3, 0, @[ @"Work" ], { 1 });
    EXPECT_TRUE(LVSubmenusShow(provider, @[ @"Work" ]));
    recordInit = method_setImplementation(class_getInstanceMethod(LVPluginClass("LorvaneMailbox"), @selector(init)), (IMP)initUnlessRecordsCannotBeMade);

    recordsCannotBeMade = true;
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Work"))];
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"New"))];
    recordsCannotBeMade = false;
    method_setImplementation(class_getInstanceMethod(LVPluginClass("LorvaneMailbox"), @selector(init)), recordInit);

    EXPECT_EQ(2u, LVLogCount(@"[Lorvane:addOrTouchRecentMailboxFromUid] failed to allocate LorvaneMailbox object."));
    EXPECT_NSEQ((@[ @"Work" ]), LVListedNames(provider));
    EXPECT_NSEQ((@[ @1 ]), LVListedCounts(provider));
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Work"))];
    EXPECT_NSEQ((@[ @2 ]), LVListedCounts(provider));
}

TEST_F(List, LookupIsByTheMailboxObjectAndByFullPathTheFirstOfMailsMailboxesExactly)
{
    // Two accounts kept in memory with one name give their mailboxes the same full path.
    MailAccount *first = LVMemoryAccount(@"Twin", @[ @"Work" ]);
    MailAccount *second = LVMemoryAccount(@"Twin", @[ @"Work", @"Projects/Zürich %@" ]);
    MailboxUid *listed = [[first allMailboxUids] lastObject], *samePath = [second mailboxUidForRelativePath:@"Work"];
    MailboxUid *nested = [second mailboxUidForRelativePath:@"Projects/Zürich %@"];
    ASSERT_NSEQ([listed fullPath], [samePath fullPath]);
    LorvaneBundle_Provider *provider = LVStartProvider(10, nil);
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Lists"))];
    [provider addOrTouchRecentMailboxFromUid:LVUid(listed)];

    EXPECT_EQ(0, [provider getRecentMailboxIndexWithUid:LVUid(listed)]);
    EXPECT_EQ(-1, [provider getRecentMailboxIndexWithUid:LVUid(samePath)]);
    EXPECT_EQ(-1, [provider getRecentMailboxIndexWithUid:nil]);
    [provider addOrTouchRecentMailboxFromUid:LVUid(samePath)];
    EXPECT_NSEQ((@[ @1, @1, @1 ]), LVListedCounts(provider));

    EXPECT_EQ((id)listed, (id)[provider mailboxUidForFullPath:[listed fullPath]]);
    EXPECT_EQ((id)nested, (id)[provider mailboxUidForFullPath:[nested fullPath]]);
    EXPECT_TRUE([provider mailboxUidForFullPath:[[listed fullPath] uppercaseString]] == nil);
    EXPECT_TRUE([provider mailboxUidForFullPath:@"Twin/Nowhere"] == nil);
}

// An account Mail has not refreshed yet: it still lists what it is given.
@interface ListStaleAccount : NSObject {
    NSArray *_mailboxes;
}
@end
@implementation ListStaleAccount
- (id)initWithMailboxes:(NSArray *)mailboxes
{
    if ((self = [super init]))
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

TEST_F(List, PruningKeepsOnlyTheVerySameMailboxesMailStillLists)
{
    MailAccount *other = [store addAccountNamed:@"Other" type:@"POP" serverPathPrefix:nil];
    MailboxUid *elsewhere = [other createMailboxWithRelativePath:@"Elsewhere"];
    LorvaneBundle_Provider *provider = listAfterUsing(10, 0, @[ @"Work", @"Projects", @"Projects/Old", @"Lists", @"Family", @"Again" ], { 1, 1, 1, 1, 1, 1 });
    [provider addOrTouchRecentMailboxFromUid:LVUid(elsewhere)];
    [provider removeDeletedMailboxes];
    EXPECT_EQ(7u, [LVListedNames(provider) count]);

    // Deleting Projects takes Projects/Old along; Lists goes behind Mail's back; Again is
    // made anew under its old path, while an account Mail has not refreshed still lists the
    // old one; the account Other leaves, its mailboxes valid as they still are.
    MailboxUid *again = mailbox(@"Again");
    ASSERT_TRUE([home deleteMailbox:mailbox(@"Projects") reflectToServer:YES]);
    ASSERT_TRUE([[NSFileManager defaultManager] removeItemAtPath:[mailbox(@"Lists") fullPath] error:NULL]);
    ASSERT_TRUE([home deleteMailbox:again reflectToServer:YES]);
    [home rescan];
    ASSERT_TRUE(mailbox(@"Again") != nil);
    [MailAccount setActiveAccounts:@[ home, [[[ListStaleAccount alloc] initWithMailboxes:@[ again ]] autorelease] ]];

    [provider removeDeletedMailboxes];
    EXPECT_NSEQ((@[ @"Family", @"Work" ]), LVListedNames(provider));
    [MailAccount setActiveAccounts:@[]];
    [provider removeDeletedMailboxes];
    EXPECT_NSEQ(@[], LVListedNames(provider));
}

TEST_F(List, AFreshRecordCountsOneIsDatedNowAndKeepsItsOwnNameBufferUntilMailsNameReplacesIt)
{
    NSDate *before = [NSDate date];
    LorvaneMailbox *record = newRecord();
    EXPECT_EQ(1, [record accesses]);
    EXPECT_TRUE([record uid] == nil);
    EXPECT_NSEQ(@"", [record displayName]);
    EXPECT_GE([[record date] timeIntervalSinceDate:before], 0.0);
    EXPECT_LE([[record date] timeIntervalSinceNow], 0.0);
    [record setDate:nil];
    EXPECT_TRUE([record date] == nil);

    NSMutableString *kept = [record displayName];
    NSMutableString *callers = [NSMutableString stringWithString:@"Work (Projects)"];
    [record setDisplayName:callers];
    [callers setString:@"changed by the caller"];
    EXPECT_EQ(kept, [record displayName]);
    EXPECT_NSEQ(@"Work (Projects)", kept);
    for (NSString *name in @[ @"Projects/Work", @"Zürich %@ %n", @"Reçus 100%", @"日本語 メール" ]) {
        [record setUid:LVUid(mailbox(name))];
        EXPECT_EQ(kept, [record displayName]);
        EXPECT_NSEQ([name lastPathComponent], kept);
    }
}

TEST_F(List, CountsWrapLikeThirtyTwoBitsAndACopyKeepsMailboxCountDateAndNameInABufferOfItsOwn)
{
    LorvaneMailbox *record = newRecord();
    for (int stored : { 0, -5, 41, INT_MAX }) {
        [record setAccesses:stored];
        [record incrementAccesses];
        EXPECT_EQ(stored == INT_MAX ? INT_MIN : stored + 1, [record accesses]) << stored;
    }
    NSDate *yesterday = [NSDate dateWithTimeIntervalSinceNow:-86400];
    [record setUid:LVUid(mailbox(@"Work"))];
    [record setAccesses:12];
    [record setDate:yesterday];
    LorvaneMailbox *copy = [[record copy] autorelease];
    EXPECT_NE(record, copy);
    EXPECT_EQ((id)mailbox(@"Work"), (id)[copy uid]);
    EXPECT_EQ(12, [copy accesses]);
    EXPECT_TRUE([[copy date] isEqualToDate:yesterday]);
    EXPECT_NSEQ(@"Work", [copy displayName]);
    EXPECT_NE([record displayName], [copy displayName]);
}

TEST_F(List, ComparatorsPutTheReceiverFirstWhenItRanksFirstAndCallTiesEqual)
{
    NSDate *now = [NSDate date], *earlier = [NSDate dateWithTimeIntervalSinceNow:-60];
    struct Row {
        const char *what;
        SEL comparator;
        LorvaneMailbox *receiver, *other;
        NSComparisonResult expected;
    } rows[] = {
        { "newer first", @selector(sortCompareDate:), recordWith(1, now, @"a"), recordWith(1, earlier, @"a"), NSOrderedAscending },
        { "older after", @selector(sortCompareDate:), recordWith(1, earlier, @"a"), recordWith(1, now, @"a"), NSOrderedDescending },
        { "equal dates", @selector(sortCompareDate:), recordWith(9, now, @"a"), recordWith(1, [[now copy] autorelease], @"b"), NSOrderedSame },
        { "no date is a tie", @selector(sortCompareDate:), recordWith(1, nil, @"a"), recordWith(1, now, @"a"), NSOrderedSame },
        { "more used first", @selector(sortCompareAccesses:), recordWith(5, now, @"a"), recordWith(2, now, @"a"), NSOrderedAscending },
        { "less used after", @selector(sortCompareAccesses:), recordWith(-1, now, @"a"), recordWith(0, now, @"a"), NSOrderedDescending },
        { "equal counts", @selector(sortCompareAccesses:), recordWith(3, now, @"a"), recordWith(3, earlier, @"b"), NSOrderedSame },
        { "by shown name", @selector(sortCompareDisplayName:), recordWith(1, now, @"Work (A)"), recordWith(1, now, @"Work (B)"), NSOrderedAscending },
        { "alphabetical after", @selector(sortCompareDisplayName:), recordWith(1, now, @"Work"), recordWith(1, now, @"archive"), NSOrderedDescending },
        { "case only", @selector(sortCompareDisplayName:), recordWith(1, now, @"work"), recordWith(7, now, @"WORK"), NSOrderedSame },
    };
    for (const Row &row : rows) {
        auto compare = (NSComparisonResult(*)(id, SEL, id))[row.receiver methodForSelector:row.comparator];
        EXPECT_EQ(row.expected, compare(row.receiver, row.comparator, row.other)) << row.what;
    }
}

TEST_F(List, DebugDumpsPrintMailsNamesAddressesAndPathsInListOrder)
{
    MailboxUid *work = mailbox(@"Projects/Work %n"), *lists = mailbox(@"Lists");
    LorvaneBundle_Provider *provider = listAfterUsing(10, 0, @[ @"Projects/Work %n", @"Lists" ], { 1, 1 });
    struct Row {
        std::function<void()> print;
        NSString *expected;
    } rows[] = {
        { [&] { [provider listRecentMailboxUids]; },
          [NSString stringWithFormat:@"***************** BEGIN listRecentMailboxUids *****************\n%@, %p\n%@, %p\n"
                                      "***************** END listRecentMailboxUids *****************\n",
                                     @"Lists", (void *)lists, @"Work %n", (void *)work] },
        { [&] { [provider listRecentMailboxes]; },
          [NSString stringWithFormat:@"***************** BEGIN listRecentMailboxes *****************\n%@, %p, %@\n%@, %p, %@\n"
                                      "***************** END listRecentMailboxes *****************\n",
                                     @"Lists", (void *)lists, [lists fullPath], @"Work %n", (void *)work, [work fullPath]] },
        { [&] { [[provider getRecentMailboxAtIndex:0] printf]; },
          [NSString stringWithFormat:@"________________\nUID = %p\n________________\n", (void *)lists] },
    };
    for (const Row &row : rows) {
        LVBeginCapturing(STDOUT_FILENO);
        row.print();
        EXPECT_NSEQ(row.expected, LVEndCapturing());
    }
}
