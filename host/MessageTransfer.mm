#import "MessageTransfer.h"
#import "MHTransferOperation.h"

@implementation MessageTransfer

- (id)initWithMessagesAtPaths:(NSArray *)paths
           destinationMailbox:(MailboxUid *)destination
              deleteOriginals:(BOOL)deleteOriginals
{
    if (nil == (self = [super init]))
        return nil;
    NSMutableArray *operations = [NSMutableArray arrayWithCapacity:[paths count]];
    for (NSString *path in paths) {
        MHTransferOperation *operation = [[MHTransferOperation alloc] initWithMessageAtPath:path
                                                                         destinationMailbox:destination
                                                                            deletesOriginal:deleteOriginals];
        [operations addObject:operation];
        [operation release];
    }
    _operations = [operations copy];
    return self;
}

- (void)dealloc
{
    [_operations release];
    [super dealloc];
}

- (NSArray *)operations
{
    return _operations;
}

- (void)setDelegate:(id)delegate
{
    _delegate = delegate;
}

- (id)delegate
{
    return _delegate;
}

- (NSUInteger)perform
{
    NSUInteger arrived = 0;
    for (MHTransferOperation *operation in _operations)
        arrived += [operation perform] ? 1 : 0;
    if ([_delegate respondsToSelector:@selector(messageTransferDidFinish:)])
        [_delegate messageTransferDidFinish:self];
    return arrived;
}

@end
