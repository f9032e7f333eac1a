#import "LVTestSupport.h"
#import "IMAPAccount.h"
#import "MHMailStore.h"
#import "MailAccount.h"
#import "MailboxUid.h"

#include <algorithm>
#include <string>
#include <vector>

// Each test works on its own copy of the sample store, so it may move, rename and delete freely.
class MailStore : public testing::Test {
protected:
    MHMailStore *store = nil;

    void SetUp() override
    {
        store = [MHMailStore copyOfStoreAtPath:@LORVANE_SOURCE_DIR "/samples/store" toPath:LVMakeTemporaryFolder(@"store")];
        ASSERT_TRUE(store != nil);
    }

    MailboxUid *mailbox(NSString *accountAndPath)
    {
        MailboxUid *found = [store mailboxAtPath:accountAndPath];
        EXPECT_TRUE(found != nil) << [accountAndPath UTF8String];
        return found;
    }

    static BOOL exists(NSString *path)
    {
        return [[NSFileManager defaultManager] fileExistsAtPath:path];
    }

    static std::vector<std::string> relativePaths(MailAccount *account)
    {
        std::vector<std::string> paths;
        for (MailboxUid *uid in [account allMailboxUids])
            paths.push_back([[uid accountRelativePath] UTF8String]);
        return paths;
    }
};

TEST_F(MailStore, OpensEveryAccountInFolderOrderMakesThemActiveSkipsStrayFoldersAndListsParentsBeforeChildren)
{
    [[NSFileManager defaultManager] createDirectoryAtPath:[[store root] stringByAppendingPathComponent:@"Stray"]
                              withIntermediateDirectories:NO attributes:nil error:NULL];
    store = [MHMailStore storeAtPath:[store root]];
    NSArray *names = [[store accounts] valueForKey:@"displayName"];
    EXPECT_NSEQ((@[ @"Home", @"Lists", @"Work" ]), names);
    EXPECT_TRUE([MailAccount activeAccounts] == [store accounts]);
    EXPECT_TRUE([[store accountNamed:@"Lists"] isKindOfClass:[IMAPAccount class]]);
    EXPECT_NSEQ(@"INBOX", [(IMAPAccount *)[store accountNamed:@"Lists"] serverPathPrefix]);
    EXPECT_FALSE([[store accountNamed:@"Home"] isKindOfClass:[IMAPAccount class]]);

    // Every message file on disk shows up in exactly one mailbox; the ".keep" markers do not.
    NSUInteger onDisk = 0, listed = 0;
    NSDirectoryEnumerator *files = [[NSFileManager defaultManager] enumeratorAtPath:[store root]];
    for (NSString *file in files)
        onDisk += [[file pathExtension] isEqualToString:@"eml"] ? 1 : 0;
    for (MailAccount *account in [store accounts])
        for (MailboxUid *uid in [account allMailboxUids])
            listed += [[uid messagePaths] count];
    EXPECT_GT(onDisk, 30u);
    EXPECT_EQ(onDisk, listed);
    EXPECT_EQ(0u, [[mailbox(@"Work/Drafts") messagePaths] count]);

    // Parents before children, siblings by name; the list is handed out, not copied.
    MailAccount *work = [store accountNamed:@"Work"];
    std::vector<std::string> expected = { "Archive", "Clients", "Clients/Harbor Lights", "Clients/Northwind",
                                          "Clients/Northwind/Archive", "Drafts", "Inbox", "Junk", "Projects",
                                          "Projects/Apollo", "Projects/Old", "Projects/Old/Apollo", "Sent", "Trash" };
    EXPECT_EQ(expected, relativePaths(work));
    EXPECT_TRUE([work allMailboxUids] == [work allMailboxUids]);
}

