#import "MHScenario.h"
#import "MailApp.h"
#import "MHMailStore.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "MessageTransfer.h"
#import "MessageViewer.h"
#import "MHAlertRecorder.h"
#import "MHMailboxChooser.h"
#import "MHMailMenus.h"
#import "MHScenarioStep.h"
#import "MHScreenshot.h"
#import "MHTransferOperation.h"
#import "TableViewManager.h"

NSString *const MHMenuItemTitleKey = @"title";
NSString *const MHMenuItemEnabledKey = @"enabled";
NSString *const MHMenuItemToolTipKey = @"toolTip";
NSString *const MHMenuItemSeparatorKey = @"separator";

namespace {

// Which method carries out each command; each takes the parsed step.
struct StepAction {
    const char *command;
    const char *selector;
};

const StepAction stepActions[] = {
    { "select-mailbox", "runSelectMailbox:" },
    { "select-messages", "runSelectMessages:" },
    { "move-to", "runTransfer:" },
    { "copy-to", "runTransfer:" },
    { "show-menu", "runShowMenu:" },
    { "choose", "runChoose:" },
    { "rename-mailbox", "runRenameMailbox:" },
    { "delete-mailbox", "runDeleteMailbox:" },
    { "remove-account", "runRemoveAccount:" },
    { "add-account", "runAddAccount:" },
    { "list-messages", "runListMessages:" },
    { "list-alerts", "runListAlerts:" },
    { "new-viewer", "runNewViewer:" },
    { "screenshot", "runScreenshot:" },
    { "quit", "runQuit:" },
};

NSString *quoted(NSString *text)
{
    return [NSString stringWithFormat:@"\"%@\"", text];
}

} // namespace

@implementation MHScenario

- (id)initWithApplication:(MailApp *)application store:(MHMailStore *)store
{
    if (nil == (self = [super init]))
        return nil;
    _application = application;
    _store = [store retain];
    _output = [[NSMutableArray alloc] init];
    return self;
}

- (void)dealloc
{
    [_store release];
    [_screenshotFolder release];
    [_output release];
    [_lastError release];
    [super dealloc];
}

- (void)setEchoesOutput:(BOOL)echoes
{
    _echoesOutput = echoes;
}

- (void)setExitsOnQuit:(BOOL)exits
{
    _exitsOnQuit = exits;
}

- (void)setScreenshotFolder:(NSString *)folder
{
    if (folder == _screenshotFolder)
        return;
    [_screenshotFolder release];
    _screenshotFolder = [folder copy];
}

- (NSString *)lastError
{
    return _lastError;
}

- (NSArray *)output
{
    return [[_output copy] autorelease];
}

- (BOOL)hasQuit
{
    return _hasQuit;
}

#pragma mark Saying what happened

- (void)say:(NSString *)line
{
    [_output addObject:line];
    if (!_echoesOutput)
        return;
    fputs([line UTF8String], stdout);
    fputs("\n", stdout);
    fflush(stdout);
}

- (BOOL)fail:(NSString *)problem
{
    [_lastError release];
    _lastError = [problem copy];
    [self say:[@"  error: " stringByAppendingString:problem]];
    return NO;
}

- (NSString *)describeAlert:(NSDictionary *)alert
{
    NSString *buttons = [[alert objectForKey:MHAlertButtonsKey] componentsJoinedByString:@", "];
    return [NSString stringWithFormat:@"  alert %@: %@ [%@]", quoted([alert objectForKey:MHAlertTitleKey] ?: @""),
                     [alert objectForKey:MHAlertMessageKey] ?: @"", buttons];
}

// Alerts the step raised are part of what happened.
- (void)sayNewAlerts
{
    NSArray *alerts = MHRecordedAlerts();
    for (NSUInteger i = _alertsReported; i < [alerts count]; i++)
        [self say:[self describeAlert:[alerts objectAtIndex:i]]];
    _alertsReported = [alerts count];
}

#pragma mark Running steps

- (BOOL)runStep:(NSString *)line
{
    NSString *problem = nil;
    MHScenarioStep *step = [MHScenarioStep stepWithLine:line error:&problem];
    if (problem != nil) {
        [self say:[@"> " stringByAppendingString:[line stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceCharacterSet]]]];
        return [self fail:problem];
    }
    return step == nil || [self runParsedStep:step];
}

