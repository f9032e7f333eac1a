/*
 * The stand-in's mail store: a folder of accounts (laid out as MHStoreLayout.h says)
 * opened as the accounts Mail is using, and the means to fill it with accounts and
 * messages.
 */
#import <Foundation/Foundation.h>

@class MailAccount;
@class MailboxUid;

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
