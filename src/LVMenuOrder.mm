#import "LVMenuOrder.h"
#import "LVCollator.h"
#import "LVRecentList.h"
#import "LorvaneMailbox.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace {

// How the records compare by name: case folded, then collated for the user's locale, with the
// exact spelling deciding between names the collation takes as equal.
struct Name {
    NSString *text = nil;    // retained
    NSString *folded = nil;  // retained: the text in lower case
    std::u16string spelling; // what runs of equal names and the last tie-break compare
    std::string key;         // the collation key of `folded`, when keys can be made
};

// Without collation keys the folded names are compared as -localizedCompare: compares them.
int compareNames(const Name &a, const Name &b, bool keyed)
{
    int order = 0;
    if (keyed) {
        order = a.key.compare(b.key);
    } else {
        NSComparisonResult result = [a.folded localizedCompare:b.folded];
        order = result == NSOrderedSame ? 0 : (result == NSOrderedAscending ? -1 : 1);
    }
    return order != 0 ? order : a.spelling.compare(b.spelling);
}

void setName(Name &name, NSString *text, LVCollator *collator)
{
    if (text == name.text)
        return;
    [name.text release];
    [name.folded release];
    name.text = [text copy];
    name.folded = [[name.text lowercaseString] retain];
    name.spelling.assign([name.text length], u'\0');
    [name.text getCharacters:(unichar *)name.spelling.data() range:NSMakeRange(0, name.spelling.size())];
    NSData *key = [collator keyOfString:name.folded];
    name.key.assign((const char *)[key bytes], [key length]);
}

void clearName(Name &name)
{
    [name.text release];
    [name.folded release];
    name = Name();
}

// One listed record as an opening finds it.
struct Listed {
    LVListSlot slot;
    LorvaneMailbox *record;
    id<LVMailboxUid> mailbox;
};

// What the menu order remembers of one listed record.
struct Known {
    bool live = false;
    LorvaneMailbox *record = nil;
    id<LVMailboxUid> mailbox = nil;
    Name mailName;           // Mail's name of the mailbox: the first sort, and runs
    Name shownName;          // the record's name in the menus: the sort by name
    double sortKey = 0;      // newest or most used first, under those sort types
    NSString *toolTip = nil; // retained
    NSImage *icon = nil;     // retained
    bool needsFacts = false; // tool tip and icon to be asked of Mail
    bool needsPlace = false; // to be placed again in the menu order
};

} // namespace

struct LVMenuOrderState {
    LVCollator *collator = nil;    // owned
    bool keyed = false;            // names are compared by their collation keys
    std::vector<Known> known;      // by slot
    std::vector<LVListSlot> order; // the menu order
    std::vector<size_t> position;  // by slot: where the record stands in the list
    // By slot, since the last opening: another record listed there, the record's key changed.
    std::vector<bool> listedAnew, touched;
    // Records whose mailboxes share Mail's name, by that name.
    std::unordered_map<std::u16string, std::vector<LVListSlot>> runs;
    std::unordered_set<std::u16string> runsToName;
    std::unordered_set<std::u16string> runsWithShownTies;
    int key = -1; // the LVRecordKey that orders the menus; none before the first ordering
    bool forgetAll = true;

    void forget(LVListSlot slot)
    {
        Known &known = this->known[slot];
        leaveRun(slot);
        clearName(known.mailName);
        clearName(known.shownName);
        [known.toolTip release];
        [known.icon release];
        known = Known();
    }

    void forgetEveryone()
    {
        for (LVListSlot slot = 0; slot < known.size(); slot++) {
            if (known[slot].live)
                forget(slot);
        }
        order.clear();
    }

    void learn(const Listed &listed, NSString *mailName)
    {
        Known &known = this->known[listed.slot];
        known.live = true;
        known.record = listed.record;
        known.mailbox = listed.mailbox;
        setName(known.mailName, mailName, collator);
        joinRun(listed.slot);
        known.needsFacts = known.needsPlace = true;
    }

    void rename(LVListSlot slot, NSString *mailName)
    {
        Known &known = this->known[slot];
        leaveRun(slot);
        setName(known.mailName, mailName, collator);
        joinRun(slot);
        known.needsFacts = known.needsPlace = true;
    }

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

