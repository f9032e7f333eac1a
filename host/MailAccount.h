/*
 * Mail's account: its mailboxes, in the order Mail lists them, over a folder of the
 * stand-in's store (as MHStoreLayout.h says) or, for very large stores, in memory only.
 * Mail keeps the list of accounts in use; the plug-in reads it.
 *
 * Class and selector names are Mail's: the plug-in finds them by name at run time.
 */
#import <Foundation/Foundation.h>
#import "MailboxUid.h"

@interface MailAccount : NSObject
{
    NSString *_displayName;
    NSString *_path;            // the account's folder
    NSMutableArray *_mailboxes; // every mailbox, parents before children, siblings by name
    NSMutableDictionary *_mailboxesByRelativePath;
    NSMutableArray *_retiredMailboxes; // deleted or vanished uids, kept alive as Mail does
    BOOL _mailboxesNeedOrdering;       // _mailboxes is put in order when next asked for
}

/* The accounts Mail is using now. Settable so a store, a test or a benchmark can supply them. */
+ (NSArray *)activeAccounts;
+ (void)setActiveAccounts:(NSArray *)accounts;

/* Reads an account folder; nil when it has no readable Account.plist. */
+ (MailAccount *)accountWithFolder:(NSString *)path;
/* An account; with a nil path it lives only in memory (for very large stores), and
   -createMailboxWithRelativePath: then makes mailbox objects without folders. */
- (id)initWithDisplayName:(NSString *)displayName path:(NSString *)path;

- (NSString *)displayName;
- (NSString *)path;
- (NSArray *)allMailboxUids;
- (MailboxUid *)mailboxUidForRelativePath:(NSString *)relativePath;

/* Makes the folder (and missing parents) and the mailbox object; nil on failure. */
- (MailboxUid *)createMailboxWithRelativePath:(NSString *)relativePath;
/* Mail's deletion: the folder and every mailbox under it go, and their uids turn invalid. */
- (BOOL)deleteMailbox:(MailboxUid *)mailbox reflectToServer:(BOOL)reflectToServer;
/* Renames on disk. Mail keeps the same MailboxUid object; its name and paths change. */
- (BOOL)renameMailbox:(MailboxUid *)mailbox toName:(NSString *)newName;
/* Re-reads the folder: vanished mailboxes turn invalid, new folders get uids. */
- (void)rescan;

@end
