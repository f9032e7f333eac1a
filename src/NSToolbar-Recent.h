#import <AppKit/AppKit.h>

/*
 * Puts the contextual recent submenus under the message list's menu the first time a viewer's toolbar is set up.
 * At start-up, +lv_installInMail copies these methods into NSToolbar and patches AppKit's NSToolbar.
 */
/* YES once the contextual submenus hang under the message list's menu; never cleared. */
extern BOOL didSetContextualMenuDelegate;

@interface NSToolbar_LVAdditions : NSObject

+ (void)lv_installInMail;
- (void)LVsetDelegate:(id)delegate;

@end
