/*
 * A day in Mail read from bytes and played twice: through the plug-in loaded in the stand-in
 * Mail, and through the plug-in's plain steps (LVLiteralSteps, which the replay test compares
 * it with too). Any difference stops the run with the step and both sides.
 *
 * The first bytes set the day up:
 *   limit     1 to 50 recent items, now and then 500;
 *   settings  the sort type (0, 1, 2, or 7 or -1 out of range), special mailboxes in or out,
 *             the preferences file as XML, binary or none, and when the day starts (month,
 *             year and leap-day ends);
 *   store     one to four accounts held in memory, POP or IMAP, whose names are shared and odd
 *             ("", "/" and "\" in names, "é" composed and decomposed), each with mailboxes from
 *             a pool of shared and odd names (case twins, a leading combining mark, emoji);
 *   records   up to seven saved records: a mailbox or a path naming none, counts, dates under
 *             either key, unreadable or missing, written in several zones.
 * Every byte after that starts a step, and the bytes after it are its arguments: transfers of
 * one message or several from a viewer, from a viewer of a special kind and with a delegate
 * that is no viewer; openings of each submenu; items chosen (move, copy, go-to, "Clear Menu")
 * right after their submenu opened or from what it last showed; renames, deletions and new
 * mailboxes; accounts leaving and returning; another viewer coming to the front; the clock
 * moving; Mail quitting and starting again from the file it saved.
 *
 * Compared: the list through the provider's accessors after every step; all five submenus
 * after every opening; after every choice, what Mail was told (where the transfer goes, what
 * each viewer transferred or shows, alerts and log lines); at every quit the file written, and
 * after the relaunch the list read back from it. No step may log a "[Lorvane" line.
 *
 * Mail starts once per process, and again, in the same process, the first time a day asks for
 * a limit: each limit has a provider made by -init, which reads the limit as Mail's start does.
 * A day makes its limit's provider the one Mail's hooks reach and puts it back as Mail's
 * start-up leaves it: menus that show nothing, the list read from the day's file.
 */
#import "FuzzMail.h"
#import "LVDayComparison.h"
#import "LVLiteralSteps.h"
#import "IMAPAccount.h"
#import "MHAlertRecorder.h"
#import "MHMailStore.h"
#import "MHTransferOperation.h"
#import "MHUserLibrary.h"
#import "MailAccount.h"
#import "MailApp.h"
#import "MailboxesController.h"
#import "MessageTransfer.h"
#import "MessageViewer.h"
#import "TableViewManager.h"

#import <GNUstepGUI/GSDisplayServer.h>

#include <objc/runtime.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <X11/Xlib.h>

// A viewer of a more special kind: what it transfers is not the user's choice of a mailbox.
@interface LVSpecialViewer : MessageViewer
@end

@implementation LVSpecialViewer
@end

