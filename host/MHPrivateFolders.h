/*
 * Programs that run the stand-in Mail for measuring or fuzzing keep away from the user's own
 * preferences: GNUstep finds the user's Library and defaults folders through its
 * configuration, not HOME, so both are pointed into a private folder.
 */
#import <Foundation/Foundation.h>

/* Makes Library/Preferences, Defaults and Home under `root` and points GNUstep and HOME at
   them. Answers the Library folder. */
NSString *MHUsePrivateUserFolders(NSString *root);
