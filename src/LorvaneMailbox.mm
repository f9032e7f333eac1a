#import "LorvaneMailbox.h"

#include <cmath>
#include <cstdio>

@implementation LorvaneMailbox

- (id)init
{
    if (nil == (self = [super init]))
        return nil;
    _uid = nil;
    _accesses = 1;
    _date = [[NSDate date] retain];
    _displayName = [[NSMutableString alloc] initWithCapacity:255];
    return self;
}

- (void)dealloc
{
    [_displayName release];
    [_date release];
    [super dealloc];
}

- (void)setUid:(id<LVMailboxUid>)uid
{
    _uid = uid;
    // A mailbox without a name leaves the shown name as it was rather than blanking it.
    NSString *name = [uid displayName];
    if (name != nil)
        [_displayName setString:name];
}

- (void)setAccesses:(int)accesses
{
    _accesses = accesses;
}

- (void)setDate:(NSDate *)date
{
    NSDate *old = _date;
    _date = [date copy];
    [old release];
}

- (void)setDisplayName:(NSString *)displayName
{
    if (displayName != nil)
        [_displayName setString:displayName];
}

- (id<LVMailboxUid>)uid
{
    return _uid;
}

- (int)accesses
{
    return _accesses;
}

- (NSDate *)date
{
    return _date;
}

- (NSMutableString *)displayName
{
    return _displayName;
}

- (void)incrementAccesses
{
    // Wraps like 32-bit signed arithmetic on the platform; unsigned avoids undefined behaviour.
    _accesses = (int)((unsigned int)_accesses + 1u);
}

- (NSComparisonResult)sortCompareDate:(LorvaneMailbox *)other
{
    // A record whose saved date did not parse has no date: it compares as a tie.
    NSDate *otherDate = [other date];
    if (_date == nil || otherDate == nil)
        return NSOrderedSame;
    NSTimeInterval interval = [otherDate timeIntervalSinceDate:_date];
    if (std::isnan(interval))
        return NSOrderedSame;
    if (0 > interval)
        return NSOrderedAscending;
    if (interval > 0)
        return NSOrderedDescending;
    return NSOrderedSame;
}

- (NSComparisonResult)sortCompareAccesses:(LorvaneMailbox *)other
{
    int otherAccesses = [other accesses];
    if (_accesses > otherAccesses)
        return NSOrderedAscending;
    if (_accesses < otherAccesses)
        return NSOrderedDescending;
    return NSOrderedSame;
}

// Case is folded before collating: GNUstep collates the POSIX locale capitals-first even
// when told to ignore case, which would put "Work" before "archive" and split "work"/"Work".
- (NSComparisonResult)sortCompareDisplayName:(LorvaneMailbox *)other
{
    return [[_displayName lowercaseString] localizedCompare:[[other displayName] lowercaseString]];
}

- (id)copyWithZone:(NSZone *)zone
{
    LorvaneMailbox *copy = [[[self class] allocWithZone:zone] init];
    [copy setUid:_uid];
    [copy setAccesses:_accesses];
    [copy setDate:_date];
    [copy setDisplayName:_displayName];
    return copy;
}

- (void)printf
{
    std::printf("________________\n");
    std::printf("UID = %p\n", (void *)_uid);
    std::printf("________________\n");
}

@end
