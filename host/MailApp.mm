#import "MailApp.h"
#import "AccountPreferences.h"
#import "MailboxesController.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "MessageViewer.h"
#import "MHMailboxList.h"
#import "MHMailMenus.h"
#import "MHBundleLoader.h"

@interface MailApp (GoToMenu)
- (void)reloadGoToMenu;
@end

@implementation MailApp

// Mail shows a menu bar across the top of the screen; GNUstep floats menus unless told.
// In that style GNUstep makes the menu titled with the process name the application
// menu, and adds one when there is none: Mail's is "Mail".
+ (void)prepareProcessToBeMail
{
    [[NSUserDefaults standardUserDefaults] registerDefaults:@{ @"NSMenuInterfaceStyle" : @"NSMacintoshInterfaceStyle" }];
    [[NSProcessInfo processInfo] setProcessName:@"Mail"];
}

+ (MailApp *)sharedMailApp
{
    BOOL firstTime = (NSApp == nil);
    if (firstTime)
        [self prepareProcessToBeMail];
    NSApplication *app = [self sharedApplication];
    if (![app isKindOfClass:self]) {
        NSLog(@"%@ is not a MailApp: it was made before Mail started", app);
        return nil;
    }
    if (firstTime) {
        NSMenu *mainMenu = [MHMailMenus newMainMenu];
        [app setMainMenu:mainMenu];
        [mainMenu release];
    }
    return (MailApp *)app;
}

- (id)init
{
    if (nil == (self = [super init]))
        return nil;
    _mailboxesController = [[MailboxesController alloc] init];
    _messageViewers = [[NSMutableArray alloc] init];
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(applicationWillTerminate:)
                                                 name:NSApplicationWillTerminateNotification
                                               object:self];
    return self;
}

- (void)dealloc
{
    [[NSNotificationCenter defaultCenter] removeObserver:self];
    [_mailboxesController release];
    [_messageViewers release];
    [super dealloc];
}

- (MailboxesController *)mailboxesController
{
    return _mailboxesController;
}

- (void)applicationWillTerminate:(NSNotification *)notification
{
    (void)notification;
    _terminationAnnounced = YES;
}

- (void)announceTermination
{
    if (_terminationAnnounced)
        return;
    [[NSNotificationCenter defaultCenter] postNotificationName:NSApplicationWillTerminateNotification object:self];
}

- (NSArray *)loadMailBundlesWithExtraPaths:(NSArray *)extraPaths
{
    MHPrepareMailClassesForPlugins();
    NSMutableArray *loaded = [NSMutableArray array];
    for (NSString *path in [MHInstalledMailBundlePaths() arrayByAddingObjectsFromArray:extraPaths]) {
        NSBundle *bundle = [self loadMailBundleAtPath:path];
        if (bundle != nil)
            [loaded addObject:bundle];
    }
    return loaded;
}

- (NSBundle *)loadMailBundleAtPath:(NSString *)path
{
    NSBundle *bundle = MHLoadMailBundle(path);
    if (bundle == nil)
        NSLog(@"MailHost could not load the bundle at %@", path);
    return bundle;
}

- (void)prepareToLaunchAgain
{
    NSMenu *mainMenu = [MHMailMenus newMainMenu];
    [self setMainMenu:mainMenu];
    [mainMenu release];
    _terminationAnnounced = NO;
}

- (MessageViewer *)openMessageViewer
{
    // A window becomes key and main only in an application that has finished launching.
    if (![self isRunning])
        [self finishLaunching];
    [self activateIgnoringOtherApps:YES];
    MessageViewer *viewer = [[MessageViewer alloc] init];
    [_messageViewers addObject:viewer];
    [viewer release];
    [self mailboxesDidChange];
    [viewer showWindow];
    return viewer;
}

- (NSArray *)messageViewers
{
    return [[_messageViewers copy] autorelease];
}

- (MessageViewer *)frontmostMessageViewer
{
    return [_messageViewers lastObject];
}

- (void)messageViewerDidBecomeMain:(MessageViewer *)viewer
{
    if ([_messageViewers indexOfObjectIdenticalTo:viewer] == NSNotFound)
        return;
    [viewer retain];
    [_messageViewers removeObjectIdenticalTo:viewer];
    [_messageViewers addObject:viewer];
    [viewer release];
}

// The viewer is still inside its window's close: it must outlive this call.
- (void)messageViewerDidClose:(MessageViewer *)viewer
{
    [[viewer retain] autorelease];
    [_messageViewers removeObjectIdenticalTo:viewer];
}

- (void)mailboxesDidChange
{
    [self reloadGoToMenu];
    for (MessageViewer *viewer in _messageViewers)
        [viewer mailboxesDidChange];
}

- (BOOL)renameMailbox:(MailboxUid *)mailbox toName:(NSString *)name
{
    if (![[mailbox account] renameMailbox:mailbox toName:name])
        return NO;
    [[NSNotificationCenter defaultCenter] postNotificationName:MHMailboxWasRenamedNotification object:mailbox];
    [self reloadGoToMenu];
    return YES;
}

- (BOOL)deleteMailbox:(MailboxUid *)mailbox
{
    if (![[mailbox account] deleteMailbox:mailbox reflectToServer:YES])
        return NO;
    [self mailboxesDidChange];
    return YES;
}

- (void)setActiveAccounts:(NSArray *)accounts
{
    [MailAccount setActiveAccounts:accounts];
    [[AccountPreferences sharedPreferences] accountsDidChange:self];
}

- (void)newViewerWindow:(id)sender
{
    (void)sender;
    [self openMessageViewer];
}

- (void)showMessageViewer:(id)sender
{
    MessageViewer *viewer = [self frontmostMessageViewer];
    if (viewer == nil)
        [self newViewerWindow:sender];
    else
        [viewer showWindow];
}

@end

@implementation MailApp (GoToMenu)

- (NSMenuItem *)newGoToItemForMailbox:(MailboxUid *)mailbox
{
    NSUInteger depth = [[[mailbox accountRelativePath] pathComponents] count];
    NSString *indent = [@"" stringByPaddingToLength:2 * depth withString:@" " startingAtIndex:0];
    NSMenuItem *item = [[NSMenuItem alloc] initWithTitle:[indent stringByAppendingString:[mailbox displayName]]
                                                  action:@selector(showMailbox:)
                                           keyEquivalent:@""];
    [item setRepresentedObject:mailbox];
    [item setImage:[MailboxesController iconForMailboxUid:mailbox smallSize:YES]];
    return item;
}

// "Go To" lists every mailbox of every active account, under the account's name.
- (void)reloadGoToMenu
{
    NSMenu *goTo = [MHMailMenus goToMenuInMainMenu:[self mainMenu]];
    while ([goTo numberOfItems] > 0)
        [goTo removeItemAtIndex:0];
    for (MailAccount *account in [MailAccount activeAccounts]) {
        [goTo addItemWithTitle:[account displayName] action:NULL keyEquivalent:@""];
        for (MailboxUid *mailbox in [MHMailboxList mailboxesInDisplayOrder:account]) {
            NSMenuItem *item = [self newGoToItemForMailbox:mailbox];
            [goTo addItem:item];
            [item release];
        }
    }
}

@end
