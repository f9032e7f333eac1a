#import <AppKit/AppKit.h>

/*
 * What the recent submenus' items do, carried out by Mail's MessageViewer.
 *
 * The items have no target, so a choice travels the responder chain to the viewer in
 * front; at start-up, +lv_installInMail copies these methods into MessageViewer so that it
 * answers them, and patches the viewer to report renamed mailboxes and its window becoming main.
 */
@interface MessageViewer_LVAdditions : NSObject

+ (void)lv_installInMail;
- (void)LV_mailboxWasRenamed:(id)notification;
- (void)LVwindowDidBecomeMain:(id)notification;

/* Mail's private fields, read by key-value coding. */
- (id)recentTableManager;
- (NSToolbar *)messageViewerToolbar;

- (void)moveToRecentFromSubmenu:(id)sender;
- (void)copyToRecentFromSubmenu:(id)sender;
- (void)moveToRecentFromContextualSubmenu:(id)sender;
- (void)copyToRecentFromContextualSubmenu:(id)sender;
- (void)goToRecentFromSubmenu:(id)sender;
/* Moves or copies the viewer's selection after checking the item still names that mailbox. */
- (void)transferToRecent:(id)sender withIndex:(int)index andTitle:(NSString *)title andDeleteOriginals:(BOOL)deleteOriginals;
- (void)clearRecentMenus:(id)sender;

@end
