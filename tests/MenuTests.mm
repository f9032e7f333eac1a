/*
 * The recent menus: where start-up puts them in Mail's menus, what the recent-items limit
 * allows, and what the five submenus show after an opening, for each of Mail's events.
 */
#import "LVLorvane.h"
#import "MHMailQuestions.h"

#include <algorithm>
#include <vector>

namespace {

NSMenuItem *itemAfterSubmenu(NSMenu *submenu)
{
    NSMenu *supermenu = [submenu supermenu];
    NSInteger index = [supermenu indexOfItemWithSubmenu:submenu];
    return index >= 0 ? LVItemAfterItem((NSMenuItem *)[supermenu itemAtIndex:index]) : nil;
}

BOOL writesPreferences(LorvaneBundle_Provider *provider)
{
    [[NSFileManager defaultManager] removeItemAtPath:LVPreferencesFilePath() error:NULL];
    [provider writePreferences];
    return [[NSFileManager defaultManager] fileExistsAtPath:LVPreferencesFilePath()];
}

// Mail with two POP accounts, Home and Work, and a provider whose limit is ten.
class Menus : public testing::Test {
protected:
    MHMailStore *store = nil;
    MailAccount *home = nil, *work = nil;
    LorvaneBundle_Provider *provider = nil;

    void SetUp() override
    {
        LVStartMail();
        store = LVMakeStore(@"menus");
        home = [store addAccountNamed:@"Home" type:@"POP" serverPathPrefix:nil];
        work = [store addAccountNamed:@"Work" type:@"POP" serverPathPrefix:nil];
        provider = LVStartProvider(10, nil);
    }

    MailboxUid *mailbox(MailAccount *account, NSString *relativePath) { return [account createMailboxWithRelativePath:relativePath]; }

    void use(MailboxUid *mailbox, int times = 1)
    {
        for (int i = 0; i < times; i++)
            [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox)];
    }
};

} // namespace

TEST_F(Menus, StartUpPutsTheThreeMenuBarItemsRightBelowMailsOwnWithBareSubmenus)
{
    NSMenu *mainMenu = [NSApp mainMenu];
    EXPECT_EQ((id)provider, [LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider]);
    NSMenuItem *move = LVItemAfterItemWithAction(mainMenu, @selector(moveMessagesToMailbox:));
    NSMenuItem *copy = LVItemAfterItem(move);
    NSMenuItem *goTo = itemAfterSubmenu([MHMailMenus goToMenuInMainMenu:mainMenu]);
    // Their titles, in every language, are the packaging tests' concern.
    NSMenuItem *items[] = { move, copy, goTo };
    NSMenu *submenus[] = { [provider moveToRecentSubmenu], [provider copyToRecentSubmenu], [provider goToRecentSubmenu] };
    for (int i = 0; i < 3; i++) {
        EXPECT_EQ(submenus[i], [items[i] submenu]) << i;
        EXPECT_NSEQ(@"", [items[i] keyEquivalent]);
    }
    // The contextual submenus wait for the message list's menu.
    EXPECT_TRUE([[provider moveToRecentContextualSubmenu] supermenu] == nil);
    for (NSMenu *submenu in LVRecentSubmenus(provider)) {
        NSMenuItem *clear = (NSMenuItem *)[submenu itemAtIndex:1];
        EXPECT_EQ(2, [submenu numberOfItems]);
        EXPECT_TRUE([[submenu itemAtIndex:0] isSeparatorItem]);
        EXPECT_SELEQ(@selector(clearRecentMenus:), [clear action]);
        EXPECT_FALSE([clear isEnabled]);
        EXPECT_FALSE([submenu autoenablesItems]);
        EXPECT_EQ((id)provider, [submenu delegate]);
    }
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane] bundle failed"));
    EXPECT_EQ(0u, [LVRecordedStartupAlerts() count]);
    EXPECT_TRUE(writesPreferences(provider));
}

