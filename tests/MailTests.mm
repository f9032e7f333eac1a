/*
 * Lorvane inside Mail: Mail's events reaching the list through the patched classes, and the
 * recent actions reaching Mail through its responder chain. Mail is the stand-in with the
 * built bundle loaded as Mail loads it, and its sample store; nothing here calls a hook by
 * name, and Mail must behave as it does without the plug-in.
 */
#import "LVLorvane.h"
#import "MessageTransfer.h"
#import "MHBundleLoader.h"
#import "MHSystemVersion.h"
#import "MVMailBundle.h"
#import "TableViewManager-Recent.h"

#include <dlfcn.h>

#include <initializer_list>

// The stand-in Mail has every class compiled in, so a test hides one: this executable
// exports its own NSClassFromString, which the loaded bundle binds to before Foundation's.
static const char *hiddenClassName;

extern "C" __attribute__((visibility("default"))) Class NSClassFromString(NSString *name)
{
    static Class (*foundationLookup)(NSString *) = (Class(*)(NSString *))dlsym(RTLD_NEXT, "NSClassFromString");
    if (hiddenClassName != nullptr && [name isEqualToString:@(hiddenClassName)])
        return Nil;
    return foundationLookup(name);
}

// A viewer of a more special kind, and a toolbar delegate that is no viewer.
@interface MTSpecialViewer : MessageViewer
@end
@implementation MTSpecialViewer
@end

@interface MTToolbarOwner : NSObject
@end
@implementation MTToolbarOwner
- (NSToolbarItem *)toolbar:(NSToolbar *)toolbar itemForItemIdentifier:(NSString *)identifier willBeInsertedIntoToolbar:(BOOL)flag
{
    return nil;
}
- (NSArray *)toolbarDefaultItemIdentifiers:(NSToolbar *)toolbar
{
    return @[];
}
- (NSArray *)toolbarAllowedItemIdentifiers:(NSToolbar *)toolbar
{
    return @[];
}
@end

namespace {

// Mail with the sample store and a viewer; Family, Receipts and Travel were used, in that
// order, and an opening shows them.
class Mail : public testing::Test {
protected:
    MailApp *mail = nil;
    LorvaneBundle_Provider *provider = nil;
    MessageViewer *viewer = nil;
    MailboxUid *inbox = nil;

    void SetUp() override
    {
        mail = LVStartMail();
        LVSampleStore();
        provider = [LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider];
        ASSERT_TRUE(provider != nil);
        viewer = [mail openMessageViewer];
        inbox = LVSampleMailbox(@"Home/Inbox");
        LVUseMailboxes(viewer, inbox, @[ LVSampleMailbox(@"Home/Travel"), LVSampleMailbox(@"Home/Family"), LVSampleMailbox(@"Home/Receipts") ]);
        ASSERT_TRUE(LVSubmenusShow(provider, (@[ @"Family", @"Receipts", @"Travel" ])));
        MHClearRecordedAlerts();
        LVClearLog();
    }

    NSUInteger messages(MailboxUid *mailbox) { return [[mailbox messagePaths] count]; }
    int uses(MailboxUid *mailbox) { return [[provider getRecentMailboxAtIndex:[provider getRecentMailboxIndexWithUid:LVUid(mailbox)]] accesses]; }
};

} // namespace

TEST_F(Mail, ATransferFromAViewerListsItsDestinationOnceAndMailCompletesIt)
{
    MailboxUid *archive = LVSampleMailbox(@"Home/Archive");
    NSUInteger before = messages(archive);
    LVUseMailboxes(viewer, inbox, @[ archive, archive ]);
    EXPECT_EQ(before + 2, messages(archive));
    EXPECT_EQ((id)viewer, [[viewer lastTransfer] delegate]);
    EXPECT_NSEQ(@"Archive", [LVListedNames(provider) firstObject]);
    EXPECT_EQ(2, uses(archive));
}