TEST(MailboxTypes, SpecialNamesCountOnlyAtTheTopOfAnAccountWhateverTheirCase)
{
    struct Row {
        NSString *path;
        int type;
    } rows[] = {
        { @"Inbox", MHMailboxTypeInbox }, { @"Outer/INBOX", MHMailboxTypeGeneric },
        { @"Sent", MHMailboxTypeSent }, { @"sent messages", MHMailboxTypeSent },
        { @"Drafts", MHMailboxTypeDrafts }, { @"TRASH", MHMailboxTypeTrash },
        { @"Deleted Messages", MHMailboxTypeTrash }, { @"Junk", MHMailboxTypeJunk },
        { @"Archive", MHMailboxTypeGeneric }, { @"Inboxes", MHMailboxTypeGeneric },
        { @"Archive/Junk", MHMailboxTypeGeneric },
    };
    MailAccount *account = [[[MailAccount alloc] initWithDisplayName:@"Memory" path:nil] autorelease];
    for (const Row &row : rows) {
        MailboxUid *uid = [account createMailboxWithRelativePath:row.path];
        ASSERT_TRUE(uid != nil) << [row.path UTF8String];
        EXPECT_EQ(row.type, [uid type]) << [row.path UTF8String];
        EXPECT_EQ(row.type == MHMailboxTypeGeneric, (bool)[MailboxUid typeIsGeneric:[uid type]]) << [row.path UTF8String];
    }
}

TEST_F(MailStore, MailboxesKnowTheirNamesPathsAndAccounts)
{
    struct Row {
        NSString *path;
        NSString *name;
        NSString *relative;
        NSString *folder;
        int type;
    } rows[] = {
        { @"Work/Projects/Old/Apollo", @"Apollo", @"Projects/Old/Apollo", @"Work/Projects.mbox/Old.mbox/Apollo.mbox", MHMailboxTypeGeneric },
        { @"Home/Travel/2026", @"2026", @"Travel/2026", @"Home/Travel.mbox/2026.mbox", MHMailboxTypeGeneric },
        { @"Home/Inbox", @"Inbox", @"Inbox", @"Home/Inbox.mbox", MHMailboxTypeInbox },
        { @"Lists/INBOX", @"INBOX", @"INBOX", @"Lists/INBOX.mbox", MHMailboxTypeInbox },
        { @"Lists/INBOX/Lists/GNUstep", @"GNUstep", @"INBOX/Lists/GNUstep", @"Lists/INBOX.mbox/Lists.mbox/GNUstep.mbox", MHMailboxTypeGeneric },
    };
    for (const Row &row : rows) {
        MailboxUid *uid = mailbox(row.path);
        ASSERT_TRUE(uid != nil);
        NSString *accountName = [[row.path pathComponents] objectAtIndex:0];
        EXPECT_NSEQ(row.name, [uid displayName]);
        EXPECT_NSEQ(row.relative, [uid accountRelativePath]);
        EXPECT_NSEQ([[store root] stringByAppendingPathComponent:row.folder], [uid fullPath]);
        EXPECT_TRUE(exists([uid fullPath])) << [row.path UTF8String];
        EXPECT_EQ(row.type, [uid type]) << [row.path UTF8String];
        EXPECT_TRUE([uid account] == [store accountNamed:accountName]);
        EXPECT_TRUE([uid ancestralAccount] == [uid account]);
        MailboxUid *parent = [uid parent];
        EXPECT_NSEQ([row.relative stringByDeletingLastPathComponent], parent != nil ? [parent accountRelativePath] : @"");
    }
}

