#import "LVMenuFixture.h"

namespace {

const SEL LVFamilyActions[5] = {
    @selector(moveToRecentFromSubmenu:), @selector(copyToRecentFromSubmenu:), @selector(goToRecentFromSubmenu:),
    @selector(moveToRecentFromContextualSubmenu:), @selector(copyToRecentFromContextualSubmenu:),
};

// Each recent submenu right after start-up: nothing but a separator and a disabled "Clear Menu".
void expectBareRecentSubmenus(LorvaneBundle_Provider *provider)
{
    NSArray *submenus = LVRecentSubmenus(provider);
    for (NSUInteger family = 0; family < 5; family++) {
        SCOPED_TRACE(LVFamilyNames[family]);
        NSMenu *submenu = [submenus objectAtIndex:family];
        ASSERT_EQ(2, [submenu numberOfItems]);
        EXPECT_TRUE([[submenu itemAtIndex:0] isSeparatorItem]);
        NSMenuItem *clear = (NSMenuItem *)[submenu itemAtIndex:1];
        EXPECT_NSEQ(@"Clear Menu", [clear title]);
        EXPECT_SELEQ(@selector(clearRecentMenus:), [clear action]);
        EXPECT_NSEQ(@"", [clear keyEquivalent]);
        EXPECT_FALSE([clear isEnabled]);
        EXPECT_FALSE([submenu autoenablesItems]);
        EXPECT_EQ((id)provider, [submenu delegate]);
    }
}

BOOL writesPreferences(LorvaneBundle_Provider *provider)
{
    [[NSFileManager defaultManager] removeItemAtPath:MHPreferencesFilePath() error:NULL];
    [provider writePreferences];
    return [[NSFileManager defaultManager] fileExistsAtPath:MHPreferencesFilePath()];
}

} // namespace

TEST(ProviderStartup, InstallsThreeMenuBarItemsRightBelowMailsOwn)
{
    LVStartMailWithPlugin();
    NSMenu *mainMenu = LVInstallFreshMainMenu();
    LorvaneBundle_Provider *provider = LVMakeProvider(10);
    ASSERT_TRUE(provider != nil);
    EXPECT_EQ((id)provider, [LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider]);

    NSMenuItem *move = LVItemAfterItemWithAction(mainMenu, @selector(moveMessagesToMailbox:));
    ASSERT_TRUE(move != nil);
    EXPECT_NSEQ(@"Move to Recent", [move title]);
    EXPECT_EQ([provider moveToRecentSubmenu], [move submenu]);
    // On GNUstep an item that carries a submenu answers submenuAction:, so "Copy to Recent"
    // is found by its place, not by the action it was placed by.
    NSMenuItem *copy = LVItemAfterItem(move);
    ASSERT_TRUE(copy != nil);
    EXPECT_NSEQ(@"Copy to Recent", [copy title]);
    EXPECT_EQ([provider copyToRecentSubmenu], [copy submenu]);

    NSMenuItem *goTo = LVItemAfterSubmenu([MHMailMenus goToMenuInMainMenu:mainMenu]);
    ASSERT_TRUE(goTo != nil);
    EXPECT_NSEQ(@"Go to Recent", [goTo title]);
    EXPECT_EQ([provider goToRecentSubmenu], [goTo submenu]);

    for (NSMenuItem *item in @[ move, copy, goTo ])
        EXPECT_NSEQ(@"", [item keyEquivalent]);
    // The contextual submenus wait for the message list's menu.
    EXPECT_TRUE([[provider moveToRecentContextualSubmenu] supermenu] == nil);
    EXPECT_TRUE([[provider copyToRecentContextualSubmenu] supermenu] == nil);
    EXPECT_TRUE([provider valueForKey:@"_moveToRecentContextualMenuItem"] == nil);
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane] bundle failed"));
    EXPECT_EQ(0u, [LVRecordedStartupAlerts() count]);
    EXPECT_TRUE(writesPreferences(provider));
}

