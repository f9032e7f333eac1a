#import "LVMenuRow.h"
#import "LVMailboxNames.h"

// A row must show its mailbox's own spelling; a row without a tool tip equals one without.
static BOOL sameText(NSString *a, NSString *b)
{
    return a == b || LVSameSpelling(a, b);
}

@implementation LVMenuRow

- (id)initWithRecord:(LorvaneMailbox *)record title:(NSString *)title toolTip:(NSString *)toolTip icon:(NSImage *)icon
{
    if (nil == (self = [super init]))
        return nil;
    _record = [(id)record retain];
    _title = [title copy];
    _toolTip = [toolTip copy];
    _icon = [icon retain];
    return self;
}

- (void)dealloc
{
    [(id)_record release];
    [_title release];
    [_toolTip release];
    [_icon release];
    [super dealloc];
}

- (LorvaneMailbox *)record
{
    return _record;
}

- (NSString *)title
{
    return _title;
}

- (NSString *)toolTip
{
    return _toolTip;
}

- (NSImage *)icon
{
    return _icon;
}

- (BOOL)isEqual:(id)other
{
    if (other == self)
        return YES;
    if (![other isKindOfClass:[LVMenuRow class]])
        return NO;
    LVMenuRow *row = other;
    return _record == [row record] && _icon == [row icon] && sameText(_title, [row title]) && sameText(_toolTip, [row toolTip]);
}

- (NSUInteger)hash
{
    return [_title hash];
}

@end
