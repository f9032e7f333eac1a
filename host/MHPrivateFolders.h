/*
 * The user's Library folder as GNUstep finds it, and the two files in it that Lorvane reads:
 * the system's recent-items list and Lorvane's own preferences.
 *
 * Programs that run the stand-in Mail for testing, measuring or fuzzing first point the
 * Library into a private folder, so that the user's own preferences are never touched:
 * GNUstep finds the user's Library and defaults folders through its configuration, not HOME.
 */
#import <Foundation/Foundation.h>

/* Makes Library/Preferences, Defaults and Home under `root` and points GNUstep and HOME at
   them. Answers the Library folder. */
NSString *MHUsePrivateUserFolders(NSString *root);

/* The Library folder of the user's domain, as the plug-in finds it. */
NSString *MHUserLibraryFolder(void);
/* Lorvane's preferences file and the system's recent-items file in it. */
NSString *MHPreferencesFilePath(void);
NSString *MHRecentItemsFilePath(void);

/* Writes the list as XML, or binary as a Mac writes the recent items; YES on success. */
BOOL MHWritePropertyList(id plist, NSString *path, BOOL binary);
/* The system's "Number of Recent Items", written where and as a Mac keeps it. */
BOOL MHSetRecentItemsLimit(int limit);
