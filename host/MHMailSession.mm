#import "MHMailSession.h"
#import "IMAPAccount.h"
#import "MHAlertRecorder.h"
#import "MHBundleLoader.h"
#import "MHMailStore.h"
#import "MHPrivateFolders.h"
#import "MHUserLibrary.h"
#import "MailApp.h"
#import "MailAccount.h"

#include <cstdlib>
#include <vector>

@implementation MHMailSession

- (id)init
{
    if (nil == (self = [super init]))
        return nil;
    _bundlePaths = [[NSMutableArray alloc] init];
    return self;
}

- (id)initWithPrivateFolder:(NSString *)folder
{
    if (nil == (self = [self init]))
        return nil;
    _folder = [folder copy];
    NSString *library = MHUsePrivateUserFolders(_folder);
    [self nameFoldersForChildProcessesWithLibrary:library];
    MHSetRecordsAlerts(YES);
    return self;
}

- (void)dealloc
{
    [_folder release];
    [_bundlePaths release];
    [_bundle release];
    [_store release];
    [super dealloc];
}

// GNUstep reads its configuration only as a process starts: a Mail started from this process
// finds the same Library through the file GNUSTEP_CONFIG_FILE names.
- (void)nameFoldersForChildProcessesWithLibrary:(NSString *)library
{
    NSString *system = [NSString stringWithContentsOfFile:@"/etc/GNUstep/GNUstep.conf" encoding:NSUTF8StringEncoding error:NULL];
    NSString *conf = [NSString stringWithFormat:@"%@\nGNUSTEP_USER_DIR_LIBRARY=%@\nGNUSTEP_USER_DEFAULTS_DIR=%@\n", system ?: @"", library,
                                                [_folder stringByAppendingPathComponent:@"Defaults"]];
    NSString *path = [_folder stringByAppendingPathComponent:@"GNUstep.conf"];
    [conf writeToFile:path atomically:YES encoding:NSUTF8StringEncoding error:NULL];
    setenv("GNUSTEP_CONFIG_FILE", [path fileSystemRepresentation], 1);
}

#pragma mark The Library

- (NSString *)libraryFolder
{
    return MHUserLibraryFolder();
}

- (NSString *)preferencesFolder
{
    return [MHUserLibraryFolder() stringByAppendingPathComponent:@"Preferences"];
}

- (NSString *)makeFolderNamed:(NSString *)name
{
    NSString *path = [_folder ?: NSTemporaryDirectory() stringByAppendingPathComponent:name];
    [[NSFileManager defaultManager] removeItemAtPath:path error:NULL];
    [[NSFileManager defaultManager] createDirectoryAtPath:path withIntermediateDirectories:YES attributes:nil error:NULL];
    return path;
}

- (BOOL)setRecentItemsLimit:(int)limit
{
    return MHSetRecentItemsLimit(limit);
}

- (NSString *)writePreferencesFileNamed:(NSString *)name contents:(id)contents
{
    NSString *path = [[self preferencesFolder] stringByAppendingPathComponent:name];
    if ([contents isKindOfClass:[NSData class]])
        [(NSData *)contents writeToFile:path atomically:YES];
    else if (contents != nil)
        MHWritePropertyList(contents, path, NO);
    else
        [[NSFileManager defaultManager] removeItemAtPath:path error:NULL];
    return path;
}

#pragma mark The store

- (MHMailStore *)useStore:(MHMailStore *)store
{
    if (store != _store) {
        [_store release];
        _store = [store retain];
    }
    [MailAccount setActiveAccounts:[store accounts]];
    return store;
}

- (MHMailStore *)openStoreAtPath:(NSString *)path
{
    MHMailStore *store = [MHMailStore storeAtPath:path];
    return store != nil ? [self useStore:store] : nil;
}

- (MHMailStore *)openCopyOfStoreAtPath:(NSString *)source toPath:(NSString *)destination
{
    MHMailStore *store = [MHMailStore copyOfStoreAtPath:source toPath:destination];
    return store != nil ? [self useStore:store] : nil;
}

