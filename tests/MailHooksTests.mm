/*
 * Mail's events reaching the plug-in: each patched Mail method tells the provider first,
 * then runs Mail's own code, so Mail behaves as before. Mail is the stand-in host with
 * the built bundle loaded as Mail loads it; nothing here calls a hook by name.
 */
#import "LVMailFixture.h"
#import "AccountPreferences.h"
#import "MailboxesController.h"
#import "MessageTransfer.h"
#import "MHMailMenus.h"
#import "MHSystemVersion.h"
#import "TableViewManager-Recent.h"

#include <objc/runtime.h>

// A viewer of a more special kind: Mail gives such viewers their own transfers.
@interface LVTestSpecialViewer : MessageViewer
@end
@implementation LVTestSpecialViewer
@end

// A toolbar delegate that is not a viewer.
@interface LVTestToolbarOwner : NSObject
@end
@implementation LVTestToolbarOwner
- (NSToolbarItem *)toolbar:(NSToolbar *)toolbar itemForItemIdentifier:(NSString *)identifier willBeInsertedIntoToolbar:(BOOL)flag
{
    (void)toolbar;
    (void)identifier;
    (void)flag;
    return nil;
}
- (NSArray *)toolbarDefaultItemIdentifiers:(NSToolbar *)toolbar
{
    (void)toolbar;
    return @[];
}
- (NSArray *)toolbarAllowedItemIdentifiers:(NSToolbar *)toolbar
{
    (void)toolbar;
    return @[];
}
@end

// Transfers whose operations key-value coding finds elsewhere than in Mail's own field: an
// accessor of that name, a class of its own answer, a class that keeps its fields private.
static NSArray *decoyOperations;

@interface LVTestAccessorTransfer : MessageTransfer
@end
@implementation LVTestAccessorTransfer
- (NSArray *)_operations
{
    return decoyOperations;
}
@end

@interface LVTestAnsweringTransfer : MessageTransfer
@end
@implementation LVTestAnsweringTransfer
- (id)valueForKey:(NSString *)key
{
    return [key isEqualToString:@"_operations"] ? decoyOperations : [super valueForKey:key];
}
@end

@interface LVTestPrivateTransfer : MessageTransfer
@end
@implementation LVTestPrivateTransfer
+ (BOOL)accessInstanceVariablesDirectly
{
    return NO;
}
@end

// Laid out as Mail's transfer, but without the operations field: given the patched method,
// it shows what the hook does where the field is missing.
@interface LVTestFieldlessTransfer : NSObject
{
    NSArray *_messages;
    id _delegate;
}
@end
@implementation LVTestFieldlessTransfer
@end

/* ---- What the plug-in asks of its provider, and what Mail looked like at that moment ---- */

static NSMutableArray *providerCalls;      // selector names, in call order
static NSMutableArray *mailStatesAtCalls;  // what mailStateProbe answered at each call
static NSString *(*mailStateProbe)(void);
static NSMutableDictionary *watchedImplementations;

static IMP watchedImplementation(SEL selector)
{
    return (IMP)[[watchedImplementations objectForKey:NSStringFromSelector(selector)] pointerValue];
}

static void noteCall(SEL selector)
{
    [providerCalls addObject:NSStringFromSelector(selector)];
    [mailStatesAtCalls addObject:mailStateProbe != NULL ? mailStateProbe() : @""];
}

static void watchedCallWithoutArgument(id self, SEL _cmd)
{
    noteCall(_cmd);
    ((void (*)(id, SEL))watchedImplementation(_cmd))(self, _cmd);
}

static void watchedCallWithArgument(id self, SEL _cmd, id argument)
{
    noteCall(_cmd);
    ((void (*)(id, SEL, id))watchedImplementation(_cmd))(self, _cmd, argument);
}

