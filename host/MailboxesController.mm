#import "MailboxesController.h"
#import "MailboxUid.h"
#import "MHMailboxIcons.h"

@implementation MailboxesController

+ (NSImage *)iconForMailboxUid:(MailboxUid *)mailbox smallSize:(BOOL)smallSize
{
    static NSMutableDictionary *icons;
    if (icons == nil)
        icons = [[NSMutableDictionary alloc] init];
    int kind = [MHMailboxIcons iconKindForMailboxType:mailbox != nil ? [mailbox type] : MHMailboxTypeGeneric];
    NSString *key = [NSString stringWithFormat:@"%d-%d", kind, smallSize ? 16 : 32];
    NSImage *icon = [icons objectForKey:key];
    if (icon != nil)
        return icon;
    icon = [MHMailboxIcons newIconForKind:kind size:smallSize ? 16 : 32];
    [icons setObject:icon forKey:key];
    [icon release];
    return icon;
}

- (void)setCurrentTransferMailbox:(MailboxUid *)mailbox deletedOriginals:(BOOL)deleteOriginals
{
    _currentTransferMailbox = mailbox;
    _currentTransferDeletesOriginals = deleteOriginals;
}

- (MailboxUid *)currentTransferMailbox
{
    return _currentTransferMailbox;
}

- (BOOL)currentTransferDeletesOriginals
{
    return _currentTransferDeletesOriginals;
}

@end
