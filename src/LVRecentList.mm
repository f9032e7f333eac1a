#import "LVRecentList.h"
#import "LVEvictionOrder.h"
#import "LVMenuOrder.h"
#import "LorvaneMailbox.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

// What the list keeps beside its records: plain values only.
struct LVRecentListState {
    // A listed mailbox, known by the address of Mail's object.
    struct Listing {
        LVListSlot slot; // the first record, in list order, that holds the mailbox
        uint32_t count;
    };
    std::vector<const void *> mailboxBySlot; // the record's mailbox when it was listed
    std::vector<LVListSlot> freeSlots;
    std::vector<LVListSlot> order; // the list, front first
    std::unordered_map<const void *, Listing> listings;
    size_t mailboxesListedTwice = 0;
    size_t recordsWithoutMailbox = 0;

    bool mailboxesIndexable() const
    {
        return mailboxesListedTwice == 0 && recordsWithoutMailbox == 0;
    }

    void countMailbox(LVListSlot slot)
    {
        const void *mailbox = mailboxBySlot[slot];
        if (mailbox == nullptr) {
            recordsWithoutMailbox++;
            return;
        }
        auto found = listings.find(mailbox);
        if (found == listings.end()) {
            listings[mailbox] = Listing { slot, 1 };
            return;
        }
        if (found->second.count++ == 1)
            mailboxesListedTwice++;
    }

    void uncountMailbox(LVListSlot slot)
    {
        const void *mailbox = mailboxBySlot[slot];
        if (mailbox == nullptr) {
            recordsWithoutMailbox--;
            return;
        }
        auto found = listings.find(mailbox);
        if (--found->second.count == 0) {
            listings.erase(found);
            return;
        }
        if (found->second.count == 1)
            mailboxesListedTwice--;
        if (found->second.slot == slot)
            found->second.slot = firstSlotHolding(mailbox, slot);
    }

    LVListSlot firstSlotHolding(const void *mailbox, LVListSlot except) const
    {
        for (LVListSlot slot : order) {
            if (slot != except && mailboxBySlot[slot] == mailbox)
                return slot;
        }
        return except;
    }

    // The slot of the first record holding the mailbox, or -1.
    long slotHolding(const void *mailbox) const
    {
        if (mailbox == nullptr) {
            auto found = std::find_if(order.begin(), order.end(), [this](LVListSlot slot) { return mailboxBySlot[slot] == nullptr; });
            return found != order.end() ? (long)*found : -1;
        }
        auto found = listings.find(mailbox);
        if (found == listings.end())
            return -1;
        // Of a mailbox listed twice, the first listing is the one nearest the front.
        return found->second.count == 1 ? found->second.slot : firstSlotHolding(mailbox, (LVListSlot)-1);
    }

    LVListSlot takeSlot()
    {
        if (freeSlots.empty()) {
            mailboxBySlot.push_back(nullptr);
            return (LVListSlot)(mailboxBySlot.size() - 1);
        }
        LVListSlot slot = freeSlots.back();
        freeSlots.pop_back();
        return slot;
    }
};

// The exception a plain array raises for an index past its end.
static void checkIndex(NSUInteger index, NSUInteger count)
{
    if (index >= count)
        [NSException raise:NSRangeException format:@"index %lu beyond bounds (%lu)", (unsigned long)index, (unsigned long)count];
}

@interface LVRecentList (LVSlots)
- (void)lv_listRecord:(LorvaneMailbox *)record atIndex:(NSUInteger)index;
- (void)lv_unlistRecordAtIndex:(NSUInteger)index;
- (void)lv_touchRecord:(LorvaneMailbox *)record inSlot:(LVListSlot)slot;
@end

@implementation LVRecentList

- (id)initWithSortType:(int)sortType
{
    if (nil == (self = [super init]))
        return nil;
    _state = new LVRecentListState;
    _recordsBySlot = [[NSMutableArray alloc] init];
    _free = [[NSNull null] retain];
    _evictionOrder = [[LVEvictionOrder alloc] initWithList:self key:LVRecordKeyOfSortType(sortType, YES)];
    _menuOrder = [[LVMenuOrder alloc] init];
    return self;
}

- (id)initWithCapacity:(NSUInteger)capacity
{
    if (nil == (self = [self initWithSortType:LVSortByName]))
        return nil;
    _state->order.reserve(capacity);
    return self;
}

