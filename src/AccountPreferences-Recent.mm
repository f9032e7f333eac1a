#import "AccountPreferences-Recent.h"
#import "LorvaneBundle_Provider.h"
#import "Utilities.h"
#import "MailInterfaces.h"

// Mail's own accountsDidChange:, run after the provider has been told.
static IMP _old_accountsDidChange_IMP = NULL;

@implementation AccountPreferences_MFAdditions

+ (void)load
{
    Class hostClass = LVExtendMailClass("AccountPreferences", self);
    if (hostClass == Nil)
        return; // no account preferences in this Mail: nothing to patch
    _old_accountsDidChange_IMP = [LVBundleUtilities swizzleInstanceMethod:@"accountsDidChange:" forClass:hostClass];
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
