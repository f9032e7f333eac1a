/*
 * Names that tell apart recent mailboxes of the same name: by account when the group
 * spans accounts with different names, by the folder that holds the mailbox, and with
 * an IMAP account's server path prefix left out of the folder.
 */
#import "LVProviderFixture.h"

namespace {

class DuplicateNames : public testing::Test {
protected:
    MHMailStore *store = nil;
    LorvaneBundle_Provider *provider = nil;

    void SetUp() override
    {
        LVLoadPluginAndClearLog();
        store = LVMakeStore(@"duplicate-names");
        provider = LVMakeListProvider(20, 0, NO);
    }

    MailAccount *account(NSString *name)
    {
        MailAccount *found = [store accountNamed:name];
        return found != nil ? found : [store addAccountNamed:name type:@"POP" serverPathPrefix:nil];
    }

    MailAccount *imapAccount(NSString *name, NSString *prefix)
    {
        return [store addAccountNamed:name type:@"IMAP" serverPathPrefix:prefix];
    }

    // "Account/Path/To/Mailbox" -> a record for that mailbox, made if need be.
    LorvaneMailbox *record(NSString *accountAndPath)
    {
        NSRange slash = [accountAndPath rangeOfString:@"/"];
        MailAccount *owner = account([accountAndPath substringToIndex:slash.location]);
        MailboxUid *uid = [owner createMailboxWithRelativePath:[accountAndPath substringFromIndex:NSMaxRange(slash)]];
        LorvaneMailbox *made = LVMakeRecord();
        [made setUid:LVUid(uid)];
        return made;
    }

    NSArray *group(NSArray *accountAndPaths)
    {
        NSMutableArray *records = [NSMutableArray array];
        for (NSString *path in accountAndPaths)
            [records addObject:record(path)];
        return records;
    }

    // What the menu rebuild does with a group of equal names.
    NSArray *extendedNames(NSArray *records)
    {
        BOOL multipleAccounts = [provider multipleAccountsInRecentMailboxes:records];
        [provider extendNamesForDuplicateMailboxes:records includesMultipleAccounts:multipleAccounts];
        return LVDisplayNames(records);
    }
};

} // namespace

TEST_F(DuplicateNames, GroupsAreNamedByAccountAndFolderAsNeeded)
{
    struct Row {
        const char *what;
        NSArray *mailboxes;
        BOOL multipleAccounts;
        NSArray *names;
    } rows[] = {
        { "three accounts share an Inbox", @[ @"Home/Inbox", @"Work/Inbox", @"Family/Inbox" ], YES,
          @[ @"Inbox (Home)", @"Inbox (Work)", @"Inbox (Family)" ] },
        { "two folders of one account", @[ @"Home/A/Work", @"Home/B/Work" ], NO, @[ @"Work (A)", @"Work (B)" ] },
        { "one at the top, one nested", @[ @"Home/Work", @"Home/B/Work" ], NO, @[ @"Work", @"Work (B)" ] },
        { "deeply nested", @[ @"Home/Projects/Old/Work", @"Home/Work" ], NO, @[ @"Work (Projects/Old)", @"Work" ] },
        { "accounts and folders", @[ @"Home/Projects/Work", @"Office/Work" ], YES, @[ @"Work (Home/Projects)", @"Work (Office)" ] },
        { "account names differ only in case", @[ @"Home/Archive", @"home/Archive" ], YES, @[ @"Archive (Home)", @"Archive (home)" ] },
        { "names are text, not formats", @[ @"Büro %@/Zürich %n", @"Home/Ärger %d/Zürich %n" ], YES,
          @[ @"Zürich %n (Büro %@)", @"Zürich %n (Home/Ärger %d)" ] },
        { "spaces in names", @[ @"My Home/Old Stuff/Read Later", @"My Home/Read Later" ], NO,
          @[ @"Read Later (Old Stuff)", @"Read Later" ] },
    };
    for (const Row &row : rows) {
        NSArray *records = group(row.mailboxes);
        EXPECT_EQ(row.multipleAccounts, [provider multipleAccountsInRecentMailboxes:records]) << row.what;
        EXPECT_NSEQ(row.names, extendedNames(records)) << row.what;
    }
}

TEST_F(DuplicateNames, AccountsThatShareANameCountAsOne)
{
    [store addAccountNamed:@"Twin" type:@"POP" serverPathPrefix:nil];
    MailAccount *second = [store addAccountNamed:@"Twin" type:@"POP" serverPathPrefix:nil];
    ASSERT_NE(second, [store accountNamed:@"Twin"]);
    LorvaneMailbox *top = LVMakeRecord();
    [top setUid:LVUid([[store accountNamed:@"Twin"] createMailboxWithRelativePath:@"Archive"])];
    LorvaneMailbox *nested = LVMakeRecord();
    [nested setUid:LVUid([second createMailboxWithRelativePath:@"Old/Archive"])];

    NSArray *records = @[ top, nested ];
    EXPECT_FALSE([provider multipleAccountsInRecentMailboxes:records]);
    EXPECT_NSEQ((@[ @"Archive", @"Archive (Old)" ]), extendedNames(records));
}

