/*
 * The preferences file: the two settings and the list, read at start-up with their
 * defaults and clamps, written at termination as an XML property list, and damaged or
 * hostile files that must never stop Mail.
 */
#import "LVProviderFixture.h"
#import "PropertyListReader.h"

#include <string>
#include <vector>

namespace {

NSString *const WriteFailureLine = @"[Lorvane] error writing to preferences file.";

class PreferencesFile : public LVHomeAccountTest {
protected:
    void SetUp() override
    {
        LVHomeAccountTest::SetUp();
        [[NSFileManager defaultManager] removeItemAtPath:MHPreferencesFilePath() error:NULL];
    }

    NSString *path(NSString *relativePath)
    {
        return [mailbox(relativePath) fullPath];
    }

    void writeFile(id plist)
    {
        ASSERT_TRUE(MHWritePropertyList(plist, MHPreferencesFilePath(), NO));
    }

    // A fresh provider that has read the file, as the provider's start-up does.
    LorvaneBundle_Provider *readWithLimit(int limit)
    {
        LorvaneBundle_Provider *provider = LVMakeListProvider(limit, 1, NO);
        [provider readPreferences];
        return provider;
    }

    void expectDefaults(LorvaneBundle_Provider *provider, const char *what)
    {
        EXPECT_TRUE(LVFlag(provider, @"_excludeSpecialMailboxes")) << what;
        EXPECT_EQ(0, [provider getSortType]) << what;
        EXPECT_EQ(0u, [LVProviderList(provider) count]) << what;
        EXPECT_TRUE(LVFlag(provider, @"_updateMenu")) << what;
    }
};

NSNumber *boolean(BOOL value)
{
    return [NSNumber numberWithBool:value];
}

NSString *dateText(NSTimeInterval secondsFromNow)
{
    return [[NSDate dateWithTimeIntervalSinceNow:secondsFromNow] description];
}

NSDictionary *saved(NSString *fullPath, int accesses, NSString *date)
{
    return @{ @"FullPath" : fullPath, @"Accesses" : @(accesses), @"Date" : date };
}

NSDictionary *withRecords(NSArray *records)
{
    return @{ @"SortType" : @0, @"ExcludeSpecialMailboxes" : boolean(YES), @"RecentMailboxes" : records };
}

std::vector<int> counts(NSArray *records)
{
    std::vector<int> result;
    for (LorvaneMailbox *record in records)
        result.push_back([record accesses]);
    return result;
}

} // namespace

TEST_F(PreferencesFile, SettingsAreReadWithTheirClamps)
{
    struct Row {
        const char *what;
        id exclude;
        id sortType;
        BOOL expectedExclude;
        int expectedSortType;
    } rows[] = {
        { "both missing", nil, nil, YES, 0 },
        { "exclusion off, newest first", boolean(NO), @1, NO, 1 },
        { "by use", boolean(YES), @2, YES, 2 },
        { "sort type past the last", boolean(YES), @3, YES, 0 },
        { "negative sort type", boolean(YES), @-1, YES, 0 },
        { "exclusion stored as 2", @2, @0, YES, 0 },
        { "exclusion stored as 0", @0, @0, NO, 0 },
        { "texts answer for themselves", @"NO", @"2", NO, 2 },
        { "unreadable texts", @"maybe", @"by date", NO, 0 },
        { "containers count as missing", @[ boolean(NO) ], @{ @"SortType" : @2 }, YES, 0 },
        { "a date counts as missing", [NSDate date], [NSDate date], YES, 0 },
    };
    for (const Row &row : rows) {
        NSMutableDictionary *file = [NSMutableDictionary dictionary];
        if (row.exclude != nil)
            [file setObject:row.exclude forKey:@"ExcludeSpecialMailboxes"];
        if (row.sortType != nil)
            [file setObject:row.sortType forKey:@"SortType"];
        writeFile(file);
        LorvaneBundle_Provider *provider = readWithLimit(10);
        EXPECT_EQ(row.expectedExclude, LVFlag(provider, @"_excludeSpecialMailboxes")) << row.what;
        EXPECT_EQ(row.expectedSortType, [provider getSortType]) << row.what;
        EXPECT_TRUE(LVFlag(provider, @"_updateMenu")) << row.what;
    }
}

