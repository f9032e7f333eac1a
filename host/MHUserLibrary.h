/*
 * The user's Library folder as GNUstep finds it, and the system's file in it that Mail's
 * plug-ins may read: the recent-items list with its "Number of Recent Items". A plug-in's
 * own files are its business: MHMailSession writes them where its caller names them.
 */
#import <Foundation/Foundation.h>

/* The Library folder of the user's domain, as a plug-in finds it. */
NSString *MHUserLibraryFolder(void);
/* The system's recent-items file in it. */
NSString *MHRecentItemsFilePath(void);

/* Writes the list as XML, or binary as a Mac writes the recent items, making the folder if
   missing; YES on success. */
BOOL MHWritePropertyList(id plist, NSString *path, BOOL binary);
/* The system's "Number of Recent Items", written where and as a Mac keeps it. */
BOOL MHSetRecentItemsLimit(int limit);
