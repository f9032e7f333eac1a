#import "FuzzMail.h"
#import "MailAccount.h"
#import "MHMailSession.h"
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
static MHMailSession *session;            // never released: Mail lives as long as the process
// In memory where the machine offers it: on a disk, rewriting the same small file costs
// milliseconds (the file system flushes a file truncated and written again), more than an input.
static char temporaryRoot[] = "/dev/shm/lorvane-fuzz-XXXXXX";
static NSString *preferencesFile;  // the two files the targets write, named once
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

// Two accounts share the name "Home", so "Home/Work" names two mailboxes, as it can in Mail;
// the IMAP account's prefix gives its paths the form the plug-in shortens.
static void openStore(MHMailSession *mail)
{
    [mail addAccountInMemoryNamed:@"Home" type:@"POP" serverPathPrefix:nil mailboxes:@[ @"Inbox", @"Sent", @"Work", @"Projects", @"Projects/Old" ]];
    [mail addAccountInMemoryNamed:@"Home" type:@"IMAP" serverPathPrefix:nil mailboxes:@[ @"Work", @"Receipts" ]];
    [mail addAccountInMemoryNamed:@"Office" type:@"IMAP" serverPathPrefix:@"INBOX" mailboxes:@[ @"INBOX", @"INBOX/Work", @"INBOX/Archive", @"INBOX/Archive/2023" ]];
    NSMutableArray *all = [NSMutableArray array];
    for (MailAccount *account in [MailAccount activeAccounts])
        [all addObjectsFromArray:[account allMailboxUids]];
    mailboxes = [all copy];
}

LorvaneBundle_Provider *LVFuzzStartMail(int limit)
{
    processPool = [[NSAutoreleasePool alloc] init];
    loggedLines = [[NSMutableArray alloc] init];
    _NSLog_printf_handler = collectLogLine;
    if (mkdtemp(temporaryRoot) == NULL) {
        strcpy(temporaryRoot, "/tmp/lorvane-fuzz-XXXXXX");
        if (mkdtemp(temporaryRoot) == NULL) {
            perror("mkdtemp");
            exit(2);
        }
    }
    session = [[MHMailSession alloc] initWithPrivateFolder:[NSString stringWithUTF8String:temporaryRoot]];
    atexit(removeTemporaryRoot);
    preferencesFile = [[session writePreferencesFileNamed:@"org.lorvane.mailbundle.plist" contents:nil] retain];
    recentItemsFile = [MHRecentItemsFilePath() retain];
    [session setRecentItemsLimit:limit];
    openStore(session);
    [session addBundlePath:@LORVANE_FUZZ_BUNDLE_PATH];
    // Never released: the plug-in's provider lives as long as Mail.
    LorvaneBundle_Provider *provider = [session start] ? [session provider] : nil;
    if (provider == nil) {
        fprintf(stderr, "cannot start the plug-in from %s\n", LORVANE_FUZZ_BUNDLE_PATH);
        exit(2);
    }
    countRaisedExceptions();
    LVFuzzForget();
    return provider;
}

LorvaneBundle_Provider *LVFuzzStartPluginAgain(int limit)
{
    [session setRecentItemsLimit:limit];
    LorvaneBundle_Provider *provider = [session startPluginAgain];
    if (provider == nil)
        LVFuzzFail("the plug-in did not start again");
    return provider;
}

NSString *LVFuzzPreferencesFilePath(void)
{
    return preferencesFile;
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

// The list's length is no method of the provider's: records are read until the index raises.
NSArray *LVFuzzListedRecords(LorvaneBundle_Provider *provider, int most)
{
    NSMutableArray *records = [NSMutableArray array];
    @try {
        for (int index = 0; index < most; index++)
            [records addObject:[provider getRecentMailboxAtIndex:index]];
    } @catch (NSException *exception) {
    }
    return records;
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