TEST(ProviderStartup, EachRecentSubmenuStartsWithOnlySeparatorAndDisabledClearMenu)
{
    LorvaneBundle_Provider *provider = LVMakeProvider(10);
    expectBareRecentSubmenus(provider);
    EXPECT_TRUE([[provider valueForKey:@"_menusOK"] boolValue]);
    // Start-up asks for the first rebuild: the first opening fills the submenus from the list.
    EXPECT_TRUE([[provider valueForKey:@"_updateMenu"] boolValue]);
}

TEST(ProviderStartup, PremadeItemsFollowTheRecentItemsLimit)
{
    struct Row {
        int limit;
        NSUInteger items;
        NSUInteger alerts;
    };
    const Row rows[] = { { 10, 10, 0 }, { 1, 1, 0 }, { -3, 0, 0 }, { 0, 0, 1 } };
    LVStartMailWithPlugin();
    for (const Row &row : rows) {
        SCOPED_TRACE(row.limit);
        MHClearRecordedAlerts();
        NSMenu *mainMenu = LVInstallFreshMainMenu();
        LorvaneBundle_Provider *provider = LVMakeProvider(row.limit);
        EXPECT_EQ(row.limit, [[provider valueForKey:@"_maxMailboxes"] intValue]);
        NSArray *arrays = LVPremadeItemArrays(provider);
        for (NSUInteger family = 0; family < 5; family++) {
            NSArray *items = [arrays objectAtIndex:family];
            ASSERT_EQ(row.items, [items count]) << LVFamilyNames[family];
            for (NSMenuItem *item in items) {
                EXPECT_NSEQ(@"", [item title]);
                EXPECT_SELEQ(LVFamilyActions[family], [item action]) << LVFamilyNames[family];
                EXPECT_TRUE([item target] == nil);
                EXPECT_NSEQ(@"", [item keyEquivalent]);
                EXPECT_FALSE([item hasSubmenu]);
                EXPECT_TRUE([item isEnabled]);
                EXPECT_TRUE([item menu] == nil);
            }
        }
        NSArray *alerts = LVRecordedStartupAlerts();
        ASSERT_EQ(row.alerts, [alerts count]);
        for (NSDictionary *alert in alerts) {
            EXPECT_NSEQ(@"\"Number of Recent Items\" must be > 0.", [alert objectForKey:MHAlertMessageKey]);
            EXPECT_EQ(2, [[alert objectForKey:MHAlertStyleKey] intValue]);
            EXPECT_EQ(1u, [[alert objectForKey:MHAlertButtonsKey] count]);
        }
        // Whatever the limit, the three items are in the menu bar and start-up succeeded.
        EXPECT_TRUE([[LVItemAfterItemWithAction(mainMenu, @selector(moveMessagesToMailbox:)) submenu] isEqual:[provider moveToRecentSubmenu]]);
        expectBareRecentSubmenus(provider);
        EXPECT_TRUE(writesPreferences(provider));
    }
}

