#import "MHUserLibrary.h"

NSString *MHUserLibraryFolder(void)
{
    return [NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES) firstObject];
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
    NSDictionary *documents = [NSDictionary dictionaryWithObject:[NSNumber numberWithInt:limit] forKey:@"MaxAmount"];
    NSDictionary *items = [NSDictionary dictionaryWithObject:documents forKey:@"RecentDocuments"];
    return MHWritePropertyList(items, MHRecentItemsFilePath(), YES);
}