- (NSArray *)openGeneratedStoreOfMailboxes:(int)count accounts:(int)accountCount sharedNames:(BOOL)sharedNames
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    int perAccount = count / accountCount - 1; // less the "Archive" parent
    NSMutableArray *accounts = [NSMutableArray array];
    std::vector<NSArray *> byAccount;
    for (int a = 0; a < accountCount; a++) {
        NSString *name = [NSString stringWithFormat:@"Account %d (%d%s)", a + 1, count, sharedNames ? "" : " plain"];
        MailAccount *account = [[[MailAccount alloc] initWithDisplayName:name path:nil] autorelease];
        NSMutableArray *boxes = [NSMutableArray arrayWithCapacity:(NSUInteger)perAccount];
        for (int n = 0; n < perAccount; n++) {
            NSString *path = sharedNames ? [NSString stringWithFormat:@"Archive/Box %05d", n] : [NSString stringWithFormat:@"Archive/Box %05d-%d", n, a];
            [boxes addObject:[account createMailboxWithRelativePath:path]];
        }
        [accounts addObject:account];
        byAccount.push_back(boxes);
    }
    NSMutableArray *interleaved = [[NSMutableArray alloc] initWithCapacity:(NSUInteger)(perAccount * accountCount)];
    for (int n = 0; n < perAccount; n++)
        for (NSArray *boxes : byAccount)
            [interleaved addObject:[boxes objectAtIndex:(NSUInteger)n]];
    // Mail's accounts put their mailboxes in order when first asked.
    for (MailAccount *account in accounts)
        [account allMailboxUids];
    [MailAccount setActiveAccounts:accounts];
    [_store release];
    _store = nil;
    [pool release];
    return [interleaved autorelease];
}

- (MailAccount *)addAccountInMemoryNamed:(NSString *)name type:(NSString *)type serverPathPrefix:(NSString *)prefix mailboxes:(NSArray *)relativePaths
{
    BOOL imap = [type isEqualToString:@"IMAP"];
    MailAccount *account = [[[(imap ? [IMAPAccount class] : [MailAccount class]) alloc] initWithDisplayName:name path:nil] autorelease];
    for (NSString *path in relativePaths)
        [account createMailboxWithRelativePath:path];
    if (imap && prefix != nil)
        [(IMAPAccount *)account setServerPathPrefix:prefix];
    [MailAccount setActiveAccounts:[[MailAccount activeAccounts] arrayByAddingObject:account]];
    return account;
}

- (MHMailStore *)store
{
    return _store;
}

#pragma mark Starting

- (void)addBundlePath:(NSString *)path
{
    [_bundlePaths addObject:path];
}

- (BOOL)launchApplication
{
    _application = [MailApp sharedMailApp];
    return _application != nil;
}

- (void)prepareForPlugins
{
    MHPrepareMailClassesForPlugins();
}

- (BOOL)loadPlugins
{
    [_application loadMailBundlesWithExtraPaths:@[]];
    BOOL allLoaded = YES;
    for (NSString *path in _bundlePaths) {
        NSBundle *bundle = [_application loadMailBundleAtPath:path];
        allLoaded = allLoaded && bundle != nil;
        if (_bundle == nil)
            _bundle = [bundle retain];
    }
    return allLoaded;
}

- (BOOL)start
{
    if (![self launchApplication])
        return NO;
    [self prepareForPlugins];
    return [self loadPlugins];
}

- (MessageViewer *)openMessageViewer
{
    return [_application openMessageViewer];
}

#pragma mark A started Mail

- (MailApp *)application
{
    return _application;
}

- (MessageViewer *)viewer
{
    return [_application frontmostMessageViewer];
}

- (NSBundle *)bundle
{
    return _bundle;
}

// The plug-in's principal class keeps the instance Mail's events reach; asked by name, as
// Mail asks a plug-in for anything.
- (id)provider
{
    Class principal = [_bundle principalClass];
    SEL active = NSSelectorFromString(@"activeLorvaneBundle_Provider");
    return [principal respondsToSelector:active] ? [principal performSelector:active] : nil;
}

#pragma mark Starting again

- (id)startPluginAgain
{
    [_application prepareToLaunchAgain];
    return [self newPluginInstance];
}

- (id)newPluginInstance
{
    // Never released: the plug-in's object lives as long as Mail.
    return [[[_bundle principalClass] alloc] init];
}

- (id)relaunch
{
    [_application announceTermination];
    return [self startPluginAgain];
}

@end
