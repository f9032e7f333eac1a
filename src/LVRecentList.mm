#import "LVRecentList.h"
#import "LVMenuOrder.h"
#import "LorvaneMailbox.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>
#include <vector>

namespace {

struct Entry {
    LorvaneMailbox *record = nil;   // retained while listed
    id<LVMailboxUid> mailbox = nil; // the record's mailbox when it was listed
    double key = 0;                 // higher keys come first in the eviction order
    bool keyValid = true;           // NO for a record without a date where dates order the list
    uint32_t generation = 0;
    uint32_t touches = 0;
    int64_t position = 0; // orders it in the list while positionEpoch is current
    uint64_t positionEpoch = 0;
};

// A record's place in the eviction order, its key beside it so that searching touches only
// the order itself.
struct Filed {
    double key;
    LVListSlot slot;
};

struct Listing {
    LVListSlot slot; // the first record, in list order, that holds the mailbox
    uint32_t count;
};

} // namespace

struct LVRecentListState {
    int sortType = 0;
    std::vector<Entry> entries; // by slot
    std::vector<LVListSlot> freeSlots;
    std::vector<LVListSlot> order; // the list, front first
    // The eviction order, while `evictionCurrent`: key descending, then list order.
    std::vector<Filed> eviction;
    bool evictionCurrent = true;
    // The list stands in the eviction order itself: making room needs no copy of it.
    bool inEvictionOrder = true;
    std::unordered_map<const void *, Listing> listings;
    size_t mailboxesListedTwice = 0;
    size_t recordsWithoutMailbox = 0;
    size_t recordsWithoutKey = 0;
    // Positions need not be indexes, only ordered as the list is: the front takes ever lower
    // ones, the back ever higher, and anything else makes them all stale at once.
    uint64_t epoch = 1;
    bool positionsCurrent = true;
    int64_t front = 0;
    int64_t back = -1;

    bool indexable() const
    {
        return mailboxesListedTwice == 0 && recordsWithoutMailbox == 0 && recordsWithoutKey == 0;
    }

    bool byAccesses() const
    {
        return sortType == LVSortByAccesses;
    }

    void readKey(Entry &entry)
    {
        if (byAccesses()) {
            entry.key = [entry.record accesses];
            entry.keyValid = true;
            return;
        }
        // A record whose saved date did not parse ties with every other: no order at all.
        NSDate *date = [entry.record date];
        entry.key = date != nil ? [date timeIntervalSinceReferenceDate] : NAN;
        entry.keyValid = !std::isnan(entry.key);
    }

    void ensurePositions()
    {
        if (positionsCurrent)
            return;
        epoch++;
        for (size_t index = 0; index < order.size(); index++) {
            Entry &entry = entries[order[index]];
            entry.position = (int64_t)index;
            entry.positionEpoch = epoch;
        }
        front = 0;
        back = (int64_t)order.size() - 1;
        positionsCurrent = true;
    }

    void forgetPositions()
    {
        positionsCurrent = false;
    }

    bool ranksBefore(const Filed &a, const Filed &b)
    {
        if (a.key != b.key)
            return a.key > b.key;
        ensurePositions();
        return entries[a.slot].position < entries[b.slot].position;
    }

    // The eviction order exists only for an indexable list; it is made again when one becomes
    // indexable, and kept from then on.
    bool ensureEviction()
    {
        if (!indexable())
            return false;
        if (evictionCurrent)
            return true;
        eviction.clear();
        for (LVListSlot slot : order)
            eviction.push_back(Filed { entries[slot].key, slot });
        std::stable_sort(eviction.begin(), eviction.end(), [](const Filed &a, const Filed &b) { return a.key > b.key; });
        evictionCurrent = true;
        inEvictionOrder = false;
        return true;
    }

    // A newcomer at the front of the list goes before every record that shares its key, so
    // the newest record, the usual one, takes the first place without a search.
    void fileForEviction(LVListSlot slot, bool atFront)
    {
        if (!evictionCurrent || !indexable())
            return;
        Filed filed = { entries[slot].key, slot };
        if (atFront && (eviction.empty() || filed.key >= eviction.front().key)) {
            eviction.insert(eviction.begin(), filed);
            return;
        }
        inEvictionOrder = false;
        auto place = std::lower_bound(eviction.begin(), eviction.end(), filed,
            [this](const Filed &placed, const Filed &newcomer) { return ranksBefore(placed, newcomer); });
        eviction.insert(place, filed);
    }

    // Found by its key, then by identity among the records that share it; the record eviction
    // drops is the last one.
    void unfileForEviction(LVListSlot slot)
    {
        if (!evictionCurrent || !indexable())
            return;
        if (!eviction.empty() && eviction.back().slot == slot) {
            eviction.pop_back();
            return;
        }
        double key = entries[slot].key;
        auto first = std::lower_bound(eviction.begin(), eviction.end(), key, [](const Filed &placed, double wanted) { return placed.key > wanted; });
        auto found = std::find_if(first, eviction.end(), [slot](const Filed &placed) { return placed.slot == slot; });
        if (found != eviction.end())
            eviction.erase(found);
    }

    void takeEvictionOrder()
    {
        for (size_t index = 0; index < order.size(); index++)
            order[index] = eviction[index].slot;
        inEvictionOrder = true;
    }

