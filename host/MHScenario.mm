#import "MHScenario.h"
#import "MHScenarioStep.h"
#import "MHScenarioTranscript.h"
#import "MHUserActions.h"

#include <cstdio>
#include <cstdlib>

@implementation MHScenario

- (id)initWithApplication:(MailApp *)application store:(MHMailStore *)store
{
    if (nil == (self = [super init]))
        return nil;
    _transcript = [[MHScenarioTranscript alloc] init];
    _actions = [[MHUserActions alloc] initWithApplication:application store:store transcript:_transcript];
    return self;
}

- (void)dealloc
{
    [_transcript release];
    [_actions release];
    [super dealloc];
}

- (void)setEchoesOutput:(BOOL)echoes
{
    [_transcript setEchoes:echoes];
}

- (void)setExitsOnQuit:(BOOL)exits
{
    [_actions setExitsOnQuit:exits];
}

- (void)setScreenshotFolder:(NSString *)folder
{
    [_actions setScreenshotFolder:folder];
}

- (NSString *)lastError
{
    return [_transcript lastError];
}

- (NSArray *)output
{
    return [_transcript lines];
}

- (BOOL)runStep:(MHScenarioStep *)step
{
    [_transcript say:[@"> " stringByAppendingString:[step line]]];
    if ([_actions hasQuit])
        return [_transcript fail:@"Mail has quit"];
    SEL action = [step action];
    BOOL done = ((BOOL(*)(id, SEL, MHScenarioStep *))[_actions methodForSelector:action])(_actions, action, step);
    [_transcript sayNewAlerts];
    return done;
}

- (BOOL)runScript:(NSString *)text
{
    NSString *problem = nil;
    NSArray *steps = [MHScenarioStep stepsInText:text error:&problem];
    if (steps == nil)
        return [_transcript fail:problem];
    if ([_transcript hasAlertsToSay])
        [_transcript say:@"> (start-up)"];
    [_transcript sayNewAlerts];
    for (MHScenarioStep *step in steps) {
        if (![self runStep:step])
            return NO;
        if ([_actions hasQuit])
            break;
    }
    return YES;
}

- (void)runScriptFileThenExit:(NSString *)path
{
    NSString *text = [NSString stringWithContentsOfFile:path encoding:NSUTF8StringEncoding error:NULL];
    BOOL succeeded = text != nil ? [self runScript:text] : [_transcript fail:[NSString stringWithFormat:@"cannot read the scenario %@", path]];
    fflush(stdout);
    exit(succeeded ? 0 : 1);
}

@end
