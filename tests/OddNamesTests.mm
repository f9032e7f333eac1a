/*
 * Hostile and odd mailbox names, through everything that carries a name: the titles and
 * tool tips of the five recent submenus, the names that tell duplicates apart, the actions'
 * title check, the log, the debug dumps, and the preferences file across a restart of Mail.
 * A name is text everywhere: "%@" shows as "%@", never as a formatted value or a crash.
 *
 * The mailboxes are folders on disk, except two the stand-in store cannot make a folder
 * for, the empty name and one longer than a file name may be: those live in an account
 * held in memory.
 */
#import "LVLorvane.h"

#include <vector>

namespace {

struct OddName {
    NSString *account;  // "Home" and "Work" keep folders on disk; "Memory" is held in memory
    NSString *path;     // inside the account
    NSString *title;    // what every recent submenu shows for it
    MailboxUid *mailbox = nil;
};

std::vector<OddName> oddNames(void)
{
    NSString *longName = [@"" stringByPaddingToLength:1000 withString:@"A long name %@ %n " startingAtIndex:0];
    // Told apart by account and by a folder whose name is hostile too.
    NSString *twin = @"%s \"twin\" \\ 📬";
    NSString *folder = @"%n 📁 'F'";
    return {
        { @"Home", @"%@", @"%@" },
        { @"Home", @"%n", @"%n" },
        { @"Home", @"%s", @"%s" },
        { @"Home", @"%d%x", @"%d%x" },
        { @"Home", @"<\"Quotes\" & 'apostrophes'>", @"<\"Quotes\" & 'apostrophes'>" },
        { @"Home", @"back\\slash \\", @"back\\slash \\" },
        { @"Home", @"line\nbreak\r\ttab", @"line\nbreak\r\ttab" },
        { @"Home", @"שלום \u202Eمرحبا", @"שלום \u202Eمرحبا" },
        { @"Home", @"📬 😀 👩‍👩‍👧", @"📬 😀 👩‍👩‍👧" },
        // One group of exactly equal names, never joined by the one that differs in case.
        { @"Home", @"work", @"work (Home)" },
        { @"Work", @"work", @"work (Work)" },
        { @"Home", @"Work", @"Work" },
        { @"Home", @"Caf\u00e9", @"Caf\u00e9" },
        { @"Home", @"Cafe\u0301", @"Cafe\u0301" },
        { @"Home", [folder stringByAppendingFormat:@"/%@", twin], [twin stringByAppendingFormat:@" (Home/%@)", folder] },
        { @"Work", twin, [twin stringByAppendingString:@" (Work)"] },
        // The empty name at the top and inside a folder: the folder tells them apart.
        { @"Memory", @"", @"" },
        { @"Memory", @"%@ folder/", @" (%@ folder)" },
        { @"Memory", longName, longName },
    };
}

// The mailboxes enter the list the way Mail puts them there: messages are copied into each
// through the viewer, which hands its transfer to the patched MessageTransfer.
class OddNames : public testing::Test {
protected:
    MailApp *mail = nil;
    MHMailStore *store = nil;
    MailboxUid *source = nil;
    LorvaneBundle_Provider *provider = nil;
    MessageViewer *viewer = nil;
    std::vector<OddName> names = oddNames();

    void SetUp() override
    {
        mail = LVStartMail();
        store = LVMakeStore(@"odd-names");
        MailAccount *home = [store addAccountNamed:@"Home" type:@"POP" serverPathPrefix:nil];
        [store addAccountNamed:@"Work" type:@"POP" serverPathPrefix:nil];
        MailAccount *memory = [[[MailAccount alloc] initWithDisplayName:@"Memory" path:nil] autorelease];
        [MailAccount setActiveAccounts:[[store accounts] arrayByAddingObject:memory]];
        source = [home createMailboxWithRelativePath:@"Source"];
        for (int i = 0; i < 40; i++)
            [store addMessageTo:source from:@"sender@example.org" subject:@"Filed" date:nil];
        NSMutableArray *destinations = [NSMutableArray array];
        for (OddName &name : names) {
            MailAccount *account = [name.account isEqualToString:@"Memory"] ? memory : [store accountNamed:name.account];
            name.mailbox = [account createMailboxWithRelativePath:name.path];
            ASSERT_TRUE(name.mailbox != nil) << [name.path UTF8String];
            [destinations addObject:name.mailbox];
        }
        provider = LVStartProvider(30, nil);
        viewer = [mail openMessageViewer];
        LVUseMailboxes(viewer, source, destinations);
        MHClearRecordedAlerts();
        LVClearLog();
    }

    // Each name has its own item, with its own tool tip, at the index of its own mailbox.
    void expectEverySubmenuShowsEachName()
    {
        for (NSUInteger family = 0; family < 5; family++) {
            NSMenu *menu = [LVRecentSubmenus(provider) objectAtIndex:family];
            NSArray *titles = LVTitlesAboveSeparator(menu);
            EXPECT_EQ(names.size(), [titles count]) << LVFamilyNames[family];
            for (const OddName &name : names) {
                NSUInteger index = [titles indexOfObject:name.title];
                ASSERT_NE(NSNotFound, index) << LVFamilyNames[family] << ": " << [name.title UTF8String];
                NSString *toolTip = [name.account stringByAppendingFormat:@"/%@", name.path];
                EXPECT_NSEQ(toolTip, [[menu itemAtIndex:(NSInteger)index] toolTip]);
                EXPECT_EQ((id)name.mailbox, (id)[provider getRecentMailboxUidAtIndex:(int)index]) << [name.title UTF8String];
            }
        }
    }
};

} // namespace