TEST(ProviderStartup, RecentItemsLimitIsReadFromTheSystemFileWhateverItHolds)
{
    struct Row {
        const char *name;
        id contents;        // a property list, raw bytes (NSData), or nil for no file
        BOOL binary;
        int limit;
        NSUInteger documentsMissing;   // "failed to find RecentDocuments" lines
        NSUInteger bothMissing;        // "failed to find the RecentDocuments or Documents" lines
    };
    static const char malformed[] = "bplist00\xff\xff\x01garbage";
    const Row rows[] = {
        { "binary RecentDocuments", @{ @"RecentDocuments" : @{ @"MaxAmount" : @7 } }, YES, 7, 0, 0 },
        { "XML RecentDocuments", @{ @"RecentDocuments" : @{ @"MaxAmount" : @4 } }, NO, 4, 0, 0 },
        { "Documents only", @{ @"Documents" : @{ @"MaxAmount" : @5 } }, YES, 5, 1, 0 },
        { "RecentDocuments wins", @{ @"RecentDocuments" : @{ @"MaxAmount" : @3 }, @"Documents" : @{ @"MaxAmount" : @9 } }, YES, 3, 0, 0 },
        { "no MaxAmount", @{ @"RecentDocuments" : @{} }, YES, 0, 0, 0 },
        { "MaxAmount as text", @{ @"RecentDocuments" : @{ @"MaxAmount" : @"6" } }, YES, 6, 0, 0 },
        { "MaxAmount as array", @{ @"RecentDocuments" : @{ @"MaxAmount" : @[ @1 ] } }, YES, 0, 0, 0 },
        { "RecentDocuments not a dictionary", @{ @"RecentDocuments" : @"10", @"Documents" : @{ @"MaxAmount" : @2 } }, YES, 2, 1, 0 },
        { "root not a dictionary", @[ @1, @2 ], YES, 0, 1, 1 },
        { "malformed bytes", [NSData dataWithBytes:malformed length:sizeof malformed - 1], NO, 0, 1, 1 },
        { "no file", nil, NO, 0, 1, 1 },
    };
    LVStartMailWithPlugin();
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        [[NSFileManager defaultManager] removeItemAtPath:MHRecentItemsFilePath() error:NULL];
        if ([row.contents isKindOfClass:[NSData class]])
            [(NSData *)row.contents writeToFile:MHRecentItemsFilePath() atomically:YES];
        else if (row.contents != nil)
            ASSERT_TRUE(MHWritePropertyList(row.contents, MHRecentItemsFilePath(), row.binary));
        LVInstallFreshMainMenu();
        LVClearLog();
        MHClearRecordedAlerts();
        LorvaneBundle_Provider *provider = [[LVPluginClass("LorvaneBundle_Provider") alloc] init];
        EXPECT_EQ(row.limit, [[provider valueForKey:@"_maxMailboxes"] intValue]);
        EXPECT_EQ(row.documentsMissing, LVLogCount(@"[Lorvane] failed to find RecentDocuments dictionary."));
        EXPECT_EQ(row.bothMissing, LVLogCount(@"[Lorvane] failed to find the RecentDocuments or Documents dictionaries."));
        EXPECT_EQ(row.limit == 0 ? 1u : 0u, [LVRecordedStartupAlerts() count]);
        EXPECT_EQ((NSUInteger)(row.limit > 0 ? row.limit : 0), [[provider valueForKey:@"_goToRecentSubmenuItems"] count]);
        // Even without a limit, the three menu-bar items carry their submenus.
        EXPECT_TRUE([[provider goToRecentSubmenu] supermenu] != nil);
        EXPECT_TRUE([[provider valueForKey:@"_menusOK"] boolValue]);
    }
}

