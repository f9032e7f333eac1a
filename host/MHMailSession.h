/*
 * Mail with its plug-ins, started the one way tests, benchmarks, fuzzers, MailHost and the demo
 * start it: a user's Library (a private one, or the user's own), a store whose accounts Mail
 * uses, the application with its menus, then the plug-ins loaded as Mail loads them.
 *
 *   MHMailSession *mail = [[MHMailSession alloc] initWithPrivateFolder:@"/tmp/run"];
 *   [mail setRecentItemsLimit:10];
 *   [mail writePreferencesFileNamed:@"org.example.plist" contents:plistOrData];
 *   [mail openGeneratedStoreOfMailboxes:1000 accounts:5 sharedNames:YES];
 *   [mail addBundlePath:@"/abs/path/Plugin.mailbundle"];
 *   [mail start];                       // the plug-in's -init runs here
 *   [mail openMessageViewer];
 *   ... act through [mail application], [mail viewer], [mail provider] ...
 *   [mail relaunch];                    // quit (the plug-in writes its file), start again
 *
 * A process holds one session: GNUstep finds the user's folders once per process. The Library's
 * files are written when set; the store may be opened before or after -start, and its accounts
 * become the ones Mail uses. Nothing here knows a plug-in's own files or keys: callers name them.
 */
#import <Foundation/Foundation.h>

@class MailAccount, MailApp, MessageViewer, MHMailStore;

@interface MHMailSession : NSObject
{
    NSString *_folder;          // the private folder, or nil for the user's own Library
    NSMutableArray *_bundlePaths; // loaded after the installed bundles
    NSBundle *_bundle;          // the first of them once loaded
    MHMailStore *_store;        // the store on disk last opened; nil when none or in memory
    MailApp *_application;      // not retained: it lives as long as the process
}

/* Mail in the user's own Library, as a person runs it. */
- (id)init;
/* Mail in a Library of its own under `folder` (made if missing), for a run nobody watches:
   the process's Library, defaults and home point there, a configuration file there names them
   for Mail processes started from this one, and alerts are recorded instead of shown. */
- (id)initWithPrivateFolder:(NSString *)folder;

/* The user's Library folder, and the folder Mail's users keep preferences in. */
- (NSString *)libraryFolder;
- (NSString *)preferencesFolder;
/* A new empty folder of that name in the private folder (or the temporary folder). */
- (NSString *)makeFolderNamed:(NSString *)name;

/* ---- The Library's files, written at once ---- */

/* The system's "Number of Recent Items". */
- (BOOL)setRecentItemsLimit:(int)limit;
/* A file in the Preferences folder: NSData as it is, any other property list as XML; nil removes
   the file. Answers its path. */
- (NSString *)writePreferencesFileNamed:(NSString *)name contents:(id)contents;

/* ---- The store: its accounts become the ones Mail uses ---- */

- (MHMailStore *)openStoreAtPath:(NSString *)path;
/* A copy of the store (such as samples/store) in `destination`, a new or empty folder. */
- (MHMailStore *)openCopyOfStoreAtPath:(NSString *)source toPath:(NSString *)destination;
/* About `count` mailboxes held in memory, "Archive/Box n" under an "Archive" parent in each of
   `accounts` accounts. With shared names every account holds the same boxes, so each name is
   in every account; without, each name is its own. Answers the boxes (parents left out), each
   next to one of another account; made anew on each call. */
- (NSArray *)openGeneratedStoreOfMailboxes:(int)count accounts:(int)accounts sharedNames:(BOOL)sharedNames;
/* An account held in memory with these mailboxes, used beside the others. type is "POP" or
   "IMAP" (nil: POP); the prefix is an IMAP account's server path prefix, or nil. */
- (MailAccount *)addAccountInMemoryNamed:(NSString *)name type:(NSString *)type serverPathPrefix:(NSString *)prefix mailboxes:(NSArray *)relativePaths;
- (MHMailStore *)store;

/* ---- Starting ---- */

/* A bundle (absolute path) to load after those installed in the Library. */
- (void)addBundlePath:(NSString *)path;
/* Mail's start up to its first window: the application with Mail's main menu, Mail's classes
   messaged, then each installed bundle and the given one loaded, Mail making one instance of
   each plug-in class. NO when Mail could not start or a given bundle did not load. */
- (BOOL)start;
/* -start's steps, for a caller that times them apart. */
- (BOOL)launchApplication;
- (void)prepareForPlugins;
- (BOOL)loadPlugins;
/* A new viewer window, in front. */
- (MessageViewer *)openMessageViewer;

/* ---- What a started Mail holds ---- */

- (MailApp *)application;
/* The front viewer window, or nil. */
- (MessageViewer *)viewer;
/* The first given bundle once loaded, and the object its principal class names active: the
   one Mail's events reach (nil before loading or when the plug-in did not start). */
- (NSBundle *)bundle;
- (id)provider;

/* ---- Starting again ---- */

/* Mail started again without a new process: a fresh main menu, ready to quit again, then a
   new instance of the bundle's principal class, which reads the Library's files as they stand
   now. Answers that instance; it lives as long as the process, as Mail's plug-in does. */
- (id)startPluginAgain;
/* -startPluginAgain's last step alone, for a caller that times it apart after
   -[MailApp prepareToLaunchAgain]: a new instance of the bundle's principal class. */
- (id)newPluginInstance;
/* Quits as Mail does (applicationWillTerminate: runs once, so the plug-in writes its files),
   then starts the plug-in again on the same Library and store. Answers the new instance. */
- (id)relaunch;

@end
