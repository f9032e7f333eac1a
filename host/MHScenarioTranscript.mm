#import "MHScenarioTranscript.h"
#import "MHAlertRecorder.h"

#include <cstdio>

NSString *MHQuoted(NSString *text)
{
    return [NSString stringWithFormat:@"\"%@\"", text];
}

@implementation MHScenarioTranscript

- (id)init
{
    if (nil == (self = [super init]))
        return nil;
    _lines = [[NSMutableArray alloc] init];
    return self;
}

- (void)dealloc
{
    [_lines release];
    [_lastError release];
    [super dealloc];
}

- (void)setEchoes:(BOOL)echoes
{
    _echoes = echoes;
}

- (void)say:(NSString *)line
{
    [_lines addObject:line];
    if (!_echoes)
        return;
    fputs([line UTF8String], stdout);
    fputs("\n", stdout);
    fflush(stdout);
}

- (BOOL)fail:(NSString *)problem
{
    [_lastError release];
    _lastError = [problem copy];
    [self say:[@"  error: " stringByAppendingString:problem]];
    return NO;
}

- (NSString *)lastError
{
    return _lastError;
}

- (NSArray *)lines
{
    return [[_lines copy] autorelease];
}

- (NSString *)describeAlert:(NSDictionary *)alert
{
    NSString *buttons = [[alert objectForKey:MHAlertButtonsKey] componentsJoinedByString:@", "];
    return [NSString stringWithFormat:@"  alert %@: %@ [%@]", MHQuoted([alert objectForKey:MHAlertTitleKey] ?: @""),
                     [alert objectForKey:MHAlertMessageKey] ?: @"", buttons];
}

- (BOOL)hasAlertsToSay
{
    return [MHRecordedAlerts() count] > _alertsSaid;
}

- (void)sayNewAlerts
{
    NSArray *alerts = MHRecordedAlerts();
    for (NSUInteger i = _alertsSaid; i < [alerts count]; i++)
        [self say:[self describeAlert:[alerts objectAtIndex:i]]];
    _alertsSaid = [alerts count];
}

- (void)sayAllAlerts
{
    NSArray *alerts = MHRecordedAlerts();
    [self say:[NSString stringWithFormat:@"  %lu alerts so far", (unsigned long)[alerts count]]];
    for (NSDictionary *alert in alerts)
        [self say:[self describeAlert:alert]];
    _alertsSaid = [alerts count];
}

@end
