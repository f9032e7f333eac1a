#import "LVRecentSubmenu.h"

#include <algorithm>
#include <vector>

struct LVShownRows {
    struct Row {
        LorvaneMailbox *record; // not retained: the list holds it
        NSString *title;        // retained, with the tool tip and icon
        NSString *toolTip;
        NSImage *icon;
        NSUInteger item; // which pre-made item shows it
    };
    std::vector<Row> rows; // top to bottom
    std::vector<NSUInteger> freeItems;
    NSUInteger itemCount = 0;
};

namespace {

using Shown = LVShownRows::Row;

// Past this many rows going or coming, the smallest edit costs more to find than the
// toolkit's work it saves: the rows between the unchanged ends are all replaced.
const int LVLargestSearchedEdit = 64;

bool sameText(NSString *a, NSString *b)
{
    return a == b || [a isEqualToString:b];
}

bool sameRow(const Shown &shown, const LVMenuRow &row)
{
    return shown.record == row.record && shown.icon == row.icon && sameText(shown.title, row.title)
        && sameText(shown.toolTip, row.toolTip);
}

// Which rows of `old` stay and which of `now` are already there, by the shortest edit between
// them (Myers' greedy search, which costs in proportion to the rows that change); NO when
// that edit is longer than the search goes.
bool findShortestEdit(const Shown *old, int oldCount, const LVMenuRow *now, int newCount, std::vector<bool> &oldKept,
    std::vector<bool> &newKept)
{
    int longest = std::min(oldCount + newCount, LVLargestSearchedEdit);
    std::vector<int> furthest(2 * (size_t)longest + 3, 0);
    auto reach = [&](int diagonal) -> int & { return furthest[(size_t)(diagonal + longest + 1)]; };
    // trace[d][k + d]: how far diagonal k reached after d rows went or came.
    std::vector<std::vector<int>> trace;
    for (int edits = 0; edits <= longest; edits++) {
        for (int diagonal = -edits; diagonal <= edits; diagonal += 2) {
            bool fromAbove = diagonal == -edits || (diagonal != edits && reach(diagonal - 1) < reach(diagonal + 1));
            int x = fromAbove ? reach(diagonal + 1) : reach(diagonal - 1) + 1;
            int y = x - diagonal;
            while (x < oldCount && y < newCount && sameRow(old[x], now[y]))
                x++, y++;
            reach(diagonal) = x;
            if (x < oldCount || y < newCount)
                continue;
            // Found: walk back, marking the rows on diagonals as staying.
            if (x != oldCount || y != newCount)
                return false;
            for (int d = edits; d > 0; d--) {
                const std::vector<int> &before = trace[(size_t)d - 1];
                auto reached = [&](int k) { return before[(size_t)(k + d - 1)]; };
                int k = x - y;
                bool down = k == -d || (k != d && reached(k - 1) < reached(k + 1));
                int previousK = down ? k + 1 : k - 1;
                int previousX = reached(previousK);
                int previousY = previousX - previousK;
                for (int middleX = down ? previousX : previousX + 1; x > middleX; x--, y--) {
                    if (x > oldCount || y > newCount || y < 1)
                        return false;
                    oldKept[(size_t)x - 1] = newKept[(size_t)y - 1] = true;
                }
                x = previousX;
                y = previousY;
            }
            for (; x > 0 && y > 0; x--, y--)
                oldKept[(size_t)x - 1] = newKept[(size_t)y - 1] = true;
            return true;
        }
        trace.emplace_back(&reach(-edits), &reach(edits) + 1);
    }
    return false;
}

// The item a newcomer shows: a record that goes and comes back keeps its own, any other
// takes a free one.
NSUInteger itemForRecord(LVShownRows &shown, LorvaneMailbox *record, std::vector<Shown> &returning)
{
    for (auto row = returning.begin(); row != returning.end(); ++row) {
        if (row->record == record) {
            NSUInteger item = row->item;
            returning.erase(row);
            return item;
        }
    }
    NSUInteger item = shown.freeItems.back();
    shown.freeItems.pop_back();
    return item;
}

// Rows go from the bottom up and come from the top down, so that each index still to be
// used stays right.
void applyEdit(NSMenu *menu, LVShownRows &shown, const LVMenuRow *rows, NSUInteger count, const std::vector<bool> &oldKept,
    const std::vector<bool> &newKept, NSArray *items)
{
    std::vector<LorvaneMailbox *> coming;
    for (size_t index = 0; index < count; index++) {
        if (!newKept[index])
            coming.push_back(rows[index].record);
    }
    std::vector<Shown> gone, returning, staying;
    for (size_t index = shown.rows.size(); index-- > 0;) {
        const Shown &row = shown.rows[index];
        if (oldKept[index]) {
            staying.push_back(row);
            continue;
        }
        [menu removeItemAtIndex:(NSInteger)index];
        gone.push_back(row);
        if (std::find(coming.begin(), coming.end(), row.record) != coming.end())
            returning.push_back(row);
        else
            shown.freeItems.push_back(row.item);
    }
    std::reverse(staying.begin(), staying.end());
    std::vector<Shown> now;
    now.reserve(count);
    size_t nextStaying = 0;
    for (size_t index = 0; index < count; index++) {
        if (newKept[index]) {
            now.push_back(staying[nextStaying++]);
            continue;
        }
        const LVMenuRow &row = rows[index];
        Shown added = { row.record, [row.title retain], [row.toolTip retain], [row.icon retain], itemForRecord(shown, row.record, returning) };
        NSMenuItem *item = [items objectAtIndex:added.item];
        [item setToolTip:added.toolTip];
        [item setTitle:added.title];
        [item setImage:added.icon];
        [menu insertItem:item atIndex:(NSInteger)index];
        now.push_back(added);
    }
    for (Shown &row : gone) {
        [row.title release];
        [row.toolTip release];
        [row.icon release];
    }
    shown.rows.swap(now);
}

} // namespace