TEST_F(Mail, OnlyATransferWhoseDelegateIsExactlyAMessageViewerWithADestinationCounts)
{
    // Viewers live as long as Mail, like the ones Mail opens.
    MTSpecialViewer *special = [[MTSpecialViewer alloc] init];
    NSArray *paths = [inbox messagePaths];
    MailboxUid *archive = LVSampleMailbox(@"Home/Archive");
    struct Row {
        const char *name;
        id delegate;
        NSArray *messages;
        BOOL counts;
    } rows[] = {
        { "a subclass of MessageViewer", special, @[ [paths firstObject] ], NO },
        { "an object that is no viewer", [[[MTToolbarOwner alloc] init] autorelease], @[ [paths firstObject] ], NO },
        { "no delegate", nil, @[ [paths firstObject] ], NO },
        { "a viewer, but a transfer without operations", viewer, @[], NO },
        { "a MessageViewer itself", viewer, @[ [paths firstObject] ], YES },
    };
    for (const Row &row : rows) {
        MessageTransfer *transfer = [[[MessageTransfer alloc] initWithMessagesAtPaths:row.messages destinationMailbox:archive deleteOriginals:NO] autorelease];
        [transfer setDelegate:row.delegate];
        EXPECT_EQ(row.delegate, [transfer delegate]) << row.name;
        EXPECT_EQ(row.counts ? 0 : -1, [provider getRecentMailboxIndexWithUid:LVUid(archive)]) << row.name;
    }
}

TEST_F(Mail, OnlyTheFirstViewersToolbarPlacesTheContextualSubmenusAndTheViewerInFrontIsTheFrontmost)
{
    NSToolbar *unrelated = [[[NSToolbar alloc] initWithIdentifier:@"Unrelated"] autorelease];
    MTToolbarOwner *owner = [[[MTToolbarOwner alloc] init] autorelease];
    [unrelated setDelegate:owner];
    EXPECT_EQ((id)owner, [unrelated delegate]);
    // The first viewer was opened by the fixture; a second one gets nothing.
    MessageViewer *second = [mail openMessageViewer];
    NSMenu *firstMenu = [[[viewer messageList] tableView] menu], *secondMenu = [[[second messageList] tableView] menu];
    EXPECT_EQ(firstMenu, [[provider moveToRecentContextualSubmenu] supermenu]);
    EXPECT_EQ(firstMenu, [[provider copyToRecentContextualSubmenu] supermenu]);
    for (NSMenuItem *item in [secondMenu itemArray])
        EXPECT_FALSE([[item title] hasSuffix:@"to Recent"]) << [[item title] UTF8String];
    EXPECT_EQ((id)second, [[second valueForKey:@"_toolbar"] delegate]);
    // The message list hands its contextual menu over.
    EXPECT_EQ(secondMenu, [(TableViewManager_LVAdditions *)[second messageList] recentContextualMenu]);

    EXPECT_EQ((id)second, [provider frontmostMessageViewer]);
    [[viewer window] makeKeyAndOrderFront:nil];
    EXPECT_EQ((id)viewer, [provider frontmostMessageViewer]);
    EXPECT_EQ(viewer, [mail frontmostMessageViewer]);
}

