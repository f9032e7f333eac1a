/*
 * Faults a user's machine can throw at Lorvane: a disk that fills while the preferences
 * are written, a Preferences folder that is missing or cannot be written, a file that does
 * not read or is replaced while Mail runs, Mail quitting with a recent submenu open, a
 * mailbox deleted while its item is on screen, and lists at odd limits. Whatever happens,
 * the user's file is kept whole and nothing raises into Mail.
 *
 * Disk faults are injected, since tests run as root, for whom permissions stop nothing:
 * this executable exports its own write, fsync, mkstemp and rename, which the loaded
 * bundle binds to before the C library's, and which fail as asked for files in the
 * Preferences folder only.
 */
#import "LVMailFixture.h"
#import "LVProviderFixture.h"
#import "MHScreenshot.h"

#include <algorithm>
#include <cerrno>
#include <dlfcn.h>
#include <string>
#include <unistd.h>

namespace {

enum class Call { None, Write, Fsync, Mkstemp, Rename };

// One fault: the call that fails and with which error. Writes fail once the byte budget
// is spent; the other calls fail after letting the given number through.
struct Fault {
    Call call;
    size_t bytesLetThrough;
    int callsLetThrough;
    int error;
};

Fault armedFault = { Call::None, 0, 0, 0 };
std::string faultFolder;  // with a trailing slash
int faultsInjected = 0;

bool inFaultFolder(const char *path)
{
    return path != nullptr && faultFolder.size() > 0 && strncmp(path, faultFolder.c_str(), faultFolder.size()) == 0;
}

bool descriptorInFaultFolder(int descriptor)
{
    char link[64];
    char target[4096];
    snprintf(link, sizeof link, "/proc/self/fd/%d", descriptor);
    ssize_t length = readlink(link, target, sizeof target - 1);
    if (length < 0)
        return false;
    target[length] = '\0';
    return inFaultFolder(target);
}

// Whether this call in the Preferences folder must fail now; counts it either way.
bool failsNow(Call call)
{
    if (armedFault.call != call)
        return false;
    if (armedFault.callsLetThrough > 0) {
        armedFault.callsLetThrough--;
        return false;
    }
    faultsInjected++;
    errno = armedFault.error;
    return true;
}

template <typename Function> Function next(const char *name)
{
    return (Function)dlsym(RTLD_NEXT, name);
}

} // namespace

extern "C" __attribute__((visibility("default"))) ssize_t write(int descriptor, const void *bytes, size_t count)
{
    static auto realWrite = next<ssize_t (*)(int, const void *, size_t)>("write");
    if (armedFault.call != Call::Write || !descriptorInFaultFolder(descriptor))
        return realWrite(descriptor, bytes, count);
    if (armedFault.bytesLetThrough == 0) {
        failsNow(Call::Write);
        return -1;
    }
    // The disk takes what room is left, as a short write, and refuses the rest.
    size_t taken = std::min(count, armedFault.bytesLetThrough);
    armedFault.bytesLetThrough -= taken;
    return realWrite(descriptor, bytes, taken);
}

extern "C" __attribute__((visibility("default"))) int fsync(int descriptor)
{
    static auto realFsync = next<int (*)(int)>("fsync");
    if (armedFault.call == Call::Fsync && descriptorInFaultFolder(descriptor) && failsNow(Call::Fsync))
        return -1;
    return realFsync(descriptor);
}

extern "C" __attribute__((visibility("default"))) int mkstemp(char *pattern)
{
    static auto realMkstemp = next<int (*)(char *)>("mkstemp");
    if (inFaultFolder(pattern) && failsNow(Call::Mkstemp))
        return -1;
    return realMkstemp(pattern);
}

extern "C" __attribute__((visibility("default"))) int rename(const char *from, const char *to)
{
    static auto realRename = next<int (*)(const char *, const char *)>("rename");
    if (inFaultFolder(to) && failsNow(Call::Rename))
        return -1;
    return realRename(from, to);
}

// How the host opens a chain of menus as a click does; the tests hold a submenu open with it.
@interface MHScreenshot (OpeningMenus)
+ (NSArray *)menuChainEndingAt:(NSMenu *)menu;
+ (void)openChain:(NSArray *)chain;
+ (void)closeChain:(NSArray *)chain;
@end

