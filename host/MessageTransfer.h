/*
 * Mail's transfer of messages between mailboxes. Mail makes one for each move or copy,
 * sets the viewer that asked for it as its delegate (plug-ins watch that call), then
 * carries it out and tells the delegate it finished.
 */
#import <Foundation/Foundation.h>

@class MailboxUid;

@interface MessageTransfer : NSObject
{
    NSArray *_operations;       // MHTransferOperation, one per message, in order
    id _delegate;               // not retained
}

/* One operation per message file, each to the same destination. */
- (id)initWithMessagesAtPaths:(NSArray *)paths
           destinationMailbox:(MailboxUid *)destination
              deleteOriginals:(BOOL)deleteOriginals;

- (NSArray *)operations;
- (void)setDelegate:(id)delegate;
- (id)delegate;

/* Carries out every operation, then sends messageTransferDidFinish: to the delegate.
   Answers how many messages arrived. */
- (NSUInteger)perform;

@end

@interface NSObject (MessageTransferDelegate)
- (void)messageTransferDidFinish:(MessageTransfer *)transfer;
@end