// Records every call the hooks make on the provider, then lets it run. Only the plug-in's
// own run-time class is changed: the provider's code stays as it is.
static void watchProvider(LorvaneBundle_Provider *provider)
{
    providerCalls = [[NSMutableArray alloc] init];
    mailStatesAtCalls = [[NSMutableArray alloc] init];
    watchedImplementations = [[NSMutableDictionary alloc] init];
    const struct {
        SEL selector;
        IMP watcher;
    } watched[] = {
        { @selector(signalUpdateMenu), (IMP)watchedCallWithoutArgument },
        { @selector(signalRemoveDeletedMailboxes), (IMP)watchedCallWithoutArgument },
        { @selector(writePreferences), (IMP)watchedCallWithoutArgument },
        { @selector(addOrTouchRecentMailboxFromUid:), (IMP)watchedCallWithArgument },
        { @selector(setFrontmostMessageViewer:), (IMP)watchedCallWithArgument },
        { @selector(createContextualSubmenusUnderMenu:), (IMP)watchedCallWithArgument },
    };
    for (const auto &entry : watched) {
        Method method = class_getInstanceMethod(object_getClass(provider), entry.selector);
        ASSERT_TRUE(method != NULL) << sel_getName(entry.selector);
        IMP original = method_setImplementation(method, entry.watcher);
        [watchedImplementations setObject:[NSValue valueWithPointer:(const void *)original] forKey:NSStringFromSelector(entry.selector)];
    }
}

static NSUInteger callCount(NSString *selectorName)
{
    NSUInteger count = 0;
    for (NSString *name in providerCalls)
        count += [name isEqualToString:selectorName] ? 1 : 0;
    return count;
}

static void forgetCalls(void)
{
    [providerCalls removeAllObjects];
    [mailStatesAtCalls removeAllObjects];
}

static BOOL fileExists(NSString *path)
{
    return [[NSFileManager defaultManager] fileExistsAtPath:path];
}

namespace {

class MailHooks : public testing::Test {
protected:
    LorvaneBundle_Provider *provider = nil;
    MailApp *mail = nil;

    void SetUp() override
    {
        provider = LVStartMailWithSampleStore();
        mail = (MailApp *)NSApp;
        ASSERT_TRUE(provider != nil);
        ASSERT_TRUE([mail isKindOfClass:[MailApp class]]);
        watchProvider(provider);
        mailStateProbe = NULL;
    }

    void TearDown() override
    {
        mailStateProbe = NULL;
    }
};

// Mail's state that each test watches at the moment the provider is called.
MessageViewer *probedViewer;
MailboxUid *probedMailbox;

NSString *transferDelegateState(void)
{
    return [[probedViewer lastTransfer] delegate] == nil ? @"delegate not yet set" : @"delegate set";
}

NSString *mailboxFolderState(void)
{
    return fileExists([probedMailbox fullPath]) ? @"folder present" : @"folder gone";
}

NSString *terminationState(void)
{
    return [[NSApp valueForKey:@"_terminationAnnounced"] boolValue] ? @"Mail handled termination" : @"Mail not yet told";
}

} // namespace

TEST_F(MailHooks, EveryHookIsInstalledWhileTheBundleLoads)
{
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"SWIZZLE Error - "));
    struct Row {
        const char *hostClass;
        const char *hostSelector;
        const char *hook;
    };
    const Row rows[] = {
        { "AccountPreferences", "accountsDidChange:", "LVaccountsDidChange:" },
        { "MailAccount", "deleteMailbox:reflectToServer:", "LVdeleteMailbox:reflectToServer:" },
        { "MailApp", "applicationWillTerminate:", "LVapplicationWillTerminate:" },
        { "MessageTransfer", "setDelegate:", "LVsetDelegate:" },
        { "MessageViewer", "_mailboxWasRenamed:", "LV_mailboxWasRenamed:" },
        { "MessageViewer", "windowDidBecomeMain:", "LVwindowDidBecomeMain:" },
        { "NSToolbar", "setDelegate:", "LVsetDelegate:" },
    };
    for (const Row &row : rows) {
        Class host = objc_getClass(row.hostClass);
        IMP running = class_getMethodImplementation(host, sel_registerName(row.hostSelector));
        IMP hook = class_getMethodImplementation(host, sel_registerName(row.hook));
        EXPECT_EQ(hook, running) << row.hostClass << " " << row.hostSelector;
    }
    // Added, not hooked: the message list hands over its contextual menu.
    TableViewManager *list = [[[TableViewManager alloc] initWithFrame:NSMakeRect(0, 0, 200, 100)] autorelease];
    EXPECT_TRUE([list respondsToSelector:@selector(recentContextualMenu)]);
    EXPECT_EQ([[list tableView] menu], [(id)list recentContextualMenu]);
}