namespace {

NSString *const WriteFailureLine = @"[Lorvane] error writing to preferences file.";

NSString *preferencesFolder(void)
{
    return [MHPreferencesFilePath() stringByDeletingLastPathComponent];
}

NSString *keptCopyPath(void)
{
    return [MHPreferencesFilePath() stringByAppendingString:@".bak"];
}

// Lorvane's files in the Preferences folder, temporary ones included, by name.
NSArray *lorvaneFiles(void)
{
    NSMutableArray *names = [NSMutableArray array];
    for (NSString *name in [[NSFileManager defaultManager] contentsOfDirectoryAtPath:preferencesFolder() error:NULL])
        if ([name hasPrefix:@"org.lorvane."])
            [names addObject:name];
    return [names sortedArrayUsingSelector:@selector(compare:)];
}

void removeLorvaneFiles(void)
{
    for (NSString *name in lorvaneFiles())
        [[NSFileManager defaultManager] removeItemAtPath:[preferencesFolder() stringByAppendingPathComponent:name] error:NULL];
}

NSData *bytesOf(NSString *text)
{
    return [text dataUsingEncoding:NSUTF8StringEncoding];
}

NSData *xmlOf(id plist)
{
    return [NSPropertyListSerialization dataWithPropertyList:plist format:NSPropertyListXMLFormat_v1_0 options:0 error:NULL];
}

// A hand-edited file with one typo: a closing tag mistyped.
NSData *fileWithATypo(void)
{
    NSString *text = [[[NSString alloc] initWithData:xmlOf(@{ @"SortType" : @2 }) encoding:NSUTF8StringEncoding] autorelease];
    return bytesOf([text stringByReplacingOccurrencesOfString:@"</integer>" withString:@"</integr>"]);
}

NSArray *savedFullPaths(NSString *path)
{
    NSMutableArray *paths = [NSMutableArray array];
    for (NSDictionary *record in [LVReadPlist(path) objectForKey:@"RecentMailboxes"])
        [paths addObject:[record objectForKey:@"FullPath"]];
    return paths;
}

// A file listing the mailboxes, the first one the oldest, a minute apart.
NSData *listingOf(NSArray *mailboxes)
{
    NSMutableArray *records = [NSMutableArray array];
    NSUInteger count = [mailboxes count];
    for (NSUInteger i = 0; i < count; i++) {
        NSString *date = [[NSDate dateWithTimeIntervalSinceNow:-60.0 * (double)(count - i)] description];
        [records addObject:@{ @"FullPath" : [[mailboxes objectAtIndex:i] fullPath], @"Accesses" : @1, @"Date" : date }];
    }
    return xmlOf(@{ @"RecentMailboxes" : records });
}

class PreferencesFault : public LVHomeAccountTest {
protected:
    void SetUp() override
    {
        LVHomeAccountTest::SetUp();
        faultFolder = std::string([preferencesFolder() fileSystemRepresentation]) + "/";
        removeLorvaneFiles();
    }

    void TearDown() override
    {
        armedFault = { Call::None, 0, 0, 0 };
        faultFolder.clear();
    }

    NSString *fullPath(NSString *name)
    {
        return [mailbox(name) fullPath];
    }

    NSData *fileListing(NSArray *names)
    {
        NSMutableArray *mailboxes = [NSMutableArray array];
        for (NSString *name in names)
            [mailboxes addObject:mailbox(name)];
        return listingOf(mailboxes);
    }

