/*
 * One recent-mailbox record: what a fresh one holds, how its mailbox and name go
 * together, the three orders the menus sort by, and the copy that keeps no name.
 */
#import "LVProviderFixture.h"

#include <climits>

namespace {

class Record : public LVHomeAccountTest {
};

NSDate *secondsFromNow(NSTimeInterval seconds)
{
    return [NSDate dateWithTimeIntervalSinceNow:seconds];
}

LorvaneMailbox *recordWith(int accesses, NSDate *date, NSString *name)
{
    LorvaneMailbox *record = LVMakeRecord();
    [record setAccesses:accesses];
    [record setDate:date];
    [record setDisplayName:name];
    return record;
}

} // namespace

TEST_F(Record, FreshRecordCountsOneIsDatedAtCreationHasNoMailboxNorNameAndTakesAnyDateOrNone)
{
    NSDate *before = [NSDate date];
    LorvaneMailbox *record = LVMakeRecord();
    NSDate *after = [NSDate date];

    EXPECT_EQ(1, [record accesses]);
    EXPECT_TRUE([record uid] == nil);
    ASSERT_TRUE([record displayName] != nil);
    EXPECT_EQ(0u, [[record displayName] length]);
    ASSERT_TRUE([record date] != nil);
    EXPECT_GE([[record date] timeIntervalSinceDate:before], 0.0);
    EXPECT_LE([[record date] timeIntervalSinceDate:after], 0.0);

    NSDate *lastWeek = secondsFromNow(-7 * 86400);
    [record setDate:lastWeek];
    EXPECT_TRUE([[record date] isEqualToDate:lastWeek]);
    [record setDate:nil];
    EXPECT_TRUE([record date] == nil);
}

TEST_F(Record, NameIsTheRecordsOwnBufferCopyingTheCallersTextUntilMailsNameReplacesIt)
{
    LorvaneMailbox *record = LVMakeRecord();
    NSMutableString *kept = [record displayName];
    NSMutableString *callers = [NSMutableString stringWithString:@"Work (Projects)"];

    [record setDisplayName:callers];
    [callers setString:@"changed by the caller"];
    EXPECT_EQ(kept, [record displayName]);
    EXPECT_NSEQ(@"Work (Projects)", kept);

    MailboxUid *work = mailbox(@"Projects/Work");
    [record setUid:LVUid(work)];
    EXPECT_EQ((id)work, (id)[record uid]);
    EXPECT_EQ(kept, [record displayName]);
    EXPECT_NSEQ(@"Work", kept);
}

TEST_F(Record, MailboxNamesAreTakenAsTextNeverAsFormats)
{
    NSArray *names = @[ @"Zürich %@ %n", @"Reçus 100%", @"日本語 メール", @"with  two  spaces" ];
    for (NSString *name in names) {
        LorvaneMailbox *record = LVMakeRecord();
        [record setUid:LVUid(mailbox(name))];
        EXPECT_NSEQ(name, [record displayName]);
    }
}

TEST_F(Record, CountsAreStoredUnchangedAndIncrementWrapsLikeThirtyTwoBitArithmetic)
{
    LorvaneMailbox *record = LVMakeRecord();
    struct Row {
        int stored;
        int afterIncrement;
    } rows[] = { { 0, 1 }, { -5, -4 }, { 41, 42 }, { INT_MAX, INT_MIN } };
    for (const Row &row : rows) {
        [record setAccesses:row.stored];
        EXPECT_EQ(row.stored, [record accesses]);
        [record incrementAccesses];
        EXPECT_EQ(row.afterIncrement, [record accesses]) << "from " << row.stored;
    }
}