- (BOOL)runParsedStep:(MHScenarioStep *)step
{
    [self say:[@"> " stringByAppendingString:[step line]]];
    if (_hasQuit)
        return [self fail:@"Mail has quit"];
    for (const StepAction &action : stepActions) {
        if (![[step command] isEqualToString:[NSString stringWithUTF8String:action.command]])
            continue;
        SEL selector = sel_registerName(action.selector);
        BOOL done = ((BOOL(*)(id, SEL, id))[self methodForSelector:selector])(self, selector, step);
        [self sayNewAlerts];
        return done;
    }
    return [self fail:[NSString stringWithFormat:@"no action for %@", [step command]]];
}

- (BOOL)runScript:(NSString *)text
{
    NSString *problem = nil;
    NSArray *steps = [MHScenarioStep stepsInText:text error:&problem];
    if (steps == nil)
        return [self fail:problem];
    if ([MHRecordedAlerts() count] > _alertsReported)
        [self say:@"> (start-up)"];
    [self sayNewAlerts];
    for (MHScenarioStep *step in steps) {
        if (![self runParsedStep:step])
            return NO;
        if (_hasQuit)
            break;
    }
    return YES;
}

- (void)runScriptFileThenExit:(NSString *)path
{
    NSString *text = [NSString stringWithContentsOfFile:path encoding:NSUTF8StringEncoding error:NULL];
    BOOL succeeded = text != nil ? [self runScript:text] : [self fail:[NSString stringWithFormat:@"cannot read the scenario %@", path]];
    fflush(stdout);
    exit(succeeded ? 0 : 1);
}

#pragma mark Mailboxes by path

- (MailboxUid *)mailboxAtPath:(NSString *)path
{
    // Account names may hold "/": each active account is tried as the path's beginning.
    for (MailAccount *account in [MailAccount activeAccounts]) {
        NSString *prefix = [[account displayName] stringByAppendingString:@"/"];
        if (![path hasPrefix:prefix])
            continue;
        MailboxUid *mailbox = [account mailboxUidForRelativePath:[path substringFromIndex:[prefix length]]];
        if (mailbox != nil)
            return mailbox;
    }
    return nil;
}

- (NSString *)pathOfMailbox:(MailboxUid *)mailbox
{
    return [NSString stringWithFormat:@"%@/%@", [[mailbox account] displayName], [mailbox accountRelativePath]];
}

- (MailboxUid *)existingMailboxAtPath:(NSString *)path
{
    MailboxUid *mailbox = [self mailboxAtPath:path];
    if (mailbox == nil)
        [self fail:[NSString stringWithFormat:@"no mailbox %@ in the active accounts", quoted(path)]];
    return mailbox;
}

- (MessageViewer *)viewer
{
    MessageViewer *viewer = [_application frontmostMessageViewer];
    if (viewer == nil)
        [self fail:@"no viewer window is open"];
    return viewer;
}

#pragma mark Selecting

- (BOOL)selectMailboxAtPath:(NSString *)path
{
    MailboxUid *mailbox = [self existingMailboxAtPath:path];
    MessageViewer *viewer = mailbox != nil ? [self viewer] : nil;
    if (viewer == nil)
        return NO;
    [viewer setSelectedMailboxes:@[ mailbox ]];
    NSUInteger count = [[[viewer messageList] messagePaths] count];
    [self say:[NSString stringWithFormat:@"  viewer shows %@ (%lu messages)", [self pathOfMailbox:mailbox], (unsigned long)count]];
    return YES;
}

- (BOOL)selectMessagesAtIndexes:(NSIndexSet *)indexes
{
    MessageViewer *viewer = [self viewer];
    if (viewer == nil)
        return NO;
    TableViewManager *list = [viewer messageList];
    NSUInteger count = [[list messagePaths] count];
    NSIndexSet *wanted = indexes != nil ? indexes : [NSIndexSet indexSetWithIndexesInRange:NSMakeRange(0, count)];
    if (![list selectMessagesAtIndexes:wanted])
        return [self fail:[NSString stringWithFormat:@"the list holds %lu messages, numbered from 0", (unsigned long)count]];
    [self say:[NSString stringWithFormat:@"  selected %lu of %lu messages", (unsigned long)[wanted count], (unsigned long)count]];
    return YES;
}

