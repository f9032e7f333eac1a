#import "NSToolbar-Recent.h"
#import "LorvaneBundle_Provider.h"
#import "MessageViewer-Recent.h"
#import "TableViewManager-Recent.h"
#import "MailInterfaces.h"

BOOL didSetContextualMenuDelegate = NO;

// AppKit's own -[NSToolbar setDelegate:], run after the contextual submenus are placed.
static IMP _oldSetDelegateIMP = NULL;

// The message list's contextual menu, or nil. A Mail whose table manager class has another
// name never received recentContextualMenu: its viewers count as having no message list,
// rather than raising inside Mail while it opens a window.
static NSMenu *contextualMenuOfViewer(id viewer)
{
    id tableManager = [viewer recentTableManager];
    if (![tableManager respondsToSelector:@selector(recentContextualMenu)])
        return nil;
    return [tableManager recentContextualMenu];
}

@implementation NSToolbar_LVAdditions

+ (void)lv_installInMail
{
    _oldSetDelegateIMP = LVPatchMailClass("NSToolbar", self, @"setDelegate:");
}

// Runs as NSToolbar. A viewer's toolbar getting its delegate is the first moment the
// viewer's message list, and so its contextual menu, can be reached. One contextual
// menu serves every viewer, so this happens once, even when the menu could not be had.
- (void)LVsetDelegate:(id)delegate
{
    if ([delegate isKindOfClass:LVMailClass(@"MessageViewer")] && !didSetContextualMenuDelegate) {
        NSMenu *contextualMenu = contextualMenuOfViewer(delegate);
        [[LorvaneBundle_Provider activeLorvaneBundle_Provider] createContextualSubmenusUnderMenu:contextualMenu];
        didSetContextualMenuDelegate = YES;
    }
    if (_oldSetDelegateIMP != NULL)
        ((void (*)(id, SEL, id))_oldSetDelegateIMP)(self, _cmd, delegate);
}

@end
