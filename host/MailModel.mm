#import "MailModel.h"

#include <algorithm>
#include <ctime>
#include <unordered_map>
#include <vector>

static NSString *const MHMailboxExtension = @".mbox";
static NSString *const MHMessagesFolderName = @"Messages";
static NSString *const MHMessageExtension = @"eml";
static NSString *const MHAccountFileName = @"Account.plist";

static NSArray *activeAccounts;

// GNUstep's own declaration is not in its public headers.
extern "C" const char *GSPathHandling(const char *mode);

// On a Mac "\" is an ordinary character in a file name, so "back\slash" is a mailbox
// name like any other. GNUstep's default path handling reads it as a separator and would
// scatter such a mailbox over two folders: this Mail treats paths the way a Mac does.
__attribute__((constructor)) static void MHUseMacPathHandling(void)
{
    GSPathHandling("unix");
}

// Siblings are listed as a person reads them: case folded first, exact spelling only to break ties.
static NSComparisonResult MHCompareNames(NSString *left, NSString *right)
{
    NSComparisonResult folded = [left caseInsensitiveCompare:right];
    return folded != NSOrderedSame ? folded : [left compare:right];
}

static bool MHNameBefore(NSString *left, NSString *right)
{
    return MHCompareNames(left, right) == NSOrderedAscending;
}

// "10.eml" comes after "9.eml", as the messages arrived.
static bool MHMessageNameBefore(NSString *left, NSString *right)
{
    return [left compare:right options:NSNumericSearch] == NSOrderedAscending;
}

static NSArray *MHSortedStrings(NSArray *strings, bool (*before)(NSString *, NSString *))
{
    std::vector<NSString *> sorted;
    for (NSString *string in strings)
        sorted.push_back(string);
    std::sort(sorted.begin(), sorted.end(), before);
    return [NSArray arrayWithObjects:sorted.data() count:sorted.size()];
}

// Only a mailbox at the top of its account can be one of Mail's special mailboxes.
static int MHTypeForTopLevelName(NSString *name)
{
    static const struct {
        const char *name;
        int type;
    } specialNames[] = {
        { "inbox", MHMailboxTypeInbox }, { "sent", MHMailboxTypeSent },
        { "sent messages", MHMailboxTypeSent }, { "drafts", MHMailboxTypeDrafts },
        { "trash", MHMailboxTypeTrash }, { "deleted messages", MHMailboxTypeTrash },
        { "junk", MHMailboxTypeJunk },
    };
    NSString *folded = [name lowercaseString];
    for (const auto &special : specialNames)
        if ([folded isEqualToString:[NSString stringWithUTF8String:special.name]])
            return special.type;
    return MHMailboxTypeGeneric;
}

static BOOL MHIsDirectory(NSString *path)
{
    BOOL isDirectory = NO;
    return [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isDirectory] && isDirectory;
}

// Paths are joined by hand: a mailbox name is whatever the user typed, and must not be
// reinterpreted as path syntax on the way to the disk.
static NSString *MHJoinPath(NSString *folder, NSString *name)
{
    return [[folder stringByAppendingString:@"/"] stringByAppendingString:name];
}

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

@interface MailboxUid (MHStore)
- (id)initWithAccount:(MailAccount *)account parent:(MailboxUid *)parent name:(NSString *)name;
- (void)takeName:(NSString *)name;
- (void)refreshPaths;
- (BOOL)isDescendantOf:(MailboxUid *)ancestor;
- (void)invalidate;
- (void)detachFromAccount;
- (NSString *)messagesFolder;
- (NSString *)nextFreeMessagePath;
@end

@interface MailAccount (MHStore)
- (BOOL)holdsMailbox:(MailboxUid *)mailbox;
- (MailboxUid *)addMailboxNamed:(NSString *)name parent:(MailboxUid *)parent;
- (BOOL)makeFolderForMailboxNamed:(NSString *)name parent:(MailboxUid *)parent;
- (void)orderMailboxesIfNeeded;
- (NSArray *)subtreeOf:(MailboxUid *)mailbox;
- (void)retireMailboxes:(NSArray *)mailboxes;
- (void)scanFolder:(NSString *)folder parent:(MailboxUid *)parent found:(NSMutableSet *)relativePaths;
@end

@implementation MailboxUid

+ (BOOL)typeIsGeneric:(int)type
{
    return type == MHMailboxTypeGeneric;
}

