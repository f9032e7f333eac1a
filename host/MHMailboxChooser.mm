#import "MHMailboxChooser.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "MailboxesController.h"
#import "MHAlertRecorder.h"
#import "MHMailMenus.h"

static MailboxUid *scriptedAnswer;

@implementation MHMailboxChooser

+ (void)answerNextChoiceWith:(MailboxUid *)mailbox
{
    if (mailbox == scriptedAnswer)
        return;
    [scriptedAnswer release];
    scriptedAnswer = [mailbox retain];
}

+ (MailboxUid *)takeScriptedAnswer
{
    MailboxUid *answer = [scriptedAnswer autorelease];
    scriptedAnswer = nil;
    return answer;
}

+ (MailboxUid *)chooseMailboxWithPrompt:(NSString *)prompt
{
    if (scriptedAnswer != nil)
        return [self takeScriptedAnswer];
    if (MHRecordsAlerts())
        return nil;
    MHMailboxChooser *chooser = [[[self alloc] init] autorelease];
    return [chooser runWithPrompt:prompt];
}

- (void)dealloc
{
    [_popUp release];
    [_mailboxes release];
    [super dealloc];
}

- (void)fillPopUp
{
    NSMutableArray *mailboxes = [NSMutableArray array];
    for (MailAccount *account in [MailAccount activeAccounts]) {
        for (MailboxUid *mailbox in [account allMailboxUids]) {
            NSString *title = [NSString stringWithFormat:@"%@ \u2014 %@", [account displayName], [mailbox accountRelativePath]];
            [_popUp addItemWithTitle:title];
            [[_popUp lastItem] setImage:[MailboxesController iconForMailboxUid:mailbox smallSize:YES]];
            [mailboxes addObject:mailbox];
        }
    }
    _mailboxes = [mailboxes copy];
}

- (NSButton *)buttonTitled:(NSString *)title frame:(NSRect)frame action:(SEL)action
{
    NSButton *button = [[[NSButton alloc] initWithFrame:frame] autorelease];
    [button setTitle:[MHMailMenus titleFor:title]];
    [button setTarget:self];
    [button setAction:action];
    return button;
}

- (NSPanel *)newPanelWithPrompt:(NSString *)prompt
{
    NSPanel *panel = [[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, 380, 120)
                                                styleMask:NSTitledWindowMask
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO];
    [panel setTitle:prompt];
    NSTextField *label = [[[NSTextField alloc] initWithFrame:NSMakeRect(20, 80, 340, 20)] autorelease];
    [label setStringValue:prompt];
    [label setEditable:NO];
    [label setBezeled:NO];
    [label setDrawsBackground:NO];
    _popUp = [[NSPopUpButton alloc] initWithFrame:NSMakeRect(20, 50, 340, 24) pullsDown:NO];
    [self fillPopUp];
    NSView *content = [panel contentView];
    [content addSubview:label];
    [content addSubview:_popUp];
    [content addSubview:[self buttonTitled:@"Cancel" frame:NSMakeRect(180, 12, 90, 26) action:@selector(cancel:)]];
    [content addSubview:[self buttonTitled:@"OK" frame:NSMakeRect(280, 12, 80, 26) action:@selector(choose:)]];
    [panel center];
    return panel;
}

- (MailboxUid *)runWithPrompt:(NSString *)prompt
{
    NSPanel *panel = [self newPanelWithPrompt:prompt];
    NSInteger answer = [NSApp runModalForWindow:panel];
    [panel orderOut:nil];
    [panel release];
    NSInteger index = [_popUp indexOfSelectedItem];
    if (answer != NSModalResponseOK || index < 0 || (NSUInteger)index >= [_mailboxes count])
        return nil;
    return [_mailboxes objectAtIndex:(NSUInteger)index];
}

- (void)choose:(id)sender
{
    (void)sender;
    [NSApp stopModalWithCode:NSModalResponseOK];
}

- (void)cancel:(id)sender
{
    (void)sender;
    [NSApp stopModalWithCode:NSModalResponseCancel];
}

@end