    // Puts the bytes where the file belongs (nil: no file), has a fresh provider read it as
    // start-up does, and has the user then move messages to "Work".
    LorvaneBundle_Provider *startWith(NSData *contents)
    {
        [[NSFileManager defaultManager] removeItemAtPath:MHPreferencesFilePath() error:NULL];
        if (contents != nil)
            EXPECT_TRUE([contents writeToFile:MHPreferencesFilePath() atomically:YES]);
        LorvaneBundle_Provider *provider = LVMakeListProvider(10, 0, YES);
        [provider readPreferences];
        [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Work"))];
        return provider;
    }

    // Writes as Mail's quitting does, with the fault armed; answers how often it fired.
    int writeWithFault(LorvaneBundle_Provider *provider, Fault fault)
    {
        armedFault = fault;
        faultsInjected = 0;
        [provider writePreferences];
        armedFault = { Call::None, 0, 0, 0 };
        return faultsInjected;
    }
};

} // namespace

TEST_F(PreferencesFault, AFailedWriteLeavesTheOldFileWholeNoTemporaryFileAndOneLogLine)
{
    NSData *valid = fileListing(@[ @"Lists" ]);
    NSData *typo = fileWithATypo();
    NSArray *fileOnly = @[ @"org.lorvane.mailbundle.plist" ];
    NSArray *fileAndCopy = @[ @"org.lorvane.mailbundle.plist", @"org.lorvane.mailbundle.plist.bak" ];
    struct Row {
        const char *what;
        NSData *start;
        Fault fault;
        NSArray *filesAfter;
        NSData *keptCopy;  // nil: no copy kept beside the file
    } rows[] = {
        { "disk full from the first byte", valid, { Call::Write, 0, 0, ENOSPC }, fileOnly, nil },
        { "disk full after 100 bytes", valid, { Call::Write, 100, 0, ENOSPC }, fileOnly, nil },
        { "disk full found by the flush", valid, { Call::Fsync, 0, 0, ENOSPC }, fileOnly, nil },
        { "folder refuses new files", valid, { Call::Mkstemp, 0, 0, EACCES }, fileOnly, nil },
        { "folder refuses the replacement", valid, { Call::Rename, 0, 0, EROFS }, fileOnly, nil },
        { "disk full while keeping the unread file", typo, { Call::Write, 100, 0, ENOSPC }, fileOnly, nil },
        { "the kept copy cannot take its name", typo, { Call::Rename, 0, 0, EROFS }, fileOnly, nil },
        { "the new file cannot replace the unread one", typo, { Call::Rename, 0, 1, EROFS }, fileAndCopy, typo },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        removeLorvaneFiles();
        LorvaneBundle_Provider *provider = startWith(row.start);
        NSUInteger listed = [LVProviderList(provider) count];
        LVClearLog();

        EXPECT_EQ(1, writeWithFault(provider, row.fault));

        EXPECT_NSEQ(row.start, [NSData dataWithContentsOfFile:MHPreferencesFilePath()]);
        EXPECT_NSEQ(row.filesAfter, lorvaneFiles());
        EXPECT_NSEQ(row.keptCopy, [NSData dataWithContentsOfFile:keptCopyPath()]);
        EXPECT_NSEQ(@[ WriteFailureLine ], LVLoggedLines());
        EXPECT_EQ(listed, [LVProviderList(provider) count]);
    }
}

TEST_F(PreferencesFault, AMissingFolderIsMadePrivateAndOneThatIsAFileStopsOnlyTheWrite)
{
    NSFileManager *fileManager = [NSFileManager defaultManager];
    NSString *library = LVTestLibraryFolder();
    NSData *strayFile = bytesOf(@"not a folder");
    struct Row {
        const char *what;
        NSString *removed;   // the folder taken away before writing
        NSData *inItsPlace;  // bytes of a plain file put where the folder was, or nil
    } rows[] = {
        { "no Preferences folder", preferencesFolder(), nil },
        { "no Library folder", library, nil },
        { "Preferences is a plain file", preferencesFolder(), strayFile },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        LorvaneBundle_Provider *provider = startWith(nil);
        [fileManager removeItemAtPath:row.removed error:NULL];
        if (row.inItsPlace != nil)
            ASSERT_TRUE([row.inItsPlace writeToFile:row.removed atomically:NO]);
        LVClearLog();

        [provider writePreferences];

        if (row.inItsPlace != nil) {
            EXPECT_NSEQ(@[ WriteFailureLine ], LVLoggedLines());
            EXPECT_NSEQ(row.inItsPlace, [NSData dataWithContentsOfFile:row.removed]);
            [fileManager removeItemAtPath:row.removed error:NULL];
            continue;
        }
        EXPECT_EQ(0u, [LVLoggedLines() count]);
        EXPECT_NSEQ(@[ fullPath(@"Work") ], savedFullPaths(MHPreferencesFilePath()));
        EXPECT_EQ(0700u, [[fileManager attributesOfItemAtPath:preferencesFolder() error:NULL] filePosixPermissions]);
    }
}

TEST_F(PreferencesFault, AFileThatDidNotReadIsKeptBesideTheNewOneAsTheUserHadIt)
{
    NSData *older = bytesOf(@"an older copy");
    NSData *typo = fileWithATypo();
    NSData *arrayAtTheRoot = xmlOf(@[ @{ @"SortType" : @2 } ]);
    NSData *binary = [NSPropertyListSerialization dataWithPropertyList:@{ @"SortType" : @2 } format:NSPropertyListBinaryFormat_v1_0 options:0 error:NULL];
    NSData *cutBinary = [binary subdataWithRange:NSMakeRange(0, [binary length] / 2)];
    struct Row {
        const char *what;
        NSData *start;     // nil: no file
        NSData *olderCopy; // an earlier .bak, or nil
        NSData *keptCopy;  // what .bak holds afterwards, or nil for none
    } rows[] = {
        { "a typo in the XML", typo, nil, typo },
        { "an array at the root", arrayAtTheRoot, nil, arrayAtTheRoot },
        { "a binary list cut short", cutBinary, nil, cutBinary },
        { "a newer unread file over an older copy", typo, older, typo },
        { "an empty file", [NSData data], older, older },
        { "a file that reads", fileListing(@[ @"Lists" ]), older, older },
        { "no file", nil, nil, nil },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        removeLorvaneFiles();
        if (row.olderCopy != nil)
            ASSERT_TRUE([row.olderCopy writeToFile:keptCopyPath() atomically:YES]);
        LorvaneBundle_Provider *provider = startWith(row.start);
        LVClearLog();

        [provider writePreferences];

        EXPECT_NSEQ(row.keptCopy, [NSData dataWithContentsOfFile:keptCopyPath()]);
        EXPECT_TRUE([savedFullPaths(MHPreferencesFilePath()) containsObject:fullPath(@"Work")]);
        EXPECT_EQ(0u, [LVLoggedLines() count]);
    }
}

TEST_F(PreferencesFault, AFileReplacedWhileMailRunsGivesWayToTheListAndNothingElseIsWritten)
{
    NSFileManager *fileManager = [NSFileManager defaultManager];
    NSString *elsewhere = [LVMakeTemporaryFolder(@"elsewhere") stringByAppendingPathComponent:@"shared.plist"];
    NSData *otherList = fileListing(@[ @"Family" ]);
    enum Replacement { Removed, AnotherList, AFolder, ALinkElsewhere };
    struct Row {
        const char *what;
        NSData *start;
        Replacement replacement;
        BOOL written;
        NSData *keptCopy;
    } rows[] = {
        { "removed", fileListing(@[ @"Lists" ]), Removed, YES, nil },
        { "by another list", fileListing(@[ @"Lists" ]), AnotherList, YES, nil },
        { "by a folder", fileListing(@[ @"Lists" ]), AFolder, NO, nil },
        { "by a link to a file elsewhere", fileListing(@[ @"Lists" ]), ALinkElsewhere, YES, nil },
        { "an unread file mended by hand", fileWithATypo(), AnotherList, YES, fileWithATypo() },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        removeLorvaneFiles();
        LorvaneBundle_Provider *provider = startWith(row.start);
        NSArray *listed = [NSArray arrayWithObjects:fullPath(@"Work"), row.keptCopy == nil ? fullPath(@"Lists") : nil, nil];
        [fileManager removeItemAtPath:MHPreferencesFilePath() error:NULL];
        if (row.replacement == AnotherList)
            ASSERT_TRUE([otherList writeToFile:MHPreferencesFilePath() atomically:YES]);
        if (row.replacement == AFolder)
            ASSERT_TRUE([fileManager createDirectoryAtPath:[MHPreferencesFilePath() stringByAppendingPathComponent:@"inside"] withIntermediateDirectories:YES attributes:nil error:NULL]);
        if (row.replacement == ALinkElsewhere) {
            ASSERT_TRUE([otherList writeToFile:elsewhere atomically:YES]);
            ASSERT_TRUE([fileManager createSymbolicLinkAtPath:MHPreferencesFilePath() pathContent:elsewhere]);
        }
        LVClearLog();

        [provider writePreferences];

        EXPECT_NSEQ(row.keptCopy, [NSData dataWithContentsOfFile:keptCopyPath()]);
        if (!row.written) {
            EXPECT_NSEQ(@[ WriteFailureLine ], LVLoggedLines());
            EXPECT_NSEQ(@[ @"inside" ], [fileManager contentsOfDirectoryAtPath:MHPreferencesFilePath() error:NULL]);
            continue;
        }
        EXPECT_EQ(0u, [LVLoggedLines() count]);
        EXPECT_NSEQ([listed sortedArrayUsingSelector:@selector(compare:)],
                    [savedFullPaths(MHPreferencesFilePath()) sortedArrayUsingSelector:@selector(compare:)]);
        // The plug-in replaces its own name in its folder; it never writes through into another file.
        EXPECT_NSEQ(NSFileTypeRegular, [[fileManager attributesOfItemAtPath:MHPreferencesFilePath() error:NULL] fileType]);
        if (row.replacement == ALinkElsewhere)
            EXPECT_NSEQ(otherList, [NSData dataWithContentsOfFile:elsewhere]);
    }
}

/* ---- Mail quitting while a recent submenu is open ---- */

namespace {

enum class OpenSubmenu { ShownOnScreen, InTheMiddleOfItsRebuild };

const char *nameOf(OpenSubmenu open)
{
    return open == OpenSubmenu::ShownOnScreen ? "ShownOnScreen" : "InTheMiddleOfItsRebuild";
}

void PrintTo(OpenSubmenu open, std::ostream *out)
{
    *out << nameOf(open);
}

} // namespace

// Quits Mail the first time the watched submenu gains an item, as if the terminate
// notification arrived while AppKit was bringing the submenu up to date.
@interface FTQuitDuringRebuild : NSObject
{
@public
    NSUInteger itemsWhenQuitting;
    BOOL quit;
}
- (void)menuGainedItem:(NSNotification *)notification;
@end

@implementation FTQuitDuringRebuild
- (void)menuGainedItem:(NSNotification *)notification
{
    if (quit)
        return;
    quit = YES;
    itemsWhenQuitting = (NSUInteger)[[notification object] numberOfItems];
    [(MailApp *)NSApp announceTermination];
}
@end

namespace {

class QuitWithSubmenuOpen : public testing::TestWithParam<OpenSubmenu> {
};

} // namespace

TEST_P(QuitWithSubmenuOpen, WritesTheWholeListAndTheSubmenuStillWorks)
{
    LorvaneBundle_Provider *plugin = LVStartMailWithSampleStore();
    ASSERT_TRUE(plugin != nil);
    MailApp *mail = (MailApp *)NSApp;
    MessageViewer *viewer = [mail openMessageViewer];
    NSArray *used = @[ LVSampleMailbox(@"Home/Travel"), LVSampleMailbox(@"Work/Clients"), LVSampleMailbox(@"Home/Family") ];
    LVUseMailboxes(viewer, LVSampleMailbox(@"Home/Inbox"), used);
    [[NSFileManager defaultManager] removeItemAtPath:MHPreferencesFilePath() error:NULL];
    NSMenu *move = [plugin moveToRecentSubmenu];
    LVClearLog();

    FTQuitDuringRebuild *quitter = [[[FTQuitDuringRebuild alloc] init] autorelease];
    if (GetParam() == OpenSubmenu::ShownOnScreen) {
        NSArray *chain = [MHScreenshot menuChainEndingAt:move];
        [MHScreenshot openChain:chain];
        ASSERT_TRUE([[move window] isVisible]);
        [mail announceTermination];
        [MHScreenshot closeChain:chain];
    } else {
        [[NSNotificationCenter defaultCenter] addObserver:quitter selector:@selector(menuGainedItem:) name:NSMenuDidAddItemNotification object:move];
        LVOpenRecentMenu(move);
        [[NSNotificationCenter defaultCenter] removeObserver:quitter];
        ASSERT_TRUE(quitter->quit);
        EXPECT_LT(quitter->itemsWhenQuitting, 2u + [used count]);
    }

    NSMutableArray *usedPaths = [NSMutableArray array];
    for (MailboxUid *mailbox in used)
        [usedPaths addObject:[mailbox fullPath]];
    EXPECT_NSEQ([usedPaths sortedArrayUsingSelector:@selector(compare:)],
                [savedFullPaths(MHPreferencesFilePath()) sortedArrayUsingSelector:@selector(compare:)]);
    EXPECT_EQ(0u, LVLogCount(WriteFailureLine));
    EXPECT_NSEQ((@[ @"Clients", @"Family", @"Travel" ]), LVTitlesAboveSeparator(move));
    // A choice still on its way when Mail quits is carried out.
    LVChooseItem([plugin goToRecentSubmenu], 2);
    EXPECT_NSEQ(@[ LVSampleMailbox(@"Home/Travel") ], [viewer selectedMailboxes]);
}

INSTANTIATE_TEST_SUITE_P(Faults, QuitWithSubmenuOpen, testing::Values(OpenSubmenu::ShownOnScreen, OpenSubmenu::InTheMiddleOfItsRebuild),
                         [](const testing::TestParamInfo<OpenSubmenu> &info) { return std::string(nameOf(info.param)); });

/* ---- A mailbox deleted while its item is on screen ---- */

TEST(DeletedMailboxOnScreen, ChoosingItHandsItToMailWhichMovesNothingAndTheNextOpeningDropsIt)
{
    LorvaneBundle_Provider *plugin = LVStartMailWithSampleStore();
    ASSERT_TRUE(plugin != nil);
    MailApp *mail = (MailApp *)NSApp;
    MessageViewer *viewer = [mail openMessageViewer];
    MailboxUid *inbox = LVSampleMailbox(@"Home/Inbox");
    LVUseMailboxes(viewer, inbox, @[ LVSampleMailbox(@"Home/Travel"), LVSampleMailbox(@"Home/Family"), LVSampleMailbox(@"Home/Receipts") ]);
    struct Row {
        const char *mailbox;
        NSMenu *submenu;
        BOOL transfers;  // NO: "Go to Recent"
    } rows[] = {
        { "Home/Travel", [plugin moveToRecentSubmenu], YES },
        { "Home/Family", [plugin copyToRecentContextualSubmenu], YES },
        { "Home/Receipts", [plugin goToRecentSubmenu], NO },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.mailbox);
        MailboxUid *gone = LVSampleMailbox([NSString stringWithUTF8String:row.mailbox]);
        NSString *name = [gone displayName];
        LVOpenRecentMenu(row.submenu);
        NSInteger index = [row.submenu indexOfItemWithTitle:name];
        ASSERT_GE(index, 0);
        ASSERT_TRUE([mail deleteMailbox:gone]);
        LVSelectFirstMessages(viewer, inbox, 1);
        NSArray *inboxBefore = LVMessageFileNames(inbox);
        MHClearRecordedAlerts();
        LVClearLog();

        @try {
            LVChooseItem(row.submenu, index);
        } @catch (NSException *exception) {
            ADD_FAILURE() << "raised into Mail: " << [[exception reason] UTF8String];
        }

        // The name still matches, so the choice goes to Mail as it is; Mail finds the mailbox
        // gone and the message stays put.
        EXPECT_NSEQ(inboxBefore, LVMessageFileNames(inbox));
        EXPECT_FALSE([[NSFileManager defaultManager] fileExistsAtPath:[gone fullPath]]);
        EXPECT_EQ(0u, [MHRecordedAlerts() count]);
        EXPECT_EQ(row.transfers ? 1u : 0u, LVLogCountWithPrefix(@"MailHost could not transfer"));
        if (!row.transfers)
            EXPECT_NSEQ(@[ gone ], [viewer selectedMailboxes]);
        LVOpenRecentMenu(row.submenu);
        EXPECT_FALSE([LVTitlesAboveSeparator(row.submenu) containsObject:name]);
    }
    [plugin writePreferences];
    EXPECT_EQ(0u, [savedFullPaths(MHPreferencesFilePath()) count]);
}