TEST_F(Mail, DeletionsRenamesAndAccountsLeavingShowAtTheNextOpening)
{
    MailAccount *lists = [LVSampleStore() accountNamed:@"Lists"];
    // An IMAP account's inherited deletion, and a POP account's own.
    MailboxUid *announcements = [lists createMailboxWithRelativePath:@"Announcements"];
    MailboxUid *weekly = [lists createMailboxWithRelativePath:@"Weekly"];
    MailboxUid *travel = LVSampleMailbox(@"Home/Travel"), *family = LVSampleMailbox(@"Home/Family");
    LVUseMailboxes(viewer, inbox, @[ announcements, weekly ]);
    ASSERT_TRUE(LVSubmenusShow(provider, (@[ @"Announcements", @"Family", @"Receipts", @"Travel", @"Weekly" ])));
    NSString *folder = [travel fullPath];

    EXPECT_TRUE([[travel account] deleteMailbox:travel reflectToServer:YES]);
    EXPECT_FALSE([[NSFileManager defaultManager] fileExistsAtPath:folder]);
    EXPECT_FALSE([[travel account] deleteMailbox:travel reflectToServer:YES]);
    EXPECT_TRUE([lists deleteMailbox:announcements reflectToServer:YES]);
    EXPECT_NSEQ((@[ @"Announcements", @"Family", @"Receipts", @"Travel", @"Weekly" ]), LVTitlesAboveSeparator([provider goToRecentSubmenu]));
    EXPECT_TRUE(LVSubmenusShow(provider, (@[ @"Family", @"Receipts", @"Weekly" ])));

    [viewer setSelectedMailboxes:@[ family ]];
    ASSERT_TRUE([mail renameMailbox:family toName:@"Kin"]);
    EXPECT_TRUE([[[viewer window] title] hasPrefix:@"Kin"]) << [[[viewer window] title] UTF8String];

    NSMenu *goTo = [MHMailMenus goToMenuInMainMenu:[mail mainMenu]];
    NSMutableArray *remaining = [[[MailAccount activeAccounts] mutableCopy] autorelease];
    [remaining removeObjectIdenticalTo:lists];
    [mail setActiveAccounts:remaining];
    EXPECT_TRUE([goTo itemWithTitle:@"Lists"] == nil);
    EXPECT_TRUE(LVSubmenusShow(provider, (@[ @"Kin", @"Receipts" ])));
}

TEST_F(Mail, QuittingWritesTheListAndMailStillHandlesItsTermination)
{
    [[NSFileManager defaultManager] removeItemAtPath:LVPreferencesFilePath() error:NULL];
    [mail announceTermination];
    EXPECT_TRUE([[mail valueForKey:@"_terminationAnnounced"] boolValue]);
    EXPECT_EQ([LVListedNames(provider) count], [[LVReadPlist(LVPreferencesFilePath()) objectForKey:@"RecentMailboxes"] count]);
}

TEST_F(Mail, ChoosingAnItemMovesOrCopiesTheSelectionThereAndCountsAUse)
{
    MailboxUid *travel = LVSampleMailbox(@"Home/Travel");
    struct Row {
        NSMenu *submenu;
        BOOL deletesOriginals;
    } rows[] = {
        { [provider moveToRecentSubmenu], YES },
        { [provider copyToRecentSubmenu], NO },
        { [provider moveToRecentContextualSubmenu], YES },
        { [provider copyToRecentContextualSubmenu], NO },
    };
    for (const Row &row : rows) {
        LVOpenRecentMenu(row.submenu);
        NSString *chosen = [LVSelectFirstMessages(viewer, inbox, 1) firstObject];
        NSUInteger inboxBefore = messages(inbox), travelBefore = messages(travel);
        int usesBefore = uses(travel);

        LVChooseItem(row.submenu, 2);

        EXPECT_EQ(travelBefore + 1, messages(travel)) << [[row.submenu title] UTF8String];
        EXPECT_EQ(inboxBefore - row.deletesOriginals, messages(inbox));
        EXPECT_EQ(!row.deletesOriginals, (bool)[[NSFileManager defaultManager] fileExistsAtPath:chosen]);
        EXPECT_EQ(travel, [[mail mailboxesController] currentTransferMailbox]);
        EXPECT_EQ(row.deletesOriginals, [[mail mailboxesController] currentTransferDeletesOriginals]);
        // Once by Mail's transfer, once more by the action itself.
        EXPECT_EQ(usesBefore + 2, uses(travel));
    }
    // An extended duplicate name passes the title check too.
    MailboxUid *workArchive = LVSampleMailbox(@"Work/Archive");
    LVUseMailboxes(viewer, inbox, @[ LVSampleMailbox(@"Home/Archive"), workArchive ]);
    ASSERT_TRUE(LVSubmenusShow(provider, (@[ @"Archive (Home)", @"Archive (Work)", @"Family", @"Receipts", @"Travel" ])));
    NSUInteger before = messages(workArchive);
    LVSelectFirstMessages(viewer, inbox, 1);
    LVChooseItem([provider copyToRecentSubmenu], 1);
    EXPECT_EQ(before + 1, messages(workArchive));
    EXPECT_EQ(0u, [MHRecordedAlerts() count]);
}

