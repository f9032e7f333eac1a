#import "LVMailFixture.h"
#import "LorvaneMailbox.h"

static MHMailStore *sampleStore;
static LorvaneBundle_Provider *plugin;

LorvaneBundle_Provider *LVStartMailWithSampleStore(void)
{
    static BOOL started = NO;
    if (started)
        return plugin;
    started = YES;
    MailApp *app = [MailApp sharedMailApp];
    if (app == nil)
        return nil;
    MHSetRecordsAlerts(YES);
    MHSetRecentItemsLimit(10);
    NSString *source = [@LORVANE_SOURCE_DIR stringByAppendingPathComponent:@"samples/store"];
    sampleStore = [[MHMailStore copyOfStoreAtPath:source toPath:LVMakeTemporaryFolder(@"store")] retain];
    if (!LVLoadPluginBundle())
        return nil;
    plugin = [LVPluginClass("LorvaneBundle_Provider") activeLorvaneBundle_Provider];
    return plugin;
}

MHMailStore *LVSampleStore(void)
{
    return sampleStore;
}

MailboxUid *LVSampleMailbox(NSString *accountAndPath)
{
    MailboxUid *mailbox = [sampleStore mailboxAtPath:accountAndPath];
    EXPECT_TRUE(mailbox != nil) << [accountAndPath UTF8String];
    return mailbox;
}

NSArray *LVSelectFirstMessages(MessageViewer *viewer, MailboxUid *mailbox, NSUInteger count)
{
    [viewer setSelectedMailboxes:@[ mailbox ]];
    TableViewManager *list = [viewer messageList];
    [list selectMessagesAtIndexes:[NSIndexSet indexSetWithIndexesInRange:NSMakeRange(0, count)]];
    return [list selectedMessagePaths];
}

NSArray *LVMessageFileNames(MailboxUid *mailbox)
{
    NSMutableArray *names = [NSMutableArray array];
    for (NSString *path in [mailbox messagePaths])
        [names addObject:[path lastPathComponent]];
    return names;
}

void LVUseMailboxes(MessageViewer *viewer, MailboxUid *source, NSArray *destinations)
{
    for (MailboxUid *destination in destinations) {
        LVSelectFirstMessages(viewer, source, 1);
        [viewer transferSelectedMessagesToMailbox:destination deleteOriginals:NO];
    }
}

void LVChooseItem(NSMenu *menu, NSInteger index)
{
    [menu performActionForItemAtIndex:index];
}

// The list as the provider answers for each of Mail's mailboxes: the list's length is not
// part of its interface, and the provider is observed through its methods only.
static NSArray *listedRecords(LorvaneBundle_Provider *provider)
{
    NSMutableDictionary *byIndex = [NSMutableDictionary dictionary];
    for (MailAccount *account in [MailAccount activeAccounts]) {
        for (MailboxUid *mailbox in [account allMailboxUids]) {
            int index = [provider getRecentMailboxIndexWithUid:(id<LVMailboxUid>)mailbox];
            if (index >= 0)
                [byIndex setObject:[provider getRecentMailboxAtIndex:index] forKey:@(index)];
        }
    }
    NSMutableArray *records = [NSMutableArray array];
    for (NSNumber *index in [[byIndex allKeys] sortedArrayUsingSelector:@selector(compare:)])
        [records addObject:[byIndex objectForKey:index]];
    return records;
}

NSArray *LVListedMailboxNames(LorvaneBundle_Provider *provider)
{
    NSMutableArray *names = [NSMutableArray array];
    for (LorvaneMailbox *record in listedRecords(provider))
        [names addObject:[[record uid] displayName]];
    return names;
}

NSArray *LVListedAccessCounts(LorvaneBundle_Provider *provider)
{
    NSMutableArray *counts = [NSMutableArray array];
    for (LorvaneMailbox *record in listedRecords(provider))
        [counts addObject:@([record accesses])];
    return counts;
}
