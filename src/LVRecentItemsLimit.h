#import <Foundation/Foundation.h>

/*
 * The system's "Number of Recent Items": "MaxAmount" under "RecentDocuments" (else
 * "Documents") of com.apple.recentitems.plist in the user's Preferences folder, the most
 * entries the recent list may hold. The file is binary on a Mac and comes from outside the
 * plug-in: unreadable bytes and values of the wrong kind count as absent.
 */
@interface LVRecentItemsLimit : NSObject

/* The limit read now; 0 when the file holds none. */
+ (int)systemLimit;

@end
