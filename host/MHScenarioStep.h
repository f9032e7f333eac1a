/*
 * One line of a MailHost scenario, parsed and checked, not yet carried out. A command no
 * action carries out is refused here, with its line, before any step runs.
 *
 * A line is a command and its arguments, separated by spaces; an argument holding spaces
 * is written in double quotes. A line that is empty or starts with "#" is a comment.
 * Mailboxes are written "Account/Path/To/Mailbox". "contextual" before a menu title
 * means the message list's contextual menu rather than the menu bar.
 *
 *   select-mailbox MAILBOX              show the mailbox in the front viewer
 *   select-messages all|none|N...       select messages of the list by index (from 0)
 *   move-to [contextual] MAILBOX        Message > Move To… (or the contextual one)
 *   copy-to [contextual] MAILBOX        Message > Copy To…
 *   show-menu [contextual] TITLE        open the submenu titled so and print its items
 *   choose [contextual] TITLE N|ITEM    choose an item of that submenu, by index or title
 *   rename-mailbox MAILBOX NEW-NAME
 *   delete-mailbox MAILBOX
 *   remove-account ACCOUNT              stop using the account
 *   add-account ACCOUNT [POP|IMAP]      use the account again, or make a new one
 *   list-messages MAILBOX               print the mailbox's message files
 *   list-alerts                         print the alerts shown since the last list-alerts
 *   new-viewer                          File > New Viewer Window
 *   screenshot NAME [contextual] [TITLE]  save the screen, with that submenu open
 *   quit                                quit as Mail does
 */
#import <Foundation/Foundation.h>

@interface MHScenarioStep : NSObject
{
    NSString *_line;            // the line as written
    NSString *_command;
    NSArray *_arguments;        // quotes removed
    BOOL _contextual;           // the optional word "contextual" came first
    SEL _action;                // the MHUserActions method that carries it out
}

/* The step of a line. A comment or empty line gives nil and leaves *error nil; bad input
   gives nil and sets *error to a sentence that names the problem and the usage. */
+ (MHScenarioStep *)stepWithLine:(NSString *)line error:(NSString **)error;
/* Every step of a scenario text; nil on the first bad line, with its line number in *error. */
+ (NSArray *)stepsInText:(NSString *)text error:(NSString **)error;

- (NSString *)line;
- (NSString *)command;
/* The arguments after the command, without the word "contextual". */
- (NSArray *)arguments;
- (BOOL)isContextual;
/* The method of MHUserActions that carries the step out; it takes the step. */
- (SEL)action;

@end
