#import "PluginHost.h"

#include <objc/runtime.h>

static int systemVersion = 0x10C6;
static OSErr gestaltStatus = 0;

extern "C" __attribute__((visibility("default"))) OSErr Gestalt(OSType selector, int *response)
{
    if (selector != gestaltSystemVersion)
        return -5551; // gestaltUndefSelectorErr
    if (gestaltStatus != 0)
        return gestaltStatus;
    *response = systemVersion;
    return 0;
}

void MHSetSystemVersion(int version)
{
    systemVersion = version;
}

void MHSetGestaltStatus(OSErr status)
{
    gestaltStatus = status;
}

static NSMutableArray *registeredClasses;
static NSMutableArray *instances;

@implementation MVMailBundle

+ (void)registerBundle
{
    if (registeredClasses == nil)
        registeredClasses = [[NSMutableArray alloc] init];
    if (![registeredClasses containsObject:self])
        [registeredClasses addObject:self];
}

+ (NSArray *)registeredBundleClasses
{
    return registeredClasses != nil ? registeredClasses : @[];
}

+ (NSArray *)bundleInstances
{
    return instances != nil ? instances : @[];
}

@end

void MHPrepareMailClassesForPlugins(void)
{
    static const char *const mailClasses[] = {
        "MVMailBundle",
        "MailboxUid",
        "MailAccount",
        "IMAPAccount",
        "MailboxesController",
        "MessageViewer",
        "MessageTransfer",
        "MailApp",
        "AccountPreferences",
        "TableViewManager",
        "NSToolbar",
        "NSMenu",
        "NSMenuItem",
    };
    for (const char *name : mailClasses)
        [objc_getClass(name) class];
}

// Mail makes one instance of each plug-in class that registered while its bundle loaded.
NSBundle *MHLoadMailBundle(NSString *path)
{
    NSBundle *bundle = [NSBundle bundleWithPath:path];
    if (bundle == nil)
        return nil;
    NSUInteger alreadyRegistered = [[MVMailBundle registeredBundleClasses] count];
    if (![bundle load])
        return nil;
    if (instances == nil)
        instances = [[NSMutableArray alloc] init];
    NSArray *classes = [MVMailBundle registeredBundleClasses];
    for (NSUInteger i = alreadyRegistered; i < [classes count]; i++) {
        id instance = [[[classes objectAtIndex:i] alloc] init];
        if (instance != nil)
            [instances addObject:instance];
        [instance release];
    }
    return bundle;
}

NSArray *MHInstalledMailBundlePaths(void)
{
    NSString *library = [NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES) firstObject];
    NSString *folder = [library stringByAppendingPathComponent:@"Mail/Bundles"];
    NSMutableArray *paths = [NSMutableArray array];
    for (NSString *name in [[[NSFileManager defaultManager] contentsOfDirectoryAtPath:folder error:NULL] sortedArrayUsingSelector:@selector(compare:)]) {
        if ([[name pathExtension] isEqualToString:@"mailbundle"])
            [paths addObject:[folder stringByAppendingPathComponent:name]];
    }
    return paths;
}
