#import <Foundation/Foundation.h>

@class LorvaneMailbox;

/* The sort types the preferences file names. */
enum {
    LVSortByName = 0,
    LVSortByDate = 1,
    LVSortByAccesses = 2,
};

/* What orders records: their shown names by the user's locale (then their exact spelling),
   newest first, or most used first. */
typedef enum {
    LVRecordKeyName,
    LVRecordKeyDate,
    LVRecordKeyAccesses,
} LVRecordKey;

/* The key that orders a sort type's menus or, `forEviction`, the order whose last record
   eviction drops: by use under LVSortByAccesses, by age under every other type, the order by
   name included. Menus of an unknown sort type are ordered by name. */
LVRecordKey LVRecordKeyOfSortType(int sortType, BOOL forEviction);
/* A record's date or count as a number ordering it highest first under the key; NaN for a
   record without a date. Not for LVRecordKeyName. */
double LVRecordKeyValue(LorvaneMailbox *record, LVRecordKey key);
/* The records' comparator for a key, for -sortUsingSelector:. */
SEL LVComparatorOfRecordKey(LVRecordKey key);

