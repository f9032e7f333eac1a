/*
 * Choosing an entry of a recent submenu: the item's action goes up Mail's responder
 * chain to the viewer in front, which moves or copies its selected messages (files on
 * disk), shows the mailbox, or empties the list.
 */
#import "LVMailFixture.h"
#import "MailboxesController.h"
#import "LorvaneMailbox.h"
#import "MessageViewer-Recent.h"

#include <initializer_list>

namespace {

class RecentActions : public testing::Test {
protected:
    LorvaneBundle_Provider *provider = nil;
    MailApp *mail = nil;
    MessageViewer *viewer = nil;
    MailboxUid *inbox = nil;

    // Three recent mailboxes, shown by name: Family, Receipts, Travel.
    void SetUp() override
    {
        provider = LVStartMailWithSampleStore();
        ASSERT_TRUE(provider != nil);
        mail = (MailApp *)NSApp;
        viewer = [mail openMessageViewer];
        inbox = LVSampleMailbox(@"Home/Inbox");
        LVUseMailboxes(viewer, inbox, @[ LVSampleMailbox(@"Home/Travel"), LVSampleMailbox(@"Home/Family"), LVSampleMailbox(@"Home/Receipts") ]);
        LVOpenRecentMenu([provider moveToRecentSubmenu]);
        ASSERT_NSEQ((@[ @"Family", @"Receipts", @"Travel" ]), LVTitlesAboveSeparator([provider moveToRecentSubmenu]));
        MHClearRecordedAlerts();
        LVClearLog();
    }

    NSArray *criticalPanels()
    {
        NSMutableArray *panels = [NSMutableArray array];
        for (NSDictionary *alert in MHRecordedAlerts())
            if ([[alert objectForKey:MHAlertKindKey] isEqualToString:MHAlertKindCriticalPanel])
                [panels addObject:alert];
        return panels;
    }
};

} // namespace

TEST_F(RecentActions, ChoosingTheThirdItemMovesOrCopiesTheSelectionToThatMailboxFromEverySubmenu)
{
    MailboxUid *travel = LVSampleMailbox(@"Home/Travel");
    struct Row {
        const char *name;
        NSMenu *submenu;
        BOOL deletesOriginals;
    };
    const Row rows[] = {
        { "menu-bar Move to Recent", [provider moveToRecentSubmenu], YES },
        { "menu-bar Copy to Recent", [provider copyToRecentSubmenu], NO },
        { "contextual Move to Recent", [provider moveToRecentContextualSubmenu], YES },
        { "contextual Copy to Recent", [provider copyToRecentContextualSubmenu], NO },
    };
    for (const Row &row : rows) {
        LVOpenRecentMenu(row.submenu);
        ASSERT_NSEQ(@"Travel", [[row.submenu itemAtIndex:2] title]) << row.name;
        NSArray *chosen = LVSelectFirstMessages(viewer, inbox, 1);
        ASSERT_EQ(1u, [chosen count]) << row.name;
        NSUInteger inboxMessages = [[inbox messagePaths] count];
        NSUInteger travelMessages = [[travel messagePaths] count];
        int travelUses = [[provider getRecentMailboxAtIndex:[provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)travel]] accesses];

        LVChooseItem(row.submenu, 2);

        EXPECT_EQ(travelMessages + 1, [[travel messagePaths] count]) << row.name;
        EXPECT_EQ(row.deletesOriginals ? inboxMessages - 1 : inboxMessages, [[inbox messagePaths] count]) << row.name;
        for (NSString *path in chosen)
            EXPECT_EQ(!row.deletesOriginals, (bool)[[NSFileManager defaultManager] fileExistsAtPath:path]) << row.name;
        MailboxesController *controller = [mail mailboxesController];
        EXPECT_EQ(travel, [controller currentTransferMailbox]) << row.name;
        EXPECT_EQ(row.deletesOriginals, [controller currentTransferDeletesOriginals]) << row.name;
        // Used once by Mail's transfer and once more by the action itself.
        int usesNow = [[provider getRecentMailboxAtIndex:[provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)travel]] accesses];
        EXPECT_EQ(travelUses + 2, usesNow) << row.name;
    }
    EXPECT_EQ(0u, [criticalPanels() count]);
}

TEST_F(RecentActions, AnItemTitledWithAnExtendedDuplicateNamePassesTheCheck)
{
    MailboxUid *workArchive = LVSampleMailbox(@"Work/Archive");
    LVUseMailboxes(viewer, inbox, @[ LVSampleMailbox(@"Home/Archive"), workArchive ]);
    NSMenu *copyMenu = [provider copyToRecentSubmenu];
    LVOpenRecentMenu(copyMenu);
    ASSERT_NSEQ((@[ @"Archive (Home)", @"Archive (Work)", @"Family", @"Receipts", @"Travel" ]), LVTitlesAboveSeparator(copyMenu));
    NSArray *before = LVMessageFileNames(workArchive);
    LVSelectFirstMessages(viewer, inbox, 1);

    LVChooseItem(copyMenu, 1);

    EXPECT_EQ([before count] + 1, [LVMessageFileNames(workArchive) count]);
    EXPECT_EQ(0u, [criticalPanels() count]);
}