TEST_F(Mail, AnItemWhoseMailboxWasRenamedSinceTheOpeningIsRefusedWithAnAlert)
{
    MailboxUid *travel = LVSampleMailbox(@"Home/Travel");
    ASSERT_TRUE([[travel account] renameMailbox:travel toName:@"Journeys"]);
    NSUInteger inboxBefore = messages(inbox), travelBefore = messages(travel);
    NSArray *usesBefore = LVListedCounts(provider);
    LVSelectFirstMessages(viewer, inbox, 2);

    LVChooseItem([provider moveToRecentSubmenu], 2);

    ASSERT_EQ(1u, [MHRecordedAlerts() count]);
    NSDictionary *panel = [MHRecordedAlerts() firstObject];
    EXPECT_NSEQ(MHAlertKindCriticalPanel, [panel objectForKey:MHAlertKindKey]);
    EXPECT_NSEQ(@"Lorvane Mail Plugin", [panel objectForKey:MHAlertTitleKey]);
    NSString *text = @"Menuitem title does not match mailbox UID name in MessageViewer-Recent:transferToRecent. Transfer cancelled.";
    EXPECT_NSEQ([text stringByAppendingString:@" Please notify the developer."], [panel objectForKey:MHAlertMessageKey]);
    EXPECT_NSEQ(@[ @"OK" ], [panel objectForKey:MHAlertButtonsKey]);
    EXPECT_EQ(1u, LVLogCount(text));
    EXPECT_EQ(1u, LVLogCount(@"Index: 2, Title: \"Travel\""));
    EXPECT_EQ(inboxBefore, messages(inbox));
    EXPECT_EQ(travelBefore, messages(travel));
    EXPECT_NSEQ(usesBefore, LVListedCounts(provider));
}

TEST_F(Mail, GoToRecentShowsTheMailboxInTheViewerInFrontAndItemsOfOtherMenusDoNothing)
{
    MessageViewer *front = [mail openMessageViewer];
    NSArray *behind = [viewer selectedMailboxes], *usesBefore = LVListedCounts(provider);
    NSMenu *goTo = [provider goToRecentSubmenu];
    // Sent straight to the viewer behind: the choice still shows in the one in front.
    [NSApp sendAction:@selector(goToRecentFromSubmenu:) to:viewer from:[goTo itemAtIndex:1]];
    EXPECT_NSEQ(@[ LVSampleMailbox(@"Home/Receipts") ], [front selectedMailboxes]);
    EXPECT_NSEQ(behind, [viewer selectedMailboxes]);
    LVChooseItem(goTo, 2);
    EXPECT_NSEQ(@[ LVSampleMailbox(@"Home/Travel") ], [front selectedMailboxes]);
    EXPECT_NSEQ(usesBefore, LVListedCounts(provider));

    NSUInteger inboxBefore = messages(inbox);
    LVSelectFirstMessages(front, inbox, 1);
    NSMenuItem *stranger = [[[NSMenuItem alloc] initWithTitle:@"Family" action:@selector(moveToRecentFromSubmenu:) keyEquivalent:@""] autorelease];
    for (NSMenuItem *sender : { (NSMenuItem *)[[provider copyToRecentSubmenu] itemAtIndex:0], stranger }) {
        [NSApp sendAction:@selector(moveToRecentFromSubmenu:) to:nil from:sender];
        [NSApp sendAction:@selector(goToRecentFromSubmenu:) to:nil from:sender];
    }
    EXPECT_EQ(inboxBefore, messages(inbox));
    EXPECT_NSEQ(usesBefore, LVListedCounts(provider));
    EXPECT_NSEQ(@[ inbox ], [front selectedMailboxes]);
    EXPECT_EQ(0u, [MHRecordedAlerts() count]);
}

