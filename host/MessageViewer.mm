#import "MessageViewer.h"
#import "MailApp.h"
#import "MailboxesController.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "MessageTransfer.h"
#import "MHMailboxChooser.h"
#import "MHMailboxIcons.h"
#import "MHMailboxList.h"
#import "MHMailMenus.h"
#import "TableViewManager.h"

NSString *const MHMailboxWasRenamedNotification = @"MHMailboxWasRenamedNotification";

static NSString *const viewerToolbarIdentifier = @"MessageViewer";
static const CGFloat mailboxListWidth = 210;

namespace {

struct ToolbarButton {
    const char *identifier;
    const char *label;
    int iconKind;
};

const ToolbarButton toolbarButtons[] = {
    { "GetMail", "Get Mail", MHMailboxTypeInbox },
    { "Delete", "Delete", MHMailboxTypeTrash },
    { "Junk", "Junk", MHMailboxTypeJunk },
    { "Reply", "Reply", MHMailboxTypeSent },
    { "NewMessage", "New Message", MHMailboxTypeDrafts },
};

} // namespace

@implementation MessageViewer

- (void)buildWindow
{
    _window = [[NSWindow alloc] initWithContentRect:NSMakeRect(60, 60, 960, 560)
                                          styleMask:NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask | NSResizableWindowMask
                                            backing:NSBackingStoreBuffered
                                              defer:NO];
    [_window setReleasedWhenClosed:NO];
    [_window setTitle:[MHMailMenus titleFor:@"Message Viewer"]];
    NSRect content = [[_window contentView] bounds];
    _mailboxList = [[MHMailboxList alloc] initWithFrame:NSMakeRect(0, 0, mailboxListWidth, content.size.height)];
    [_mailboxList setTarget:self action:@selector(mailboxListSelectionDidChange:)];
    _tableManager = [[TableViewManager alloc] initWithFrame:NSMakeRect(mailboxListWidth, 0, content.size.width - mailboxListWidth, content.size.height)];
    [[_window contentView] addSubview:[_mailboxList scrollView]];
    [[_window contentView] addSubview:[_tableManager scrollView]];
    [_window setDelegate:(id)self];
}

// Plug-ins watch the toolbar getting its delegate, and expect the message list to exist by then.
- (void)buildToolbar
{
    _toolbar = [[NSToolbar alloc] initWithIdentifier:viewerToolbarIdentifier];
    [_toolbar setDelegate:(id)self];
    [_window setToolbar:_toolbar];
}

- (id)init
{
    if (nil == (self = [super init]))
        return nil;
    _selectedMailboxes = [[NSArray alloc] init];
    [self buildWindow];
    [self buildToolbar];
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(_mailboxWasRenamed:)
                                                 name:MHMailboxWasRenamedNotification
                                               object:nil];
    [self mailboxesDidChange];
    [self selectFirstMailbox];
    return self;
}

- (void)dealloc
{
    [[NSNotificationCenter defaultCenter] removeObserver:self];
    // The window may outlive this viewer for a moment: nothing in it may call back here.
    [_mailboxList setTarget:nil action:NULL];
    [_window setDelegate:nil];
    [_toolbar setDelegate:nil];
    [_window release];
    [_toolbar release];
    [_tableManager release];
    [_mailboxList release];
    [_selectedMailboxes release];
    [_lastTransfer release];
    [super dealloc];
}

- (NSWindow *)window
{
    return _window;
}

- (void)showWindow
{
    [_window makeKeyAndOrderFront:nil];
}

- (TableViewManager *)messageList
{
    return _tableManager;
}

// Mail opens on the first account's first mailbox, its inbox.
- (void)selectFirstMailbox
{
    MailboxUid *first = [[MHMailboxList mailboxesInDisplayOrder:[[MailAccount activeAccounts] firstObject]] firstObject];
    [self setSelectedMailboxes:first != nil ? @[ first ] : @[]];
}

- (NSArray *)selectedMailboxes
{
    return _selectedMailboxes;
}

- (void)setSelectedMailboxes:(NSArray *)mailboxes
{
    NSArray *shown = mailboxes != nil ? [[mailboxes copy] autorelease] : @[];
    [_selectedMailboxes release];
    _selectedMailboxes = [shown retain];
    [_mailboxList selectMailboxes:shown];
    [_tableManager showMessagesOfMailboxes:shown];
    [self updateTitle];
}

- (void)updateTitle
{
    MailboxUid *mailbox = [_selectedMailboxes firstObject];
    if (mailbox == nil) {
        [_window setTitle:[MHMailMenus titleFor:@"Message Viewer"]];
        return;
    }
    NSUInteger count = [[_tableManager messagePaths] count];
    [_window setTitle:[NSString stringWithFormat:@"%@ \u2014 %@ (%lu)", [mailbox displayName], [[mailbox account] displayName], (unsigned long)count]];
}

