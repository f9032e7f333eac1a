#import <Foundation/Foundation.h>
#import "LVRecordOrder.h"
#import "MailInterfaces.h"

#include <stdint.h>

@class LorvaneMailbox;
@class LVEvictionOrder;
@class LVMenuOrder;

/* Names one listed record for as long as it stays listed; the number may name another
   record once this one has left. */
typedef uint32_t LVListSlot;

/* One listed record as the list last saw it: who keeps notes of their own about records
   tells from `generation` that a slot took another record, and from `touches` that its
   count and date changed. */
typedef struct {
    LVListSlot slot;
    uint32_t generation;
    uint32_t touches;
    LorvaneMailbox *record;
    id<LVMailboxUid> mailbox; // the record's mailbox when it was listed
} LVListSlotState;

/*
 * The recent-mailbox list: LorvaneMailbox records, index 0 the front.
 *
 * This class exists so that the list the provider holds answers Mail's busiest questions
 * without walking or sorting itself:
 *  - which record holds a mailbox (by identity of the mailbox object);
 *  - which record eviction drops: the last one once the list is sorted, stably, newest first
 *    (most used first under sort type 2). That order is kept beside the list through every
 *    change, so making room costs a copy of it, never a sort.
 * It answers every NSMutableArray message as a plain array does, and a change made through
 * any of them keeps what it keeps beside itself right. A listed record's count and date must
 * change only through the list (-touchRecordOfMailbox:date:, -incrementAccessesOfRecordAtIndex:).
 *
 * A list that holds a mailbox twice, a record without a mailbox, or, where dates order it,
 * a record without a date, has no such order: it is walked and sorted with the records'
 * comparators until it no longer holds one.
 */
@interface LVRecentList : NSMutableArray
{
    struct LVRecentListState *_state; // owned
    unsigned long _mutations;         // what fast enumeration watches
    LVEvictionOrder *_evictionOrder;  // owned
    LVMenuOrder *_menuOrder;          // owned
}

- (id)initWithSortType:(int)sortType;

/* The sort type whose eviction order the list keeps. */
- (int)sortType;

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

/* The listed records, front first; `states` holds room for -count. */
- (void)getSlotStates:(LVListSlotState *)states;
/* Puts the records in the order of the slots given: every listed slot once. */
- (void)reorderBySlots:(const LVListSlot *)slots count:(NSUInteger)count;

/* The order and names the recent submenus show, kept beside the list from one opening to
   the next. */
- (LVMenuOrder *)menuOrder;

@end
