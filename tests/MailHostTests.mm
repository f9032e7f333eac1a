#import "LVTestSupport.h"
#import "MailApp.h"
#import "MailboxesController.h"
#import "MHMailStore.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "MessageTransfer.h"
#import "MessageViewer.h"
#import "MHAlertRecorder.h"
#import "MHLaunchOptions.h"
#import "MHMailboxChooser.h"
#import "MHMailboxList.h"
#import "MHMailMenus.h"
#import "MHScenario.h"
#import "MHScenarioStep.h"
#import "MHTransferOperation.h"
#import "MHBundleLoader.h"
#import "TableViewManager.h"

#include <dlfcn.h>
#include <objc/runtime.h>

namespace {

NSString *utf8(const char *text)
{
    return [NSString stringWithUTF8String:text];
}

NSArray *titlesOfMenu(NSMenu *menu)
{
    return [[menu itemArray] valueForKey:@"title"];
}

// Two accounts that share mailbox names, with a few messages in the work inbox.
class MailHostTest : public testing::Test {
protected:
    MailApp *app = nil;
    MHMailStore *store = nil;

    void SetUp() override
    {
        MHSetRecordsAlerts(YES);
        app = [MailApp sharedMailApp];
        ASSERT_TRUE(app != nil);
        store = [MHMailStore storeAtPath:LVMakeTemporaryFolder(@"store")];
        ASSERT_TRUE(store != nil);
        MailAccount *work = [store addAccountNamed:@"Work" type:@"IMAP" serverPathPrefix:@""];
        MailAccount *home = [store addAccountNamed:@"Home" type:@"POP" serverPathPrefix:nil];
        for (NSString *path in @[ @"Inbox", @"Sent", @"Archive", @"Projects/Old" ])
            [work createMailboxWithRelativePath:path];
        for (NSString *path in @[ @"Inbox", @"Archive" ])
            [home createMailboxWithRelativePath:path];
        for (NSString *subject in @[ @"Budget", @"Lunch", @"Release" ])
            [store addMessageTo:mailbox(@"Work/Inbox") from:@"ann@example.com" subject:subject date:nil];
        [store retain];
    }

    void TearDown() override
    {
        [store release];
    }

    MailboxUid *mailbox(NSString *path)
    {
        return [store mailboxAtPath:path];
    }

    NSArray *messageNames(NSString *path)
    {
        return [[mailbox(path) messagePaths] valueForKey:@"lastPathComponent"];
    }
};

} // namespace

TEST(MailHostMenus, MainMenuHasMailsMenusWithPlainMoveAndCopyItemsAndAGoToSubmenu)
{
    MailApp *app = [MailApp sharedMailApp];
    ASSERT_TRUE(app != nil);
    EXPECT_TRUE(NSApp == app);
    NSMenu *mainMenu = [app mainMenu];
    NSArray *expected = @[ @"Mail", @"File", @"Edit", @"View", @"Mailbox", @"Message", @"Window", @"Help" ];
    EXPECT_NSEQ(expected, titlesOfMenu(mainMenu));
    for (NSMenuItem *item in [mainMenu itemArray])
        EXPECT_TRUE([item hasSubmenu]) << [[item title] UTF8String];

    NSMenu *messageMenu = [[mainMenu itemWithTitle:@"Message"] submenu];
    NSMenu *contextual = [[MHMailMenus newMessageListContextualMenu] autorelease];
    struct Row {
        NSMenu *menu;
        const char *title;
        SEL action;
    } rows[] = {
        { messageMenu, "Move To\u2026", @selector(moveMessagesToMailbox:) },
        { messageMenu, "Copy To\u2026", @selector(copyMessagesToMailbox:) },
        { contextual, "Move To\u2026", @selector(moveMessagesToMailbox:) },
    };
    for (const Row &row : rows) {
        id<NSMenuItem> item = [row.menu itemWithTitle:utf8(row.title)];
        ASSERT_TRUE(item != nil) << row.title;
        EXPECT_TRUE(sel_isEqual([item action], row.action)) << row.title;
        EXPECT_FALSE([item hasSubmenu]) << row.title;
    }
    id<NSMenuItem> moveTo = [messageMenu itemWithTitle:utf8("Move To\u2026")];
    EXPECT_TRUE([moveTo target] == nil);
    EXPECT_EQ([messageMenu indexOfItem:moveTo] + 1, [messageMenu indexOfItem:[messageMenu itemWithTitle:utf8("Copy To\u2026")]]);
    EXPECT_TRUE([MHMailMenus itemTitled:utf8("Move To\u2026") inMenu:mainMenu] == moveTo);

    id<NSMenuItem> goTo = [[[mainMenu itemWithTitle:@"Mailbox"] submenu] itemWithTitle:@"Go To"];
    ASSERT_TRUE(goTo != nil);
    EXPECT_TRUE([MHMailMenus goToMenuInMainMenu:mainMenu] == [goTo submenu]);
    EXPECT_TRUE([MHMailMenus itemTitled:@"Go To" inMenu:mainMenu] == goTo);
}

