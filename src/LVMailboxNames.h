#import <Foundation/Foundation.h>
#import "MailInterfaces.h"

/*
 * What the menus call a listed mailbox beyond Mail's own name: the names that tell apart
 * records whose mailboxes share a name, and the tool tip, both read from Mail at each call.
 *
 * Namesakes are told apart by account (by the name the user sees: two accounts that share a
 * name count as one) and by folder: "Work", "Work (Folder)", "Work (Account)" or
 * "Work (Account/Folder)".
 */
@interface LVMailboxNames : NSObject

/* YES when the records' mailboxes belong to accounts of different names. */
+ (BOOL)accountsDifferIn:(NSArray *)group;
/* Gives each record of the group its name, after its account when `byAccount`. */
+ (void)nameNamesakes:(NSArray *)group byAccount:(BOOL)byAccount;
/* The mailbox's path inside its account, less an IMAP account's server path prefix and the
   character after it; a new string the caller owns through the autorelease pool. */
+ (NSMutableString *)pathInAccountOfMailbox:(id<LVMailboxUid>)mailbox;
/* "Account/Path/In/Account", autoreleased. */
+ (NSString *)toolTipOfMailbox:(id<LVMailboxUid>)mailbox;

@end

/* Spelled alike, code unit for code unit, as a Mac compares names; nil is like no name.
   GNUstep's -isEqualToString: also calls an "é" written as one character equal to one
   written as two. */
BOOL LVSameSpelling(NSString *a, NSString *b);