TEST(ProviderStartup, MainMenuWithoutMoveToItemFailsMoveAndCopyButStillPlacesGoTo)
{
    LVStartMailWithPlugin();
    NSMenu *mainMenu = LVInstallFreshMainMenu();
    NSMenu *messageMenu = [[mainMenu itemWithTitle:@"Message"] submenu];
    NSInteger moveTo = [messageMenu indexOfItemWithTarget:nil andAction:@selector(moveMessagesToMailbox:)];
    ASSERT_GE(moveTo, 0);
    [messageMenu removeItemAtIndex:moveTo];
    NSInteger messageItems = [messageMenu numberOfItems];
    LVClearLog();

    LorvaneBundle_Provider *provider = LVMakeProvider(10);

    EXPECT_EQ(1u, LVLogCount(@"[Lorvane] bundle failed to add \"Move to Recent\" menu item."));
    EXPECT_EQ(1u, LVLogCount(@"[Lorvane] bundle failed to add \"Copy to Recent\" menu item."));
    EXPECT_EQ(2u, LVLogCountWithPrefix(@"[Lorvane] bundle failed to add"));
    EXPECT_EQ(messageItems, [messageMenu numberOfItems]);
    NSMenuItem *goTo = LVItemAfterSubmenu([MHMailMenus goToMenuInMainMenu:mainMenu]);
    ASSERT_TRUE(goTo != nil);
    EXPECT_NSEQ(@"Go to Recent", [goTo title]);
    // Once a step failed nothing further is built: no submenu is attached or filled.
    EXPECT_FALSE([goTo hasSubmenu]);
    EXPECT_FALSE([[provider valueForKey:@"_menusOK"] boolValue]);
    EXPECT_EQ(0, [[provider goToRecentSubmenu] numberOfItems]);
    EXPECT_EQ(0u, [[provider valueForKey:@"_moveToRecentSubmenuItems"] count]);
    // A plug-in that failed to start never overwrites the user's preferences.
    EXPECT_FALSE(writesPreferences(provider));

    // Later providers stay inert and do not take over as the singleton.
    LVInstallFreshMainMenu();
    LorvaneBundle_Provider *later = [[LVPluginClass("LorvaneBundle_Provider") alloc] init];
    EXPECT_EQ((id)provider, [LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider]);
    EXPECT_TRUE([later moveToRecentSubmenu] == nil);
}

TEST(ProviderStartup, GoToRecentFollowsTheFirstGoToSubmenuInPreOrder)
{
    LVStartMailWithPlugin();
    // "Mail" holds, two levels down, a "Go To" submenu; before it come near misses (no
    // submenu, different case), and a later top-level menu holds another "Go To".
    NSMenu *mainMenu = [[[NSMenu alloc] initWithTitle:@"Main"] autorelease];
    NSMenu *mail = [[[NSMenu alloc] initWithTitle:@"Mail"] autorelease];
    NSMenu *services = [[[NSMenu alloc] initWithTitle:@"Services"] autorelease];
    NSMenu *nestedGoTo = [[[NSMenu alloc] initWithTitle:@"Go To"] autorelease];
    NSMenu *lowerCaseGoTo = [[[NSMenu alloc] initWithTitle:@"go to"] autorelease];
    NSMenu *mailbox = [[[NSMenu alloc] initWithTitle:@"Mailbox"] autorelease];
    NSMenu *laterGoTo = [[[NSMenu alloc] initWithTitle:@"Go To"] autorelease];
    [mail addItemWithTitle:@"Go To" action:NULL keyEquivalent:@""];
    [mail setSubmenu:lowerCaseGoTo forItem:[mail addItemWithTitle:@"go to" action:NULL keyEquivalent:@""]];
    [mail setSubmenu:services forItem:[mail addItemWithTitle:@"Services" action:NULL keyEquivalent:@""]];
    [services addItemWithTitle:@"Before" action:NULL keyEquivalent:@""];
    [services setSubmenu:nestedGoTo forItem:[services addItemWithTitle:@"Go To" action:NULL keyEquivalent:@""]];
    [services addItemWithTitle:@"After" action:NULL keyEquivalent:@""];
    [mailbox addItemWithTitle:@"Move To" action:@selector(moveMessagesToMailbox:) keyEquivalent:@""];
    [mailbox setSubmenu:laterGoTo forItem:[mailbox addItemWithTitle:@"Go To" action:NULL keyEquivalent:@""]];
    [mainMenu setSubmenu:mail forItem:[mainMenu addItemWithTitle:@"Mail" action:NULL keyEquivalent:@""]];
    [mainMenu setSubmenu:mailbox forItem:[mainMenu addItemWithTitle:@"Mailbox" action:NULL keyEquivalent:@""]];
    [NSApp setMainMenu:mainMenu];

    LorvaneBundle_Provider *provider = LVMakeProvider(3);

    NSMenuItem *goToRecent = LVItemAfterSubmenu(nestedGoTo);
    ASSERT_TRUE(goToRecent != nil);
    EXPECT_NSEQ(@"Go to Recent", [goToRecent title]);
    EXPECT_EQ([provider goToRecentSubmenu], [goToRecent submenu]);
    EXPECT_EQ(4, [services numberOfItems]);
    EXPECT_EQ(3, [mail numberOfItems]);
    EXPECT_TRUE(LVItemAfterSubmenu(laterGoTo) == nil);
}

