#import "LVSavedList.h"
#import "LVMailboxNames.h"
#import "LVRecentList.h"
#import "LorvaneMailbox.h"

#include <unordered_map>
#include <unordered_set>
#include <vector>

static NSArray *activeAccounts(void)
{
    return [(Class<LVMailAccount>)LVMailClass(@"MailAccount") activeAccounts];
}

// A saved path names a mailbox only when spelled exactly as Mail spells it, as on a Mac:
// GNUstep's -isEqual: also matches an "é" written as one character to one written as two,
// so a dictionary keyed by the path will not do. -hash is a function of the characters alone,
// so a path spelled as a saved one hashes as it does: each path's records, by their indexes
// in file order, filed under the path's hash, and a mailbox's path compared only with the
// saved paths that hash as it does.
typedef std::unordered_map<NSUInteger, std::vector<NSUInteger>> LVIndexesByHash;

static LVIndexesByHash recordIndexesByHashOfPath(NSArray *paths)
{
    LVIndexesByHash indexesByHash;
    for (NSUInteger index = 0; index < [paths count]; index++)
        indexesByHash[[[paths objectAtIndex:index] hash]].push_back(index);
    return indexesByHash;
}

// A full list takes a restored record only if it ranks before the last record kept, which
// then leaves: ties go to the record restored first. A limit of 0 keeps nothing.
static void placeRestoredRecord(LorvaneMailbox *record, id<LVMailboxUid> mailbox, LVRecentList *list, int limit)
{
    [record setUid:mailbox];
    if ([list count] == (NSUInteger)limit) {
        if ([list count] == 0 || ![list ranksBeforeLastRecordInEvictionOrder:record])
            return;
        [list removeLastObject];
    }
    [list insertObject:record atIndex:0];
}

@implementation LVSavedList

+ (id<LVMailboxUid>)mailboxWithFullPath:(NSString *)path
{
    for (id<LVMailAccount> account in activeAccounts()) {
        for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
            NSString *fullPath = [mailbox fullPath];
            if (LVSameSpelling(fullPath, path))
                return mailbox;
        }
    }
    return nil;
}

// The accounts are walked once for all records; a record that matches two mailboxes takes
// them in turn, so the list is filled only once every record has its mailboxes.
+ (NSArray *)listRestoredFromRecords:(NSArray *)records paths:(NSArray *)paths limit:(int)limit sortType:(int)sortType
{
    LVIndexesByHash indexesByHash = recordIndexesByHashOfPath(paths);
    std::vector<std::vector<id<LVMailboxUid>>> matches([records count]);
    if ([records count] > 0) {
        for (id<LVMailAccount> account in activeAccounts()) {
            for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
                NSString *fullPath = [mailbox fullPath];
                if (fullPath == nil)
                    continue;
                auto found = indexesByHash.find([fullPath hash]);
                if (found == indexesByHash.end())
                    continue;
                for (NSUInteger index : found->second) {
                    if (LVSameSpelling(fullPath, [paths objectAtIndex:index]))
                        matches[index].push_back(mailbox);
                }
            }
        }
    }
    LVRecentList *list = [[[LVRecentList alloc] initWithSortType:sortType] autorelease];
    for (NSUInteger index = 0; index < [records count]; index++) {
        for (id<LVMailboxUid> mailbox : matches[index])
            placeRestoredRecord([records objectAtIndex:index], mailbox, list, limit);
    }
    return list;
}

+ (NSIndexSet *)indexesOfRecordsWithoutMailboxIn:(NSArray *)list
{
    std::unordered_set<const void *> listed;
    for (LorvaneMailbox *record in list)
        listed.insert((const void *)[record uid]);

    std::unordered_set<const void *> seen;
    for (id<LVMailAccount> account in activeAccounts()) {
        for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
            if (listed.count((const void *)mailbox) != 0)
                seen.insert((const void *)mailbox);
        }
    }

    NSMutableIndexSet *gone = [NSMutableIndexSet indexSet];
    NSUInteger index = 0;
    for (LorvaneMailbox *record in list) {
        id<LVMailboxUid> uid = [record uid];
        if (seen.count((const void *)uid) == 0 || ![uid isValid])
            [gone addIndex:index];
        index++;
    }
    return gone;
}

@end
