#import "MHScreenshot.h"

@implementation MHScreenshot

// The menus from the top level down to this one.
+ (NSArray *)menuChainEndingAt:(NSMenu *)menu
{
    NSMutableArray *chain = [NSMutableArray array];
    for (NSMenu *level = menu; level != nil; level = [level supermenu])
        [chain insertObject:level atIndex:0];
    return chain;
}

// A contextual menu has no menu above it: it is shown over the message list, as a right click would.
+ (void)showTopLevelMenu:(NSMenu *)menu nearView:(NSView *)view
{
    if (menu == [NSApp mainMenu] || view == nil)
        return;
    NSRect inWindow = [view convertRect:[view bounds] toView:nil];
    NSPoint topLeft = [[view window] convertBaseToScreen:NSMakePoint(NSMinX(inWindow) + 120, NSMaxY(inWindow) - 60)];
    [menu update];
    [menu sizeToFit];
    [menu nestedSetFrameOrigin:NSMakePoint(topLeft.x, topLeft.y - [[menu window] frame].size.height)];
    [menu display];
}

// GNUstep puts a contextual menu's submenu level with the menu's top; a click puts it
// level with the item that carries it.
+ (void)alignSubmenu:(NSMenu *)child withItemAtIndex:(NSInteger)index ofView:(NSMenuView *)view
{
    NSRect item = [view convertRect:[view rectOfItemAtIndex:index] toView:nil];
    NSWindow *parentWindow = [view window];
    NSPoint itemTop = [parentWindow convertBaseToScreen:NSMakePoint(NSMaxX(item), NSMaxY(item))];
    CGFloat height = [[child window] frame].size.height;
    [child nestedSetFrameOrigin:NSMakePoint(NSMaxX([parentWindow frame]), itemTop.y - height)];
}

+ (void)openChain:(NSArray *)chain
{
    BOOL contextual = [chain firstObject] != [NSApp mainMenu];
    for (NSUInteger i = 0; i + 1 < [chain count]; i++) {
        NSMenu *parent = [chain objectAtIndex:i];
        NSMenu *child = [chain objectAtIndex:i + 1];
        NSInteger index = [parent indexOfItemWithSubmenu:child];
        NSMenuView *view = (NSMenuView *)[parent menuRepresentation];
        [child update];
        [view setHighlightedItemIndex:index];
        [view attachSubmenuForItemAtIndex:index];
        if (contextual)
            [self alignSubmenu:child withItemAtIndex:index ofView:view];
    }
    // Each menu's window draws itself in full only when asked.
    for (NSMenu *menu in chain)
        [[menu window] display];
}

+ (void)closeChain:(NSArray *)chain
{
    for (NSInteger i = (NSInteger)[chain count] - 2; i >= 0; i--) {
        NSMenuView *view = (NSMenuView *)[[chain objectAtIndex:(NSUInteger)i] menuRepresentation];
        [view detachSubmenu];
        [view setHighlightedItemIndex:-1];
    }
    NSMenu *top = [chain firstObject];
    if (top != nil && top != [NSApp mainMenu])
        [top close];
}

+ (BOOL)captureScreenToFile:(NSString *)path error:(NSString **)problem
{
    NSTask *task = [[[NSTask alloc] init] autorelease];
    [task setLaunchPath:@"/usr/bin/import"];
    [task setArguments:@[ @"-window", @"root", path ]];
    @try {
        [task launch];
        [task waitUntilExit];
    } @catch (NSException *exception) {
        *problem = [NSString stringWithFormat:@"could not run /usr/bin/import: %@", [exception reason]];
        return NO;
    }
    if ([task terminationStatus] == 0)
        return YES;
    *problem = [NSString stringWithFormat:@"/usr/bin/import failed with status %d", [task terminationStatus]];
    return NO;
}

// The X root window is black; a desktop-coloured window behind everything looks like a
// Mac's desktop. Without a window manager window levels do not stack windows, so every
// other visible window is brought up again over it.
+ (void)paintBackdrop
{
    static NSWindow *backdrop;
    if (backdrop != nil)
        return;
    NSArray *visible = [[[NSApp windows] filteredArrayUsingPredicate:[NSPredicate predicateWithFormat:@"isVisible == YES"]] retain];
    NSRect screen = [[NSScreen mainScreen] frame];
    backdrop = [[NSWindow alloc] initWithContentRect:screen styleMask:NSBorderlessWindowMask backing:NSBackingStoreBuffered defer:NO];
    [backdrop setBackgroundColor:[NSColor colorWithCalibratedRed:0.36 green:0.52 blue:0.70 alpha:1.0]];
    [backdrop setLevel:NSDesktopWindowLevel];
    [backdrop setExcludedFromWindowsMenu:YES];
    [backdrop orderFront:nil];
    [backdrop display];
    for (NSWindow *window in visible)
        [window orderFront:nil];
    [visible release];
}

+ (BOOL)saveScreenToFile:(NSString *)path showingMenu:(NSMenu *)menu nearView:(NSView *)view error:(NSString **)problem
{
    [self paintBackdrop];
    NSArray *chain = menu != nil ? [self menuChainEndingAt:menu] : @[];
    if ([chain count] > 0)
        [self showTopLevelMenu:[chain firstObject] nearView:view];
    [self openChain:chain];
    // Drawing happens as the run loop turns.
    [[NSRunLoop currentRunLoop] runUntilDate:[NSDate dateWithTimeIntervalSinceNow:1.0]];
    NSString *failure = nil;
    BOOL saved = [self captureScreenToFile:path error:&failure];
    [self closeChain:chain];
    if (!saved && problem != NULL)
        *problem = failure;
    return saved;
}

@end
