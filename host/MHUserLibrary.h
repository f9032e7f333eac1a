/*
 * The user's Library folder as GNUstep finds it, and the two files in it that Lorvane reads:
 * the system's recent-items list and Lorvane's own preferences. Tests, benchmarks and fuzzers
 * write and find those files through these helpers, after pointing the Library into a private
 * folder (MHPrivateFolders.h or their own set-up).
 */
#import <Foundation/Foundation.h>

/* The Library folder of the user's domain, as the plug-in finds it. */
NSString *MHUserLibraryFolder(void);
/* Lorvane's preferences file and the system's recent-items file in it. */
NSString *MHPreferencesFilePath(void);
NSString *MHRecentItemsFilePath(void);

/* Writes the list as XML, or binary as a Mac writes the recent items, making the folder if
   missing; YES on success. */
BOOL MHWritePropertyList(id plist, NSString *path, BOOL binary);
/* The system's "Number of Recent Items", written where and as a Mac keeps it. */
BOOL MHSetRecentItemsLimit(int limit);