TEST_F(PreferencesFile, ABinaryFilesRecordsAreLoadedInReverseFileOrderWithCountsDatesAndMailsNames)
{
    NSString *workDate = dateText(-3600);
    NSArray *records = @[ saved(path(@"Work"), 7, workDate), saved(path(@"Projects/Zürich %@"), 2, dateText(-60)),
                          saved(path(@"Lists"), 1, dateText(-120)) ];
    NSDictionary *file = @{ @"SortType" : @2, @"ExcludeSpecialMailboxes" : boolean(NO), @"RecentMailboxes" : records };
    ASSERT_TRUE(MHWritePropertyList(file, MHPreferencesFilePath(), YES));

    LorvaneBundle_Provider *provider = readWithLimit(10);

    EXPECT_EQ(2, [provider getSortType]);
    EXPECT_FALSE(LVFlag(provider, @"_excludeSpecialMailboxes"));
    NSArray *list = LVProviderList(provider);
    EXPECT_NSEQ((@[ @"Lists", @"Zürich %@", @"Work" ]), LVDisplayNames(list));
    EXPECT_EQ((std::vector<int>{ 1, 2, 7 }), counts(list));
    EXPECT_EQ((id)mailbox(@"Work"), (id)[provider getRecentMailboxUidAtIndex:2]);
    EXPECT_NSEQ(workDate, [[[provider getRecentMailboxAtIndex:2] date] description]);
}

TEST_F(PreferencesFile, DatesFallBackToTheOlderKeyThenToTheTimeOfLoading)
{
    NSString *old = dateText(-86400);
    NSString *current = dateText(-60);
    writeFile(withRecords(@[
        @{ @"FullPath" : path(@"OnlyCalendarDate"), @"Accesses" : @1, @"CalendarDate" : old },
        @{ @"FullPath" : path(@"Both"), @"Accesses" : @1, @"Date" : current, @"CalendarDate" : old },
        @{ @"FullPath" : path(@"Neither"), @"Accesses" : @1 },
        @{ @"FullPath" : path(@"DateIsANumber"), @"Accesses" : @1, @"Date" : @12, @"CalendarDate" : old },
        @{ @"FullPath" : path(@"Unparsable"), @"Accesses" : @1, @"Date" : @"last Tuesday" },
    ]));

    NSDate *before = [NSDate date];
    LorvaneBundle_Provider *provider = readWithLimit(10);
    NSDate *after = [NSDate date];

    NSMutableDictionary *dates = [NSMutableDictionary dictionary];
    for (LorvaneMailbox *record in LVProviderList(provider))
        [dates setObject:[record date] != nil ? (id)[record date] : (id)[NSNull null] forKey:[record displayName]];
    EXPECT_NSEQ(old, [[dates objectForKey:@"OnlyCalendarDate"] description]);
    EXPECT_NSEQ(current, [[dates objectForKey:@"Both"] description]);
    EXPECT_NSEQ(old, [[dates objectForKey:@"DateIsANumber"] description]);
    EXPECT_EQ([NSNull null], [dates objectForKey:@"Unparsable"]);
    // The time of loading, to the second the date text keeps.
    NSDate *loaded = [dates objectForKey:@"Neither"];
    ASSERT_TRUE([loaded isKindOfClass:[NSDate class]]);
    EXPECT_GT([loaded timeIntervalSinceDate:before], -1.0);
    EXPECT_LE([loaded timeIntervalSinceDate:after], 0.0);
}

