/*
 * Programs that run the stand-in Mail for testing, measuring or fuzzing first point the
 * user's folders into a private one (MHMailSession does it for them), so that the user's own
 * preferences are never touched: GNUstep finds the user's Library and defaults folders
 * through its configuration, not HOME.
 */
#import <Foundation/Foundation.h>

/* Makes Library/Preferences, Defaults and Home under `root` and points GNUstep and HOME at
   them. Answers the Library folder. */
NSString *MHUsePrivateUserFolders(NSString *root);
