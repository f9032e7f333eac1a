#import "MHMailboxList.h"
#import "MailboxesController.h"
#import "MailAccount.h"
#import "MailboxUid.h"

#include <iterator>

namespace {

// Mail's special mailboxes head each account in this order; every other mailbox follows.
const int specialOrder[] = { MHMailboxTypeInbox, MHMailboxTypeDrafts, MHMailboxTypeSent, MHMailboxTypeJunk, MHMailboxTypeTrash };
const int otherMailboxesRank = (int)std::size(specialOrder);

} // namespace

@implementation MHMailboxList

+ (int)rankOfTopLevelMailbox:(MailboxUid *)mailbox
{
    for (int rank = 0; rank < otherMailboxesRank; rank++) {
        if ([mailbox type] == specialOrder[rank])
            return rank;
    }
    return otherMailboxesRank;
}

+ (void)appendMailbox:(MailboxUid *)mailbox withChildrenFrom:(NSArray *)all to:(NSMutableArray *)ordered
{
    [ordered addObject:mailbox];
    for (MailboxUid *candidate in all) {
        if ([candidate parent] == mailbox)
            [self appendMailbox:candidate withChildrenFrom:all to:ordered];
    }
}

+ (NSArray *)mailboxesInDisplayOrder:(MailAccount *)account
{
    NSArray *all = [account allMailboxUids];
    NSMutableArray *ordered = [NSMutableArray arrayWithCapacity:[all count]];
    for (int rank = 0; rank <= otherMailboxesRank; rank++) {
        for (MailboxUid *mailbox in all) {
            if ([mailbox parent] == nil && [self rankOfTopLevelMailbox:mailbox] == rank)
                [self appendMailbox:mailbox withChildrenFrom:all to:ordered];
        }
    }
    return ordered;
}

- (void)addColumn:(NSString *)identifier width:(CGFloat)width cell:(NSCell *)cell
{
    NSTableColumn *column = [[NSTableColumn alloc] initWithIdentifier:identifier];
    [column setWidth:width];
    [column setEditable:NO];
    if (cell != nil)
        [column setDataCell:cell];
    [_tableView addTableColumn:column];
    [column release];
}

- (id)initWithFrame:(NSRect)frame
{
    if (nil == (self = [super init]))
        return nil;
    _rows = [[NSArray alloc] init];
    _scrollView = [[NSScrollView alloc] initWithFrame:frame];
    [_scrollView setHasVerticalScroller:YES];
    [_scrollView setBorderType:NSBezelBorder];
    [_scrollView setAutoresizingMask:NSViewHeightSizable];
    _tableView = [[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, frame.size.width, frame.size.height)];
    NSImageCell *iconCell = [[NSImageCell alloc] init];
    [self addColumn:@"icon" width:20 cell:iconCell];
    [iconCell release];
    [self addColumn:@"name" width:frame.size.width - 26 cell:nil];
    [_tableView setHeaderView:nil];
    [_tableView setAllowsMultipleSelection:YES];
    [_tableView setBackgroundColor:[NSColor colorWithCalibratedRed:0.87 green:0.89 blue:0.93 alpha:1.0]];
    [_tableView setDataSource:(id)self];
    [_tableView setDelegate:(id)self];
    [_scrollView setDocumentView:_tableView];
    return self;
}

- (void)dealloc
{
    [[NSNotificationCenter defaultCenter] removeObserver:self];
    [_tableView setDataSource:nil];
    [_tableView setDelegate:nil];
    [_scrollView release];
    [_tableView release];
    [_rows release];
    [super dealloc];
}

- (NSScrollView *)scrollView
{
    return _scrollView;
}

- (NSTableView *)tableView
{
    return _tableView;
}

- (void)setTarget:(id)target action:(SEL)action
{
    _target = target;
    _action = action;
}

- (void)reload
{
    NSArray *selected = [self selectedMailboxes];
    NSMutableArray *rows = [NSMutableArray array];
    for (MailAccount *account in [MailAccount activeAccounts]) {
        [rows addObject:account];
        [rows addObjectsFromArray:[[self class] mailboxesInDisplayOrder:account]];
    }
    [_rows release];
    _rows = [rows copy];
    [_tableView reloadData];
    [self selectMailboxes:selected];
}

- (NSArray *)selectedMailboxes
{
    NSIndexSet *indexes = [_tableView selectedRowIndexes];
    NSMutableArray *mailboxes = [NSMutableArray array];
    for (NSUInteger row = [indexes firstIndex]; row != NSNotFound; row = [indexes indexGreaterThanIndex:row]) {
        id item = row < [_rows count] ? [_rows objectAtIndex:row] : nil;
        if ([item isKindOfClass:[MailboxUid class]])
            [mailboxes addObject:item];
    }
    return mailboxes;
}

- (void)selectMailboxes:(NSArray *)mailboxes
{
    NSMutableIndexSet *indexes = [NSMutableIndexSet indexSet];
    for (MailboxUid *mailbox in mailboxes) {
        NSUInteger row = [_rows indexOfObjectIdenticalTo:mailbox];
        if (row != NSNotFound)
            [indexes addIndex:row];
    }
    _selectingProgrammatically = YES;
    [_tableView selectRowIndexes:indexes byExtendingSelection:NO];
    if ([indexes count] == 0)
        [_tableView deselectAll:nil];
    _selectingProgrammatically = NO;
}

- (NSInteger)numberOfRowsInTableView:(NSTableView *)tableView
{
    (void)tableView;
    return (NSInteger)[_rows count];
}

// Mailboxes are indented by depth under their account's name. The depth is counted in
// parents: a name is text, not path syntax, and may even be empty.
- (NSString *)nameOfRowItem:(id)item
{
    if (![item isKindOfClass:[MailboxUid class]])
        return [[item displayName] uppercaseString];
    NSUInteger depth = 0;
    for (MailboxUid *above = [(MailboxUid *)item parent]; above != nil; above = [above parent])
        depth++;
    NSString *indent = [@"" stringByPaddingToLength:3 * depth withString:@" " startingAtIndex:0];
    return [indent stringByAppendingString:[item displayName]];
}

- (id)tableView:(NSTableView *)tableView objectValueForTableColumn:(NSTableColumn *)column row:(NSInteger)row
{
    (void)tableView;
    if (row < 0 || (NSUInteger)row >= [_rows count])
        return nil;
    id item = [_rows objectAtIndex:(NSUInteger)row];
    if (![[column identifier] isEqualToString:@"icon"])
        return [self nameOfRowItem:item];
    return [item isKindOfClass:[MailboxUid class]] ? [MailboxesController iconForMailboxUid:item smallSize:YES] : nil;
}

// Account names are headings, not mailboxes: they cannot be selected.
- (BOOL)tableView:(NSTableView *)tableView shouldSelectRow:(NSInteger)row
{
    (void)tableView;
    return row >= 0 && (NSUInteger)row < [_rows count] && [[_rows objectAtIndex:(NSUInteger)row] isKindOfClass:[MailboxUid class]];
}

- (void)tableViewSelectionDidChange:(NSNotification *)notification
{
    (void)notification;
    if (_selectingProgrammatically || _target == nil)
        return;
    [_target performSelector:_action withObject:self];
}

@end