- (id)initWithAccount:(MailAccount *)account parent:(MailboxUid *)parent name:(NSString *)name
{
    if (nil == (self = [super init]))
        return nil;
    _account = account;
    _parent = parent;
    _valid = YES;
    [self takeName:name];
    [self refreshPaths];
    return self;
}

- (void)dealloc
{
    [_displayName release];
    [_fullPath release];
    [_relativePath release];
    [super dealloc];
}

- (void)takeName:(NSString *)name
{
    NSString *copied = [name copy];
    [_displayName release];
    _displayName = copied;
    _type = _parent == nil ? MHTypeForTopLevelName(name) : MHMailboxTypeGeneric;
}

// Derives both paths from the parent's, so a renamed folder's subtree follows it in one pass.
- (void)refreshPaths
{
    NSString *relative = _parent == nil ? _displayName : MHJoinPath([_parent accountRelativePath], _displayName);
    NSString *folderName = [_displayName stringByAppendingString:MHMailboxExtension];
    NSString *full = nil;
    if ([_account path] == nil)
        full = MHJoinPath([_account displayName] != nil ? [_account displayName] : @"", relative);
    else
        full = MHJoinPath(_parent == nil ? [_account path] : [_parent fullPath], folderName);
    [_relativePath release];
    _relativePath = [relative copy];
    [_fullPath release];
    _fullPath = [full copy];
}

- (BOOL)isDescendantOf:(MailboxUid *)ancestor
{
    for (MailboxUid *above = _parent; above != nil; above = [above parent])
        if (above == ancestor)
            return YES;
    return NO;
}

- (void)invalidate
{
    _valid = NO;
}

// The account is going away; a uid somebody else still retains must not point at it.
- (void)detachFromAccount
{
    _account = nil;
    _parent = nil;
}

- (int)type
{
    return _type;
}

- (NSString *)displayName
{
    return _displayName;
}

- (NSString *)fullPath
{
    return _fullPath;
}

- (BOOL)isValid
{
    return _valid;
}

- (MailAccount *)account
{
    return _account;
}

- (MailAccount *)ancestralAccount
{
    return _account;
}

- (NSString *)accountRelativePath
{
    return _relativePath;
}

- (MailboxUid *)parent
{
    return _parent;
}

- (NSString *)messagesFolder
{
    if (!_valid || [_account path] == nil)
        return nil;
    return MHJoinPath(_fullPath, MHMessagesFolderName);
}

- (NSArray *)messagePaths
{
    NSString *folder = [self messagesFolder];
    if (folder == nil)
        return @[];
    NSMutableArray *names = [NSMutableArray array];
    for (NSString *name in [[NSFileManager defaultManager] contentsOfDirectoryAtPath:folder error:NULL])
        if (![name hasPrefix:@"."] && [[name pathExtension] isEqualToString:MHMessageExtension])
            [names addObject:name];
    NSMutableArray *paths = [NSMutableArray arrayWithCapacity:[names count]];
    for (NSString *name in MHSortedStrings(names, MHMessageNameBefore))
        [paths addObject:MHJoinPath(folder, name)];
    return paths;
}

// The next number after the highest one in use, so a message never lands on another.
- (NSString *)nextFreeMessagePath
{
    NSString *folder = [self messagesFolder];
    if (folder == nil)
        return nil;
    NSFileManager *fileManager = [NSFileManager defaultManager];
    if (![fileManager createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:NULL]) {
        NSLog(@"MailHost: cannot make the messages folder %@", folder);
        return nil;
    }
    long number = 0;
    for (NSString *name in [fileManager contentsOfDirectoryAtPath:folder error:NULL])
        number = std::max(number, (long)[[name stringByDeletingPathExtension] integerValue]);
    NSString *path = nil;
    do {
        number++;
        path = MHJoinPath(folder, [NSString stringWithFormat:@"%ld.%@", number, MHMessageExtension]);
    } while ([fileManager fileExistsAtPath:path]);
    return path;
}

- (NSString *)receiveMessageAtPath:(NSString *)path deleteOriginal:(BOOL)deleteOriginal
{
    NSString *destination = [self nextFreeMessagePath];
    if (destination == nil || path == nil)
        return nil;
    NSFileManager *fileManager = [NSFileManager defaultManager];
    BOOL done = deleteOriginal ? [fileManager moveItemAtPath:path toPath:destination error:NULL]
                               : [fileManager copyItemAtPath:path toPath:destination error:NULL];
    if (!done) {
        NSLog(@"MailHost: cannot put %@ into %@", path, _fullPath);
        return nil;
    }
    return destination;
}

