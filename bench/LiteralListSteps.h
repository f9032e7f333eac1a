/*
 * The list's three costly steps done the plain way, as a yardstick for the plug-in's own:
 * every saved path compared with every mailbox at start-up, every record looked for among
 * all of Mail's mailboxes when pruning, and the whole list sorted to evict one record.
 *
 * They work on real LorvaneMailbox records (the class the loaded plug-in brings) and on
 * the stand-in Mail's active accounts, so only the way of doing each step differs.
 */
#import <Foundation/Foundation.h>
#import "MailInterfaces.h"

/* A record of the loaded plug-in for the mailbox, owned by the caller. */
id LBNewRecordFor(id<LVMailboxUid> mailbox);

/* Loads saved records (the preferences file's "RecentMailboxes") into a new list. */
NSMutableArray *LBLiteralLoadSavedRecords(NSArray *saved, int limit, int sortType);

/* Removes the records whose mailbox Mail no longer lists or calls valid. */
void LBLiteralRemoveDeletedMailboxes(NSMutableArray *list);

/* Adds the mailbox at the front, or touches its record; the list is sorted when full. */
void LBLiteralAddOrTouch(NSMutableArray *list, id<LVMailboxUid> mailbox, int limit, int sortType, BOOL excludeSpecial);
