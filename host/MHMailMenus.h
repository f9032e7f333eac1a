/*
 * Mail's menus as the stand-in builds them: the main menu bar and the message list's
 * contextual menu, in the shape a plug-in looks for.
 *
 * Every title the host shows goes through +titleFor:, so a translation of the host
 * changes one table and nothing else.
 */
#import <AppKit/AppKit.h>

@interface MHMailMenus : NSObject

/* The host's title for an English title: its "MailHost" string table, else the English. */
+ (NSString *)titleFor:(NSString *)englishTitle;

/* Mail, File, Edit, View, Mailbox (with an empty "Go To" submenu), Message, Window, Help.
   "Move To…" and "Copy To…" in the Message menu are plain items whose actions are
   moveMessagesToMailbox: and copyMessagesToMailbox:. The caller owns the menu. */
+ (NSMenu *)newMainMenu;

/* The message list's contextual menu, with its own plain "Move To…" and "Copy To…".
   The caller owns the menu. */
+ (NSMenu *)newMessageListContextualMenu;

/* The "Go To" submenu of the Mailbox menu; nil when the menu has no such submenu. */
+ (NSMenu *)goToMenuInMainMenu:(NSMenu *)mainMenu;

/* The first item of the tree titled so, searched depth-first through submenus; nil if none. */
+ (NSMenuItem *)itemTitled:(NSString *)title inMenu:(NSMenu *)menu;

@end