TEST_F(PreferencesFile, CountsAreTheStoredValuesIntValueOrZero)
{
    writeFile(withRecords(@[
        @{ @"FullPath" : path(@"Missing"), @"Date" : dateText(-10) },
        @{ @"FullPath" : path(@"Text"), @"Accesses" : @"12", @"Date" : dateText(-20) },
        @{ @"FullPath" : path(@"Array"), @"Accesses" : @[ @5 ], @"Date" : dateText(-30) },
        @{ @"FullPath" : path(@"Negative"), @"Accesses" : @-4, @"Date" : dateText(-40) },
    ]));
    LorvaneBundle_Provider *provider = readWithLimit(10);
    EXPECT_NSEQ((@[ @"Negative", @"Array", @"Text", @"Missing" ]), LVDisplayNames(LVProviderList(provider)));
    EXPECT_EQ((std::vector<int>{ -4, 0, 12, 0 }), counts(LVProviderList(provider)));
}

TEST_F(PreferencesFile, RecordsThatNameNoKnownMailboxAreDroppedSilently)
{
    writeFile(withRecords(@[
        saved(path(@"Work"), 1, dateText(-10)),
        saved([path(@"Lists") stringByAppendingString:@"-gone"], 1, dateText(-20)),
        saved([path(@"Lists") uppercaseString], 1, dateText(-30)),
        @"not a record",
        @[ path(@"Lists") ],
        @{ @"FullPath" : @42, @"Accesses" : @1 },
        @{ @"Accesses" : @3, @"Date" : dateText(-40) },
        saved(path(@"Lists"), 1, dateText(-50)),
    ]));
    LorvaneBundle_Provider *provider = readWithLimit(10);
    EXPECT_NSEQ((@[ @"Lists", @"Work" ]), LVDisplayNames(LVProviderList(provider)));
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane"));
}

TEST_F(PreferencesFile, AFullListKeepsTheBestUnderTheEvictionOrder)
{
    // File order; minutes ago and counts chosen so that age and use disagree.
    NSArray *names = @[ @"R1", @"R2", @"R3", @"R4", @"R5" ];
    std::vector<int> minutesAgo = { 50, 10, 30, 20, 40 };
    std::vector<int> uses = { 9, 1, 5, 2, 7 };
    struct Row {
        int sortType;
        NSArray *kept;
    } rows[] = {
        { 0, @[ @"R2", @"R4", @"R3" ] },  // the three newest
        { 1, @[ @"R2", @"R4", @"R3" ] },
        { 2, @[ @"R5", @"R1", @"R3" ] },  // the three most used
        { 5, @[ @"R2", @"R4", @"R3" ] },  // read as 0
    };
    for (const Row &row : rows) {
        NSMutableArray *records = [NSMutableArray array];
        for (NSUInteger i = 0; i < [names count]; i++)
            [records addObject:saved(path([names objectAtIndex:i]), uses[i], dateText(-60.0 * minutesAgo[i]))];
        writeFile(@{ @"SortType" : @(row.sortType), @"RecentMailboxes" : records });
        LorvaneBundle_Provider *provider = readWithLimit(3);
        EXPECT_NSEQ(row.kept, LVDisplayNames(LVProviderList(provider))) << "sort type " << row.sortType;
    }
}

TEST_F(PreferencesFile, ARecordThatOnlyTiesWithTheWorstKeptIsNotTakenAndLimitZeroTakesNone)
{
    NSString *sameMoment = dateText(-600);
    struct Row {
        int sortType;
        int limit;
        NSArray *records;
        NSArray *kept;
    } rows[] = {
        { 2, 2, @[ saved(path(@"A"), 5, dateText(-10)), saved(path(@"B"), 3, dateText(-20)), saved(path(@"Tie"), 3, dateText(-5)) ],
          @[ @"A", @"B" ] },
        { 0, 2, @[ saved(path(@"A"), 1, dateText(-10)), saved(path(@"B"), 1, sameMoment), saved(path(@"Tie"), 9, sameMoment) ],
          @[ @"A", @"B" ] },
        { 0, 0, @[ saved(path(@"A"), 1, dateText(-10)) ], @[] },
    };
    for (const Row &row : rows) {
        writeFile(@{ @"SortType" : @(row.sortType), @"RecentMailboxes" : row.records });
        LorvaneBundle_Provider *provider = readWithLimit(row.limit);
        EXPECT_NSEQ(row.kept, LVDisplayNames(LVProviderList(provider))) << "sort type " << row.sortType << ", limit " << row.limit;
    }
}

