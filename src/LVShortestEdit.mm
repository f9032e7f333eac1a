#import "LVShortestEdit.h"

#include <algorithm>
#include <vector>

namespace {

const int LVLongestSearchedEdit = 64;

bool sameRow(id a, id b)
{
    return a == b || [a isEqual:b];
}

// The rows between the unchanged ends of the two lists, viewed only while one edit is marked.
struct Middle {
    const id *old;
    const id *now;
    bool same(int x, int y) const { return sameRow(old[x], now[y]); }
};

// Myers' greedy search, which costs in proportion to the rows that change: marks the rows on
// the diagonals of the shortest path as kept; false when that path is longer than the search
// goes or leaves the lists.
bool markMiddle(const Middle &middle, int oldCount, int newCount, std::vector<bool> &oldKept, std::vector<bool> &newKept)
{
    int longest = std::min(oldCount + newCount, LVLongestSearchedEdit);
    std::vector<int> furthest(2 * (size_t)longest + 3, 0);
    auto reach = [&](int diagonal) -> int & { return furthest[(size_t)(diagonal + longest + 1)]; };
    // trace[d][k + d]: how far diagonal k reached after d rows went or came.
    std::vector<std::vector<int>> trace;
    for (int edits = 0; edits <= longest; edits++) {
        for (int diagonal = -edits; diagonal <= edits; diagonal += 2) {
            bool fromAbove = diagonal == -edits || (diagonal != edits && reach(diagonal - 1) < reach(diagonal + 1));
            int x = fromAbove ? reach(diagonal + 1) : reach(diagonal - 1) + 1;
            int y = x - diagonal;
            while (x < oldCount && y < newCount && middle.same(x, y))
                x++, y++;
            reach(diagonal) = x;
            if (x < oldCount || y < newCount)
                continue;
            // Found, unless the path left the lists: walk back, marking the rows on diagonals as kept.
            if (x != oldCount || y != newCount)
                return false;
            for (int d = edits; d > 0; d--) {
                const std::vector<int> &before = trace[(size_t)d - 1];
                auto reached = [&](int k) { return before[(size_t)(k + d - 1)]; };
                int k = x - y;
                bool down = k == -d || (k != d && reached(k - 1) < reached(k + 1));
                int previousK = down ? k + 1 : k - 1;
                int previousX = reached(previousK);
                for (int middleX = down ? previousX : previousX + 1; x > middleX; x--, y--) {
                    if (x > oldCount || y > newCount || y < 1)
                        return false;
                    oldKept[(size_t)x - 1] = newKept[(size_t)y - 1] = true;
                }
                x = previousX;
                y = previousX - previousK;
            }
            for (; x > 0 && y > 0; x--, y--)
                oldKept[(size_t)x - 1] = newKept[(size_t)y - 1] = true;
            return true;
        }
        trace.emplace_back(&reach(-edits), &reach(edits) + 1);
    }
    return false;
}

} // namespace

@implementation LVShortestEdit

+ (NSUInteger)longestSearchedEdit
{
    return LVLongestSearchedEdit;
}

- (NSUInteger)markRowsKeptFrom:(NSArray *)oldRows to:(NSArray *)newRows oldKept:(BOOL *)oldKept newKept:(BOOL *)newKept
{
    NSUInteger oldCount = [oldRows count], newCount = [newRows count];
    // The rows of both lists, viewed for the length of this edit.
    std::vector<id> rows(oldCount + newCount);
    [oldRows getObjects:rows.data() range:NSMakeRange(0, oldCount)];
    [newRows getObjects:rows.data() + oldCount range:NSMakeRange(0, newCount)];
    const id *old = rows.data(), *now = rows.data() + oldCount;
    // The unchanged rows at both ends need no search.
    NSUInteger first = 0;
    while (first < oldCount && first < newCount && sameRow(old[first], now[first]))
        first++;
    NSUInteger oldEnd = oldCount, newEnd = newCount;
    while (oldEnd > first && newEnd > first && sameRow(old[oldEnd - 1], now[newEnd - 1]))
        oldEnd--, newEnd--;
    std::fill(oldKept, oldKept + oldCount, YES);
    std::fill(newKept, newKept + newCount, YES);
    std::fill(oldKept + first, oldKept + oldEnd, NO);
    std::fill(newKept + first, newKept + newEnd, NO);
    if (first == oldEnd && first == newEnd)
        return 0;
    Middle middle = { old + first, now + first };
    std::vector<bool> middleOldKept(oldEnd - first, false), middleNewKept(newEnd - first, false);
    if (!markMiddle(middle, (int)(oldEnd - first), (int)(newEnd - first), middleOldKept, middleNewKept))
        return (oldEnd - first) + (newEnd - first);
    std::copy(middleOldKept.begin(), middleOldKept.end(), oldKept + first);
    std::copy(middleNewKept.begin(), middleNewKept.end(), newKept + first);
    return (NSUInteger)(std::count(middleOldKept.begin(), middleOldKept.end(), false) + std::count(middleNewKept.begin(), middleNewKept.end(), false));
}

@end