TEST(ContextualSubmenus, GoRightBelowMoveToAndAreInsertedOnlyOnce)
{
    LorvaneBundle_Provider *provider = LVMakeProvider(5);
    NSMenu *contextual = [[MHMailMenus newMessageListContextualMenu] autorelease];
    NSInteger itemsBefore = [contextual numberOfItems];

    [provider createContextualSubmenusUnderMenu:contextual];

    ASSERT_EQ(itemsBefore + 2, [contextual numberOfItems]);
    NSMenuItem *move = LVItemAfterItemWithAction(contextual, @selector(moveMessagesToMailbox:));
    ASSERT_TRUE(move != nil);
    EXPECT_NSEQ(@"Move to Recent", [move title]);
    EXPECT_EQ([provider moveToRecentContextualSubmenu], [move submenu]);
    NSMenuItem *copy = LVItemAfterItem(move);
    ASSERT_TRUE(copy != nil);
    EXPECT_NSEQ(@"Copy to Recent", [copy title]);
    EXPECT_EQ([provider copyToRecentContextualSubmenu], [copy submenu]);
    EXPECT_EQ((id)move, [provider valueForKey:@"_moveToRecentContextualMenuItem"]);
    EXPECT_EQ((id)copy, [provider valueForKey:@"_copyToRecentContextualMenuItem"]);

    // A second contextual menu gets nothing; the submenus stay where they hang.
    NSMenu *another = [[MHMailMenus newMessageListContextualMenu] autorelease];
    [provider createContextualSubmenusUnderMenu:another];
    EXPECT_EQ(itemsBefore, [another numberOfItems]);
    EXPECT_EQ(itemsBefore + 2, [contextual numberOfItems]);
    EXPECT_EQ([provider moveToRecentContextualSubmenu], [move submenu]);
    EXPECT_EQ([provider copyToRecentContextualSubmenu], [copy submenu]);
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane] Failed to set"));
    EXPECT_TRUE([[provider valueForKey:@"_menusOK"] boolValue]);
    expectBareRecentSubmenus(provider);
}

TEST(ContextualSubmenus, NilMenuFailsTheMoveItemOnlyAndStopsAllRebuilds)
{
    LorvaneBundle_Provider *provider = LVMakeProvider(5);

    [provider createContextualSubmenusUnderMenu:nil];

    EXPECT_EQ(1u, LVLogCount(@"[Lorvane] Failed to set Move to Recent contextual menu."));
    EXPECT_EQ(0u, LVLogCount(@"[Lorvane] Failed to set Copy to Recent contextual menu."));
    EXPECT_FALSE([[provider valueForKey:@"_menusOK"] boolValue]);
    EXPECT_TRUE([provider valueForKey:@"_moveToRecentContextualMenuItem"] == nil);
    EXPECT_TRUE([provider valueForKey:@"_copyToRecentContextualMenuItem"] == nil);

    // The menu-bar submenus, which worked, are not rebuilt any more either.
    MHMailStore *store = [MHMailStore storeAtPath:LVMakeTemporaryFolder(@"store")];
    MailboxUid *archive = [[store addAccountNamed:@"Home" type:@"POP" serverPathPrefix:nil] createMailboxWithRelativePath:@"Archive"];
    [provider addOrTouchRecentMailboxFromUid:(id<LVMailboxUid>)archive];
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    EXPECT_EQ(2, [[provider moveToRecentSubmenu] numberOfItems]);
    EXPECT_FALSE([[provider valueForKey:@"_updateMenu"] boolValue]);
}