    // Who is listed now, under which names; records that left are forgotten.
    void takeListed(const std::vector<Listed> &listed, const std::vector<NSString *> &names)
    {
        std::vector<bool> seen(known.size(), false);
        for (size_t index = 0; index < listed.size(); index++) {
            const Listed &state = listed[index];
            if (state.slot >= known.size()) {
                known.resize(state.slot + 1);
                position.resize(state.slot + 1);
                seen.resize(state.slot + 1, false);
            }
            position[state.slot] = index;
            seen[state.slot] = true;
            Known &entry = known[state.slot];
            if (!entry.live || listedAnew[state.slot]) {
                if (entry.live)
                    forget(state.slot);
                learn(state, names[index]);
                continue;
            }
            if (touched[state.slot]) {
                entry.needsPlace = entry.needsPlace || key != LVRecordKeyName;
            }
            if (names[index] != entry.mailName.text && ![names[index] isEqualToString:entry.mailName.text])
                rename(state.slot, names[index]);
        }
        for (LVListSlot slot = 0; slot < known.size(); slot++) {
            if (known[slot].live && !seen[slot])
                forget(slot);
        }
    }

    void forgetWhatMailSaidOfEveryone()
    {
        for (Known &entry : known)
            entry.needsFacts = entry.needsFacts || entry.live;
        for (auto &run : runs)
            runsToName.insert(run.first);
    }

    // A run of one shows Mail's name; a longer run takes the names the describer gives.
    void nameRuns(id<LVMailboxDescribing> describer)
    {
        for (const std::u16string &name : runsToName) {
            auto run = runs.find(name);
            if (run == runs.end())
                continue;
            std::vector<LVListSlot> &members = run->second;
            if (members.size() == 1) {
                Known &only = known[members[0]];
                [only.record setDisplayName:only.mailName.text];
                showName(members[0], only.mailName);
                runsWithShownTies.erase(name);
                continue;
            }
            std::sort(members.begin(), members.end(), [this](LVListSlot a, LVListSlot b) { return position[a] < position[b]; });
            NSMutableArray *group = [NSMutableArray arrayWithCapacity:members.size()];
            for (LVListSlot slot : members)
                [group addObject:known[slot].record];
            [describer lv_nameMailboxesSharingName:group];
            std::unordered_set<std::u16string> spellings;
            bool ties = false;
            for (LVListSlot slot : members) {
                showRecordName(slot);
                ties = !spellings.insert(known[slot].shownName.spelling).second || ties;
            }
            if (ties)
                runsWithShownTies.insert(name);
            else
                runsWithShownTies.erase(name);
        }
        runsToName.clear();
    }

    // Collation keys cost more than the rest of naming: a name that did not change keeps its own.
    void showRecordName(LVListSlot slot)
    {
        NSString *text = [known[slot].record displayName];
        if (known[slot].shownName.text != nil && [text isEqualToString:known[slot].shownName.text])
            return;
        Name shown;
        setName(shown, text, collator);
        showName(slot, shown);
        clearName(shown);
    }

    void showName(LVListSlot slot, const Name &name)
    {
        Known &entry = known[slot];
        if (entry.shownName.text != nil && entry.shownName.spelling == name.spelling)
            return;
        clearName(entry.shownName);
        entry.shownName = name;
        [entry.shownName.text retain];
        [entry.shownName.folded retain];
        entry.needsPlace = entry.needsPlace || key == LVRecordKeyName;
    }

    void askForFacts(id<LVMailboxDescribing> describer)
    {
        for (Known &entry : known) {
            if (!entry.live || !entry.needsFacts)
                continue;
            NSString *toolTip = [[describer lv_toolTipForMailbox:entry.mailbox] retain];
            NSImage *icon = [[describer lv_iconForMailbox:entry.mailbox] retain];
            [entry.toolTip release];
            [entry.icon release];
            entry.toolTip = toolTip;
            entry.icon = icon;
            entry.needsFacts = false;
        }
    }

    // The menu order: by the sort type's key, then by Mail's name, then as the list stands.
    bool before(LVListSlot a, LVListSlot b) const
    {
        const Known &x = known[a], &y = known[b];
        if (key != LVRecordKeyName) {
            if (x.sortKey != y.sortKey)
                return x.sortKey > y.sortKey;
        } else {
            int order = compareNames(x.shownName, y.shownName, keyed);
            if (order != 0)
                return order < 0;
        }
        int order = compareNames(x.mailName, y.mailName, keyed);
        if (order != 0)
            return order < 0;
        return position[a] < position[b];
    }

