#import "LVRecentSubmenu.h"
#import "LVMenuRow.h"
#import "LVShortestEdit.h"

#include <algorithm>
#include <vector>

// Pre-made items by their indexes in the family's array: plain values only.
struct LVShownItems {
    std::vector<NSUInteger> shown; // the item showing each shown row, top to bottom
    std::vector<NSUInteger> free;
    NSUInteger count = 0;
    std::vector<BOOL> oldKept, newKept; // the last edit's marks
};

@interface LVRecentSubmenu (LVRows)
- (void)lv_startAgainWithItemCount:(NSUInteger)itemCount;
- (void)lv_takeOutRowsNotKept:(const BOOL *)oldKept;
- (void)lv_putInRows:(NSArray *)rows notKept:(const BOOL *)newKept;
- (void)lv_setTitle:(NSString *)title ofItem:(NSMenuItem *)item;
@end

@implementation LVRecentSubmenu

- (id)initWithTitle:(NSString *)title itemAction:(SEL)action
{
    if (nil == (self = [super initWithTitle:title]))
        return nil;
    _itemAction = action;
    _premadeItems = [[NSMutableArray alloc] init];
    _shownRows = [[NSMutableArray alloc] init];
    _edit = [[LVShortestEdit alloc] init];
    _itemUse = new LVShownItems;
    return self;
}

- (void)dealloc
{
    delete _itemUse;
    [_edit release];
    [_shownRows release];
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

- (void)showRows:(NSArray *)rows
{
    NSUInteger itemCount = [_premadeItems count];
    if ([rows count] > itemCount)
        rows = [rows subarrayWithRange:NSMakeRange(0, itemCount)];
    if (itemCount != _itemUse->count || (NSUInteger)[self numberOfItems] != [_shownRows count] + 2)
        [self lv_startAgainWithItemCount:itemCount];

    std::vector<BOOL> &oldKept = _itemUse->oldKept, &newKept = _itemUse->newKept;
    oldKept.resize([_shownRows count]);
    newKept.resize([rows count]);
    if ([_edit markRowsKeptFrom:_shownRows to:rows oldKept:oldKept.data() newKept:newKept.data()] == 0)
        return;
    [self lv_takeOutRowsNotKept:oldKept.data()];
    [self lv_putInRows:rows notKept:newKept.data()];
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

@implementation LVRecentSubmenu (LVRows)

// Every item above the separator out, every pre-made item free.
- (void)lv_startAgainWithItemCount:(NSUInteger)itemCount
{
    for (NSInteger stale = [self numberOfItems] - 2; stale > 0; stale--)
        [self removeItemAtIndex:0];
    [_shownRows removeAllObjects];
    _itemUse->shown.clear();
    _itemUse->free.clear();
    for (NSUInteger item = itemCount; item > 0; item--)
        _itemUse->free.push_back(item - 1);
    _itemUse->count = itemCount;
}

// From the bottom up, so that each index still to be used stays right.
- (void)lv_takeOutRowsNotKept:(const BOOL *)oldKept
{
    for (NSUInteger index = [_shownRows count]; index-- > 0;) {
        if (oldKept[index])
            continue;
        [self removeItemAtIndex:(NSInteger)index];
        [_shownRows removeObjectAtIndex:index];
        _itemUse->free.push_back(_itemUse->shown[index]);
        _itemUse->shown.erase(_itemUse->shown.begin() + (long)index);
    }
}

// From the top down: each row that comes takes a free item, re-titled while out of the menu.
- (void)lv_putInRows:(NSArray *)rows notKept:(const BOOL *)newKept
{
    for (NSUInteger index = 0; index < [rows count]; index++) {
        if (newKept[index])
            continue;
        LVMenuRow *row = [rows objectAtIndex:index];
        NSUInteger itemIndex = _itemUse->free.back();
        _itemUse->free.pop_back();
        NSMenuItem *item = [_premadeItems objectAtIndex:itemIndex];
        [item setToolTip:[row toolTip]];
        [self lv_setTitle:[row title] ofItem:item];
        [item setImage:[row icon]];
        [self insertItem:item atIndex:(NSInteger)index];
        [_shownRows insertObject:row atIndex:index];
        _itemUse->shown.insert(_itemUse->shown.begin() + (long)index, itemIndex);
    }
}

// GNUstep's -setTitle: keeps the old spelling when the new title is canonically equal to it
// (an "é" written as one character or as two): such a title goes through a blank one first.
- (void)lv_setTitle:(NSString *)title ofItem:(NSMenuItem *)item
{
    NSString *old = [item title];
    if (title != nil && [old isEqualToString:title] && [old compare:title options:NSLiteralSearch] != NSOrderedSame)
        [item setTitle:@""];
    [item setTitle:title];
}

@end
