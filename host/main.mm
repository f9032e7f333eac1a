/*
 * MailHost: the stand-in Mail. It starts as Mail does (store, plug-ins, then the viewer
 * window) and then either waits for a person or plays a scenario and exits.
 */
#import "MailApp.h"
#import "MHAlertRecorder.h"
#import "MHLaunchOptions.h"
#import "MHMailSession.h"
#import "MHScenario.h"
#import "MHSystemVersion.h"

#include <cstdlib>
#include <cstring>
#include <unistd.h>

// GNUstep would open a modal panel for an uncaught exception and hang a run nobody watches.
static void exitOnUncaughtException(NSException *exception)
{
    NSLog(@"MailHost: uncaught exception %@: %@", [exception name], [exception reason]);
    _exit(3);
}

static char temporaryStoreFolder[4096];

// Mail quits through exit(): the copy of the store goes with the process.
static void removeTemporaryStore(void)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    [[NSFileManager defaultManager] removeItemAtPath:[NSString stringWithUTF8String:temporaryStoreFolder] error:NULL];
    [pool release];
}

static MHMailStore *openStore(MHMailSession *session, MHLaunchOptions *options)
{
    if (![options copiesStore])
        return [session openStoreAtPath:[options storePath]];
    NSString *folder = [NSTemporaryDirectory() stringByAppendingPathComponent:[NSString stringWithFormat:@"MailHost-%d", getpid()]];
    strncpy(temporaryStoreFolder, [folder fileSystemRepresentation], sizeof temporaryStoreFolder - 1);
    atexit(removeTemporaryStore);
    return [session openCopyOfStoreAtPath:[options storePath] toPath:[folder stringByAppendingPathComponent:@"store"]];
}

static MHScenario *scenarioFor(MHLaunchOptions *options, MHMailSession *session)
{
    MHScenario *scenario = [[[MHScenario alloc] initWithApplication:[session application] store:[session store]] autorelease];
    [scenario setEchoesOutput:YES];
    [scenario setExitsOnQuit:YES];
    [scenario setScreenshotFolder:[options screenshotFolder]];
    return scenario;
}

int main(int argc, const char **argv)
{
    (void)argc;
    (void)argv;
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    NSSetUncaughtExceptionHandler(exitOnUncaughtException);
    NSString *problem = nil;
    MHLaunchOptions *options = [MHLaunchOptions optionsWithArguments:[[NSProcessInfo processInfo] arguments] error:&problem];
    if (options == nil) {
        fprintf(stderr, "MailHost: %s\n%s\n", [problem UTF8String], [[MHLaunchOptions usage] UTF8String]);
        return 2;
    }
    if ([options systemVersion] != 0)
        MHSetSystemVersion([options systemVersion]);
    // Nobody is at the screen to dismiss an alert during a scenario.
    MHSetRecordsAlerts([options scenarioPath] != nil);

    // Mail in the user's own Library; a bundle that does not load is logged and skipped.
    MHMailSession *session = [[[MHMailSession alloc] init] autorelease];
    if (![session launchApplication] || openStore(session, options) == nil)
        return 1;
    for (NSString *path in [options bundlePaths])
        [session addBundlePath:path];
    [session prepareForPlugins];
    [session loadPlugins];
    [session openMessageViewer];
    if ([options scenarioPath] != nil)
        [scenarioFor(options, session) performSelector:@selector(runScriptFileThenExit:) withObject:[options scenarioPath] afterDelay:0.0];
    [[session application] run];
    [pool release];
    return 0;
}