@end

@implementation MailAccount

+ (NSArray *)activeAccounts
{
    return activeAccounts != nil ? activeAccounts : @[];
}

+ (void)setActiveAccounts:(NSArray *)accounts
{
    if (accounts == activeAccounts)
        return;
    [activeAccounts release];
    activeAccounts = [accounts retain];
}

+ (MailAccount *)accountWithFolder:(NSString *)path
{
    NSString *plistPath = MHJoinPath(path, MHAccountFileName);
    NSData *data = [NSData dataWithContentsOfFile:plistPath];
    NSDictionary *settings = nil;
    @try {
        if (data != nil)
            settings = [NSPropertyListSerialization propertyListWithData:data options:0 format:NULL error:NULL];
    } @catch (NSException *exception) {
        settings = nil; // a damaged file reads as no file
    }
    if (![settings isKindOfClass:[NSDictionary class]]) {
        NSLog(@"MailHost: no readable account settings in %@", plistPath);
        return nil;
    }
    NSString *name = [settings objectForKey:@"DisplayName"];
    if (![name isKindOfClass:[NSString class]] || [name length] == 0)
        name = [path lastPathComponent]; // an unnamed account goes by its folder
    BOOL imap = [[settings objectForKey:@"AccountType"] isEqual:@"IMAP"];
    MailAccount *account = [[[(imap ? [IMAPAccount class] : [MailAccount class]) alloc] initWithDisplayName:name
                                                                                                        path:path] autorelease];
    NSString *prefix = [settings objectForKey:@"ServerPathPrefix"];
    if (imap && [prefix isKindOfClass:[NSString class]])
        [(IMAPAccount *)account setServerPathPrefix:prefix];
    [account rescan];
    return account;
}

- (id)initWithDisplayName:(NSString *)displayName path:(NSString *)path
{
    if (nil == (self = [super init]))
        return nil;
    _displayName = [displayName copy];
    _path = [[path stringByStandardizingPath] copy];
    _mailboxes = [[NSMutableArray alloc] init];
    _mailboxesByRelativePath = [[NSMutableDictionary alloc] init];
    _retiredMailboxes = [[NSMutableArray alloc] init];
    return self;
}

- (void)dealloc
{
    for (MailboxUid *mailbox in _mailboxes)
        [mailbox detachFromAccount];
    for (MailboxUid *mailbox in _retiredMailboxes)
        [mailbox detachFromAccount];
    [_displayName release];
    [_path release];
    [_mailboxes release];
    [_mailboxesByRelativePath release];
    [_retiredMailboxes release];
    [super dealloc];
}

- (NSString *)displayName
{
    return _displayName;
}

- (NSString *)path
{
    return _path;
}

- (NSArray *)allMailboxUids
{
    [self orderMailboxesIfNeeded];
    return _mailboxes;
}

- (MailboxUid *)mailboxUidForRelativePath:(NSString *)relativePath
{
    return relativePath != nil ? [_mailboxesByRelativePath objectForKey:relativePath] : nil;
}

- (BOOL)holdsMailbox:(MailboxUid *)mailbox
{
    NSString *relativePath = [mailbox accountRelativePath];
    return relativePath != nil && [_mailboxesByRelativePath objectForKey:relativePath] == mailbox;
}

- (MailboxUid *)addMailboxNamed:(NSString *)name parent:(MailboxUid *)parent
{
    MailboxUid *mailbox = [[MailboxUid alloc] initWithAccount:self parent:parent name:name];
    [_mailboxes addObject:mailbox];
    [_mailboxesByRelativePath setObject:mailbox forKey:[mailbox accountRelativePath]];
    _mailboxesNeedOrdering = YES;
    return [mailbox autorelease];
}

- (BOOL)makeFolderForMailboxNamed:(NSString *)name parent:(MailboxUid *)parent
{
    if (_path == nil)
        return YES; // an account in memory has no folders
    NSString *folder = MHJoinPath(parent == nil ? _path : [parent fullPath], [name stringByAppendingString:MHMailboxExtension]);
    NSString *messages = MHJoinPath(folder, MHMessagesFolderName);
    if ([[NSFileManager defaultManager] createDirectoryAtPath:messages withIntermediateDirectories:YES attributes:nil error:NULL])
        return YES;
    NSLog(@"MailHost: cannot make the mailbox folder %@", folder);
    return NO;
}

