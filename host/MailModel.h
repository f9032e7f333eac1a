/*
 * The stand-in for Apple Mail's model classes: accounts and mailboxes over a real
 * on-disk store.
 *
 * A store is a folder. Each account is a sub-folder holding "Account.plist" (keys
 * "DisplayName", "AccountType" ("POP" or "IMAP"), "ServerPathPrefix") and its
 * mailboxes. A mailbox is a folder named "<name>.mbox"; mailboxes nest inside each
 * other; its messages are "<n>.eml" files in its "Messages" folder.
 *
 * Class and selector names are Mail's: the plug-in finds them by name at run time.
 */
#import <AppKit/AppKit.h>

@class MailAccount;

/* Mailbox kinds. Mail's special mailboxes have their own; user-made ones are generic. */
enum {
    MHMailboxTypeGeneric = 0,
    MHMailboxTypeInbox = 100,
    MHMailboxTypeSent = 101,
    MHMailboxTypeDrafts = 102,
    MHMailboxTypeTrash = 103,
    MHMailboxTypeJunk = 104,
};

@interface MailboxUid : NSObject
{
    MailAccount *_account;      // not retained: the account owns its mailboxes
    MailboxUid *_parent;        // not retained; nil at the top of the account
    NSString *_displayName;
    NSString *_fullPath;        // absolute folder path; the identity across launches
    int _type;
    BOOL _valid;
    NSString *_relativePath;    // "Projects/Old/Work"; kept beside _fullPath so both stay cheap
}

+ (BOOL)typeIsGeneric:(int)type;

- (int)type;
- (NSString *)displayName;
/* Identifies the mailbox across launches: its folder's absolute path. */
- (NSString *)fullPath;
/* NO once the mailbox was deleted or its folder vanished in a rescan. */
- (BOOL)isValid;
- (MailAccount *)account;
- (MailAccount *)ancestralAccount;
/* The path inside the account, components joined by "/" ("Projects/Old/Work"). */
- (NSString *)accountRelativePath;
- (MailboxUid *)parent;

/* The message files, sorted by name, as absolute paths. */
- (NSArray *)messagePaths;
/* Moves (or copies) a message file into this mailbox; answers its new path, or nil. */
- (NSString *)receiveMessageAtPath:(NSString *)path deleteOriginal:(BOOL)deleteOriginal;

@end

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

@interface IMAPAccount : MailAccount
{
    NSString *_serverPathPrefix;
}
- (NSString *)serverPathPrefix;
- (void)setServerPathPrefix:(NSString *)prefix;
@end

/* Opens a store folder: every account in it becomes active, in folder-name order. */
@interface MHMailStore : NSObject
{
    NSString *_root;
    NSArray *_accounts;
}
+ (MHMailStore *)storeAtPath:(NSString *)root;
/* Copies a store (such as samples/store) to a new folder and opens the copy. */
+ (MHMailStore *)copyOfStoreAtPath:(NSString *)source toPath:(NSString *)destination;
- (NSString *)root;
- (NSArray *)accounts;
- (MailAccount *)accountNamed:(NSString *)displayName;
/* "Account/Path/To/Mailbox" -> the mailbox, or nil. */
- (MailboxUid *)mailboxAtPath:(NSString *)accountAndRelativePath;
/* Makes an account folder with its Account.plist and opens it. */
- (MailAccount *)addAccountNamed:(NSString *)displayName type:(NSString *)type serverPathPrefix:(NSString *)prefix;
/* Writes a message file into the mailbox; answers its path. */
- (NSString *)addMessageTo:(MailboxUid *)mailbox from:(NSString *)sender subject:(NSString *)subject date:(NSDate *)date;
@end