namespace {

const int LVHighestLimit = 500;
// Steps past these add nothing a shorter day cannot show, and would outrun the time limit
// (a relaunch costs as much as a day's start).
const unsigned LVMostSteps = 300;
const unsigned LVMostRelaunches = 4;
const NSUInteger LVSourceMessages = 3;

struct AccountKind {
    const char *name;
    bool imap; // with the server prefix "INBOX"
};
const AccountKind LVAccountKinds[] = {
    { "Home", false }, { "Home", true }, { "Office", true }, { "Home/Work", false },
    { "Back\\Office", true }, { "Caf\u00e9", false }, { "Cafe\u0301", true }, { "", false },
};
// Paths in an account, one bit of a 16-bit mask each; "Old/" holds a mailbox named "".
const char *const LVPathPool[] = {
    "INBOX", "Inbox", "Sent", "Work", "work", "Caf\u00e9", "Cafe\u0301", "Projects/Work",
    "Projects/Old/Work", "INBOX/Work", "INBOX/Archive", "Back\\slash", "\U0001F4E8 Mail", "\u0301Mark", "", "Old/",
};
// What a rename may call a mailbox: Mail refuses "" and "/".
const char *const LVNamePool[] = { "Work", "work", "Caf\u00e9", "Cafe\u0301", "Archive", "Back\\slash",
    "\U0001F4E8 Mail", "\u0301Mark", "Old", "Sent", "Inbox", "INBOX" };
const NSTimeInterval LVDayStarts[] = {
    817300800, // 2026-11-25 12:00:00 UTC
    728438370, // 2024-01-31 23:59:30
    730857590, // 2024-02-28 23:59:50
    730943980, // 2024-02-29 23:59:40
    725759998, // 2023-12-31 23:59:58
    765072020, // 2025-03-31 00:00:20
    757362610, // 2024-12-31 18:30:10, a new year in zones east of +05:30
    804556799, // 2026-06-30 23:59:59
};
const int LVZoneMinutes[] = { 0, 0, 330, -480, 60, -30, 840, -720 };
// Mostly forward; sometimes not at all, so that uses tie; now and then back.
const NSTimeInterval LVClockSteps[] = { 0, 0, 1, 1, 1, 0.25, 60, 3600, -1, -30, 86400, 0 };

template <class T, size_t N> T pickFrom(const T (&pool)[N], uint8_t byte)
{
    return pool[byte % N];
}

NSString *string(const char *utf8)
{
    return [NSString stringWithUTF8String:utf8];
}

/* A property list as a Mac writes it in XML, the day's saved records in it. GNUstep's own
   writer spells a character beyond U+FFFF as "\U" escapes, which no XML reader takes back. */
void appendXML(NSMutableString *xml, id value)
{
    if ([value isKindOfClass:[NSDictionary class]]) {
        [xml appendString:@"<dict>"];
        for (NSString *key in [[value allKeys] sortedArrayUsingSelector:@selector(compare:)]) {
            [xml appendFormat:@"<key>%@</key>", key];
            appendXML(xml, [value objectForKey:key]);
        }
        [xml appendString:@"</dict>"];
    } else if ([value isKindOfClass:[NSArray class]]) {
        [xml appendString:@"<array>"];
        for (id element in value)
            appendXML(xml, element);
        [xml appendString:@"</array>"];
    } else if ([value isKindOfClass:[NSString class]]) {
        NSMutableString *text = [NSMutableString stringWithString:value];
        [text replaceOccurrencesOfString:@"&" withString:@"&amp;" options:0 range:NSMakeRange(0, [text length])];
        [text replaceOccurrencesOfString:@"<" withString:@"&lt;" options:0 range:NSMakeRange(0, [text length])];
        [xml appendFormat:@"<string>%@</string>", text];
    } else if (strcmp([value objCType], @encode(BOOL)) == 0) {
        [xml appendString:[value boolValue] ? @"<true/>" : @"<false/>"];
    } else {
        [xml appendFormat:@"<integer>%d</integer>", [value intValue]];
    }
}

NSData *xmlPropertyList(NSDictionary *plist)
{
    NSMutableString *xml = [NSMutableString stringWithString:@"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">"];
    appendXML(xml, plist);
    [xml appendString:@"</plist>\n"];
    return [xml dataUsingEncoding:NSUTF8StringEncoding];
}

/* The day's bytes, read front to back; past the end every byte reads as 0. */
class DayBytes {
public:
    DayBytes(const uint8_t *bytes, size_t length) : next(bytes), end(bytes + length) {}
    bool atEnd() const { return next == end; }
    uint8_t take() { return next != end ? *next++ : 0; }

private:
    const uint8_t *next;
    const uint8_t *end;
};

/* Mail as the days find it: started once per process. */
struct Mail {
    MailApp *application;
    LorvaneBundle_Provider *provider; // the day's: the one Mail's hooks and actions reach
    NSMutableDictionary *providers;   // by limit: one started for each limit a day asked for
    NSMutableArray *mainMenus;        // the providers', kept: their menu bar items are in them
    NSArray *viewers;    // two MessageViewers, then an LVSpecialViewer
    MailboxUid *source;  // on disk with messages to transfer, in no account in use
};
Mail mail;

// Mail holds one provider per process, and its hooks and actions find it through this class
// method (copied into Mail's subclass LorvaneBundle too). The days keep a Mail per limit in
// one process, so the method answers the one the day plays in.
id dayProvider(id, SEL)
{
    return mail.provider;
}

void answerWithDayProvider()
{
    for (NSString *name in @[ @"LorvaneBundle_Provider", @"LorvaneBundle" ])
        method_setImplementation(class_getClassMethod(NSClassFromString(name), @selector(activeLorvaneBundle_Provider)), (IMP)dayProvider);
}

void keepProvider(int limit, LorvaneBundle_Provider *provider)
{
    [mail.providers setObject:provider forKey:@(limit)];
    [mail.mainMenus addObject:[NSApp mainMenu]];
}

// The provider started with the day's limit, the first time a day asks for that limit, as Mail
// starts one. A main menu matters to its provider only in -init, which puts the menu bar items
// in it: the application keeps the last one made, since putting each day's back would cost
// GNUstep about 10 ms a day.
void useProviderWithLimit(int limit)
{
    LorvaneBundle_Provider *provider = [mail.providers objectForKey:@(limit)];
    if (provider == nil) {
        provider = LVFuzzStartPluginAgain(limit);
        keepProvider(limit, provider);
    }
    mail.provider = provider;
}

// The start-up the days share; belongs with the start-up that tests and fuzzers share.
void startMail()
{
    mail.providers = [[NSMutableDictionary alloc] init];
    mail.mainMenus = [[NSMutableArray alloc] init];
    mail.provider = LVFuzzStartMail(LVHighestLimit);
    keepProvider(LVHighestLimit, mail.provider);
    answerWithDayProvider();
    mail.application = (MailApp *)NSApp;
    MHMailStore *store = [MHMailStore storeAtPath:LVFuzzTemporaryFolder(@"store")];
    mail.source = [[[store addAccountNamed:@"Source" type:@"POP" serverPathPrefix:nil] createMailboxWithRelativePath:@"Outbox"] retain];
    for (NSUInteger i = 0; i < LVSourceMessages; i++)
        [store addMessageTo:mail.source from:@"day@example.org" subject:@"A day" date:nil];
    MessageViewer *special = [[[LVSpecialViewer alloc] init] autorelease];
    mail.viewers = [@[ [mail.application openMessageViewer], [mail.application openMessageViewer], special ] retain];
    [special showWindow];
    LVStartDayClock(LVDayStarts[0]);
}

// Mail's run loop reads the window server's events as they come; the days never run it. Left
// in the display connection's queue, the events their windows and menus cause (a few dozen a
// day) were what grew most over a long run. They are dropped after each day, unread, as
// GNUstep would have left them: reading them through the application would redraw the
// windows, at about 30 ms a day.
void dropWindowServerEvents()
{
    XSync((Display *)[GSCurrentServer() serverDevice], True);
}

/* What Mail was told by a choice, as text both sides can be compared in. */
std::string mailboxText(MailboxUid *mailbox)
{
    return mailbox == nil ? "nothing" : LVText([NSString stringWithFormat:@"%@ (%p)", [mailbox fullPath], mailbox]);
}

std::string transferText(NSUInteger viewer, NSUInteger messages, MailboxUid *destination, BOOL move)
{
    return "viewer " + std::to_string(viewer) + (move ? " moved " : " copied ") + std::to_string(messages) + " to " + mailboxText(destination) + "\n";
}

std::string selectionText(NSUInteger viewer, NSArray *mailboxes)
{
    std::string text = "viewer " + std::to_string(viewer) + " shows";
    for (MailboxUid *mailbox in mailboxes)
        text += " " + mailboxText(mailbox);
    return text + "\n";
}

std::string transferMailboxText(MailboxUid *mailbox, BOOL deletes)
{
    return "next transfer to " + mailboxText(mailbox) + (mailbox != nil ? (deletes ? " deleting" : " keeping") : "") + "\n";
}

std::string noticesText(NSUInteger alerts, NSUInteger logLines)
{
    return std::to_string(alerts) + " alerts, " + std::to_string(logLines) + " log lines\n";
}

// An item's title still names its mailbox when it starts with the mailbox's name, spelled
// exactly so; every title starts with the empty name.
bool titleNames(NSString *title, MailboxUid *mailbox)
{
    NSString *name = [mailbox displayName];
    if (name == nil)
        return false;
    return [title length] >= [name length] && [title compare:name options:NSLiteralSearch range:NSMakeRange(0, [name length])] == NSOrderedSame;
}

/* One day: its store, the plain steps beside the plug-in, and its steps. */
class Day {
public:
    explicit Day(DayBytes &dayBytes) : bytes(dayBytes) {}
    ~Day() { [plain release]; }

    void play()
    {
        where = "the day's start";
        setUp();
        for (unsigned number = 1; number <= LVMostSteps && !bytes.atEnd(); number++)
            playStep(number);
    }

private:
    typedef void (Day::*Step)();
    struct NamedStep {
        const char *name;
        Step run;
    };

    DayBytes &bytes;
    std::string where;
    std::string setting;            // the day's set-up, for failure reports
    int limit = 0;
    NSArray *accounts = nil;        // every account of the day's store, in use or not
    LVLiteralLorvane *plain = nil;  // retained
    MessageViewer *front = nil;     // the viewer the plug-in last heard came to the front
    unsigned relaunches = 0;

    /* ---- Failures ---- */

    void fail(const std::string &what)
    {
        std::string report = where + " of a day with " + setting + ":\n" + what;
        LVFuzzFail(report.c_str());
    }

    void expectNoDifference(const std::string &difference, const char *what)
    {
        if (!difference.empty())
            fail(std::string(what) + " differs: " + difference);
    }

    void expectSameList() { expectNoDifference(LVListDifference(mail.provider, plain), "the list"); }

    /* ---- The day's start ---- */

    void setUp()
    {
        uint8_t limitByte = bytes.take();
        limit = limitByte < 250 ? 1 + limitByte % 50 : LVHighestLimit;
        uint8_t settings = bytes.take();
        static const int sortTypes[] = { 0, 1, 2, 7, 0, 1, 2, -1 };
        int sortType = sortTypes[settings % 8];
        BOOL exclude = (settings & 8) != 0;
        int form = settings < 16 ? 0 : 1 + (settings >> 4) % 2; // none, XML, binary
        LVStartDayClock(pickFrom(LVDayStarts, bytes.take()));
        useProviderWithLimit(limit);
        clearPlugIn();
        openStore();
        NSDictionary *preferences = @{ @"SortType" : @(sortType), @"ExcludeSpecialMailboxes" : @(exclude), @"RecentMailboxes" : savedRecords() };
        preferences = writePreferencesFile(form, preferences);
        static const char *const forms[] = { "no file", "an XML file ", "a binary file " };
        setting = "limit " + std::to_string(limit) + ", " + forms[form] + (form != 0 ? LVText([preferences description]) : "");
        startPlugIn(form != 0 ? preferences : nil);
    }

    // Written over the last day's file rather than anew: making a file costs more than a day.
    // Answers what the file holds. GNUstep's binary writer shares one string among strings it
    // takes as equal, an "é" written as one character or as two among them: the plain steps read
    // what was written, as the plug-in does.
    NSDictionary *writePreferencesFile(int form, NSDictionary *preferences)
    {
        NSString *path = LVFuzzPreferencesFilePath();
        if (form == 0) {
            [[NSFileManager defaultManager] removeItemAtPath:path error:NULL];
            return nil;
        }
        NSData *data = form == 1 ? xmlPropertyList(preferences)
                                 : [NSPropertyListSerialization dataWithPropertyList:preferences format:NSPropertyListBinaryFormat_v1_0 options:0 error:NULL];
        if (![data writeToFile:path atomically:NO])
            fail("cannot write the preferences file");
        if (form == 1)
            return preferences;
        return [NSPropertyListSerialization propertyListWithData:data options:NSPropertyListImmutable format:NULL error:NULL];
    }

    // Accounts as Mail has them before the plug-in starts: no account change is announced, and
    // only the viewers show them (Mail's "Go To" menu is never read here).
    void openStore()
    {
        NSMutableArray *store = [NSMutableArray array];
        for (NSUInteger count = 1 + bytes.take() % 4; count > 0; count--) {
            AccountKind kind = pickFrom(LVAccountKinds, bytes.take());
            unsigned mask = bytes.take() | (unsigned)bytes.take() << 8;
            Class accountClass = kind.imap ? [IMAPAccount class] : [MailAccount class];
            MailAccount *account = [[[accountClass alloc] initWithDisplayName:string(kind.name) path:nil] autorelease];
            if (kind.imap)
                [(IMAPAccount *)account setServerPathPrefix:@"INBOX"];
            for (unsigned bit = 0; bit < 16; bit++)
                if (mask & (1u << bit))
                    [account createMailboxWithRelativePath:string(LVPathPool[bit])];
            [store addObject:account];
        }
        accounts = store;
        [MailAccount setActiveAccounts:accounts];
        for (MessageViewer *viewer in mail.viewers)
            [viewer mailboxesDidChange];
    }

    NSArray *savedRecords()
    {
        NSMutableArray *mailboxes = [NSMutableArray array];
        for (MailAccount *account in accounts)
            [mailboxes addObjectsFromArray:[account allMailboxUids]];
        NSMutableArray *records = [NSMutableArray array];
        for (NSUInteger count = bytes.take() % 8; count > 0; count--)
            [records addObject:savedRecord(mailboxes, bytes.take(), bytes.take(), bytes.take())];
        return records;
    }

    // Counts as saved or hand-edited; dates to the second, some under the old key, some that
    // no parser reads, some missing.
    NSDictionary *savedRecord(NSArray *mailboxes, uint8_t which, uint8_t how, uint8_t when)
    {
        NSMutableDictionary *saved = [NSMutableDictionary dictionary];
        BOOL nowhere = which == 255 || [mailboxes count] == 0;
        [saved setObject:nowhere ? @"/nowhere/at/all" : [[mailboxes objectAtIndex:which % [mailboxes count]] fullPath] forKey:@"FullPath"];
        static const int counts[] = { 0, 1, 2, 3, 4, 5, 0, -3 };
        if (how % 8 != 0)
            [saved setObject:@(counts[how % 8]) forKey:@"Accesses"];
        NSString *date = LVSavedDateText(LVDayClockNow() - 60.0 * ((how >> 5) % 4) - (when >> 3), pickFrom(LVZoneMinutes, when));
        static NSString *const keys[] = { @"Date", @"CalendarDate", @"Date", nil };
        NSString *key = keys[(how >> 3) % 4];
        if (key != nil)
            [saved setObject:(how & 0x80) && (how & 0x40) ? @"last Tuesday" : date forKey:key];
        return saved;
    }

    // A day's start and a relaunch stand for Mail starting with the day's limit; the provider
    // started with it is put back as -init leaves a new one, through its own methods. First,
    // menus that show nothing, as a new provider's: the last list cleared and shown while its
    // mailboxes are still alive.
    void clearPlugIn()
    {
        [mail.provider clearRecentMailboxes];
        [[mail.provider moveToRecentSubmenu] update];
    }

    // Then the list read from the day's file, as -init reads it; and the first viewer in front.
    void startPlugIn(NSDictionary *preferences)
    {
        [mail.provider readPreferences];
        [plain release];
        plain = [[LVLiteralLorvane alloc] initWithLimit:limit preferences:preferences];
        bringToFront(0);
        expectSameList();
    }

    /* ---- Steps ---- */

    void playStep(unsigned number)
    {
        static const NamedStep steps[] = {
            { "transfer from a viewer", &Day::transferFromViewer },
            { "transfer from a viewer", &Day::transferFromViewer },
            { "transfer from a viewer", &Day::transferFromViewer },
            { "transfer from a viewer", &Day::transferFromViewer },
            { "transfer from a viewer", &Day::transferFromViewer },
            { "transfer from a viewer", &Day::transferFromViewer },
            { "transfer from a viewer", &Day::transferFromViewer },
            { "transfer from a special viewer", &Day::transferFromSpecialViewer },
            { "transfer from a special viewer", &Day::transferFromSpecialViewer },
            { "transfer for another delegate", &Day::transferForAnotherDelegate },
            { "transfer for another delegate", &Day::transferForAnotherDelegate },
            { "opening", &Day::openSubmenu },
            { "opening", &Day::openSubmenu },
            { "opening", &Day::openSubmenu },
            { "opening", &Day::openSubmenu },
            { "opening", &Day::openSubmenu },
            { "choice", &Day::chooseItem },
            { "choice", &Day::chooseItem },
            { "choice", &Day::chooseItem },
            { "choice", &Day::chooseItem },
            { "choice", &Day::chooseItem },
            { "choice", &Day::chooseItem },
            { "rename", &Day::renameMailbox },
            { "rename", &Day::renameMailbox },
            { "deletion", &Day::deleteMailbox },
            { "new mailbox", &Day::addMailbox },
            { "new mailbox", &Day::addMailbox },
            { "accounts", &Day::changeAccounts },
            { "front viewer", &Day::changeFrontViewer },
            { "clock", &Day::moveClock },
            { "clock", &Day::moveClock },
            { "quit and relaunch", &Day::quitAndRelaunch },
        };
        const NamedStep &step = pickFrom(steps, bytes.take());
        where = "step " + std::to_string(number) + " (" + step.name + ")";
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        @try {
            (this->*step.run)();
        } @catch (NSException *exception) {
            fail("raised " + LVText([exception name]) + ": " + LVText([exception reason]));
        }
        expectSameList();
        for (NSString *line in LVFuzzLoggedLines())
            if ([line hasPrefix:@"[Lorvane"])
                fail("logged " + LVText(line));
        LVFuzzForget();
        [pool release];
    }

    id pick(NSArray *items, uint8_t byte) { return [items count] != 0 ? [items objectAtIndex:byte % [items count]] : nil; }

    // With the high bit, a mailbox the list holds, so that hits and misses both come often.
    MailboxUid *pickDestination(uint8_t byte)
    {
        NSArray *live = LVLiveMailboxes(NO);
        if (byte & 0x80) {
            NSMutableArray *listed = [NSMutableArray array];
            for (LVLiteralRecord *record in [plain records])
                if ([live indexOfObjectIdenticalTo:[record uid]] != NSNotFound)
                    [listed addObject:[record uid]];
            if ([listed count] != 0)
                return pick(listed, byte & 0x7f);
        }
        return pick(live, byte & 0x7f);
    }

    // The source is shown again only when the viewer shows something else: Mail redraws the
    // viewer for it.
    void selectMessages(MessageViewer *viewer, NSUInteger count)
    {
        if ([[viewer selectedMailboxes] count] != 1 || [[viewer selectedMailboxes] firstObject] != mail.source)
            [viewer setSelectedMailboxes:@[ mail.source ]];
        [[viewer messageList] selectMessagesAtIndexes:[NSIndexSet indexSetWithIndexesInRange:NSMakeRange(0, count)]];
        if ([[[viewer messageList] selectedMessagePaths] count] != count)
            fail("the source mailbox lost its messages");
    }

    // Moves stay where they are: the day's mailboxes hold no files.
    void transferFrom(MessageViewer *viewer, BOOL countsAsAUse)
    {
        MailboxUid *destination = pickDestination(bytes.take());
        uint8_t how = bytes.take();
        if (destination == nil)
            return;
        selectMessages(viewer, 1 + how % LVSourceMessages);
        [viewer transferSelectedMessagesToMailbox:destination deleteOriginals:(how & 4) != 0];
        if (countsAsAUse)
            [plain addOrTouch:destination];
    }

    void transferFromViewer() { transferFrom(pick(mail.viewers, bytes.take() % 2), YES); }

    void transferFromSpecialViewer() { transferFrom([mail.viewers objectAtIndex:2], NO); }

    // Mail's own transfers: its delegate is no viewer, or there is none.
    void transferForAnotherDelegate()
    {
        MailboxUid *destination = pickDestination(bytes.take());
        uint8_t how = bytes.take();
        if (destination == nil)
            return;
        NSArray *paths = [[mail.source messagePaths] subarrayWithRange:NSMakeRange(0, 1 + how % LVSourceMessages)];
        MessageTransfer *transfer = [[MessageTransfer alloc] initWithMessagesAtPaths:paths destinationMailbox:destination deleteOriginals:(how & 4) != 0];
        [transfer setDelegate:(how & 8) ? [mail.application mailboxesController] : nil];
        [transfer perform];
        [transfer release];
    }

    NSMenu *submenu(NSUInteger family) { return [LVRecentSubmenus(mail.provider) objectAtIndex:family]; }

    void open(NSUInteger family)
    {
        [submenu(family) update];
        [plain open];
        expectNoDifference(LVMenusDifference(mail.provider, plain), "the submenus");
    }

    void openSubmenu() { open(bytes.take() % 5); }

    // Right after its submenu opened, or from what the submenus last showed (a rename or a
    // deletion since may have left the item stale). An item past the end of a list that shrank
    // since would make the action raise, as it may: not a step a day here takes.
    void chooseItem()
    {
        NSUInteger family = bytes.take() % 5;
        uint8_t which = bytes.take();
        uint8_t how = bytes.take();
        if (!(how & 1))
            open(family);
        NSUInteger rows = [[plain rows] count];
        if (which >= 0xF0) {
            chooseClearMenu(family, rows);
            return;
        }
        NSUInteger index = rows != 0 ? which % rows : 0;
        if (rows == 0 || index >= [[plain records] count])
            return;
        NSString *title = ((LVLiteralRow *)[[plain rows] objectAtIndex:index])->title;
        MailboxUid *mailbox = [(LVLiteralRecord *)[[plain records] objectAtIndex:index] uid];
        SEL action = [[submenu(family) itemAtIndex:(NSInteger)index] action];
        id receiver = [NSApp targetForAction:action];
        NSUInteger selected = (how & 2) ? 1 + (how >> 2) % LVSourceMessages : 0;
        for (MessageViewer *viewer in mail.viewers)
            if (viewer == receiver && selected != 0)
                selectMessages(viewer, selected);
            else if ([[viewer selectedMailboxes] count] != 0)
                [viewer setSelectedMailboxes:@[]];
        std::string wanted = family == 2 ? goToOutcome(receiver, mailbox) : transferOutcome(receiver, family, title, mailbox, selected);
        NSMenu *menu = submenu(family);
        expectToldMail(wanted, [menu, index] { [menu performActionForItemAtIndex:(NSInteger)index]; });
    }

    // Move and copy check the title against the mailbox now at the item's place; Mail then
    // transfers the selected messages (which it reports, as every transfer) and the action
    // counts the use again.
    std::string transferOutcome(id receiver, NSUInteger family, NSString *title, MailboxUid *mailbox, NSUInteger selected)
    {
        if (receiver == nil)
            return transferMailboxText(nil, NO) + noticesText(0, 0);
        if (!titleNames(title, mailbox))
            return transferMailboxText(nil, NO) + noticesText(1, 2);
        BOOL move = family == 0 || family == 3;
        std::string told = transferMailboxText(mailbox, move);
        if (selected != 0) {
            told += transferText([mail.viewers indexOfObjectIdenticalTo:receiver], selected, mailbox, move);
            if ([receiver isMemberOfClass:[MessageViewer class]])
                [plain addOrTouch:mailbox];
        }
        [plain addOrTouch:mailbox];
        return told + noticesText(0, 0);
    }

    // Go To shows the mailbox in the viewer the plug-in last heard came to the front, whichever
    // viewer the action reached.
    std::string goToOutcome(id receiver, MailboxUid *mailbox)
    {
        std::string told = transferMailboxText(nil, NO);
        if (receiver != nil && front != nil)
            told += selectionText([mail.viewers indexOfObjectIdenticalTo:front], @[ mailbox ]);
        return told + noticesText(0, 0);
    }

    // Chosen as a click would: only while enabled, that is while the last opening showed entries.
    void chooseClearMenu(NSUInteger family, NSUInteger rows)
    {
        NSMenu *menu = submenu(family);
        if ([NSApp targetForAction:[[menu itemAtIndex:(NSInteger)rows + 1] action]] != nil && [plain clearItemsEnabled])
            [plain clear];
        expectToldMail(transferMailboxText(nil, NO) + noticesText(0, 0), [menu, rows] { [menu performActionForItemAtIndex:(NSInteger)rows + 1]; });
    }

    // The stand-in Mail says when a move finds no folder to put a message in: not the plug-in.
    NSUInteger pluginLogLines()
    {
        NSUInteger count = 0;
        for (NSString *line in LVFuzzLoggedLines())
            count += ![line hasPrefix:@"MailHost"];
        return count;
    }

    // Runs the choice and compares what Mail was told with what the plain steps want.
    template <class Choice> void expectToldMail(const std::string &wanted, Choice choice)
    {
        std::vector<id> transfers;
        for (MessageViewer *viewer in mail.viewers)
            transfers.push_back([viewer lastTransfer]);
        NSArray *selections = [mail.viewers valueForKey:@"selectedMailboxes"];
        MailboxesController *controller = [mail.application mailboxesController];
        [controller setCurrentTransferMailbox:nil deletedOriginals:NO];
        MHClearRecordedAlerts();
        LVFuzzForget();
        choice();

        std::string told = transferMailboxText([controller currentTransferMailbox], [controller currentTransferDeletesOriginals]);
        for (NSUInteger i = 0; i < [mail.viewers count]; i++) {
            MessageViewer *viewer = [mail.viewers objectAtIndex:i];
            MessageTransfer *transfer = [viewer lastTransfer];
            MHTransferOperation *last = [[transfer operations] lastObject];
            if (transfer != transfers[i])
                told += transferText(i, [[transfer operations] count], [last destinationMailboxUid], [last deletesOriginal]);
            if (![[viewer selectedMailboxes] isEqualToArray:[selections objectAtIndex:i]])
                told += selectionText(i, [viewer selectedMailboxes]);
        }
        told += noticesText([MHRecordedAlerts() count], pluginLogLines());
        if (told != wanted)
            fail("Mail was told\n" + told + "wanted\n" + wanted);
    }

    void renameMailbox()
    {
        MailboxUid *mailbox = pick(LVLiveMailboxes(YES), bytes.take());
        NSString *name = string(pickFrom(LVNamePool, bytes.take()));
        if (mailbox != nil && [mail.application renameMailbox:mailbox toName:name])
            [plain signalUpdateMenu];
    }

    // Through the account, as Mail deletes; Mail's redrawing of its lists afterwards is left out.
    void deleteMailbox()
    {
        MailboxUid *mailbox = pick(LVLiveMailboxes(YES), bytes.take());
        if (mailbox == nil || ![[mailbox account] deleteMailbox:mailbox reflectToServer:YES])
            return;
        [plain signalRemoveDeletedMailboxes];
        [plain signalUpdateMenu];
    }

    // A path deleted before comes back as a new mailbox at the same full path. Mail shows it in
    // its lists, which the plug-in never reads: that is left out.
    void addMailbox()
    {
        MailAccount *account = pick([MailAccount activeAccounts], bytes.take());
        [account createMailboxWithRelativePath:string(pickFrom(LVPathPool, bytes.take()))];
    }

    // Mail keeps at least one account in use; one taken out of use may come back.
    void changeAccounts()
    {
        MailAccount *account = pick(accounts, bytes.take());
        NSMutableArray *active = [[[MailAccount activeAccounts] mutableCopy] autorelease];
        if ([active indexOfObjectIdenticalTo:account] == NSNotFound)
            [active addObject:account];
        else if ([active count] > 1)
            [active removeObjectIdenticalTo:account];
        else
            return;
        [mail.application setActiveAccounts:active];
        [plain signalRemoveDeletedMailboxes];
        [plain signalUpdateMenu];
    }

    // The window comes forward and becomes main, as Mail reports to its delegate.
    void bringToFront(NSUInteger index)
    {
        front = [mail.viewers objectAtIndex:index];
        [front windowDidBecomeMain:nil];
    }

    void changeFrontViewer() { bringToFront(bytes.take() % [mail.viewers count]); }

    void moveClock() { LVAdvanceDayClock(pickFrom(LVClockSteps, bytes.take())); }

    // The plug-in writes its file before Mail's own handler runs; the next launch reads it.
    void quitAndRelaunch()
    {
        if (++relaunches > LVMostRelaunches)
            return;
        [mail.application applicationWillTerminate:nil];
        NSData *data = [NSData dataWithContentsOfFile:LVFuzzPreferencesFilePath()];
        id written = data != nil ? [NSPropertyListSerialization propertyListWithData:data options:0 format:NULL error:NULL] : nil;
        expectNoDifference(LVSavedFileDifference(written, plain), "the saved file");
        where += ", relaunched";
        clearPlugIn();
        startPlugIn(written);
    }
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    startMail();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t length)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    DayBytes bytes(data, length);
    Day day(bytes);
    day.play();
    dropWindowServerEvents();
    [pool release];
    return 0;
}
