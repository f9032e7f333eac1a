#import "MHBundleLoader.h"
#import "MHUserLibrary.h"
#import "MVMailBundle.h"

#include <objc/runtime.h>

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
    NSArray *classes = [MVMailBundle registeredBundleClasses];
    for (NSUInteger i = alreadyRegistered; i < [classes count]; i++) {
        id instance = [[[classes objectAtIndex:i] alloc] init];
        MHKeepMailBundleInstance(instance);
        [instance release];
    }
    return bundle;
}

NSArray *MHInstalledMailBundlePaths(void)
{
    NSString *folder = [MHUserLibraryFolder() stringByAppendingPathComponent:@"Mail/Bundles"];
    NSMutableArray *paths = [NSMutableArray array];
    for (NSString *name in [[[NSFileManager defaultManager] contentsOfDirectoryAtPath:folder error:NULL] sortedArrayUsingSelector:@selector(compare:)]) {
        if ([[name pathExtension] isEqualToString:@"mailbundle"])
            [paths addObject:[folder stringByAppendingPathComponent:name]];
    }
    return paths;
}
