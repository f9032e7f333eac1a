#import "LVRecordOrder.h"
#import "LorvaneMailbox.h"

#include <cmath>

LVRecordKey LVRecordKeyOfSortType(int sortType, BOOL forEviction)
{
    switch (sortType) {
    case LVSortByAccesses:
        return LVRecordKeyAccesses;
    case LVSortByDate:
        return LVRecordKeyDate;
    default:
        return forEviction ? LVRecordKeyDate : LVRecordKeyName;
    }
}

// Names that the name order takes as equal ("work" and "Work", or an "é" written as one
// character or as two) are kept in a fixed order by their exact spelling. Exactly equal names
// then always sit together, and the menus keep their order when a restart reverses the list.
@interface LorvaneMailbox (LVSpellingOrder)
- (NSComparisonResult)lv_sortCompareDisplayNameThenSpelling:(LorvaneMailbox *)other;
@end

@implementation LorvaneMailbox (LVSpellingOrder)

- (NSComparisonResult)lv_sortCompareDisplayNameThenSpelling:(LorvaneMailbox *)other
{
    NSComparisonResult order = [self sortCompareDisplayName:other];
    return order != NSOrderedSame ? order : [[self displayName] compare:[other displayName] options:NSLiteralSearch];
}

@end

SEL LVComparatorOfRecordKey(LVRecordKey key)
{
    switch (key) {
    case LVRecordKeyAccesses:
        return @selector(sortCompareAccesses:);
    case LVRecordKeyDate:
        return @selector(sortCompareDate:);
    default:
        return @selector(lv_sortCompareDisplayNameThenSpelling:);
    }
}


double LVRecordKeyValue(LorvaneMailbox *record, LVRecordKey key)
{
    if (key == LVRecordKeyAccesses)
        return [record accesses];
    NSDate *date = [record date];
    return date != nil ? [date timeIntervalSinceReferenceDate] : NAN;
}
