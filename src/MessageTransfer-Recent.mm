#import "MessageTransfer-Recent.h"
#import "LorvaneBundle_Provider.h"
#import "MailInterfaces.h"

// Mail's own -[MessageTransfer setDelegate:], run after the destination is recorded.
static IMP _old_setDelegate_IMP = NULL;

// Where the transfer's last operation goes, or nil when it has none. A function, not a
// method, so that Mail's MessageTransfer gains no selector beyond its hook.
static id<LVMailboxUid> lastDestinationOfTransfer(id transfer)
{
    id<LVTransferOperation> lastOperation = [[transfer valueForKey:@"_operations"] lastObject];
    return [lastOperation destinationMailboxUid];
}

@implementation MessageTransfer_LVAdditions

+ (void)lv_installInMail
{
    _old_setDelegate_IMP = LVPatchMailClass("MessageTransfer", self, @"setDelegate:");
}

// Runs as MessageTransfer. Mail makes a viewer the delegate of the moves and copies the
// user starts there; transfers Mail runs for itself (and viewers of a more special
// kind) have other delegates and do not count as the user's choice of mailbox.
- (void)LVsetDelegate:(id)delegate
{
    if ([delegate isMemberOfClass:LVMailClass(@"MessageViewer")]) {
        id<LVMailboxUid> destination = lastDestinationOfTransfer(self);
        if (destination != nil)
            [[LorvaneBundle_Provider activeLorvaneBundle_Provider] addOrTouchRecentMailboxFromUid:destination];
    }
    if (_old_setDelegate_IMP != NULL)
        ((void (*)(id, SEL, id))_old_setDelegate_IMP)(self, _cmd, delegate);
}

@end
