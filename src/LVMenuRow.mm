#import "LVMenuRow.h"

// Spelled alike, code unit for code unit: GNUstep's -isEqualToString: also calls an "é" written
// as one character equal to one written as two, and a row must show its mailbox's own spelling.
static BOOL sameText(NSString *a, NSString *b)
{
    return a == b || (a != nil && b != nil && [a compare:b options:NSLiteralSearch] == NSOrderedSame);
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
