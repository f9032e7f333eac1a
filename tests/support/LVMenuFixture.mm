#import "LVMenuFixture.h"

const char *const LVFamilyNames[5] = { "move", "copy", "go-to", "move-contextual", "copy-contextual" };

void LVStartMailWithPlugin(void)
{
    static BOOL started = NO;
    if (started)
        return;
    started = YES;
    MHSetRecordsAlerts(YES);
    [MailApp sharedMailApp];
    // Mail's own instance of the plug-in needs a usable limit, or its failure would leave
    // every later provider inert.
    MHSetRecentItemsLimit(10);
    LVLoadPluginBundle();
    MHClearRecordedAlerts();
}

NSMenu *LVInstallFreshMainMenu(void)
{
    NSMenu *mainMenu = [MHMailMenus newMainMenu];
    [NSApp setMainMenu:mainMenu];
    [mainMenu release];
    return mainMenu;
}

LorvaneBundle_Provider *LVMakeProvider(int limit)
{
    LVStartMailWithPlugin();
    MHSetRecentItemsLimit(limit);
    return [[LVPluginClass("LorvaneBundle_Provider") alloc] init];
}

NSArray *LVRecentSubmenus(LorvaneBundle_Provider *provider)
{
    return @[
        [provider moveToRecentSubmenu], [provider copyToRecentSubmenu], [provider goToRecentSubmenu],
        [provider moveToRecentContextualSubmenu], [provider copyToRecentContextualSubmenu]
    ];
}

NSArray *LVPremadeItemArrays(LorvaneBundle_Provider *provider)
{
    return @[
        [provider valueForKey:@"_moveToRecentSubmenuItems"], [provider valueForKey:@"_copyToRecentSubmenuItems"],
        [provider valueForKey:@"_goToRecentSubmenuItems"], [provider valueForKey:@"_moveToRecentContextualSubmenuItems"],
        [provider valueForKey:@"_copyToRecentContextualSubmenuItems"]
    ];
}

NSMenuItem *LVItemAfterItem(NSMenuItem *item)
{
    NSMenu *menu = [item menu];
    NSInteger next = [menu indexOfItem:item] + 1;
    return next < [menu numberOfItems] ? (NSMenuItem *)[menu itemAtIndex:next] : nil;
}

static NSMenuItem *firstItemWithAction(NSMenu *menu, SEL action)
{
    for (NSMenuItem *item in [menu itemArray]) {
        if (sel_isEqual([item action], action))
            return item;
        NSMenuItem *found = [item hasSubmenu] ? firstItemWithAction([item submenu], action) : nil;
        if (found != nil)
            return found;
    }
    return nil;
}

NSMenuItem *LVItemAfterItemWithAction(NSMenu *menu, SEL action)
{
    NSMenuItem *item = firstItemWithAction(menu, action);
    return item != nil ? LVItemAfterItem(item) : nil;
}

NSMenuItem *LVItemAfterSubmenu(NSMenu *submenu)
{
    NSMenu *supermenu = [submenu supermenu];
    NSInteger index = [supermenu indexOfItemWithSubmenu:submenu];
    return index >= 0 ? LVItemAfterItem((NSMenuItem *)[supermenu itemAtIndex:index]) : nil;
}

NSArray *LVRecordedStartupAlerts(void)
{
    NSMutableArray *alerts = [NSMutableArray array];
    for (NSDictionary *alert in MHRecordedAlerts())
        if ([[alert objectForKey:MHAlertTitleKey] isEqualToString:@"Lorvane Plugin Notification"])
            [alerts addObject:alert];
    return alerts;
}