TEST_F(Record, ComparatorsPutTheReceiverFirstWhenItRanksFirstAndCallTiesEqual)
{
    NSDate *now = [NSDate date];
    struct Row {
        const char *what;
        SEL comparator;
        LorvaneMailbox *receiver;
        LorvaneMailbox *other;
        NSComparisonResult expected;
    } rows[] = {
        { "newer first", @selector(sortCompareDate:), recordWith(1, now, @"a"), recordWith(1, secondsFromNow(-60), @"a"), NSOrderedAscending },
        { "older after", @selector(sortCompareDate:), recordWith(1, secondsFromNow(-60), @"a"), recordWith(1, now, @"a"), NSOrderedDescending },
        { "equal dates", @selector(sortCompareDate:), recordWith(9, now, @"a"), recordWith(1, [[now copy] autorelease], @"b"), NSOrderedSame },
        { "more used first", @selector(sortCompareAccesses:), recordWith(5, now, @"a"), recordWith(2, now, @"a"), NSOrderedAscending },
        { "less used after", @selector(sortCompareAccesses:), recordWith(-1, now, @"a"), recordWith(0, now, @"a"), NSOrderedDescending },
        { "equal counts", @selector(sortCompareAccesses:), recordWith(3, now, @"a"), recordWith(3, secondsFromNow(-60), @"b"), NSOrderedSame },
        { "alphabetical", @selector(sortCompareDisplayName:), recordWith(1, now, @"Archive"), recordWith(1, now, @"Work"), NSOrderedAscending },
        { "alphabetical after", @selector(sortCompareDisplayName:), recordWith(1, now, @"Work"), recordWith(1, now, @"archive"), NSOrderedDescending },
        { "case only", @selector(sortCompareDisplayName:), recordWith(1, now, @"work"), recordWith(7, now, @"WORK"), NSOrderedSame },
        { "no date is a tie", @selector(sortCompareDate:), recordWith(1, nil, @"a"), recordWith(1, now, @"a"), NSOrderedSame },
    };
    for (const Row &row : rows) {
        NSComparisonResult (*compare)(id, SEL, id) = (NSComparisonResult(*)(id, SEL, id))[row.receiver methodForSelector:row.comparator];
        EXPECT_EQ(row.expected, compare(row.receiver, row.comparator, row.other)) << row.what;
    }
}

TEST_F(Record, SortingByNameUsesTheShownName)
{
    NSDate *now = [NSDate date];
    // The shown name counts, not Mail's name: an extended name sorts by its extension too.
    LorvaneMailbox *workB = recordWith(1, now, @"Work (B)");
    [workB setUid:LVUid(mailbox(@"B/Work"))];
    [workB setDisplayName:@"Work (B)"];
    NSMutableArray *byName = [NSMutableArray arrayWithObjects:workB, recordWith(1, now, @"inbox"), recordWith(1, now, @"Work (A)"),
                                                              recordWith(1, now, @"Archive"), nil];
    [byName sortUsingSelector:@selector(sortCompareDisplayName:)];
    EXPECT_NSEQ((@[ @"Archive", @"inbox", @"Work (A)", @"Work (B)" ]), LVDisplayNames(byName));
}

TEST_F(Record, CopyKeepsMailboxCountAndDateButHasNoName)
{
    MailboxUid *work = mailbox(@"Work");
    LorvaneMailbox *record = LVMakeRecord();
    [record setUid:LVUid(work)];
    [record setAccesses:12];
    NSDate *yesterday = secondsFromNow(-86400);
    [record setDate:yesterday];

    LorvaneMailbox *copy = [[record copy] autorelease];

    ASSERT_TRUE(copy != nil);
    EXPECT_NE(record, copy);
    EXPECT_EQ((id)work, (id)[copy uid]);
    EXPECT_EQ(12, [copy accesses]);
    EXPECT_TRUE([[copy date] isEqualToDate:yesterday]);
    EXPECT_TRUE([copy displayName] == nil);
    EXPECT_NSEQ(@"Work", [record displayName]);
}

TEST_F(Record, PrintfShowsOnlyTheMailboxAddressBetweenRules)
{
    MailboxUid *work = mailbox(@"Work");
    LorvaneMailbox *record = LVMakeRecord();
    [record setUid:LVUid(work)];

    LVBeginCapturingStandardOutput();
    [record printf];
    NSString *printed = LVEndCapturingStandardOutput();

    NSString *rule = @"________________";
    NSString *expected = [NSString stringWithFormat:@"%@\nUID = %p\n%@\n", rule, (void *)work, rule];
    EXPECT_NSEQ(expected, printed);
}
