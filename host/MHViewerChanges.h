/*
 * What a chosen menu item did, seen from Mail's viewers: each viewer's last transfer and
 * shown mailboxes are taken before the choice and compared after it.
 */
#import <Foundation/Foundation.h>

@class MailApp;

@interface MHViewerChanges : NSObject
{
    MailApp *_application;      // not retained: it lives as long as the process
    NSDictionary *_before;      // per viewer (not retained): its last transfer and shown mailboxes
}

/* Takes the state of every open viewer now. */
- (id)initWithApplication:(MailApp *)application;
/* One line per change since: "  moved 2 of 2 messages to Home/Archive" for a new transfer,
   "  viewer shows Receipts" for other mailboxes shown; empty when nothing changed. */
- (NSArray *)linesOfChanges;

@end