- (MailboxUid *)createMailboxWithRelativePath:(NSString *)relativePath
{
    NSArray *names = [relativePath componentsSeparatedByString:@"/"];
    // An empty name cannot be a folder (".mbox" would be hidden from a rescan); an account in
    // memory holds whatever names its server reports, the empty one included.
    BOOL hasEmptyName = [relativePath length] == 0 || [names containsObject:@""];
    if (relativePath == nil || (hasEmptyName && _path != nil)) {
        NSLog(@"MailHost: no mailbox can be made at \"%@\"", relativePath);
        return nil;
    }
    MailboxUid *mailbox = nil;
    for (NSString *name in names) {
        NSString *path = mailbox == nil ? name : MHJoinPath([mailbox accountRelativePath], name);
        MailboxUid *existing = [_mailboxesByRelativePath objectForKey:path];
        if (existing != nil) {
            mailbox = existing;
            continue;
        }
        if (![self makeFolderForMailboxNamed:name parent:mailbox])
            return nil;
        mailbox = [self addMailboxNamed:name parent:mailbox];
    }
    return mailbox;
}

// Ordering is deferred so that making many mailboxes costs one sort, not one per mailbox.
- (void)orderMailboxesIfNeeded
{
    if (!_mailboxesNeedOrdering)
        return;
    _mailboxesNeedOrdering = NO;
    std::unordered_map<MailboxUid *, std::vector<MailboxUid *>> children;
    for (MailboxUid *mailbox in _mailboxes) {
        MailboxUid *parent = [mailbox parent];
        children[parent].push_back(mailbox);
    }
    for (auto &entry : children)
        std::sort(entry.second.begin(), entry.second.end(), [](MailboxUid *left, MailboxUid *right) {
            return MHNameBefore([left displayName], [right displayName]);
        });
    NSMutableArray *ordered = [NSMutableArray arrayWithCapacity:[_mailboxes count]];
    std::vector<MailboxUid *> pending(children[nil].rbegin(), children[nil].rend());
    while (!pending.empty()) {
        MailboxUid *mailbox = pending.back();
        pending.pop_back();
        [ordered addObject:mailbox];
        auto found = children.find(mailbox);
        if (found != children.end())
            pending.insert(pending.end(), found->second.rbegin(), found->second.rend());
    }
    [_mailboxes setArray:ordered];
}

// The mailbox and everything under it: one run of the ordered list.
- (NSArray *)subtreeOf:(MailboxUid *)mailbox
{
    [self orderMailboxesIfNeeded];
    NSUInteger first = [_mailboxes indexOfObjectIdenticalTo:mailbox];
    if (first == NSNotFound)
        return @[];
    NSUInteger end = first + 1;
    while (end < [_mailboxes count] && [[_mailboxes objectAtIndex:end] isDescendantOf:mailbox])
        end++;
    return [_mailboxes subarrayWithRange:NSMakeRange(first, end - first)];
}

// Mail keeps a gone mailbox's uid alive, invalid: the graveyard holds it.
- (void)retireMailboxes:(NSArray *)mailboxes
{
    if ([mailboxes count] == 0)
        return;
    for (MailboxUid *mailbox in mailboxes) {
        [_retiredMailboxes addObject:mailbox];
        [mailbox invalidate];
        [_mailboxesByRelativePath removeObjectForKey:[mailbox accountRelativePath]];
    }
    NSMutableIndexSet *gone = [NSMutableIndexSet indexSet];
    for (NSUInteger index = 0; index < [_mailboxes count]; index++)
        if (![[_mailboxes objectAtIndex:index] isValid])
            [gone addIndex:index];
    [_mailboxes removeObjectsAtIndexes:gone];
}

