#import <AppKit/AppKit.h>

/*
 * Gives Mail's TableViewManager a way to hand over its message list's contextual menu.
 * Its +load copies this method into TableViewManager; nothing is patched.
 */
@interface TableViewManager_LVAdditions : NSObject

+ (void)load;
/* The table view's menu, or nil when there is no table view or it has no menu. */
- (NSMenu *)recentContextualMenu;

@end
