// The work an opening does: all five submenus brought up to date by the smallest edit, and
// Mail asked again only what may have changed since the last opening, held to bounds any
// correct rebuild keeps, so that a fault in a fast path shows as extra work.
#import "LVLorvane.h"
#import "MHMailQuestions.h"
#import "MailApp+MHAccountSettings.h"

#include <unistd.h>

#include <array>
#include <functional>
#include <vector>

namespace {

// What one submenu reported, by kind: GNUstep posts a notification for an item put in or taken
// out, and for one re-titled, given an image or enabled while in its menu, but none for a tool tip.
enum EditKind { Added, Removed, Changed };
typedef std::array<NSUInteger, 3> Edits;

// Mail with a viewer, which hears of renames, a POP account Home and an IMAP account Work
// whose server prefix is "INBOX". Each row starts from a list of five: Taxes, both Archives,
// Clients, then Travel twice, used in that order.
class OpeningWork : public testing::Test {
protected:
    MailApp *mail = nil;
    MHMailStore *store = nil;
    LorvaneBundle_Provider *provider = nil;
    MailboxUid *orphan = nil; // its account is gone

    MailboxUid *at(NSString *accountAndPath) { return [store mailboxAtPath:accountAndPath]; }

    // A moment after the last use, so that no two dates tie.
    void use(MailboxUid *mailbox)
    {
        usleep(1000);
        [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox)];
    }

    void start(const char *what, int sortType)
    {
        mail = LVStartMail();
        if ([mail frontmostMessageViewer] == nil)
            [mail openMessageViewer];
        MailAccount *gone = [[MailAccount alloc] initWithDisplayName:@"Gone" path:nil];
        orphan = [[[gone createMailboxWithRelativePath:@"Orphan"] retain] autorelease];
        [gone release];
        store = LVMakeStore([NSString stringWithFormat:@"opening-%s", what]);
        MailAccount *home = [store addAccountNamed:@"Home" type:@"POP" serverPathPrefix:nil];
        MailAccount *work = [store addAccountNamed:@"Work" type:@"IMAP" serverPathPrefix:@"INBOX"];
        for (NSString *path in @[ @"Projects/Taxes", @"Archive", @"Travel", @"Receipts" ])
            [home createMailboxWithRelativePath:path];
        for (NSString *path in @[ @"INBOX/Archive", @"INBOX/Clients", @"INBOX/Travel" ])
            [work createMailboxWithRelativePath:path];
        provider = LVStartProvider(5, LVPreferences(sortType, NO, nil));
        for (NSString *path in @[ @"Home/Projects/Taxes", @"Home/Archive", @"Work/INBOX/Archive", @"Work/INBOX/Clients", @"Home/Travel", @"Home/Travel" ])
            use(at(path));
        LVOpenRecentMenu([provider goToRecentSubmenu]);
    }

    // Opens the submenu with Mail's questions counted afresh; answers each submenu's edits.
    std::vector<Edits> open(NSUInteger family)
    {
        NSArray *submenus = LVRecentSubmenus(provider);
        NSArray *kinds = @[ NSMenuDidAddItemNotification, NSMenuDidRemoveItemNotification, NSMenuDidChangeItemNotification ];
        NSMutableArray *posted = [NSMutableArray array]; // the observer: it keeps each notification
        for (NSString *kind in kinds)
            [[NSNotificationCenter defaultCenter] addObserver:posted selector:@selector(addObject:) name:kind object:nil];
        MHForgetMailQuestions();
        LVOpenRecentMenu([submenus objectAtIndex:family]);
        [[NSNotificationCenter defaultCenter] removeObserver:posted];
        std::vector<Edits> edits(5, Edits {});
        for (NSNotification *notification in posted) {
            NSUInteger index = [submenus indexOfObjectIdenticalTo:[notification object]];
            if (index != NSNotFound)
                edits[index][[kinds indexOfObject:[notification name]]]++;
        }
        return edits;
    }
};

} // namespace

