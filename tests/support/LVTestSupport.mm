#import "LVTestSupport.h"
#import "MHAlertRecorder.h"
#import "MailApp.h"
#import "MHBundleLoader.h"

#include <cstdlib>
#include <unistd.h>

static NSString *temporaryRoot;
static NSMutableArray *loggedLines;

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

// GNUstep finds the user's Library folder through its configuration file, not HOME:
// each test process gets a private one, so no test touches a real home folder.
static void redirectUserFolders(void)
{
    char pattern[] = "/tmp/lorvane-test-XXXXXX";
    temporaryRoot = [[NSString alloc] initWithUTF8String:mkdtemp(pattern)];
    NSString *library = [temporaryRoot stringByAppendingPathComponent:@"Library"];
    NSString *defaults = [temporaryRoot stringByAppendingPathComponent:@"Defaults"];
    NSString *home = [temporaryRoot stringByAppendingPathComponent:@"Home"];
    NSString *system = [NSString stringWithContentsOfFile:@"/etc/GNUstep/GNUstep.conf" encoding:NSUTF8StringEncoding error:NULL];
    NSString *conf = [NSString stringWithFormat:@"%@\nGNUSTEP_USER_DIR_LIBRARY=%@\nGNUSTEP_USER_DEFAULTS_DIR=%@\n",
                               system != nil ? system : @"", library, defaults];
    NSString *confPath = [temporaryRoot stringByAppendingPathComponent:@"GNUstep.conf"];
    [conf writeToFile:confPath atomically:YES encoding:NSUTF8StringEncoding error:NULL];
    for (NSString *folder in @[ library, defaults, home, [library stringByAppendingPathComponent:@"Preferences"] ])
        [[NSFileManager defaultManager] createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:NULL];
    setenv("GNUSTEP_CONFIG_FILE", [confPath fileSystemRepresentation], 1);
    // GNUstep reads that variable only at process start, so it reaches child processes
    // alone; this process takes the two folders directly.
    NSMutableDictionary *config = GNUstepConfig(nil);
    [config setObject:library forKey:@"GNUSTEP_USER_DIR_LIBRARY"];
    [config setObject:defaults forKey:@"GNUSTEP_USER_DEFAULTS_DIR"];
    GNUstepConfig(config);
    setenv("HOME", [home fileSystemRepresentation], 1);
}

NSString *LVTestLibraryFolder(void)
{
    return [temporaryRoot stringByAppendingPathComponent:@"Library"];
}

NSString *LVTestHomeFolder(void)
{
    return [temporaryRoot stringByAppendingPathComponent:@"Home"];
}

NSString *LVMakeTemporaryFolder(NSString *name)
{
    NSString *path = [temporaryRoot stringByAppendingPathComponent:name];
    NSFileManager *fm = [NSFileManager defaultManager];
    [fm removeItemAtPath:path error:NULL];
    [fm createDirectoryAtPath:path withIntermediateDirectories:YES attributes:nil error:NULL];
    return path;
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
        count += [logged isEqualToString:line] ? 1 : 0;
    return count;
}

NSUInteger LVLogCountWithPrefix(NSString *prefix)
{
    NSUInteger count = 0;
    for (NSString *logged in loggedLines)
        count += [logged hasPrefix:prefix] ? 1 : 0;
    return count;
}

BOOL LVLoadPluginBundle(void)
{
    static NSBundle *bundle;
    if (bundle == nil) {
        // Mail has its application object, and shows no alert to a test, before any plug-in loads.
        MHSetRecordsAlerts(YES);
        [MailApp sharedMailApp];
        MHPrepareMailClassesForPlugins();
        bundle = [MHLoadMailBundle(@LORVANE_BUNDLE_PATH) retain];
    }
    return bundle != nil;
}

Class LVPluginClass(const char *name)
{
    LVLoadPluginBundle();
    return NSClassFromString([NSString stringWithUTF8String:name]);
}

void LVOpenRecentMenu(NSMenu *menu)
{
    [menu update];
}

NSArray *LVTitlesAboveSeparator(NSMenu *menu)
{
    NSMutableArray *titles = [NSMutableArray array];
    for (NSMenuItem *item in [menu itemArray]) {
        if ([item isSeparatorItem])
            break;
        [titles addObject:[item title]];
    }
    return titles;
}

id LVReadPlist(NSString *path)
{
    NSData *data = [NSData dataWithContentsOfFile:path];
    if (data == nil)
        return nil;
    return [NSPropertyListSerialization propertyListWithData:data options:NSPropertyListImmutable format:NULL error:NULL];
}

id LVPythonReadPlist(NSString *path)
{
    NSString *script = @"import json,plistlib,sys,datetime\n"
                        "d=plistlib.load(open(sys.argv[1],'rb'))\n"
                        "print(json.dumps(d, default=str))\n";
    NSString *output = [temporaryRoot stringByAppendingPathComponent:@"plistlib.json"];
    NSString *command = [NSString stringWithFormat:@"python3 -c \"$LV_SCRIPT\" '%@' > '%@'", path, output];
    setenv("LV_SCRIPT", [script UTF8String], 1);
    if (system([command fileSystemRepresentation]) != 0)
        return nil;
    NSData *json = [NSData dataWithContentsOfFile:output];
    return json != nil ? [NSJSONSerialization JSONObjectWithData:json options:0 error:NULL] : nil;
}

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
    redirectUserFolders();
    loggedLines = [[NSMutableArray alloc] init];
    _NSLog_printf_handler = collectLogLine;
    NSSetUncaughtExceptionHandler(failOnUncaughtException);
    testing::UnitTest::GetInstance()->listeners().Append(new PoolPerTest);
    int status = RUN_ALL_TESTS();
    [[NSFileManager defaultManager] removeItemAtPath:temporaryRoot error:NULL];
    [pool release];
    return status;
}
