#import "LVRecentSubmenu.h"
#import "LVShortestEdit.h"

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
    std::vector<BOOL> oldKept, newKept; // the last edit's marks, kept so that an opening allocates none
};

namespace {

using Shown = LVShownRows::Row;

bool sameText(NSString *a, NSString *b)
{
    return a == b || [a isEqualToString:b];
}

bool sameRow(const Shown &shown, const LVMenuRow &row)
{
    return shown.record == row.record && shown.icon == row.icon && sameText(shown.title, row.title)
        && sameText(shown.toolTip, row.toolTip);
}

struct Rows {
    const Shown *old;
    const LVMenuRow *now;
};

BOOL rowsMatch(const void *context, NSUInteger oldIndex, NSUInteger newIndex)
{
    const Rows *rows = (const Rows *)context;
    return sameRow(rows->old[oldIndex], rows->now[newIndex]);
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
void applyEdit(NSMenu *menu, LVShownRows &shown, const LVMenuRow *rows, NSUInteger count, const BOOL *oldKept,
    const BOOL *newKept, NSArray *items)
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

- (id)initWithTitle:(NSString *)title itemAction:(SEL)action
{
    if (nil == (self = [super initWithTitle:title]))
        return nil;
    _itemAction = action;
    _premadeItems = [[NSMutableArray alloc] init];
    _shown = new LVShownRows;
    return self;
}

- (void)dealloc
{
    [self lv_forgetRows];
    delete _shown;
    [_premadeItems release];
    [super dealloc];
}

- (NSMutableArray *)premadeItems
{
    return _premadeItems;
}

- (void)makePremadeItems:(int)count
{
    if (count <= 0)
        return;
    NSMenuItem *pattern = [[NSMenuItem alloc] initWithTitle:@"" action:_itemAction keyEquivalent:@""];
    [_premadeItems addObject:pattern];
    [pattern release];
    for (int i = 1; i < count; i++) {
        NSMenuItem *item = [pattern copy];
        [_premadeItems addObject:item];
        [item release];
    }
}

- (void)addSeparator
{
    [self addItem:[NSMenuItem separatorItem]];
}

- (NSMenuItem *)addClearItemTitled:(NSString *)title
{
    _clearItem = (NSMenuItem *)[self addItemWithTitle:title action:@selector(clearRecentMenus:) keyEquivalent:@""];
    [_clearItem setEnabled:NO];
    return _clearItem;
}

- (NSMenuItem *)clearItem
{
    return _clearItem;
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

- (void)showRows:(const LVMenuRow *)rows count:(NSUInteger)count
{
    NSUInteger itemCount = [_premadeItems count];
    count = std::min(count, itemCount);
    if (itemCount != _shown->itemCount || (NSUInteger)[self numberOfItems] != _shown->rows.size() + 2)
        [self lv_startAgainWithItemCount:itemCount];

    size_t oldCount = _shown->rows.size();
    std::vector<BOOL> &oldKept = _shown->oldKept, &newKept = _shown->newKept;
    oldKept.resize(oldCount);
    newKept.resize(count);
    Rows both = { _shown->rows.data(), rows };
    if ([LVShortestEdit markRowsKeptFrom:oldCount to:count match:rowsMatch context:&both oldKept:oldKept.data() newKept:newKept.data()] == 0)
        return;
    applyEdit(self, *_shown, rows, count, oldKept.data(), newKept.data(), _premadeItems);
}

- (void)setClearItemEnabled:(BOOL)enabled
{
    if (_clearItem == nil || [_clearItem isEnabled] == enabled)
        return;
    NSInteger index = [self indexOfItem:_clearItem];
    if (index < 0) {
        [_clearItem setEnabled:enabled];
        return;
    }
    [_clearItem retain];
    [self removeItemAtIndex:index];
    [_clearItem setEnabled:enabled];
    [self insertItem:_clearItem atIndex:index];
    [_clearItem release];
}

@end