TEST_F(MailHooks, TransferFromAViewerAddsItsDestinationBeforeMailSetsTheDelegate)
{
    MessageViewer *viewer = [mail openMessageViewer];
    MailboxUid *inbox = LVSampleMailbox(@"Home/Inbox");
    MailboxUid *travel = LVSampleMailbox(@"Home/Travel");
    NSUInteger travelMessages = [[travel messagePaths] count];
    probedViewer = viewer;
    mailStateProbe = transferDelegateState;
    forgetCalls();

    LVSelectFirstMessages(viewer, inbox, 1);
    [viewer transferSelectedMessagesToMailbox:travel deleteOriginals:NO];

    ASSERT_EQ(1u, callCount(@"addOrTouchRecentMailboxFromUid:"));
    NSUInteger call = [providerCalls indexOfObject:@"addOrTouchRecentMailboxFromUid:"];
    EXPECT_NSEQ(@"delegate not yet set", [mailStatesAtCalls objectAtIndex:call]);
    EXPECT_EQ((id)viewer, [[viewer lastTransfer] delegate]);
    EXPECT_EQ(travelMessages + 1, [[travel messagePaths] count]);
    EXPECT_NSEQ((@[ @"Travel" ]), LVListedMailboxNames(provider));

    // The same mailbox again is touched, not added twice.
    LVSelectFirstMessages(viewer, inbox, 1);
    [viewer transferSelectedMessagesToMailbox:travel deleteOriginals:NO];
    EXPECT_NSEQ((@[ @"Travel" ]), LVListedMailboxNames(provider));
    EXPECT_NSEQ((@[ @2 ]), LVListedAccessCounts(provider));
}

TEST_F(MailHooks, OnlyATransferWhoseDelegateIsExactlyAMessageViewerWithADestinationCounts)
{
    MessageViewer *viewer = [mail openMessageViewer];
    // Viewers live as long as Mail, like the ones Mail opens.
    LVTestSpecialViewer *special = [[LVTestSpecialViewer alloc] init];
    LVTestToolbarOwner *other = [[[LVTestToolbarOwner alloc] init] autorelease];
    NSArray *paths = [LVSampleMailbox(@"Home/Inbox") messagePaths];
    MailboxUid *receipts = LVSampleMailbox(@"Home/Receipts");
    ASSERT_GT([paths count], 0u);

    struct Row {
        const char *name;
        id delegate;
        NSArray *messages;
        BOOL counts;
    };
    const Row rows[] = {
        { "a subclass of MessageViewer", special, @[ [paths firstObject] ], NO },
        { "an object that is no viewer", other, @[ [paths firstObject] ], NO },
        { "no delegate", nil, @[ [paths firstObject] ], NO },
        { "a viewer, but a transfer without operations", viewer, @[], NO },
        { "a MessageViewer itself", viewer, @[ [paths firstObject] ], YES },
    };
    for (const Row &row : rows) {
        forgetCalls();
        MessageTransfer *transfer = [[[MessageTransfer alloc] initWithMessagesAtPaths:row.messages destinationMailbox:receipts deleteOriginals:NO] autorelease];
        [transfer setDelegate:row.delegate];
        EXPECT_EQ(row.delegate, [transfer delegate]) << row.name;
        EXPECT_EQ(row.counts ? 1u : 0u, callCount(@"addOrTouchRecentMailboxFromUid:")) << row.name;
        EXPECT_EQ(row.counts ? 0 : -1, [provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)receipts]) << row.name;
    }
}

