/*
 * `make demo`: tools/demo.sh plays a day in MailHost with the plug-in installed in a private
 * Library. What it says happened must have happened: messages on disk, the preferences
 * file's records, the menus it printed and the screenshots it names.
 */
#import "LVTestSupport.h"

#include <cstring>
#include <ostream>

namespace {

struct DemoRun {
    int status;
    NSString *output;
};

// The demo as `make demo` runs it, on the suite's display rather than one of its own.
DemoRun runDemo(NSString *folder)
{
    NSMutableDictionary *environment = [[[[NSProcessInfo processInfo] environment] mutableCopy] autorelease];
    [environment setObject:@"1" forKey:@"LORVANE_USE_DISPLAY"];
    // A file rather than a pipe: a helper GNUstep starts for Mail could hold a pipe open
    // long after the demo is over.
    NSString *outputPath = [folder stringByAppendingPathExtension:@"out"];
    [[NSFileManager defaultManager] createFileAtPath:outputPath contents:nil attributes:nil];
    NSTask *task = [[[NSTask alloc] init] autorelease];
    [task setLaunchPath:@"/bin/sh"];
    [task setArguments:@[ @LORVANE_SOURCE_DIR "/tools/demo.sh", @LORVANE_BINARY_DIR, folder ]];
    [task setEnvironment:environment];
    [task setStandardOutput:[NSFileHandle fileHandleForWritingAtPath:outputPath]];
    [task launch];
    [task waitUntilExit];
    NSString *output = [NSString stringWithContentsOfFile:outputPath encoding:NSUTF8StringEncoding error:NULL];
    return { [task terminationStatus], output ?: @"" };
}

NSArray *messageFiles(NSString *mailboxFolder)
{
    NSArray *names = [[NSFileManager defaultManager] contentsOfDirectoryAtPath:[mailboxFolder stringByAppendingPathComponent:@"Messages"] error:NULL];
    return [[names filteredArrayUsingPredicate:[NSPredicate predicateWithFormat:@"self ENDSWITH '.eml'"]] sortedArrayUsingSelector:@selector(compare:)];
}

NSArray *recordsIn(NSString *preferencesFile)
{
    return [LVPythonReadPlist(preferencesFile) objectForKey:@"RecentMailboxes"];
}

} // namespace

TEST(Demo, PlaysTheDayAndLeavesTheMailboxesAndPreferencesItDescribes)
{
    NSString *folder = LVMakeTemporaryFolder(@"demo");
    DemoRun run = runDemo(folder);
    const char *output = [run.output UTF8String];
    ASSERT_EQ(0, run.status) << output;

    // The menus as the user saw them: the shared name with its account, the tip with its path.
    EXPECT_NE(NSNotFound, [run.output rangeOfString:@"     1  Archive (Home)  tip: Home/Archive\n"
                                                     "     2  Archive (Work)  tip: Work/Archive\n"].location) << output;
    EXPECT_NE(NSNotFound, [run.output rangeOfString:@"  chose item 1 \"Archive (Home)\"\n  moved 1 of 1 messages to Home/Archive\n"].location) << output;
    EXPECT_NE(NSNotFound, [run.output rangeOfString:@"  chose item 0 \"Apollo\"\n  copied 1 of 1 messages to Work/Projects/Apollo\n"].location) << output;
    EXPECT_NE(NSNotFound, [run.output rangeOfString:@"     2  Bills  tip: Home/Bills\n"].location) << output;

    // Messages on disk: filed by hand and from the recent menus, then a rename and a deletion.
    NSString *store = [folder stringByAppendingPathComponent:@"store"];
    NSFileManager *fm = [NSFileManager defaultManager];
    struct {
        NSString *mailbox;
        NSUInteger messages;
    } const rows[] = {
        { @"Home/Inbox.mbox", 1 },   { @"Home/Archive.mbox", 4 }, { @"Home/Bills.mbox", 4 },
        { @"Home/Family.mbox", 4 },  { @"Work/Inbox.mbox", 1 },   { @"Work/Archive.mbox", 2 },
    };
    for (const auto &row : rows)
        EXPECT_EQ(row.messages, [messageFiles([store stringByAppendingPathComponent:row.mailbox]) count]) << [row.mailbox UTF8String];
    EXPECT_FALSE([fm fileExistsAtPath:[store stringByAppendingPathComponent:@"Home/Receipts.mbox"]]);
    EXPECT_FALSE([fm fileExistsAtPath:[store stringByAppendingPathComponent:@"Work/Projects.mbox/Apollo.mbox"]]);

    // When Mail first quit, the file named the four mailboxes still there, in Mail's fields.
    NSArray *records = recordsIn([folder stringByAppendingPathComponent:@"preferences-after-first-launch.plist"]);
    NSMutableArray *paths = [NSMutableArray array];
    for (NSDictionary *record in records) {
        NSArray *keys = [[record allKeys] sortedArrayUsingSelector:@selector(compare:)];
        EXPECT_NSEQ((@[ @"Accesses", @"Date", @"FullPath" ]), keys);
        EXPECT_GE([[record objectForKey:@"Accesses"] intValue], 1);
        EXPECT_TRUE([NSDate dateWithString:[record objectForKey:@"Date"]] != nil) << [[record objectForKey:@"Date"] UTF8String];
        [paths addObject:[record objectForKey:@"FullPath"] ?: @""];
    }
    NSMutableArray *expected = [NSMutableArray array];
    for (NSString *mailbox in @[ @"Home/Archive.mbox", @"Home/Bills.mbox", @"Home/Family.mbox", @"Work/Archive.mbox" ])
        [expected addObject:[store stringByAppendingPathComponent:mailbox]];
    EXPECT_NSEQ(expected, [paths sortedArrayUsingSelector:@selector(compare:)]);

    // After the relaunch the user cleared the menu: the file keeps no mailbox.
    NSString *preferences = [folder stringByAppendingPathComponent:@"Library/Preferences/org.lorvane.mailbundle.plist"];
    NSArray *cleared = recordsIn(preferences);
    ASSERT_TRUE(cleared != nil);
    EXPECT_EQ(0u, [cleared count]);

    // The last line names the screenshots, one per open submenu.
    NSString *lastLine = [[[run.output stringByTrimmingCharactersInSet:[NSCharacterSet newlineCharacterSet]] componentsSeparatedByString:@"\n"] lastObject];
    NSString *shots = [folder stringByAppendingPathComponent:@"screenshots"];
    EXPECT_NSEQ([@"Screenshots: " stringByAppendingString:shots], lastLine);
    for (NSString *name in @[ @"1-move-to-recent", @"2-copy-to-recent-contextual", @"3-go-to-recent", @"4-after-relaunch" ]) {
        NSData *png = [NSData dataWithContentsOfFile:[[shots stringByAppendingPathComponent:name] stringByAppendingPathExtension:@"png"]];
        ASSERT_GT([png length], 8u) << [name UTF8String];
        EXPECT_EQ(0, memcmp([png bytes], "\x89PNG\r\n\x1a\n", 8)) << [name UTF8String];
    }
}
