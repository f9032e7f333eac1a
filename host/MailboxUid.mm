#import "MailboxUid.h"
#import "MHStoreLayout.h"
#import "MailAccount.h"
#import "MailboxUid+MHStore.h"

#include <algorithm>

// "10.eml" comes after "9.eml", as the messages arrived.
static BOOL MHMessageNameBefore(NSString *left, NSString *right)
{
    return [left compare:right options:NSNumericSearch] == NSOrderedAscending;
}

// Only a mailbox at the top of its account can be one of Mail's special mailboxes.
static int MHTypeForTopLevelName(NSString *name)
{
    static const struct {
        const char *name;
        int type;
    } specialNames[] = {
        { "inbox", MHMailboxTypeInbox },
        { "sent", MHMailboxTypeSent },
        { "sent messages", MHMailboxTypeSent },
        { "drafts", MHMailboxTypeDrafts },
        { "trash", MHMailboxTypeTrash },
        { "deleted messages", MHMailboxTypeTrash },
        { "junk", MHMailboxTypeJunk },
    };
    NSString *folded = [name lowercaseString];
    for (const auto &special : specialNames)
        if ([folded isEqualToString:[NSString stringWithUTF8String:special.name]])
            return special.type;
    return MHMailboxTypeGeneric;
}

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