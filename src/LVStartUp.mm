#import "LVStartUp.h"
#import "AccountPreferences-Recent.h"
#import "LorvaneBundle_Provider.h"
#import "MailAccount-Recent.h"
#import "MailApp-Recent.h"
#import "MessageTransfer-Recent.h"
#import "MessageViewer-Recent.h"
#import "NSToolbar-Recent.h"
#import "TableViewManager-Recent.h"

@implementation LVStartUp

// The patches go in even when the gate refused this system: they then find no provider to
// tell, and Mail's own methods run as before.
+ (void)load
{
    [LorvaneBundle_Provider lv_startInMail];
    [AccountPreferences_MFAdditions lv_installInMail];
    [MailAccount_LVAdditions lv_installInMail];
    [MailApp_LVAdditions lv_installInMail];
    [MessageTransfer_LVAdditions lv_installInMail];
    [MessageViewer_LVAdditions lv_installInMail];
    [NSToolbar_LVAdditions lv_installInMail];
    [TableViewManager_LVAdditions lv_installInMail];
}

@end
