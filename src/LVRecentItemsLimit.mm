#import "LVRecentItemsLimit.h"
#import "LVPreferencesFile.h"
#import "PropertyListReader.h"

// The value under the key when it is a dictionary; nil for anything else, a nil list included.
static NSDictionary *dictionaryIn(id plist, NSString *key)
{
    id value = [plist isKindOfClass:[NSDictionary class]] ? [plist objectForKey:key] : nil;
    return [value isKindOfClass:[NSDictionary class]] ? value : nil;
}

@implementation LVRecentItemsLimit

+ (int)systemLimit
{
    NSString *path = [LVUserLibraryFolder() stringByAppendingPathComponent:@"Preferences/com.apple.recentitems.plist"];
    id recentItems = [LVPropertyListReader propertyListWithContentsOfFile:path];
    NSDictionary *documents = dictionaryIn(recentItems, @"RecentDocuments");
    if (documents == nil) {
        NSLog(@"[Lorvane] failed to find RecentDocuments dictionary.");
        documents = dictionaryIn(recentItems, @"Documents");
    }
    if (documents == nil) {
        NSLog(@"[Lorvane] failed to find the RecentDocuments or Documents dictionaries.");
        return 0;
    }
    id maxAmount = [documents objectForKey:@"MaxAmount"];
    return [maxAmount respondsToSelector:@selector(intValue)] ? [maxAmount intValue] : 0;
}

@end