TEST_F(Menus, WithoutMailsMoveToItemStartUpFailsLeavesGoToBareAndNeverWritesTheFile)
{
    NSMenu *mainMenu = [MHMailMenus newMainMenu];
    NSMenu *messageMenu = [[mainMenu itemWithTitle:@"Message"] submenu];
    [messageMenu removeItemAtIndex:[messageMenu indexOfItemWithTarget:nil andAction:@selector(moveMessagesToMailbox:)]];
    [NSApp setMainMenu:[mainMenu autorelease]];
    NSInteger messageItems = [messageMenu numberOfItems];
    LVClearLog();

    provider = [[LVPluginClass("LorvaneBundle_Provider") alloc] init];

    EXPECT_EQ(1u, LVLogCount(@"[Lorvane] bundle failed to add \"Move to Recent\" menu item."));
    EXPECT_EQ(1u, LVLogCount(@"[Lorvane] bundle failed to add \"Copy to Recent\" menu item."));
    EXPECT_EQ(2u, LVLogCountWithPrefix(@"[Lorvane] bundle failed"));
    EXPECT_EQ(messageItems, [messageMenu numberOfItems]);
    NSMenuItem *goTo = itemAfterSubmenu([MHMailMenus goToMenuInMainMenu:mainMenu]);
    EXPECT_NSEQ(@"Go to Recent", [goTo title]);
    EXPECT_FALSE([goTo hasSubmenu]);
    EXPECT_EQ(0, [[provider goToRecentSubmenu] numberOfItems]);
    EXPECT_FALSE(writesPreferences(provider));
    // Later providers stay inert and do not take over as the singleton.
    [NSApp setMainMenu:[[MHMailMenus newMainMenu] autorelease]];
    LorvaneBundle_Provider *later = [[LVPluginClass("LorvaneBundle_Provider") alloc] init];
    EXPECT_EQ((id)provider, [LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider]);
    EXPECT_TRUE([later moveToRecentSubmenu] == nil);
}

TEST_F(Menus, ContextualSubmenusGoRightBelowMoveToOfTheFirstMenuOnly)
{
    NSMenu *contextual = [[MHMailMenus newMessageListContextualMenu] autorelease];
    NSMenu *another = [[MHMailMenus newMessageListContextualMenu] autorelease];
    NSInteger itemsBefore = [contextual numberOfItems];

    [provider createContextualSubmenusUnderMenu:contextual];
    [provider createContextualSubmenusUnderMenu:another];

    NSMenuItem *move = LVItemAfterItemWithAction(contextual, @selector(moveMessagesToMailbox:));
    EXPECT_NSEQ(@"Move to Recent", [move title]);
    EXPECT_EQ([provider moveToRecentContextualSubmenu], [move submenu]);
    EXPECT_NSEQ(@"Copy to Recent", [LVItemAfterItem(move) title]);
    EXPECT_EQ([provider copyToRecentContextualSubmenu], [LVItemAfterItem(move) submenu]);
    EXPECT_EQ(itemsBefore + 2, [contextual numberOfItems]);
    EXPECT_EQ(itemsBefore, [another numberOfItems]);
}

TEST_F(Menus, AFailedContextualPlacementIsLoggedAndStopsEveryLaterRebuild)
{
    use(mailbox(work, @"Clients"));
    use(mailbox(home, @"Lists"));
    ASSERT_TRUE(LVSubmenusShow(provider, @[ @"Clients", @"Lists" ]));

    [provider createContextualSubmenusUnderMenu:nil];
    EXPECT_EQ(1u, LVLogCount(@"[Lorvane] Failed to set Move to Recent contextual menu."));
    EXPECT_EQ(1u, LVLogCountWithPrefix(@"[Lorvane] Failed"));

    use(mailbox(home, @"Travel"));
    [provider clearRecentMailboxes];
    [provider updateMenus];
    for (NSMenu *submenu in LVRecentSubmenus(provider)) {
        LVOpenRecentMenu(submenu);
        EXPECT_NSEQ((@[ @"Clients", @"Lists" ]), LVTitlesAboveSeparator(submenu));
        // "Clear Menu" alone follows the list.
        EXPECT_FALSE([[[submenu itemArray] lastObject] isEnabled]);
    }
    // The list goes on naming namesakes where they live, and sorts by those names.
    use(mailbox(work, @"Lists"));
    use(mailbox(home, @"Lists"));
    [provider updateMenus];
    EXPECT_NSEQ(@"Lists (Home)", [[provider getRecentMailboxAtIndex:0] displayName]);
    EXPECT_NSEQ(@"Lists (Work)", [[provider getRecentMailboxAtIndex:1] displayName]);
}

