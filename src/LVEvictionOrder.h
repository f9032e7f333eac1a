#import <Foundation/Foundation.h>
#import "LVRecentList.h"

@class LorvaneMailbox;

/*
 * The order in which a recent list's records are evicted: the list sorted, stably, newest
 * first (most used first under LVSortByAccesses); eviction drops the last record.
 *
 * This class exists so that making room costs the list a copy of that order, never a sort.
 * The list reports every change to its slots, handing over its slots front first where
 * records that share a key must be told apart, and the order follows each change. It answers
 * what sorting the list would; it never changes an answer. Records are not retained: the list
 * holds them for as long as their slots are filed here.
 *
 * While the list holds a record it cannot rank (a mailbox listed twice, a record without a
 * mailbox or a key) it invalidates the order, which is made again, whole, once it is asked
 * for after the list can be ranked again.
 */
@interface LVEvictionOrder : NSObject
{
    struct LVEvictionOrderState *_state; // owned
}

- (id)initWithSortType:(int)sortType;

- (int)sortType;

/* NO while a record without a date is filed where dates order the list. */
- (BOOL)keysEveryRecord;

/* The list holds a record it cannot rank. */
- (void)invalidate;

/* The record now stands in the slot at `index` of the list, whose slots `list` holds. */
- (void)fileRecord:(LorvaneMailbox *)record inSlot:(LVListSlot)slot atIndex:(NSUInteger)index ofList:(const LVListSlot *)list count:(NSUInteger)count;
/* The slot's record left the list. */
- (void)unfileSlot:(LVListSlot)slot;
/* The slot's record changed its count or date: it is filed again under its new key. */
- (void)refileSlot:(LVListSlot)slot ofList:(const LVListSlot *)list count:(NSUInteger)count;
/* The list holds the same records in another order. */
- (void)listReordered:(const LVListSlot *)list count:(NSUInteger)count;
/* The list is empty. */
- (void)unfileAll;

/* Puts the list's slots in eviction order, making that order first if invalidated; answers NO,
   having changed nothing, when the list stands in it already. */
- (BOOL)sortList:(LVListSlot *)list count:(NSUInteger)count;

@end