TEST_F(PreferencesFile, APathMailFindsTwiceGivesTheRecordEachMailboxInTurn)
{
    MailAccount *first = [[[MailAccount alloc] initWithDisplayName:@"Twin" path:nil] autorelease];
    MailAccount *second = [[[MailAccount alloc] initWithDisplayName:@"Twin" path:nil] autorelease];
    [first createMailboxWithRelativePath:@"Work"];
    MailboxUid *later = [second createMailboxWithRelativePath:@"Work"];
    [MailAccount setActiveAccounts:@[ first, second ]];
    writeFile(withRecords(@[ saved([later fullPath], 4, dateText(-10)) ]));

    LorvaneBundle_Provider *provider = readWithLimit(10);

    NSArray *list = LVProviderList(provider);
    ASSERT_EQ(2u, [list count]);
    EXPECT_EQ([list objectAtIndex:0], [list objectAtIndex:1]);
    EXPECT_EQ((id)later, (id)[provider getRecentMailboxUidAtIndex:0]);
}

TEST_F(PreferencesFile, DamagedOrMisshapenFilesGiveTheDefaultsAndNeverStopMail)
{
    NSDictionary *valid = withRecords(@[ saved(path(@"Work"), 3, dateText(-10)) ]);
    NSData *xml = [NSPropertyListSerialization dataWithPropertyList:valid format:NSPropertyListXMLFormat_v1_0 options:0 error:NULL];
    NSData *binary = [NSPropertyListSerialization dataWithPropertyList:valid format:NSPropertyListBinaryFormat_v1_0 options:0 error:NULL];
    ASSERT_TRUE(xml != nil && binary != nil);
    NSMutableData *damagedBinary = [NSMutableData dataWithData:binary];
    memset((char *)[damagedBinary mutableBytes] + [binary length] - 20, 0xFF, 20);
    struct Row {
        const char *what;
        id contents; // nil for no file, bytes as they are, or a property list to write as XML
    } rows[] = {
        { "no file", nil },
        { "empty", [NSData data] },
        { "truncated XML", [xml subdataWithRange:NSMakeRange(0, [xml length] / 2)] },
        { "truncated binary", [binary subdataWithRange:NSMakeRange(0, [binary length] / 2)] },
        { "binary with a damaged trailer", damagedBinary },
        { "not a property list", [@"<html><body>Not a plist at all</body></html>" dataUsingEncoding:NSUTF8StringEncoding] },
        { "plain text", [@"SortType is 2" dataUsingEncoding:NSUTF8StringEncoding] },
        { "bytes", [NSData dataWithBytes:"\x00\xFF\xFE\x01\x80\x7F" length:6] },
        { "an array at the root", @[ valid ] },
        { "a string at the root", @"SortType" },
        { "no known keys", @{ @"Sort" : @2, @"Mailboxes" : @[] } },
        { "records in a dictionary", @{ @"RecentMailboxes" : @{ @"Work" : saved(path(@"Work"), 3, dateText(-10)) } } },
        { "records as text", @{ @"RecentMailboxes" : path(@"Work") } },
    };
    for (const Row &row : rows) {
        if (row.contents == nil)
            [[NSFileManager defaultManager] removeItemAtPath:MHPreferencesFilePath() error:NULL];
        else if ([row.contents isKindOfClass:[NSData class]])
            ASSERT_TRUE([row.contents writeToFile:MHPreferencesFilePath() atomically:YES]);
        else
            writeFile(row.contents);
        LorvaneBundle_Provider *provider = LVMakeListProvider(10, 2, NO);
        [LVProviderList(provider) addObject:LVMakeRecord()];
        [provider readPreferences];
        expectDefaults(provider, row.what);
    }
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane"));
}

