/*
 * Plays a scenario in the stand-in Mail: its text parsed into steps first (MHScenarioStep, which
 * lists their syntax), so that a misspelt command stops the run with its line number before
 * anything happens; then each step carried out by the person at the screen (MHUserActions),
 * one readable line or a few per step in the transcript.
 */
#import <Foundation/Foundation.h>

@class MailApp, MHMailStore, MHScenarioTranscript, MHUserActions;

@interface MHScenario : NSObject
{
    MHScenarioTranscript *_transcript;
    MHUserActions *_actions;
}

- (id)initWithApplication:(MailApp *)application store:(MHMailStore *)store;

/* Prints every line on standard output as it is said (MailHost's scenario mode). */
- (void)setEchoesOutput:(BOOL)echoes;
/* "quit" terminates the application (and the process) instead of only announcing it. */
- (void)setExitsOnQuit:(BOOL)exits;
/* Where "screenshot NAME" saves NAME.png; without one, screenshots fail. */
- (void)setScreenshotFolder:(NSString *)folder;

/* Parses every line, then runs the steps, stopping at the first that fails (after quit
   nothing more runs). NO when a line does not parse or a step fails; -lastError says why. */
- (BOOL)runScript:(NSString *)text;
/* MailHost's scenario mode: runs the file's steps, then ends the process with status 0
   when every step succeeded and 1 otherwise ("quit" ends it as Mail's Quit does). */
- (void)runScriptFileThenExit:(NSString *)path;

- (NSString *)lastError;
/* Every line said so far, oldest first. */
- (NSArray *)output;

@end
