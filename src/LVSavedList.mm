#import "LVSavedList.h"
#import "LVMailboxNames.h"
#import "LVRecentList.h"
#import "LorvaneMailbox.h"

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

static NSArray *activeAccounts(void)
{
    return [(Class<LVMailAccount>)LVMailClass(@"MailAccount") activeAccounts];
}

// A saved path names a mailbox only when spelled exactly as Mail spells it, as on a Mac:
// GNUstep's -isEqual: also matches an "é" written as one character to one written as two,
// while their hashes differ, so neither it nor a dictionary keyed by the path will do.
static std::u16string spellingOf(NSString *text)
{
    std::u16string spelling([text length], u'\0');
    [text getCharacters:(unichar *)spelling.data() range:NSMakeRange(0, spelling.size())];
    return spelling;
}

typedef std::unordered_map<std::u16string, std::vector<NSUInteger>> LVIndexesBySpelling;

// Each path's records, by their indexes in file order.
static LVIndexesBySpelling recordIndexesByPath(NSArray *paths)
{
    LVIndexesBySpelling indexesByPath;
    for (NSUInteger index = 0; index < [paths count]; index++)
        indexesByPath[spellingOf([paths objectAtIndex:index])].push_back(index);
    return indexesByPath;
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
    LVIndexesBySpelling indexesByPath = recordIndexesByPath(paths);
    std::vector<std::vector<id<LVMailboxUid>>> matches([records count]);
    if ([records count] > 0) {
        for (id<LVMailAccount> account in activeAccounts()) {
            for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
                NSString *fullPath = [mailbox fullPath];
                if (fullPath == nil)
                    continue;
                auto found = indexesByPath.find(spellingOf(fullPath));
                if (found == indexesByPath.end())
                    continue;
                for (NSUInteger index : found->second)
                    matches[index].push_back(mailbox);
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