TEST_F(PreferencesFile, WrittenFileIsXMLThatPythonReadsWithExactlyTheSavedKeysAndThatReadsBackToTheSecond)
{
    LorvaneBundle_Provider *writer = LVMakeListProvider(10, 2, NO);
    for (NSString *name in @[ @"Work", @"Projects/Zürich %@ %n", @"Lists", @"Work" ])
        [writer addOrTouchRecentMailboxFromUid:LVUid(mailbox(name))];
    [[writer getRecentMailboxAtIndex:1] setDate:[NSDate dateWithTimeIntervalSinceNow:-1000.25]];
    LVRefileRecords(writer);

    [writer writePreferences];

    NSString *text = [NSString stringWithContentsOfFile:MHPreferencesFilePath() encoding:NSUTF8StringEncoding error:NULL];
    EXPECT_TRUE([text hasPrefix:@"<?xml"]);
    // Typed as a Mac writes them: a boolean and an integer, not texts or reals.
    NSString *compact = [[text componentsSeparatedByCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]] componentsJoinedByString:@""];
    EXPECT_NE(NSNotFound, [compact rangeOfString:@"<key>ExcludeSpecialMailboxes</key><false/>"].location) << [text UTF8String];
    EXPECT_NE(NSNotFound, [compact rangeOfString:@"<key>SortType</key><integer>2</integer>"].location) << [text UTF8String];
    NSDictionary *python = LVPythonReadPlist(MHPreferencesFilePath());
    ASSERT_TRUE([python isKindOfClass:[NSDictionary class]]);
    EXPECT_NSEQ((@[ @"ExcludeSpecialMailboxes", @"RecentMailboxes", @"SortType" ]),
                [[python allKeys] sortedArrayUsingSelector:@selector(compare:)]);

    LorvaneBundle_Provider *reader = readWithLimit(10);
    EXPECT_EQ(2, [reader getSortType]);
    EXPECT_FALSE(LVFlag(reader, @"_excludeSpecialMailboxes"));
    NSArray *records = [python objectForKey:@"RecentMailboxes"];
    NSArray *written = LVProviderList(writer);
    NSArray *read = LVProviderList(reader);
    ASSERT_EQ(3u, [records count]);
    ASSERT_EQ(3u, [read count]);
    for (NSUInteger i = 0; i < 3; i++) {
        NSDictionary *record = [records objectAtIndex:i];
        LorvaneMailbox *before = [written objectAtIndex:i];
        // Loading puts each record at the front: the file's order comes back reversed.
        LorvaneMailbox *after = [read objectAtIndex:2 - i];
        EXPECT_NSEQ((@[ @"Accesses", @"Date", @"FullPath" ]), [[record allKeys] sortedArrayUsingSelector:@selector(compare:)]);
        EXPECT_EQ([before accesses], [[record objectForKey:@"Accesses"] intValue]);
        EXPECT_NSEQ([[before date] description], [record objectForKey:@"Date"]);
        EXPECT_NSEQ([[before uid] fullPath], [record objectForKey:@"FullPath"]);
        EXPECT_EQ((id)[before uid], (id)[after uid]);
        EXPECT_EQ([before accesses], [after accesses]);
        EXPECT_NSEQ([[before date] description], [[after date] description]);
    }
}