TEST_F(MailHooks, OnlyTheFirstViewersToolbarPutsTheContextualSubmenusUnderItsMessageListAndTheMainViewerIsFrontmost)
{
    // A toolbar of something else first: it is not the moment yet.
    NSToolbar *unrelated = [[[NSToolbar alloc] initWithIdentifier:@"Unrelated"] autorelease];
    LVTestToolbarOwner *owner = [[[LVTestToolbarOwner alloc] init] autorelease];
    [unrelated setDelegate:owner];
    EXPECT_EQ((id)owner, [unrelated delegate]);
    EXPECT_EQ(0u, callCount(@"createContextualSubmenusUnderMenu:"));

    MessageViewer *first = [mail openMessageViewer];
    MessageViewer *second = [mail openMessageViewer];

    EXPECT_EQ(1u, callCount(@"createContextualSubmenusUnderMenu:"));
    NSMenu *firstMenu = [[[first messageList] tableView] menu];
    NSMenu *secondMenu = [[[second messageList] tableView] menu];
    EXPECT_EQ(firstMenu, [[provider moveToRecentContextualSubmenu] supermenu]);
    EXPECT_EQ(firstMenu, [[provider copyToRecentContextualSubmenu] supermenu]);
    EXPECT_EQ(-1, [secondMenu indexOfItemWithSubmenu:[provider moveToRecentContextualSubmenu]]);
    for (NSMenuItem *item in [secondMenu itemArray])
        EXPECT_FALSE([[item title] hasSuffix:@"to Recent"]) << [[item title] UTF8String];
    // Mail's own toolbar set-up went ahead every time.
    EXPECT_EQ((id)first, [[first valueForKey:@"_toolbar"] delegate]);
    EXPECT_EQ((id)second, [[second valueForKey:@"_toolbar"] delegate]);

    // A viewer's window becoming main makes it the frontmost for the plug-in and for Mail.
    EXPECT_EQ((id)second, [provider frontmostMessageViewer]);
    EXPECT_EQ(second, [mail frontmostMessageViewer]);
    forgetCalls();
    [[first window] makeKeyAndOrderFront:nil];
    EXPECT_EQ(1u, callCount(@"setFrontmostMessageViewer:"));
    EXPECT_EQ((id)first, [provider frontmostMessageViewer]);
    EXPECT_EQ(first, [mail frontmostMessageViewer]);
}

TEST_F(MailHooks, DeletingAMailboxMarksTheListBeforeMailDeletesItAndPassesMailsAnswerOn)
{
    MessageViewer *viewer = [mail openMessageViewer];
    MailboxUid *travel = LVSampleMailbox(@"Home/Travel");
    // The IMAP account holds only Mail's special mailboxes, which the list leaves out.
    MailboxUid *announcements = [[LVSampleStore() accountNamed:@"Lists"] createMailboxWithRelativePath:@"Announcements"];
    ASSERT_TRUE(announcements != nil);
    LVUseMailboxes(viewer, LVSampleMailbox(@"Home/Inbox"), @[ travel, announcements, LVSampleMailbox(@"Home/Family") ]);
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    ASSERT_NSEQ((@[ @"Announcements", @"Family", @"Travel" ]), LVTitlesAboveSeparator([provider moveToRecentSubmenu]));

    // A POP account's own method and an IMAP account's inherited one.
    struct Row {
        const char *name;
        MailboxUid *mailbox;
    };
    const Row rows[] = { { "Home/Travel", travel }, { "Lists/Announcements", announcements } };
    for (const Row &row : rows) {
        MailAccount *account = [row.mailbox account];
        NSString *folder = [row.mailbox fullPath];
        probedMailbox = row.mailbox;
        mailStateProbe = mailboxFolderState;
        forgetCalls();

        EXPECT_TRUE([account deleteMailbox:row.mailbox reflectToServer:YES]) << row.name;
        EXPECT_NSEQ((@[ @"signalRemoveDeletedMailboxes", @"signalUpdateMenu" ]), providerCalls) << row.name;
        EXPECT_NSEQ((@[ @"folder present", @"folder present" ]), mailStatesAtCalls) << row.name;
        EXPECT_FALSE(fileExists(folder)) << row.name;

        // Deleting it again fails in Mail, and the caller hears so.
        forgetCalls();
        EXPECT_FALSE([account deleteMailbox:row.mailbox reflectToServer:YES]) << row.name;
        EXPECT_EQ(1u, callCount(@"signalRemoveDeletedMailboxes")) << row.name;
    }
    // The list was only marked; the next opening prunes it.
    EXPECT_NSEQ((@[ @"Announcements", @"Family", @"Travel" ]), LVTitlesAboveSeparator([provider moveToRecentSubmenu]));
    LVOpenRecentMenu([provider goToRecentSubmenu]);
    EXPECT_NSEQ((@[ @"Family" ]), LVTitlesAboveSeparator([provider moveToRecentSubmenu]));
}

