#import "LVMenuOrder.h"
#import "LVCollator.h"
#import "LVMenuRow.h"
#import "LorvaneMailbox.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

// How a name compares: its collation key (of the text in lower case), then its exact spelling,
// which also tells runs of equal names apart. The text itself stays in a Cocoa array.
struct Name {
    std::u16string spelling;
    std::string key; // empty when keys cannot be made
};

// What the menu order remembers of one listed record, beside its texts and row.
struct Known {
    bool live = false;
    Name mailName;           // Mail's name of the mailbox: the first sort, and runs
    Name shownName;          // the record's name in the menus: the sort by name
    double sortKey = 0;      // newest or most used first, under those sort types
    size_t position = 0;     // where the record stands in the list
    bool needsFacts = false; // tool tip and icon to be asked of Mail
    bool needsPlace = false; // to be placed again in the menu order
    bool needsRow = false;   // its name or facts changed since its row was made
    bool listedAnew = false; // since the last ordering: another record listed in this slot,
    bool touched = false;    // or this record's key changed
    bool seen = false;       // listed at this ordering
};

// The order's objects, seen by slot for the length of one ordering.
struct Texts {
    std::vector<id> mailNames;
    std::vector<id> shownNames;
    std::vector<LorvaneMailbox *> records;
    std::vector<id<LVMailboxUid>> mailboxes;
};

} // namespace

struct LVMenuOrderState {
    bool keyed = false;            // names are compared by their collation keys
    std::vector<Known> known;      // by slot
    std::vector<LVListSlot> order; // the menu order
    // Records whose mailboxes share Mail's name, by that name.
    std::unordered_map<std::u16string, std::vector<LVListSlot>> runs;
    std::unordered_set<std::u16string> runsToName;
    std::unordered_set<std::u16string> runsWithShownTies;
    int key = -1; // the LVRecordKey that orders the menus; none before the first ordering
    bool forgetAll = true;
    bool rowsChanged = true;

    void joinRun(LVListSlot slot)
    {
        const std::u16string &name = known[slot].mailName.spelling;
        runs[name].push_back(slot);
        runsToName.insert(name);
    }

    void leaveRun(LVListSlot slot)
    {
        const std::u16string &name = known[slot].mailName.spelling;
        auto run = runs.find(name);
        if (run == runs.end())
            return;
        run->second.erase(std::remove(run->second.begin(), run->second.end(), slot), run->second.end());
        if (run->second.empty()) {
            runs.erase(run);
            runsWithShownTies.erase(name);
        } else {
            runsToName.insert(name);
        }
    }

    void forget(LVListSlot slot)
    {
        leaveRun(slot);
        known[slot] = Known();
        rowsChanged = true;
    }

    // Without collation keys the names are compared as -localizedCompare: compares them.
    int compareNames(const Name &a, NSString *aText, const Name &b, NSString *bText) const
    {
        int order = 0;
        if (keyed) {
            order = a.key.compare(b.key);
        } else {
            NSComparisonResult result = [[aText lowercaseString] localizedCompare:[bText lowercaseString]];
            order = result == NSOrderedSame ? 0 : (result == NSOrderedAscending ? -1 : 1);
        }
        return order != 0 ? order : a.spelling.compare(b.spelling);
    }

    // The menu order: by the sort type's key, then by Mail's name, then as the list stands.
    bool before(LVListSlot a, LVListSlot b, const Texts &texts) const
    {
        const Known &x = known[a], &y = known[b];
        if (key != LVRecordKeyName) {
            if (x.sortKey != y.sortKey)
                return x.sortKey > y.sortKey;
        } else {
            int order = compareNames(x.shownName, texts.shownNames[a], y.shownName, texts.shownNames[b]);
            if (order != 0)
                return order < 0;
        }
        int order = compareNames(x.mailName, texts.mailNames[a], y.mailName, texts.mailNames[b]);
        if (order != 0)
            return order < 0;
        return x.position < y.position;
    }

