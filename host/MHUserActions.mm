#import "MHUserActions.h"
#import "MHMailStore.h"
#import "MHMailboxChooser.h"
#import "MHMailboxPaths.h"
#import "MHMailMenus.h"
#import "MHMenuText.h"
#import "MHScenarioStep.h"
#import "MHScenarioTranscript.h"
#import "MHScreenshot.h"
#import "MHViewerChanges.h"
#import "MailAccount.h"
#import "MailApp.h"
#import "MailboxUid.h"
#import "MessageViewer.h"
#import "TableViewManager.h"

@implementation MHUserActions

- (id)initWithApplication:(MailApp *)application store:(MHMailStore *)store transcript:(MHScenarioTranscript *)transcript
{
    if (nil == (self = [super init]))
        return nil;
    _application = application;
    _store = [store retain];
    _transcript = [transcript retain];
    return self;
}

- (void)dealloc
{
    [_store release];
    [_transcript release];
    [_screenshotFolder release];
    [super dealloc];
}

- (void)setScreenshotFolder:(NSString *)folder
{
    if (folder == _screenshotFolder)
        return;
    [_screenshotFolder release];
    _screenshotFolder = [folder copy];
}

- (void)setExitsOnQuit:(BOOL)exits
{
    _exitsOnQuit = exits;
}

- (BOOL)hasQuit
{
    return _hasQuit;
}

#pragma mark What the actions act on

- (MailboxUid *)existingMailboxAtPath:(NSString *)path
{
    MailboxUid *mailbox = MHActiveMailboxAtPath(path);
    if (mailbox == nil)
        [_transcript fail:[NSString stringWithFormat:@"no mailbox %@ in the active accounts", MHQuoted(path)]];
    return mailbox;
}

- (MessageViewer *)viewer
{
    MessageViewer *viewer = [_application frontmostMessageViewer];
    if (viewer == nil)
        [_transcript fail:@"no viewer window is open"];
    return viewer;
}

- (NSMenu *)rootMenuContextual:(BOOL)contextual
{
    if (!contextual)
        return [_application mainMenu];
    return [[[[_application frontmostMessageViewer] messageList] tableView] menu];
}

- (NSString *)placeOfMenuContextual:(BOOL)contextual
{
    return contextual ? @"contextual menu" : @"menu bar";
}

// The submenu titled so in the menu bar's tree or the contextual menu's; nil if none.
- (NSMenu *)menuTitled:(NSString *)title contextual:(BOOL)contextual
{
    NSMenu *root = [self rootMenuContextual:contextual];
    if (contextual && [[root title] isEqualToString:title])
        return root;
    return [[MHMailMenus itemTitled:title inMenu:root] submenu];
}

- (NSMenu *)existingMenuTitled:(NSString *)title contextual:(BOOL)contextual
{
    NSMenu *menu = [self menuTitled:title contextual:contextual];
    if (menu == nil)
        [_transcript fail:[NSString stringWithFormat:@"no submenu %@ in the %@", MHQuoted(title), [self placeOfMenuContextual:contextual]]];
    return menu;
}

#pragma mark Selecting

- (BOOL)selectMailbox:(MHScenarioStep *)step
{
    MailboxUid *mailbox = [self existingMailboxAtPath:[[step arguments] firstObject]];
    MessageViewer *viewer = mailbox != nil ? [self viewer] : nil;
    if (viewer == nil)
        return NO;
    [viewer setSelectedMailboxes:@[ mailbox ]];
    NSUInteger count = [[[viewer messageList] messagePaths] count];
    [_transcript say:[NSString stringWithFormat:@"  viewer shows %@ (%lu messages)", MHPathOfMailbox(mailbox), (unsigned long)count]];
    return YES;
}

