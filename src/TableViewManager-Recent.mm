#import "TableViewManager-Recent.h"
#import "Utilities.h"
#import "MailInterfaces.h"

@implementation TableViewManager_LVAdditions

+ (void)load
{
    Class hostClass = LVMailClass("TableViewManager");
    if (hostClass == Nil)
        return; // no message list manager in this Mail: no contextual submenus
    [LVBundleUtilities extendClass:hostClass withMethodsFromClass:self];
}

// Runs as TableViewManager.
- (NSMenu *)recentContextualMenu
{
    return [[(id<LVTableViewManager>)self tableView] menu];
}

@end