    // Records whose names tie within their run follow the list, which eviction may have
    // reordered: they are placed again with the records whose keys changed.
    void place(const Texts &texts)
    {
        if (key == LVRecordKeyName) {
            for (const std::u16string &name : runsWithShownTies) {
                for (LVListSlot slot : runs[name])
                    known[slot].needsPlace = true;
            }
        }
        order.erase(std::remove_if(order.begin(), order.end(),
                        [this](LVListSlot slot) { return !known[slot].live || known[slot].needsPlace; }),
            order.end());
        for (LVListSlot slot = 0; slot < known.size(); slot++) {
            Known &entry = known[slot];
            if (!entry.live || !entry.needsPlace)
                continue;
            if (key != LVRecordKeyName)
                entry.sortKey = LVRecordKeyValue(texts.records[slot], (LVRecordKey)key);
            auto at = std::upper_bound(order.begin(), order.end(), slot, [&](LVListSlot a, LVListSlot b) { return before(a, b, texts); });
            order.insert(at, slot);
            entry.needsPlace = false;
            rowsChanged = true;
        }
    }
};

// The objects of an array by slot, as a view; free slots read as NSNull.
static std::vector<id> viewOf(NSMutableArray *bySlot, size_t count)
{
    while ([bySlot count] < count)
        [bySlot addObject:[NSNull null]];
    std::vector<id> view(count);
    [bySlot getObjects:view.data() range:NSMakeRange(0, count)];
    return view;
}

@implementation LVMenuOrder

- (id)init
{
    if (nil == (self = [super init]))
        return nil;
    _collator = [[LVCollator alloc] init];
    _mailNames = [[NSMutableArray alloc] init];
    _shownNames = [[NSMutableArray alloc] init];
    _rowsBySlot = [[NSMutableArray alloc] init];
    _rows = [[NSMutableArray alloc] init];
    _state = new LVMenuOrderState;
    return self;
}

- (void)dealloc
{
    delete _state;
    [_rows release];
    [_rowsBySlot release];
    [_shownNames release];
    [_mailNames release];
    [_collator release];
    [super dealloc];
}

- (BOOL)orderList:(LVRecentList *)list sortType:(int)sortType describer:(id<LVMailboxDescribing>)describer
{
    // A list that keeps no order beside itself is left to the records' comparators.
    if (![list isIndexed])
        return NO;
    NSUInteger count = [list count], slotCount = [list slotCount];
    const LVListSlot *slots = [list slots];
    _state->known.resize(std::max((size_t)slotCount, _state->known.size()));
    Texts texts = { viewOf(_mailNames, slotCount), viewOf(_shownNames, slotCount), std::vector<LorvaneMailbox *>(slotCount),
        std::vector<id<LVMailboxUid>>(slotCount) };
    [list getRecordsBySlot:texts.records.data() mailboxes:texts.mailboxes.data()];
    std::vector<NSString *> names(count);
    for (NSUInteger index = 0; index < count; index++) {
        names[index] = [texts.mailboxes[slots[index]] displayName];
        if (names[index] == nil)
            return NO;
    }

    LVMenuOrderState &state = *_state;
    LVRecordKey key = LVRecordKeyOfSortType(sortType, NO);
    if ([_collator followCurrentLocale] || state.key != (int)key) {
        state.keyed = [_collator makesKeys];
        [self lv_forgetEveryone];
        state.key = key;
    }
    [self lv_takeListed:slots count:count names:names texts:texts];
    if (state.forgetAll) {
        for (Known &entry : state.known)
            entry.needsFacts = entry.needsFacts || entry.live;
        for (auto &run : state.runs)
            state.runsToName.insert(run.first);
    }
    state.forgetAll = false;
    [self lv_nameRunsWithDescriber:describer texts:texts];
    [self lv_makeRowsWithDescriber:describer texts:texts];
    state.place(texts);
    if (state.rowsChanged) {
        std::vector<id> rows = viewOf(_rowsBySlot, slotCount);
        [_rows removeAllObjects];
        for (LVListSlot slot : state.order)
            [_rows addObject:rows[slot]];
        state.rowsChanged = false;
    }
    [list reorderBySlots:state.order.data()];
    return YES;
}