- (BOOL)runSelectMailbox:(MHScenarioStep *)step
{
    return [self selectMailboxAtPath:[[step arguments] firstObject]];
}

- (BOOL)runSelectMessages:(MHScenarioStep *)step
{
    NSString *first = [[step arguments] firstObject];
    if ([first isEqualToString:@"all"])
        return [self selectMessagesAtIndexes:nil];
    NSMutableIndexSet *indexes = [NSMutableIndexSet indexSet];
    if (![first isEqualToString:@"none"]) {
        for (NSString *index in [step arguments])
            [indexes addIndex:(NSUInteger)[index integerValue]];
    }
    return [self selectMessagesAtIndexes:indexes];
}

#pragma mark Menus

- (NSMenu *)rootMenuContextual:(BOOL)contextual
{
    if (!contextual)
        return [_application mainMenu];
    return [[[[_application frontmostMessageViewer] messageList] tableView] menu];
}

- (NSMenu *)menuTitled:(NSString *)title contextual:(BOOL)contextual
{
    NSMenu *root = [self rootMenuContextual:contextual];
    if (contextual && [[root title] isEqualToString:title])
        return root;
    return [[MHMailMenus itemTitled:title inMenu:root] submenu];
}

- (NSString *)placeOfMenuContextual:(BOOL)contextual
{
    return contextual ? @"contextual menu" : @"menu bar";
}

- (NSMenu *)existingMenuTitled:(NSString *)title contextual:(BOOL)contextual
{
    NSMenu *menu = [self menuTitled:title contextual:contextual];
    if (menu == nil)
        [self fail:[NSString stringWithFormat:@"no submenu %@ in the %@", quoted(title), [self placeOfMenuContextual:contextual]]];
    return menu;
}

- (NSDictionary *)describeItem:(NSMenuItem *)item
{
    NSMutableDictionary *description = [NSMutableDictionary dictionary];
    [description setObject:[item title] ?: @"" forKey:MHMenuItemTitleKey];
    [description setObject:[NSNumber numberWithBool:[item isEnabled]] forKey:MHMenuItemEnabledKey];
    [description setObject:[NSNumber numberWithBool:[item isSeparatorItem]] forKey:MHMenuItemSeparatorKey];
    if ([[item toolTip] length] > 0)
        [description setObject:[item toolTip] forKey:MHMenuItemToolTipKey];
    return description;
}

// Opening a menu asks its delegate to bring it up to date, as a click does.
- (NSArray *)itemsOfMenuTitled:(NSString *)title contextual:(BOOL)contextual
{
    NSMenu *menu = [self menuTitled:title contextual:contextual];
    if (menu == nil)
        return nil;
    [menu update];
    NSMutableArray *items = [NSMutableArray array];
    for (NSMenuItem *item in [menu itemArray])
        [items addObject:[self describeItem:item]];
    return items;
}

- (NSString *)lineForItem:(NSDictionary *)item index:(NSUInteger)index
{
    if ([[item objectForKey:MHMenuItemSeparatorKey] boolValue])
        return [NSString stringWithFormat:@"    %2lu  --------", (unsigned long)index];
    NSMutableString *line = [NSMutableString stringWithFormat:@"    %2lu  %@", (unsigned long)index, [item objectForKey:MHMenuItemTitleKey]];
    if (![[item objectForKey:MHMenuItemEnabledKey] boolValue])
        [line appendString:@"  (disabled)"];
    NSString *toolTip = [item objectForKey:MHMenuItemToolTipKey];
    if (toolTip != nil)
        [line appendFormat:@"  tip: %@", toolTip];
    return line;
}

- (BOOL)runShowMenu:(MHScenarioStep *)step
{
    NSString *title = [[step arguments] firstObject];
    NSArray *items = [self itemsOfMenuTitled:title contextual:[step isContextual]];
    if (items == nil)
        return [self existingMenuTitled:title contextual:[step isContextual]] != nil;
    [self say:[NSString stringWithFormat:@"  %@ (%@), %lu items:", quoted(title), [self placeOfMenuContextual:[step isContextual]], (unsigned long)[items count]]];
    for (NSUInteger i = 0; i < [items count]; i++)
        [self say:[self lineForItem:[items objectAtIndex:i] index:i]];
    return YES;
}

