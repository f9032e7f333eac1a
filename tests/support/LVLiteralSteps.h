/*
 * What the plug-in must hold and show after each step, worked out by its steps done the plain
 * way: a walk from the front for a mailbox, a whole-list stable sort before a record is
 * dropped, and at every rebuild every name asked of Mail, the list sorted by name, runs of
 * namesakes named after account and folder, the list sorted by the sort type and every row
 * made again. Slow on purpose, and written apart from the plug-in, records and comparators
 * included, so that a fault in either shows as a difference. The replay keeps one beside the
 * plug-in through a day in Mail; the benchmarks time its steps as a yardstick.
 *
 * It asks the stand-in Mail what Mail would be asked (mailbox names, accounts, paths, icons,
 * the active accounts) at the moment the plug-in would ask it.
 */
#import <AppKit/AppKit.h>

/* One record of the plain list. */
@interface LVLiteralRecord : NSObject
{
@public
    id uid;
    int accesses;
    NSDate *date;                   // retained; nil when a saved date did not parse
    NSMutableString *displayName;   // retained
}
- (id)uid;
@end

/* One recent item as a rebuild leaves it in every submenu. */
@interface LVLiteralRow : NSObject
{
@public
    NSString *title;
    NSString *toolTip;
    NSImage *icon;
}
@end

@interface LVLiteralLorvane : NSObject
{
    int _limit;
    int _sortType;
    BOOL _excludeSpecialMailboxes;
    NSMutableArray *_list;          // of LVLiteralRecord, front first
    BOOL _updateMenu;
    BOOL _removeDeletedMailboxes;
    NSUInteger _itemCount;          // pre-made items per submenu
    NSArray *_rows;                 // of LVLiteralRow: what the submenus show
    BOOL _clearItemsEnabled;        // as the last rebuild left them
}

/* Start-up: the limit from the system's recent items, then the preferences file's contents
   (nil when there is no readable file), loaded as the provider loads them. */
- (id)initWithLimit:(int)limit preferences:(NSDictionary *)preferences;

- (int)sortType;
- (BOOL)excludesSpecialMailboxes;
/* The list, front first. */
- (NSArray *)records;

/* Mail reports messages moved or copied into the mailbox (the transfer hook). */
- (void)addOrTouch:(id)mailbox;
/* What a hook flags: the menus out of date, the list to be pruned. */
- (void)signalUpdateMenu;
- (void)signalRemoveDeletedMailboxes;
/* "Clear Menu". */
- (void)clear;
/* A recent submenu about to open: pruning and the rebuild as flagged. */
- (void)open;

/* What the five submenus show since the last rebuild, "Clear Menu" included. */
- (NSArray *)rows;
- (BOOL)clearItemsEnabled;

/* The preferences file that quitting writes, as the dictionary it holds. */
- (NSDictionary *)savedPreferences;

@end
