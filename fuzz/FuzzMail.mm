#import "FuzzMail.h"
#import "IMAPAccount.h"
#import "MailAccount.h"
#import "MailApp.h"
#import "MHAlertRecorder.h"
#import "MHBundleLoader.h"
#import "MHMailMenus.h"
#import "MHPrivateFolders.h"
#import "MHUserLibrary.h"
#import "PropertyListReader.h"

#include <objc/runtime.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

// Leak reports would be GNUstep's own caches; the small quarantine keeps the process's
// memory close to what the plug-in really holds, so -rss_limit_mb can stay tight.
extern "C" const char *__asan_default_options(void)
{
    return "detect_leaks=0:quarantine_size_mb=16";
}

static NSAutoreleasePool *processPool;    // never drained: it holds what lives as long as Mail
static char temporaryRoot[] = "/dev/shm/lorvane-fuzz-XXXXXX";
static NSString *preferencesFile;  // the two files the targets write, found once
static NSString *recentItemsFile;
static NSMutableArray *loggedLines;
static NSUInteger exceptionsRaised;
static NSString *lastException;   // "<name>: <reason>" of the latest, for the failure report
static IMP originalRaise;
static NSArray *mailboxes;

// GNUstep hands over "<date> <process>[<pid>:<thread>] <text>\n": keep the text.
static void collectLogLine(NSString *message)
{
    NSRange header = [message rangeOfString:@"] "];
    NSString *text = header.location != NSNotFound ? [message substringFromIndex:NSMaxRange(header)] : message;
    [loggedLines addObject:[text stringByTrimmingCharactersInSet:[NSCharacterSet newlineCharacterSet]]];
}

// Every exception passes through -raise, including those the plug-in catches: a caught one
// still means the parser was given bytes it could not take.
static void countingRaise(id self, SEL _cmd)
{
    exceptionsRaised++;
    [lastException release];
    lastException = [[NSString alloc] initWithFormat:@"%@: %@", [self name], [self reason]];
    ((void (*)(id, SEL))originalRaise)(self, _cmd);
}

static void countRaisedExceptions(void)
{
    Method raise = class_getInstanceMethod([NSException class], @selector(raise));
    originalRaise = method_setImplementation(raise, (IMP)countingRaise);
}

// Runs when the fuzzer ends normally; a run stopped by a failure leaves its folder to look at.
static void removeTemporaryRoot(void)
{
    [[NSFileManager defaultManager] removeItemAtPath:[NSString stringWithUTF8String:temporaryRoot] error:NULL];
}

// GNUstep finds the user's Library folder through its configuration, not HOME.
static void redirectUserFolders(void)
{
    // In memory where the machine offers it: on a disk, rewriting the same small file costs
    // milliseconds (the file system flushes a file truncated and written again), more than a
    // whole input.
    if (mkdtemp(temporaryRoot) == NULL) {
        strcpy(temporaryRoot, "/tmp/lorvane-fuzz-XXXXXX");
        if (mkdtemp(temporaryRoot) == NULL) {
            perror("mkdtemp");
            exit(2);
        }
    }
    NSString *root = [NSString stringWithUTF8String:temporaryRoot];
    atexit(removeTemporaryRoot);
    MHUsePrivateUserFolders(root);
    preferencesFile = [MHPreferencesFilePath() retain];
    recentItemsFile = [MHRecentItemsFilePath() retain];
}

static MailAccount *accountInMemory(Class kind, NSString *name, NSArray *relativePaths)
{
    MailAccount *account = [[[kind alloc] initWithDisplayName:name path:nil] autorelease];
    for (NSString *relativePath in relativePaths)
        [account createMailboxWithRelativePath:relativePath];
    return account;
}

// Two accounts share the name "Home", so "Home/Work" names two mailboxes, as it can in Mail;
// the IMAP account's prefix gives its paths the form the plug-in shortens.
static void openStore(void)
{
    MailAccount *home = accountInMemory([MailAccount class], @"Home", @[ @"Inbox", @"Sent", @"Work", @"Projects", @"Projects/Old" ]);
    MailAccount *homeServer = accountInMemory([IMAPAccount class], @"Home", @[ @"Work", @"Receipts" ]);
    IMAPAccount *office = (IMAPAccount *)accountInMemory([IMAPAccount class], @"Office", @[ @"INBOX", @"INBOX/Work", @"INBOX/Archive", @"INBOX/Archive/2023" ]);
    [office setServerPathPrefix:@"INBOX"];
    NSArray *accounts = @[ home, homeServer, office ];
    [MailAccount setActiveAccounts:accounts];
    NSMutableArray *all = [NSMutableArray array];
    for (MailAccount *account in accounts)
        [all addObjectsFromArray:[account allMailboxUids]];
    mailboxes = [all copy];
}

