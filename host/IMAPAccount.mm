#import "IMAPAccount.h"

@implementation IMAPAccount

- (void)dealloc
{
    [_serverPathPrefix release];
    [super dealloc];
}

- (NSString *)serverPathPrefix
{
    return _serverPathPrefix;
}

- (void)setServerPathPrefix:(NSString *)prefix
{
    if (prefix == _serverPathPrefix)
        return;
    [_serverPathPrefix release];
    _serverPathPrefix = [prefix copy];
}

@end