TEST_F(OpeningWork, EditsOnlyTheRowsThatChangedAndAsksMailOnlyWhatMayHaveChanged)
{
    struct Row {
        const char *what;
        int sortType;
        std::function<void()> act;
        NSUInteger out, in; // at most, per submenu: items taken out, items put in
        NSArray *titles;
        // Whose place and icon Mail may be asked. None when Mail said something changed: then
        // every listed mailbox's place and icon are asked again.
        std::function<NSArray *()> mayAsk = nullptr;
    };
    NSArray *byName = @[ @"Archive (Home)", @"Archive (Work)", @"Clients", @"Taxes", @"Travel" ];
    NSArray *byUse = @[ @"Travel", @"Archive (Work)", @"Archive (Home)", @"Clients", @"Taxes" ];
    auto nobody = [] { return @[]; };
    auto newcomer = [&] { return @[ at(@"Home/Receipts") ]; };
    const Row rows[] = {
        { "touch the front mailbox by use", 2, [&] { use(at(@"Home/Travel")); }, 0, 0, byUse, nobody },
        { "touch Taxes by name", 0, [&] { use(at(@"Home/Projects/Taxes")); }, 0, 0, byName, nobody },
        { "touch Taxes by date", 1, [&] { use(at(@"Home/Projects/Taxes")); }, 1, 1, @[ @"Taxes", @"Travel", @"Clients", @"Archive (Work)", @"Archive (Home)" ], nobody },
        { "touch Taxes by use", 2, [&] { use(at(@"Home/Projects/Taxes")); }, 1, 1, @[ @"Taxes", @"Travel", @"Archive (Work)", @"Archive (Home)", @"Clients" ], nobody },
        { "a new mailbox pushes out the oldest", 0, [&] { use(at(@"Home/Receipts")); }, 1, 1, @[ @"Archive (Home)", @"Archive (Work)", @"Clients", @"Receipts", @"Travel" ], newcomer },
        { "a new mailbox pushes out the least used", 2, [&] { use(at(@"Home/Receipts")); }, 1, 1, @[ @"Travel", @"Archive (Work)", @"Archive (Home)", @"Clients", @"Receipts" ], newcomer },
        { "a new namesake renames the one it joins", 0, [&] { use(at(@"Work/INBOX/Travel")); }, 2, 2, @[ @"Archive (Home)", @"Archive (Work)", @"Clients", @"Travel (Home)", @"Travel (Work)" ],
          [&] { return @[ at(@"Work/INBOX/Travel"), at(@"Home/Travel") ]; } },
        { "a mailbox whose account is gone", 1, [&] { use(orphan); }, 1, 1, @[ @"Orphan", @"Travel", @"Clients", @"Archive (Work)", @"Archive (Home)" ], [&] { return @[ orphan ]; } },
        { "a namesake deleted leaves the other its bare name", 0, [&] { [mail deleteMailbox:at(@"Home/Archive")]; }, 2, 1, @[ @"Archive", @"Clients", @"Taxes", @"Travel" ] },
        { "a mailbox renamed", 0, [&] { [mail renameMailbox:at(@"Home/Travel") toName:@"Journeys"]; }, 1, 1, @[ @"Archive (Home)", @"Archive (Work)", @"Clients", @"Journeys", @"Taxes" ] },
        { "a folder renamed changes the tool tips below it", 0, [&] { [mail renameMailbox:at(@"Home/Projects") toName:@"Plans"]; }, 1, 1, byName },
        { "an account renamed by name", 0, [&] { [mail renameAccount:[store accountNamed:@"Work"] toName:@"Office"]; }, 2, 2, @[ @"Archive (Home)", @"Archive (Office)", @"Clients", @"Taxes", @"Travel" ] },
        { "a mailbox taken as Junk shows its icon", 2, [&] { [mail useMailbox:at(@"Work/INBOX/Clients") asMailboxOfType:MHMailboxTypeJunk]; }, 1, 1, byUse },
        { "accounts changed with nothing to show", 0, [&] { [mail setActiveAccounts:[MailAccount activeAccounts]]; }, 0, 0, byName },
        // Every row out, and "Clear Menu" out and back in disabled.
        { "Clear Menu", 0, [&] { [provider clearRecentMailboxes]; }, 6, 1, @[], nobody },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        start(row.what, row.sortType);
        row.act();
        NSArray *mayAsk = row.mayAsk != nullptr ? row.mayAsk() : nil;
        NSMutableArray *everyMailbox = [NSMutableArray arrayWithObject:orphan];
        for (MailAccount *account in [store accounts])
            [everyMailbox addObjectsFromArray:[account allMailboxUids]];
        // A contextual submenu or one of the menu bar's: each opening brings all five up to date.
        std::vector<Edits> edits = open((NSUInteger)row.sortType + 2);
        for (const Edits &edit : edits)
            EXPECT_TRUE(edit[Removed] <= row.out && edit[Added] <= row.in && edit[Added] + edit[Removed] + edit[Changed] <= row.out + row.in)
                << LVFamilyNames[&edit - &edits[0]] << ": " << edit[Removed] << " out, " << edit[Added] << " in, " << edit[Changed] << " changed";
        for (SEL question : { @selector(account), @selector(accountRelativePath), @selector(ancestralAccount), @selector(iconForMailboxUid:smallSize:) }) {
            NSUInteger allowed = 0;
            for (MailboxUid *mailbox in mayAsk)
                allowed += MHMailQuestionCount(question, mailbox);
            EXPECT_TRUE(mayAsk == nil || MHMailQuestionCount(question, nil) == allowed) << sel_getName(question);
        }
        // Once to read it, once more to tell namesakes apart.
        for (MailboxUid *mailbox in everyMailbox)
            EXPECT_LE(MHMailQuestionCount(@selector(displayName), mailbox), 2u) << [[mailbox fullPath] UTF8String];

        // Every item shows what Mail says of its mailbox now.
        for (NSUInteger index = 0; index < [row.titles count]; index++) {
            MailboxUid *mailbox = (MailboxUid *)[provider getRecentMailboxUidAtIndex:(int)index];
            EXPECT_TRUE(mayAsk != nil || (MHMailQuestionCount(@selector(accountRelativePath), mailbox) && MHMailQuestionCount(@selector(iconForMailboxUid:smallSize:), mailbox)))
                << [[mailbox fullPath] UTF8String];
            NSString *path = [[mailbox accountRelativePath] stringByReplacingOccurrencesOfString:@"INBOX/" withString:@""];
            NSString *toolTip = [NSString stringWithFormat:@"%@/%@", [[mailbox account] displayName] ?: @"[error: NULL accountName]", path];
            for (NSMenu *submenu in LVRecentSubmenus(provider)) {
                NSMenuItem *item = (NSMenuItem *)[submenu itemAtIndex:(NSInteger)index];
                EXPECT_NSEQ([row.titles objectAtIndex:index], [item title]);
                EXPECT_NSEQ(toolTip, [item toolTip]);
                EXPECT_EQ([MailboxesController iconForMailboxUid:mailbox smallSize:YES], [item image]) << [toolTip UTF8String];
            }
        }
        EXPECT_TRUE(LVSubmenusShow(provider, row.titles));

        // With nothing pending, an opening changes nothing and asks Mail nothing.
        EXPECT_EQ(std::vector<Edits>(5, Edits {}), open((NSUInteger)row.sortType));
        EXPECT_EQ(0u, MHMailQuestionCount(NULL, nil));
    }
}
