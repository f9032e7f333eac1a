#import "LVProviderFixture.h"

#include <cstdio>
#include <unistd.h>

void LVLoadPluginAndClearLog(void)
{
    LVStartMailWithPlugin();
    LVClearLog();
}

LorvaneBundle_Provider *LVMakeListProvider(int limit, int sortType, BOOL excludeSpecialMailboxes)
{
    // Never released: the plug-in's provider lives as long as Mail does.
    LorvaneBundle_Provider *provider = [LVPluginClass("LorvaneBundle_Provider") alloc];
    id list = [[[LVPluginClass("LVRecentList") alloc] initWithSortType:sortType] autorelease];
    [provider setValue:list forKey:@"_recentMailboxes"];
    LVSetIntField(provider, @"_maxMailboxes", limit);
    LVSetIntField(provider, @"_sortType", sortType);
    LVSetFlag(provider, @"_excludeSpecialMailboxes", excludeSpecialMailboxes);
    LVSetFlag(provider, @"_updateMenu", NO);
    LVSetFlag(provider, @"_removeDeletedMailboxes", NO);
    return provider;
}

NSMutableArray *LVProviderList(LorvaneBundle_Provider *provider)
{
    return [provider valueForKey:@"_recentMailboxes"];
}

void LVRefileRecords(LorvaneBundle_Provider *provider)
{
    NSMutableArray *list = LVProviderList(provider);
    [list setArray:[[list copy] autorelease]];
}

BOOL LVFlag(LorvaneBundle_Provider *provider, NSString *field)
{
    return [[provider valueForKey:field] boolValue];
}

void LVSetFlag(LorvaneBundle_Provider *provider, NSString *field, BOOL value)
{
    [provider setValue:[NSNumber numberWithBool:value] forKey:field];
}

int LVIntField(LorvaneBundle_Provider *provider, NSString *field)
{
    return [[provider valueForKey:field] intValue];
}

void LVSetIntField(LorvaneBundle_Provider *provider, NSString *field, int value)
{
    [provider setValue:[NSNumber numberWithInt:value] forKey:field];
}

LorvaneMailbox *LVMakeRecord(void)
{
    return [[[LVPluginClass("LorvaneMailbox") alloc] init] autorelease];
}

MHMailStore *LVMakeStore(NSString *name)
{
    MHMailStore *store = [MHMailStore storeAtPath:LVMakeTemporaryFolder(name)];
    [MailAccount setActiveAccounts:[store accounts]];
    return store;
}

NSArray *LVDisplayNames(NSArray *records)
{
    NSMutableArray *names = [NSMutableArray array];
    for (LorvaneMailbox *record in records)
        [names addObject:[NSString stringWithString:[record displayName]]];
    return names;
}

NSArray *LVMailboxNames(NSArray *records)
{
    NSMutableArray *names = [NSMutableArray array];
    for (LorvaneMailbox *record in records)
        [names addObject:[[record uid] displayName]];
    return names;
}

static int savedStandardOutput = -1;
static char capturePath[] = "/tmp/lorvane-stdout-XXXXXX";

void LVBeginCapturingStandardOutput(void)
{
    fflush(stdout);
    int capture = mkstemp(capturePath);
    savedStandardOutput = dup(STDOUT_FILENO);
    dup2(capture, STDOUT_FILENO);
    close(capture);
}

NSString *LVEndCapturingStandardOutput(void)
{
    fflush(stdout);
    dup2(savedStandardOutput, STDOUT_FILENO);
    close(savedStandardOutput);
    savedStandardOutput = -1;
    NSString *captured = [NSString stringWithContentsOfFile:[NSString stringWithUTF8String:capturePath]
                                                   encoding:NSUTF8StringEncoding
                                                      error:NULL];
    unlink(capturePath);
    strcpy(capturePath, "/tmp/lorvane-stdout-XXXXXX");
    return captured != nil ? captured : @"";
}