// What every target's process needs before Mail starts: a pool for what lives as long as
// Mail, the log collected, and private user folders.
static void prepareProcess(void)
{
    processPool = [[NSAutoreleasePool alloc] init];
    loggedLines = [[NSMutableArray alloc] init];
    _NSLog_printf_handler = collectLogLine;
    redirectUserFolders();
}

LorvaneBundle_Provider *LVFuzzStartMail(int limit)
{
    prepareProcess();
    // A running Mail has messaged its classes long before it loads a plug-in.
    MHPrepareMailClassesForPlugins();
    if (![[NSBundle bundleWithPath:@LORVANE_FUZZ_BUNDLE_PATH] load]) {
        fprintf(stderr, "cannot load %s\n", LORVANE_FUZZ_BUNDLE_PATH);
        exit(2);
    }
    openStore();
    countRaisedExceptions();

    // Never released: the plug-in's provider lives as long as Mail does.
    LorvaneBundle_Provider *provider = [NSClassFromString(@"LorvaneBundle_Provider") alloc];
    [provider setValue:[NSMutableArray array] forKey:@"_recentMailboxes"];
    [provider setValue:[NSNumber numberWithInt:limit] forKey:@"_maxMailboxes"];
    LVFuzzForget();
    return provider;
}

// An uncaught exception would open GNUstep's modal panel and hang a run nobody watches.
static void failOnUncaughtException(NSException *exception)
{
    fprintf(stderr, "Uncaught exception %s: %s\n", [[exception name] UTF8String], [[exception reason] UTF8String]);
    abort();
}

LorvaneBundle_Provider *LVFuzzStartMailApplication(int limit)
{
    prepareProcess();
    NSSetUncaughtExceptionHandler(failOnUncaughtException);
    MHSetRecordsAlerts(YES);
    [MailApp sharedMailApp];
    // Mail's own instance of the plug-in, made as the bundle loads, needs a usable limit.
    MHSetRecentItemsLimit(1);
    MHPrepareMailClassesForPlugins();
    if (MHLoadMailBundle(@LORVANE_FUZZ_BUNDLE_PATH) == nil) {
        fprintf(stderr, "cannot load %s\n", LORVANE_FUZZ_BUNDLE_PATH);
        exit(2);
    }
    NSMenu *mainMenu = [MHMailMenus newMainMenu];
    [NSApp setMainMenu:mainMenu];
    [mainMenu release];
    MHSetRecentItemsLimit(limit);
    [[NSFileManager defaultManager] removeItemAtPath:preferencesFile error:NULL];
    // Never released: the plug-in's provider lives as long as Mail does.
    LorvaneBundle_Provider *provider = [[NSClassFromString(@"LorvaneBundle_Provider") alloc] init];
    LVFuzzForget();
    MHClearRecordedAlerts();
    return provider;
}

NSString *LVFuzzTemporaryFolder(NSString *name)
{
    NSString *path = [[NSString stringWithUTF8String:temporaryRoot] stringByAppendingPathComponent:name];
    [[NSFileManager defaultManager] createDirectoryAtPath:path withIntermediateDirectories:YES attributes:nil error:NULL];
    return path;
}

static void writeFile(NSString *path, const uint8_t *bytes, size_t length)
{
    FILE *file = fopen([path fileSystemRepresentation], "wb");
    if (file == NULL || fwrite(bytes, 1, length, file) != length || fclose(file) != 0)
        LVFuzzFail("cannot write the file to read");
}

void LVFuzzWritePreferencesFile(const uint8_t *bytes, size_t length)
{
    writeFile(preferencesFile, bytes, length);
}

void LVFuzzWriteRecentItemsFile(const uint8_t *bytes, size_t length)
{
    writeFile(recentItemsFile, bytes, length);
}

BOOL LVFuzzReaderAdmits(const uint8_t *bytes, size_t length)
{
    NSData *data = [NSData dataWithBytesNoCopy:(void *)bytes length:length freeWhenDone:NO];
    return [NSClassFromString(@"LVPropertyListReader") admitsData:data];
}

NSArray *LVFuzzLoggedLines(void)
{
    return loggedLines;
}

NSUInteger LVFuzzExceptionsRaised(void)
{
    return exceptionsRaised;
}

void LVFuzzForget(void)
{
    [loggedLines removeAllObjects];
    exceptionsRaised = 0;
}

NSArray *LVFuzzMailboxes(void)
{
    return mailboxes;
}

void LVFuzzFail(const char *what)
{
    fprintf(stderr, "Lorvane mishandled this input: %s\n", what);
    if (exceptionsRaised != 0)
        fprintf(stderr, "  last exception: %s\n", [lastException UTF8String]);
    for (NSString *line in loggedLines)
        fprintf(stderr, "  logged: %s\n", [line UTF8String]);
    abort();
}
