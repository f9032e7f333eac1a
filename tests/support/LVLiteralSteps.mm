#import "LVLiteralSteps.h"
#import "IMAPAccount.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "MailboxesController.h"

#include <cmath>

@implementation LVLiteralRecord

- (id)initWithUid:(id)mailbox accesses:(int)count date:(NSDate *)when
{
    if (nil == (self = [super init]))
        return nil;
    uid = mailbox;
    accesses = count;
    date = [when copy];
    displayName = [[NSMutableString alloc] initWithString:[mailbox displayName] ?: @""];
    return self;
}

- (void)dealloc
{
    [date release];
    [displayName release];
    [super dealloc];
}

- (id)uid
{
    return uid;
}

// Newest first; a missing date, or one that makes no interval, ties with everything.
- (NSComparisonResult)newestFirst:(LVLiteralRecord *)other
{
    if (date == nil || other->date == nil)
        return NSOrderedSame;
    NSTimeInterval interval = [other->date timeIntervalSinceDate:date];
    if (std::isnan(interval) || interval == 0)
        return NSOrderedSame;
    return interval < 0 ? NSOrderedAscending : NSOrderedDescending;
}

- (NSComparisonResult)mostUsedFirst:(LVLiteralRecord *)other
{
    if (accesses == other->accesses)
        return NSOrderedSame;
    return accesses > other->accesses ? NSOrderedAscending : NSOrderedDescending;
}

// The user's collation with case folded, then the exact spelling.
- (NSComparisonResult)byName:(LVLiteralRecord *)other
{
    NSComparisonResult order = [[displayName lowercaseString] localizedCompare:[other->displayName lowercaseString]];
    return order != NSOrderedSame ? order : [displayName compare:other->displayName options:NSLiteralSearch];
}

@end

@implementation LVLiteralRow

- (void)dealloc
{
    [title release];
    [toolTip release];
    [icon release];
    [super dealloc];
}

@end

namespace {

const int LVLiteralSortByDate = 1;
const int LVLiteralSortByAccesses = 2;

NSArray *activeMailboxes(void)
{
    NSMutableArray *mailboxes = [NSMutableArray array];
    for (MailAccount *account in [MailAccount activeAccounts])
        [mailboxes addObjectsFromArray:[account allMailboxUids]];
    return mailboxes;
}

SEL evictionOrder(int sortType)
{
    return sortType == LVLiteralSortByAccesses ? @selector(mostUsedFirst:) : @selector(newestFirst:);
}

NSComparisonResult compareForEviction(int sortType, LVLiteralRecord *record, LVLiteralRecord *other)
{
    return sortType == LVLiteralSortByAccesses ? [record mostUsedFirst:other] : [record newestFirst:other];
}

// Exactly equal, as a Mac compares strings: GNUstep's -isEqualToString: also calls an "é"
// written as one character equal to one written as two.
BOOL sameSpelling(NSString *a, NSString *b)
{
    return a != nil && [a compare:b options:NSLiteralSearch] == NSOrderedSame && [a length] == [b length];
}

// A value answering the conversion is taken at its word; anything else counts as missing.
id answering(id dictionary, NSString *key, SEL conversion)
{
    id value = [dictionary isKindOfClass:[NSDictionary class]] ? [dictionary objectForKey:key] : nil;
    return [value respondsToSelector:conversion] ? value : nil;
}

NSString *stringFor(NSDictionary *saved, NSString *key)
{
    id value = [saved objectForKey:key];
    return [value isKindOfClass:[NSString class]] ? value : nil;
}

// The path inside the account, less an IMAP account's server prefix and the character after it.
NSString *pathWithoutPrefix(MailboxUid *mailbox)
{
    NSMutableString *path = [NSMutableString stringWithString:[mailbox accountRelativePath] ?: @""];
    id account = [mailbox ancestralAccount];
    NSString *prefix = [account isKindOfClass:[IMAPAccount class]] ? [account serverPathPrefix] : nil;
    if ([prefix length] == 0 || ![path hasPrefix:prefix])
        return path;
    NSUInteger length = [prefix length] + ([path length] > [prefix length] ? 1 : 0);
    [path deleteCharactersInRange:NSMakeRange(0, length)];
    return path;
}

BOOL accountsDiffer(NSArray *group)
{
    NSString *first = [[[(LVLiteralRecord *)[group objectAtIndex:0] uid] account] displayName];
    for (NSUInteger i = 1; i < [group count]; i++) {
        NSString *name = [[[(LVLiteralRecord *)[group objectAtIndex:i] uid] account] displayName];
        if (!sameSpelling(name, first))
            return YES;
    }
    return NO;
}

// "Name", "Name (Folder)", "Name (Account)" or "Name (Account/Folder)".
void nameAfterAccountAndFolder(NSArray *group)
{
    BOOL byAccount = accountsDiffer(group);
    for (LVLiteralRecord *record in group) {
        MailboxUid *mailbox = record->uid;
        NSString *path = pathWithoutPrefix(mailbox);
        NSMutableString *name = [NSMutableString stringWithString:[mailbox displayName] ?: @""];
        NSString *folder = @"";
        if (!sameSpelling(path, name)) {
            NSRange slash = [path rangeOfString:@"/" options:NSBackwardsSearch | NSLiteralSearch];
            folder = slash.location != NSNotFound ? [path substringToIndex:slash.location] : @"";
        }
        if (byAccount || [folder length] > 0) {
            if (byAccount)
                [name appendFormat:@" (%@", [[mailbox account] displayName] ?: @""];
            if ([folder length] > 0)
                [name appendFormat:byAccount ? @"/%@" : @" (%@", folder];
            [name appendString:@")"];
        }
        [record->displayName setString:name];
    }
}

LVLiteralRow *rowFor(LVLiteralRecord *record)
{
    LVLiteralRow *row = [[[LVLiteralRow alloc] init] autorelease];
    MailboxUid *mailbox = record->uid;
    row->title = [record->displayName copy];
    row->toolTip = [[NSString alloc] initWithFormat:@"%@/%@", [[mailbox account] displayName] ?: @"[error: NULL accountName]", pathWithoutPrefix(mailbox)];
    row->icon = [[MailboxesController iconForMailboxUid:mailbox smallSize:YES] retain];
    return row;
}

} // namespace