TEST_F(OddNames, ShowAsTextInEverySubmenuWithTheirToolTipsAndChoosingEachActsOnItsOwnMailbox)
{
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    expectEverySubmenuShowsEachName();
    // The next opening starts from Mail's names again and settles on the same ones.
    [provider signalUpdateMenu];
    LVOpenRecentMenu([provider copyToRecentContextualSubmenu]);
    expectEverySubmenuShowsEachName();

    MailboxesController *controller = [mail mailboxesController];
    NSMutableArray *messagesBefore = [NSMutableArray array];
    for (const OddName &name : names)
        [messagesBefore addObject:@([[name.mailbox messagePaths] count])];
    for (const OddName &name : names) {
        for (NSUInteger family = 0; family < 5; family++) {
            NSMenu *submenu = [LVRecentSubmenus(provider) objectAtIndex:family];
            LVOpenRecentMenu(submenu);
            NSInteger index = [submenu indexOfItemWithTitle:name.title];
            ASSERT_GE(index, 0) << LVFamilyNames[family] << ": " << [name.title UTF8String];
            LVSelectFirstMessages(viewer, source, 1);
            LVChooseItem(submenu, index);
            if (family == 2)
                EXPECT_NSEQ(@[ name.mailbox ], [viewer selectedMailboxes]);
            else
                EXPECT_EQ(name.mailbox, [controller currentTransferMailbox]) << LVFamilyNames[family] << ": " << [name.title UTF8String];
        }
    }
    EXPECT_EQ(0u, [MHRecordedAlerts() count]);
    for (size_t i = 0; i < names.size(); i++) {
        if ([names[i].account isEqualToString:@"Memory"])
            continue;   // no folder: Mail was told where to, but nothing can arrive
        EXPECT_EQ([[messagesBefore objectAtIndex:i] unsignedIntegerValue] + 4, [[names[i].mailbox messagePaths] count])
            << [names[i].title UTF8String];
    }
}

TEST_F(OddNames, StaleTitlesAreRefusedAndLoggedAsTheyRead)
{
    NSMenu *moveMenu = [provider moveToRecentSubmenu];
    LVOpenRecentMenu(moveMenu);
    NSArray *titles = LVTitlesAboveSeparator(moveMenu);

    // Every item is stale once its mailbox has another name: choosing it is refused.
    NSUInteger sourceMessages = [[source messagePaths] count];
    for (const OddName &name : names)
        ASSERT_TRUE([mail renameMailbox:name.mailbox toName:[@"Renamed " stringByAppendingString:[name.mailbox displayName]]]);
    for (NSUInteger index = 0; index < [titles count]; index++) {
        LVSelectFirstMessages(viewer, source, 1);
        LVChooseItem(moveMenu, (NSInteger)index);
    }

    EXPECT_EQ(names.size(), [MHRecordedAlerts() count]);
    EXPECT_EQ(sourceMessages, [[source messagePaths] count]);
    for (NSUInteger index = 0; index < [titles count]; index++) {
        NSString *title = [titles objectAtIndex:index];
        EXPECT_EQ(1u, LVLogCount([NSString stringWithFormat:@"Index: %lu, Title: \"%@\"", (unsigned long)index, title])) << [title UTF8String];
    }
}

TEST_F(OddNames, ComeBackFromThePreferencesFileAtTheNextStartWithTheirCountsAndOrder)
{
    // Counts that differ, so a record that came back with another's count shows.
    NSMutableArray *reuses = [NSMutableArray array];
    for (size_t i = 0; i < names.size(); i++)
        for (size_t use = 0; use < i % 3; use++)
            [reuses addObject:names[i].mailbox];
    LVUseMailboxes(viewer, source, reuses);
    NSMenu *moveMenu = [provider moveToRecentSubmenu];
    LVOpenRecentMenu(moveMenu);
    NSArray *titles = LVTitlesAboveSeparator(moveMenu);
    NSArray *counts = LVListedCounts(provider);
    NSMutableArray *fullPaths = [NSMutableArray array];
    for (NSUInteger i = 0; i < names.size(); i++)
        [fullPaths addObject:[[provider getRecentMailboxUidAtIndex:(int)i] fullPath]];
    [[NSFileManager defaultManager] removeItemAtPath:LVPreferencesFilePath() error:NULL];

    // Mail quits, writing the file, and starts again in the same store.
    LorvaneBundle_Provider *restarted = LVRelaunch();

    // What any other property-list reader finds in the file.
    NSDictionary *python = LVPythonReadPlist(LVPreferencesFilePath());
    ASSERT_TRUE([python isKindOfClass:[NSDictionary class]]);
    EXPECT_NSEQ(fullPaths, [[python objectForKey:@"RecentMailboxes"] valueForKey:@"FullPath"]);
    ASSERT_NE(provider, restarted);
    LVOpenRecentMenu([restarted moveToRecentSubmenu]);
    EXPECT_NSEQ(titles, LVTitlesAboveSeparator([restarted moveToRecentSubmenu]));
    EXPECT_NSEQ(counts, LVListedCounts(restarted));
    for (NSUInteger i = 0; i < names.size(); i++)
        EXPECT_EQ((id)[provider getRecentMailboxUidAtIndex:(int)i], (id)[restarted getRecentMailboxUidAtIndex:(int)i]) << i;
}
