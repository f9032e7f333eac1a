#import "LVRecentList.h"
#import "LVRecordOrder.h"
#import "LVEvictionOrder.h"
#import "LVMenuOrder.h"
#import "LorvaneMailbox.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace {

struct Entry {
    LorvaneMailbox *record = nil;   // retained while listed
    id<LVMailboxUid> mailbox = nil; // the record's mailbox when it was listed
    uint32_t generation = 0;
    uint32_t touches = 0;
};

struct Listing {
    LVListSlot slot; // the first record, in list order, that holds the mailbox
    uint32_t count;
};

} // namespace

struct LVRecentListState {
    std::vector<Entry> entries; // by slot
    std::vector<LVListSlot> freeSlots;
    std::vector<LVListSlot> order; // the list, front first
    std::unordered_map<const void *, Listing> listings;
    size_t mailboxesListedTwice = 0;
    size_t recordsWithoutMailbox = 0;

    bool mailboxesIndexable() const
    {
        return mailboxesListedTwice == 0 && recordsWithoutMailbox == 0;
    }

    void countMailbox(LVListSlot slot, const Entry &entry)
    {
        if (entry.mailbox == nil) {
            recordsWithoutMailbox++;
            return;
        }
        auto found = listings.find((const void *)entry.mailbox);
        if (found == listings.end()) {
            listings[(const void *)entry.mailbox] = Listing { slot, 1 };
            return;
        }
        if (found->second.count++ == 1)
            mailboxesListedTwice++;
    }

    void uncountMailbox(LVListSlot slot, const Entry &entry)
    {
        if (entry.mailbox == nil) {
            recordsWithoutMailbox--;
            return;
        }
        auto found = listings.find((const void *)entry.mailbox);
        if (--found->second.count == 0) {
            listings.erase(found);
            return;
        }
        if (found->second.count == 1)
            mailboxesListedTwice--;
        if (found->second.slot == slot)
            found->second.slot = firstSlotHolding(entry.mailbox, slot);
    }

    LVListSlot firstSlotHolding(id<LVMailboxUid> mailbox, LVListSlot except)
    {
        for (LVListSlot slot : order) {
            if (slot != except && entries[slot].mailbox == mailbox)
                return slot;
        }
        return except;
    }

    // The slot of the first record holding the mailbox, or -1.
    long slotHolding(id<LVMailboxUid> mailbox)
    {
        if (mailbox == nil) {
            for (LVListSlot slot : order) {
                if (entries[slot].mailbox == nil)
                    return slot;
            }
            return -1;
        }
        auto found = listings.find((const void *)mailbox);
        if (found == listings.end())
            return -1;
        // Of a mailbox listed twice, the first listing is the one nearest the front.
        return found->second.count == 1 ? found->second.slot : firstSlotHolding(mailbox, (LVListSlot)-1);
    }

    LVListSlot takeSlot()
    {
        if (freeSlots.empty()) {
            entries.emplace_back();
            return (LVListSlot)(entries.size() - 1);
        }
        LVListSlot slot = freeSlots.back();
        freeSlots.pop_back();
        return slot;
    }

    void insert(LorvaneMailbox *record, size_t index, LVEvictionOrder *eviction)
    {
        LVListSlot slot = takeSlot();
        Entry &entry = entries[slot];
        entry.record = [record retain];
        entry.mailbox = [record uid];
        entry.generation++;
        entry.touches = 0;
        countMailbox(slot, entry);
        order.insert(order.begin() + (long)index, slot);
        if (!mailboxesIndexable())
            [eviction invalidate];
        [eviction fileRecord:record inSlot:slot atIndex:index ofList:order.data() count:order.size()];
    }

    // The record leaves the list's notes; the caller releases it.
    LorvaneMailbox *remove(size_t index, LVEvictionOrder *eviction)
    {
        LVListSlot slot = order[index];
        Entry &entry = entries[slot];
        [eviction unfileSlot:slot];
        order.erase(order.begin() + (long)index);
        uncountMailbox(slot, entry);
        LorvaneMailbox *record = entry.record;
        entry.record = nil;
        entry.mailbox = nil;
        freeSlots.push_back(slot);
        return record;
    }

    // A listed record's count or date changed: it is filed again under its new key.
    void touch(LVListSlot slot, LVEvictionOrder *eviction)
    {
        entries[slot].touches++;
        [eviction refileSlot:slot ofList:order.data() count:order.size()];
    }

    void removeAll()
    {
        for (LVListSlot slot : order) {
            [entries[slot].record release];
            entries[slot].record = nil;
            entries[slot].mailbox = nil;
            freeSlots.push_back(slot);
        }
        order.clear();
        listings.clear();
        mailboxesListedTwice = recordsWithoutMailbox = 0;
    }
};

