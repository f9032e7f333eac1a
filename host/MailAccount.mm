#import "MailAccount.h"
#import "IMAPAccount.h"
#import "MHStoreLayout.h"
#import "MailboxUid+MHStore.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

static NSArray *activeAccounts;

@interface MailAccount (MHStore)
- (BOOL)holdsMailbox:(MailboxUid *)mailbox;
- (MailboxUid *)addMailboxNamed:(NSString *)name parent:(MailboxUid *)parent;
- (BOOL)makeFolderForMailboxNamed:(NSString *)name parent:(MailboxUid *)parent;
- (void)orderMailboxesIfNeeded;
- (NSArray *)subtreeOf:(MailboxUid *)mailbox;
- (void)retireMailboxes:(NSArray *)mailboxes;
- (void)scanFolder:(NSString *)folder parent:(MailboxUid *)parent found:(NSMutableSet *)relativePaths;
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