TEST_F(PreferencesFile, WritingAListReadFromAnOldFileSavesOnlyTheKnownKeysAndNoDateItCouldNotRead)
{
    NSString *old = dateText(-86400);
    writeFile(withRecords(@[ @{ @"FullPath" : path(@"Work"), @"Accesses" : @2, @"CalendarDate" : old, @"Colour" : @"red" },
                             @{ @"FullPath" : path(@"Lists"), @"Accesses" : @2, @"Date" : @"not a date" } ]));
    LorvaneBundle_Provider *provider = readWithLimit(10);

    [provider writePreferences];

    NSArray *records = [LVReadPlist(MHPreferencesFilePath()) objectForKey:@"RecentMailboxes"];
    ASSERT_EQ(2u, [records count]);
    NSDictionary *work = [records objectAtIndex:1];
    EXPECT_NSEQ((@[ @"Accesses", @"Date", @"FullPath" ]), [[work allKeys] sortedArrayUsingSelector:@selector(compare:)]);
    EXPECT_NSEQ(old, [work objectForKey:@"Date"]);
    NSDictionary *lists = [records objectAtIndex:0];
    EXPECT_NSEQ((@[ @"Accesses", @"FullPath" ]), [[lists allKeys] sortedArrayUsingSelector:@selector(compare:)]);
    EXPECT_EQ(0u, LVLogCount(WriteFailureLine));
}

TEST_F(PreferencesFile, AFailedWriteIsLoggedOnceAndKeepsTheList)
{
    // A folder where the file belongs cannot be replaced by a file.
    ASSERT_TRUE([[NSFileManager defaultManager] createDirectoryAtPath:MHPreferencesFilePath() withIntermediateDirectories:YES attributes:nil error:NULL]);
    LorvaneBundle_Provider *provider = LVMakeListProvider(10, 0, YES);
    [provider addOrTouchRecentMailboxFromUid:LVUid(mailbox(@"Work"))];

    [provider writePreferences];

    EXPECT_EQ(1u, LVLogCount(WriteFailureLine));
    EXPECT_EQ(1u, LVLogCountWithPrefix(@"[Lorvane"));
    EXPECT_EQ(1u, [LVProviderList(provider) count]);
    [[NSFileManager defaultManager] removeItemAtPath:MHPreferencesFilePath() error:NULL];
}

namespace {

NSData *xmlData(id plist)
{
    return [NSPropertyListSerialization dataWithPropertyList:plist format:NSPropertyListXMLFormat_v1_0 options:0 error:NULL];
}

NSData *binaryData(id plist)
{
    return [NSPropertyListSerialization dataWithPropertyList:plist format:NSPropertyListBinaryFormat_v1_0 options:0 error:NULL];
}

NSData *bytes(const std::string &text)
{
    return [NSData dataWithBytes:text.data() length:text.size()];
}

// Arrays inside arrays, `depth` levels counting the outermost.
id nested(int depth)
{
    id plist = @[];
    for (int level = 1; level < depth; level++)
        plist = @[ plist ];
    return plist;
}

// An array of `count` distinct numbers.
NSArray *numbers(int count)
{
    NSMutableArray *array = [NSMutableArray array];
    for (int i = 0; i < count; i++)
        [array addObject:@(1000 + i)];
    return array;
}

// A binary list of these objects, the first one the root, with one-byte offsets and
// references: how a small file may share one object among many places.
NSData *binaryList(const std::vector<std::string> &objects)
{
    std::string list = "bplist00";
    std::string offsets;
    for (const std::string &object : objects) {
        offsets.push_back((char)list.size());
        list += object;
    }
    size_t tableStart = list.size();
    list += offsets;
    list += std::string(6, '\0') + '\x01' + '\x01';
    for (uint64_t field : { (uint64_t)objects.size(), (uint64_t)0, (uint64_t)tableStart }) {
        for (int shift = 56; shift >= 0; shift -= 8)
            list.push_back((char)(field >> shift));
    }
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
    NSUInteger frame = [xmlData(@"x") length] - 1;
    return xmlData([@"" stringByPaddingToLength:length - frame withString:@"x" startingAtIndex:0]);
}

} // namespace

