#import "MHTransferOperation.h"
#import "MailboxUid.h"

@implementation MHTransferOperation

- (id)initWithMessageAtPath:(NSString *)sourcePath
         destinationMailbox:(MailboxUid *)destination
            deletesOriginal:(BOOL)deletesOriginal
{
    if (nil == (self = [super init]))
        return nil;
    _sourcePath = [sourcePath copy];
    _destinationMailboxUid = [destination retain];
    _deletesOriginal = deletesOriginal;
    return self;
}

- (void)dealloc
{
    [_sourcePath release];
    [_destinationMailboxUid release];
    [_resultPath release];
    [super dealloc];
}

- (NSString *)sourcePath
{
    return _sourcePath;
}

- (MailboxUid *)destinationMailboxUid
{
    return _destinationMailboxUid;
}

- (BOOL)deletesOriginal
{
    return _deletesOriginal;
}

- (NSString *)resultPath
{
    return _resultPath;
}

- (BOOL)perform
{
    NSString *arrived = [_destinationMailboxUid receiveMessageAtPath:_sourcePath deleteOriginal:_deletesOriginal];
    [_resultPath release];
    _resultPath = [arrived copy];
    if (arrived == nil)
        NSLog(@"MailHost could not transfer %@ to %@", _sourcePath, [_destinationMailboxUid fullPath]);
    return arrived != nil;
}

@end
