#import <Foundation/Foundation.h>
#import "LVRecordOrder.h"
#import "MailInterfaces.h"

#include <stdint.h>

@class LorvaneMailbox;
@class LVEvictionOrder;
@class LVMenuOrder;
@class LVRecentList;

/* Names one listed record for as long as it stays listed; the number may name another
   record once this one has left. */
typedef uint32_t LVListSlot;

/* What the list tells the orders it keeps beside itself, as each change is made. */
@protocol LVRecentListObserver <NSObject>
/* The record now stands in `slot`, at `index` of the list. */
- (void)recentList:(LVRecentList *)list didListRecord:(LorvaneMailbox *)record inSlot:(LVListSlot)slot atIndex:(NSUInteger)index;
/* The record in `slot` left the list; the slot is free. */
- (void)recentList:(LVRecentList *)list didUnlistSlot:(LVListSlot)slot;
/* The record in `slot` changed its count or date; it kept its place. */
- (void)recentList:(LVRecentList *)list didTouchRecord:(LorvaneMailbox *)record inSlot:(LVListSlot)slot;
/* The list holds the same records in another order. */
- (void)recentListDidReorder:(LVRecentList *)list;
@end

/*
 * The recent-mailbox list: LorvaneMailbox records, index 0 the front. It owns its records.
 *
 * This class exists so that the list the provider holds answers Mail's busiest questions
 * without sorting itself:
 *  - which record holds a mailbox, by the identity of the mailbox object, through a hash table;
 *  - which record eviction drops: the last one once the list is sorted, stably, by its
 *    eviction key (LVRecordKeyOfSortType). That order (LVEvictionOrder) is kept beside the
 *    list through every change, so making room costs a copy of it, never a sort.
 * Beside it the list keeps the menus' order (LVMenuOrder). Both learn of every change through
 * LVRecentListObserver and nothing else; each record is known to them by its slot.
 *
 * It answers every NSMutableArray message as a plain array does, and a change made through
 * any of them is told to the orders. A listed record's count and date must change only
 * through the list (-touchRecordOfMailbox:date:, -incrementAccessesOfRecordAtIndex:).
 *
 * A list that holds a mailbox twice, a record without a mailbox, or, where dates order it,
 * a record without a date, has no such order: it is walked and sorted with the records'
 * comparators until it no longer holds one.
 */
@interface LVRecentList : NSMutableArray
{
    struct LVRecentListState *_state; // owned: plain values only
    NSMutableArray *_recordsBySlot;   // owned: the records, each at its slot; _free where free
    NSNull *_free;                    // what a free slot holds
    unsigned long _mutations;         // what fast enumeration watches
    LVEvictionOrder *_evictionOrder;  // owned
    LVMenuOrder *_menuOrder;          // owned
}

- (id)initWithSortType:(int)sortType;

/* The key of the eviction order the list keeps, chosen by the sort type it was made with. */
- (LVRecordKey)evictionKey;

/* YES while the list keeps its eviction order: each mailbox listed once, every record with a
   mailbox and, where dates order the list, a date. */
- (BOOL)isIndexed;

/* The index of the first record, in list order, whose mailbox is this very object; -1 when
   none is. */
- (int)indexOfMailbox:(id<LVMailboxUid>)mailbox;

/* One more use of the first record that holds the mailbox, dated `date`; it keeps its place.
   Answers the record, or nil (and changes nothing) when the mailbox is not listed. */
- (LorvaneMailbox *)touchRecordOfMailbox:(id<LVMailboxUid>)mailbox date:(NSDate *)date;
- (void)incrementAccessesOfRecordAtIndex:(NSUInteger)index;

/* Leaves the list as -sortUsingSelector: with the eviction comparator of its sort type would. */
- (void)sortInEvictionOrder;
/* The same, then the last record removed. The list must not be empty. */
- (void)removeLastRecordInEvictionOrder;
/* The list sorted in eviction order, then YES when `record` ranks before its last record.
   The list must not be empty. */
- (BOOL)ranksBeforeLastRecordInEvictionOrder:(LorvaneMailbox *)record;

/* For the orders: the listed slots, front first, valid until the next change (-count of them);
   the record in a listed slot; the records in bulk; the records put in the order of the slots
   given, every listed slot once. */
- (const LVListSlot *)slots;
- (LorvaneMailbox *)recordInSlot:(LVListSlot)slot;
/* One more than the highest slot the list has used. */
- (NSUInteger)slotCount;
/* The listed records and the mailbox each held when it was listed, by slot, into buffers of
   -slotCount entries each; nil for a free slot. */
- (void)getRecordsBySlot:(LorvaneMailbox **)records mailboxes:(id<LVMailboxUid> *)mailboxes;
- (void)reorderBySlots:(const LVListSlot *)slots;

/* The order and names the recent submenus show, kept beside the list from one opening to
   the next. */
- (LVMenuOrder *)menuOrder;

@end