/* ---- Lists at odd limits ---- */

namespace {

// An account held in memory, with mailboxes named by the format and numbered from 0, made Mail's only one.
NSArray *mailboxesInMemory(NSString *format, NSUInteger count)
{
    MailAccount *account = [[[MailAccount alloc] initWithDisplayName:@"Home" path:nil] autorelease];
    NSMutableArray *mailboxes = [NSMutableArray arrayWithCapacity:count];
    for (NSUInteger i = 0; i < count; i++)
        [mailboxes addObject:[account createMailboxWithRelativePath:[NSString stringWithFormat:format, (unsigned long)i]]];
    [MailAccount setActiveAccounts:@[ account ]];
    return mailboxes;
}

void writeFileListing(NSArray *mailboxes)
{
    ASSERT_TRUE([listingOf(mailboxes) writeToFile:MHPreferencesFilePath() atomically:YES]);
}

NSArray *namesOf(NSArray *mailboxes)
{
    NSMutableArray *names = [NSMutableArray array];
    for (MailboxUid *mailbox in mailboxes)
        [names addObject:[mailbox displayName]];
    return names;
}

} // namespace

TEST(ListLimits, AFileLongerThanALoweredLimitStartsAtTheLimitAndANewMailboxKeepsItThere)
{
    LVStartMailWithPlugin();
    NSArray *mailboxes = mailboxesInMemory(@"Box %lu", 9);
    writeFileListing([mailboxes subarrayWithRange:NSMakeRange(0, 8)]);
    LVInstallFreshMainMenu();

    LorvaneBundle_Provider *provider = LVMakeProvider(3);

    // The three newest of the eight; then the new mailbox takes the place of the oldest of those.
    struct Step {
        MailboxUid *added;
        NSArray *shown;
    } steps[] = {
        { nil, @[ @"Box 5", @"Box 6", @"Box 7" ] },
        { [mailboxes objectAtIndex:8], @[ @"Box 6", @"Box 7", @"Box 8" ] },
    };
    for (const Step &step : steps) {
        if (step.added != nil)
            [provider addOrTouchRecentMailboxFromUid:(id<LVMailboxUid>)step.added];
        for (NSMenu *submenu in LVRecentSubmenus(provider)) {
            LVOpenRecentMenu(submenu);
            EXPECT_NSEQ(step.shown, LVTitlesAboveSeparator(submenu)) << [[submenu title] UTF8String];
        }
    }
    [provider writePreferences];
    EXPECT_EQ(3u, [savedFullPaths(MHPreferencesFilePath()) count]);
}