TEST_F(MailStore, DeletingAMailboxRemovesItsFolderAndInvalidatesItAndEverythingUnderIt)
{
    MailAccount *work = [store accountNamed:@"Work"];
    MailboxUid *old = mailbox(@"Work/Projects/Old");
    MailboxUid *oldApollo = mailbox(@"Work/Projects/Old/Apollo");
    MailboxUid *apollo = mailbox(@"Work/Projects/Apollo");
    NSString *folder = [old fullPath];

    EXPECT_FALSE([work deleteMailbox:mailbox(@"Home/Travel") reflectToServer:YES]) << "not Work's mailbox";
    EXPECT_TRUE([mailbox(@"Home/Travel") isValid]);
    EXPECT_TRUE(exists([mailbox(@"Home/Travel") fullPath]));

    ASSERT_TRUE([work deleteMailbox:old reflectToServer:YES]);
    EXPECT_FALSE(exists(folder));
    EXPECT_FALSE([old isValid]);
    EXPECT_FALSE([oldApollo isValid]);
    EXPECT_TRUE([apollo isValid]);
    EXPECT_NSEQ(@"Apollo", [oldApollo displayName]) << "a deleted uid stays a usable object";
    EXPECT_EQ(NSNotFound, [[work allMailboxUids] indexOfObjectIdenticalTo:old]);
    EXPECT_EQ(NSNotFound, [[work allMailboxUids] indexOfObjectIdenticalTo:oldApollo]);
    EXPECT_TRUE([work mailboxUidForRelativePath:@"Projects/Old/Apollo"] == nil);
    EXPECT_FALSE([work deleteMailbox:old reflectToServer:NO]) << "deleted once already";
}

TEST_F(MailStore, RenamingKeepsTheUidAndMovesItsFolderChildrenAndMessages)
{
    MailAccount *work = [store accountNamed:@"Work"];
    MailboxUid *projects = mailbox(@"Work/Projects");
    MailboxUid *oldApollo = mailbox(@"Work/Projects/Old/Apollo");
    NSString *oldFolder = [projects fullPath];
    NSString *message = [[[oldApollo messagePaths] lastObject] lastPathComponent];
    ASSERT_TRUE(message != nil);

    ASSERT_TRUE([work renameMailbox:projects toName:@"Zeta"]);
    EXPECT_TRUE([work mailboxUidForRelativePath:@"Zeta"] == projects);
    EXPECT_TRUE([work mailboxUidForRelativePath:@"Zeta/Old/Apollo"] == oldApollo);
    EXPECT_NSEQ(@"Zeta", [projects displayName]);
    EXPECT_NSEQ(@"Zeta/Old/Apollo", [oldApollo accountRelativePath]);
    EXPECT_NSEQ([[store root] stringByAppendingPathComponent:@"Work/Zeta.mbox/Old.mbox/Apollo.mbox"], [oldApollo fullPath]);
    EXPECT_FALSE(exists(oldFolder));
    EXPECT_NSEQ(message, [[[oldApollo messagePaths] lastObject] lastPathComponent]);
    EXPECT_EQ("Zeta/Old/Apollo", relativePaths(work).back()) << "the renamed subtree moves to its new place by name";

    struct Refusal {
        NSString *name;
        const char *why;
    } refusals[] = { { @"", "empty" }, { @"A/B", "a slash" }, { @"Sent", "a sibling has it" } };
    for (const Refusal &refusal : refusals) {
        EXPECT_FALSE([work renameMailbox:projects toName:refusal.name]) << refusal.why;
        EXPECT_NSEQ(@"Zeta", [projects displayName]) << refusal.why;
        EXPECT_TRUE(exists([projects fullPath])) << refusal.why;
    }
    EXPECT_FALSE([work renameMailbox:mailbox(@"Home/Family") toName:@"Kin"]) << "not Work's mailbox";
}

