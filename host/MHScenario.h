/*
 * Drives the stand-in Mail the way a person would, one step at a time, and says what
 * happened in one readable line (or a few) per step.
 *
 * Steps are the lines of MHScenarioStep (which lists their syntax); -runStep: parses a
 * line and carries it out. The same actions are methods here, for tests that drive Mail
 * in-process. Every action goes through Mail's own path: menu items are performed
 * through their menus (so actions travel the responder chain as a click's would), a
 * transfer through Message > Move To… with the chooser answered beforehand, a deletion
 * through the account, account changes through AccountPreferences.
 */
#import <AppKit/AppKit.h>

@class MailApp, MailboxUid, MHMailStore, MHScenarioStep;

/* Keys of an item as -itemsOfMenuTitled:contextual: describes it. */
extern NSString *const MHMenuItemTitleKey;      // NSString
extern NSString *const MHMenuItemEnabledKey;    // NSNumber BOOL
extern NSString *const MHMenuItemToolTipKey;    // NSString, absent when none
extern NSString *const MHMenuItemSeparatorKey;  // NSNumber BOOL

@interface MHScenario : NSObject
{
    MailApp *_application;      // not retained: it lives as long as the process
    MHMailStore *_store;
    NSString *_screenshotFolder;
    NSMutableArray *_output;    // every line said so far
    NSString *_lastError;
    NSUInteger _alertsReported; // recorded alerts already said
    BOOL _echoesOutput;         // also print each line on standard output
    BOOL _exitsOnQuit;          // "quit" ends the process, as Mail's Quit does
    BOOL _hasQuit;
}

- (id)initWithApplication:(MailApp *)application store:(MHMailStore *)store;

/* Prints every line on standard output as it is said (MailHost's scenario mode). */
- (void)setEchoesOutput:(BOOL)echoes;
/* "quit" terminates the application (and the process) instead of only announcing it. */
- (void)setExitsOnQuit:(BOOL)exits;
/* Where "screenshot NAME" saves NAME.png; without one, screenshots fail. */
- (void)setScreenshotFolder:(NSString *)folder;

/* Parses and runs one line; a comment does nothing and succeeds. NO when the line does
   not parse or the step fails; -lastError then says why. */
- (BOOL)runStep:(NSString *)line;
- (BOOL)runParsedStep:(MHScenarioStep *)step;
/* Runs every line, stopping at the first that fails (after quit nothing more runs). */
- (BOOL)runScript:(NSString *)text;

/* MailHost's scenario mode: runs the file's steps, then ends the process with status 0
   when every step succeeded and 1 otherwise ("quit" ends it as Mail's Quit does). */
- (void)runScriptFileThenExit:(NSString *)path;

- (NSString *)lastError;
/* Every line said so far, oldest first. */
- (NSArray *)output;
- (BOOL)hasQuit;

/* "Account/Path" of an active account's mailbox, or nil. */
- (MailboxUid *)mailboxAtPath:(NSString *)path;
/* "Account/Path" of the mailbox. */
- (NSString *)pathOfMailbox:(MailboxUid *)mailbox;

/* The actions behind the steps; each answers NO with -lastError set when it fails. */
- (BOOL)selectMailboxAtPath:(NSString *)path;
/* nil selects every message; an empty set selects none. */
- (BOOL)selectMessagesAtIndexes:(NSIndexSet *)indexes;
- (BOOL)transferSelectedMessagesToMailboxAtPath:(NSString *)path deleteOriginals:(BOOL)deleteOriginals contextual:(BOOL)contextual;
/* Opens the submenu titled so (as a click would, so its delegate updates it) and
   describes its items; nil when there is no such submenu. */
- (NSArray *)itemsOfMenuTitled:(NSString *)title contextual:(BOOL)contextual;
/* The submenu titled so in the menu bar's tree or the contextual menu's; nil if none. */
- (NSMenu *)menuTitled:(NSString *)title contextual:(BOOL)contextual;
- (BOOL)chooseItemAtIndex:(NSInteger)index ofMenuTitled:(NSString *)title contextual:(BOOL)contextual;
- (BOOL)chooseItemTitled:(NSString *)itemTitle ofMenuTitled:(NSString *)title contextual:(BOOL)contextual;
- (BOOL)renameMailboxAtPath:(NSString *)path toName:(NSString *)name;
- (BOOL)deleteMailboxAtPath:(NSString *)path;
- (BOOL)removeAccountNamed:(NSString *)name;
/* Makes the store's account of that name active again, or makes a new one of the type. */
- (BOOL)addAccountNamed:(NSString *)name type:(NSString *)type;
/* File names of the mailbox's messages, in order; nil when there is no such mailbox. */
- (NSArray *)messageFileNamesInMailboxAtPath:(NSString *)path;
- (BOOL)openNewViewer;
- (BOOL)saveScreenshotNamed:(NSString *)name showingMenuTitled:(NSString *)title contextual:(BOOL)contextual;
/* Quits as Mail does: applicationWillTerminate: runs once. */
- (BOOL)quit;

@end
