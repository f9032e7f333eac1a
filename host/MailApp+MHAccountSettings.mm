#import "MailApp+MHAccountSettings.h"
#import "AccountPreferences.h"
#import "MailAccount.h"
#import "MailboxUid+MHStore.h"

@interface MailAccount (MHAccountSettings)
- (void)takeDisplayName:(NSString *)name;
@end

@interface MailboxUid (MHAccountSettings)
- (void)takeType:(int)type;
@end

@implementation MailAccount (MHAccountSettings)

// The mailboxes of an account in memory have paths made from the account's name.
- (void)takeDisplayName:(NSString *)name
{
    NSString *copied = [name copy];
    [_displayName release];
    _displayName = copied;
    for (MailboxUid *mailbox in [self allMailboxUids])
        [mailbox refreshPaths];
}

@end

@implementation MailboxUid (MHAccountSettings)

- (void)takeType:(int)type
{
    _type = type;
}

@end

@implementation MailApp (MHAccountSettings)

- (void)renameAccount:(MailAccount *)account toName:(NSString *)name
{
    [account takeDisplayName:name];
    [[AccountPreferences sharedPreferences] accountsDidChange:self];
}

- (void)useMailbox:(MailboxUid *)mailbox asMailboxOfType:(int)type
{
    [mailbox takeType:type];
    [[AccountPreferences sharedPreferences] accountsDidChange:self];
}

@end