- (id)init
{
    return [self initWithCapacity:0];
}

- (id)initWithObjects:(const id[])objects count:(NSUInteger)count
{
    if (nil == (self = [self initWithCapacity:count]))
        return nil;
    for (NSUInteger i = 0; i < count; i++)
        [self addObject:objects[i]];
    return self;
}

- (void)dealloc
{
    [_evictionOrder release];
    [_menuOrder release];
    [_recordsBySlot release];
    [_free release];
    delete _state;
    [super dealloc];
}

#pragma mark NSArray

- (NSUInteger)count
{
    return _state->order.size();
}

- (id)objectAtIndex:(NSUInteger)index
{
    checkIndex(index, _state->order.size());
    return [_recordsBySlot objectAtIndex:_state->order[index]];
}

- (void)getObjects:(id *)objects range:(NSRange)range
{
    if (NSMaxRange(range) > _state->order.size())
        [NSException raise:NSRangeException format:@"range beyond bounds (%lu)", (unsigned long)_state->order.size()];
    for (NSUInteger i = 0; i < range.length; i++)
        objects[i] = [_recordsBySlot objectAtIndex:_state->order[range.location + i]];
}

- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState *)state objects:(id *)buffer count:(NSUInteger)length
{
    NSUInteger from = state->state;
    NSUInteger count = _state->order.size();
    NSUInteger taken = from < count ? std::min(length, count - from) : 0;
    [self getObjects:buffer range:NSMakeRange(from, taken)];
    state->state = from + taken;
    state->itemsPtr = buffer;
    state->mutationsPtr = &_mutations;
    return taken;
}

// GNUstep's generic copy copies the records themselves; a plain array's copy shares them.
- (id)copyWithZone:(NSZone *)zone
{
    return [[NSArray allocWithZone:zone] initWithArray:self];
}

- (id)mutableCopyWithZone:(NSZone *)zone
{
    return [[NSMutableArray allocWithZone:zone] initWithArray:self];
}

#pragma mark NSMutableArray

- (void)insertObject:(id)record atIndex:(NSUInteger)index
{
    if (record == nil)
        [NSException raise:NSInvalidArgumentException format:@"attempt to insert nil"];
    if (index > _state->order.size())
        [NSException raise:NSRangeException format:@"index %lu beyond bounds (%lu)", (unsigned long)index, (unsigned long)_state->order.size()];
    _mutations++;
    [self lv_listRecord:record atIndex:index];
}

- (void)addObject:(id)record
{
    [self insertObject:record atIndex:_state->order.size()];
}

- (void)removeObjectAtIndex:(NSUInteger)index
{
    checkIndex(index, _state->order.size());
    _mutations++;
    [self lv_unlistRecordAtIndex:index];
}

- (void)removeLastObject
{
    if (_state->order.empty())
        [NSException raise:NSRangeException format:@"Trying to remove from an empty array."];
    [self removeObjectAtIndex:_state->order.size() - 1];
}

- (void)replaceObjectAtIndex:(NSUInteger)index withObject:(id)record
{
    [[record retain] autorelease];
    [self removeObjectAtIndex:index];
    [self insertObject:record atIndex:index];
}

- (void)removeAllObjects
{
    _mutations++;
    while (!_state->order.empty())
        [self lv_unlistRecordAtIndex:_state->order.size() - 1];
}

#pragma mark The list's own questions

- (LVRecordKey)evictionKey
{
    return [_evictionOrder key];
}

- (BOOL)isIndexed
{
    return _state->mailboxesIndexable() && [_evictionOrder keysEveryRecord];
}

- (int)indexOfMailbox:(id<LVMailboxUid>)mailbox
{
    long slot = _state->slotHolding((const void *)mailbox);
    if (slot < 0)
        return -1;
    auto found = std::find(_state->order.begin(), _state->order.end(), (LVListSlot)slot);
    return (int)(found - _state->order.begin());
}

- (LorvaneMailbox *)touchRecordOfMailbox:(id<LVMailboxUid>)mailbox date:(NSDate *)date
{
    long slot = _state->slotHolding((const void *)mailbox);
    if (slot < 0)
        return nil;
    LorvaneMailbox *record = [_recordsBySlot objectAtIndex:(NSUInteger)slot];
    [record incrementAccesses];
    [record setDate:date];
    [self lv_touchRecord:record inSlot:(LVListSlot)slot];
    return record;
}

