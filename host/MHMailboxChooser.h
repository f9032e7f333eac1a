/*
 * Mail's "Move To…" / "Copy To…" mailbox chooser. A person picks from a list of every
 * mailbox; a script hands the answer over beforehand, so its transfers take the very
 * path a person's do.
 */
#import <AppKit/AppKit.h>

@class MailboxUid;

@interface MHMailboxChooser : NSObject
{
    NSPopUpButton *_popUp;
    NSArray *_mailboxes;
}

/* The answer the next choice gives without asking; nil to ask again. Used once. */
+ (void)answerNextChoiceWith:(MailboxUid *)mailbox;

/* The chosen mailbox, or nil when cancelled. With no answer handed over and alerts being
   recorded (no person at the screen) it asks nobody and answers nil. */
+ (MailboxUid *)chooseMailboxWithPrompt:(NSString *)prompt;

@end
