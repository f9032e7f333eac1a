#import "AccountPreferences.h"
#import "MailApp.h"

@implementation AccountPreferences

+ (AccountPreferences *)sharedPreferences
{
    static AccountPreferences *shared;
    if (shared == nil)
        shared = [[AccountPreferences alloc] init];
    return shared;
}

- (void)accountsDidChange:(id)sender
{
    (void)sender;
    if ([NSApp isKindOfClass:[MailApp class]])
        [(MailApp *)NSApp mailboxesDidChange];
}

@end