// Only the two forms a Mac writes, within the size and shape of a real file, reach the
// platform's parser: each limit is shown from both sides.
TEST(PropertyListReader, AdmitsOnlyXMLAndBinaryListsWithinTheLimitsOfARealFile)
{
    Class reader = LVPluginClass("LVPropertyListReader");
    ASSERT_TRUE(reader != Nil);
    NSDictionary *settings = @{ @"SortType" : @2, @"RecentMailboxes" : @[ @{ @"FullPath" : @"Home/Work" } ] };
    NSUInteger limit = [reader maximumLength];
    struct Row {
        const char *what;
        NSData *data;
        BOOL admitted;
    } rows[] = {
        { "XML as written", xmlData(settings), YES },
        { "binary as written", binaryData(settings), YES },
        { "OpenStep text", [[settings description] dataUsingEncoding:NSUTF8StringEncoding], NO },
        { "the platform's serialised form", bytes(std::string("\x00\x05\x00\x00", 4)), NO },
        { "XML after a blank line", bytes("\n" + std::string((const char *)[xmlData(settings) bytes], [xmlData(settings) length])), NO },
        { "nothing", [NSData data], NO },
        { "XML of the longest length", xmlOfLength(limit), YES },
        { "XML one byte longer", xmlOfLength(limit + 1), NO },
        { "XML 32 levels deep", xmlData(nested(32)), YES },
        { "XML 33 levels deep", xmlData(nested(33)), NO },
        { "binary 32 levels deep", binaryData(nested(32)), YES },
        { "binary 33 levels deep", binaryData(nested(33)), NO },
        { "XML of 10000 objects", xmlData(numbers(9999)), YES },
        { "XML of 10001 objects", xmlData(numbers(10000)), NO },
        { "binary of 10000 objects", binaryData(numbers(9999)), YES },
        { "binary of 10001 objects", binaryData(numbers(10000)), NO },
        { "binary unfolding into 5461 objects", sharedArrays(6), YES },
        { "binary unfolding into 21845 objects", sharedArrays(7), NO },
        { "binary array holding itself", binaryList({ "\xA1\x00" }), NO },
        { "binary ASCII string", binaryList({ "\x53" "abc" }), YES },
        { "binary ASCII string with a Latin-1 byte", binaryList({ "\x53" "ab\xE9" }), NO },
        { "XML ending in an open tag", bytes("<?xml version=\"1.0\"?><plist><dict/></plist><"), NO },
        { "XML with an open comment", bytes("<?xml version=\"1.0\"?><plist><dict/><!-- </plist>"), NO },
        { "XML with an attribute's quote left open", bytes("<?xml version=\"1.0\"?><plist version=\"1.0><dict/></plist>"), NO },
        { "XML in UTF-8", bytes("<?xml version=\"1.0\"?><plist><string>caf\xC3\xA9</string></plist>"), YES },
        { "XML with a control character", bytes(std::string("<?xml version=\"1.0\"?><plist version=\"") + '\0' + "\"><dict/></plist>"), NO },
        { "XML in Latin-1", bytes("<?xml version=\"1.0\"?><plist><string>caf\xE9</string></plist>"), NO },
    };
    for (const Row &row : rows) {
        ASSERT_TRUE(row.data != nil) << row.what;
        EXPECT_EQ(row.admitted, [reader admitsData:row.data]) << row.what;
    }
}

// The same rules hold for files: one longer than the limit is not even read whole.
TEST_F(PreferencesFile, AFileTheReaderRefusesGivesTheDefaultsWithoutAMessage)
{
    NSDictionary *valid = withRecords(@[ saved(path(@"Work"), 3, dateText(-10)) ]);
    NSMutableData *padded = [NSMutableData dataWithData:xmlData(valid)];
    [padded appendData:[NSMutableData dataWithLength:[LVPluginClass("LVPropertyListReader") maximumLength]]];
    for (NSData *contents : { [[valid description] dataUsingEncoding:NSUTF8StringEncoding], (NSData *)padded }) {
        ASSERT_TRUE([contents writeToFile:MHPreferencesFilePath() atomically:YES]);
        LorvaneBundle_Provider *provider = LVMakeListProvider(10, 2, NO);
        [provider readPreferences];
        expectDefaults(provider, "refused file");
    }
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane"));
}