- (void)mailboxListSelectionDidChange:(MHMailboxList *)list
{
    [self setSelectedMailboxes:[list selectedMailboxes]];
}

- (void)mailboxesDidChange
{
    [_mailboxList reload];
    // Mailboxes that went away leave the selection.
    [self setSelectedMailboxes:[_mailboxList selectedMailboxes]];
}

- (void)transferSelectedMessagesToMailbox:(MailboxUid *)mailbox deleteOriginals:(BOOL)deleteOriginals
{
    NSArray *paths = [_tableManager selectedMessagePaths];
    if (mailbox == nil || [paths count] == 0)
        return;
    MessageTransfer *transfer = [[MessageTransfer alloc] initWithMessagesAtPaths:paths
                                                              destinationMailbox:mailbox
                                                                 deleteOriginals:deleteOriginals];
    [_lastTransfer release];
    _lastTransfer = transfer;
    [transfer setDelegate:self];
    [transfer perform];
}

- (MessageTransfer *)lastTransfer
{
    return _lastTransfer;
}

- (void)messageTransferDidFinish:(MessageTransfer *)transfer
{
    (void)transfer;
    [_tableManager reloadMessages];
    [self updateTitle];
}

- (void)chooseMailboxAndTransferDeletingOriginals:(BOOL)deleteOriginals prompt:(NSString *)prompt
{
    MailboxUid *mailbox = [MHMailboxChooser chooseMailboxWithPrompt:[MHMailMenus titleFor:prompt]];
    if (mailbox == nil)
        return;
    [[(MailApp *)NSApp mailboxesController] setCurrentTransferMailbox:mailbox deletedOriginals:deleteOriginals];
    [self transferSelectedMessagesToMailbox:mailbox deleteOriginals:deleteOriginals];
}

- (void)moveMessagesToMailbox:(id)sender
{
    (void)sender;
    [self chooseMailboxAndTransferDeletingOriginals:YES prompt:@"Move messages to:"];
}

- (void)copyMessagesToMailbox:(id)sender
{
    (void)sender;
    [self chooseMailboxAndTransferDeletingOriginals:NO prompt:@"Copy messages to:"];
}

- (void)showMailbox:(id)sender
{
    MailboxUid *mailbox = [sender representedObject];
    if (mailbox != nil)
        [self setSelectedMailboxes:@[ mailbox ]];
}

// Moving or copying needs a selection; everything else this viewer answers is always on.
- (BOOL)validateMenuItem:(NSMenuItem *)item
{
    SEL action = [item action];
    if (sel_isEqual(action, @selector(moveMessagesToMailbox:)) || sel_isEqual(action, @selector(copyMessagesToMailbox:)))
        return [[_tableManager selectedMessagePaths] count] > 0;
    return YES;
}

- (void)_mailboxWasRenamed:(NSNotification *)notification
{
    (void)notification;
    [_mailboxList reload];
    [self updateTitle];
}

- (void)windowDidBecomeMain:(NSNotification *)notification
{
    (void)notification;
    [(MailApp *)NSApp messageViewerDidBecomeMain:self];
}

- (void)windowWillClose:(NSNotification *)notification
{
    (void)notification;
    [(MailApp *)NSApp messageViewerDidClose:self];
}

- (NSToolbarItem *)toolbar:(NSToolbar *)toolbar itemForItemIdentifier:(NSString *)identifier willBeInsertedIntoToolbar:(BOOL)willBeInserted
{
    (void)toolbar;
    (void)willBeInserted;
    for (const ToolbarButton &button : toolbarButtons) {
        if (![identifier isEqualToString:[NSString stringWithUTF8String:button.identifier]])
            continue;
        NSToolbarItem *item = [[[NSToolbarItem alloc] initWithItemIdentifier:identifier] autorelease];
        [item setLabel:[MHMailMenus titleFor:[NSString stringWithUTF8String:button.label]]];
        NSImage *icon = [MHMailboxIcons newIconForKind:button.iconKind size:32];
        [item setImage:icon];
        [icon release];
        return item;
    }
    return nil;
}

- (NSArray *)toolbarDefaultItemIdentifiers:(NSToolbar *)toolbar
{
    (void)toolbar;
    NSMutableArray *identifiers = [NSMutableArray array];
    for (const ToolbarButton &button : toolbarButtons)
        [identifiers addObject:[NSString stringWithUTF8String:button.identifier]];
    return identifiers;
}

- (NSArray *)toolbarAllowedItemIdentifiers:(NSToolbar *)toolbar
{
    return [self toolbarDefaultItemIdentifiers:toolbar];
}

@end
