#import "LiteralListSteps.h"
#import "LorvaneMailbox.h"

namespace {

const int LBSortByAccesses = 2;

// The plug-in's record class exists only once the bundle is loaded: found by name.
Class recordClass(void)
{
    static Class found = Nil;
    if (found == Nil)
        found = NSClassFromString(@"LorvaneMailbox");
    return found;
}

NSArray *activeAccounts(void)
{
    return [(Class<LVMailAccount>)LVMailClass("MailAccount") activeAccounts];
}

SEL evictionComparator(int sortType)
{
    return sortType == LBSortByAccesses ? @selector(sortCompareAccesses:) : @selector(sortCompareDate:);
}

NSComparisonResult compareForEviction(int sortType, LorvaneMailbox *receiver, LorvaneMailbox *other)
{
    return sortType == LBSortByAccesses ? [receiver sortCompareAccesses:other] : [receiver sortCompareDate:other];
}

NSString *savedDateText(NSDictionary *saved)
{
    NSString *text = [saved objectForKey:@"Date"];
    if (text == nil)
        text = [saved objectForKey:@"CalendarDate"];
    return text != nil ? text : [[NSDate date] description];
}

// A full list takes the record only if it ranks before the worst one kept.
void placeLoadedRecord(LorvaneMailbox *record, id<LVMailboxUid> mailbox, NSMutableArray *list, int limit, int sortType)
{
    [record setUid:mailbox];
    if ([list count] == (NSUInteger)limit) {
        [list sortUsingSelector:evictionComparator(sortType)];
        if (compareForEviction(sortType, [list lastObject], record) != NSOrderedDescending)
            return;
        [list removeLastObject];
    }
    [list insertObject:record atIndex:0];
}

// Every mailbox of every account is looked at, even after a match.
BOOL isLive(LorvaneMailbox *record)
{
    id<LVMailboxUid> uid = [record uid];
    BOOL live = NO;
    for (id<LVMailAccount> account in activeAccounts()) {
        for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
            if (mailbox == uid && [uid isValid])
                live = YES;
        }
    }
    return live;
}

int indexOfMailbox(NSArray *list, id<LVMailboxUid> mailbox)
{
    int count = (int)[list count];
    for (int index = 0; index < count; index++) {
        if ([[list objectAtIndex:(NSUInteger)index] uid] == mailbox)
            return index;
    }
    return -1;
}

} // namespace

id LBNewRecordFor(id<LVMailboxUid> mailbox)
{
    LorvaneMailbox *record = [[recordClass() alloc] init];
    [record setUid:mailbox];
    return record;
}

NSMutableArray *LBLiteralLoadSavedRecords(NSArray *saved, int limit, int sortType)
{
    NSMutableArray *list = [NSMutableArray array];
    for (NSDictionary *entry in saved) {
        LorvaneMailbox *record = [[recordClass() alloc] init];
        [record setAccesses:[[entry objectForKey:@"Accesses"] intValue]];
        [record setDate:[NSDate dateWithString:savedDateText(entry)]];
        NSString *fullPath = [entry objectForKey:@"FullPath"];
        for (id<LVMailAccount> account in activeAccounts()) {
            for (id<LVMailboxUid> mailbox in [account allMailboxUids]) {
                if ([[mailbox fullPath] isEqualToString:fullPath])
                    placeLoadedRecord(record, mailbox, list, limit, sortType);
            }
        }
        [record release];
    }
    return list;
}

void LBLiteralRemoveDeletedMailboxes(NSMutableArray *list)
{
    NSMutableArray *deleted = [NSMutableArray array];
    for (LorvaneMailbox *record in list) {
        if (!isLive(record))
            [deleted addObject:record];
    }
    for (LorvaneMailbox *record in deleted)
        [list removeObject:record];
}

void LBLiteralAddOrTouch(NSMutableArray *list, id<LVMailboxUid> mailbox, int limit, int sortType, BOOL excludeSpecial)
{
    if (limit == 0)
        return;
    if (excludeSpecial && ![(Class<LVMailboxUid>)LVMailClass("MailboxUid") typeIsGeneric:[mailbox type]])
        return;
    // Made before the lookup, and set aside when the mailbox is already listed.
    LorvaneMailbox *record = [[recordClass() alloc] init];
    int index = indexOfMailbox(list, mailbox);
    if (index >= 0) {
        LorvaneMailbox *listed = [list objectAtIndex:(NSUInteger)index];
        [listed incrementAccesses];
        [listed setDate:[NSDate date]];
    } else {
        if ([list count] == (NSUInteger)limit) {
            [list sortUsingSelector:evictionComparator(sortType)];
            [list removeLastObject];
        }
        [record setUid:mailbox];
        [list insertObject:record atIndex:0];
    }
    [record release];
}
