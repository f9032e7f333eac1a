#import "LVLorvane.h"
#import "MHSystemVersion.h"
#import "MVMailBundle.h"

#include <objc/runtime.h>

#include <cstdlib>
#include <cstring>
#include <unistd.h>

NSString *const LVPreferencesFileName = @"org.lorvane.mailbundle.plist";

static NSString *temporaryRoot;
static MHMailSession *session;
static NSMutableArray *loggedLines;
static MHMailStore *sampleStore;
// The bundle the tests load: the build's own, or another build of the plug-in given as
// "--bundle=<path>".
static NSString *pluginBundlePath = @LORVANE_BUNDLE_PATH;

#pragma mark The process

// GNUstep hands over the whole line, "<date> <process>[<pid>:<thread>] <text>\n": keep the text.
static void collectLogLine(NSString *message)
{
    fputs([message UTF8String], stderr);
    NSRange header = [message rangeOfString:@"] "];
    NSString *text = header.location != NSNotFound ? [message substringFromIndex:NSMaxRange(header)] : message;
    if ([text hasSuffix:@"\n"])
        text = [text substringToIndex:[text length] - 1];
    [loggedLines addObject:text];
}

NSString *LVMakeTemporaryFolder(NSString *name)
{
    return [session makeFolderNamed:name];
}

NSArray *LVLoggedLines(void)
{
    return loggedLines;
}

void LVClearLog(void)
{
    [loggedLines removeAllObjects];
}

NSUInteger LVLogCount(NSString *line)
{
    NSUInteger count = 0;
    for (NSString *logged in loggedLines)
        count += [logged isEqualToString:line];
    return count;
}

NSUInteger LVLogCountWithPrefix(NSString *prefix)
{
    NSUInteger count = 0;
    for (NSString *logged in loggedLines)
        count += [logged hasPrefix:prefix];
    return count;
}

MHMailSession *LVMailSession(void)
{
    return session;
}

NSString *LVPreferencesFilePath(void)
{
    return [[session preferencesFolder] stringByAppendingPathComponent:LVPreferencesFileName];
}

// Mail's own instance of the plug-in needs a usable limit, or its failure would leave every
// later provider inert.
BOOL LVLoadPluginBundle(void)
{
    static BOOL started, loaded;
    if (!started) {
        started = YES;
        [session setRecentItemsLimit:10];
        [session addBundlePath:pluginBundlePath];
        loaded = [session start];
    }
    return loaded;
}

NSString *LVPluginBundlePath(void)
{
    return pluginBundlePath;
}

Class LVPluginClass(const char *name)
{
    LVLoadPluginBundle();
    return NSClassFromString([NSString stringWithUTF8String:name]);
}

MailApp *LVStartMail(void)
{
    static BOOL started = NO;
    LVLoadPluginBundle();
    if (!started) {
        MHClearRecordedAlerts();
        LVClearLog();
        started = YES;
    }
    return [session application];
}

MHMailStore *LVSampleStore(void)
{
    if (sampleStore == nil) {
        NSString *source = [@LORVANE_SOURCE_DIR stringByAppendingPathComponent:@"samples/store"];
        sampleStore = [[session openCopyOfStoreAtPath:source toPath:LVMakeTemporaryFolder(@"store")] retain];
    }
    [MailAccount setActiveAccounts:[sampleStore accounts]];
    return sampleStore;
}

MailboxUid *LVSampleMailbox(NSString *accountAndPath)
{
    MailboxUid *mailbox = [LVSampleStore() mailboxAtPath:accountAndPath];
    EXPECT_TRUE(mailbox != nil) << [accountAndPath UTF8String];
    return mailbox;
}

MHMailStore *LVMakeStore(NSString *name)
{
    return [session openStoreAtPath:LVMakeTemporaryFolder(name)];
}

MailAccount *LVMemoryAccount(NSString *name, NSArray *relativePaths)
{
    return [session addAccountInMemoryNamed:name type:nil serverPathPrefix:nil mailboxes:relativePaths];
}

#pragma mark Lorvane

LorvaneBundle_Provider *LVStartProvider(int limit, id preferences)
{
    LVStartMail();
    [session setRecentItemsLimit:limit];
    [session writePreferencesFileNamed:LVPreferencesFileName contents:preferences];
    return [session startPluginAgain];
}

LorvaneBundle_Provider *LVRelaunch(void)
{
    return [session relaunch];
}

