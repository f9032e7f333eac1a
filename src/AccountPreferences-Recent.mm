#import "AccountPreferences-Recent.h"
#import "LorvaneBundle_Provider.h"
#import "MailInterfaces.h"

// Mail's own accountsDidChange:, run after the provider has been told.
static IMP _old_accountsDidChange_IMP = NULL;

@implementation AccountPreferences_MFAdditions

+ (void)lv_installInMail
{
    _old_accountsDidChange_IMP = LVPatchMailClass("AccountPreferences", self, @"accountsDidChange:");
}

// Runs as AccountPreferences. A removed account takes its mailboxes with it: the list
// is pruned, later, when a recent submenu next opens.
- (void)LVaccountsDidChange:(id)notification
{
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] signalRemoveDeletedMailboxes];
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] signalUpdateMenu];
    if (_old_accountsDidChange_IMP != NULL)
        ((void (*)(id, SEL, id))_old_accountsDidChange_IMP)(self, _cmd, notification);
}

@end
