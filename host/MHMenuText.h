/*
 * A menu read into text, as a scenario prints it: one line per item with its index, title,
 * state and tool tip, so that two listings of the same menu compare line by line.
 */
#import <AppKit/AppKit.h>

/* Keys of an item as +itemsOfMenu: describes it. */
extern NSString *const MHMenuItemTitleKey;      // NSString
extern NSString *const MHMenuItemEnabledKey;    // NSNumber BOOL
extern NSString *const MHMenuItemSeparatorKey;  // NSNumber BOOL
extern NSString *const MHMenuItemToolTipKey;    // NSString, absent when none

@interface MHMenuText : NSObject

/* Each item of the menu as it stands, described with the keys above. */
+ (NSArray *)itemsOfMenu:(NSMenu *)menu;
/* "    %2lu  Title  (disabled)  tip: …" for each described item, a separator as a dashed line. */
+ (NSArray *)linesForItems:(NSArray *)items;

@end
