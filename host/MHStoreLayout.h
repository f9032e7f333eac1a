/*
 * How the stand-in Mail's store lies on disk, shared by its model classes.
 *
 * A store is a folder. Each account is a sub-folder holding "Account.plist" (keys
 * "DisplayName", "AccountType" ("POP" or "IMAP"), "ServerPathPrefix") and its
 * mailboxes. A mailbox is a folder named "<name>.mbox"; mailboxes nest inside each
 * other; its messages are "<n>.eml" files in its "Messages" folder.
 */
#import <Foundation/Foundation.h>

extern NSString *const MHMailboxExtension;   // ".mbox", ending a mailbox's folder name
extern NSString *const MHMessagesFolderName; // "Messages", inside a mailbox's folder
extern NSString *const MHMessageExtension;   // "eml"
extern NSString *const MHAccountFileName;    // "Account.plist"

/* Whether one sibling's name is listed before another's, as a person reads them. */
BOOL MHNameBefore(NSString *left, NSString *right);
/* The strings, sorted by the given order. */
NSArray *MHSortedStrings(NSArray *strings, BOOL (*before)(NSString *, NSString *));

/* YES when the path names an existing folder. */
BOOL MHIsDirectory(NSString *path);
/* "folder/name", with the name taken literally, never as path syntax. */
NSString *MHJoinPath(NSString *folder, NSString *name);
