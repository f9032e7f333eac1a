/*
 * The store's side of a mailbox: what its account and the store opener do to it. Only
 * the model's own files use these; everyone else sees MailboxUid.h.
 */
#import "MailboxUid.h"

@interface MailboxUid (MHStore)
- (id)initWithAccount:(MailAccount *)account parent:(MailboxUid *)parent name:(NSString *)name;
- (void)takeName:(NSString *)name;
- (void)refreshPaths;
- (BOOL)isDescendantOf:(MailboxUid *)ancestor;
- (void)invalidate;
- (void)detachFromAccount;
- (NSString *)messagesFolder;
/* A free message file name in the mailbox's messages folder, made if missing; nil on failure. */
- (NSString *)nextFreeMessagePath;
@end