// Without a provider (an old system turned the plug-in away), Mail works as it did.
TEST(MailWithoutProvider, EveryPatchedMethodStillDoesWhatMailDoes)
{
    MHSetSystemVersion(0x1050);
    MailApp *mail = LVStartMail();
    ASSERT_TRUE([LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider] == nil);
    MessageViewer *first = [mail openMessageViewer];
    MessageViewer *second = [mail openMessageViewer];
    EXPECT_EQ((id)first, [[first valueForKey:@"_toolbar"] delegate]);
    EXPECT_EQ(second, [mail frontmostMessageViewer]);
    [[first window] makeKeyAndOrderFront:nil];
    EXPECT_EQ(first, [mail frontmostMessageViewer]);

    MailboxUid *inbox = LVSampleMailbox(@"Home/Inbox"), *travel = LVSampleMailbox(@"Home/Travel");
    NSUInteger inboxMessages = [[inbox messagePaths] count], travelMessages = [[travel messagePaths] count];
    LVSelectFirstMessages(first, inbox, 2);
    [first transferSelectedMessagesToMailbox:travel deleteOriginals:YES];
    EXPECT_EQ((id)first, [[first lastTransfer] delegate]);
    EXPECT_EQ(inboxMessages - 2, [[inbox messagePaths] count]);
    EXPECT_EQ(travelMessages + 2, [[travel messagePaths] count]);

    ASSERT_TRUE([mail renameMailbox:travel toName:@"Journeys"]);
    [first setSelectedMailboxes:@[ travel ]];
    EXPECT_TRUE([[[first window] title] hasPrefix:@"Journeys"]);
    EXPECT_TRUE([[travel account] deleteMailbox:travel reflectToServer:YES]);
    EXPECT_FALSE([[travel account] deleteMailbox:travel reflectToServer:YES]);
    [mail announceTermination];
    EXPECT_TRUE([[mail valueForKey:@"_terminationAnnounced"] boolValue]);
    EXPECT_FALSE([[NSFileManager defaultManager] fileExistsAtPath:LVPreferencesFilePath()]);
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"SWIZZLE Error - "));
}

namespace {

struct MissingClass {
    const char *name;
    bool transfersReachTheList;
    bool menusFollow; // without the message list's menu, the contextual submenus fail and rebuilds stop
};

void PrintTo(const MissingClass &row, std::ostream *out)
{
    *out << row.name;
}

class MailWithout : public testing::TestWithParam<MissingClass> {
};

// Mail's classes change name from one version to the next: a Mail without one of the classes
// Lorvane patches still starts, works as Mail, and keeps the rest of Lorvane.
TEST_P(MailWithout, AClassLorvanePatchesStartsSilentlyAndKeepsTheRest)
{
    hiddenClassName = GetParam().name;
    MailApp *mail = LVStartMail();
    LVSampleStore();
    LorvaneBundle_Provider *provider = [LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider];
    hiddenClassName = nullptr;
    ASSERT_TRUE(provider != nil);
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"SWIZZLE Error - "));
    EXPECT_EQ(0u, [MHRecordedAlerts() count]);

    MailboxUid *archive = LVSampleMailbox(@"Home/Archive");
    NSUInteger before = [[archive messagePaths] count];
    LVUseMailboxes([mail openMessageViewer], LVSampleMailbox(@"Home/Inbox"), @[ archive ]);
    EXPECT_EQ(before + 1, [[archive messagePaths] count]);
    EXPECT_EQ(GetParam().transfersReachTheList, [LVListedNames(provider) containsObject:@"Archive"]);
    EXPECT_TRUE(LVSubmenusShow(provider, GetParam().transfersReachTheList && GetParam().menusFollow ? @[ @"Archive" ] : @[]));
}

