/*
 * Mail's application object. [MailApp sharedMailApp] makes NSApp a MailApp with Mail's
 * main menu, ready for plug-ins to be loaded into it; the host and tests build the rest
 * of Mail around it in the same order Mail starts: store, plug-ins, then viewer windows.
 */
#import <AppKit/AppKit.h>

@class MailboxesController, MailboxUid, MessageViewer;

@interface MailApp : NSApplication
{
    MailboxesController *_mailboxesController;
    NSMutableArray *_messageViewers;    // open viewers, the one most recently main last
    BOOL _terminationAnnounced;
}

/* Makes NSApp a MailApp (once) and gives it Mail's main menu. nil, with a log line, when
   NSApp was already made of another class. */
+ (MailApp *)sharedMailApp;

- (MailboxesController *)mailboxesController;

/* Mail's own handler for the application's termination notification; it saves nothing
   itself but plug-ins hook it. */
- (void)applicationWillTerminate:(NSNotification *)notification;
/* Posts the termination notification, so applicationWillTerminate: runs as it would on
   quitting, without ending the process. Only the first call posts. */
- (void)announceTermination;

/* Every installed *.mailbundle, then each extra path, loaded as Mail loads plug-ins.
   Answers the bundles that loaded. */
- (NSArray *)loadMailBundlesWithExtraPaths:(NSArray *)extraPaths;
/* One bundle (absolute path) loaded as Mail loads plug-ins; nil, with a log line, when it
   does not load. */
- (NSBundle *)loadMailBundleAtPath:(NSString *)path;
/* Mail launched again in the same process: a fresh main menu, and a quit yet to come. */
- (void)prepareToLaunchAgain;
/* Finishes launching if needed and opens a new viewer window, in front. */
- (MessageViewer *)openMessageViewer;
- (NSArray *)messageViewers;
/* The viewer whose window was main most recently; nil when none is open. */
- (MessageViewer *)frontmostMessageViewer;
- (void)messageViewerDidBecomeMain:(MessageViewer *)viewer;
/* Forgets a viewer whose window closed. */
- (void)messageViewerDidClose:(MessageViewer *)viewer;

/* Mailboxes or accounts changed: the "Go To" menu and every viewer show them anew. */
- (void)mailboxesDidChange;

/* Mail's own mailbox and account changes, with the notices Mail gives afterwards:
   a rename posts MHMailboxWasRenamedNotification; a deletion goes through the account's
   deleteMailbox:reflectToServer:; new active accounts reach AccountPreferences'
   accountsDidChange:. Each answers whether the change happened. */
- (BOOL)renameMailbox:(MailboxUid *)mailbox toName:(NSString *)name;
- (BOOL)deleteMailbox:(MailboxUid *)mailbox;
- (void)setActiveAccounts:(NSArray *)accounts;

/* File > New Viewer Window. */
- (void)newViewerWindow:(id)sender;
/* Window > Message Viewer: the frontmost viewer comes forward, or a new one opens. */
- (void)showMessageViewer:(id)sender;

@end