@interface LVRecentSubmenu (LVRows)
- (void)lv_forgetRows;
- (void)lv_startAgainWithItemCount:(NSUInteger)itemCount;
@end

@implementation LVRecentSubmenu

- (id)initWithTitle:(NSString *)title
{
    if (nil == (self = [super initWithTitle:title]))
        return nil;
    _shown = new LVShownRows;
    return self;
}

- (void)dealloc
{
    [self lv_forgetRows];
    delete _shown;
    [super dealloc];
}

- (void)lv_forgetRows
{
    for (Shown &shown : _shown->rows) {
        [shown.title release];
        [shown.toolTip release];
        [shown.icon release];
    }
    _shown->rows.clear();
}

// Every item above the separator out, every pre-made item free.
- (void)lv_startAgainWithItemCount:(NSUInteger)itemCount
{
    for (NSInteger stale = [self numberOfItems] - 2; stale > 0; stale--)
        [self removeItemAtIndex:0];
    [self lv_forgetRows];
    _shown->freeItems.clear();
    for (NSUInteger item = itemCount; item > 0; item--)
        _shown->freeItems.push_back(item - 1);
    _shown->itemCount = itemCount;
}

- (void)showRows:(const LVMenuRow *)rows count:(NSUInteger)count items:(NSArray *)items
{
    NSUInteger itemCount = [items count];
    count = std::min(count, itemCount);
    if (itemCount != _shown->itemCount || (NSUInteger)[self numberOfItems] != _shown->rows.size() + 2)
        [self lv_startAgainWithItemCount:itemCount];

    // The unchanged rows at both ends need no search.
    size_t oldCount = _shown->rows.size();
    size_t first = 0;
    while (first < oldCount && first < count && sameRow(_shown->rows[first], rows[first]))
        first++;
    size_t oldEnd = oldCount, newEnd = count;
    while (oldEnd > first && newEnd > first && sameRow(_shown->rows[oldEnd - 1], rows[newEnd - 1]))
        oldEnd--, newEnd--;
    if (first == oldEnd && first == newEnd)
        return;

    std::vector<bool> oldKept(oldCount, true), newKept(count, true);
    std::fill(oldKept.begin() + (long)first, oldKept.begin() + (long)oldEnd, false);
    std::fill(newKept.begin() + (long)first, newKept.begin() + (long)newEnd, false);
    std::vector<bool> middleOldKept(oldEnd - first, false), middleNewKept(newEnd - first, false);
    if (findShortestEdit(_shown->rows.data() + first, (int)(oldEnd - first), rows + first, (int)(newEnd - first), middleOldKept, middleNewKept)) {
        std::copy(middleOldKept.begin(), middleOldKept.end(), oldKept.begin() + (long)first);
        std::copy(middleNewKept.begin(), middleNewKept.end(), newKept.begin() + (long)first);
    }
    applyEdit(self, *_shown, rows, count, oldKept, newKept, items);
}

- (void)setItem:(NSMenuItem *)item enabled:(BOOL)enabled
{
    if ([item isEnabled] == enabled)
        return;
    NSInteger index = [self indexOfItem:item];
    if (index < 0) {
        [item setEnabled:enabled];
        return;
    }
    [item retain];
    [self removeItemAtIndex:index];
    [item setEnabled:enabled];
    [self insertItem:item atIndex:index];
    [item release];
}

@end