TEST_F(Menus, TheLimitIsReadFromTheSystemsRecentItemsFileWhateverItHolds)
{
    struct Row {
        const char *name;
        id contents; // a property list, written in binary as a Mac writes it, or nil for no file
        int limit;
        NSUInteger documentsMissing, bothMissing; // the two log lines
    };
    const Row rows[] = {
        { "RecentDocuments", @{ @"RecentDocuments" : @{ @"MaxAmount" : @7 } }, 7, 0, 0 },
        { "Documents only", @{ @"Documents" : @{ @"MaxAmount" : @5 } }, 5, 1, 0 },
        { "RecentDocuments wins", @{ @"RecentDocuments" : @{ @"MaxAmount" : @3 }, @"Documents" : @{ @"MaxAmount" : @9 } }, 3, 0, 0 },
        { "no MaxAmount", @{ @"RecentDocuments" : @{} }, 0, 0, 0 },
        { "MaxAmount as text", @{ @"RecentDocuments" : @{ @"MaxAmount" : @"6" } }, 6, 0, 0 },
        { "MaxAmount as array", @{ @"RecentDocuments" : @{ @"MaxAmount" : @[ @1 ] } }, 0, 0, 0 },
        { "negative", @{ @"RecentDocuments" : @{ @"MaxAmount" : @-3 } }, -3, 0, 0 },
        { "RecentDocuments not a dictionary", @{ @"RecentDocuments" : @"10", @"Documents" : @{ @"MaxAmount" : @2 } }, 2, 1, 0 },
        { "root not a dictionary", @[ @1, @2 ], 0, 1, 1 },
        { "no file", nil, 0, 1, 1 },
    };
    NSArray *twelve = @[ @"A", @"B", @"C", @"D", @"E", @"F", @"G", @"H", @"I", @"J", @"K", @"L" ];
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        [[NSFileManager defaultManager] removeItemAtPath:MHRecentItemsFilePath() error:NULL];
        if (row.contents != nil)
            ASSERT_TRUE(MHWritePropertyList(row.contents, MHRecentItemsFilePath(), YES));
        [NSApp setMainMenu:[[MHMailMenus newMainMenu] autorelease]];
        LVClearLog();
        MHClearRecordedAlerts();
        provider = [[LVPluginClass("LorvaneBundle_Provider") alloc] init];
        EXPECT_EQ(row.documentsMissing, LVLogCount(@"[Lorvane] failed to find RecentDocuments dictionary."));
        EXPECT_EQ(row.bothMissing, LVLogCount(@"[Lorvane] failed to find the RecentDocuments or Documents dictionaries."));
        NSArray *alerts = LVRecordedStartupAlerts();
        ASSERT_EQ(row.limit == 0 ? 1u : 0u, [alerts count]);
        if (row.limit == 0)
            EXPECT_NSEQ(@"\"Number of Recent Items\" must be > 0.", [[alerts lastObject] objectForKey:MHAlertMessageKey]);

        // Whatever the limit, start-up succeeded. The list holds up to the limit, or with
        // one below zero everything, with no item to show it.
        for (NSString *name in twelve)
            use(mailbox(home, name));
        NSUInteger holds = row.limit < 0 ? 12 : (NSUInteger)row.limit, shows = (NSUInteger)std::max(row.limit, 0);
        EXPECT_EQ(holds, [LVListedNames(provider) count]);
        LVOpenRecentMenu([provider goToRecentSubmenu]);
        EXPECT_NSEQ([twelve subarrayWithRange:NSMakeRange(12 - shows, shows)], LVTitlesAboveSeparator([provider copyToRecentSubmenu]));
        EXPECT_TRUE(writesPreferences(provider));
    }
}

// A mailbox saved twice leaves a list only the whole-list pass can order; a limit below zero
// lets it grow past its pre-made items (there are none), and no row is made, nor Mail asked
// for its icon, where no item could show it.
TEST_F(Menus, AListBeyondItsItemsOrderedWholeAsksMailNothingForRowsNoItemShows)
{
    MailboxUid *archive = mailbox(home, @"Archive");
    provider = LVStartProvider(-1, LVPreferences(0, NO, @[ LVSavedRecord(archive, 2, nil), LVSavedRecord(archive, 1, nil) ]));
    use(mailbox(home, @"Travel"));
    MHForgetMailQuestions();
    LVOpenRecentMenu([provider goToRecentSubmenu]);
    EXPECT_EQ(3u, [LVListedNames(provider) count]);
    EXPECT_NSEQ(@[], LVTitlesAboveSeparator([provider moveToRecentSubmenu]));
    EXPECT_EQ(0u, MHMailQuestionCount(@selector(iconForMailboxUid:smallSize:), nil));
}