// "all", "none" or indexes.
- (NSIndexSet *)indexesOfSelection:(NSArray *)arguments count:(NSUInteger)count
{
    NSString *first = [arguments firstObject];
    if ([first isEqualToString:@"all"])
        return [NSIndexSet indexSetWithIndexesInRange:NSMakeRange(0, count)];
    NSMutableIndexSet *indexes = [NSMutableIndexSet indexSet];
    if (![first isEqualToString:@"none"]) {
        for (NSString *index in arguments)
            [indexes addIndex:(NSUInteger)[index integerValue]];
    }
    return indexes;
}

- (BOOL)selectMessages:(MHScenarioStep *)step
{
    MessageViewer *viewer = [self viewer];
    if (viewer == nil)
        return NO;
    TableViewManager *list = [viewer messageList];
    NSUInteger count = [[list messagePaths] count];
    NSIndexSet *wanted = [self indexesOfSelection:[step arguments] count:count];
    if (![list selectMessagesAtIndexes:wanted])
        return [_transcript fail:[NSString stringWithFormat:@"the list holds %lu messages, numbered from 0", (unsigned long)count]];
    [_transcript say:[NSString stringWithFormat:@"  selected %lu of %lu messages", (unsigned long)[wanted count], (unsigned long)count]];
    return YES;
}

#pragma mark Menus

// Opening a menu asks its delegate to bring it up to date, as a click does.
- (BOOL)showMenu:(MHScenarioStep *)step
{
    NSString *title = [[step arguments] firstObject];
    NSMenu *menu = [self existingMenuTitled:title contextual:[step isContextual]];
    if (menu == nil)
        return NO;
    [menu update];
    NSArray *items = [MHMenuText itemsOfMenu:menu];
    [_transcript say:[NSString stringWithFormat:@"  %@ (%@), %lu items:", MHQuoted(title), [self placeOfMenuContextual:[step isContextual]], (unsigned long)[items count]]];
    for (NSString *line in [MHMenuText linesForItems:items])
        [_transcript say:line];
    return YES;
}

// Performed through the menu, so the action goes to the first responder like a click's.
- (BOOL)performItemAtIndex:(NSInteger)index ofMenu:(NSMenu *)menu
{
    if (index < 0 || index >= [menu numberOfItems])
        return [_transcript fail:[NSString stringWithFormat:@"the menu has %ld items, numbered from 0", (long)[menu numberOfItems]]];
    NSMenuItem *item = (NSMenuItem *)[menu itemAtIndex:index];
    if (![item isEnabled] || [item isSeparatorItem])
        return [_transcript fail:[NSString stringWithFormat:@"item %ld %@ cannot be chosen: it is disabled", (long)index, MHQuoted([item title])]];
    MHViewerChanges *changes = [[[MHViewerChanges alloc] initWithApplication:_application] autorelease];
    [_transcript say:[NSString stringWithFormat:@"  chose item %ld %@", (long)index, MHQuoted([item title])]];
    [menu performActionForItemAtIndex:index];
    NSArray *lines = [changes linesOfChanges];
    for (NSString *line in lines)
        [_transcript say:line];
    if ([lines count] == 0 && ![_transcript hasAlertsToSay])
        [_transcript say:@"  no messages moved and no other mailbox shown"];
    return YES;
}

- (BOOL)choose:(MHScenarioStep *)step
{
    NSString *title = [[step arguments] objectAtIndex:0];
    NSString *itemTitle = [[step arguments] objectAtIndex:1];
    NSMenu *menu = [self existingMenuTitled:title contextual:[step isContextual]];
    if (menu == nil)
        return NO;
    [menu update];
    NSCharacterSet *nonDigits = [[NSCharacterSet decimalDigitCharacterSet] invertedSet];
    if ([itemTitle rangeOfCharacterFromSet:nonDigits].location == NSNotFound)
        return [self performItemAtIndex:[itemTitle integerValue] ofMenu:menu];
    NSInteger index = [menu indexOfItemWithTitle:itemTitle];
    if (index < 0)
        return [_transcript fail:[NSString stringWithFormat:@"no item %@ in %@", MHQuoted(itemTitle), MHQuoted(title)]];
    return [self performItemAtIndex:index ofMenu:menu];
}