NSDictionary *LVSavedRecord(MailboxUid *mailbox, int accesses, NSString *date)
{
    NSMutableDictionary *saved = [NSMutableDictionary dictionaryWithObjectsAndKeys:[mailbox fullPath], @"FullPath", @(accesses), @"Accesses", nil];
    if (date != nil)
        [saved setObject:date forKey:@"Date"];
    return saved;
}

NSDictionary *LVPreferences(int sortType, BOOL excludeSpecialMailboxes, NSArray *savedRecords)
{
    return @{ @"SortType" : @(sortType), @"ExcludeSpecialMailboxes" : @(excludeSpecialMailboxes), @"RecentMailboxes" : savedRecords ?: @[] };
}

// The list's length is no method of the provider's: entries are read until the index raises.
static NSArray *listedRecords(LorvaneBundle_Provider *provider)
{
    NSMutableArray *records = [NSMutableArray array];
    for (int index = 0;; index++) {
        @try {
            [records addObject:[provider getRecentMailboxAtIndex:index]];
        } @catch (NSException *exception) {
            return records;
        }
    }
}

NSArray *LVListedNames(LorvaneBundle_Provider *provider)
{
    NSMutableArray *names = [NSMutableArray array];
    for (LorvaneMailbox *record in listedRecords(provider))
        [names addObject:[[record uid] displayName] ?: @"(nil)"];
    return names;
}

NSArray *LVListedCounts(LorvaneBundle_Provider *provider)
{
    NSMutableArray *counts = [NSMutableArray array];
    for (LorvaneMailbox *record in listedRecords(provider))
        [counts addObject:@([record accesses])];
    return counts;
}

#pragma mark Menus

void LVOpenRecentMenu(NSMenu *submenu)
{
    [submenu update];
}

void LVChooseItem(NSMenu *menu, NSInteger index)
{
    [menu performActionForItemAtIndex:index];
}

NSArray *LVTitlesAboveSeparator(NSMenu *submenu)
{
    NSMutableArray *titles = [NSMutableArray array];
    for (NSMenuItem *item in [submenu itemArray]) {
        if ([item isSeparatorItem])
            break;
        [titles addObject:[item title]];
    }
    return titles;
}

testing::AssertionResult LVSubmenusShow(LorvaneBundle_Provider *provider, NSArray *titles)
{
    NSArray *submenus = LVRecentSubmenus(provider);
    LVOpenRecentMenu([submenus firstObject]);
    for (NSUInteger family = 0; family < [submenus count]; family++) {
        NSMenu *submenu = [submenus objectAtIndex:family];
        NSArray *shown = LVTitlesAboveSeparator(submenu);
        NSUInteger count = [titles count];
        BOOL ends = [submenu numberOfItems] == (NSInteger)count + 2 && [[submenu itemAtIndex:(NSInteger)count] isSeparatorItem]
            && [[[submenu itemAtIndex:(NSInteger)count + 1] title] isEqualToString:@"Clear Menu"]
            && [[submenu itemAtIndex:(NSInteger)count + 1] isEnabled] == (count != 0);
        if (![shown isEqualToArray:titles] || !ends)
            return testing::AssertionFailure() << LVFamilyNames[family] << " shows " << [[[submenu itemArray] description] UTF8String]
                                               << ", wanted " << [[titles description] UTF8String];
    }
    return testing::AssertionSuccess();
}

NSMenuItem *LVItemAfterItem(NSMenuItem *item)
{
    NSMenu *menu = [item menu];
    NSInteger next = [menu indexOfItem:item] + 1;
    return next < [menu numberOfItems] ? (NSMenuItem *)[menu itemAtIndex:next] : nil;
}

static NSMenuItem *firstItemWithAction(NSMenu *menu, SEL action)
{
    for (NSMenuItem *item in [menu itemArray]) {
        if (sel_isEqual([item action], action))
            return item;
        NSMenuItem *found = [item hasSubmenu] ? firstItemWithAction([item submenu], action) : nil;
        if (found != nil)
            return found;
    }
    return nil;
}

NSMenuItem *LVItemAfterItemWithAction(NSMenu *menu, SEL action)
{
    NSMenuItem *item = firstItemWithAction(menu, action);
    return item != nil ? LVItemAfterItem(item) : nil;
}

NSArray *LVSelectFirstMessages(MessageViewer *viewer, MailboxUid *mailbox, NSUInteger count)
{
    [viewer setSelectedMailboxes:@[ mailbox ]];
    TableViewManager *list = [viewer messageList];
    [list selectMessagesAtIndexes:[NSIndexSet indexSetWithIndexesInRange:NSMakeRange(0, count)]];
    return [list selectedMessagePaths];
}

