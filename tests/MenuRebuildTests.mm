#import "LVMenuFixture.h"
#import "LVProviderFixture.h"
#import "MailboxesController.h"
#import "LorvaneMailbox.h"

namespace {

// A provider in a running Mail, with two accounts to take mailboxes from. Mailboxes enter
// the list as a transfer puts them there, and the submenus are opened as AppKit opens them.
class MenuRebuild : public testing::Test {
protected:
    LorvaneBundle_Provider *provider = nil;
    MHMailStore *store = nil;
    MailAccount *home = nil;
    MailAccount *work = nil;

    void SetUp() override
    {
        provider = LVMakeProvider(10);
        ASSERT_TRUE([[provider valueForKey:@"_menusOK"] boolValue]);
        store = [MHMailStore storeAtPath:LVMakeTemporaryFolder(@"store")];
        home = [store addAccountNamed:@"Home" type:@"POP" serverPathPrefix:nil];
        work = [store addAccountNamed:@"Work" type:@"POP" serverPathPrefix:nil];
    }

    MailboxUid *mailbox(MailAccount *account, NSString *relativePath)
    {
        return [account createMailboxWithRelativePath:relativePath];
    }

    // Each use a second after the one before: uses made in a row can fall within one tick
    // of the clock, and equal dates would leave the order by date to the name order.
    void use(MailboxUid *mailbox, int times = 1)
    {
        for (int i = 0; i < times; i++) {
            [provider addOrTouchRecentMailboxFromUid:(id<LVMailboxUid>)mailbox];
            int index = [provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)mailbox];
            [[provider getRecentMailboxAtIndex:index] setDate:[NSDate dateWithTimeIntervalSinceReferenceDate:++uses]];
        }
        LVRefileRecords(provider);
    }
    double uses = 0;

    void setSortType(int sortType)
    {
        [provider setValue:[NSNumber numberWithInt:sortType] forKey:@"_sortType"];
        [(id)LVProviderList(provider) setSortType:sortType];
    }

    NSMenu *submenu(NSUInteger family)
    {
        return [LVRecentSubmenus(provider) objectAtIndex:family];
    }

    // Mail's names of the listed mailboxes in list order: the order the actions count in.
    NSArray *listedMailboxNames()
    {
        NSMutableArray *names = [NSMutableArray array];
        NSUInteger count = [[provider valueForKey:@"_recentMailboxes"] count];
        for (NSUInteger i = 0; i < count; i++)
            [names addObject:[[provider getRecentMailboxUidAtIndex:(int)i] displayName]];
        return names;
    }

    // Every submenu shows the titles, then its separator and "Clear Menu", enabled when
    // there is something to clear.
    void expectAllSubmenusShow(NSArray *titles)
    {
        for (NSUInteger family = 0; family < 5; family++) {
            SCOPED_TRACE(LVFamilyNames[family]);
            NSMenu *menu = submenu(family);
            EXPECT_NSEQ(titles, LVTitlesAboveSeparator(menu));
            ASSERT_EQ((NSInteger)[titles count] + 2, [menu numberOfItems]);
            NSMenuItem *clear = (NSMenuItem *)[menu itemAtIndex:[menu numberOfItems] - 1];
            EXPECT_NSEQ(@"Clear Menu", [clear title]);
            EXPECT_EQ([titles count] != 0, (bool)[clear isEnabled]);
        }
    }
};


} // namespace

TEST_F(MenuRebuild, EmptyListShowsOnlySeparatorAndDisabledClearMenu)
{
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    expectAllSubmenusShow(@[]);

    use(mailbox(home, @"Archive"));
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    expectAllSubmenusShow(@[ @"Archive" ]);

    [provider clearRecentMailboxes];
    LVOpenRecentMenu([provider goToRecentSubmenu]);
    expectAllSubmenusShow(@[]);
}