TEST_F(Menus, MailboxesSharingANameShowWhereTheyLive)
{
    MailAccount *mailhost = [store addAccountNamed:@"Mailhost" type:@"IMAP" serverPathPrefix:@"INBOX"];
    MailAccount *twin = [store addAccountNamed:@"Twin" type:@"POP" serverPathPrefix:nil];
    MailAccount *twinAgain = [store addAccountNamed:@"Twin" type:@"POP" serverPathPrefix:nil];
    MailAccount *cafe = [store addAccountNamed:@"Caf\u00e9" type:@"POP" serverPathPrefix:nil];
    MailAccount *cafeAgain = [store addAccountNamed:@"Cafe\u0301" type:@"POP" serverPathPrefix:nil];
    struct Row {
        const char *what;
        std::vector<std::pair<MailAccount *, NSString *>> mailboxes;
        NSArray *titles; // in name order
    } rows[] = {
        { "folders of one account", { { home, @"A/Work" }, { home, @"B/Work" }, { home, @"Work" } }, @[ @"Work", @"Work (A)", @"Work (B)" ] },
        { "deeply nested", { { home, @"Projects/Old/Work" }, { home, @"Work" } }, @[ @"Work", @"Work (Projects/Old)" ] },
        { "accounts and folders", { { home, @"Projects/Work" }, { work, @"Work" } }, @[ @"Work (Home/Projects)", @"Work (Work)" ] },
        { "accounts of one name count as one", { { twin, @"Archive" }, { twinAgain, @"Old/Archive" } }, @[ @"Archive", @"Archive (Old)" ] },
        { "the server prefix is left out by characters",
          { { mailhost, @"INBOX/Lists/Work" }, { mailhost, @"Work" }, { mailhost, @"INBOXES/Work" } },
          @[ @"Work", @"Work (Lists)", @"Work (S)" ] },
        { "and with its case", { { mailhost, @"inbox/Work" }, { home, @"Work" } }, @[ @"Work (Home)", @"Work (Mailhost/inbox)" ] },
        // As a Mac compares names: an "é" written as one character or as two is another name.
        { "names spelled apart", { { home, @"Caf\u00e9" }, { work, @"Cafe\u0301" } }, @[ @"Cafe\u0301", @"Caf\u00e9" ] },
        { "accounts spelled apart", { { cafe, @"Archive" }, { cafeAgain, @"Archive" } }, @[ @"Archive (Cafe\u0301)", @"Archive (Caf\u00e9)" ] },
    };
    for (const Row &row : rows) {
        [provider clearRecentMailboxes];
        for (const auto &entry : row.mailboxes)
            use(mailbox(entry.first, entry.second));
        EXPECT_TRUE(LVSubmenusShow(provider, row.titles)) << row.what;
    }
}

TEST_F(Menus, GroupsOfRecordsAreExtendedByTheProvidersOwnMethods)
{
    MailboxUid *orphan = nil;
    @autoreleasepool {
        MailAccount *gone = [[MailAccount alloc] initWithDisplayName:@"Gone" path:nil];
        orphan = [[gone createMailboxWithRelativePath:@"Archive"] retain];
        [gone release];
    }
    [orphan autorelease];
    auto recordsOf = [&](NSArray *mailboxes) {
        NSMutableArray *records = [NSMutableArray array];
        for (MailboxUid *uid in mailboxes) {
            LorvaneMailbox *record = [[[LVPluginClass("LorvaneMailbox") alloc] init] autorelease];
            [record setUid:LVUid(uid)];
            [records addObject:record];
        }
        return records;
    };
    struct Row {
        NSArray *mailboxes;
        BOOL multipleAccounts;
        NSArray *names;
    } rows[] = {
        { @[], NO, @[] },
        { @[ mailbox(home, @"A/Work"), mailbox(home, @"B/Work"), mailbox(home, @"Work") ], NO, @[ @"Work (A)", @"Work (B)", @"Work" ] },
        { @[ mailbox(home, @"Archive"), orphan ], YES, @[ @"Archive (Home)", @"Archive ()" ] },
        { @[ orphan, orphan ], YES, @[ @"Archive ()", @"Archive ()" ] },
        { @[ mailbox(home, @"Archive"), mailbox([store addAccountNamed:@"home" type:@"POP" serverPathPrefix:nil], @"Archive") ], YES,
          @[ @"Archive (Home)", @"Archive (home)" ] },
    };
    for (const Row &row : rows) {
        NSArray *records = recordsOf(row.mailboxes);
        BOOL multiple = [provider multipleAccountsInRecentMailboxes:records];
        EXPECT_EQ(row.multipleAccounts, multiple);
        [provider extendNamesForDuplicateMailboxes:records includesMultipleAccounts:multiple];
        [provider extendNamesForDuplicateMailboxes:records includesMultipleAccounts:multiple];
        EXPECT_NSEQ(row.names, [records valueForKey:@"displayName"]);
    }
}
