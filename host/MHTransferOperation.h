/*
 * One message of a transfer: which file goes to which mailbox, and whether the original
 * stays behind. MessageTransfer keeps these in its private "_operations".
 */
#import <Foundation/Foundation.h>

@class MailboxUid;

@interface MHTransferOperation : NSObject
{
    NSString *_sourcePath;
    MailboxUid *_destinationMailboxUid;
    BOOL _deletesOriginal;
    NSString *_resultPath;      // where the message ended up; nil until done or on failure
}

- (id)initWithMessageAtPath:(NSString *)sourcePath
         destinationMailbox:(MailboxUid *)destination
            deletesOriginal:(BOOL)deletesOriginal;

- (NSString *)sourcePath;
- (MailboxUid *)destinationMailboxUid;
- (BOOL)deletesOriginal;
- (NSString *)resultPath;

/* Moves or copies the file into the destination; YES when it arrived. */
- (BOOL)perform;

@end