void LVUseMailboxes(MessageViewer *viewer, MailboxUid *source, NSArray *mailboxes)
{
    for (MailboxUid *mailbox in mailboxes) {
        LVSelectFirstMessages(viewer, source, 1);
        [viewer transferSelectedMessagesToMailbox:mailbox deleteOriginals:NO];
    }
}

NSArray *LVRecordedStartupAlerts(void)
{
    NSMutableArray *alerts = [NSMutableArray array];
    for (NSDictionary *alert in MHRecordedAlerts())
        if ([[alert objectForKey:MHAlertTitleKey] isEqualToString:@"Lorvane Plugin Notification"])
            [alerts addObject:alert];
    return alerts;
}

#pragma mark Files

id LVReadPlist(NSString *path)
{
    NSData *data = [NSData dataWithContentsOfFile:path];
    return data != nil ? [NSPropertyListSerialization propertyListWithData:data options:NSPropertyListImmutable format:NULL error:NULL] : nil;
}

id LVPythonReadPlist(NSString *path)
{
    NSString *script = @"import json,plistlib,sys\n"
                        "print(json.dumps(plistlib.load(open(sys.argv[1],'rb')), default=str))\n";
    NSString *output = [temporaryRoot stringByAppendingPathComponent:@"plistlib.json"];
    setenv("LV_SCRIPT", [script UTF8String], 1);
    NSString *command = [NSString stringWithFormat:@"python3 -c \"$LV_SCRIPT\" '%@' > '%@'", path, output];
    if (system([command fileSystemRepresentation]) != 0)
        return nil;
    NSData *json = [NSData dataWithContentsOfFile:output];
    return json != nil ? [NSJSONSerialization JSONObjectWithData:json options:0 error:NULL] : nil;
}

static int capturedDescriptor = -1, savedDescriptor = -1;
static char capturePath[] = "/tmp/lorvane-capture-XXXXXX";

void LVBeginCapturing(int descriptor)
{
    fflush(NULL);
    int capture = mkstemp(capturePath);
    capturedDescriptor = descriptor;
    savedDescriptor = dup(descriptor);
    dup2(capture, descriptor);
    close(capture);
}

NSString *LVEndCapturing(void)
{
    fflush(NULL);
    dup2(savedDescriptor, capturedDescriptor);
    close(savedDescriptor);
    NSString *captured = [NSString stringWithContentsOfFile:@(capturePath) encoding:NSUTF8StringEncoding error:NULL];
    unlink(capturePath);
    strcpy(capturePath, "/tmp/lorvane-capture-XXXXXX");
    return captured ?: @"";
}

#pragma mark The test program

namespace {

// Each test gets its own autorelease pool and a clean log.
class PoolPerTest : public testing::EmptyTestEventListener {
    NSAutoreleasePool *pool = nil;
    void OnTestStart(const testing::TestInfo &) override
    {
        pool = [[NSAutoreleasePool alloc] init];
        LVClearLog();
    }
    void OnTestEnd(const testing::TestInfo &) override
    {
        [pool release];
        pool = nil;
    }
};

// An uncaught exception would open GNUstep's modal panel and hang a run nobody watches.
void failOnUncaughtException(NSException *exception)
{
    fprintf(stderr, "Uncaught exception %s: %s\n", [[exception name] UTF8String], [[exception reason] UTF8String]);
    _exit(3);
}

} // namespace

int main(int argc, char **argv)
{
    testing::InitGoogleTest(&argc, argv);
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    for (int i = 1; i < argc; i++) {
        if (strncmp(argv[i], "--bundle=", 9) == 0)
            pluginBundlePath = [[NSString alloc] initWithUTF8String:argv[i] + 9];
    }
    char pattern[] = "/tmp/lorvane-test-XXXXXX";
    temporaryRoot = [[NSString alloc] initWithUTF8String:mkdtemp(pattern)];
    session = [[MHMailSession alloc] initWithPrivateFolder:temporaryRoot];
    loggedLines = [[NSMutableArray alloc] init];
    _NSLog_printf_handler = collectLogLine;
    NSSetUncaughtExceptionHandler(failOnUncaughtException);
    testing::UnitTest::GetInstance()->listeners().Append(new PoolPerTest);
    int status = RUN_ALL_TESTS();
    [[NSFileManager defaultManager] removeItemAtPath:temporaryRoot error:NULL];
    [pool release];
    return status;
}
