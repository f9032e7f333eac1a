#import "LorvaneMailbox.h"

#include <cmath>
#include <cstdio>

// This run-time looks a class up by its name at every message sent to it; records are made
// on Mail's transfer path, so the classes they use are looked up once.
static Class dateClass(void)
{
    static Class kept = [NSDate class];
    return kept;
}

static Class mutableStringClass(void)
{
    static Class kept = [NSMutableString class];
    return kept;
}

@implementation LorvaneMailbox

// The record is plain data: NSObject's initialiser has nothing to add, so it is not called.
- (id)init
{
    _uid = nil;
    _accesses = 1;
    _date = [[dateClass() date] retain];
    // Made owned rather than autoreleased and retained: the same empty buffer, and a record
    // dropped from a full list can be used again before the pool drains.
    _displayName = [[mutableStringClass() alloc] initWithCapacity:255];
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

// The copy skips -init, so it has no name buffer: it keeps the mailbox, count and date only.
- (id)copyWithZone:(NSZone *)zone
{
    LorvaneMailbox *copy = [[self class] allocWithZone:NULL];
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
