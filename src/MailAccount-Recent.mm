#import "MailAccount-Recent.h"
#import "LorvaneBundle_Provider.h"
#import "MailInterfaces.h"

// Mail's own deleteMailbox:reflectToServer:, run after the provider has been told.
static IMP _old_deleteMailbox_IMP = NULL;

@implementation MailAccount_LVAdditions

+ (void)lv_installInMail
{
    _old_deleteMailbox_IMP = LVPatchMailClass("MailAccount", self, @"deleteMailbox:reflectToServer:");
}

// Runs as MailAccount, before Mail deletes the mailbox: only marks the work, which the
// next opening of a recent submenu does once the mailbox is really gone.
- (BOOL)LVdeleteMailbox:(id)mailbox reflectToServer:(BOOL)reflectToServer
{
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] signalRemoveDeletedMailboxes];
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] signalUpdateMenu];
    if (_old_deleteMailbox_IMP == NULL)
        return NO;
    BOOL deleted = ((BOOL(*)(id, SEL, id, BOOL))_old_deleteMailbox_IMP)(self, _cmd, mailbox, reflectToServer);
    return deleted ? YES : NO;
}

@end
