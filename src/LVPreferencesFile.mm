#import "LVPreferencesFile.h"
#import "LVPropertyListWriter.h"
#import "LorvaneMailbox.h"
#import "PropertyListReader.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unistd.h>

NSString *const LVBundleIdentifier = @"org.lorvane.mailbundle";

static NSString *const LVExcludeSpecialMailboxesKey = @"ExcludeSpecialMailboxes";
static NSString *const LVSortTypeKey = @"SortType";
static NSString *const LVRecentMailboxesKey = @"RecentMailboxes";
static NSString *const LVAccessesKey = @"Accesses";
static NSString *const LVDateKey = @"Date";
static NSString *const LVCalendarDateKey = @"CalendarDate"; // a saved date under its other name, read when "Date" is missing
static NSString *const LVFullPathKey = @"FullPath";

NSString *LVUserLibraryFolder(void)
{
    NSArray *libraries = NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSUserDomainMask, YES);
    return [libraries count] > 0 ? [[libraries objectAtIndex:0] stringByExpandingTildeInPath] : nil;
}

#pragma mark Reading

// A value of the wrong kind is treated as missing, except that anything that can answer
// the conversion is taken at its word (a "2" under "SortType" reads as 2).
static id valueAnswering(NSDictionary *dictionary, NSString *key, SEL conversion)
{
    id value = [dictionary objectForKey:key];
    return [value respondsToSelector:conversion] ? value : nil;
}

static id valueOfClass(NSDictionary *dictionary, NSString *key, Class expected)
{
    id value = [dictionary objectForKey:key];
    return [value isKindOfClass:expected] ? value : nil;
}

static NSString *savedDateText(NSDictionary *saved)
{
    NSString *text = valueOfClass(saved, LVDateKey, [NSString class]);
    if (text == nil)
        text = valueOfClass(saved, LVCalendarDateKey, [NSString class]);
    if (text == nil)
        text = [[NSDate date] description];
    return text;
}

#pragma mark Writing

// A saved record without a path names no mailbox and is left out.
static NSDictionary *savedRecord(LorvaneMailbox *record)
{
    NSString *fullPath = [[record uid] fullPath];
    if (fullPath == nil)
        return nil;
    NSMutableDictionary *saved = [NSMutableDictionary dictionaryWithCapacity:3];
    [saved setObject:[NSNumber numberWithInt:[record accesses]] forKey:LVAccessesKey];
    // A date that did not parse when it was read has nothing to save; the next launch then
    // dates the record at loading, as it does for any record saved without a date.
    NSString *dateText = [[record date] description];
    if (dateText != nil)
        [saved setObject:dateText forKey:LVDateKey];
    [saved setObject:fullPath forKey:LVFullPathKey];
    return saved;
}

static NSData *serializedPreferences(int sortType, BOOL excludeSpecialMailboxes, NSArray *records)
{
    NSMutableDictionary *preferences = [NSMutableDictionary dictionaryWithCapacity:0];
    [preferences setObject:[NSNumber numberWithInt:sortType] forKey:LVSortTypeKey];
    [preferences setObject:[NSNumber numberWithBool:excludeSpecialMailboxes] forKey:LVExcludeSpecialMailboxesKey];
    NSMutableArray *saved = [NSMutableArray arrayWithCapacity:[records count]];
    for (LorvaneMailbox *record in records) {
        NSDictionary *entry = savedRecord(record);
        if (entry != nil)
            [saved addObject:entry];
    }
    [preferences setObject:saved forKey:LVRecentMailboxesKey];
    return [LVPropertyListWriter XMLDataWithPropertyList:preferences];
}

static BOOL writeEveryByte(int file, NSData *data)
{
    const char *bytes = (const char *)[data bytes];
    size_t left = [data length];
    while (left > 0) {
        ssize_t written = write(file, bytes, left);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return NO;
        bytes += written;
        left -= (size_t)written;
    }
    return YES;
}

// GNUstep's atomic write renames before its bytes are on the disk, so a machine that stops
// just after Mail quits can come back to an empty file. Here the bytes are synced under a
// temporary name in the same folder first and only then take the path's name: whatever
// fails, the path names its old file or the whole new one, and no temporary file is left.
static BOOL writeAtomically(NSData *data, NSString *path)
{
    std::string temporary = std::string([path fileSystemRepresentation]) + ".XXXXXX";
    int file = mkstemp(&temporary[0]);
    if (file < 0)
        return NO;
    BOOL written = writeEveryByte(file, data) && fsync(file) == 0;
    written = close(file) == 0 && written;
    if (written && rename(temporary.c_str(), [path fileSystemRepresentation]) == 0)
        return YES;
    unlink(temporary.c_str());
    return NO;
}