TEST(ListLimits, ALimitOfAThousandMakesItsItemsFillsTheMenusAndStaysBounded)
{
    const NSUInteger limit = 1000;
    LVStartMailWithPlugin();
    NSArray *mailboxes = mailboxesInMemory(@"Box %04lu", limit + 2);
    writeFileListing([mailboxes subarrayWithRange:NSMakeRange(0, limit + 1)]);
    LVInstallFreshMainMenu();
    MHClearRecordedAlerts();

    LorvaneBundle_Provider *provider = LVMakeProvider((int)limit);
    MessageViewer *viewer = [(MailApp *)NSApp openMessageViewer];
    [provider addOrTouchRecentMailboxFromUid:(id<LVMailboxUid>)[mailboxes lastObject]];

    EXPECT_EQ(0u, [LVRecordedStartupAlerts() count]);
    for (NSArray *items in LVPremadeItemArrays(provider))
        EXPECT_EQ(limit, [items count]);
    // The oldest two gave way: one when the file was read, one for the new mailbox.
    NSArray *shown = namesOf([mailboxes subarrayWithRange:NSMakeRange(2, limit)]);
    for (NSMenu *submenu in LVRecentSubmenus(provider)) {
        LVOpenRecentMenu(submenu);
        EXPECT_NSEQ(shown, LVTitlesAboveSeparator(submenu)) << [[submenu title] UTF8String];
    }
    LVChooseItem([provider goToRecentSubmenu], (NSInteger)limit - 1);
    EXPECT_NSEQ(@[ [mailboxes lastObject] ], [viewer selectedMailboxes]);
    [provider writePreferences];
    EXPECT_EQ(limit, [savedFullPaths(MHPreferencesFilePath()) count]);
}
