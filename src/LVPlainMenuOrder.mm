#import "LVPlainMenuOrder.h"
#import "LVMailboxNames.h"
#import "LVMenuRow.h"
#import "LVRecentList.h"
#import "LorvaneMailbox.h"

@implementation LVPlainMenuOrder

// Records that share Mail's name for their mailbox sit next to each other once sorted by
// name; each such run is told apart by account and folder. The sort starts from Mail's names,
// not the last opening's: "" and " (Folder)" need not sort side by side.
+ (void)nameList:(NSMutableArray *)list describer:(id<LVMailboxDescribing>)describer
{
    for (LorvaneMailbox *record in list)
        [record setDisplayName:[[record uid] displayName]];
    [list sortUsingSelector:LVComparatorOfRecordKey(LVRecordKeyName)];
    NSUInteger count = [list count];
    NSUInteger i = 0;
    while (i < count) {
        LorvaneMailbox *first = [list objectAtIndex:i];
        id<LVMailboxUid> uid = [first uid];
        if (uid == nil) {
            // Deliberately not skipped: the pass stays on a record it cannot name and
            // says so on every turn, rather than give it a name it may not have.
            NSLog(@"[Lorvane:updateMenus] invalid recentMailbox UID while searching for duplicates.");
            continue;
        }
        NSString *baseName = [uid displayName] ?: @"[error: NULL baseMailboxName]";
        [first setDisplayName:baseName];
        NSUInteger groupStart = i++;
        while (i < count && LVSameSpelling([[[list objectAtIndex:i] uid] displayName], baseName))
            i++;
        // A record alone in its run keeps the bare name; only real groups get an array.
        if (i - groupStart > 1)
            [describer lv_nameMailboxesSharingName:[list subarrayWithRange:NSMakeRange(groupStart, i - groupStart)]];
    }
}

+ (void)orderList:(NSMutableArray *)list sortType:(int)sortType describer:(id<LVMailboxDescribing>)describer
{
    [self nameList:list describer:describer];
    [list sortUsingSelector:LVComparatorOfRecordKey(LVRecordKeyOfSortType(sortType, NO))];
}

// Record k takes item k whether or not the records before it could be shown; a list longer
// than its pre-made items (a negative limit lets it grow) shows the records that have one.
+ (NSArray *)rowsOfList:(NSArray *)list capacity:(NSUInteger)capacity describer:(id<LVMailboxDescribing>)describer
{
    NSMutableArray *rows = [NSMutableArray arrayWithCapacity:MIN([list count], capacity)];
    NSUInteger k = 0;
    for (LorvaneMailbox *record in list) {
        id<LVMailboxUid> uid = [record uid];
        if (uid == nil) {
            NSLog(@"[Lorvane:updateMenus] invalid recentMailbox UID while updating menus.");
        } else if (k < capacity) {
            LVMenuRow *row = [[LVMenuRow alloc] initWithRecord:record
                                                         title:[record displayName] ?: @"[error: NULL mailboxName]"
                                                       toolTip:[describer lv_toolTipForMailbox:uid]
                                                          icon:[describer lv_iconForMailbox:uid]];
            [rows addObject:row];
            [row release];
        }
        k++;
    }
    return rows;
}

@end
