/*
 * Pictures of the screen with a menu open, for the demo. Menus are opened as a click
 * opens them, level by level on each menu's view, then the run loop turns for about a
 * second so everything is drawn, and ImageMagick's "import" saves the whole screen.
 */
#import <AppKit/AppKit.h>

@interface MHScreenshot : NSObject

/* Saves the screen as a PNG. With a menu, every menu above it is opened down to it
   first (a contextual menu's top level is shown over the view) and closed afterwards.
   NO with *problem set when the picture could not be taken. */
+ (BOOL)saveScreenToFile:(NSString *)path showingMenu:(NSMenu *)menu nearView:(NSView *)view error:(NSString **)problem;

@end
