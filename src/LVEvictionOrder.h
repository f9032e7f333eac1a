#import <Foundation/Foundation.h>
#import "LVRecentList.h"

/*
 * The order in which a recent list's records are evicted: the list sorted, stably, by the
 * eviction key, highest first; eviction drops the last record.
 *
 * This class exists so that making room costs the list a copy of that order, never a sort.
 * It follows every change the list tells it of, reading a record's key when it is listed or
 * touched, and answers what sorting the list would; it never changes an answer. It keeps
 * plain values only: keys, and the slots the list names its records by.
 *
 * While the list holds a record it cannot rank (a mailbox listed twice, a record without a
 * mailbox or a key) the order is forgotten, and made again, whole, once it is asked for after
 * the list can be ranked again.
 */
@interface LVEvictionOrder : NSObject <LVRecentListObserver>
{
    LVRecentList *_list;                 // not retained: the list owns this order
    LVRecordKey _key;
    struct LVEvictionOrderState *_state; // owned
}

- (id)initWithList:(LVRecentList *)list key:(LVRecordKey)key;

- (LVRecordKey)key;

/* NO while a record without a date is listed where dates order the list. */
- (BOOL)keysEveryRecord;

/* The list holds a record it cannot rank. */
- (void)forgetOrder;

/* Puts the list's slots (front first) in eviction order, making that order first if it was
   forgotten; answers NO, having changed nothing, when they stand in it already. */
- (BOOL)sortSlots:(LVListSlot *)slots count:(NSUInteger)count;

@end