static SEL evictionComparator(int sortType)
{
    return LVComparatorOfRecordKey(LVRecordKeyOfSortType(sortType, YES));
}

// The exception a plain array raises for an index past its last element.
static void checkIndex(NSUInteger index, NSUInteger count)
{
    if (index >= count)
        [NSException raise:NSRangeException format:@"index %lu beyond bounds (%lu)", (unsigned long)index, (unsigned long)count];
}

@implementation LVRecentList

- (id)initWithSortType:(int)sortType
{
    if (nil == (self = [super init]))
        return nil;
    _state = new LVRecentListState;
    _evictionOrder = [[LVEvictionOrder alloc] initWithSortType:sortType];
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
    _state->removeAll();
    delete _state;
    [_evictionOrder release];
    [_menuOrder release];
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
    return _state->entries[_state->order[index]].record;
}

- (void)getObjects:(id *)objects range:(NSRange)range
{
    if (NSMaxRange(range) > _state->order.size())
        [NSException raise:NSRangeException format:@"range beyond bounds (%lu)", (unsigned long)_state->order.size()];
    for (NSUInteger i = 0; i < range.length; i++)
        objects[i] = _state->entries[_state->order[range.location + i]].record;
}

- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState *)state objects:(id *)buffer count:(NSUInteger)length
{
    NSUInteger from = state->state;
    NSUInteger count = _state->order.size();
    NSUInteger taken = from < count ? std::min(length, count - from) : 0;
    for (NSUInteger i = 0; i < taken; i++)
        buffer[i] = _state->entries[_state->order[from + i]].record;
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
    _state->insert(record, index, _evictionOrder);
}

- (void)addObject:(id)record
{
    [self insertObject:record atIndex:_state->order.size()];
}

- (void)removeObjectAtIndex:(NSUInteger)index
{
    checkIndex(index, _state->order.size());
    _mutations++;
    // Released only once the notes no longer mention it: its -dealloc may look at the list.
    [_state->remove(index, _evictionOrder) release];
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
    _state->removeAll();
    [_evictionOrder unfileAll];
}

#pragma mark The list's own questions

- (int)sortType
{
    return [_evictionOrder sortType];
}

- (BOOL)isIndexed
{
    return _state->mailboxesIndexable() && [_evictionOrder keysEveryRecord];
}

- (int)indexOfMailbox:(id<LVMailboxUid>)mailbox
{
    long slot = _state->slotHolding(mailbox);
    if (slot < 0)
        return -1;
    auto found = std::find(_state->order.begin(), _state->order.end(), (LVListSlot)slot);
    return (int)(found - _state->order.begin());
}

- (LorvaneMailbox *)touchRecordOfMailbox:(id<LVMailboxUid>)mailbox date:(NSDate *)date
{
    long slot = _state->slotHolding(mailbox);
    if (slot < 0)
        return nil;
    LorvaneMailbox *record = _state->entries[(LVListSlot)slot].record;
    [record incrementAccesses];
    [record setDate:date];
    _state->touch((LVListSlot)slot, _evictionOrder);
    return record;
}

- (void)incrementAccessesOfRecordAtIndex:(NSUInteger)index
{
    LorvaneMailbox *record = [self objectAtIndex:index];
    [record incrementAccesses];
    _state->touch(_state->order[index], _evictionOrder);
}

- (void)sortInEvictionOrder
{
    if (![self isIndexed]) {
        [self sortUsingSelector:evictionComparator([self sortType])];
        return;
    }
    if ([_evictionOrder sortList:_state->order.data() count:_state->order.size()])
        _mutations++;
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
    SEL comparator = evictionComparator([self sortType]);
    IMP compare = [last methodForSelector:comparator];
    return ((NSComparisonResult(*)(id, SEL, id))compare)(last, comparator, record) == NSOrderedDescending;
}

- (void)getSlotStates:(LVListSlotState *)states
{
    for (size_t index = 0; index < _state->order.size(); index++) {
        LVListSlot slot = _state->order[index];
        const Entry &entry = _state->entries[slot];
        states[index] = LVListSlotState { slot, entry.generation, entry.touches, entry.record, entry.mailbox };
    }
}

- (void)reorderBySlots:(const LVListSlot *)slots count:(NSUInteger)count
{
    NSAssert(count == _state->order.size(), @"a new order must hold every listed record");
    if (std::equal(slots, slots + count, _state->order.begin()))
        return;
    _mutations++;
    _state->order.assign(slots, slots + count);
    [_evictionOrder listReordered:_state->order.data() count:count];
}

- (LVMenuOrder *)menuOrder
{
    return _menuOrder;
}

@end
