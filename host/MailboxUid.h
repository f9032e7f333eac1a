/*
 * Mail's mailbox identity: one object per mailbox of an account, kept by Mail (and still
 * answering, invalid) after the mailbox is deleted. The stand-in's store lies on disk as
 * MHStoreLayout.h says.
 *
 * Class and selector names are Mail's: the plug-in finds them by name at run time.
 */
#import <Foundation/Foundation.h>

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
    MailAccount *_account; // not retained: the account owns its mailboxes
    MailboxUid *_parent;   // not retained; nil at the top of the account
    NSString *_displayName;
    NSString *_fullPath; // absolute folder path; the identity across launches
    int _type;
    BOOL _valid;
    NSString *_relativePath; // "Projects/Old/Work"; kept beside _fullPath so both stay cheap
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