TEST(MailHostAlerts, RecordedNSAlertReturnsAtOnceWithItsTextsStyleButtonsAndIcon)
{
    [MailApp sharedMailApp];
    MHSetRecordsAlerts(YES);
    MHClearRecordedAlerts();
    NSAlert *plain = [NSAlert alertWithMessageText:@"Lorvane Plugin Notification" defaultButton:nil alternateButton:nil otherButton:nil
                         informativeTextWithFormat:@"Number %d", 7];
    [plain setAlertStyle:NSCriticalAlertStyle];
    [plain setIcon:[MailboxesController iconForMailboxUid:nil smallSize:NO]];
    [plain runModal];
    NSAlert *bare = [[[NSAlert alloc] init] autorelease];
    [bare addButtonWithTitle:@"Keep"];
    [bare addButtonWithTitle:@"Discard"];
    EXPECT_EQ(NSAlertFirstButtonReturn, [bare runModal]);

    NSArray *alerts = MHRecordedAlerts();
    ASSERT_EQ(2u, [alerts count]);
    NSDictionary *first = [alerts objectAtIndex:0];
    EXPECT_NSEQ(MHAlertKindNSAlert, [first objectForKey:MHAlertKindKey]);
    EXPECT_NSEQ(@"Lorvane Plugin Notification", [first objectForKey:MHAlertTitleKey]);
    EXPECT_NSEQ(@"Number 7", [first objectForKey:MHAlertMessageKey]);
    EXPECT_EQ(2, [[first objectForKey:MHAlertStyleKey] intValue]);
    EXPECT_NSEQ(@[ @"OK" ], [first objectForKey:MHAlertButtonsKey]);
    EXPECT_TRUE([[first objectForKey:MHAlertHasIconKey] boolValue]);
    NSDictionary *second = [alerts objectAtIndex:1];
    EXPECT_NSEQ((@[ @"Keep", @"Discard" ]), [second objectForKey:MHAlertButtonsKey]);
    EXPECT_FALSE([[second objectForKey:MHAlertHasIconKey] boolValue]);
    MHClearRecordedAlerts();
    EXPECT_EQ(0u, [MHRecordedAlerts() count]);
}

TEST(MailHostAlerts, RecordedCriticalPanelReturnsDefaultWithFormattedMessage)
{
    MHSetRecordsAlerts(YES);
    MHClearRecordedAlerts();
    EXPECT_EQ(NSAlertDefaultReturn, NSRunCriticalAlertPanel(@"Lorvane Mail Plugin", @"Index %d of \"%@\"", @"OK", nil, nil, 3, @"Inbox"));
    NSArray *alerts = MHRecordedAlerts();
    ASSERT_EQ(1u, [alerts count]);
    NSDictionary *alert = [alerts objectAtIndex:0];
    EXPECT_NSEQ(MHAlertKindCriticalPanel, [alert objectForKey:MHAlertKindKey]);
    EXPECT_NSEQ(@"Lorvane Mail Plugin", [alert objectForKey:MHAlertTitleKey]);
    EXPECT_NSEQ(@"Index 3 of \"Inbox\"", [alert objectForKey:MHAlertMessageKey]);
    EXPECT_NSEQ(@[ @"OK" ], [alert objectForKey:MHAlertButtonsKey]);
    EXPECT_EQ(NSCriticalAlertStyle, [[alert objectForKey:MHAlertStyleKey] intValue]);
}

