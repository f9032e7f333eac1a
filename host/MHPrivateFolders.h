/*
 * Programs that run the stand-in Mail for testing, measuring or fuzzing first point the
 * user's folders into a private one, so that the user's own preferences are never touched:
 * GNUstep finds the user's Library and defaults folders through its configuration, not HOME.
 * The files Lorvane reads there are named in MHUserLibrary.h.
 */
#import <Foundation/Foundation.h>

/* Makes Library/Preferences, Defaults and Home under `root` and points GNUstep and HOME at
   them. Answers the Library folder. */
NSString *MHUsePrivateUserFolders(NSString *root);