// A missing folder is made private to the user, as a Mac makes its Preferences folder.
static BOOL makeFolderOfFile(NSString *path)
{
    NSString *folder = [path stringByDeletingLastPathComponent];
    NSFileManager *fileManager = [NSFileManager defaultManager];
    if ([fileManager fileExistsAtPath:folder])
        return YES;
    NSDictionary *privateToUser = [NSDictionary dictionaryWithObject:[NSNumber numberWithUnsignedLong:0700] forKey:NSFilePosixPermissions];
    return [fileManager createDirectoryAtPath:folder withIntermediateDirectories:YES attributes:privateToUser error:NULL];
}

@interface LVPreferencesFile (LVBackup)
- (BOOL)lv_keepUnreadBytesBesidePath:(NSString *)path;
@end

@implementation LVPreferencesFile

+ (LVPreferencesFile *)userPreferencesFile
{
    static LVPreferencesFile *shared = nil;
    if (shared == nil)
        shared = [[LVPreferencesFile alloc] init];
    return shared;
}

- (void)dealloc
{
    [_unreadBytes release];
    [_contents release];
    [super dealloc];
}

- (NSString *)path
{
    NSString *library = LVUserLibraryFolder();
    if (library == nil)
        return nil;
    NSMutableString *path = [NSMutableString stringWithCapacity:255];
    [path appendString:library];
    [path appendString:@"/Preferences/"];
    [path appendString:LVBundleIdentifier];
    [path appendString:@".plist"];
    return path;
}

// A file that did not read is remembered as its bytes; an empty one holds nothing worth keeping,
// and keeping it would push out an older copy that does.
- (void)read
{
    NSString *path = [self path];
    id plist = [LVPropertyListReader propertyListWithContentsOfFile:path];
    NSDictionary *contents = [plist isKindOfClass:[NSDictionary class]] ? plist : nil;
    NSData *bytes = contents == nil && path != nil ? [NSData dataWithContentsOfFile:path] : nil;
    [_contents release];
    _contents = [contents retain];
    [_unreadBytes release];
    _unreadBytes = [bytes length] > 0 ? [bytes retain] : nil;
}

- (int)sortType
{
    int sortType = [valueAnswering(_contents, LVSortTypeKey, @selector(intValue)) intValue];
    return (unsigned int)sortType > 2 ? 0 : sortType;
}

// Normalised to YES or NO so that a stored 2 cannot pass for a third state.
- (BOOL)excludesSpecialMailboxes
{
    id exclude = valueAnswering(_contents, LVExcludeSpecialMailboxesKey, @selector(boolValue));
    return exclude != nil ? ([exclude boolValue] ? YES : NO) : YES;
}

- (NSArray *)savedRecordsWithPaths:(NSArray **)paths
{
    NSArray *saved = valueOfClass(_contents, LVRecentMailboxesKey, [NSArray class]);
    NSMutableArray *records = [NSMutableArray arrayWithCapacity:[saved count]];
    NSMutableArray *fullPaths = [NSMutableArray arrayWithCapacity:[saved count]];
    for (id entry in saved) {
        // A saved record that names no mailbox could never be found again.
        NSString *fullPath = [entry isKindOfClass:[NSDictionary class]] ? valueOfClass(entry, LVFullPathKey, [NSString class]) : nil;
        if (fullPath == nil)
            continue;
        LorvaneMailbox *record = [[LorvaneMailbox alloc] init];
        [record setAccesses:[valueAnswering(entry, LVAccessesKey, @selector(intValue)) intValue]];
        [record setDate:[NSDate dateWithString:savedDateText(entry)]];
        [records addObject:record];
        [record release];
        [fullPaths addObject:fullPath];
    }
    *paths = fullPaths;
    return records;
}

- (BOOL)writeSortType:(int)sortType excludeSpecialMailboxes:(BOOL)exclude records:(NSArray *)records
{
    NSData *data = serializedPreferences(sortType, exclude, records);
    NSString *path = [self path];
    return data != nil && path != nil && makeFolderOfFile(path) && [self lv_keepUnreadBytesBesidePath:path] && writeAtomically(data, path);
}

// What the user had when Mail started goes beside the file before anything replaces it, so a
// hand-edited file with one typo can be mended rather than typed again. It replaces an older
// copy: that one was followed by a file the plug-in wrote, so the newest holds the latest edits.
// Until the copy is safe, the file itself is not replaced.
- (BOOL)lv_keepUnreadBytesBesidePath:(NSString *)path
{
    if (_unreadBytes == nil)
        return YES;
    if (!writeAtomically(_unreadBytes, [path stringByAppendingString:@".bak"]))
        return NO;
    [_unreadBytes release];
    _unreadBytes = nil;
    return YES;
}

@end