    double sortKeyOf(LorvaneMailbox *record) const
    {
        if (key == LVRecordKeyAccesses)
            return [record accesses];
        return [[record date] timeIntervalSinceReferenceDate];
    }

    // Records whose names tie within their run follow the list, which eviction may have
    // reordered: they are placed again with the records whose keys changed.
    void place()
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
                entry.sortKey = sortKeyOf(entry.record);
            order.insert(std::upper_bound(order.begin(), order.end(), slot, [this](LVListSlot a, LVListSlot b) { return before(a, b); }), slot);
            entry.needsPlace = false;
        }
    }
};

// Mail's name of every listed mailbox, or NO when one has none.
static BOOL readMailNames(const std::vector<Listed> &listed, std::vector<NSString *> &names)
{
    for (size_t index = 0; index < listed.size(); index++) {
        names[index] = [listed[index].mailbox displayName];
        if (names[index] == nil)
            return NO;
    }
    return YES;
}

@implementation LVMenuOrder

- (id)initWithList:(LVRecentList *)list
{
    if (nil == (self = [super init]))
        return nil;
    _list = list;
    _state = new LVMenuOrderState;
    _state->collator = [[LVCollator alloc] init];
    return self;
}

- (void)dealloc
{
    _state->forgetEveryone();
    [_state->collator release];
    delete _state;
    [super dealloc];
}

- (BOOL)orderList:(LVRecentList *)list sortType:(int)sortType describer:(id<LVMailboxDescribing>)describer
{
    // A list that keeps no order beside itself (a mailbox listed twice, a record without a
    // mailbox or a date) is left to the records' comparators.
    if (![list isIndexed])
        return NO;
    LVMenuOrderState &state = *_state;
    std::vector<Listed> listed([list count]);
    const LVListSlot *slots = [list slots];
    for (size_t index = 0; index < listed.size(); index++) {
        LorvaneMailbox *record = [list recordInSlot:slots[index]];
        listed[index] = Listed { slots[index], record, [record uid] };
    }
    std::vector<NSString *> names(listed.size());
    if (!readMailNames(listed, names))
        return NO;

    LVRecordKey key = LVRecordKeyOfSortType(sortType, NO);
    if ([state.collator followCurrentLocale] || state.key != (int)key) {
        state.keyed = [state.collator makesKeys];
        state.forgetEveryone();
        state.key = key;
    }
    state.takeListed(listed, names);
    if (state.forgetAll)
        state.forgetWhatMailSaidOfEveryone();
    state.forgetAll = false;
    state.nameRuns(describer);
    state.askForFacts(describer);
    state.place();
    std::fill(state.listedAnew.begin(), state.listedAnew.end(), false);
    std::fill(state.touched.begin(), state.touched.end(), false);
    [list reorderBySlots:state.order.data()];
    return YES;
}

- (NSUInteger)getRows:(LVMenuRow *)rows capacity:(NSUInteger)capacity
{
    NSUInteger count = std::min((NSUInteger)_state->order.size(), capacity);
    for (NSUInteger index = 0; index < count; index++) {
        const Known &entry = _state->known[_state->order[index]];
        rows[index] = LVMenuRow { entry.record, entry.shownName.text, entry.toolTip, entry.icon };
    }
    return count;
}

- (void)forgetWhatMailSaid
{
    _state->forgetAll = true;
}

#pragma mark What the list tells

// Only noted here: the next opening learns the record.
- (void)recentList:(LVRecentList *)list didListSlot:(LVListSlot)slot atIndex:(NSUInteger)index
{
    if (slot >= _state->listedAnew.size()) {
        _state->listedAnew.resize(slot + 1, false);
        _state->touched.resize(slot + 1, false);
    }
    _state->listedAnew[slot] = true;
}

// A slot not listed at the next opening is forgotten then.
- (void)recentList:(LVRecentList *)list didUnlistSlot:(LVListSlot)slot
{
}

- (void)recentList:(LVRecentList *)list didTouchSlot:(LVListSlot)slot
{
    _state->touched[slot] = true;
}

// Every opening reads the list's order afresh.
- (void)recentListDidReorder:(LVRecentList *)list
{
}

@end
