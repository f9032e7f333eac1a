/*
 * Mail as a user runs it, with the plug-in inside: MailApp with Mail's menus, a copy of
 * the sample store, the built bundle loaded the way Mail loads plug-ins, and viewer
 * windows. Tests of the hooks and of the recent-menu actions act through it, so they
 * reach the plug-in only through Mail's own classes, menus and responder chain.
 *
 * The plug-in's object is Mail's own instance of LorvaneBundle, made at run time with
 * the provider's fields spread further apart: observe it through its methods only.
 */
#import "LVTestSupport.h"
#import "MHAlertRecorder.h"
#import "MailApp.h"
#import "IMAPAccount.h"
#import "MHMailStore.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "MessageViewer.h"
#import "TableViewManager.h"
#import "LorvaneBundle_Provider.h"

/* Starts Mail once per process, in Mail's order: application, store, plug-in. Alerts are
   recorded from the start and never shown. Answers the plug-in's object, or nil. */
LorvaneBundle_Provider *LVStartMailWithSampleStore(void);
MHMailStore *LVSampleStore(void);
/* "Account/Mailbox" of the sample store's copy; fails the test when it is missing. */
MailboxUid *LVSampleMailbox(NSString *accountAndPath);

/* Shows the mailbox in the viewer and selects its first messages; answers their paths. */
NSArray *LVSelectFirstMessages(MessageViewer *viewer, MailboxUid *mailbox, NSUInteger count);
/* Names of the message files in the mailbox, sorted. */
NSArray *LVMessageFileNames(MailboxUid *mailbox);
/* Copies one message into each mailbox, in order, through the viewer, as a user would:
   each becomes a recent mailbox. */
void LVUseMailboxes(MessageViewer *viewer, MailboxUid *source, NSArray *destinations);

/* Chooses the item at the index as a click would: its action goes up the responder chain. */
void LVChooseItem(NSMenu *menu, NSInteger index);
/* Names of the listed mailboxes in list order, and their access counts. */
NSArray *LVListedMailboxNames(LorvaneBundle_Provider *provider);
NSArray *LVListedAccessCounts(LorvaneBundle_Provider *provider);