- (void)incrementAccessesOfRecordAtIndex:(NSUInteger)index
{
    LorvaneMailbox *record = [self objectAtIndex:index];
    [record incrementAccesses];
    [self lv_touchRecord:record inSlot:_state->order[index]];
}

- (void)sortInEvictionOrder
{
    if (![self isIndexed]) {
        [self sortUsingSelector:LVComparatorOfRecordKey([self evictionKey])];
        return;
    }
    if (![_evictionOrder sortSlots:_state->order.data() count:_state->order.size()])
        return;
    // The eviction order made this order itself: only the menus' order is told.
    _mutations++;
    [_menuOrder recentListDidReorder:self];
}

- (void)removeLastRecordInEvictionOrder
{
    [self sortInEvictionOrder];
    [self removeLastObject];
}

- (BOOL)ranksBeforeLastRecordInEvictionOrder:(LorvaneMailbox *)record
{
    [self sortInEvictionOrder];
    LorvaneMailbox *last = [self lastObject];
    SEL comparator = LVComparatorOfRecordKey([self evictionKey]);
    IMP compare = [last methodForSelector:comparator];
    return ((NSComparisonResult(*)(id, SEL, id))compare)(last, comparator, record) == NSOrderedDescending;
}

#pragma mark For the orders

- (const LVListSlot *)slots
{
    return _state->order.data();
}

- (LorvaneMailbox *)recordInSlot:(LVListSlot)slot
{
    return [_recordsBySlot objectAtIndex:slot];
}

- (NSUInteger)slotCount
{
    return [_recordsBySlot count];
}

// One message for the whole list: an opening reads every record, and a message per record
// costs it more than the rest of its work on them.
- (void)getRecordsBySlot:(LorvaneMailbox **)records mailboxes:(id<LVMailboxUid> *)mailboxes
{
    [_recordsBySlot getObjects:records range:NSMakeRange(0, [_recordsBySlot count])];
    for (NSUInteger slot = 0; slot < _state->mailboxBySlot.size(); slot++) {
        mailboxes[slot] = (id<LVMailboxUid>)_state->mailboxBySlot[slot];
        records[slot] = records[slot] != (id)_free ? records[slot] : nil;
    }
}

- (void)reorderBySlots:(const LVListSlot *)slots
{
    if (std::equal(slots, slots + _state->order.size(), _state->order.begin()))
        return;
    _mutations++;
    std::copy(slots, slots + _state->order.size(), _state->order.begin());
    [_evictionOrder recentListDidReorder:self];
    [_menuOrder recentListDidReorder:self];
}

- (LVMenuOrder *)menuOrder
{
    return _menuOrder;
}

@end

@implementation LVRecentList (LVSlots)

- (void)lv_listRecord:(LorvaneMailbox *)record atIndex:(NSUInteger)index
{
    LVListSlot slot = _state->takeSlot();
    if (slot == [_recordsBySlot count])
        [_recordsBySlot addObject:record];
    else
        [_recordsBySlot replaceObjectAtIndex:slot withObject:record];
    _state->mailboxBySlot[slot] = (const void *)[record uid];
    _state->countMailbox(slot);
    _state->order.insert(_state->order.begin() + (long)index, slot);
    if (!_state->mailboxesIndexable())
        [_evictionOrder forgetOrder];
    [_evictionOrder recentList:self didListRecord:record inSlot:slot atIndex:index];
    [_menuOrder recentList:self didListRecord:record inSlot:slot atIndex:index];
}

// The record is released only once the orders no longer mention it: its -dealloc may look
// at the list.
- (void)lv_unlistRecordAtIndex:(NSUInteger)index
{
    LVListSlot slot = _state->order[index];
    [_evictionOrder recentList:self didUnlistSlot:slot];
    [_menuOrder recentList:self didUnlistSlot:slot];
    _state->order.erase(_state->order.begin() + (long)index);
    _state->uncountMailbox(slot);
    _state->mailboxBySlot[slot] = nullptr;
    _state->freeSlots.push_back(slot);
    [_recordsBySlot replaceObjectAtIndex:slot withObject:_free];
}

- (void)lv_touchRecord:(LorvaneMailbox *)record inSlot:(LVListSlot)slot
{
    [_evictionOrder recentList:self didTouchRecord:record inSlot:slot];
    [_menuOrder recentList:self didTouchRecord:record inSlot:slot];
}

@end
