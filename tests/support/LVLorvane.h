/*
 * What the tests share: Mail as a user runs it with the plug-in inside, reached only the way
 * Mail reaches it (the loaded bundle, Mail's classes and menus, the responder chain), and the
 * files it reads and writes.
 *
 * Each test process has a private Library folder and collects what the plug-in logs. Mail
 * starts once per process (application, store, plug-in, in Mail's order); each test that needs
 * a provider of its own starts one as Mail does, with a fresh main menu, a recent-items limit
 * and a preferences file, and observes it through its methods.
 */
#import <AppKit/AppKit.h>
#import "LVDayComparison.h"
#import "LorvaneBundle_Provider.h"
#import "LorvaneMailbox.h"
#import "MHAlertRecorder.h"
#import "MHMailMenus.h"
#import "MHMailSession.h"
#import "MHUserLibrary.h"
#import "MailApp.h"
#import "IMAPAccount.h"
#import "MHMailStore.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "MailboxesController.h"
#import "MessageViewer.h"
#import "TableViewManager.h"

#include <gtest/gtest.h>

/* ---- The process ---- */

/* A fresh, empty folder under the process's temporary root. */
NSString *LVMakeTemporaryFolder(NSString *name);

/* Every line logged since the last LVClearLog(), oldest first, without GNUstep's header. */
NSArray *LVLoggedLines(void);
void LVClearLog(void);
NSUInteger LVLogCount(NSString *line);
NSUInteger LVLogCountWithPrefix(NSString *prefix);

/* The process's Mail: a private Library, the built bundle to load, the store in use. */
MHMailSession *LVMailSession(void);
/* Lorvane's preferences file in the private Library. */
extern NSString *const LVPreferencesFileName;
NSString *LVPreferencesFilePath(void);

/* Loads the built bundle once per process, as Mail loads plug-ins; YES when it loaded. */
BOOL LVLoadPluginBundle(void);
/* Where the bundle loaded from. */
NSString *LVPluginBundlePath(void);
/* A class of the loaded plug-in, by name: the bundle is never linked in. */
Class LVPluginClass(const char *name);

/* Mail running with the plug-in loaded, once per process; alerts are recorded, never shown.
   What loading logged and alerted is forgotten. */
MailApp *LVStartMail(void);
/* A copy of samples/store, made once per process; its accounts become Mail's active ones. */
MHMailStore *LVSampleStore(void);
/* "Account/Path/To/Mailbox" in the sample store's copy; fails the test when it is missing. */
MailboxUid *LVSampleMailbox(NSString *accountAndPath);
/* An empty store in a fresh folder; its accounts (none yet) become Mail's active ones. */
MHMailStore *LVMakeStore(NSString *name);
/* An account held in memory with these mailboxes, made active beside the others. */
MailAccount *LVMemoryAccount(NSString *name, NSArray *relativePaths);

/* Mail with the plug-in and a store of its own holding one POP account, "Home". */
class LVHomeStoreTest : public testing::Test {
protected:
    MHMailStore *store = nil;
    MailAccount *home = nil;

    void SetUp() override
    {
        LVStartMail();
        store = LVMakeStore(@"home");
        home = [store addAccountNamed:@"Home" type:@"POP" serverPathPrefix:nil];
        ASSERT_TRUE(home != nil);
    }

    MailboxUid *mailbox(NSString *relativePath) { return [home createMailboxWithRelativePath:relativePath]; }
};

/* ---- Lorvane started as Mail starts it ---- */

/* A fresh main menu, the limit, the preferences file (a property list written as XML, the
   file's bytes as NSData, none when nil), then the provider. */
LorvaneBundle_Provider *LVStartProvider(int limit, id preferences);
/* Mail quits (the plug-in writes its file) and starts again on the same Library and store. */
LorvaneBundle_Provider *LVRelaunch(void);
/* A saved record of the preferences file; a nil date is left out. */
NSDictionary *LVSavedRecord(MailboxUid *mailbox, int accesses, NSString *date);
NSDictionary *LVPreferences(int sortType, BOOL excludeSpecialMailboxes, NSArray *savedRecords);

/* Mail's mailbox as the plug-in's interfaces type it. */
static inline id<LVMailboxUid> LVUid(MailboxUid *mailbox)
{
    return (id<LVMailboxUid>)mailbox;
}

/* Mail's names of the listed mailboxes and their counts, front first, as the provider's
   methods report them. */
NSArray *LVListedNames(LorvaneBundle_Provider *provider);
NSArray *LVListedCounts(LorvaneBundle_Provider *provider);

/* ---- Menus ---- */

/* Opens a submenu as AppKit does before showing it; chooses an item as a click does. */
void LVOpenRecentMenu(NSMenu *submenu);
void LVChooseItem(NSMenu *menu, NSInteger index);
/* The titles above the separator, top to bottom. */
NSArray *LVTitlesAboveSeparator(NSMenu *submenu);
/* After an opening of "Move to Recent" (one opening updates all five), each of the five shows
   the titles, then a separator and "Clear Menu", enabled exactly when there is something to
   clear. */
testing::AssertionResult LVSubmenusShow(LorvaneBundle_Provider *provider, NSArray *titles);
/* The item right after the first item, searched through submenus, whose action is the selector. */
NSMenuItem *LVItemAfterItemWithAction(NSMenu *menu, SEL action);
NSMenuItem *LVItemAfterItem(NSMenuItem *item);

/* Shows the mailbox in the viewer and selects its first messages; answers their paths. */
NSArray *LVSelectFirstMessages(MessageViewer *viewer, MailboxUid *mailbox, NSUInteger count);
/* Copies the first message of the source into each mailbox in turn through the viewer, as a
   user files mail: each becomes a recent mailbox. */
void LVUseMailboxes(MessageViewer *viewer, MailboxUid *source, NSArray *mailboxes);
/* Alerts recorded since the last clear with the start-up title. */
NSArray *LVRecordedStartupAlerts(void);

/* ---- Files ---- */

id LVReadPlist(NSString *path);
/* What Python's plistlib makes of the file, as JSON; nil when it cannot read it. */
id LVPythonReadPlist(NSString *path);

/* Everything written to the descriptor (standard output or error) between the two calls. */
void LVBeginCapturing(int descriptor);
NSString *LVEndCapturing(void);

/* YES when the call raises an Objective-C exception. */
template <class Call> bool LVRaises(Call call)
{
    @try {
        call();
    } @catch (NSException *exception) {
        return true;
    }
    return false;
}

/* Equality of Objective-C objects with readable failure output. */
#define EXPECT_NSEQ(expected, actual) EXPECT_STREQ([[(expected) description] UTF8String], [[(actual) description] UTF8String])
#define ASSERT_NSEQ(expected, actual) ASSERT_STREQ([[(expected) description] UTF8String], [[(actual) description] UTF8String])
#define EXPECT_SELEQ(expected, actual) EXPECT_STREQ(sel_getName(expected), sel_getName(actual))
