#import "LVEvictionOrder.h"
#import "LorvaneMailbox.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <functional>
#include <vector>

namespace {

// What the order knows of one slot.
struct Ranked {
    double key = 0;       // higher keys come first in the eviction order
    bool keyValid = true; // false for a record without a date where dates order the list
    int64_t position = 0; // orders it in the list while positions are current
};

} // namespace

struct LVEvictionOrderState {
    std::vector<Ranked> slots;
    size_t recordsWithoutKey = 0;
    // The order while `current`: key descending, then list order. The slots and their keys
    // stand apart so that the slots alone copy into the list in a few block moves, where
    // one at a time cost the first eviction after an opening 2 ns a record; a newcomer goes
    // to the front and eviction takes the back, both cheap in a deque.
    std::deque<LVListSlot> filedSlots;
    std::deque<double> filedKeys;
    bool current = true;
    // The list stands in the eviction order itself: making room needs no copy of it.
    bool listInOrder = true;
    // Positions need not be indexes, only ordered as the list is: a newcomer at the front, the
    // usual one, takes an ever lower one, and anything else makes them all stale at once.
    bool positionsCurrent = true;
    int64_t front = 0;

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
        positionsCurrent = true;
    }

    void placeNewPosition(LVListSlot slot, size_t index)
    {
        if (!positionsCurrent)
            return;
        if (index == 0)
            slots[slot].position = --front;
        else
            positionsCurrent = false;
    }

    // A newcomer at the front of the list goes before every record that shares its key, so
    // the newest record, the usual one, takes the first place without a search.
    void file(LVListSlot slot, bool atFront, const LVListSlot *list, size_t count)
    {
        if (!current)
            return;
        double key = slots[slot].key;
        if (atFront && (filedKeys.empty() || key >= filedKeys.front())) {
            filedSlots.push_front(slot);
            filedKeys.push_front(key);
            return;
        }
        listInOrder = false;
        auto first = std::lower_bound(filedKeys.begin(), filedKeys.end(), key, std::greater<double>());
        auto last = std::upper_bound(first, filedKeys.end(), key, std::greater<double>());
        auto ties = filedSlots.begin() + (first - filedKeys.begin());
        auto tiesEnd = filedSlots.begin() + (last - filedKeys.begin());
        // Positions are read only where keys tie.
        if (ties != tiesEnd)
            ensurePositions(list, count);
        auto placed = std::partition_point(ties, tiesEnd, [&](LVListSlot other) { return slots[other].position < slots[slot].position; });
        long place = placed - filedSlots.begin();
        filedSlots.insert(filedSlots.begin() + place, slot);
        filedKeys.insert(filedKeys.begin() + place, key);
    }

    // Found by its key, then by identity among the records that share it; the record eviction
    // drops is the last one.
    void unfile(LVListSlot slot)
    {
        if (!current)
            return;
        if (!filedSlots.empty() && filedSlots.back() == slot) {
            filedSlots.pop_back();
            filedKeys.pop_back();
            return;
        }
        double key = slots[slot].key;
        auto first = std::lower_bound(filedKeys.begin(), filedKeys.end(), key, std::greater<double>());
        auto found = std::find(filedSlots.begin() + (first - filedKeys.begin()), filedSlots.end(), slot);
        if (found == filedSlots.end())
            return;
        filedKeys.erase(filedKeys.begin() + (found - filedSlots.begin()));
        filedSlots.erase(found);
    }

    // After the list was put in another order, records that share a key stand in the
    // eviction order as they now stand in the list.
    void reorderTies(const LVListSlot *list, size_t count)
    {
        if (!current)
            return;
        ensurePositions(list, count);
        for (size_t run = 0; run < filedKeys.size();) {
            size_t end = run + 1;
            while (end < filedKeys.size() && filedKeys[end] == filedKeys[run])
                end++;
            if (end - run > 1)
                std::sort(filedSlots.begin() + (long)run, filedSlots.begin() + (long)end,
                          [this](LVListSlot a, LVListSlot b) { return slots[a].position < slots[b].position; });
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
    std::copy(_state->filedSlots.begin(), _state->filedSlots.end(), slots);
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
    _state->placeNewPosition(slot, index);
    _state->file(slot, index == 0, [list slots], [list count]);
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
    std::vector<LVListSlot> order(slots, slots + count);
    const std::vector<Ranked> &ranked = _state->slots;
    std::stable_sort(order.begin(), order.end(), [&ranked](LVListSlot a, LVListSlot b) { return ranked[a].key > ranked[b].key; });
    _state->filedSlots.assign(order.begin(), order.end());
    _state->filedKeys.clear();
    for (LVListSlot slot : order)
        _state->filedKeys.push_back(ranked[slot].key);
    _state->current = true;
    _state->listInOrder = false;
}

@end
