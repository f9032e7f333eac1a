#import "TableViewManager.h"
#import "MailboxUid.h"
#import "MHMailMenus.h"
#import "MHMessageSummary.h"

@implementation TableViewManager

- (void)addColumn:(NSString *)identifier title:(NSString *)title width:(CGFloat)width
{
    NSTableColumn *column = [[NSTableColumn alloc] initWithIdentifier:identifier];
    [[column headerCell] setStringValue:[MHMailMenus titleFor:title]];
    [column setWidth:width];
    [column setEditable:NO];
    [_tableView addTableColumn:column];
    [column release];
}

- (id)initWithFrame:(NSRect)frame
{
    if (nil == (self = [super init]))
        return nil;
    _messages = [[NSArray alloc] init];
    _scrollView = [[NSScrollView alloc] initWithFrame:frame];
    [_scrollView setHasVerticalScroller:YES];
    [_scrollView setBorderType:NSBezelBorder];
    [_scrollView setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
    _tableView = [[NSTableView alloc] initWithFrame:NSMakeRect(0, 0, frame.size.width, frame.size.height)];
    [self addColumn:@"sender" title:@"From" width:170];
    [self addColumn:@"subject" title:@"Subject" width:frame.size.width - 170 - 150 - 20];
    [self addColumn:@"date" title:@"Date Received" width:150];
    [_tableView setAllowsMultipleSelection:YES];
    [_tableView setUsesAlternatingRowBackgroundColors:YES];
    NSMenu *contextualMenu = [MHMailMenus newMessageListContextualMenu];
    [_tableView setMenu:contextualMenu];
    [contextualMenu release];
    [_tableView setDataSource:(id)self];
    [_scrollView setDocumentView:_tableView];
    return self;
}

- (void)dealloc
{
    [_tableView setDataSource:nil];
    [_scrollView release];
    [_tableView release];
    [_mailboxes release];
    [_messages release];
    [super dealloc];
}

- (NSTableView *)tableView
{
    return _tableView;
}

- (NSScrollView *)scrollView
{
    return _scrollView;
}

- (void)showMessagesOfMailboxes:(NSArray *)mailboxes
{
    if (mailboxes != _mailboxes) {
        [_mailboxes release];
        _mailboxes = [mailboxes copy];
    }
    [self reloadMessages];
}

- (void)reloadMessages
{
    NSMutableArray *messages = [NSMutableArray array];
    for (MailboxUid *mailbox in _mailboxes) {
        for (NSString *path in [mailbox messagePaths])
            [messages addObject:[MHMessageSummary summaryOfMessageAtPath:path]];
    }
    [_messages release];
    _messages = [messages copy];
    [_tableView deselectAll:nil];
    [_tableView reloadData];
}

- (NSArray *)messagePaths
{
    return [_messages valueForKey:@"path"];
}

- (NSArray *)selectedMessagePaths
{
    NSIndexSet *rows = [_tableView selectedRowIndexes];
    NSMutableArray *paths = [NSMutableArray array];
    for (NSUInteger row = [rows firstIndex]; row != NSNotFound; row = [rows indexGreaterThanIndex:row])
        [paths addObject:[[_messages objectAtIndex:row] path]];
    return paths;
}

- (BOOL)selectMessagesAtIndexes:(NSIndexSet *)indexes
{
    [_tableView deselectAll:nil];
    if ([indexes count] > 0 && [indexes lastIndex] >= [_messages count])
        return NO;
    [_tableView selectRowIndexes:indexes byExtendingSelection:NO];
    return YES;
}

- (NSInteger)numberOfRowsInTableView:(NSTableView *)tableView
{
    (void)tableView;
    return (NSInteger)[_messages count];
}

- (id)tableView:(NSTableView *)tableView objectValueForTableColumn:(NSTableColumn *)column row:(NSInteger)row
{
    (void)tableView;
    if (row < 0 || (NSUInteger)row >= [_messages count])
        return nil;
    return [[_messages objectAtIndex:(NSUInteger)row] valueForKey:[column identifier]];
}

@end
