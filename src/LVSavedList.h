#import <Foundation/Foundation.h>
#import "MailInterfaces.h"

/*
 * The list's ties to Mail's mailboxes across launches: saved records found again on the
 * mailboxes that bear their paths, and listed records whose mailbox Mail no longer has.
 *
 * Mailboxes are known by their full path alone on disk and by the object Mail keeps while it
 * runs. Every answer walks Mail's active accounts, in order, and each account's mailboxes, in
 * order; nothing is kept from one call to the next.
 */
@interface LVSavedList : NSObject

/* The first of Mail's mailboxes whose full path is exactly `path`; nil when none is. */
+ (id<LVMailboxUid>)mailboxWithFullPath:(NSString *)path;

/* The list restored from saved records (in file order, without mailboxes) and the path each
   names: every record takes in turn each mailbox that bears its path, at the front of the
   list; once the list holds `limit` records, a record enters only if it ranks before the
   last one kept under the eviction order of `sortType`, which then leaves. Front first. */
+ (NSArray *)listRestoredFromRecords:(NSArray *)records paths:(NSArray *)paths limit:(int)limit sortType:(int)sortType;

/* The indexes of the records whose mailbox Mail no longer lists, as that very object, or
   calls invalid: a mailbox deleted and made again under the same path is another mailbox. */
+ (NSIndexSet *)indexesOfRecordsWithoutMailboxIn:(NSArray *)list;

@end