TEST_F(RecentActions, AnItemWhoseMailboxWasRenamedSinceTheLastOpeningIsRefusedWithAnAlert)
{
    MailboxUid *travel = LVSampleMailbox(@"Home/Travel");
    NSMenu *moveMenu = [provider moveToRecentSubmenu];
    ASSERT_TRUE([[travel account] renameMailbox:travel toName:@"Journeys"]);
    NSArray *inboxBefore = LVMessageFileNames(inbox);
    NSArray *travelBefore = LVMessageFileNames(travel);
    NSArray *usesBefore = LVListedAccessCounts(provider);
    LVSelectFirstMessages(viewer, inbox, 2);

    LVChooseItem(moveMenu, 2);

    NSArray *panels = criticalPanels();
    ASSERT_EQ(1u, [panels count]);
    NSDictionary *panel = [panels firstObject];
    EXPECT_NSEQ(@"Lorvane Mail Plugin", [panel objectForKey:MHAlertTitleKey]);
    EXPECT_NSEQ(@"Menuitem title does not match mailbox UID name in MessageViewer-Recent:transferToRecent. Transfer cancelled. Please notify the developer.",
                [panel objectForKey:MHAlertMessageKey]);
    EXPECT_NSEQ((@[ @"OK" ]), [panel objectForKey:MHAlertButtonsKey]);
    EXPECT_NSEQ((@[ @"Menuitem title does not match mailbox UID name in MessageViewer-Recent:transferToRecent. Transfer cancelled.",
                    @"Index: 2, Title: \"Travel\"" ]),
                LVLoggedLines());
    EXPECT_NSEQ(inboxBefore, LVMessageFileNames(inbox));
    EXPECT_NSEQ(travelBefore, LVMessageFileNames(travel));
    EXPECT_NSEQ(usesBefore, LVListedAccessCounts(provider));
}

TEST_F(RecentActions, AnItemFromAnotherSubmenuDoesNothing)
{
    NSArray *inboxBefore = LVMessageFileNames(inbox);
    NSArray *usesBefore = LVListedAccessCounts(provider);
    LVSelectFirstMessages(viewer, inbox, 1);
    NSMenuItem *copyItem = (NSMenuItem *)[[provider copyToRecentSubmenu] itemAtIndex:0];
    NSMenuItem *stranger = [[[NSMenuItem alloc] initWithTitle:@"Family" action:@selector(moveToRecentFromSubmenu:) keyEquivalent:@""] autorelease];

    for (NSMenuItem *sender : { copyItem, stranger }) {
        [NSApp sendAction:@selector(moveToRecentFromSubmenu:) to:nil from:sender];
        [NSApp sendAction:@selector(goToRecentFromSubmenu:) to:nil from:sender];
    }

    EXPECT_NSEQ(inboxBefore, LVMessageFileNames(inbox));
    EXPECT_NSEQ(usesBefore, LVListedAccessCounts(provider));
    EXPECT_NSEQ((@[ inbox ]), [viewer selectedMailboxes]);
    EXPECT_EQ(0u, [MHRecordedAlerts() count]);
    EXPECT_EQ(0u, [LVLoggedLines() count]);
}

TEST_F(RecentActions, GoToRecentSelectsTheMailboxInTheFrontmostViewerAndLeavesTheListAlone)
{
    MessageViewer *front = [mail openMessageViewer];
    ASSERT_EQ((id)front, [provider frontmostMessageViewer]);
    NSArray *behindSelection = [viewer selectedMailboxes];
    NSArray *namesBefore = LVListedMailboxNames(provider);
    NSArray *usesBefore = LVListedAccessCounts(provider);
    NSMenu *goToMenu = [provider goToRecentSubmenu];
    LVOpenRecentMenu(goToMenu);

    // Sent straight to the viewer behind: the choice still shows in the one in front.
    [NSApp sendAction:@selector(goToRecentFromSubmenu:) to:viewer from:[goToMenu itemAtIndex:1]];

    EXPECT_NSEQ((@[ LVSampleMailbox(@"Home/Receipts") ]), [front selectedMailboxes]);
    EXPECT_NSEQ(behindSelection, [viewer selectedMailboxes]);
    EXPECT_NSEQ(namesBefore, LVListedMailboxNames(provider));
    EXPECT_NSEQ(usesBefore, LVListedAccessCounts(provider));

    // Through the responder chain, as a click sends it.
    LVChooseItem(goToMenu, 2);
    EXPECT_NSEQ((@[ LVSampleMailbox(@"Home/Travel") ]), [front selectedMailboxes]);
    EXPECT_NSEQ(usesBefore, LVListedAccessCounts(provider));
}

TEST_F(RecentActions, ClearMenuInAnySubmenuEmptiesTheOneListOfAllFive)
{
    struct Row {
        const char *name;
        NSMenu *submenu;
    };
    const Row rows[] = {
        { "menu-bar Move to Recent", [provider moveToRecentSubmenu] },
        { "menu-bar Copy to Recent", [provider copyToRecentSubmenu] },
        { "Go to Recent", [provider goToRecentSubmenu] },
        { "contextual Move to Recent", [provider moveToRecentContextualSubmenu] },
        { "contextual Copy to Recent", [provider copyToRecentContextualSubmenu] },
    };
    for (const Row &row : rows) {
        LVUseMailboxes(viewer, inbox, @[ LVSampleMailbox(@"Work/Clients"), LVSampleMailbox(@"Home/Travel") ]);
        LVOpenRecentMenu(row.submenu);
        ASSERT_GT([LVListedMailboxNames(provider) count], 0u) << row.name;
        NSInteger clearIndex = [row.submenu numberOfItems] - 1;
        ASSERT_NSEQ(@"Clear Menu", [[row.submenu itemAtIndex:clearIndex] title]) << row.name;

        LVChooseItem(row.submenu, clearIndex);

        EXPECT_NSEQ(@[], LVListedMailboxNames(provider)) << row.name;
        // Every submenu shows it the next time one opens.
        LVOpenRecentMenu([provider goToRecentSubmenu]);
        for (const Row &shown : rows)
            EXPECT_NSEQ(@[], LVTitlesAboveSeparator(shown.submenu)) << row.name << " seen in " << shown.name;
    }
}