TEST_F(MenuRebuild, SortTypeOrdersEveryRecentSubmenu)
{
    // Names, dates and use counts each give a different order: Clients was used once and
    // longest ago, Lists four times, Reports twice and last.
    MailboxUid *clients = mailbox(work, @"Clients");
    MailboxUid *lists = mailbox(home, @"Lists");
    MailboxUid *reports = mailbox(home, @"Reports");
    use(clients);
    use(lists);
    use(reports);
    use(lists, 3);
    use(reports);
    NSArray *byName = @[ @"Clients", @"Lists", @"Reports" ];
    struct Row {
        int sortType;
        NSArray *titles;
    };
    const Row rows[] = {
        { 0, byName },
        { 1, @[ @"Reports", @"Lists", @"Clients" ] },
        { 2, @[ @"Lists", @"Reports", @"Clients" ] },
        { 3, byName },
        { -1, byName },
    };
    NSUInteger opened = 0;
    for (const Row &row : rows) {
        SCOPED_TRACE(row.sortType);
        setSortType(row.sortType);
        [provider signalUpdateMenu];
        LVOpenRecentMenu(submenu(opened++ % 5));
        expectAllSubmenusShow(row.titles);
        EXPECT_NSEQ(row.titles, listedMailboxNames());
    }
}

TEST_F(MenuRebuild, MailboxesSharingANameShowWhereTheyLive)
{
    use(mailbox(home, @"Archive"));
    use(mailbox(work, @"Archive"));
    use(mailbox(home, @"Work"));
    use(mailbox(home, @"Projects/Work"));
    use(mailbox(home, @"Lists"));
    NSArray *expected = @[ @"Archive (Home)", @"Archive (Work)", @"Lists", @"Work", @"Work (Projects)" ];

    LVOpenRecentMenu([provider copyToRecentSubmenu]);
    expectAllSubmenusShow(expected);

    // The next rebuild starts from the extended names and settles on the same ones.
    [provider signalUpdateMenu];
    LVOpenRecentMenu([provider copyToRecentSubmenu]);
    expectAllSubmenusShow(expected);
}

TEST_F(MenuRebuild, ItemsCarryAccountAndPathAsToolTipAndTheMailboxIcon)
{
    MailAccount *corp = [store addAccountNamed:@"Corp" type:@"IMAP" serverPathPrefix:@"INBOX"];
    ASSERT_TRUE([corp isKindOfClass:[IMAPAccount class]]);
    // A mailbox whose account is gone: Mail detaches it from the account.
    MailAccount *gone = [[MailAccount alloc] initWithDisplayName:@"Gone" path:nil];
    MailboxUid *orphan = [[gone createMailboxWithRelativePath:@"Orphan"] retain];
    [gone release];
    ASSERT_TRUE([orphan account] == nil);
    struct Row {
        MailboxUid *mailbox;
        NSString *title;
        NSString *toolTip;
    };
    const Row rows[] = {
        { mailbox(home, @"Projects/Old/Taxes"), @"Taxes", @"Home/Projects/Old/Taxes" },
        { mailbox(corp, @"INBOX/Lists/Weekly"), @"Weekly", @"Corp/Lists/Weekly" },
        { orphan, @"Orphan", @"[error: NULL accountName]/Orphan" },
    };
    for (const Row &row : rows)
        use(row.mailbox);

    LVOpenRecentMenu([provider goToRecentSubmenu]);

    for (const Row &row : rows) {
        SCOPED_TRACE([row.title UTF8String]);
        NSImage *icon = [MailboxesController iconForMailboxUid:row.mailbox smallSize:YES];
        for (NSUInteger family = 0; family < 5; family++) {
            NSMenu *menu = submenu(family);
            NSInteger index = [menu indexOfItemWithTitle:row.title];
            ASSERT_GE(index, 0) << LVFamilyNames[family];
            NSMenuItem *item = (NSMenuItem *)[menu itemAtIndex:index];
            EXPECT_NSEQ(row.toolTip, [item toolTip]);
            ASSERT_TRUE([item image] != nil);
            EXPECT_EQ(icon, [item image]);
            EXPECT_EQ(16, (int)[[item image] size].width);
        }
    }
    [orphan release];
}

