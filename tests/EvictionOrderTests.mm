/*
 * The list as a long day of transfers leaves it, against the same steps done literally: a
 * walk from the front for the mailbox, and a full comparator sort before the last record
 * is dropped. Between transfers the list is also changed the ways the rest of Lorvane and
 * the preferences file change it: sorted by name for the menus, records dated alike or
 * left without a date, a mailbox listed twice, records pruned, the list cleared.
 */
#import "LVProviderFixture.h"

#include <objc/runtime.h>
#include <random>
#include <sstream>
#include <string>

// The literal steps' own records. They sort with the plug-in's own comparators, copied onto
// this class of the same layout, yet keeping them changes nothing the plug-in's records
// could notice.
@interface EOLiteralRecord : NSObject
{
    id<LVMailboxUid> _uid;
    int _accesses;
    NSDate *_date;
    NSMutableString *_displayName;
}
@end

@implementation EOLiteralRecord
+ (void)borrowComparatorsOf:(Class)recordClass
{
    for (SEL comparator : { @selector(sortCompareDate:), @selector(sortCompareAccesses:), @selector(sortCompareDisplayName:) })
        class_addMethod(self, comparator, class_getMethodImplementation(recordClass, comparator), "q@:@");
}
- (id)initWithUid:(id<LVMailboxUid>)uid accesses:(int)accesses date:(NSDate *)date
{
    if (nil == (self = [super init]))
        return nil;
    _uid = uid;
    _accesses = accesses;
    _date = [date copy];
    _displayName = [[uid displayName] mutableCopy];
    return self;
}
- (void)dealloc
{
    [_date release];
    [_displayName release];
    [super dealloc];
}
- (id<LVMailboxUid>)uid
{
    return _uid;
}
- (int)accesses
{
    return _accesses;
}
- (void)setAccesses:(int)accesses
{
    _accesses = accesses;
}
- (NSDate *)date
{
    return _date;
}
- (void)setDate:(NSDate *)date
{
    [_date release];
    _date = [date copy];
}
- (NSMutableString *)displayName
{
    return _displayName;
}
@end

namespace {

SEL evictionComparator(int sortType)
{
    return sortType == 2 ? @selector(sortCompareAccesses:) : @selector(sortCompareDate:);
}

// What the list must become when Mail reports a transfer to `uid` at `date`.
void addOrTouchLiterally(NSMutableArray *list, id<LVMailboxUid> uid, int limit, int sortType, NSDate *date)
{
    for (EOLiteralRecord *record in list) {
        if ([record uid] == uid) {
            [record setAccesses:[record accesses] + 1];
            [record setDate:date];
            return;
        }
    }
    if ([list count] == (NSUInteger)limit) {
        [list sortUsingSelector:evictionComparator(sortType)];
        [list removeLastObject];
    }
    [list insertObject:[[[EOLiteralRecord alloc] initWithUid:uid accesses:1 date:date] autorelease] atIndex:0];
}

std::string describe(NSArray *list)
{
    std::ostringstream text;
    for (id record in list)
        text << [[[record uid] displayName] UTF8String] << ":" << [record accesses] << ":" << [[[record date] description] UTF8String] << " ";
    return text.str();
}

bool sameRecords(NSArray *list, NSArray *expected)
{
    if ([list count] != [expected count])
        return false;
    for (NSUInteger i = 0; i < [list count]; i++) {
        id record = [list objectAtIndex:i], other = [expected objectAtIndex:i];
        bool sameDate = [record date] == [other date] || [[record date] isEqualToDate:[other date]];
        if ([record uid] != [other uid] || [record accesses] != [other accesses] || !sameDate)
            return false;
    }
    return true;
}

LorvaneMailbox *copyOf(LorvaneMailbox *record)
{
    LorvaneMailbox *copy = LVMakeRecord();
    [copy setUid:[record uid]];
    [copy setAccesses:[record accesses]];
    [copy setDate:[record date]];
    return copy;
}

EOLiteralRecord *literalCopyOf(EOLiteralRecord *record)
{
    return [[[EOLiteralRecord alloc] initWithUid:[record uid] accesses:[record accesses] date:[record date]] autorelease];
}

class EvictionOrder : public LVHomeAccountTest {
protected:
    std::mt19937 random{ 20261123 };
    NSMutableArray *mailboxes = [NSMutableArray array];

    NSUInteger below(NSUInteger bound)
    {
        return std::uniform_int_distribution<NSUInteger>(0, bound - 1)(random);
    }

    void makeMailboxes(NSUInteger count)
    {
        // Names repeat in case only, so the name order has ties of its own.
        for (NSUInteger i = [mailboxes count]; i < count; i++)
            [mailboxes addObject:mailbox([NSString stringWithFormat:i % 3 == 0 ? @"box%lu" : @"Box%lu", (unsigned long)(i / 2)])];
    }