#pragma mark Choosing

// What a chosen item did, seen from the viewers: a transfer made, or another mailbox shown.
- (NSDictionary *)viewerStates
{
    NSMutableDictionary *states = [NSMutableDictionary dictionary];
    for (MessageViewer *viewer in [_application messageViewers]) {
        NSValue *key = [NSValue valueWithNonretainedObject:viewer];
        [states setObject:@[ [NSValue valueWithNonretainedObject:[viewer lastTransfer]], [viewer selectedMailboxes] ] forKey:key];
    }
    return states;
}

- (void)sayTransfer:(MessageTransfer *)transfer
{
    NSArray *operations = [transfer operations];
    MHTransferOperation *last = [operations lastObject];
    NSUInteger arrived = [[operations filteredArrayUsingPredicate:[NSPredicate predicateWithFormat:@"resultPath != nil"]] count];
    [self say:[NSString stringWithFormat:@"  %@ %lu of %lu messages to %@", [last deletesOriginal] ? @"moved" : @"copied",
                        (unsigned long)arrived, (unsigned long)[operations count], [self pathOfMailbox:[last destinationMailboxUid]]]];
}

- (void)sayChangesSince:(NSDictionary *)before
{
    NSUInteger linesBefore = [_output count];
    for (MessageViewer *viewer in [_application messageViewers]) {
        NSArray *old = [before objectForKey:[NSValue valueWithNonretainedObject:viewer]];
        if (old != nil && [[old objectAtIndex:0] nonretainedObjectValue] != [viewer lastTransfer])
            [self sayTransfer:[viewer lastTransfer]];
        if (old != nil && ![[old objectAtIndex:1] isEqualToArray:[viewer selectedMailboxes]])
            [self say:[NSString stringWithFormat:@"  viewer shows %@", [[[viewer selectedMailboxes] valueForKey:@"displayName"] componentsJoinedByString:@", "]]];
    }
    if ([_output count] == linesBefore && [MHRecordedAlerts() count] == _alertsReported)
        [self say:@"  no messages moved and no other mailbox shown"];
}

// Performed through the menu, so the action goes to the first responder like a click's.
- (BOOL)performItemAtIndex:(NSInteger)index ofMenu:(NSMenu *)menu
{
    if (index < 0 || index >= [menu numberOfItems])
        return [self fail:[NSString stringWithFormat:@"the menu has %ld items, numbered from 0", (long)[menu numberOfItems]]];
    NSMenuItem *item = (NSMenuItem *)[menu itemAtIndex:index];
    if (![item isEnabled] || [item isSeparatorItem])
        return [self fail:[NSString stringWithFormat:@"item %ld %@ cannot be chosen: it is disabled", (long)index, quoted([item title])]];
    NSDictionary *before = [self viewerStates];
    [self say:[NSString stringWithFormat:@"  chose item %ld %@", (long)index, quoted([item title])]];
    [menu performActionForItemAtIndex:index];
    [self sayChangesSince:before];
    return YES;
}

- (BOOL)chooseItemAtIndex:(NSInteger)index ofMenuTitled:(NSString *)title contextual:(BOOL)contextual
{
    NSMenu *menu = [self existingMenuTitled:title contextual:contextual];
    if (menu == nil)
        return NO;
    [menu update];
    return [self performItemAtIndex:index ofMenu:menu];
}

- (BOOL)chooseItemTitled:(NSString *)itemTitle ofMenuTitled:(NSString *)title contextual:(BOOL)contextual
{
    NSMenu *menu = [self existingMenuTitled:title contextual:contextual];
    if (menu == nil)
        return NO;
    [menu update];
    NSInteger index = [menu indexOfItemWithTitle:itemTitle];
    if (index < 0)
        return [self fail:[NSString stringWithFormat:@"no item %@ in %@", quoted(itemTitle), quoted(title)]];
    return [self performItemAtIndex:index ofMenu:menu];
}