- (NSArray *)rows
{
    return _rows;
}

- (void)forgetWhatMailSaid
{
    _state->forgetAll = true;
}

#pragma mark What the list tells

// Only noted: the next ordering learns a listed record, forgets a slot no longer listed and
// reads the list's order afresh. A slot it has never seen holds a record it will learn anyway.
- (void)recentList:(LVRecentList *)list didListRecord:(LorvaneMailbox *)record inSlot:(LVListSlot)slot atIndex:(NSUInteger)index
{
    if (slot < _state->known.size())
        _state->known[slot].listedAnew = true;
}

- (void)recentList:(LVRecentList *)list didTouchRecord:(LorvaneMailbox *)record inSlot:(LVListSlot)slot
{
    if (slot < _state->known.size())
        _state->known[slot].touched = true;
}

- (void)recentList:(LVRecentList *)list didUnlistSlot:(LVListSlot)slot
{
}

- (void)recentListDidReorder:(LVRecentList *)list
{
}

#pragma mark The steps of an ordering

- (Name)lv_nameOfText:(NSString *)text
{
    Name name;
    name.spelling.assign([text length], u'\0');
    [text getCharacters:(unichar *)name.spelling.data() range:NSMakeRange(0, name.spelling.size())];
    NSData *key = [_collator keyOfString:[text lowercaseString]];
    name.key.assign((const char *)[key bytes], [key length]);
    return name;
}

// What Mail said of a slot's record goes with it: a record that left is released here.
- (void)lv_forgetSlot:(LVListSlot)slot texts:(Texts *)texts
{
    _state->forget(slot);
    id none = [NSNull null];
    for (NSMutableArray *bySlot : { _mailNames, _shownNames, _rowsBySlot })
        [bySlot replaceObjectAtIndex:slot withObject:none];
    if (texts != NULL)
        texts->mailNames[slot] = texts->shownNames[slot] = none;
}

- (void)lv_forgetEveryone
{
    for (LVListSlot slot = 0; slot < _state->known.size(); slot++) {
        if (_state->known[slot].live)
            [self lv_forgetSlot:slot texts:NULL];
    }
    _state->order.clear();
}

// Collation keys cost more than the rest of naming: a name that did not change keeps its own.
- (void)lv_showName:(NSString *)text ofSlot:(LVListSlot)slot texts:(Texts &)texts
{
    Known &entry = _state->known[slot];
    if (texts.shownNames[slot] != [NSNull null] && [text isEqualToString:texts.shownNames[slot]])
        return;
    NSString *shown = [[text copy] autorelease];
    [_shownNames replaceObjectAtIndex:slot withObject:shown];
    texts.shownNames[slot] = shown;
    entry.shownName = [self lv_nameOfText:shown];
    entry.needsRow = true;
    entry.needsPlace = entry.needsPlace || _state->key == LVRecordKeyName;
}