TEST_F(MailStore, RescanNoticesFoldersRemovedAndAddedBehindItsBack)
{
    MailAccount *home = [store accountNamed:@"Home"];
    MailboxUid *inbox = mailbox(@"Home/Inbox");
    MailboxUid *travel = mailbox(@"Home/Travel");
    MailboxUid *travel2026 = mailbox(@"Home/Travel/2026");
    NSFileManager *fileManager = [NSFileManager defaultManager];
    ASSERT_TRUE([fileManager removeItemAtPath:[travel fullPath] error:NULL]);
    NSString *added = [[home path] stringByAppendingPathComponent:@"Family.mbox/Cousins.mbox/Messages"];
    ASSERT_TRUE([fileManager createDirectoryAtPath:added withIntermediateDirectories:YES attributes:nil error:NULL]);

    [home rescan];
    EXPECT_FALSE([travel isValid]);
    EXPECT_FALSE([travel2026 isValid]);
    EXPECT_EQ(NSNotFound, [[home allMailboxUids] indexOfObjectIdenticalTo:travel2026]);
    EXPECT_TRUE([inbox isValid]);
    EXPECT_TRUE([home mailboxUidForRelativePath:@"Inbox"] == inbox) << "a mailbox still there keeps its uid";
    MailboxUid *cousins = [home mailboxUidForRelativePath:@"Family/Cousins"];
    ASSERT_TRUE(cousins != nil);
    EXPECT_TRUE([cousins parent] == mailbox(@"Home/Family"));
    std::vector<std::string> paths = relativePaths(home);
    EXPECT_EQ(std::find(paths.begin(), paths.end(), "Family") + 1, std::find(paths.begin(), paths.end(), "Family/Cousins"));
}

TEST_F(MailStore, MessagesMoveOrCopyIntoFreeNumberedFilesListedInNumberOrder)
{
    MailboxUid *archive = mailbox(@"Work/Archive");
    NSString *original = [[mailbox(@"Home/Inbox") messagePaths] objectAtIndex:0];
    NSString *text = [NSString stringWithContentsOfFile:original encoding:NSUTF8StringEncoding error:NULL];

    NSString *copied = [archive receiveMessageAtPath:original deleteOriginal:NO];
    EXPECT_TRUE(exists(original));
    NSString *moved = [archive receiveMessageAtPath:original deleteOriginal:YES];
    ASSERT_TRUE(copied != nil && moved != nil);
    EXPECT_FALSE(exists(original));
    EXPECT_NSEQ((@[ [[archive messagePaths] objectAtIndex:0], copied, moved ]), [archive messagePaths]);
    EXPECT_NSEQ(text, [NSString stringWithContentsOfFile:moved encoding:NSUTF8StringEncoding error:NULL]);
    EXPECT_TRUE([archive receiveMessageAtPath:original deleteOriginal:YES] == nil) << "the file is gone";

    MailboxUid *drafts = mailbox(@"Work/Drafts");
    NSDate *date = [NSDate dateWithTimeIntervalSince1970:1772791200]; // a Friday in March 2026
    for (int i = 1; i <= 10; i++)
        [store addMessageTo:drafts from:@"Sam <sam@example.com>" subject:[NSString stringWithFormat:@"Draft %d", i] date:date];
    NSArray *drafted = [drafts messagePaths];
    ASSERT_EQ(10u, [drafted count]);
    NSString *last = [NSString stringWithContentsOfFile:[drafted lastObject] encoding:NSUTF8StringEncoding error:NULL];
    EXPECT_TRUE([last rangeOfString:@"\nSubject: Draft 10\n"].location != NSNotFound) << [last UTF8String];
    EXPECT_TRUE([last rangeOfString:@"\nDate: Fri, 06 Mar 2026 10:00:00 +0000\n"].location != NSNotFound) << [last UTF8String];
}