@implementation LVLiteralLorvane

- (id)initWithLimit:(int)limit preferences:(NSDictionary *)preferences
{
    if (nil == (self = [super init]))
        return nil;
    _limit = limit;
    _itemCount = limit > 0 ? (NSUInteger)limit : 0;
    id exclude = answering(preferences, @"ExcludeSpecialMailboxes", @selector(boolValue));
    _excludeSpecialMailboxes = exclude == nil || [exclude boolValue];
    _sortType = [answering(preferences, @"SortType", @selector(intValue)) intValue];
    if (_sortType < 0 || _sortType > 2)
        _sortType = 0;
    _list = [[NSMutableArray alloc] init];
    [self loadSavedRecords:[preferences isKindOfClass:[NSDictionary class]] ? [preferences objectForKey:@"RecentMailboxes"] : nil];
    _updateMenu = YES;
    _rows = [[NSArray alloc] init];
    return self;
}

- (void)dealloc
{
    [_list release];
    [_rows release];
    [super dealloc];
}

// Each saved record, in file order, takes in turn every mailbox of every active account that
// bears its path; a full list takes it only if it ranks before the last record kept.
- (void)loadSavedRecords:(id)saved
{
    if (![saved isKindOfClass:[NSArray class]])
        return;
    for (NSDictionary *entry in saved) {
        NSString *path = [entry isKindOfClass:[NSDictionary class]] ? stringFor(entry, @"FullPath") : nil;
        if (path == nil)
            continue;
        NSString *dateText = stringFor(entry, @"Date") ?: stringFor(entry, @"CalendarDate") ?: [[NSDate date] description];
        LVLiteralRecord *record = [[LVLiteralRecord alloc] initWithUid:nil
                                                              accesses:[answering(entry, @"Accesses", @selector(intValue)) intValue]
                                                                  date:[NSDate dateWithString:dateText]];
        for (MailboxUid *mailbox in activeMailboxes()) {
            if (!sameSpelling([mailbox fullPath], path))
                continue;
            record->uid = mailbox;
            if ([mailbox displayName] != nil)
                [record->displayName setString:[mailbox displayName]];
            if ([_list count] == (NSUInteger)_limit) {
                [_list sortUsingSelector:evictionOrder(_sortType)];
                if ([_list count] == 0 || compareForEviction(_sortType, [_list lastObject], record) != NSOrderedDescending)
                    continue;
                [_list removeLastObject];
            }
            [_list insertObject:record atIndex:0];
        }
        [record release];
    }
}

- (int)sortType
{
    return _sortType;
}