#pragma mark Transfers through Mail's Move To… and Copy To…

- (NSMenuItem *)itemWithAction:(SEL)action inMenu:(NSMenu *)menu
{
    for (NSMenuItem *item in [menu itemArray]) {
        if (sel_isEqual([item action], action))
            return item;
        NSMenuItem *found = [item hasSubmenu] ? [self itemWithAction:action inMenu:[item submenu]] : nil;
        if (found != nil)
            return found;
    }
    return nil;
}

- (BOOL)transferToMailboxAtPath:(NSString *)path deleteOriginals:(BOOL)deleteOriginals contextual:(BOOL)contextual
{
    MailboxUid *mailbox = [self existingMailboxAtPath:path];
    if (mailbox == nil)
        return NO;
    SEL action = deleteOriginals ? @selector(moveMessagesToMailbox:) : @selector(copyMessagesToMailbox:);
    NSMenuItem *item = [self itemWithAction:action inMenu:[self rootMenuContextual:contextual]];
    if (item == nil)
        return [_transcript fail:[NSString stringWithFormat:@"the %@ has no item for %@", [self placeOfMenuContextual:contextual], NSStringFromSelector(action)]];
    NSMenu *menu = [item menu];
    [menu update];
    [MHMailboxChooser answerNextChoiceWith:mailbox];
    BOOL chosen = [self performItemAtIndex:[menu indexOfItem:item] ofMenu:menu];
    // An answer the chooser never asked for must not leak into the next choice.
    [MHMailboxChooser answerNextChoiceWith:nil];
    return chosen;
}

- (BOOL)moveTo:(MHScenarioStep *)step
{
    return [self transferToMailboxAtPath:[[step arguments] firstObject] deleteOriginals:YES contextual:[step isContextual]];
}

- (BOOL)copyTo:(MHScenarioStep *)step
{
    return [self transferToMailboxAtPath:[[step arguments] firstObject] deleteOriginals:NO contextual:[step isContextual]];
}

#pragma mark Mailboxes and accounts

- (BOOL)renameMailbox:(MHScenarioStep *)step
{
    NSString *path = [[step arguments] objectAtIndex:0];
    NSString *name = [[step arguments] objectAtIndex:1];
    MailboxUid *mailbox = [self existingMailboxAtPath:path];
    if (mailbox == nil)
        return NO;
    if (![_application renameMailbox:mailbox toName:name])
        return [_transcript fail:[NSString stringWithFormat:@"Mail could not rename %@ to %@", MHQuoted(path), MHQuoted(name)]];
    [_transcript say:[NSString stringWithFormat:@"  renamed %@ to %@", MHQuoted(path), MHQuoted(MHPathOfMailbox(mailbox))]];
    return YES;
}

- (BOOL)deleteMailbox:(MHScenarioStep *)step
{
    NSString *path = [[step arguments] firstObject];
    MailboxUid *mailbox = [self existingMailboxAtPath:path];
    if (mailbox == nil)
        return NO;
    if (![_application deleteMailbox:mailbox])
        return [_transcript fail:[NSString stringWithFormat:@"Mail could not delete %@", MHQuoted(path)]];
    [_transcript say:[NSString stringWithFormat:@"  deleted %@", MHQuoted(path)]];
    return YES;
}

- (MailAccount *)activeAccountNamed:(NSString *)name
{
    for (MailAccount *account in [MailAccount activeAccounts]) {
        if ([[account displayName] isEqualToString:name])
            return account;
    }
    return nil;
}

