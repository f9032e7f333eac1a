/*
 * Where the plug-in puts a new item in a menu tree: right below the first match of a
 * pre-order walk, as a sibling, through LVBundleUtilities loaded from the built bundle.
 */
#import "LVTestSupport.h"
#import "Utilities.h"

#include <objc/runtime.h>

namespace {

NSMenuItem *plainItem(NSString *title, SEL action)
{
    return [[[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:@""] autorelease];
}

NSMenuItem *submenuItem(NSString *title, NSArray *children)
{
    NSMenu *submenu = [[[NSMenu alloc] initWithTitle:title] autorelease];
    for (NSMenuItem *child in children)
        [submenu addItem:child];
    NSMenuItem *item = plainItem(title, NULL);
    [item setSubmenu:submenu];
    return item;
}

NSMenu *menuWithItems(NSString *title, NSArray *items)
{
    NSMenu *menu = [[[NSMenu alloc] initWithTitle:title] autorelease];
    for (NSMenuItem *item in items)
        [menu addItem:item];
    return menu;
}

// "<menu title>/<index>" of the first item titled so, in pre-order; "" when there is none.
NSString *placeOfItemTitled(NSString *title, NSMenu *menu)
{
    NSArray *items = [menu itemArray];
    for (NSUInteger i = 0; i < [items count]; i++) {
        NSMenuItem *item = [items objectAtIndex:i];
        if ([[item title] isEqualToString:title])
            return [NSString stringWithFormat:@"%@/%lu", [menu title], (unsigned long)i];
        NSString *deeper = [item submenu] != nil ? placeOfItemTitled(title, [item submenu]) : @"";
        if ([deeper length] > 0)
            return deeper;
    }
    return @"";
}

class MenuPlacement : public LVBundleUtilitiesTest {
protected:
    NSMenuItem *insertBelowAction(NSMenu *menu, SEL sought, NSString *keyEquivalent)
    {
        return [[utilities newMenuItemWithTitle:@"Inserted" action:@selector(insertedAction:) andKeyEquivalent:keyEquivalent
                                         inMenu:menu underItemWithSelector:sought] autorelease];
    }

    NSMenuItem *insertBelowSubmenu(NSMenu *menu, NSString *sought, NSString *keyEquivalent)
    {
        return [[utilities newMenuItemWithTitle:@"Inserted" action:@selector(insertedAction:) andKeyEquivalent:keyEquivalent
                                         inMenu:menu underSubmenuWithTitle:sought] autorelease];
    }
};

} // namespace

TEST_F(MenuPlacement, ItemGoesRightBelowTheFirstItemWithTheActionAsASiblingWithoutTarget)
{
    NSMenu *menu = menuWithItems(@"Main", @[ plainItem(@"Reply", @selector(reply:)), plainItem(@"Move To…", @selector(moveMessagesToMailbox:)),
                                             plainItem(@"Delete", @selector(delete:)) ]);
    NSMenuItem *inserted = insertBelowAction(menu, @selector(moveMessagesToMailbox:), @"");

    ASSERT_TRUE(inserted != nil);
    EXPECT_EQ(inserted, [menu itemAtIndex:2]);
    EXPECT_NSEQ(@"Inserted", [inserted title]);
    EXPECT_TRUE(sel_isEqual(@selector(insertedAction:), [inserted action]));
    EXPECT_TRUE([inserted target] == nil);
    EXPECT_FALSE([inserted hasSubmenu]);
    EXPECT_EQ(4, [menu numberOfItems]);
    // The caller gets its own reference besides the menu's.
    EXPECT_GE([inserted retainCount], 2u);
}

TEST_F(MenuPlacement, NilKeyEquivalentBecomesTheEmptyStringInBothSearches)
{
    NSMenu *byAction = menuWithItems(@"Main", @[ plainItem(@"Move To…", @selector(moveMessagesToMailbox:)) ]);
    NSMenu *byTitle = menuWithItems(@"Main", @[ submenuItem(@"Go To", @[ plainItem(@"Inbox", @selector(goToInbox:)) ]) ]);

    NSMenuItem *belowAction = insertBelowAction(byAction, @selector(moveMessagesToMailbox:), nil);
    NSMenuItem *belowSubmenu = insertBelowSubmenu(byTitle, @"Go To", nil);

    ASSERT_TRUE(belowAction != nil);
    ASSERT_TRUE(belowSubmenu != nil);
    EXPECT_NSEQ(@"", [belowAction keyEquivalent]);
    EXPECT_NSEQ(@"", [belowSubmenu keyEquivalent]);
    EXPECT_NSEQ(@"Main/1", placeOfItemTitled(@"Inserted", byTitle));
}

TEST_F(MenuPlacement, GivenKeyEquivalentIsKept)
{
    NSMenu *menu = menuWithItems(@"Main", @[ plainItem(@"Move To…", @selector(moveMessagesToMailbox:)) ]);
    NSMenuItem *inserted = insertBelowAction(menu, @selector(moveMessagesToMailbox:), @"m");
    ASSERT_TRUE(inserted != nil);
    EXPECT_NSEQ(@"m", [inserted keyEquivalent]);
}

TEST_F(MenuPlacement, SearchByActionFindsTheFirstMatchInPreOrder)
{
    struct Row {
        const char *name;
        NSMenu *menu;
        NSString *expectedPlace;
    };
    const Row rows[] = {
        { "a match two levels down in the first menu wins over a later top-level match",
          menuWithItems(@"Main", @[ submenuItem(@"Message", @[ submenuItem(@"More", @[ plainItem(@"Move To…", @selector(moveMessagesToMailbox:)) ]) ]),
                                    plainItem(@"Move To…", @selector(moveMessagesToMailbox:)) ]),
          @"More/1" },
        { "the walk goes on into later submenus after an earlier one had no match",
          menuWithItems(@"Main", @[ submenuItem(@"File", @[ plainItem(@"Close", @selector(performClose:)) ]),
                                    submenuItem(@"Message", @[ plainItem(@"Reply", @selector(reply:)), plainItem(@"Move To…", @selector(moveMessagesToMailbox:)) ]) ]),
          @"Message/2" },
        { "of two matches in one menu the upper one wins",
          menuWithItems(@"Message", @[ plainItem(@"Move To…", @selector(moveMessagesToMailbox:)), plainItem(@"Again", @selector(moveMessagesToMailbox:)) ]),
          @"Message/1" },
        { "no match leaves the tree alone",
          menuWithItems(@"Main", @[ submenuItem(@"Message", @[ plainItem(@"Reply", @selector(reply:)) ]) ]),
          @"" },
    };
    for (const Row &row : rows) {
        NSMenuItem *inserted = insertBelowAction(row.menu, @selector(moveMessagesToMailbox:), @"");
        EXPECT_EQ([row.expectedPlace length] > 0, inserted != nil) << row.name;
        EXPECT_NSEQ(row.expectedPlace, placeOfItemTitled(@"Inserted", row.menu)) << row.name;
    }
}

TEST_F(MenuPlacement, SearchBySubmenuTitleNeedsASubmenuAndTheExactTitle)
{
    struct Row {
        const char *name;
        NSMenu *menu;
        NSString *expectedPlace;
    };
    const Row rows[] = {
        { "an item with the title but no submenu is passed over",
          menuWithItems(@"Mailbox", @[ plainItem(@"Go To", @selector(goTo:)), submenuItem(@"Go To", @[]) ]),
          @"Mailbox/2" },
        { "a title that differs only in case is passed over",
          menuWithItems(@"Mailbox", @[ submenuItem(@"go to", @[]), submenuItem(@"Go To", @[]) ]),
          @"Mailbox/2" },
        { "a matching item is tested before its own submenu is searched",
          menuWithItems(@"Main", @[ submenuItem(@"Go To", @[ submenuItem(@"Go To", @[]) ]) ]),
          @"Main/1" },
        { "a match nested in the first menu wins over a later top-level match",
          menuWithItems(@"Main", @[ submenuItem(@"Mailbox", @[ submenuItem(@"Go To", @[]) ]), submenuItem(@"Go To", @[]) ]),
          @"Mailbox/1" },
        { "no submenu with the title leaves the tree alone",
          menuWithItems(@"Main", @[ submenuItem(@"Mailbox", @[ plainItem(@"Go To", @selector(goTo:)) ]) ]),
          @"" },
    };
    for (const Row &row : rows) {
        NSMenuItem *inserted = insertBelowSubmenu(row.menu, @"Go To", @"");
        EXPECT_EQ([row.expectedPlace length] > 0, inserted != nil) << row.name;
        EXPECT_NSEQ(row.expectedPlace, placeOfItemTitled(@"Inserted", row.menu)) << row.name;
        EXPECT_FALSE(inserted != nil && [inserted hasSubmenu]) << row.name;
    }
}

TEST_F(MenuPlacement, ItemPlacedBelowAnotherInsertedItemFindsItByItsAction)
{
    // How "Copy to Recent" lands right under "Move to Recent": found by the action just given.
    NSMenu *menu = menuWithItems(@"Message", @[ plainItem(@"Move To…", @selector(moveMessagesToMailbox:)), plainItem(@"Delete", @selector(delete:)) ]);
    NSMenuItem *move = [[utilities newMenuItemWithTitle:@"Move to Recent" action:@selector(moveToRecentFromSubmenu:) andKeyEquivalent:@""
                                                 inMenu:menu underItemWithSelector:@selector(moveMessagesToMailbox:)] autorelease];
    NSMenuItem *copy = [[utilities newMenuItemWithTitle:@"Copy to Recent" action:@selector(copyToRecentFromSubmenu:) andKeyEquivalent:@""
                                                 inMenu:menu underItemWithSelector:@selector(moveToRecentFromSubmenu:)] autorelease];
    ASSERT_TRUE(move != nil);
    ASSERT_TRUE(copy != nil);
    NSMutableArray *titles = [NSMutableArray array];
    for (NSMenuItem *item in [menu itemArray])
        [titles addObject:[item title]];
    EXPECT_NSEQ((@[ @"Move To…", @"Move to Recent", @"Copy to Recent", @"Delete" ]), titles);
}

TEST_F(MenuPlacement, NilMenuGivesNil)
{
    EXPECT_TRUE(insertBelowAction(nil, @selector(moveMessagesToMailbox:), @"") == nil);
    EXPECT_TRUE(insertBelowSubmenu(nil, @"Go To", @"") == nil);
}
