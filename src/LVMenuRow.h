#import <AppKit/AppKit.h>

@class LorvaneMailbox;

/*
 * One recent item as the submenus show it: the record it stands for, its title, tool tip and
 * icon. A row never changes: an item that reads otherwise shows another row. Two rows are
 * equal when they stand for the same record with the same icon object and equal texts.
 */
@interface LVMenuRow : NSObject
{
    LorvaneMailbox *_record; // retained
    NSString *_title;
    NSString *_toolTip;
    NSImage *_icon;
}

- (id)initWithRecord:(LorvaneMailbox *)record title:(NSString *)title toolTip:(NSString *)toolTip icon:(NSImage *)icon;

- (LorvaneMailbox *)record;
- (NSString *)title;
- (NSString *)toolTip;
- (NSImage *)icon;

@end
