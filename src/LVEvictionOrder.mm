#import "LVEvictionOrder.h"
#import "LorvaneMailbox.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <vector>

namespace {

// What the order knows of one slot.
struct Ranked {
    double key = 0;       // higher keys come first in the eviction order
    bool keyValid = true; // false for a record without a date where dates order the list
    int64_t position = 0; // orders it in the list while positions are current
};

// A record's place in the eviction order, its key beside it so that searching touches only
// the order itself.
struct Filed {
    double key;
    LVListSlot slot;
};

} // namespace

struct LVEvictionOrderState {
    std::vector<Ranked> slots;
    size_t recordsWithoutKey = 0;
    // Key descending, then list order, while `current`.
    std::deque<Filed> filed; // a newcomer goes to the front and eviction takes the back: both ends are cheap
    bool current = true;
    // The list stands in the eviction order itself: making room needs no copy of it.
    bool listInOrder = true;
    // Positions need not be indexes, only ordered as the list is: the front takes ever lower
    // ones, the back ever higher, and anything else makes them all stale at once.
    bool positionsCurrent = true;
    int64_t front = 0;
    int64_t back = -1;

    void setKey(LVListSlot slot, double key)
    {
        Ranked &ranked = slots[slot];
        if (!ranked.keyValid)
            recordsWithoutKey--;
        ranked.key = key;
        // A record whose saved date did not parse ties with every other: no order at all.
        ranked.keyValid = !std::isnan(key);
        if (!ranked.keyValid) {
            recordsWithoutKey++;
            current = false;
        }
    }

    void ensurePositions(const LVListSlot *list, size_t count)
    {
        if (positionsCurrent)
            return;
        for (size_t index = 0; index < count; index++)
            slots[list[index]].position = (int64_t)index;
        front = 0;
        back = (int64_t)count - 1;
        positionsCurrent = true;
    }

    void placeNewPosition(LVListSlot slot, size_t index, size_t count)
    {
        if (!positionsCurrent)
            return;
        if (index == 0)
            slots[slot].position = --front;
        else if (index + 1 == count)
            slots[slot].position = ++back;
        else
            positionsCurrent = false;
    }

    // A newcomer at the front of the list goes before every record that shares its key, so
    // the newest record, the usual one, takes the first place without a search.
    void file(LVListSlot slot, bool atFront, const LVListSlot *list, size_t count)
    {
        if (!current)
            return;
        Filed newcomer = { slots[slot].key, slot };
        if (atFront && (filed.empty() || newcomer.key >= filed.front().key)) {
            filed.insert(filed.begin(), newcomer);
            return;
        }
        listInOrder = false;
        // Positions are read only where keys tie.
        auto place = std::lower_bound(filed.begin(), filed.end(), newcomer, [&](const Filed &placed, const Filed &other) {
            if (placed.key != other.key)
                return placed.key > other.key;
            ensurePositions(list, count);
            return slots[placed.slot].position < slots[other.slot].position;
        });
        filed.insert(place, newcomer);
    }

    // Found by its key, then by identity among the records that share it; the record eviction
    // drops is the last one.
    void unfile(LVListSlot slot)
    {
        if (!current)
            return;
        if (!filed.empty() && filed.back().slot == slot) {
            filed.pop_back();
            return;
        }
        double key = slots[slot].key;
        auto first = std::lower_bound(filed.begin(), filed.end(), key, [](const Filed &placed, double wanted) { return placed.key > wanted; });
        auto found = std::find_if(first, filed.end(), [slot](const Filed &placed) { return placed.slot == slot; });
        if (found != filed.end())
            filed.erase(found);
    }

    // After the list was put in another order, records that share a key stand in the
    // eviction order as they now stand in the list.
    void reorderTies(const LVListSlot *list, size_t count)
    {
        if (!current)
            return;
        ensurePositions(list, count);
        for (auto run = filed.begin(); run != filed.end();) {
            auto end = run + 1;
            while (end != filed.end() && end->key == run->key)
                end++;
            if (end - run > 1)
                std::sort(run, end, [this](const Filed &a, const Filed &b) { return slots[a.slot].position < slots[b.slot].position; });
            run = end;
        }
    }
};

@interface LVEvictionOrder (LVMaking)
- (void)lv_readKeyOfSlot:(LVListSlot)slot;
- (void)lv_makeOrderOfSlots:(const LVListSlot *)slots count:(NSUInteger)count;
@end

@implementation LVEvictionOrder

- (id)initWithList:(LVRecentList *)list key:(LVRecordKey)key
{
    if (nil == (self = [super init]))
        return nil;
    _list = list;
    _key = key;
    _state = new LVEvictionOrderState;
    return self;
}

- (void)dealloc
{
    delete _state;
    [super dealloc];
}

- (LVRecordKey)key
{
    return _key;
}

- (BOOL)keysEveryRecord
{
    return _state->recordsWithoutKey == 0;
}

- (void)forgetOrder
{
    _state->current = false;
}

- (BOOL)sortSlots:(LVListSlot *)slots count:(NSUInteger)count
{
    if (!_state->current)
        [self lv_makeOrderOfSlots:slots count:count];
    if (_state->listInOrder)
        return NO;
    for (NSUInteger index = 0; index < count; index++)
        slots[index] = _state->filed[index].slot;
    _state->listInOrder = true;
    _state->positionsCurrent = false;
    return YES;
}

#pragma mark What the list tells

- (void)recentList:(LVRecentList *)list didListRecord:(LorvaneMailbox *)record inSlot:(LVListSlot)slot atIndex:(NSUInteger)index
{
    if (slot >= _state->slots.size())
        _state->slots.resize(slot + 1);
    _state->setKey(slot, LVRecordKeyValue(record, _key));
    NSUInteger count = [list count];
    _state->placeNewPosition(slot, index, count);
    if (index != 0)
        _state->listInOrder = false;
    _state->file(slot, index == 0, [list slots], count);
}

- (void)recentList:(LVRecentList *)list didUnlistSlot:(LVListSlot)slot
{
    _state->unfile(slot);
    _state->setKey(slot, 0);
}

- (void)recentList:(LVRecentList *)list didTouchRecord:(LorvaneMailbox *)record inSlot:(LVListSlot)slot
{
    _state->unfile(slot);
    _state->setKey(slot, LVRecordKeyValue(record, _key));
    _state->listInOrder = false;
    _state->file(slot, false, [list slots], [list count]);
}

- (void)recentListDidReorder:(LVRecentList *)list
{
    _state->listInOrder = false;
    _state->positionsCurrent = false;
    _state->reorderTies([list slots], [list count]);
}

@end

@implementation LVEvictionOrder (LVMaking)

- (void)lv_readKeyOfSlot:(LVListSlot)slot
{
    _state->setKey(slot, LVRecordKeyValue([_list recordInSlot:slot], _key));
}

// Made again for a list that can be ranked, every key read again, and kept from then on.
- (void)lv_makeOrderOfSlots:(const LVListSlot *)slots count:(NSUInteger)count
{
    for (NSUInteger index = 0; index < count; index++)
        [self lv_readKeyOfSlot:slots[index]];
    std::deque<Filed> &filed = _state->filed;
    filed.clear();
    for (NSUInteger index = 0; index < count; index++)
        filed.push_back(Filed { _state->slots[slots[index]].key, slots[index] });
    std::stable_sort(filed.begin(), filed.end(), [](const Filed &a, const Filed &b) { return a.key > b.key; });
    _state->current = true;
    _state->listInOrder = false;
}

@end