    void countKey(const Entry &entry, int delta)
    {
        if (!entry.keyValid)
            recordsWithoutKey += delta;
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

    void insert(LorvaneMailbox *record, size_t index)
    {
        LVListSlot slot = takeSlot();
        Entry &entry = entries[slot];
        entry.record = [record retain];
        entry.mailbox = [record uid];
        entry.generation++;
        entry.touches = 0;
        readKey(entry);
        countKey(entry, +1);
        countMailbox(slot, entry);
        order.insert(order.begin() + (long)index, slot);
        placeNewPosition(entry, index);
        if (evictionCurrent && !indexable())
            evictionCurrent = false;
        if (index != 0)
            inEvictionOrder = false;
        fileForEviction(slot, index == 0);
    }

    void placeNewPosition(Entry &entry, size_t index)
    {
        if (!positionsCurrent)
            return;
        if (index == 0)
            entry.position = --front;
        else if (index + 1 == order.size())
            entry.position = ++back;
        else
            return forgetPositions();
        entry.positionEpoch = epoch;
    }

    // The record leaves the list's notes; the caller releases it.
    LorvaneMailbox *remove(size_t index)
    {
        LVListSlot slot = order[index];
        Entry &entry = entries[slot];
        unfileForEviction(slot);
        order.erase(order.begin() + (long)index);
        countKey(entry, -1);
        uncountMailbox(slot, entry);
        if (!indexable())
            evictionCurrent = false;
        LorvaneMailbox *record = entry.record;
        entry.record = nil;
        entry.mailbox = nil;
        freeSlots.push_back(slot);
        return record;
    }

    // A listed record's count or date changed: it is filed again under its new key.
    void refile(LVListSlot slot)
    {
        Entry &entry = entries[slot];
        bool wasIndexable = indexable();
        unfileForEviction(slot);
        countKey(entry, -1);
        readKey(entry);
        countKey(entry, +1);
        entry.touches++;
        if (wasIndexable && !indexable())
            evictionCurrent = false;
        inEvictionOrder = false;
        fileForEviction(slot, false);
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
        eviction.clear();
        evictionCurrent = true;
        inEvictionOrder = true;
        listings.clear();
        mailboxesListedTwice = recordsWithoutMailbox = recordsWithoutKey = 0;
        forgetPositions();
    }

    // After the list was put in another order, records that share a key stand in the
    // eviction order as they now stand in the list.
    void reorderTiesForEviction()
    {
        if (!evictionCurrent || !indexable())
            return;
        ensurePositions();
        for (auto run = eviction.begin(); run != eviction.end();) {
            auto end = run + 1;
            while (end != eviction.end() && end->key == run->key)
                end++;
            if (end - run > 1)
                std::sort(run, end, [this](const Filed &a, const Filed &b) { return entries[a.slot].position < entries[b.slot].position; });
            run = end;
        }
    }
};

static SEL evictionComparator(int sortType)
{
    return sortType == LVSortByAccesses ? @selector(sortCompareAccesses:) : @selector(sortCompareDate:);
}

@implementation LVRecentList

- (id)initWithSortType:(int)sortType
{
    if (nil == (self = [self initWithCapacity:0]))
        return nil;
    _state->sortType = sortType;
    return self;
}

- (id)initWithCapacity:(NSUInteger)capacity
{
    if (nil == (self = [super init]))
        return nil;
    _state = new LVRecentListState;
    _state->order.reserve(capacity);
    _menuOrder = [[LVMenuOrder alloc] init];
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
    if (index >= _state->order.size())
        [NSException raise:NSRangeException format:@"index %lu beyond bounds (%lu)", (unsigned long)index, (unsigned long)_state->order.size()];
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
    _state->insert(record, index);
}

- (void)addObject:(id)record
{
    [self insertObject:record atIndex:_state->order.size()];
}

- (void)removeObjectAtIndex:(NSUInteger)index
{
    if (index >= _state->order.size())
        [NSException raise:NSRangeException format:@"index %lu beyond bounds (%lu)", (unsigned long)index, (unsigned long)_state->order.size()];
    _mutations++;
    // Released only once the notes no longer mention it: its -dealloc may look at the list.
    [_state->remove(index) release];
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
}

#pragma mark The list's own questions

- (int)sortType
{
    return _state->sortType;
}

- (void)setSortType:(int)sortType
{
    if (sortType == _state->sortType)
        return;
    _state->sortType = sortType;
    _state->recordsWithoutKey = 0;
    for (LVListSlot slot : _state->order) {
        _state->readKey(_state->entries[slot]);
        _state->countKey(_state->entries[slot], +1);
    }
    _state->evictionCurrent = false;
}

- (BOOL)isIndexed
{
    return _state->indexable();
}

- (LorvaneMailbox *)recordWithMailbox:(id<LVMailboxUid>)mailbox
{
    long slot = _state->slotHolding(mailbox);
    return slot >= 0 ? _state->entries[(LVListSlot)slot].record : nil;
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
    _state->refile((LVListSlot)slot);
    return record;
}

- (void)incrementAccessesOfRecordAtIndex:(NSUInteger)index
{
    LorvaneMailbox *record = [self objectAtIndex:index];
    [record incrementAccesses];
    _state->refile(_state->order[index]);
}

- (void)sortInEvictionOrder
{
    if (!_state->ensureEviction()) {
        [self sortUsingSelector:evictionComparator(_state->sortType)];
        return;
    }
    if (_state->inEvictionOrder)
        return;
    _mutations++;
    _state->takeEvictionOrder();
    _state->forgetPositions();
}

- (void)removeLastRecordInEvictionOrder
{
    [self sortInEvictionOrder];
    [self removeLastObject];
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
    _state->inEvictionOrder = false;
    _state->forgetPositions();
    _state->reorderTiesForEviction();
}

- (LVMenuOrder *)menuOrder
{
    return _menuOrder;
}

@end
