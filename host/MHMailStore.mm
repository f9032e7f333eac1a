#import "MHMailStore.h"
#import "MHStoreLayout.h"
#import "MailAccount.h"
#import "MailboxUid+MHStore.h"

#include <ctime>

// The "Date" header's form, written without the C library's locale.
static NSString *MHMessageDate(NSDate *date)
{
    static const char *const days[] = { "Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat" };
    static const char *const months[] = { "Jan", "Feb", "Mar", "Apr", "May", "Jun",
        "Jul", "Aug", "Sep", "Oct", "Nov", "Dec" };
    time_t seconds = (time_t)[date timeIntervalSince1970];
    struct tm utc;
    gmtime_r(&seconds, &utc);
    return [NSString stringWithFormat:@"%s, %02d %s %04d %02d:%02d:%02d +0000", days[utc.tm_wday], utc.tm_mday,
                     months[utc.tm_mon], utc.tm_year + 1900, utc.tm_hour, utc.tm_min, utc.tm_sec];
}

// A header value stays on its line whatever the caller passed.
static NSString *MHHeaderValue(NSString *value)
{
    if (value == nil)
        return @"";
    NSArray *lines = [value componentsSeparatedByCharactersInSet:[NSCharacterSet newlineCharacterSet]];
    return [lines componentsJoinedByString:@" "];
}

@interface MHMailStore (Opening)
- (id)initWithRoot:(NSString *)root accounts:(NSArray *)accounts;
- (NSString *)freeAccountFolderFor:(NSString *)displayName;
@end

@implementation MHMailStore

+ (MHMailStore *)storeAtPath:(NSString *)root
{
    NSString *standardRoot = [root stringByStandardizingPath];
    if (!MHIsDirectory(standardRoot)) {
        NSLog(@"MailHost: no mail store at %@", root);
        return nil;
    }
    NSMutableArray *accounts = [NSMutableArray array];
    NSArray *entries = [[NSFileManager defaultManager] contentsOfDirectoryAtPath:standardRoot error:NULL];
    for (NSString *entry in MHSortedStrings(entries, MHNameBefore)) {
        NSString *folder = MHJoinPath(standardRoot, entry);
        if ([entry hasPrefix:@"."] || !MHIsDirectory(folder))
            continue;
        MailAccount *account = [MailAccount accountWithFolder:folder];
        if (account != nil)
            [accounts addObject:account];
    }
    MHMailStore *store = [[[self alloc] initWithRoot:standardRoot accounts:accounts] autorelease];
    [MailAccount setActiveAccounts:[store accounts]];
    return store;
}

+ (MHMailStore *)copyOfStoreAtPath:(NSString *)source toPath:(NSString *)destination
{
    NSFileManager *fileManager = [NSFileManager defaultManager];
    if (!MHIsDirectory(source) || ![fileManager createDirectoryAtPath:destination withIntermediateDirectories:YES attributes:nil error:NULL]) {
        NSLog(@"MailHost: cannot copy the mail store %@", source);
        return nil;
    }
    // Entry by entry, so an existing empty destination folder is fine.
    for (NSString *entry in [fileManager contentsOfDirectoryAtPath:source error:NULL]) {
        if ([fileManager copyItemAtPath:MHJoinPath(source, entry) toPath:MHJoinPath(destination, entry) error:NULL])
            continue;
        NSLog(@"MailHost: cannot copy %@ into %@", entry, destination);
        return nil;
    }
    return [self storeAtPath:destination];
}

- (id)initWithRoot:(NSString *)root accounts:(NSArray *)accounts
{
    if (nil == (self = [super init]))
        return nil;
    _root = [root copy];
    _accounts = [accounts copy];
    return self;
}

- (void)dealloc
{
    [_root release];
    [_accounts release];
    [super dealloc];
}

- (NSString *)root
{
    return _root;
}

- (NSArray *)accounts
{
    return _accounts;
}

- (MailAccount *)accountNamed:(NSString *)displayName
{
    for (MailAccount *account in _accounts)
        if ([[account displayName] isEqualToString:displayName])
            return account;
    return nil;
}

// Account names may hold "/" themselves, so each account is tried as the path's beginning.
- (MailboxUid *)mailboxAtPath:(NSString *)accountAndRelativePath
{
    for (MailAccount *account in _accounts) {
        NSString *accountPrefix = [[account displayName] stringByAppendingString:@"/"];
        if (![accountAndRelativePath hasPrefix:accountPrefix])
            continue;
        MailboxUid *mailbox = [account mailboxUidForRelativePath:[accountAndRelativePath substringFromIndex:[accountPrefix length]]];
        if (mailbox != nil)
            return mailbox;
    }
    return nil;
}

// Two accounts may share a display name; their folders get "Name 2", "Name 3", ...
- (NSString *)freeAccountFolderFor:(NSString *)displayName
{
    NSString *base = [displayName stringByReplacingOccurrencesOfString:@"/" withString:@"-"];
    if ([base hasPrefix:@"."])
        base = [@"_" stringByAppendingString:base]; // hidden folders are not read as accounts
    NSString *folder = MHJoinPath(_root, base);
    for (int suffix = 2; [[NSFileManager defaultManager] fileExistsAtPath:folder]; suffix++)
        folder = MHJoinPath(_root, [base stringByAppendingFormat:@" %d", suffix]);
    return folder;
}

- (MailAccount *)addAccountNamed:(NSString *)displayName type:(NSString *)type serverPathPrefix:(NSString *)prefix
{
    if ([displayName length] == 0) {
        NSLog(@"MailHost: an account needs a name");
        return nil;
    }
    NSString *folder = [self freeAccountFolderFor:displayName];
    NSDictionary *settings = @{
        @"DisplayName" : displayName,
        @"AccountType" : type != nil ? type : @"POP",
        @"ServerPathPrefix" : prefix != nil ? prefix : @"",
    };
    NSData *data = [NSPropertyListSerialization dataWithPropertyList:settings format:NSPropertyListXMLFormat_v1_0 options:0 error:NULL];
    if (![[NSFileManager defaultManager] createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:NULL] || ![data writeToFile:MHJoinPath(folder, MHAccountFileName) atomically:YES]) {
        NSLog(@"MailHost: cannot make the account folder %@", folder);
        return nil;
    }
    MailAccount *account = [MailAccount accountWithFolder:folder];
    if (account == nil)
        return nil;
    NSArray *accounts = [_accounts arrayByAddingObject:account];
    [_accounts release];
    _accounts = [accounts retain];
    [MailAccount setActiveAccounts:_accounts];
    return account;
}

- (NSString *)addMessageTo:(MailboxUid *)mailbox from:(NSString *)sender subject:(NSString *)subject date:(NSDate *)date
{
    NSString *path = [mailbox nextFreeMessagePath];
    if (path == nil) {
        NSLog(@"MailHost: no room for a message in %@", [mailbox fullPath]);
        return nil;
    }
    NSString *text = [NSString stringWithFormat:@"From: %@\nTo: %@\nSubject: %@\nDate: %@\nMessage-ID: <%@@mailhost.example.org>\n\n%@\n",
                               MHHeaderValue(sender), @"me@example.com",
                               MHHeaderValue(subject), MHMessageDate(date != nil ? date : [NSDate date]),
                               [[NSProcessInfo processInfo] globallyUniqueString], MHHeaderValue(subject)];
    if (![text writeToFile:path atomically:YES encoding:NSUTF8StringEncoding error:NULL]) {
        NSLog(@"MailHost: cannot write the message %@", path);
        return nil;
    }
    return path;
}

@end