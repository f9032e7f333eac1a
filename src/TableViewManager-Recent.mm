#import "TableViewManager-Recent.h"
#import "MailInterfaces.h"

@implementation TableViewManager_LVAdditions

+ (void)lv_installInMail
{
    LVExtendMailClass("TableViewManager", self); // without it in this Mail, no contextual submenus
}

// Runs as TableViewManager.
- (NSMenu *)recentContextualMenu
{
    return [[(id<LVTableViewManager>)self tableView] menu];
}

@end
