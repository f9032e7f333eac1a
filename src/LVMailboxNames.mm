#import "LVMailboxNames.h"
#import "LorvaneMailbox.h"

// Everything before the last "/" of a mailbox's path. Mail's names are text, not path syntax:
// an empty name, or one holding a "\", would lose its folder to the platform's path methods
// (they trim a trailing "/", and GNUstep also reads "\" as a separator). The search is literal
// so that a name beginning with a combining mark still ends its folder at the "/".
static NSString *folderOfMailboxPath(NSString *relativePath)
{
    NSRange separator = [relativePath rangeOfString:@"/" options:NSBackwardsSearch | NSLiteralSearch];
    return separator.location != NSNotFound ? [relativePath substringToIndex:separator.location] : @"";
}

BOOL LVSameSpelling(NSString *a, NSString *b)
{
    return a != nil && b != nil && [a compare:b options:NSLiteralSearch] == NSOrderedSame;
}

@implementation LVMailboxNames

+ (BOOL)accountsDifferIn:(NSArray *)group
{
    BOOL first = YES;
    NSString *reference = nil;
    for (LorvaneMailbox *record in group) {
        NSString *accountName = [[[record uid] account] displayName];
        if (first) {
            reference = accountName;
            first = NO;
            continue;
        }
        if (!LVSameSpelling(accountName, reference))
            return YES;
    }
    return NO;
}

+ (void)nameNamesakes:(NSArray *)group byAccount:(BOOL)byAccount
{
    for (LorvaneMailbox *record in group) {
        id<LVMailboxUid> uid = [record uid];
        NSString *relativePath = [self pathInAccountOfMailbox:uid];
        NSString *mailName = [uid displayName];
        NSMutableString *name = [NSMutableString stringWithString:mailName != nil ? mailName : @""];

        // A mailbox at the top of its account has its bare name as its path: no parent.
        NSString *parent = @"";
        if (!LVSameSpelling(relativePath, name))
            parent = folderOfMailboxPath(relativePath);

        if (!byAccount && [parent length] == 0) {
            [record setDisplayName:name];
            continue;
        }
        if (byAccount) {
            [name appendString:@" ("];
            NSString *accountName = [[uid account] displayName];
            if (accountName != nil)
                [name appendString:accountName];
        }
        if ([parent length] > 0) {
            [name appendString:byAccount ? @"/" : @" ("];
            [name appendString:parent];
        }
        [name appendString:@")"];
        [record setDisplayName:name];
    }
}

// The prefix test is on characters, not path components, and the character after the
// prefix goes with it whatever it is: the server's folder separator is not known here.
+ (NSMutableString *)pathInAccountOfMailbox:(id<LVMailboxUid>)mailbox
{
    NSMutableString *path = [NSMutableString stringWithCapacity:1024];
    NSString *relativePath = [mailbox accountRelativePath];
    if (relativePath != nil)
        [path setString:relativePath];

    Class imapAccountClass = LVMailClass(@"IMAPAccount");
    id account = [mailbox ancestralAccount];
    if (imapAccountClass == Nil || ![account isKindOfClass:imapAccountClass])
        return path;
    NSString *prefix = [(id<LVIMAPAccount>)account serverPathPrefix];
    if ([prefix length] == 0 || ![path hasPrefix:prefix])
        return path;

    NSUInteger length = [prefix length];
    if ([path length] > length)
        length++;
    [path deleteCharactersInRange:NSMakeRange(0, length)];
    return path;
}

// The menu shows only the mailbox's name; its tool tip says where it lives.
+ (NSString *)toolTipOfMailbox:(id<LVMailboxUid>)mailbox
{
    NSString *accountName = [[mailbox account] displayName] ?: @"[error: NULL accountName]";
    NSString *path = [self pathInAccountOfMailbox:mailbox] ?: @"[error: NULL accountRelativePath]";
    NSMutableString *toolTip = [NSMutableString stringWithCapacity:1024];
    [toolTip appendString:accountName];
    [toolTip appendString:@"/"];
    [toolTip appendString:path];
    return toolTip;
}

@end
