/*
 * The person at Mail's screen: one method per scenario command (MHScenarioStep.h gives their
 * syntax), each taking its parsed step, acting through Mail's own path and saying what
 * happened in the transcript. Menu items are performed through their menus, so actions
 * travel the responder chain as a click's would; a transfer goes through Message > Move To…
 * with the chooser answered beforehand, a deletion through the account, account changes
 * through AccountPreferences.
 *
 * Each answers NO, with the problem said in the transcript, when the action cannot be done.
 */
#import <Foundation/Foundation.h>

@class MailApp, MHMailStore, MHScenarioStep, MHScenarioTranscript;

@interface MHUserActions : NSObject
{
    MailApp *_application;      // not retained: it lives as long as the process
    MHMailStore *_store;        // where accounts added by name come from
    MHScenarioTranscript *_transcript;
    NSString *_screenshotFolder;
    BOOL _exitsOnQuit;          // "quit" ends the process, as Mail's Quit does
    BOOL _hasQuit;
}

- (id)initWithApplication:(MailApp *)application store:(MHMailStore *)store transcript:(MHScenarioTranscript *)transcript;
/* Where "screenshot NAME" saves NAME.png; without one, screenshots fail. */
- (void)setScreenshotFolder:(NSString *)folder;
/* "quit" terminates the application (and the process) instead of only announcing it. */
- (void)setExitsOnQuit:(BOOL)exits;
- (BOOL)hasQuit;

- (BOOL)selectMailbox:(MHScenarioStep *)step;
- (BOOL)selectMessages:(MHScenarioStep *)step;
- (BOOL)moveTo:(MHScenarioStep *)step;
- (BOOL)copyTo:(MHScenarioStep *)step;
- (BOOL)showMenu:(MHScenarioStep *)step;
- (BOOL)choose:(MHScenarioStep *)step;
- (BOOL)renameMailbox:(MHScenarioStep *)step;
- (BOOL)deleteMailbox:(MHScenarioStep *)step;
- (BOOL)removeAccount:(MHScenarioStep *)step;
- (BOOL)addAccount:(MHScenarioStep *)step;
- (BOOL)listMessages:(MHScenarioStep *)step;
- (BOOL)listAlerts:(MHScenarioStep *)step;
- (BOOL)newViewer:(MHScenarioStep *)step;
- (BOOL)screenshot:(MHScenarioStep *)step;
/* Quits as Mail does: applicationWillTerminate: runs once. */
- (BOOL)quit:(MHScenarioStep *)step;

@end