TEST_F(MailStore, NamesAUserMightTypeSurviveTheDiskAndAReopen)
{
    NSArray *names = @[ @"Café ☕", @"100% %@ %n %s", @"Quote \"this\" 'too'", @"😀 Smile", @"back\\slash",
                        @"  spaced  ", @".dotted", @"Box.mbox", @"..", @"Ünïcödé ñ" ];
    MailAccount *odd = [store addAccountNamed:@"Odd/Account %@" type:@"IMAP" serverPathPrefix:@"%n"];
    ASSERT_TRUE(odd != nil);
    for (NSString *name in names)
        ASSERT_TRUE([odd createMailboxWithRelativePath:[@"Parent/" stringByAppendingString:name]] != nil) << [name UTF8String];
    MailboxUid *renamed = [odd createMailboxWithRelativePath:@"Plain"];
    ASSERT_TRUE([odd renameMailbox:renamed toName:@"Ré\"named\" %@"]);
    [store addMessageTo:renamed from:@"%@ <odd@example.net>" subject:@"Line one\nLine two %n" date:nil];

    store = [MHMailStore storeAtPath:[store root]];
    ASSERT_TRUE([store accountNamed:@"Odd/Account %@"] != nil);
    EXPECT_NSEQ(@"%n", [(IMAPAccount *)[store accountNamed:@"Odd/Account %@"] serverPathPrefix]);
    for (NSString *name in names) {
        MailboxUid *uid = [store mailboxAtPath:[@"Odd/Account %@/Parent/" stringByAppendingString:name]];
        ASSERT_TRUE(uid != nil) << [name UTF8String];
        EXPECT_NSEQ(name, [uid displayName]);
    }
    MailboxUid *reopened = [store mailboxAtPath:@"Odd/Account %@/Ré\"named\" %@"];
    ASSERT_TRUE(reopened != nil);
    ASSERT_EQ(1u, [[reopened messagePaths] count]);
    NSString *text = [NSString stringWithContentsOfFile:[[reopened messagePaths] objectAtIndex:0] encoding:NSUTF8StringEncoding error:NULL];
    EXPECT_TRUE([text rangeOfString:@"\nSubject: Line one Line two %n\n"].location != NSNotFound) << [text UTF8String];
    EXPECT_TRUE([text hasPrefix:@"From: %@ <odd@example.net>\n"]) << [text UTF8String];
}

TEST(InMemoryAccount, HoldsFiftyThousandMailboxesWithoutTouchingTheDisk)
{
    // The account's name is a real, empty folder: any write through a mailbox path would land in it.
    NSString *watched = LVMakeTemporaryFolder(@"memory");
    MailAccount *account = [[[MailAccount alloc] initWithDisplayName:watched path:nil] autorelease];
    const int folders = 250, perFolder = 200;
    for (int folder = folders - 1; folder >= 0; folder--)
        for (int box = 0; box < perFolder; box++)
            [account createMailboxWithRelativePath:[NSString stringWithFormat:@"Folder %03d/Box %03d", folder, box]];
    NSArray *all = [account allMailboxUids];
    ASSERT_EQ((NSUInteger)(folders + folders * perFolder), [all count]);
    EXPECT_NSEQ(@"Folder 000", [[all objectAtIndex:0] displayName]);
    EXPECT_NSEQ(@"Box 000", [[all objectAtIndex:1] displayName]);
    EXPECT_NSEQ(@"Folder 001", [[all objectAtIndex:perFolder + 1] displayName]);

    MailboxUid *box = [account mailboxUidForRelativePath:@"Folder 007/Box 003"];
    EXPECT_NSEQ([watched stringByAppendingString:@"/Folder 007/Box 003"], [box fullPath]);
    EXPECT_TRUE([account renameMailbox:[box parent] toName:@"Seven"]);
    EXPECT_NSEQ([watched stringByAppendingString:@"/Seven/Box 003"], [box fullPath]);
    EXPECT_TRUE([account deleteMailbox:box reflectToServer:YES]);
    EXPECT_FALSE([box isValid]);
    NSString *message = [LVMakeTemporaryFolder(@"outside") stringByAppendingPathComponent:@"1.eml"];
    ASSERT_TRUE([@"Subject: kept\n" writeToFile:message atomically:YES encoding:NSUTF8StringEncoding error:NULL]);
    EXPECT_TRUE([[account mailboxUidForRelativePath:@"Seven/Box 004"] receiveMessageAtPath:message deleteOriginal:YES] == nil);
    EXPECT_TRUE([[NSFileManager defaultManager] fileExistsAtPath:message]);
    EXPECT_EQ(0u, [[[NSFileManager defaultManager] contentsOfDirectoryAtPath:watched error:NULL] count]);
}
