#import "MHLaunchOptions.h"

#include <cstdlib>

@implementation MHLaunchOptions

+ (NSString *)usage
{
    return @"usage: MailHost (--store DIR | --copy-store DIR) [--bundle PATH]... [--scenario FILE] "
            "[--screenshots DIR] [--system-version 0x1068]";
}

+ (NSString *)absolutePath:(NSString *)path
{
    if ([path isAbsolutePath])
        return [path stringByStandardizingPath];
    NSString *here = [[NSFileManager defaultManager] currentDirectoryPath];
    return [[here stringByAppendingPathComponent:path] stringByStandardizingPath];
}

// "0x1068" or "4200"; 0 when the text is not a whole number.
+ (int)versionFromText:(NSString *)text
{
    const char *digits = [text UTF8String];
    char *end = NULL;
    long value = strtol(digits, &end, 0);
    return (end != digits && *end == '\0' && value > 0 && value <= 0xFFFF) ? (int)value : 0;
}

- (id)init
{
    if (nil == (self = [super init]))
        return nil;
    _bundlePaths = [[NSMutableArray alloc] init];
    return self;
}

- (void)dealloc
{
    [_storePath release];
    [_bundlePaths release];
    [_scenarioPath release];
    [_screenshotFolder release];
    [super dealloc];
}

- (void)setStorePath:(NSString *)path copies:(BOOL)copies
{
    [_storePath release];
    _storePath = [[[self class] absolutePath:path] copy];
    _copiesStore = copies;
}

// Takes one option and its value; answers a problem, or nil.
- (NSString *)takeOption:(NSString *)option value:(NSString *)value
{
    if (value == nil)
        return [NSString stringWithFormat:@"%@ needs a value", option];
    NSString *path = [[self class] absolutePath:value];
    if ([option isEqualToString:@"--store"] || [option isEqualToString:@"--copy-store"]) {
        if (_storePath != nil)
            return @"give one store only";
        [self setStorePath:value copies:[option isEqualToString:@"--copy-store"]];
    } else if ([option isEqualToString:@"--bundle"]) {
        [_bundlePaths addObject:path];
    } else if ([option isEqualToString:@"--scenario"]) {
        [_scenarioPath release];
        _scenarioPath = [path copy];
    } else if ([option isEqualToString:@"--screenshots"]) {
        [_screenshotFolder release];
        _screenshotFolder = [path copy];
    } else if ([option isEqualToString:@"--system-version"]) {
        _systemVersion = [[self class] versionFromText:value];
        if (_systemVersion == 0)
            return [NSString stringWithFormat:@"%@ is not a system version such as 0x1068", value];
    } else {
        return [NSString stringWithFormat:@"unknown option %@", option];
    }
    return nil;
}

+ (MHLaunchOptions *)optionsWithArguments:(NSArray *)arguments error:(NSString **)problem
{
    MHLaunchOptions *options = [[[self alloc] init] autorelease];
    NSString *failure = nil;
    for (NSUInteger i = 1; i < [arguments count] && failure == nil; i++) {
        NSString *argument = [arguments objectAtIndex:i];
        NSString *value = i + 1 < [arguments count] ? [arguments objectAtIndex:i + 1] : nil;
        if ([argument hasPrefix:@"--"])
            failure = [options takeOption:argument value:value];
        else if (![argument hasPrefix:@"-"])
            failure = [NSString stringWithFormat:@"unexpected argument %@", argument];
        i += 1; // every option, ours or GNUstep's, is followed by its value
    }
    if (failure == nil && [options storePath] == nil)
        failure = @"no store given";
    if (problem != NULL)
        *problem = failure;
    return failure == nil ? options : nil;
}

- (NSString *)storePath
{
    return _storePath;
}

- (BOOL)copiesStore
{
    return _copiesStore;
}

- (NSArray *)bundlePaths
{
    return _bundlePaths;
}

- (NSString *)scenarioPath
{
    return _scenarioPath;
}

- (NSString *)screenshotFolder
{
    return _screenshotFolder;
}

- (int)systemVersion
{
    return _systemVersion;
}

@end