TEST_F(DuplicateNames, NamesStartFromMailsNameNotFromAnEarlierExtension)
{
    NSArray *records = group(@[ @"Home/A/Work", @"Home/B/Work" ]);
    extendedNames(records);
    EXPECT_NSEQ((@[ @"Work (A)", @"Work (B)" ]), extendedNames(records));
}

TEST_F(DuplicateNames, AMailboxWithoutAnAccountNeverMatchesAnAccount)
{
    // Mail detaches the mailboxes of an account it lets go of.
    MailboxUid *orphan = nil;
    @autoreleasepool {
        MailAccount *gone = [[MailAccount alloc] initWithDisplayName:@"Gone" path:nil];
        orphan = [[gone createMailboxWithRelativePath:@"Archive"] retain];
        [gone release];
    }
    [orphan autorelease];
    ASSERT_TRUE([orphan account] == nil);
    LorvaneMailbox *detached = LVMakeRecord();
    [detached setUid:LVUid(orphan)];

    NSArray *records = @[ record(@"Home/Archive"), detached ];
    EXPECT_TRUE([provider multipleAccountsInRecentMailboxes:records]);
    EXPECT_TRUE([provider multipleAccountsInRecentMailboxes:(@[ detached, record(@"Home/Archive") ])]);
    EXPECT_TRUE([provider multipleAccountsInRecentMailboxes:(@[ detached, detached ])]);
    EXPECT_NSEQ((@[ @"Archive (Home)", @"Archive ()" ]), extendedNames(records));
}

TEST_F(DuplicateNames, OneRecordOrNoneIsNeverManyAccounts)
{
    EXPECT_FALSE([provider multipleAccountsInRecentMailboxes:@[]]);
    EXPECT_FALSE([provider multipleAccountsInRecentMailboxes:group(@[ @"Home/Work" ])]);
    EXPECT_FALSE([provider multipleAccountsInRecentMailboxes:group(@[ @"Home/A/Work", @"Home/B/Work", @"Home/Work" ])]);
}

TEST_F(DuplicateNames, ServerPathPrefixIsLeftOutOfTheFolderByCharacters)
{
    imapAccount(@"Mailhost", @"INBOX");
    imapAccount(@"Plain IMAP", @"");
    account(@"Local");
    struct Row {
        NSString *mailbox;
        NSString *withoutPrefix;
    } rows[] = {
        { @"Mailhost/INBOX/Lists/Work", @"Lists/Work" },
        { @"Mailhost/INBOXES/Work", @"S/Work" },    // the prefix test is on characters
        { @"Mailhost/INBOX", @"" },                 // the prefix itself leaves nothing
        { @"Mailhost/Archive/Work", @"Archive/Work" },
        { @"Mailhost/inbox/Work", @"inbox/Work" },  // and it is case-sensitive
        { @"Plain IMAP/INBOX/Work", @"INBOX/Work" },
        { @"Local/INBOX/Work", @"INBOX/Work" },     // only IMAP accounts have a prefix
    };
    for (const Row &row : rows) {
        LorvaneMailbox *made = record(row.mailbox);
        EXPECT_NSEQ(row.withoutPrefix, [provider accountRelativePathWithoutPrefixForUid:[made uid]]) << [row.mailbox UTF8String];
    }
}

TEST_F(DuplicateNames, PathWithoutPrefixIsANewStringEachTime)
{
    id<LVMailboxUid> uid = [record(@"Home/Projects/Work") uid];
    NSMutableString *first = [provider accountRelativePathWithoutPrefixForUid:uid];
    NSMutableString *second = [provider accountRelativePathWithoutPrefixForUid:uid];
    ASSERT_NE(first, second);
    [first appendString:@" changed"];
    EXPECT_NSEQ(@"Projects/Work", second);
    EXPECT_NSEQ(@"Projects/Work", [uid accountRelativePath]);
}

TEST_F(DuplicateNames, PrefixedFoldersNameTheParentWithoutThePrefix)
{
    imapAccount(@"Mailhost", @"INBOX");
    NSArray *records = group(@[ @"Mailhost/INBOX/Lists/Work", @"Mailhost/Work", @"Mailhost/INBOXES/Work" ]);
    EXPECT_NSEQ((@[ @"Work (Lists)", @"Work", @"Work (S)" ]), extendedNames(records));
}