TEST_F(MailHooks, RenamingAMailboxMarksTheMenusAndMailStillShowsTheNewName)
{
    MessageViewer *viewer = [mail openMessageViewer];
    MailboxUid *travel = LVSampleMailbox(@"Home/Travel");
    LVUseMailboxes(viewer, LVSampleMailbox(@"Home/Inbox"), @[ travel ]);
    LVOpenRecentMenu([provider copyToRecentSubmenu]);
    [viewer setSelectedMailboxes:@[ travel ]];
    forgetCalls();

    ASSERT_TRUE([mail renameMailbox:travel toName:@"Journeys"]);

    EXPECT_EQ(1u, callCount(@"signalUpdateMenu"));
    EXPECT_TRUE([[[viewer window] title] hasPrefix:@"Journeys"]) << [[[viewer window] title] UTF8String];
    EXPECT_NSEQ((@[ @"Travel" ]), LVTitlesAboveSeparator([provider copyToRecentSubmenu]));
    LVOpenRecentMenu([provider copyToRecentSubmenu]);
    EXPECT_NSEQ((@[ @"Journeys" ]), LVTitlesAboveSeparator([provider copyToRecentSubmenu]));
}

TEST_F(MailHooks, AccountsChangingMarksTheListForPruningAndMailShowsTheAccounts)
{
    MessageViewer *viewer = [mail openMessageViewer];
    MailAccount *lists = [LVSampleStore() accountNamed:@"Lists"];
    MailboxUid *announcements = [lists createMailboxWithRelativePath:@"Announcements"];
    ASSERT_TRUE(announcements != nil);
    LVUseMailboxes(viewer, LVSampleMailbox(@"Home/Inbox"), @[ announcements, LVSampleMailbox(@"Home/Travel") ]);
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    ASSERT_NSEQ((@[ @"Announcements", @"Travel" ]), LVTitlesAboveSeparator([provider moveToRecentSubmenu]));
    NSMenu *goTo = [MHMailMenus goToMenuInMainMenu:[mail mainMenu]];
    ASSERT_TRUE([goTo itemWithTitle:@"Lists"] != nil);
    forgetCalls();

    NSMutableArray *remaining = [[[MailAccount activeAccounts] mutableCopy] autorelease];
    [remaining removeObjectIdenticalTo:lists];
    [mail setActiveAccounts:remaining];

    EXPECT_NSEQ((@[ @"signalRemoveDeletedMailboxes", @"signalUpdateMenu" ]), providerCalls);
    EXPECT_TRUE([goTo itemWithTitle:@"Lists"] == nil);
    LVOpenRecentMenu([provider moveToRecentSubmenu]);
    EXPECT_NSEQ((@[ @"Travel" ]), LVTitlesAboveSeparator([provider moveToRecentSubmenu]));
}

TEST_F(MailHooks, QuittingWritesThePreferencesBeforeMailsOwnHandlerRuns)
{
    MessageViewer *viewer = [mail openMessageViewer];
    LVUseMailboxes(viewer, LVSampleMailbox(@"Home/Inbox"), @[ LVSampleMailbox(@"Work/Clients"), LVSampleMailbox(@"Home/Travel") ]);
    [[NSFileManager defaultManager] removeItemAtPath:MHPreferencesFilePath() error:NULL];
    mailStateProbe = terminationState;
    forgetCalls();

    [mail announceTermination];

    ASSERT_EQ(1u, callCount(@"writePreferences"));
    EXPECT_NSEQ(@"Mail not yet told", [mailStatesAtCalls objectAtIndex:[providerCalls indexOfObject:@"writePreferences"]]);
    EXPECT_NSEQ(@"Mail handled termination", terminationState());
    NSDictionary *saved = LVReadPlist(MHPreferencesFilePath());
    ASSERT_TRUE(saved != nil);
    EXPECT_EQ(2u, [[saved objectForKey:@"RecentMailboxes"] count]);
}