- (BOOL)removeAccount:(MHScenarioStep *)step
{
    NSString *name = [[step arguments] firstObject];
    MailAccount *account = [self activeAccountNamed:name];
    if (account == nil)
        return [_transcript fail:[NSString stringWithFormat:@"no active account %@", MHQuoted(name)]];
    NSMutableArray *accounts = [[[MailAccount activeAccounts] mutableCopy] autorelease];
    [accounts removeObjectIdenticalTo:account];
    [_application setActiveAccounts:accounts];
    [_transcript say:[NSString stringWithFormat:@"  removed the account %@", MHQuoted(name)]];
    return YES;
}

// An account the store already holds comes back with its mailboxes; any other is made.
- (BOOL)addAccount:(MHScenarioStep *)step
{
    NSArray *arguments = [step arguments];
    NSString *name = [arguments objectAtIndex:0];
    NSString *type = [arguments count] > 1 ? [arguments objectAtIndex:1] : @"POP";
    if ([self activeAccountNamed:name] != nil)
        return [_transcript fail:[NSString stringWithFormat:@"the account %@ is already active", MHQuoted(name)]];
    NSArray *active = [MailAccount activeAccounts];
    MailAccount *account = [_store accountNamed:name];
    BOOL made = (account == nil);
    if (made)
        account = [_store addAccountNamed:name type:type serverPathPrefix:nil];
    if (account == nil)
        return [_transcript fail:[NSString stringWithFormat:@"Mail could not make the account %@", MHQuoted(name)]];
    [_application setActiveAccounts:[active arrayByAddingObject:account]];
    [_transcript say:[NSString stringWithFormat:@"  %@ the account %@", made ? @"made" : @"added", MHQuoted(name)]];
    return YES;
}

- (BOOL)listMessages:(MHScenarioStep *)step
{
    NSString *path = [[step arguments] firstObject];
    MailboxUid *mailbox = [self existingMailboxAtPath:path];
    if (mailbox == nil)
        return NO;
    NSArray *names = [[mailbox messagePaths] valueForKey:@"lastPathComponent"];
    NSString *list = [names count] > 0 ? [names componentsJoinedByString:@" "] : @"(none)";
    [_transcript say:[NSString stringWithFormat:@"  %@ holds %lu messages: %@", path, (unsigned long)[names count], list]];
    return YES;
}

- (BOOL)listAlerts:(MHScenarioStep *)step
{
    (void)step;
    [_transcript sayAllAlerts];
    return YES;
}

#pragma mark Windows, screenshots, quitting

- (BOOL)newViewer:(MHScenarioStep *)step
{
    (void)step;
    [_application newViewerWindow:nil];
    [_transcript say:[NSString stringWithFormat:@"  %lu viewer windows open", (unsigned long)[[_application messageViewers] count]]];
    return YES;
}

- (BOOL)screenshot:(MHScenarioStep *)step
{
    NSArray *arguments = [step arguments];
    NSString *title = [arguments count] > 1 ? [arguments objectAtIndex:1] : nil;
    if (_screenshotFolder == nil)
        return [_transcript fail:@"no screenshot folder was given (--screenshots DIR)"];
    NSMenu *menu = nil;
    if (title != nil && (menu = [self existingMenuTitled:title contextual:[step isContextual]]) == nil)
        return NO;
    if (menu == nil && [step isContextual])
        menu = [self rootMenuContextual:YES];
    NSString *path = [_screenshotFolder stringByAppendingPathComponent:[[arguments objectAtIndex:0] stringByAppendingPathExtension:@"png"]];
    NSString *problem = nil;
    if (![MHScreenshot saveScreenToFile:path showingMenu:menu nearView:[[[_application frontmostMessageViewer] messageList] tableView] error:&problem])
        return [_transcript fail:problem];
    [_transcript say:[NSString stringWithFormat:@"  saved %@", path]];
    return YES;
}

- (BOOL)quit:(MHScenarioStep *)step
{
    (void)step;
    _hasQuit = YES;
    [_transcript say:@"  Mail quits"];
    if (_exitsOnQuit)
        [_application terminate:nil];
    [_application announceTermination];
    return YES;
}

@end