// Who is listed now, under which names; records that left are forgotten.
- (void)lv_takeListed:(const LVListSlot *)slots count:(NSUInteger)count names:(const std::vector<NSString *> &)names texts:(Texts &)texts
{
    LVMenuOrderState &state = *_state;
    for (NSUInteger index = 0; index < count; index++) {
        LVListSlot slot = slots[index];
        Known &entry = state.known[slot];
        bool anew = !entry.live || entry.listedAnew, touched = entry.touched;
        if (anew && entry.live)
            [self lv_forgetSlot:slot texts:&texts];
        entry.position = index;
        entry.seen = true;
        entry.listedAnew = entry.touched = false;
        if (!anew) {
            if (touched)
                entry.needsPlace = entry.needsPlace || state.key != LVRecordKeyName;
            if (names[index] == texts.mailNames[slot] || [names[index] isEqualToString:texts.mailNames[slot]])
                continue;
            state.leaveRun(slot);
        }
        entry.live = true;
        NSString *mailName = [[names[index] copy] autorelease];
        [_mailNames replaceObjectAtIndex:slot withObject:mailName];
        texts.mailNames[slot] = mailName;
        entry.mailName = [self lv_nameOfText:mailName];
        state.joinRun(slot);
        entry.needsFacts = entry.needsPlace = true;
    }
    for (LVListSlot slot = 0; slot < state.known.size(); slot++) {
        if (state.known[slot].live && !state.known[slot].seen)
            [self lv_forgetSlot:slot texts:&texts];
        state.known[slot].seen = state.known[slot].listedAnew = state.known[slot].touched = false;
    }
}

// A run of one shows Mail's name; a longer run takes the names the describer gives.
- (void)lv_nameRunsWithDescriber:(id<LVMailboxDescribing>)describer texts:(Texts &)texts
{
    LVMenuOrderState &state = *_state;
    for (const std::u16string &name : state.runsToName) {
        auto run = state.runs.find(name);
        if (run == state.runs.end())
            continue;
        std::vector<LVListSlot> &members = run->second;
        if (members.size() == 1) {
            LVListSlot only = members[0];
            [texts.records[only] setDisplayName:texts.mailNames[only]];
            [self lv_showName:texts.mailNames[only] ofSlot:only texts:texts];
            state.runsWithShownTies.erase(name);
            continue;
        }
        std::sort(members.begin(), members.end(), [&](LVListSlot a, LVListSlot b) { return state.known[a].position < state.known[b].position; });
        NSMutableArray *group = [NSMutableArray arrayWithCapacity:members.size()];
        for (LVListSlot slot : members)
            [group addObject:texts.records[slot]];
        [describer lv_nameMailboxesSharingName:group];
        std::unordered_set<std::u16string> spellings;
        bool ties = false;
        for (LVListSlot slot : members) {
            [self lv_showName:[texts.records[slot] displayName] ofSlot:slot texts:texts];
            ties = !spellings.insert(state.known[slot].shownName.spelling).second || ties;
        }
        ties ? (void)state.runsWithShownTies.insert(name) : (void)state.runsWithShownTies.erase(name);
    }
    state.runsToName.clear();
}

// A row is made again only when its record's name or what Mail said of its mailbox changed.
- (void)lv_makeRowsWithDescriber:(id<LVMailboxDescribing>)describer texts:(const Texts &)texts
{
    LVMenuOrderState &state = *_state;
    if (std::none_of(state.known.begin(), state.known.end(), [](const Known &entry) { return entry.live && (entry.needsFacts || entry.needsRow); }))
        return;
    std::vector<id> rows = viewOf(_rowsBySlot, state.known.size());
    id none = [NSNull null];
    for (LVListSlot slot = 0; slot < state.known.size(); slot++) {
        Known &entry = state.known[slot];
        if (!entry.live || (!entry.needsFacts && !entry.needsRow))
            continue;
        // A row is made first with the facts asked of Mail.
        BOOL ask = entry.needsFacts || rows[slot] == none;
        NSString *toolTip = ask ? [describer lv_toolTipForMailbox:texts.mailboxes[slot]] : [rows[slot] toolTip];
        NSImage *icon = ask ? [describer lv_iconForMailbox:texts.mailboxes[slot]] : [rows[slot] icon];
        LVMenuRow *row = [[LVMenuRow alloc] initWithRecord:texts.records[slot] title:texts.shownNames[slot] toolTip:toolTip icon:icon];
        [_rowsBySlot replaceObjectAtIndex:slot withObject:row];
        [row release];
        entry.needsFacts = entry.needsRow = false;
        state.rowsChanged = true;
    }
}

@end