    // The same change made to both lists, at the same places.
    void changeBoth(NSMutableArray *list, NSMutableArray *expected, LorvaneBundle_Provider *provider)
    {
        NSUInteger count = [list count];
        switch (below(8)) {
        case 0:     // the menus sort by name
            [list sortUsingSelector:@selector(sortCompareDisplayName:)];
            [expected sortUsingSelector:@selector(sortCompareDisplayName:)];
            break;
        case 1:     // saved dates and counts alike, as a hand-edited file gives them
            for (int i = 0; count > 0 && i < 3; i++) {
                NSUInteger at = below(count);
                NSDate *alike = [NSDate dateWithTimeIntervalSinceReferenceDate:1000.0];
                [[list objectAtIndex:at] setDate:alike];
                [[expected objectAtIndex:at] setDate:alike];
                [[list objectAtIndex:at] setAccesses:2];
                [[expected objectAtIndex:at] setAccesses:2];
            }
            LVRefileRecords(provider);
            break;
        case 2:     // a saved date that did not parse
            if (count > 0) {
                NSUInteger at = below(count);
                [[list objectAtIndex:at] setDate:nil];
                [[expected objectAtIndex:at] setDate:nil];
            }
            LVRefileRecords(provider);
            break;
        case 3:     // a mailbox saved twice
            if (count > 0) {
                NSUInteger from = below(count), at = below(count + 1);
                [list insertObject:copyOf([list objectAtIndex:from]) atIndex:at];
                [expected insertObject:literalCopyOf([expected objectAtIndex:from]) atIndex:at];
            }
            break;
        case 4:     // a record pruned
            if (count > 0) {
                NSUInteger at = below(count);
                [list removeObjectAtIndex:at];
                [expected removeObjectAtIndex:at];
            }
            break;
        case 5:
            if (below(10) == 0) {
                [provider clearRecentMailboxes];
                [expected removeAllObjects];
            }
            break;
        default:
            break;
        }
    }

    // Transfers go to one of the first `choices` mailboxes.
    void transferToBoth(LorvaneBundle_Provider *provider, NSMutableArray *expected, int limit, int sortType, NSUInteger choices)
    {
        id<LVMailboxUid> uid = LVUid([mailboxes objectAtIndex:below(choices)]);
        [provider addOrTouchRecentMailboxFromUid:uid];
        int index = [provider getRecentMailboxIndexWithUid:uid];
        ASSERT_GE(index, 0);
        addOrTouchLiterally(expected, uid, limit, sortType, [[provider getRecentMailboxAtIndex:index] date]);
    }
};

} // namespace

TEST_F(EvictionOrder, EveryTransferLeavesTheListAsTheLiteralStepsDo)
{
    [EOLiteralRecord borrowComparatorsOf:LVPluginClass("LorvaneMailbox")];
    for (int sortType : { 0, 1, 2 }) {
        for (int limit : { 1, 3, 10, 50 }) {
            NSUInteger many = 2 * (NSUInteger)limit + 3;
            makeMailboxes(many);
            LorvaneBundle_Provider *provider = LVMakeListProvider(limit, sortType, YES);
            NSMutableArray *list = LVProviderList(provider);
            NSMutableArray *expected = [NSMutableArray array];
            for (int step = 0; step < 1500; step++) {
                if (below(4) == 0)
                    changeBoth(list, expected, provider);
                // Half the transfers go to about as many mailboxes as the list holds, so
                // some are hits; the rest cycle over more, so most of those drop a record.
                transferToBoth(provider, expected, limit, sortType, below(2) ? (NSUInteger)limit + 1 : many);
                ASSERT_TRUE(sameRecords(list, expected)) << "sort type " << sortType << ", limit " << limit << ", step " << step
                                                         << "\n   got " << describe(list) << "\nwanted " << describe(expected);
            }
        }
    }
}

TEST_F(EvictionOrder, AMailboxListedTwiceIsTouchedAtItsFirstRecordUntilItIsDropped)
{
    LorvaneBundle_Provider *provider = LVMakeListProvider(3, 1, YES);
    MailboxUid *twice = mailbox(@"Twice"), *other = mailbox(@"Other");
    [provider addOrTouchRecentMailboxFromUid:LVUid(twice)];
    [provider addOrTouchRecentMailboxFromUid:LVUid(other)];
    // As loading a file that names one mailbox twice leaves it: the copy stands last, oldest.
    LorvaneMailbox *copy = copyOf([provider getRecentMailboxAtIndex:1]);
    [copy setDate:[NSDate distantPast]];
    [LVProviderList(provider) addObject:copy];

    [provider addOrTouchRecentMailboxFromUid:LVUid(twice)];
    EXPECT_EQ(2, [[provider getRecentMailboxAtIndex:1] accesses]);
    EXPECT_EQ(1, [copy accesses]);

    // A new mailbox drops the oldest record, the copy; the first record still answers.
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"New"))];
    EXPECT_NSEQ((@[ @"New", @"Twice", @"Other" ]), LVMailboxNames(LVProviderList(provider)));
    [provider addOrTouchRecentMailboxFromUid:LVUid(twice)];
    EXPECT_EQ(3, [[provider getRecentMailboxAtIndex:[provider getRecentMailboxIndexWithUid:LVUid(twice)]] accesses]);
    EXPECT_EQ(3u, [LVProviderList(provider) count]);
}