- (BOOL)deleteMailbox:(MailboxUid *)mailbox reflectToServer:(BOOL)reflectToServer
{
    (void)reflectToServer; // the store is the server: there is nothing else to tell
    if (![self holdsMailbox:mailbox]) {
        NSLog(@"MailHost: %@ cannot delete a mailbox it does not hold", _displayName);
        return NO;
    }
    NSFileManager *fileManager = [NSFileManager defaultManager];
    NSString *folder = [mailbox fullPath];
    if (_path != nil && [fileManager fileExistsAtPath:folder] && ![fileManager removeItemAtPath:folder error:NULL]) {
        NSLog(@"MailHost: cannot remove the mailbox folder %@", folder);
        return NO;
    }
    [self retireMailboxes:[self subtreeOf:mailbox]];
    return YES;
}

- (BOOL)renameMailbox:(MailboxUid *)mailbox toName:(NSString *)newName
{
    if (![self holdsMailbox:mailbox]) {
        NSLog(@"MailHost: %@ cannot rename a mailbox it does not hold", _displayName);
        return NO;
    }
    if ([newName length] == 0 || [newName rangeOfString:@"/"].location != NSNotFound) {
        NSLog(@"MailHost: \"%@\" cannot name a mailbox", newName);
        return NO;
    }
    if ([newName isEqualToString:[mailbox displayName]])
        return YES;
    MailboxUid *parent = [mailbox parent];
    NSString *newRelativePath = parent == nil ? newName : MHJoinPath([parent accountRelativePath], newName);
    if ([_mailboxesByRelativePath objectForKey:newRelativePath] != nil) {
        NSLog(@"MailHost: a mailbox %@ exists already", newRelativePath);
        return NO;
    }
    if (_path != nil) {
        NSString *newFolder = MHJoinPath(parent == nil ? _path : [parent fullPath], [newName stringByAppendingString:MHMailboxExtension]);
        if (![[NSFileManager defaultManager] moveItemAtPath:[mailbox fullPath] toPath:newFolder error:NULL]) {
            NSLog(@"MailHost: cannot rename the mailbox folder %@", [mailbox fullPath]);
            return NO;
        }
    }
    NSArray *subtree = [self subtreeOf:mailbox];
    for (MailboxUid *moved in subtree)
        [_mailboxesByRelativePath removeObjectForKey:[moved accountRelativePath]];
    [mailbox takeName:newName];
    for (MailboxUid *moved in subtree) {
        [moved refreshPaths];
        [_mailboxesByRelativePath setObject:moved forKey:[moved accountRelativePath]];
    }
    _mailboxesNeedOrdering = YES;
    return YES;
}

- (void)scanFolder:(NSString *)folder parent:(MailboxUid *)parent found:(NSMutableSet *)relativePaths
{
    for (NSString *entry in [[NSFileManager defaultManager] contentsOfDirectoryAtPath:folder error:NULL]) {
        NSString *entryPath = MHJoinPath(folder, entry);
        if ([entry length] <= [MHMailboxExtension length] || ![entry hasSuffix:MHMailboxExtension] || !MHIsDirectory(entryPath))
            continue;
        NSString *name = [entry substringToIndex:[entry length] - [MHMailboxExtension length]];
        NSString *relativePath = parent == nil ? name : MHJoinPath([parent accountRelativePath], name);
        [relativePaths addObject:relativePath];
        MailboxUid *mailbox = [_mailboxesByRelativePath objectForKey:relativePath];
        if (mailbox == nil)
            mailbox = [self addMailboxNamed:name parent:parent];
        [self scanFolder:entryPath parent:mailbox found:relativePaths];
    }
}

- (void)rescan
{
    if (_path == nil)
        return; // an account in memory has nothing to re-read
    NSMutableSet *onDisk = [NSMutableSet set];
    [self scanFolder:_path parent:nil found:onDisk];
    NSMutableArray *vanished = [NSMutableArray array];
    for (MailboxUid *mailbox in _mailboxes)
        if (![onDisk containsObject:[mailbox accountRelativePath]])
            [vanished addObject:mailbox];
    [self retireMailboxes:vanished];
}

@end

@implementation IMAPAccount

- (void)dealloc
{
    [_serverPathPrefix release];
    [super dealloc];
}

- (NSString *)serverPathPrefix
{
    return _serverPathPrefix;
}

- (void)setServerPathPrefix:(NSString *)prefix
{
    if (prefix == _serverPathPrefix)
        return;
    [_serverPathPrefix release];
    _serverPathPrefix = [prefix copy];
}

@end

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
    if (![[NSFileManager defaultManager] createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:nil error:NULL] ||
        ![data writeToFile:MHJoinPath(folder, MHAccountFileName) atomically:YES]) {
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
