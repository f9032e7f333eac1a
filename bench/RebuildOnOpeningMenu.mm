#import "RebuildOnOpeningMenu.h"

#include <algorithm>
#include <queue>
#include <unordered_map>
#include <vector>

struct LBLastUseTable {
    std::unordered_map<const void *, unsigned long> times;
    NSMutableDictionary *timesByPath = [[NSMutableDictionary alloc] init];    // of NSNumber
};

namespace {

struct LastUse {
    id<LVMailboxUid> mailbox;
    unsigned long time;
};

// Orders the heap so that its top is the least recent of the ones kept.
struct MoreRecent {
    bool operator()(const LastUse &left, const LastUse &right) const { return left.time > right.time; }
};

// GNUstep's comparison by the locale's rules makes a collator on every call: sorting 50
// names that way costs as much as walking 50,000 mailboxes. The plain one keeps this cheap.
bool nameBefore(const LastUse &left, const LastUse &right)
{
    return [[left.mailbox displayName] caseInsensitiveCompare:[right.mailbox displayName]] == NSOrderedAscending;
}

} // namespace

@interface LBRebuildOnOpeningMenu (Opening)
- (unsigned long)lastUseOf:(id<LVMailboxUid>)mailbox;
- (std::vector<LastUse>)mostRecentlyUsedMailboxes;
- (void)showMailboxes:(const std::vector<LastUse> &)mailboxes;
@end

// On a Mac every NSMenuDelegate method is optional; GNUstep declares them all required,
// and an opening needs only menuNeedsUpdate:.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wprotocol"

@implementation LBRebuildOnOpeningMenu

- (id)initWithLimit:(NSUInteger)limit identity:(LBMailboxIdentity)identity
{
    if (nil == (self = [super init]))
        return nil;
    _lastUse = new LBLastUseTable;
    _identity = identity;
    _limit = limit;
    _submenu = [[NSMenu alloc] initWithTitle:@"Recent Mailboxes"];
    NSMutableArray *items = [NSMutableArray arrayWithCapacity:limit];
    for (NSUInteger i = 0; i < limit; i++) {
        NSMenuItem *item = [[NSMenuItem alloc] initWithTitle:@"" action:NULL keyEquivalent:@""];
        [items addObject:item];
        [item release];
    }
    _items = [items copy];
    [_submenu setDelegate:self];
    return self;
}

- (void)dealloc
{
    [_lastUse->timesByPath release];
    delete _lastUse;
    [_submenu setDelegate:nil];     // the menu may outlive this object
    [_submenu release];
    [_items release];
    [super dealloc];
}

- (NSMenu *)submenu
{
    return _submenu;
}

- (void)noteTransferTo:(id<LVMailboxUid>)mailbox
{
    ++_clock;
    if (_identity == LBKnownByPath)
        [_lastUse->timesByPath setObject:[NSNumber numberWithUnsignedLong:_clock] forKey:[mailbox fullPath]];
    else
        _lastUse->times[(const void *)mailbox] = _clock;
}

// GNUstep asks again while the submenu's items are added or re-titled: those nested calls
// find the work under way and return.
- (void)menuNeedsUpdate:(NSMenu *)menu
{
    (void)menu;
    if (_rebuilding)
        return;
    _rebuilding = YES;
    std::vector<LastUse> recent = [self mostRecentlyUsedMailboxes];
    std::sort(recent.begin(), recent.end(), nameBefore);
    [self showMailboxes:recent];
    _rebuilding = NO;
}

@end

#pragma clang diagnostic pop

@implementation LBRebuildOnOpeningMenu (Opening)

- (std::vector<LastUse>)mostRecentlyUsedMailboxes
{
    std::priority_queue<LastUse, std::vector<LastUse>, MoreRecent> kept;
    for (id<LVMailAccount> account in [(Class<LVMailAccount>)LVMailClass("MailAccount") activeAccounts]) {
        for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
            unsigned long time = [self lastUseOf:mailbox];
            if (time == 0)
                continue;
            if (kept.size() == _limit && !kept.empty() && time <= kept.top().time)
                continue;
            kept.push(LastUse { mailbox, time });
            if (kept.size() > _limit)
                kept.pop();
        }
    }
    std::vector<LastUse> recent;
    recent.reserve(kept.size());
    for (; !kept.empty(); kept.pop())
        recent.push_back(kept.top());
    return recent;
}

// 0 for a mailbox never used.
- (unsigned long)lastUseOf:(id<LVMailboxUid>)mailbox
{
    if (_identity == LBKnownByPath)
        return [[_lastUse->timesByPath objectForKey:[mailbox fullPath]] unsignedLongValue];
    auto found = _lastUse->times.find((const void *)mailbox);
    return found != _lastUse->times.end() ? found->second : 0;
}

// The submenu holds one item per mailbox shown; items only move in or out when that
// number changes. Telling an item its own title again still costs the toolkit's change
// handling, so only titles that change are set.
- (void)showMailboxes:(const std::vector<LastUse> &)mailboxes
{
    NSInteger count = (NSInteger)mailboxes.size();
    while ([_submenu numberOfItems] > count)
        [_submenu removeItemAtIndex:[_submenu numberOfItems] - 1];
    while ([_submenu numberOfItems] < count)
        [_submenu addItem:[_items objectAtIndex:(NSUInteger)[_submenu numberOfItems]]];
    for (NSInteger i = 0; i < count; i++) {
        NSMenuItem *item = [_items objectAtIndex:(NSUInteger)i];
        NSString *name = [mailboxes[(size_t)i].mailbox displayName];
        if (![[item title] isEqualToString:name])
            [item setTitle:name];
    }
}

@end
