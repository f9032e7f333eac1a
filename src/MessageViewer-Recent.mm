#import "MessageViewer-Recent.h"
#import "LorvaneBundle_Provider.h"
#import "Utilities.h"
#import "MailInterfaces.h"

// Mail's own MessageViewer methods, run after the provider has been told.
static IMP _old_mailboxWasRenamed_IMP = NULL;
static IMP _old_windowDidBecomeMain_IMP = NULL;

// An item's title starts with the name its mailbox had when the submenus were last
// rebuilt; names made unique for duplicates only add to the end. Every title starts with
// an empty name, which the platform's prefix test denies. Names are compared literally, as
// the rebuild groups them, so "é" and "e" with a combining accent stay two names.
static BOOL titleStillNamesMailbox(NSString *title, id<LVMailboxUid> uid)
{
    NSString *mailboxName = [uid displayName];
    if (mailboxName == nil)
        return NO;
    return [mailboxName length] == 0 || [title rangeOfString:mailboxName options:NSAnchoredSearch | NSLiteralSearch].location == 0;
}

// Tells the user, then the log, that an item no longer matched the list, so nothing moved.
static void reportTitleMismatch(int index, NSString *title)
{
    NSString *message = @"Menuitem title does not match mailbox UID name in MessageViewer-Recent:transferToRecent. Transfer cancelled. Please notify the developer.";
    NSRunCriticalAlertPanel(@"Lorvane Mail Plugin", @"%@", @"OK", nil, nil, message);
    NSLog(@"Menuitem title does not match mailbox UID name in MessageViewer-Recent:transferToRecent. Transfer cancelled.");
    NSLog(@"Index: %d, Title: \"%@\"", index, title);
}

// The four transfer actions differ only in the submenu the item sits in and whether the
// originals go. An item's position in its submenu is its entry's index in the list.
// A function, not a method, so Mail's MessageViewer gains only the selectors it answers.
static void transferChosenItem(id viewer, id sender, NSMenu *submenu, BOOL deleteOriginals)
{
    int index = (int)[submenu indexOfItem:sender];
    NSString *title = [sender title];
    if (index < 0)
        return; // not one of this submenu's items: no entry to act on
    [viewer transferToRecent:sender withIndex:index andTitle:title andDeleteOriginals:deleteOriginals];
}

@implementation MessageViewer_LVAdditions

+ (void)lv_installInMail
{
    Class hostClass = LVExtendMailClass("MessageViewer", self);
    if (hostClass == Nil)
        return; // no viewers in this Mail: nothing to patch, no actions to answer
    _old_mailboxWasRenamed_IMP = [LVBundleUtilities swizzleInstanceMethod:@"_mailboxWasRenamed:" forClass:hostClass];
    _old_windowDidBecomeMain_IMP = [LVBundleUtilities swizzleInstanceMethod:@"windowDidBecomeMain:" forClass:hostClass];
}

// Runs as MessageViewer. A renamed mailbox keeps its entry; only its title is stale.
- (void)LV_mailboxWasRenamed:(id)notification
{
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] signalUpdateMenu];
    if (_old_mailboxWasRenamed_IMP != NULL)
        ((void (*)(id, SEL, id))_old_mailboxWasRenamed_IMP)(self, _cmd, notification);
}

// Runs as MessageViewer. "Go to Recent" acts on the viewer the user last brought forward.
- (void)LVwindowDidBecomeMain:(id)notification
{
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] setFrontmostMessageViewer:self];
    if (_old_windowDidBecomeMain_IMP != NULL)
        ((void (*)(id, SEL, id))_old_windowDidBecomeMain_IMP)(self, _cmd, notification);
}

- (id)recentTableManager
{
    return [self valueForKey:@"_tableManager"];
}

- (NSToolbar *)messageViewerToolbar
{
    return [self valueForKey:@"_toolbar"];
}

- (void)moveToRecentFromSubmenu:(id)sender
{
    transferChosenItem(self, sender, [[LorvaneBundle_Provider activeLorvaneBundle_Provider] moveToRecentSubmenu], YES);
}

- (void)copyToRecentFromSubmenu:(id)sender
{
    transferChosenItem(self, sender, [[LorvaneBundle_Provider activeLorvaneBundle_Provider] copyToRecentSubmenu], NO);
}

- (void)moveToRecentFromContextualSubmenu:(id)sender
{
    transferChosenItem(self, sender, [[LorvaneBundle_Provider activeLorvaneBundle_Provider] moveToRecentContextualSubmenu], YES);
}

- (void)copyToRecentFromContextualSubmenu:(id)sender
{
    transferChosenItem(self, sender, [[LorvaneBundle_Provider activeLorvaneBundle_Provider] copyToRecentContextualSubmenu], NO);
}

// Showing a mailbox is not a use of it: no title check, and the list is left as it is.
- (void)goToRecentFromSubmenu:(id)sender
{
    int index = (int)[[[LorvaneBundle_Provider activeLorvaneBundle_Provider] goToRecentSubmenu] indexOfItem:sender];
    if (index < 0)
        return; // not one of the submenu's items: no entry to show
    id<LVMailboxUid> uid = [[LorvaneBundle_Provider activeLorvaneBundle_Provider] getRecentMailboxUidAtIndex:index];
    id<LVMessageViewer> frontmostViewer = [[LorvaneBundle_Provider activeLorvaneBundle_Provider] frontmostMessageViewer];
    // An entry without a mailbox selects nothing rather than raising inside Mail's menu handling.
    NSArray *selection = uid != nil ? [NSArray arrayWithObject:uid] : [NSArray array];
    [frontmostViewer setSelectedMailboxes:selection];
}

// Runs as MessageViewer, which is the viewer whose selection moves.
- (void)transferToRecent:(id)sender withIndex:(int)index andTitle:(NSString *)title andDeleteOriginals:(BOOL)deleteOriginals
{
    (void)sender;
    if (index < 0)
        return;
    id<LVMailboxUid> uid = [[LorvaneBundle_Provider activeLorvaneBundle_Provider] getRecentMailboxUidAtIndex:index];
    if (!titleStillNamesMailbox(title, uid)) {
        reportTitleMismatch(index, title);
        return;
    }
    [[(id<LVMailApp>)NSApp mailboxesController] setCurrentTransferMailbox:uid deletedOriginals:deleteOriginals];
    [(id<LVMessageViewer>)self transferSelectedMessagesToMailbox:uid deleteOriginals:deleteOriginals];
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] addOrTouchRecentMailboxFromUid:uid];
}

// Every "Clear Menu" item comes here: the five submenus share the one list.
- (void)clearRecentMenus:(id)sender
{
    (void)sender;
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] clearRecentMailboxes];
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] signalUpdateMenu];
}

@end