TEST_F(MenuRebuild, SeveralChangesBeforeAnOpeningCostOneRebuild)
{
    use(mailbox(home, @"Archive"));
    use(mailbox(home, @"Lists"));
    [provider signalUpdateMenu];
    [provider signalUpdateMenu];
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    expectAllSubmenusShow(@[ @"Archive", @"Lists" ]);
    EXPECT_FALSE([[provider valueForKey:@"_updateMenu"] boolValue]);

    // The next change shows at the next opening of any of them.
    use(mailbox(work, @"Clients"));
    LVOpenRecentMenu([provider copyToRecentContextualSubmenu]);
    expectAllSubmenusShow(@[ @"Archive", @"Clients", @"Lists" ]);
    EXPECT_FALSE([[provider valueForKey:@"_updateMenu"] boolValue]);
}

TEST_F(MenuRebuild, OpeningTheContextualCopySubmenuRebuildsTheMenuBarOnesToo)
{
    NSMenu *contextual = [[MHMailMenus newMessageListContextualMenu] autorelease];
    [provider createContextualSubmenusUnderMenu:contextual];
    use(mailbox(home, @"Archive"));

    LVOpenRecentMenu([provider copyToRecentContextualSubmenu]);

    expectAllSubmenusShow(@[ @"Archive" ]);
}

TEST_F(MenuRebuild, WithoutWorkingMenusTheListIsLeftInNameOrderAndClearItemsFollowIt)
{
    setSortType(2);
    use(mailbox(work, @"Clients"));
    use(mailbox(home, @"Lists"), 3);
    use(mailbox(home, @"Reports"), 2);
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    NSArray *byUse = @[ @"Lists", @"Reports", @"Clients" ];
    expectAllSubmenusShow(byUse);

    // Failing to place the contextual items stops every later rebuild.
    [provider createContextualSubmenusUnderMenu:nil];
    ASSERT_FALSE([[provider valueForKey:@"_menusOK"] boolValue]);
    use(mailbox(home, @"Travel"));
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    EXPECT_FALSE([[provider valueForKey:@"_updateMenu"] boolValue]);
    expectAllSubmenusShow(byUse);

    [provider updateMenus];
    EXPECT_NSEQ((@[ @"Clients", @"Lists", @"Reports", @"Travel" ]), listedMailboxNames());
    expectAllSubmenusShow(byUse);

    [provider clearRecentMailboxes];
    [provider updateMenus];
    for (NSUInteger family = 0; family < 5; family++) {
        NSMenu *menu = submenu(family);
        EXPECT_FALSE([(NSMenuItem *)[menu itemAtIndex:[menu numberOfItems] - 1] isEnabled]) << LVFamilyNames[family];
        EXPECT_NSEQ(byUse, LVTitlesAboveSeparator(menu));
    }
}

TEST_F(MenuRebuild, WithoutAListNothingIsTouched)
{
    use(mailbox(home, @"Archive"));
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    [provider setValue:nil forKey:@"_recentMailboxes"];

    [provider updateMenus];
    expectAllSubmenusShow(@[ @"Archive" ]);
    [provider signalUpdateMenu];
    LVOpenRecentMenu([provider goToRecentSubmenu]);
    expectAllSubmenusShow(@[ @"Archive" ]);
}

TEST_F(MenuRebuild, MailboxDeletedInTheStoreIsPrunedAtTheNextOpening)
{
    MailboxUid *workArchive = mailbox(work, @"Archive");
    use(mailbox(home, @"Archive"));
    use(workArchive);
    use(mailbox(home, @"Lists"));
    LVOpenRecentMenu([provider goToRecentSubmenu]);
    expectAllSubmenusShow(@[ @"Archive (Home)", @"Archive (Work)", @"Lists" ]);

    ASSERT_TRUE([work deleteMailbox:workArchive reflectToServer:YES]);
    // What Mail's deletion hook reports; the work waits for the next opening.
    [provider signalRemoveDeletedMailboxes];
    expectAllSubmenusShow(@[ @"Archive (Home)", @"Archive (Work)", @"Lists" ]);

    LVOpenRecentMenu([provider moveToRecentContextualSubmenu]);
    // The remaining Archive has no namesake left and shows its bare name.
    expectAllSubmenusShow(@[ @"Archive", @"Lists" ]);
    EXPECT_NSEQ((@[ @"Archive", @"Lists" ]), listedMailboxNames());
    EXPECT_FALSE([[provider valueForKey:@"_removeDeletedMailboxes"] boolValue]);
}
