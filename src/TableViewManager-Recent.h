#import <AppKit/AppKit.h>

/*
 * Gives Mail's TableViewManager a way to hand over its message list's contextual menu.
 * At start-up, +lv_installInMail copies this method into TableViewManager; nothing is patched.
 */
@interface TableViewManager_LVAdditions : NSObject

+ (void)lv_installInMail;
/* The table view's menu, or nil when there is no table view or it has no menu. */
- (NSMenu *)recentContextualMenu;

@end
