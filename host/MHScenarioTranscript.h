/*
 * What a scenario run says happened, in readable lines: each step as written, what it did,
 * the alerts Mail showed on the way, and the first problem that stopped it.
 */
#import <Foundation/Foundation.h>

@interface MHScenarioTranscript : NSObject
{
    NSMutableArray *_lines;     // every line said so far
    NSString *_lastError;
    NSUInteger _alertsSaid;     // recorded alerts already said
    BOOL _echoes;               // also print each line on standard output
}

/* Prints every line on standard output as it is said (MailHost's scenario mode). */
- (void)setEchoes:(BOOL)echoes;

- (void)say:(NSString *)line;
/* Says "  error: <problem>" and keeps the problem as -lastError; answers NO, so an action can
   end with `return [transcript fail:...]`. */
- (BOOL)fail:(NSString *)problem;
- (NSString *)lastError;
/* Every line said so far, oldest first. */
- (NSArray *)lines;

/* YES when Mail has shown an alert not yet said. */
- (BOOL)hasAlertsToSay;
/* Says each alert shown since the last one said. */
- (void)sayNewAlerts;
/* Says how many alerts were shown so far, then each of them. */
- (void)sayAllAlerts;

@end

/* A text in double quotes, as the transcript names titles and paths. */
NSString *MHQuoted(NSString *text);
