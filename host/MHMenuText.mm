#import "MHMenuText.h"

NSString *const MHMenuItemTitleKey = @"title";
NSString *const MHMenuItemEnabledKey = @"enabled";
NSString *const MHMenuItemSeparatorKey = @"separator";
NSString *const MHMenuItemToolTipKey = @"toolTip";

@implementation MHMenuText

+ (NSDictionary *)describeItem:(NSMenuItem *)item
{
    NSMutableDictionary *description = [NSMutableDictionary dictionary];
    [description setObject:[item title] ?: @"" forKey:MHMenuItemTitleKey];
    [description setObject:[NSNumber numberWithBool:[item isEnabled]] forKey:MHMenuItemEnabledKey];
    [description setObject:[NSNumber numberWithBool:[item isSeparatorItem]] forKey:MHMenuItemSeparatorKey];
    if ([[item toolTip] length] > 0)
        [description setObject:[item toolTip] forKey:MHMenuItemToolTipKey];
    return description;
}

+ (NSArray *)itemsOfMenu:(NSMenu *)menu
{
    NSMutableArray *items = [NSMutableArray array];
    for (NSMenuItem *item in [menu itemArray])
        [items addObject:[self describeItem:item]];
    return items;
}

+ (NSString *)lineForItem:(NSDictionary *)item index:(NSUInteger)index
{
    if ([[item objectForKey:MHMenuItemSeparatorKey] boolValue])
        return [NSString stringWithFormat:@"    %2lu  --------", (unsigned long)index];
    NSMutableString *line = [NSMutableString stringWithFormat:@"    %2lu  %@", (unsigned long)index, [item objectForKey:MHMenuItemTitleKey]];
    if (![[item objectForKey:MHMenuItemEnabledKey] boolValue])
        [line appendString:@"  (disabled)"];
    NSString *toolTip = [item objectForKey:MHMenuItemToolTipKey];
    if (toolTip != nil)
        [line appendFormat:@"  tip: %@", toolTip];
    return line;
}

+ (NSArray *)linesForItems:(NSArray *)items
{
    NSMutableArray *lines = [NSMutableArray arrayWithCapacity:[items count]];
    for (NSUInteger i = 0; i < [items count]; i++)
        [lines addObject:[self lineForItem:[items objectAtIndex:i] index:i]];
    return lines;
}

@end