- (BOOL)excludesSpecialMailboxes
{
    return _excludeSpecialMailboxes;
}

- (NSArray *)records
{
    return _list;
}

- (void)addOrTouch:(id)mailbox
{
    if (_limit == 0 || (_excludeSpecialMailboxes && ![MailboxUid typeIsGeneric:[(MailboxUid *)mailbox type]]))
        return;
    NSDate *now = [NSDate date];
    for (LVLiteralRecord *record in _list) {
        if (record->uid != mailbox)
            continue;
        record->accesses = (int)((unsigned)record->accesses + 1u);
        [record->date release];
        record->date = [now retain];
        _updateMenu = YES;
        return;
    }
    if ([_list count] == (NSUInteger)_limit) {
        [_list sortUsingSelector:evictionOrder(_sortType)];
        [_list removeLastObject];
    }
    LVLiteralRecord *record = [[LVLiteralRecord alloc] initWithUid:mailbox accesses:1 date:now];
    [_list insertObject:record atIndex:0];
    [record release];
    _updateMenu = YES;
}

- (void)signalUpdateMenu
{
    _updateMenu = YES;
}

- (void)signalRemoveDeletedMailboxes
{
    _removeDeletedMailboxes = YES;
}

- (void)clear
{
    [_list removeAllObjects];
    _updateMenu = YES;
}

- (void)open
{
    if (_removeDeletedMailboxes) {
        [self prune];
        _removeDeletedMailboxes = NO;
    }
    if (!_updateMenu)
        return;
    _updateMenu = NO;
    [self rebuild];
}

// A record stays while an active account lists that very mailbox object and it is valid.
- (void)prune
{
    NSArray *live = activeMailboxes();
    NSMutableArray *gone = [NSMutableArray array];
    for (LVLiteralRecord *record in _list) {
        if ([live indexOfObjectIdenticalTo:record->uid] == NSNotFound || ![record->uid isValid])
            [gone addObject:record];
    }
    for (LVLiteralRecord *record in gone)
        [_list removeObjectIdenticalTo:record];
    if ([gone count] != 0)
        _updateMenu = YES;
}

- (void)rebuild
{
    for (LVLiteralRecord *record in _list) {
        if ([record->uid displayName] != nil)
            [record->displayName setString:[record->uid displayName]];
    }
    [_list sortUsingSelector:@selector(byName:)];
    for (NSUInteger first = 0; first < [_list count];) {
        NSString *name = [[[_list objectAtIndex:first] uid] displayName] ?: @"[error: NULL baseMailboxName]";
        [((LVLiteralRecord *)[_list objectAtIndex:first])->displayName setString:name];
        NSUInteger end = first + 1;
        while (end < [_list count] && sameSpelling([[[_list objectAtIndex:end] uid] displayName], name))
            end++;
        if (end - first > 1)
            nameAfterAccountAndFolder([_list subarrayWithRange:NSMakeRange(first, end - first)]);
        first = end;
    }
    if (_sortType == LVLiteralSortByDate)
        [_list sortUsingSelector:@selector(newestFirst:)];
    else if (_sortType == LVLiteralSortByAccesses)
        [_list sortUsingSelector:@selector(mostUsedFirst:)];
    else
        [_list sortUsingSelector:@selector(byName:)];
    NSMutableArray *rows = [NSMutableArray array];
    for (NSUInteger index = 0; index < [_list count] && index < _itemCount; index++)
        [rows addObject:rowFor([_list objectAtIndex:index])];
    [_rows release];
    _rows = [rows copy];
    _clearItemsEnabled = [_list count] != 0;
}

- (NSArray *)rows
{
    return _rows;
}

- (BOOL)clearItemsEnabled
{
    return _clearItemsEnabled;
}

- (NSDictionary *)savedPreferences
{
    NSMutableArray *saved = [NSMutableArray array];
    for (LVLiteralRecord *record in _list) {
        NSString *path = [record->uid fullPath];
        if (path == nil)
            continue;
        NSMutableDictionary *entry = [NSMutableDictionary dictionary];
        [entry setObject:[NSNumber numberWithInt:record->accesses] forKey:@"Accesses"];
        if (record->date != nil)
            [entry setObject:[record->date description] forKey:@"Date"];
        [entry setObject:path forKey:@"FullPath"];
        [saved addObject:entry];
    }
    return @{ @"SortType" : @(_sortType), @"ExcludeSpecialMailboxes" : @(_excludeSpecialMailboxes), @"RecentMailboxes" : saved };
}

@end