INSTANTIATE_TEST_SUITE_P(Mail, MailWithout,
                         testing::Values(MissingClass{ "AccountPreferences", true, true }, MissingClass{ "MailAccount", true, true },
                                         MissingClass{ "MailApp", true, true }, MissingClass{ "MessageTransfer", false, true },
                                         MissingClass{ "TableViewManager", true, false }),
                         [](const testing::TestParamInfo<MissingClass> &info) { return std::string(info.param.name); });

} // namespace

// The classes a transfer needs are looked for at each transfer until Mail has them.
TEST(MailWithoutAtFirst, AClassMissingAtATransferIsLookedForAgainAtTheNext)
{
    MailApp *mail = LVStartMail();
    LVSampleStore();
    LorvaneBundle_Provider *provider = [LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider];
    MessageViewer *viewer = [mail openMessageViewer];
    NSArray *paths = @[ [[LVSampleMailbox(@"Home/Inbox") messagePaths] firstObject] ];
    MailboxUid *archive = LVSampleMailbox(@"Home/Archive");
    for (const char *missing : { "MessageViewer", "MailboxUid", (const char *)nullptr }) {
        hiddenClassName = missing;
        MessageTransfer *transfer = [[MessageTransfer alloc] initWithMessagesAtPaths:paths destinationMailbox:archive deleteOriginals:NO];
        [transfer setDelegate:viewer];
        [transfer release];
        EXPECT_EQ(missing != nullptr ? -1 : 0, [provider getRecentMailboxIndexWithUid:LVUid(archive)]) << (missing ?: "none");
    }
    hiddenClassName = nullptr;
}

TEST_F(Mail, AnItemWhoseMailboxWasDeletedGoesToMailWhichMovesNothingAndTheNextOpeningDropsIt)
{
    struct Row {
        NSString *mailbox;
        NSMenu *submenu;
        BOOL transfers; // NO: "Go to Recent"
    } rows[] = {
        { @"Home/Travel", [provider moveToRecentSubmenu], YES },
        { @"Home/Family", [provider copyToRecentContextualSubmenu], YES },
        { @"Home/Receipts", [provider goToRecentSubmenu], NO },
    };
    for (const Row &row : rows) {
        MailboxUid *gone = LVSampleMailbox(row.mailbox);
        NSString *name = [gone displayName];
        LVOpenRecentMenu(row.submenu);
        NSInteger index = [row.submenu indexOfItemWithTitle:name];
        ASSERT_TRUE([mail deleteMailbox:gone]);
        LVSelectFirstMessages(viewer, inbox, 1);
        NSUInteger inboxBefore = messages(inbox);
        LVClearLog();

        EXPECT_FALSE(LVRaises([&] { LVChooseItem(row.submenu, index); })) << [name UTF8String];

        // The name still matches, so the choice goes to Mail as it is; Mail finds the mailbox gone.
        EXPECT_EQ(inboxBefore, messages(inbox));
        EXPECT_EQ(row.transfers ? 1u : 0u, LVLogCountWithPrefix(@"MailHost could not transfer")) << [name UTF8String];
        EXPECT_NSEQ(row.transfers ? @[ inbox ] : @[ gone ], [viewer selectedMailboxes]);
        LVOpenRecentMenu(row.submenu);
        EXPECT_FALSE([LVTitlesAboveSeparator(row.submenu) containsObject:name]);
    }
    EXPECT_EQ(0u, [MHRecordedAlerts() count]);
}