- (BOOL)runChoose:(MHScenarioStep *)step
{
    NSString *title = [[step arguments] objectAtIndex:0];
    NSString *item = [[step arguments] objectAtIndex:1];
    NSCharacterSet *nonDigits = [[NSCharacterSet decimalDigitCharacterSet] invertedSet];
    if ([item rangeOfCharacterFromSet:nonDigits].location == NSNotFound)
        return [self chooseItemAtIndex:[item integerValue] ofMenuTitled:title contextual:[step isContextual]];
    return [self chooseItemTitled:item ofMenuTitled:title contextual:[step isContextual]];
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

- (BOOL)transferSelectedMessagesToMailboxAtPath:(NSString *)path deleteOriginals:(BOOL)deleteOriginals contextual:(BOOL)contextual
{
    MailboxUid *mailbox = [self existingMailboxAtPath:path];
    if (mailbox == nil)
        return NO;
    SEL action = deleteOriginals ? @selector(moveMessagesToMailbox:) : @selector(copyMessagesToMailbox:);
    NSMenuItem *item = [self itemWithAction:action inMenu:[self rootMenuContextual:contextual]];
    if (item == nil)
        return [self fail:[NSString stringWithFormat:@"the %@ has no item for %@", [self placeOfMenuContextual:contextual], NSStringFromSelector(action)]];
    NSMenu *menu = [item menu];
    [menu update];
    [MHMailboxChooser answerNextChoiceWith:mailbox];
    BOOL chosen = [self performItemAtIndex:[menu indexOfItem:item] ofMenu:menu];
    // An answer the chooser never asked for must not leak into the next choice.
    [MHMailboxChooser answerNextChoiceWith:nil];
    return chosen;
}

- (BOOL)runTransfer:(MHScenarioStep *)step
{
    BOOL move = [[step command] isEqualToString:@"move-to"];
    return [self transferSelectedMessagesToMailboxAtPath:[[step arguments] firstObject] deleteOriginals:move contextual:[step isContextual]];
}

#pragma mark Mailboxes and accounts

- (BOOL)renameMailboxAtPath:(NSString *)path toName:(NSString *)name
{
    MailboxUid *mailbox = [self existingMailboxAtPath:path];
    if (mailbox == nil)
        return NO;
    if (![_application renameMailbox:mailbox toName:name])
        return [self fail:[NSString stringWithFormat:@"Mail could not rename %@ to %@", quoted(path), quoted(name)]];
    [self say:[NSString stringWithFormat:@"  renamed %@ to %@", quoted(path), quoted([self pathOfMailbox:mailbox])]];
    return YES;
}

- (BOOL)deleteMailboxAtPath:(NSString *)path
{
    MailboxUid *mailbox = [self existingMailboxAtPath:path];
    if (mailbox == nil)
        return NO;
    if (![_application deleteMailbox:mailbox])
        return [self fail:[NSString stringWithFormat:@"Mail could not delete %@", quoted(path)]];
    [self say:[NSString stringWithFormat:@"  deleted %@", quoted(path)]];
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

- (BOOL)removeAccountNamed:(NSString *)name
{
    MailAccount *account = [self activeAccountNamed:name];
    if (account == nil)
        return [self fail:[NSString stringWithFormat:@"no active account %@", quoted(name)]];
    NSMutableArray *accounts = [[[MailAccount activeAccounts] mutableCopy] autorelease];
    [accounts removeObjectIdenticalTo:account];
    [_application setActiveAccounts:accounts];
    [self say:[NSString stringWithFormat:@"  removed the account %@", quoted(name)]];
    return YES;
}

// An account the store already holds comes back with its mailboxes; any other is made.
- (BOOL)addAccountNamed:(NSString *)name type:(NSString *)type
{
    if ([self activeAccountNamed:name] != nil)
        return [self fail:[NSString stringWithFormat:@"the account %@ is already active", quoted(name)]];
    NSArray *active = [MailAccount activeAccounts];
    MailAccount *account = [_store accountNamed:name];
    BOOL made = (account == nil);
    if (made)
        account = [_store addAccountNamed:name type:type != nil ? type : @"POP" serverPathPrefix:nil];
    if (account == nil)
        return [self fail:[NSString stringWithFormat:@"Mail could not make the account %@", quoted(name)]];
    [_application setActiveAccounts:[active arrayByAddingObject:account]];
    [self say:[NSString stringWithFormat:@"  %@ the account %@", made ? @"made" : @"added", quoted(name)]];
    return YES;
}

- (NSArray *)messageFileNamesInMailboxAtPath:(NSString *)path
{
    return [[[self mailboxAtPath:path] messagePaths] valueForKey:@"lastPathComponent"];
}

- (BOOL)runRenameMailbox:(MHScenarioStep *)step
{
    return [self renameMailboxAtPath:[[step arguments] objectAtIndex:0] toName:[[step arguments] objectAtIndex:1]];
}

- (BOOL)runDeleteMailbox:(MHScenarioStep *)step
{
    return [self deleteMailboxAtPath:[[step arguments] firstObject]];
}

- (BOOL)runRemoveAccount:(MHScenarioStep *)step
{
    return [self removeAccountNamed:[[step arguments] firstObject]];
}

- (BOOL)runAddAccount:(MHScenarioStep *)step
{
    NSArray *arguments = [step arguments];
    return [self addAccountNamed:[arguments objectAtIndex:0] type:[arguments count] > 1 ? [arguments objectAtIndex:1] : nil];
}

- (BOOL)runListMessages:(MHScenarioStep *)step
{
    NSString *path = [[step arguments] firstObject];
    if ([self existingMailboxAtPath:path] == nil)
        return NO;
    NSArray *names = [self messageFileNamesInMailboxAtPath:path];
    NSString *list = [names count] > 0 ? [names componentsJoinedByString:@" "] : @"(none)";
    [self say:[NSString stringWithFormat:@"  %@ holds %lu messages: %@", path, (unsigned long)[names count], list]];
    return YES;
}

- (BOOL)runListAlerts:(MHScenarioStep *)step
{
    (void)step;
    NSArray *alerts = MHRecordedAlerts();
    [self say:[NSString stringWithFormat:@"  %lu alerts so far", (unsigned long)[alerts count]]];
    for (NSDictionary *alert in alerts)
        [self say:[self describeAlert:alert]];
    _alertsReported = [alerts count];
    return YES;
}

#pragma mark Windows, screenshots, quitting

- (BOOL)openNewViewer
{
    [_application newViewerWindow:nil];
    [self say:[NSString stringWithFormat:@"  %lu viewer windows open", (unsigned long)[[_application messageViewers] count]]];
    return YES;
}

- (BOOL)runNewViewer:(MHScenarioStep *)step
{
    (void)step;
    return [self openNewViewer];
}

- (BOOL)saveScreenshotNamed:(NSString *)name showingMenuTitled:(NSString *)title contextual:(BOOL)contextual
{
    if (_screenshotFolder == nil)
        return [self fail:@"no screenshot folder was given (--screenshots DIR)"];
    NSMenu *menu = nil;
    if (title != nil && (menu = [self existingMenuTitled:title contextual:contextual]) == nil)
        return NO;
    if (menu == nil && contextual)
        menu = [self rootMenuContextual:YES];
    NSString *path = [_screenshotFolder stringByAppendingPathComponent:[name stringByAppendingPathExtension:@"png"]];
    NSString *problem = nil;
    if (![MHScreenshot saveScreenToFile:path showingMenu:menu nearView:[[[_application frontmostMessageViewer] messageList] tableView] error:&problem])
        return [self fail:problem];
    [self say:[NSString stringWithFormat:@"  saved %@", path]];
    return YES;
}

- (BOOL)runScreenshot:(MHScenarioStep *)step
{
    NSArray *arguments = [step arguments];
    NSString *title = [arguments count] > 1 ? [arguments objectAtIndex:1] : nil;
    return [self saveScreenshotNamed:[arguments objectAtIndex:0] showingMenuTitled:title contextual:[step isContextual]];
}

- (BOOL)quit
{
    _hasQuit = YES;
    [self say:@"  Mail quits"];
    if (_exitsOnQuit)
        [_application terminate:nil];
    [_application announceTermination];
    return YES;
}

- (BOOL)runQuit:(MHScenarioStep *)step
{
    (void)step;
    return [self quit];
}

@end
