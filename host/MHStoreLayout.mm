#import "MHStoreLayout.h"

#include <algorithm>
#include <vector>

NSString *const MHMailboxExtension = @".mbox";
NSString *const MHMessagesFolderName = @"Messages";
NSString *const MHMessageExtension = @"eml";
NSString *const MHAccountFileName = @"Account.plist";

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

BOOL MHNameBefore(NSString *left, NSString *right)
{
    return MHCompareNames(left, right) == NSOrderedAscending;
}

NSArray *MHSortedStrings(NSArray *strings, BOOL (*before)(NSString *, NSString *))
{
    std::vector<NSString *> sorted;
    for (NSString *string in strings)
        sorted.push_back(string);
    std::sort(sorted.begin(), sorted.end(), before);
    return [NSArray arrayWithObjects:sorted.data() count:sorted.size()];
}

BOOL MHIsDirectory(NSString *path)
{
    BOOL isDirectory = NO;
    return [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isDirectory] && isDirectory;
}

// Paths are joined by hand: a mailbox name is whatever the user typed, and must not be
// reinterpreted as path syntax on the way to the disk.
NSString *MHJoinPath(NSString *folder, NSString *name)
{
    return [[folder stringByAppendingString:@"/"] stringByAppendingString:name];
}
