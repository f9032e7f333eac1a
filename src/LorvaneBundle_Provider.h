#import <AppKit/AppKit.h>
#import "MailInterfaces.h"

@class LorvaneMailbox;
@class LVRecentList;

/*
 * The plug-in's one object. It holds the recent-mailbox list, its two settings and
 * the five recent submenus, and it is the submenus' delegate.
 *
 * Mail never sees this class by name: while loading, the plug-in makes LorvaneBundle,
 * a subclass of Mail's MVMailBundle that carries copies of these fields and methods,
 * and Mail creates the one instance of that. Everything else reaches it through
 * +activeLorvaneBundle_Provider, which is nil until start-up has succeeded.
 *
 * Fields are plain Objective-C and C types: they are copied into the run-time subclass
 * one by one. The provider lives until Mail exits and never releases what it holds.
 */
@interface LorvaneBundle_Provider : NSObject <NSMenuDelegate>
{
    NSMenuItem *_moveToRecentMenuItem;
    NSMenuItem *_copyToRecentMenuItem;
    NSMenuItem *_moveToRecentContextualMenuItem; // nil until the first viewer's toolbar
    NSMenuItem *_copyToRecentContextualMenuItem; // nil until the first viewer's toolbar
    NSMenuItem *_goToRecentMenuItem;
    NSMenu *_moveToRecentSubmenu;
    NSMenu *_copyToRecentSubmenu;
    NSMenu *_moveToRecentContextualSubmenu;
    NSMenu *_copyToRecentContextualSubmenu;
    NSMenu *_goToRecentSubmenu;
    NSMutableArray *_moveToRecentSubmenuItems; // item i always stands for list entry i
    NSMutableArray *_copyToRecentSubmenuItems;
    NSMutableArray *_moveToRecentContextualSubmenuItems;
    NSMutableArray *_copyToRecentContextualSubmenuItems;
    NSMutableArray *_goToRecentSubmenuItems;
    NSMenuItem *_moveClearMenuItem;
    NSMenuItem *_copyClearMenuItem;
    NSMenuItem *_moveClearContextualMenuItem;
    NSMenuItem *_copyClearContextualMenuItem;
    NSMenuItem *_goClearMenuItem;
    NSString *_moveToRecentMenuTitle;
    NSString *_copyToRecentMenuTitle;
    NSString *_goToRecentMenuTitle;
    NSString *_clearMenuTitle;
    NSString *_gotoMenuTitle;       // Mail's own "Go To" submenu, found to place "Go to Recent"
    int _sortType;                  // 0 by name, 1 newest first, 2 most used first
    BOOL _excludeSpecialMailboxes;  // only user-made mailboxes enter the list
    int _maxMailboxes;              // the system's "Number of Recent Items"; 0 disables the list
    LVRecentList *_recentMailboxes; // the mutable array of LorvaneMailbox records, front first
    BOOL _updateMenu;               // the submenus are rebuilt before they next open
    BOOL _removeDeletedMailboxes;   // the list is pruned before the submenus next open
    BOOL _menusOK;                  // every menu step so far succeeded
    id _frontmostMessageViewer;     // not retained: the viewer whose window last became main
    NSBundle *_thisBundle;
}

/* Loading into Mail: the version gate, then Mail's plug-in class made and registered. Run
   once, first of the start-up steps. */
+ (void)lv_startInMail;
+ (void)initialize;
/* The provider singleton, or nil before start-up has finished or after it failed. */
+ (id)activeLorvaneBundle_Provider;
+ (void)logBundleVersion;

/* Start-up and the menus' installation. */
- (id)init;
/* Puts the contextual "Move to Recent" and "Copy to Recent" under the menu; nil is allowed. */
- (void)createContextualSubmenusUnderMenu:(NSMenu *)menu;

/* The list. Indexes are not range-checked: callers pass indexes of items built from it. */
- (void)addOrTouchRecentMailboxFromUid:(id<LVMailboxUid>)uid;
- (id<LVMailboxUid>)getRecentMailboxUidAtIndex:(int)index;
- (LorvaneMailbox *)getRecentMailboxAtIndex:(int)index;
/* Compares mailboxes by identity; -1 when the mailbox is not listed. */
- (int)getRecentMailboxIndexWithUid:(id<LVMailboxUid>)uid;
- (int)getSortType;
- (void)incrementAccessesForItemAtIndex:(int)index;
- (id<LVMailboxUid>)mailboxUidForFullPath:(NSString *)fullPath;
- (void)clearRecentMailboxes;
- (void)removeDeletedMailboxes;
/* The two signals only mark work for the next time a recent submenu opens. */
- (void)signalUpdateMenu;
- (void)signalRemoveDeletedMailboxes;
/* Debugging aids: print the list to standard output. */
- (void)listRecentMailboxUids;
- (void)listRecentMailboxes;

/* Names that tell apart recent mailboxes of the same name. */
- (BOOL)multipleAccountsInRecentMailboxes:(NSArray *)group;
- (void)extendNamesForDuplicateMailboxes:(NSArray *)group includesMultipleAccounts:(BOOL)multipleAccounts;
/* A new string the caller owns through the autorelease pool. */
- (NSMutableString *)accountRelativePathWithoutPrefixForUid:(id<LVMailboxUid>)uid;

/* The preferences file: read once at start-up, written once when Mail quits. */
- (void)readPreferences;
- (void)writePreferences;

/* The recent submenus, rebuilt lazily when one is about to open. */
- (void)updateMenus;
- (void)menuNeedsUpdate:(NSMenu *)menu;
- (NSMenu *)moveToRecentSubmenu;
- (NSMenu *)copyToRecentSubmenu;
- (NSMenu *)moveToRecentContextualSubmenu;
- (NSMenu *)copyToRecentContextualSubmenu;
- (NSMenu *)goToRecentSubmenu;
- (void)setFrontmostMessageViewer:(id)viewer;
- (id)frontmostMessageViewer;

@end