// A plug-in loaded later looks the function up in the process's global scope: the first
// library there that defines it must be the host's, not AppKit's.
TEST(MailHostAlerts, CriticalPanelSymbolResolvesToTheHostBeforeAppKit)
{
    Dl_info hostInfo, appKitInfo;
    ASSERT_NE(0, dladdr((void *)MHSetRecordsAlerts, &hostInfo));
    ASSERT_NE(0, dladdr((void *)[NSMenu instanceMethodForSelector:@selector(update)], &appKitInfo));
    void *hostLibrary = dlopen(hostInfo.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    void *appKitLibrary = dlopen(appKitInfo.dli_fname, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_TRUE(hostLibrary != NULL && appKitLibrary != NULL);
    void *hostPanel = dlsym(hostLibrary, "NSRunCriticalAlertPanel");
    void *appKitPanel = dlsym(appKitLibrary, "NSRunCriticalAlertPanel");
    EXPECT_TRUE(hostPanel != NULL && appKitPanel != NULL);
    EXPECT_NE(hostPanel, appKitPanel);
    EXPECT_EQ(hostPanel, dlsym(RTLD_DEFAULT, "NSRunCriticalAlertPanel"));
    dlclose(hostLibrary);
    dlclose(appKitLibrary);
}

TEST_F(MailHostTest, TransferThroughViewerMovesOrCopiesTheSelectionAndHandsTheViewerATransfer)
{
    MessageViewer *viewer = [app openMessageViewer];
    [viewer transferSelectedMessagesToMailbox:mailbox(@"Home/Archive") deleteOriginals:NO];
    EXPECT_TRUE([viewer lastTransfer] == nil) << "nothing selected, nothing transferred";
    EXPECT_FALSE([[viewer messageList] selectMessagesAtIndexes:[NSIndexSet indexSetWithIndex:3]]);

    NSMutableIndexSet *rows = [NSMutableIndexSet indexSetWithIndex:0];
    [rows addIndex:2];
    ASSERT_TRUE([[viewer messageList] selectMessagesAtIndexes:rows]);
    [viewer transferSelectedMessagesToMailbox:mailbox(@"Work/Archive") deleteOriginals:YES];
    EXPECT_NSEQ(@[ @"2.eml" ], messageNames(@"Work/Inbox"));
    EXPECT_NSEQ((@[ @"1.eml", @"2.eml" ]), messageNames(@"Work/Archive"));
    EXPECT_EQ(1u, [[[viewer messageList] messagePaths] count]);
    MessageTransfer *transfer = [viewer lastTransfer];
    ASSERT_TRUE(transfer != nil);
    EXPECT_TRUE([transfer delegate] == viewer);
    NSArray *operations = [transfer valueForKey:@"_operations"];
    ASSERT_EQ(2u, [operations count]);
    for (MHTransferOperation *operation in operations) {
        EXPECT_TRUE([operation destinationMailboxUid] == mailbox(@"Work/Archive"));
        EXPECT_TRUE([operation deletesOriginal]);
    }

    ASSERT_TRUE([[viewer messageList] selectMessagesAtIndexes:[NSIndexSet indexSetWithIndex:0]]);
    [viewer transferSelectedMessagesToMailbox:mailbox(@"Home/Archive") deleteOriginals:NO];
    EXPECT_EQ(1u, [messageNames(@"Work/Inbox") count]);
    EXPECT_NSEQ(@[ @"1.eml" ], messageNames(@"Home/Archive"));
    MHTransferOperation *operation = [[[viewer lastTransfer] operations] lastObject];
    EXPECT_TRUE([operation destinationMailboxUid] == mailbox(@"Home/Archive"));
    EXPECT_FALSE([operation deletesOriginal]);
}

TEST_F(MailHostTest, ViewerPrivateFieldsReadByKeyValueCodingAreTheMessageListAndToolbar)
{
    MessageViewer *viewer = [app openMessageViewer];
    id tableManager = [viewer valueForKey:@"_tableManager"];
    ASSERT_TRUE([tableManager isKindOfClass:[TableViewManager class]]);
    EXPECT_TRUE(tableManager == [viewer messageList]);
    NSMenu *contextual = [[tableManager tableView] menu];
    EXPECT_TRUE(sel_isEqual([[contextual itemWithTitle:utf8("Move To\u2026")] action], @selector(moveMessagesToMailbox:)));
    id toolbar = [viewer valueForKey:@"_toolbar"];
    ASSERT_TRUE([toolbar isKindOfClass:[NSToolbar class]]);
    EXPECT_TRUE(toolbar == [[viewer window] toolbar]);
    EXPECT_TRUE([toolbar delegate] == viewer);
}

TEST(MailHostBundles, InstalledBundlesAreTheMailbundlesInTheLibrarysMailBundlesFolder)
{
    NSString *folder = [LVTestLibraryFolder() stringByAppendingPathComponent:@"Mail/Bundles"];
    NSFileManager *fileManager = [NSFileManager defaultManager];
    for (NSString *name in @[ @"Zeta.mailbundle", @"Alpha.mailbundle", @"Other.bundle", @"notes.txt", @"Beta.mailbundle.old" ])
        ASSERT_TRUE([fileManager createDirectoryAtPath:[folder stringByAppendingPathComponent:name] withIntermediateDirectories:YES attributes:nil error:NULL]);
    NSArray *paths = MHInstalledMailBundlePaths();
    NSArray *expected = @[ [folder stringByAppendingPathComponent:@"Alpha.mailbundle"], [folder stringByAppendingPathComponent:@"Zeta.mailbundle"] ];
    EXPECT_NSEQ(expected, paths);
    [fileManager removeItemAtPath:folder error:NULL];
    EXPECT_EQ(0u, [MHInstalledMailBundlePaths() count]);
}

TEST(MailHostScenarioSteps, WellFormedLinesParseIntoCommandArgumentsAndContext)
{
    struct Row {
        const char *line;
        const char *command;
        NSArray *arguments;
        BOOL contextual;
    } rows[] = {
        { "select-mailbox Work/Inbox", "select-mailbox", @[ @"Work/Inbox" ], NO },
        { "  select-messages 0 2 5  ", "select-messages", @[ @"0", @"2", @"5" ], NO },
        { "move-to contextual \"Work/Clients/Harbor Lights\"", "move-to", @[ @"Work/Clients/Harbor Lights" ], YES },
        { "choose \"Move to Recent\" 2", "choose", @[ @"Move to Recent", @"2" ], NO },
        { "choose contextual \"Copy to Recent\" \"Clear Menu\"", "choose", @[ @"Copy to Recent", @"Clear Menu" ], YES },
        { "screenshot open contextual \"Copy to Recent\"", "screenshot", @[ @"open", @"Copy to Recent" ], YES },
        { "quit", "quit", @[], NO },
    };
    for (const Row &row : rows) {
        NSString *problem = @"unset";
        MHScenarioStep *step = [MHScenarioStep stepWithLine:utf8(row.line) error:&problem];
        ASSERT_TRUE(step != nil) << row.line << ": " << [problem UTF8String];
        EXPECT_TRUE(problem == nil) << row.line;
        EXPECT_NSEQ(utf8(row.command), [step command]) << row.line;
        EXPECT_NSEQ(row.arguments, [step arguments]) << row.line;
        EXPECT_EQ(row.contextual, [step isContextual]) << row.line;
    }
    NSString *problem = @"unset";
    EXPECT_TRUE([MHScenarioStep stepWithLine:@"   # a comment" error:&problem] == nil);
    EXPECT_TRUE(problem == nil);
}

TEST(MailHostScenarioSteps, BadLinesFailWithAReasonNamingTheProblem)
{
    struct Row {
        const char *line;
        const char *reason;
    } rows[] = {
        { "fly-to Work/Inbox", "unknown command \"fly-to\"" },
        { "select-mailbox", "usage: select-mailbox ACCOUNT/MAILBOX" },
        { "select-messages 1 two", "\"two\" is not a message index" },
        { "select-messages all 2", "\"all\" cannot be combined with indexes" },
        { "choose \"Move to Recent", "a double quote is not closed" },
        { "choose \"Move to Recent\"", "usage: choose [contextual] MENU-TITLE INDEX|ITEM-TITLE" },
        { "add-account Office Exchange", "account type \"Exchange\" is neither POP nor IMAP" },
        { "rename-mailbox contextual Work/Inbox X", "usage: rename-mailbox" },
        { "quit now", "usage: quit" },
    };
    for (const Row &row : rows) {
        NSString *problem = nil;
        EXPECT_TRUE([MHScenarioStep stepWithLine:utf8(row.line) error:&problem] == nil) << row.line;
        ASSERT_TRUE(problem != nil) << row.line;
        EXPECT_NE(NSNotFound, [problem rangeOfString:utf8(row.reason)].location) << row.line << " gave: " << [problem UTF8String];
    }
    NSString *problem = nil;
    EXPECT_TRUE([MHScenarioStep stepsInText:@"# demo\nselect-mailbox Work/Inbox\n\nselect-messages x\nquit\n" error:&problem] == nil);
    EXPECT_TRUE([problem hasPrefix:@"line 4: select-messages x: "]) << [problem UTF8String];
    NSArray *steps = [MHScenarioStep stepsInText:@"# demo\nselect-mailbox Work/Inbox\n\nquit\n" error:&problem];
    EXPECT_NSEQ((@[ @"select-mailbox", @"quit" ]), [steps valueForKey:@"command"]);
    EXPECT_TRUE(problem == nil);
}

TEST_F(MailHostTest, ScenarioStepsFailClearlyOnMissingMailboxesMenusAndItems)
{
    [app openMessageViewer];
    MHScenario *scenario = [[[MHScenario alloc] initWithApplication:app store:store] autorelease];
    struct Row {
        const char *line;
        const char *error;
    } rows[] = {
        { "select-mailbox Work/Nowhere", "no mailbox \"Work/Nowhere\" in the active accounts" },
        { "show-menu \"Move to Recent\"", "no submenu \"Move to Recent\" in the menu bar" },
        { "choose contextual Message 9", "the menu has 9 items, numbered from 0" },
        { "choose contextual Message 0", "item 0 \"Open Message\" cannot be chosen: it is disabled" },
        { "move-to Work/Archive", "cannot be chosen: it is disabled" },
        { "select-messages 7", "the list holds 3 messages, numbered from 0" },
        { "remove-account Office", "no active account \"Office\"" },
        { "screenshot picture", "no screenshot folder was given" },
        { "choose Mailbox Nothing", "no item \"Nothing\" in \"Mailbox\"" },
        { "bogus", "unknown command \"bogus\"" },
    };
    ASSERT_TRUE([scenario runStep:@"select-mailbox Work/Inbox"]);
    for (const Row &row : rows) {
        EXPECT_FALSE([scenario runStep:utf8(row.line)]) << row.line;
        EXPECT_NE(NSNotFound, [[scenario lastError] rangeOfString:utf8(row.error)].location)
            << row.line << " gave: " << [[scenario lastError] UTF8String];
    }
    EXPECT_EQ(3u, [messageNames(@"Work/Inbox") count]);
}

TEST(MailHostLaunchOptions, CommandLineGivesStoreBundlesScenarioAndVersion)
{
    NSString *problem = @"unset";
    NSArray *arguments = @[ @"MailHost", @"--copy-store", @"/data/store", @"--bundle", @"/b/One.mailbundle", @"-NSLanguages", @"(German)",
                            @"--bundle", @"/b/Two.mailbundle", @"--scenario", @"/s/demo.txt", @"--screenshots", @"/s/shots",
                            @"--system-version", @"0x1068" ];
    MHLaunchOptions *options = [MHLaunchOptions optionsWithArguments:arguments error:&problem];
    ASSERT_TRUE(options != nil) << [problem UTF8String];
    EXPECT_TRUE(problem == nil);
    EXPECT_NSEQ(@"/data/store", [options storePath]);
    EXPECT_TRUE([options copiesStore]);
    EXPECT_NSEQ((@[ @"/b/One.mailbundle", @"/b/Two.mailbundle" ]), [options bundlePaths]);
    EXPECT_NSEQ(@"/s/demo.txt", [options scenarioPath]);
    EXPECT_NSEQ(@"/s/shots", [options screenshotFolder]);
    EXPECT_EQ(0x1068, [options systemVersion]);

    struct Row {
        NSArray *arguments;
        const char *problem;
    } rows[] = {
        { @[ @"MailHost" ], "no store given" },
        { @[ @"MailHost", @"--store" ], "--store needs a value" },
        { @[ @"MailHost", @"--store", @"/a", @"--copy-store", @"/b" ], "give one store only" },
        { @[ @"MailHost", @"--store", @"/a", @"--system-version", @"ten" ], "ten is not a system version" },
        { @[ @"MailHost", @"--store", @"/a", @"--fast", @"yes" ], "unknown option --fast" },
    };
    for (const Row &row : rows) {
        EXPECT_TRUE([MHLaunchOptions optionsWithArguments:row.arguments error:&problem] == nil) << row.problem;
        EXPECT_NE(NSNotFound, [problem rangeOfString:utf8(row.problem)].location) << [problem UTF8String];
    }
}

TEST_F(MailHostTest, MailboxesAreListedSpecialOnesFirstAndEachFollowedByItsChildren)
{
    MailAccount *work = [store accountNamed:@"Work"];
    for (NSString *path in @[ @"Trash", @"Junk", @"Drafts", @"Projects/New", @"Projects/Old/Deep", @"Zoo" ])
        ASSERT_TRUE([work createMailboxWithRelativePath:path] != nil) << [path UTF8String];
    NSArray *ordered = [[MHMailboxList mailboxesInDisplayOrder:work] valueForKey:@"accountRelativePath"];
    NSArray *expected = @[ @"Inbox", @"Drafts", @"Sent", @"Junk", @"Trash", @"Archive",
                           @"Projects", @"Projects/New", @"Projects/Old", @"Projects/Old/Deep", @"Zoo" ];
    EXPECT_NSEQ(expected, ordered);
    EXPECT_EQ(0u, [[MHMailboxList mailboxesInDisplayOrder:nil] count]);
}

TEST_F(MailHostTest, GoToListsEveryMailboxUnderItsAccountAndTheViewerShowsTheChosenOne)
{
    MessageViewer *viewer = [app openMessageViewer];
    NSMenu *goTo = [MHMailMenus goToMenuInMainMenu:[app mainMenu]];
    NSMutableArray *titles = [NSMutableArray array];
    for (NSString *title in titlesOfMenu(goTo))
        [titles addObject:[title stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceCharacterSet]]];
    NSArray *expected = @[ @"Work", @"Inbox", @"Sent", @"Archive", @"Projects", @"Old", @"Home", @"Inbox", @"Archive" ];
    EXPECT_NSEQ(expected, titles);
    EXPECT_TRUE([[goTo itemAtIndex:1] representedObject] == mailbox(@"Work/Inbox"));
    EXPECT_TRUE(sel_isEqual([[goTo itemAtIndex:1] action], @selector(showMailbox:)));
    EXPECT_NSEQ(@[ mailbox(@"Work/Inbox") ], [viewer selectedMailboxes]);
    EXPECT_NSEQ(utf8("Inbox \u2014 Work (3)"), [[viewer window] title]);
    [viewer setSelectedMailboxes:@[ mailbox(@"Home/Archive") ]];
    EXPECT_EQ(0u, [[[viewer messageList] messagePaths] count]);
    EXPECT_NSEQ(utf8("Archive \u2014 Home (0)"), [[viewer window] title]);

    NSTableView *table = [[viewer messageList] tableView];
    [viewer setSelectedMailboxes:@[ mailbox(@"Work/Inbox") ]];
    ASSERT_EQ(3, [table numberOfRows]);
    NSTableColumn *subject = [table tableColumnWithIdentifier:@"subject"];
    NSTableColumn *sender = [table tableColumnWithIdentifier:@"sender"];
    EXPECT_NSEQ(@"Lunch", [[table dataSource] tableView:table objectValueForTableColumn:subject row:1]);
    EXPECT_NSEQ(@"ann@example.com", [[table dataSource] tableView:table objectValueForTableColumn:sender row:1]);

    // Choosing "Go To" > Home > Inbox goes through the responder chain to the viewer.
    NSInteger homeInbox = [goTo indexOfItemWithRepresentedObject:mailbox(@"Home/Inbox")];
    ASSERT_GE(homeInbox, 0);
    [goTo performActionForItemAtIndex:homeInbox];
    EXPECT_NSEQ(@[ mailbox(@"Home/Inbox") ], [viewer selectedMailboxes]);
}

TEST_F(MailHostTest, MenuActionsReachTheFrontViewerWhichEmptiesWhenItsMailboxGoesAndIsForgottenWhenClosed)
{
    MessageViewer *first = [app openMessageViewer];
    MessageViewer *second = [app openMessageViewer];
    EXPECT_TRUE([app targetForAction:@selector(moveMessagesToMailbox:)] == second);
    [[first window] makeKeyAndOrderFront:nil];
    EXPECT_TRUE([app frontmostMessageViewer] == first);
    EXPECT_TRUE([app targetForAction:@selector(moveMessagesToMailbox:)] == first);

    [first setSelectedMailboxes:@[ mailbox(@"Work/Projects") ]];
    ASSERT_TRUE([app deleteMailbox:mailbox(@"Work/Projects")]);
    EXPECT_EQ(0u, [[first selectedMailboxes] count]);
    EXPECT_TRUE(mailbox(@"Work/Projects/Old") == nil);
    EXPECT_EQ(7, [[MHMailMenus goToMenuInMainMenu:[app mainMenu]] numberOfItems]);

    NSUInteger open = [[app messageViewers] count];
    [[first window] performClose:nil];
    EXPECT_EQ(open - 1, [[app messageViewers] count]);
    EXPECT_EQ(NSNotFound, [[app messageViewers] indexOfObjectIdenticalTo:first]);
}

TEST_F(MailHostTest, TransferLogsAMessageItCannotFindAndStillMovesTheOthers)
{
    NSString *existing = [[mailbox(@"Work/Inbox") messagePaths] firstObject];
    NSString *missing = [existing stringByAppendingString:@".gone"];
    MessageTransfer *transfer = [[[MessageTransfer alloc] initWithMessagesAtPaths:@[ missing, existing ]
                                                               destinationMailbox:mailbox(@"Home/Inbox")
                                                                  deleteOriginals:YES] autorelease];
    EXPECT_EQ(1u, [transfer perform]);
    MHTransferOperation *failed = [[transfer operations] objectAtIndex:0];
    MHTransferOperation *done = [[transfer operations] objectAtIndex:1];
    EXPECT_TRUE([failed resultPath] == nil);
    EXPECT_NSEQ([[mailbox(@"Home/Inbox") messagePaths] firstObject], [done resultPath]);
    EXPECT_EQ(1u, LVLogCountWithPrefix(@"MailHost could not transfer"));
    EXPECT_EQ(2u, [messageNames(@"Work/Inbox") count]);
}

TEST_F(MailHostTest, ChooserAnswerIsUsedOnceAndWithoutOneNoTransferHappens)
{
    MessageViewer *viewer = [app openMessageViewer];
    [[viewer messageList] selectMessagesAtIndexes:[NSIndexSet indexSetWithIndex:0]];
    [MHMailboxChooser answerNextChoiceWith:mailbox(@"Work/Sent")];
    [viewer copyMessagesToMailbox:nil];
    EXPECT_EQ(1u, [messageNames(@"Work/Sent") count]);
    EXPECT_TRUE([[app mailboxesController] currentTransferMailbox] == mailbox(@"Work/Sent"));

    // Alerts are being recorded: nobody is there to pick a mailbox, so nothing moves.
    [[viewer messageList] selectMessagesAtIndexes:[NSIndexSet indexSetWithIndex:0]];
    [viewer moveMessagesToMailbox:nil];
    EXPECT_EQ(1u, [messageNames(@"Work/Sent") count]);
    EXPECT_EQ(3u, [messageNames(@"Work/Inbox") count]);
}

namespace {

struct HostRun {
    int status;
    NSString *output;
};

// MailHost as a separate process, as the demo and a person run it.
HostRun runMailHost(NSArray *arguments)
{
    NSTask *task = [[[NSTask alloc] init] autorelease];
    NSPipe *pipe = [NSPipe pipe];
    [task setLaunchPath:@LORVANE_MAILHOST_PATH];
    [task setArguments:[arguments arrayByAddingObjectsFromArray:@[ @"-GSX11HandlesWindowDecorations", @"NO" ]]];
    [task setStandardOutput:pipe];
    [task launch];
    NSData *output = [[pipe fileHandleForReading] readDataToEndOfFile];
    [task waitUntilExit];
    return { [task terminationStatus], [[[NSString alloc] initWithData:output encoding:NSUTF8StringEncoding] autorelease] };
}

} // namespace

TEST_F(MailHostTest, MailHostPlaysAScenarioOnACopyOfTheStoreAndExitsWithItsResult)
{
    NSString *folder = LVMakeTemporaryFolder(@"scenario");
    NSString *good = [folder stringByAppendingPathComponent:@"good.txt"];
    [@"select-mailbox Work/Inbox\nselect-messages 2\nmove-to Home/Archive\nlist-messages Home/Archive\nquit\n"
        writeToFile:good atomically:YES encoding:NSUTF8StringEncoding error:NULL];
    HostRun run = runMailHost(@[ @"--copy-store", [store root], @"--scenario", good ]);
    EXPECT_EQ(0, run.status) << [run.output UTF8String];
    EXPECT_NE(NSNotFound, [run.output rangeOfString:@"  moved 1 of 1 messages to Home/Archive\n"].location) << [run.output UTF8String];
    EXPECT_NE(NSNotFound, [run.output rangeOfString:@"  Home/Archive holds 1 messages: 1.eml\n"].location);
    EXPECT_TRUE([run.output hasSuffix:@"  Mail quits\n"]);
    // The original store is as it was.
    EXPECT_EQ(3u, [messageNames(@"Work/Inbox") count]);
    EXPECT_EQ(0u, [messageNames(@"Home/Archive") count]);

    NSString *bad = [folder stringByAppendingPathComponent:@"bad.txt"];
    [@"select-mailbox Work/Inbox\nselect-mailbox Work/Nowhere\nquit\n" writeToFile:bad atomically:YES encoding:NSUTF8StringEncoding error:NULL];
    run = runMailHost(@[ @"--store", [store root], @"--scenario", bad ]);
    EXPECT_EQ(1, run.status);
    EXPECT_TRUE([run.output hasSuffix:@"  error: no mailbox \"Work/Nowhere\" in the active accounts\n"]) << [run.output UTF8String];

    run = runMailHost(@[ @"--scenario", bad ]);
    EXPECT_EQ(2, run.status);
}
