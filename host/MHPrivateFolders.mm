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