// Without a provider (an old system turned the plug-in away), Mail works as it did.
TEST(MailHooksWithoutProvider, EveryPatchedMethodStillDoesWhatMailDoes)
{
    MHSetSystemVersion(0x1050);
    EXPECT_TRUE(LVStartMailWithSampleStore() == nil);
    MailApp *mail = (MailApp *)NSApp;
    ASSERT_TRUE([mail isKindOfClass:[MailApp class]]);
    EXPECT_EQ(1u, [MHRecordedAlerts() count]);
    EXPECT_TRUE([LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider] == nil);

    MessageViewer *first = [mail openMessageViewer];
    MessageViewer *second = [mail openMessageViewer];
    EXPECT_EQ((id)first, [[first valueForKey:@"_toolbar"] delegate]);
    EXPECT_EQ(second, [mail frontmostMessageViewer]);
    [[first window] makeKeyAndOrderFront:nil];
    EXPECT_EQ(first, [mail frontmostMessageViewer]);

    MailboxUid *inbox = LVSampleMailbox(@"Home/Inbox");
    MailboxUid *travel = LVSampleMailbox(@"Home/Travel");
    NSUInteger inboxMessages = [[inbox messagePaths] count];
    NSUInteger travelMessages = [[travel messagePaths] count];
    LVSelectFirstMessages(first, inbox, 2);
    [first transferSelectedMessagesToMailbox:travel deleteOriginals:YES];
    EXPECT_EQ((id)first, [[first lastTransfer] delegate]);
    EXPECT_EQ(inboxMessages - 2, [[inbox messagePaths] count]);
    EXPECT_EQ(travelMessages + 2, [[travel messagePaths] count]);

    ASSERT_TRUE([mail renameMailbox:travel toName:@"Journeys"]);
    [first setSelectedMailboxes:@[ travel ]];
    EXPECT_TRUE([[[first window] title] hasPrefix:@"Journeys"]);
    NSString *folder = [travel fullPath];
    EXPECT_TRUE([[travel account] deleteMailbox:travel reflectToServer:YES]);
    EXPECT_FALSE(fileExists(folder));
    EXPECT_FALSE([[travel account] deleteMailbox:travel reflectToServer:YES]);

    [mail announceTermination];
    EXPECT_TRUE([[mail valueForKey:@"_terminationAnnounced"] boolValue]);
    EXPECT_FALSE(fileExists(MHPreferencesFilePath()));
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"SWIZZLE Error - "));
}

TEST_F(MailHooks, TransferReadsItsOperationsWhereKeyValueCodingWould)
{
    MessageViewer *viewer = [mail openMessageViewer];
    NSArray *paths = @[ [[LVSampleMailbox(@"Home/Inbox") messagePaths] firstObject] ];
    MailboxUid *receipts = LVSampleMailbox(@"Home/Receipts"), *archive = LVSampleMailbox(@"Home/Archive");
    decoyOperations = [[[[MessageTransfer alloc] initWithMessagesAtPaths:paths destinationMailbox:archive deleteOriginals:NO] autorelease] operations];
    class_addMethod([LVTestFieldlessTransfer class], @selector(setDelegate:), class_getMethodImplementation([MessageTransfer class], @selector(setDelegate:)), "v@:@");

    // Each transfer is made for Receipts; nil stands for key-value coding raising.
    struct Row {
        Class transferClass;
        MailboxUid *listed;
    } const rows[] = {
        { [MessageTransfer class], receipts },
        { [LVTestAccessorTransfer class], archive },
        { [LVTestAnsweringTransfer class], archive },
        { [LVTestPrivateTransfer class], nil },
        { [LVTestFieldlessTransfer class], nil },
    };
    for (const Row &row : rows) {
        const char *name = class_getName(row.transferClass);
        [provider clearRecentMailboxes];
        id transfer = [row.transferClass alloc];
        transfer = [row.transferClass isSubclassOfClass:[MessageTransfer class]]
            ? [transfer initWithMessagesAtPaths:paths destinationMailbox:receipts deleteOriginals:NO] : [transfer init];
        [transfer autorelease];
        id answer = nil;
        @try {
            answer = [[[transfer valueForKey:@"_operations"] lastObject] destinationMailboxUid];
        } @catch (NSException *exception) {
            answer = nil;
        }
        EXPECT_EQ(row.listed, answer) << name;

        BOOL raised = NO;
        @try {
            [transfer setDelegate:viewer];
        } @catch (NSException *exception) {
            raised = YES;
        }
        EXPECT_EQ(row.listed == nil, raised) << name;
        EXPECT_EQ(row.listed == receipts ? 0 : -1, [provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)receipts]) << name;
        EXPECT_EQ(row.listed == archive ? 0 : -1, [provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)archive]) << name;
    }
}
