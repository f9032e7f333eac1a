/*
 * The preferences file: the settings and the list read at start-up with their defaults and
 * clamps, the file written when Mail quits, damaged and hostile files, and the faults a disk
 * can throw at the write. Whatever happens, the user's file is kept whole and nothing raises
 * into Mail.
 *
 * Disk faults are injected, since tests run as root, for whom permissions stop nothing: this
 * executable exports its own write, fsync, mkstemp and rename, which the loaded bundle binds
 * to before the C library's, and which fail as asked for files in the Preferences folder only.
 */
#import "LVLorvane.h"
#import "MHMailQuestions.h"
#import "PropertyListReader.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

namespace {

enum class Call { None, Write, Fsync, Mkstemp, Rename };

// One fault: the call that fails and with which error. Writes fail once the byte budget is
// spent; the other calls fail after letting the given number through.
struct Fault {
    Call call;
    size_t bytesLetThrough;
    int callsLetThrough;
    int error;
};

Fault armedFault = { Call::None, 0, 0, 0 };
std::string faultFolder; // with a trailing slash
int faultsInjected = 0;

bool inFaultFolder(const char *path)
{
    return path != nullptr && !faultFolder.empty() && strncmp(path, faultFolder.c_str(), faultFolder.size()) == 0;
}

bool descriptorInFaultFolder(int descriptor)
{
    char link[64], target[4096];
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

namespace {

NSString *const WriteFailureLine = @"[Lorvane] error writing to preferences file.";

NSString *preferencesFolder(void)
{
    return [LVPreferencesFilePath() stringByDeletingLastPathComponent];
}

NSString *keptCopyPath(void)
{
    return [LVPreferencesFilePath() stringByAppendingString:@".bak"];
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

NSData *bytes(const std::string &text)
{
    return [NSData dataWithBytes:text.data() length:text.size()];
}

NSData *xmlOf(id plist)
{
    return [NSPropertyListSerialization dataWithPropertyList:plist format:NSPropertyListXMLFormat_v1_0 options:0 error:NULL];
}

NSData *binaryOf(id plist)
{
    return [NSPropertyListSerialization dataWithPropertyList:plist format:NSPropertyListBinaryFormat_v1_0 options:0 error:NULL];
}

// A hand-edited file with one typo: a closing tag mistyped.
NSData *fileWithATypo(void)
{
    NSString *text = [[[NSString alloc] initWithData:xmlOf(@{ @"SortType" : @2 }) encoding:NSUTF8StringEncoding] autorelease];
    return [[text stringByReplacingOccurrencesOfString:@"</integer>" withString:@"</integr>"] dataUsingEncoding:NSUTF8StringEncoding];
}

NSString *minutesAgo(double minutes)
{
    return [[NSDate dateWithTimeIntervalSinceNow:-60 * minutes] description];
}

NSArray *savedFullPaths(void)
{
    return [[LVReadPlist(LVPreferencesFilePath()) objectForKey:@"RecentMailboxes"] valueForKey:@"FullPath"];
}

NSArray *sorted(NSArray *array)
{
    return [array sortedArrayUsingSelector:@selector(compare:)];
}

// Mail with a POP account "Home", and no preferences file yet.
class File : public LVHomeStoreTest {
protected:
    void SetUp() override
    {
        LVHomeStoreTest::SetUp();
        faultFolder = std::string([preferencesFolder() fileSystemRepresentation]) + "/";
        removeLorvaneFiles();
    }

    void TearDown() override
    {
        armedFault = { Call::None, 0, 0, 0 };
        faultFolder.clear();
    }

    NSString *path(NSString *relativePath) { return [mailbox(relativePath) fullPath]; }

    NSDictionary *saved(NSString *name, int accesses, NSString *date) { return LVSavedRecord(mailbox(name), accesses, date); }

    // Records of the mailboxes, the first the oldest, a minute apart, as a file's bytes.
    NSData *listing(NSArray *names)
    {
        NSMutableArray *records = [NSMutableArray array];
        for (NSUInteger i = 0; i < [names count]; i++)
            [records addObject:saved([names objectAtIndex:i], 1, minutesAgo((double)([names count] - i)))];
        return xmlOf(LVPreferences(0, YES, records));
    }

    // Started with the file (see LVStartProvider); the user then moves messages to "Work".
    LorvaneBundle_Provider *startAndUseWork(id file)
    {
        LorvaneBundle_Provider *provider = LVStartProvider(10, file);
        [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Work"))];
        return provider;
    }

    // Whether special mailboxes are left out, as a transfer into the Inbox shows.
    bool excludes(LorvaneBundle_Provider *provider)
    {
        [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Inbox"))];
        bool excluded = [provider getRecentMailboxIndexWithUid:LVUid(mailbox(@"Inbox"))] < 0;
        [provider clearRecentMailboxes];
        return excluded;
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

TEST_F(File, SettingsAreReadWithTheirDefaultsAndClamps)
{
    struct Row {
        const char *what;
        id exclude, sortType;
        bool excludes;
        int readSortType;
    } rows[] = {
        { "both missing", nil, nil, true, 0 },
        { "exclusion off, newest first", @(NO), @1, false, 1 },
        { "by use", @(YES), @2, true, 2 },
        { "sort type past the last", @(YES), @3, true, 0 },
        { "negative sort type", @(YES), @-1, true, 0 },
        { "exclusion stored as 2", @2, @0, true, 0 },
        { "exclusion stored as 0", @0, @0, false, 0 },
        { "texts answer for themselves", @"NO", @"2", false, 2 },
        { "unreadable texts", @"maybe", @"by date", false, 0 },
        { "containers count as missing", @[ @(NO) ], @{ @"SortType" : @2 }, true, 0 },
    };
    for (const Row &row : rows) {
        NSMutableDictionary *file = [NSMutableDictionary dictionary];
        if (row.exclude != nil)
            [file setObject:row.exclude forKey:@"ExcludeSpecialMailboxes"];
        if (row.sortType != nil)
            [file setObject:row.sortType forKey:@"SortType"];
        LorvaneBundle_Provider *provider = LVStartProvider(10, file);
        EXPECT_EQ(row.readSortType, [provider getSortType]) << row.what;
        EXPECT_EQ(row.excludes, excludes(provider)) << row.what;
    }
}

TEST_F(File, SavedRecordsComeBackInReverseFileOrderWithTheirCountsDatesAndMailsNames)
{
    NSString *workDate = minutesAgo(60), *old = minutesAgo(1440), *current = minutesAgo(1);
    NSArray *records = @[
        saved(@"Work", 7, workDate), saved(@"Projects/Zürich %@", 2, minutesAgo(1)),
        @{ @"FullPath" : path(@"OnlyCalendarDate"), @"Accesses" : @"12", @"CalendarDate" : old },
        @{ @"FullPath" : path(@"Both"), @"Accesses" : @[ @5 ], @"Date" : current, @"CalendarDate" : old },
        @{ @"FullPath" : path(@"Neither"), @"Accesses" : @-4 },
        @{ @"FullPath" : path(@"DateIsANumber"), @"Date" : @12, @"CalendarDate" : old },
        @{ @"FullPath" : path(@"Unparsable"), @"Accesses" : @1, @"Date" : @"last Tuesday" },
    ];
    NSDate *before = [NSDate date];
    LorvaneBundle_Provider *provider = LVStartProvider(10, binaryOf(LVPreferences(2, NO, records)));

    EXPECT_EQ(2, [provider getSortType]);
    EXPECT_NSEQ((@[ @"Unparsable", @"DateIsANumber", @"Neither", @"Both", @"OnlyCalendarDate", @"Zürich %@", @"Work" ]), LVListedNames(provider));
    EXPECT_NSEQ((@[ @1, @0, @-4, @0, @12, @2, @7 ]), LVListedCounts(provider));
    NSArray *expectedDates = @[ [NSNull null], old, @"now", current, old, @"", workDate ];
    for (int i = 0; i < 7; i++) {
        NSDate *date = [[provider getRecentMailboxAtIndex:i] date];
        id expected = [expectedDates objectAtIndex:i];
        if (expected == [NSNull null])
            EXPECT_TRUE(date == nil);
        else if ([expected isEqual:@"now"]) // the time of loading, to the second the text keeps
            EXPECT_GT([date timeIntervalSinceDate:before], -1.0);
        else if ([expected length] > 0)
            EXPECT_NSEQ(expected, [date description]) << i;
    }
}

TEST_F(File, RecordsThatNameNoMailboxAreDroppedSilentlyAndAPathFoundTwiceGivesEachItsRecord)
{
    LVMemoryAccount(@"Twin", @[ @"Work" ]);
    MailAccount *second = LVMemoryAccount(@"Twin", @[ @"Work" ]);
    NSArray *records = @[
        saved(@"Work", 1, minutesAgo(10)), @{ @"FullPath" : [path(@"Lists") stringByAppendingString:@"-gone"], @"Accesses" : @1 },
        @{ @"FullPath" : [path(@"Lists") uppercaseString] }, @"not a record", @[ path(@"Lists") ], @{ @"FullPath" : @42 },
        @{ @"Accesses" : @3 }, saved(@"Lists", 1, minutesAgo(50)),
        LVSavedRecord([[second allMailboxUids] lastObject], 4, minutesAgo(5)),
    ];
    LorvaneBundle_Provider *provider = LVStartProvider(10, LVPreferences(0, YES, records));
    EXPECT_NSEQ((@[ @"Work", @"Work", @"Lists", @"Work" ]), LVListedNames(provider));
    EXPECT_EQ((id)[[second allMailboxUids] lastObject], (id)[provider getRecentMailboxUidAtIndex:0]);
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane"));
}

// Mail's mailboxes are walked for the saved paths only when there are saved records.
TEST_F(File, AFileWithoutRecordsAsksMailForNoMailboxPath)
{
    LVMemoryAccount(@"Archive", @[ @"Work", @"Lists" ]);
    MHForgetMailQuestions();
    LorvaneBundle_Provider *provider = LVStartProvider(10, LVPreferences(0, YES, @[]));
    EXPECT_EQ(0u, MHMailQuestionCount(@selector(fullPath), nil));
    EXPECT_NSEQ(@[], LVListedNames(provider));
}

TEST_F(File, ARecordListedTwiceLeavesOnePlaceAtATime)
{
    LVMemoryAccount(@"Twin", @[ @"Work" ]);
    MailAccount *second = LVMemoryAccount(@"Twin", @[ @"Work" ]);
    NSArray *records = @[ saved(@"Lists", 1, minutesAgo(30)), LVSavedRecord([[second allMailboxUids] lastObject], 4, minutesAgo(60)) ];
    LorvaneBundle_Provider *provider = LVStartProvider(3, LVPreferences(0, YES, records));
    ASSERT_NSEQ((@[ @"Work", @"Work", @"Lists" ]), LVListedNames(provider));

    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"New"))];
    EXPECT_NSEQ((@[ @"New", @"Lists", @"Work" ]), LVListedNames(provider));
    EXPECT_EQ(2, [provider getRecentMailboxIndexWithUid:LVUid([[second allMailboxUids] lastObject])]);
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Newer"))];

    EXPECT_NSEQ((@[ @"Newer", @"New", @"Lists" ]), LVListedNames(provider));
    EXPECT_TRUE(LVSubmenusShow(provider, (@[ @"Lists", @"New", @"Newer" ])));
}

TEST_F(File, DamagedMisshapenOrRefusedFilesGiveTheDefaultsAndNeverStopMail)
{
    NSDictionary *valid = LVPreferences(2, NO, @[ saved(@"Work", 3, minutesAgo(10)) ]);
    NSData *xml = xmlOf(valid), *binary = binaryOf(valid);
    NSMutableData *damagedBinary = [NSMutableData dataWithData:binary];
    memset((char *)[damagedBinary mutableBytes] + [binary length] - 20, 0xFF, 20);
    NSMutableData *tooLong = [NSMutableData dataWithData:xml];
    [tooLong appendData:[NSMutableData dataWithLength:[LVPluginClass("LVPropertyListReader") maximumLength]]];
    id rows[] = {
        [NSData data],
        [xml subdataWithRange:NSMakeRange(0, [xml length] / 2)],
        [binary subdataWithRange:NSMakeRange(0, [binary length] / 2)],
        damagedBinary,
        tooLong,
        bytes("<html><body>Not a plist at all</body></html>"),
        @[ valid ],
        @"SortType",
        @{ @"Sort" : @2, @"Mailboxes" : @[] },
        @{ @"RecentMailboxes" : @{ @"Work" : saved(@"Work", 3, minutesAgo(10)) } },
        @{ @"RecentMailboxes" : path(@"Work") },
    };
    for (id file : rows) {
        LorvaneBundle_Provider *provider = LVStartProvider(10, file);
        EXPECT_EQ(0, [provider getSortType]) << [[file description] UTF8String];
        EXPECT_NSEQ(@[], LVListedNames(provider));
        EXPECT_TRUE(excludes(provider));
    }
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane"));
    // libxml2 reports a bad encoding whatever it is asked; none of it reaches Mail's console.
    LVBeginCapturing(STDERR_FILENO);
    LVStartProvider(10, bytes("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?><plist><string>\x81\xFF</string></plist>"));
    EXPECT_EQ(NSNotFound, [LVEndCapturing() rangeOfString:@"error :"].location);
}

TEST_F(File, TheWrittenFileIsXMLThatPythonReadsWithTheSavedKeysAndReadsBackToTheSecond)
{
    LorvaneBundle_Provider *writer = LVStartProvider(10, LVPreferences(2, NO, @[
        @{ @"FullPath" : path(@"Old"), @"Accesses" : @2, @"CalendarDate" : minutesAgo(1440), @"Colour" : @"red" },
        @{ @"FullPath" : path(@"Undated"), @"Accesses" : @2, @"Date" : @"not a date" },
    ]));
    for (NSString *name in @[ @"Work", @"Projects/Zürich %@ %n", @"Lists", @"Work" ])
        [writer addOrTouchRecentMailboxFromUid:LVUid(mailbox(name))];

    [writer writePreferences];

    NSString *text = [NSString stringWithContentsOfFile:LVPreferencesFilePath() encoding:NSUTF8StringEncoding error:NULL];
    EXPECT_TRUE([text hasPrefix:@"<?xml"]);
    // Typed as a Mac writes them: a boolean and an integer, not texts or reals.
    NSString *compact = [[text componentsSeparatedByCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]] componentsJoinedByString:@""];
    EXPECT_NE(NSNotFound, [compact rangeOfString:@"<key>ExcludeSpecialMailboxes</key><false/>"].location) << [text UTF8String];
    EXPECT_NE(NSNotFound, [compact rangeOfString:@"<key>SortType</key><integer>2</integer>"].location);
    NSDictionary *python = LVPythonReadPlist(LVPreferencesFilePath());
    EXPECT_NSEQ((@[ @"ExcludeSpecialMailboxes", @"RecentMailboxes", @"SortType" ]), sorted([python allKeys]));
    NSArray *records = [python objectForKey:@"RecentMailboxes"];
    ASSERT_EQ(5u, [records count]);
    for (NSUInteger i = 0; i < 5; i++) {
        LorvaneMailbox *written = [writer getRecentMailboxAtIndex:(int)i];
        NSDictionary *record = [records objectAtIndex:i];
        // A date that did not read is left out.
        NSArray *keys = [written date] ? @[ @"Accesses", @"Date", @"FullPath" ] : @[ @"Accesses", @"FullPath" ];
        EXPECT_NSEQ(keys, sorted([record allKeys]));
        EXPECT_NSEQ([[written uid] fullPath], [record objectForKey:@"FullPath"]);
        EXPECT_EQ([written accesses], [[record objectForKey:@"Accesses"] intValue]);
        if ([written date])
            EXPECT_NSEQ([[written date] description], [record objectForKey:@"Date"]);
    }
    // Loading puts each record at the front: the file's order comes back reversed.
    NSArray *names = LVListedNames(writer), *counts = LVListedCounts(writer);
    LorvaneBundle_Provider *reader = LVStartProvider(10, [NSData dataWithContentsOfFile:LVPreferencesFilePath()]);
    EXPECT_EQ(2, [reader getSortType]);
    EXPECT_FALSE(excludes(reader));
    reader = LVStartProvider(10, [NSData dataWithContentsOfFile:LVPreferencesFilePath()]);
    EXPECT_NSEQ([[names reverseObjectEnumerator] allObjects], LVListedNames(reader));
    EXPECT_NSEQ([[counts reverseObjectEnumerator] allObjects], LVListedCounts(reader));
}

TEST_F(File, AFailedWriteLeavesTheOldFileWholeNoTemporaryFileAndOneLogLine)
{
    NSData *valid = listing(@[ @"Lists" ]), *typo = fileWithATypo();
    NSArray *fileOnly = @[ @"org.lorvane.mailbundle.plist" ], *fileAndCopy = @[ @"org.lorvane.mailbundle.plist", @"org.lorvane.mailbundle.plist.bak" ];
    struct Row {
        const char *what;
        NSData *start;
        Fault fault;
        NSArray *filesAfter;
        NSData *keptCopy; // nil: no copy kept beside the file
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
        LorvaneBundle_Provider *provider = startAndUseWork(row.start);
        NSArray *listed = LVListedNames(provider);
        LVClearLog();

        EXPECT_EQ(1, writeWithFault(provider, row.fault));

        EXPECT_NSEQ(row.start, [NSData dataWithContentsOfFile:LVPreferencesFilePath()]);
        EXPECT_NSEQ(row.filesAfter, lorvaneFiles());
        EXPECT_NSEQ(row.keptCopy, [NSData dataWithContentsOfFile:keptCopyPath()]);
        EXPECT_EQ(1u, LVLogCount(WriteFailureLine));
        EXPECT_EQ(1u, LVLogCountWithPrefix(@"[Lorvane"));
        EXPECT_NSEQ(listed, LVListedNames(provider));
    }
}

TEST_F(File, AMissingFolderIsMadePrivateAndOneThatIsAFileStopsOnlyTheWrite)
{
    NSFileManager *fileManager = [NSFileManager defaultManager];
    NSData *strayFile = bytes("not a folder");
    struct Row {
        NSString *removed;  // the folder taken away before writing
        NSData *inItsPlace; // a plain file put where the folder was, or nil
    } rows[] = { { preferencesFolder(), nil }, { MHUserLibraryFolder(), nil }, { preferencesFolder(), strayFile } };
    for (const Row &row : rows) {
        LorvaneBundle_Provider *provider = startAndUseWork(nil);
        [fileManager removeItemAtPath:row.removed error:NULL];
        if (row.inItsPlace != nil)
            ASSERT_TRUE([row.inItsPlace writeToFile:row.removed atomically:NO]);
        LVClearLog();

        [provider writePreferences];

        EXPECT_EQ(row.inItsPlace ? 1u : 0u, LVLogCount(WriteFailureLine)) << [row.removed UTF8String];
        if (row.inItsPlace != nil) {
            EXPECT_NSEQ(row.inItsPlace, [NSData dataWithContentsOfFile:row.removed]);
            [fileManager removeItemAtPath:row.removed error:NULL];
            [fileManager createDirectoryAtPath:row.removed withIntermediateDirectories:YES attributes:nil error:NULL];
            continue;
        }
        EXPECT_NSEQ(@[ path(@"Work") ], savedFullPaths());
        EXPECT_EQ(0700u, [[fileManager attributesOfItemAtPath:preferencesFolder() error:NULL] filePosixPermissions]);
    }
}

TEST_F(File, AFileThatDidNotReadIsKeptBesideTheNewOneAsTheUserHadIt)
{
    NSData *older = bytes("an older copy"), *typo = fileWithATypo(), *arrayAtTheRoot = xmlOf(@[ @{ @"SortType" : @2 } ]);
    NSData *binary = binaryOf(@{ @"SortType" : @2 }), *cutBinary = [binary subdataWithRange:NSMakeRange(0, [binary length] / 2)];
    struct Row {
        const char *what;
        NSData *start, *olderCopy, *keptCopy; // nil: no file, no earlier .bak, no .bak afterwards
    } rows[] = {
        { "a typo in the XML", typo, nil, typo },
        { "an array at the root", arrayAtTheRoot, nil, arrayAtTheRoot },
        { "a binary list cut short", cutBinary, nil, cutBinary },
        { "a newer unread file over an older copy", typo, older, typo },
        { "an empty file", [NSData data], older, older },
        { "a file that reads", listing(@[ @"Lists" ]), older, older },
        { "no file", nil, nil, nil },
    };
    for (const Row &row : rows) {
        removeLorvaneFiles();
        if (row.olderCopy != nil)
            ASSERT_TRUE([row.olderCopy writeToFile:keptCopyPath() atomically:YES]);
        LorvaneBundle_Provider *provider = startAndUseWork(row.start);
        LVClearLog();

        [provider writePreferences];

        EXPECT_NSEQ(row.keptCopy, [NSData dataWithContentsOfFile:keptCopyPath()]) << row.what;
        EXPECT_TRUE([savedFullPaths() containsObject:path(@"Work")]) << row.what;
        EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane")) << row.what;
    }
}

TEST_F(File, AFileReplacedWhileMailRunsGivesWayToTheListAndNothingElseIsWritten)
{
    NSFileManager *fileManager = [NSFileManager defaultManager];
    NSString *file = LVPreferencesFilePath();
    NSString *elsewhere = [LVMakeTemporaryFolder(@"elsewhere") stringByAppendingPathComponent:@"shared.plist"];
    NSData *otherList = listing(@[ @"Family" ]);
    enum Replacement { Removed, AnotherList, AFolder, ALinkElsewhere };
    struct Row {
        const char *what;
        NSData *start;
        Replacement replacement;
        NSData *keptCopy;
    } rows[] = {
        { "removed", listing(@[ @"Lists" ]), Removed, nil },
        { "by another list", listing(@[ @"Lists" ]), AnotherList, nil },
        { "by a folder", listing(@[ @"Lists" ]), AFolder, nil },
        { "by a link to a file elsewhere", listing(@[ @"Lists" ]), ALinkElsewhere, nil },
        { "an unread file mended by hand", fileWithATypo(), AnotherList, fileWithATypo() },
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        removeLorvaneFiles();
        LorvaneBundle_Provider *provider = startAndUseWork(row.start);
        NSArray *listed = [NSArray arrayWithObjects:path(@"Work"), row.keptCopy == nil ? path(@"Lists") : nil, nil];
        [fileManager removeItemAtPath:file error:NULL];
        if (row.replacement == AnotherList)
            ASSERT_TRUE([otherList writeToFile:file atomically:YES]);
        if (row.replacement == AFolder)
            ASSERT_TRUE([fileManager createDirectoryAtPath:[file stringByAppendingPathComponent:@"inside"] withIntermediateDirectories:YES attributes:nil error:NULL]);
        if (row.replacement == ALinkElsewhere) {
            ASSERT_TRUE([otherList writeToFile:elsewhere atomically:YES]);
            ASSERT_TRUE([fileManager createSymbolicLinkAtPath:file pathContent:elsewhere]);
        }
        LVClearLog();

        [provider writePreferences];

        EXPECT_NSEQ(row.keptCopy, [NSData dataWithContentsOfFile:keptCopyPath()]);
        EXPECT_EQ(row.replacement == AFolder ? 1u : 0u, LVLogCountWithPrefix(@"[Lorvane"));
        if (row.replacement == AFolder) {
            EXPECT_NSEQ(@[ @"inside" ], [fileManager contentsOfDirectoryAtPath:file error:NULL]);
            [fileManager removeItemAtPath:file error:NULL];
            continue;
        }
        EXPECT_NSEQ(sorted(listed), sorted(savedFullPaths()));
        // The plug-in replaces its own name in its folder; it never writes through into another file.
        EXPECT_NSEQ(NSFileTypeRegular, [[fileManager attributesOfItemAtPath:file error:NULL] fileType]);
        if (row.replacement == ALinkElsewhere)
            EXPECT_NSEQ(otherList, [NSData dataWithContentsOfFile:elsewhere]);
    }
}

namespace {

NSData *nestedArrays(int depth, BOOL binary)
{
    id plist = @[];
    for (int level = 1; level < depth; level++)
        plist = @[ plist ];
    return binary ? binaryOf(plist) : xmlOf(plist);
}

NSData *numbers(int count, BOOL binary)
{
    NSMutableArray *array = [NSMutableArray array];
    for (int i = 0; i < count; i++)
        [array addObject:@(1000 + i)];
    return binary ? binaryOf(array) : xmlOf(array);
}

// A binary list of these objects, the first one the root, with offsets and references of the
// given size: how a small file may share one object among many places.
NSData *binaryList(const std::vector<std::string> &objects, int offsetSize = 1)
{
    std::string list = "bplist00", offsets;
    for (const std::string &object : objects) {
        for (int shift = 8 * (offsetSize - 1); shift >= 0; shift -= 8)
            offsets.push_back((char)(list.size() >> shift));
        list += object;
    }
    size_t tableStart = list.size();
    list += offsets + std::string(6, '\0') + (char)offsetSize + '\x01';
    for (uint64_t field : { (uint64_t)objects.size(), (uint64_t)0, (uint64_t)tableStart })
        for (int shift = 56; shift >= 0; shift -= 8)
            list.push_back((char)(field >> shift));
    return bytes(list);
}

// `levels` arrays, each holding the next one four times; the last holds a number.
NSData *sharedArrays(int levels)
{
    std::vector<std::string> objects;
    for (int level = 0; level < levels; level++)
        objects.push_back(std::string("\xA4") + std::string(4, (char)(level + 1)));
    objects.push_back("\x10\x01");
    return binaryList(objects);
}

// An XML list holding one string, padded to exactly `length` bytes.
NSData *xmlOfLength(NSUInteger length)
{
    NSUInteger frame = [xmlOf(@"x") length] - 1;
    return xmlOf([@"" stringByPaddingToLength:length - frame withString:@"x" startingAtIndex:0]);
}

} // namespace

// Only the two forms a Mac writes, within the size and shape of a real file, are read: each
// limit is shown from both sides.
TEST(PropertyListReader, ReadsOnlyXMLAndBinaryListsWithinTheLimitsOfARealFile)
{
    Class reader = LVPluginClass("LVPropertyListReader");
    NSDictionary *settings = @{ @"SortType" : @2, @"RecentMailboxes" : @[ @{ @"FullPath" : @"Home/Work" } ] };
    NSUInteger limit = [reader maximumLength];
    std::string xml = std::string((const char *)[xmlOf(settings) bytes], [xmlOf(settings) length]);
    struct Row {
        const char *what;
        NSData *data;
        BOOL admitted;
    } rows[] = {
        { "XML as written", xmlOf(settings), YES },
        { "binary as written", binaryOf(settings), YES },
        { "OpenStep text", [[settings description] dataUsingEncoding:NSUTF8StringEncoding], NO },
        { "the platform's serialised form", bytes(std::string("\x00\x05\x00\x00", 4)), NO },
        { "XML after a blank line", bytes("\n" + xml), NO },
        { "nothing", [NSData data], NO },
        { "XML of the longest length", xmlOfLength(limit), YES },
        { "XML one byte longer", xmlOfLength(limit + 1), NO },
        { "XML 32 levels deep", nestedArrays(32, NO), YES },
        { "XML 33 levels deep", nestedArrays(33, NO), NO },
        { "binary 32 levels deep", nestedArrays(32, YES), YES },
        { "binary 33 levels deep", nestedArrays(33, YES), NO },
        { "XML of 10000 objects", numbers(9999, NO), YES },
        { "XML of 10001 objects", numbers(10000, NO), NO },
        { "binary of 10000 objects", numbers(9999, YES), YES },
        { "binary of 10001 objects", numbers(10000, YES), NO },
        { "binary unfolding into 5461 objects", sharedArrays(6), YES },
        { "binary unfolding into 21845 objects", sharedArrays(7), NO },
        { "binary array holding itself", binaryList({ "\xA1\x00" }), NO },
        { "binary ASCII string", binaryList({ "\x53"
                                              "abc" }),
          YES },
        { "binary ASCII string with a Latin-1 byte", binaryList({ "\x53"
                                                                  "ab\xE9" }),
          NO },
        { "binary offsets of two bytes", binaryList({ "\x10\x01" }, 2), YES },
        { "binary offsets of eight bytes", binaryList({ "\x10\x01" }, 8), NO },
        { "binary string with a lone surrogate", binaryList({ std::string("\x61\xD8\x00", 3) }), NO },
        { "binary string with a surrogate pair", binaryList({ std::string("\x62\xD8\x00\xDC\x00", 5) }), YES },
        { "binary array holding a string with a high surrogate before a letter", binaryList({ "\xA1\x01", std::string("\x62\xD8\x00\x00\x41", 5) }), NO },
        // The next object's first bytes read as a low surrogate: the string ends before them.
        { "binary string right before a dictionary", binaryList({ "\xA2\x01\x02", std::string("\x61\x00\x62", 3), std::string("\xDF\x10\x00", 3) }), YES },
        { "binary string starting with a low surrogate", binaryList({ std::string("\x61\xDC\x00", 3) }), NO },
        { "binary real of four bytes", binaryList({ std::string("\x22\x3F\x80\x00\x00", 5) }), YES },
        { "binary real of eight bytes", binaryList({ std::string("\x23\x3F\xF0\x00\x00\x00\x00\x00\x00", 9) }), YES },
        { "binary real of two bytes", binaryList({ std::string("\x21\x3F\x80", 3) }), NO },
        { "binary date", binaryList({ std::string("\x33\x41\xC0\x00\x00\x00\x00\x00\x00", 9) }), YES },
        { "binary date that is not a number", binaryList({ std::string("\x33\x7F\xF8\x00\x00\x00\x00\x00\x00", 9) }), NO },
        { "XML ending in an open tag", bytes("<?xml version=\"1.0\"?><plist><dict/></plist><"), NO },
        { "XML with an open comment", bytes("<?xml version=\"1.0\"?><plist><dict/><!-- </plist>"), NO },
        { "XML with an attribute's quote left open", bytes("<?xml version=\"1.0\"?><plist version=\"1.0><dict/></plist>"), NO },
        { "XML declaration with a stray quote", bytes("<?xml version=\"1.0\"s\"<'dng rsion=\"0?>O"), NO },
        { "XML declaring an entity", bytes("<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"b\">]><plist><string>&a;</string></plist>"), NO },
        { "XML in UTF-8", bytes("<?xml version=\"1.0\"?><plist><string>caf\xC3\xA9</string></plist>"), YES },
        { "XML with a control character", bytes(std::string("<?xml version=\"1.0\"?><plist version=\"") + '\0' + "\"><dict/></plist>"), NO },
        { "XML in Latin-1", bytes("<?xml version=\"1.0\"?><plist><string>caf\xE9</string></plist>"), NO },
        { "XML with two roots", bytes("<?xml version=\"1.0\"?><plist><dict/><dict/></plist>"), NO },
        { "XML with text between elements", bytes("<?xml version=\"1.0\"?><plist><array>a<true/></array></plist>"), NO },
        { "XML holding data", bytes("<?xml version=\"1.0\"?><plist><data>AAEC</data></plist>"), YES },
        { "XML holding an element no list has", bytes("<?xml version=\"1.0\"?><plist><blob>AAEC</blob></plist>"), NO },
    };
    for (const Row &row : rows) {
        EXPECT_EQ(row.admitted, [reader admitsData:row.data]) << row.what;
        EXPECT_EQ(row.admitted, [reader propertyListWithData:row.data] != nil) << row.what;
    }
    EXPECT_NSEQ(settings, [reader propertyListWithData:xmlOf(settings)]);
    EXPECT_NSEQ(settings, [reader propertyListWithData:binaryOf(settings)]);
    // Data as a Mac reads it: spaces and stray characters skipped, a short last group kept.
    EXPECT_NSEQ([NSData dataWithBytes:"\x00\x01\x02\x03" length:4], [reader propertyListWithData:bytes("<?xml version=\"1.0\"?><plist><data> AA\nEC*Aw= </data></plist>")]);
}
