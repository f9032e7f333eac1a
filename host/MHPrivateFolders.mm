#import "MHPrivateFolders.h"

#include <cstdlib>

NSString *MHUsePrivateUserFolders(NSString *root)
{
    NSString *library = [root stringByAppendingPathComponent:@"Library"];
    NSString *defaults = [root stringByAppendingPathComponent:@"Defaults"];
    NSString *home = [root stringByAppendingPathComponent:@"Home"];
    for (NSString *folder in @[ defaults, home, [library stringByAppendingPathComponent:@"Preferences"] ])
        [[NSFileManager defaultManager] createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:NULL];
    NSMutableDictionary *config = GNUstepConfig(nil);
    [config setObject:library forKey:@"GNUSTEP_USER_DIR_LIBRARY"];
    [config setObject:defaults forKey:@"GNUSTEP_USER_DEFAULTS_DIR"];
    GNUstepConfig(config);
    setenv("HOME", [home fileSystemRepresentation], 1);
    return library;
}

NSString *MHUserLibraryFolder(void)
{
    return [NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES) firstObject];
}

NSString *MHPreferencesFilePath(void)
{
    return [MHUserLibraryFolder() stringByAppendingPathComponent:@"Preferences/org.lorvane.mailbundle.plist"];
}

NSString *MHRecentItemsFilePath(void)
{
    return [MHUserLibraryFolder() stringByAppendingPathComponent:@"Preferences/com.apple.recentitems.plist"];
}

BOOL MHWritePropertyList(id plist, NSString *path, BOOL binary)
{
    NSPropertyListFormat format = binary ? NSPropertyListBinaryFormat_v1_0 : NSPropertyListXMLFormat_v1_0;
    NSData *data = [NSPropertyListSerialization dataWithPropertyList:plist format:format options:0 error:NULL];
    [[NSFileManager defaultManager] createDirectoryAtPath:[path stringByDeletingLastPathComponent]
                              withIntermediateDirectories:YES
                                               attributes:nil
                                                    error:NULL];
    return data != nil && [data writeToFile:path atomically:YES];
}

BOOL MHSetRecentItemsLimit(int limit)
{
    NSDictionary *items = @{ @"RecentDocuments" : @{ @"MaxAmount" : @(limit) } };
    return MHWritePropertyList(items, MHRecentItemsFilePath(), YES);
}
