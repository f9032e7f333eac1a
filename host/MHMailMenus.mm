#import "MHMailMenus.h"

#include <initializer_list>

namespace {

// One row of a menu: a null title is a separator; a null action leaves the item to be
// drawn disabled, as Mail's commands that the stand-in does not carry out.
struct MenuRow {
    const char *title;
    const char *action;
    const char *keyEquivalent;
};

struct MenuSpec {
    const char *title;
    std::initializer_list<MenuRow> rows;
};

const char *const goToTitle = "Go To";
const MenuRow separator = { nullptr, nullptr, "" };

} // namespace

@implementation MHMailMenus

// Mail's translated titles travel with the host itself, not with whichever program runs
// it (MailHost, a test, a benchmark): one folder of tables beside the host's sources.
static NSBundle *hostStrings(void)
{
    static NSBundle *strings;
    if (strings == nil)
        strings = [[NSBundle alloc] initWithPath:@MAILHOST_RESOURCES_DIR];
    return strings;
}

+ (NSString *)titleFor:(NSString *)englishTitle
{
    return [hostStrings() localizedStringForKey:englishTitle value:englishTitle table:@"MailHost"];
}

// Titles are UTF-8 C strings: they hold an ellipsis, which a constant NSString would not carry safely.
+ (NSString *)titleForUTF8:(const char *)englishTitle
{
    return [self titleFor:[NSString stringWithUTF8String:englishTitle]];
}

+ (NSMenuItem *)newItemForRow:(const MenuRow &)row
{
    if (row.title == nullptr)
        return (NSMenuItem *)[[NSMenuItem separatorItem] retain];
    SEL action = row.action != nullptr ? sel_registerName(row.action) : (SEL)0;
    return [[NSMenuItem alloc] initWithTitle:[self titleForUTF8:row.title]
                                      action:action
                               keyEquivalent:[NSString stringWithUTF8String:row.keyEquivalent]];
}

+ (NSMenu *)newMenuTitled:(const char *)title rows:(std::initializer_list<MenuRow>)rows
{
    NSMenu *menu = [[NSMenu alloc] initWithTitle:[self titleForUTF8:title]];
    for (const MenuRow &row : rows) {
        NSMenuItem *item = [self newItemForRow:row];
        [menu addItem:item];
        [item release];
    }
    return menu;
}

+ (void)addSubmenu:(NSMenu *)submenu toMenu:(NSMenu *)menu
{
    NSMenuItem *item = [[NSMenuItem alloc] initWithTitle:[submenu title] action:NULL keyEquivalent:@""];
    [menu addItem:item];
    [menu setSubmenu:submenu forItem:item];
    [item release];
}

// The Mailbox menu holds "Go To", whose items are the mailboxes; they are filled in later.
+ (void)addGoToSubmenuToMailboxMenu:(NSMenu *)mailboxMenu
{
    NSMenu *goTo = [[NSMenu alloc] initWithTitle:[self titleForUTF8:goToTitle]];
    NSMenuItem *item = [[NSMenuItem alloc] initWithTitle:[goTo title] action:NULL keyEquivalent:@""];
    [mailboxMenu insertItem:item atIndex:2];
    [mailboxMenu setSubmenu:goTo forItem:item];
    [item release];
    [goTo release];
}

+ (NSMenu *)newMainMenu
{
    static const MenuSpec menus[] = {
        { "Mail", { { "About Mail", "orderFrontStandardAboutPanel:", "" }, separator,
                    { "Preferences\u2026", nullptr, "," }, separator,
                    { "Hide Mail", "hide:", "h" }, separator,
                    { "Quit Mail", "terminate:", "q" } } },
        { "File", { { "New Message", nullptr, "n" }, { "New Viewer Window", "newViewerWindow:", "N" }, separator,
                    { "Close", "performClose:", "w" }, separator,
                    { "Print\u2026", nullptr, "p" } } },
        { "Edit", { { "Undo", "undo:", "z" }, { "Redo", "redo:", "Z" }, separator,
                    { "Cut", "cut:", "x" }, { "Copy", "copy:", "c" }, { "Paste", "paste:", "v" },
                    { "Select All", "selectAll:", "a" } } },
        { "View", { { "Show Toolbar", "toggleToolbarShown:", "" }, { "Hide Mailboxes", nullptr, "" } } },
        { "Mailbox", { { "Get All New Mail", nullptr, "N" }, separator,
                       separator,
                       { "New Mailbox\u2026", nullptr, "" }, { "Rename Mailbox\u2026", nullptr, "" },
                       { "Delete Mailbox\u2026", nullptr, "" } } },
        { "Message", { { "Reply", nullptr, "r" }, { "Reply All", nullptr, "R" }, { "Forward", nullptr, "f" },
                       separator,
                       { "Move To\u2026", "moveMessagesToMailbox:", "" },
                       { "Copy To\u2026", "copyMessagesToMailbox:", "" },
                       { "Move Again", nullptr, "" } } },
        { "Window", { { "Minimize", "performMiniaturize:", "m" }, { "Zoom", "performZoom:", "" }, separator,
                      { "Message Viewer", "showMessageViewer:", "" }, separator,
                      { "Bring All to Front", "arrangeInFront:", "" } } },
        { "Help", { { "Mail Help", "showHelp:", "?" } } },
    };
    NSMenu *mainMenu = [[NSMenu alloc] initWithTitle:[self titleForUTF8:"Mail"]];
    for (const MenuSpec &spec : menus) {
        NSMenu *menu = [self newMenuTitled:spec.title rows:spec.rows];
        if ([[menu title] isEqualToString:[self titleForUTF8:"Mailbox"]])
            [self addGoToSubmenuToMailboxMenu:menu];
        [self addSubmenu:menu toMenu:mainMenu];
        [menu release];
    }
    return mainMenu;
}

+ (NSMenu *)newMessageListContextualMenu
{
    return [self newMenuTitled:"Message"
                          rows:{ { "Open Message", nullptr, "" }, separator,
                                 { "Reply", nullptr, "" }, { "Forward", nullptr, "" }, separator,
                                 { "Move To\u2026", "moveMessagesToMailbox:", "" },
                                 { "Copy To\u2026", "copyMessagesToMailbox:", "" }, separator,
                                 { "Delete", nullptr, "" } }];
}

+ (NSMenu *)goToMenuInMainMenu:(NSMenu *)mainMenu
{
    NSMenuItem *item = [self itemTitled:[self titleForUTF8:goToTitle] inMenu:mainMenu];
    return [item submenu];
}

+ (NSMenuItem *)itemTitled:(NSString *)title inMenu:(NSMenu *)menu
{
    for (NSMenuItem *item in [menu itemArray]) {
        if ([[item title] isEqualToString:title])
            return item;
        NSMenuItem *found = [item hasSubmenu] ? [self itemTitled:title inMenu:[item submenu]] : nil;
        if (found != nil)
            return found;
    }
    return nil;
}

@end
