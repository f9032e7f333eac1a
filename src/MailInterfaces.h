/*
 * Mail's objects as Lorvane talks to them.
 *
 * Mail's classes are never linked against: they are looked up by name at run time and
 * their objects are held as plain references. These protocols only declare the
 * messages Lorvane sends them, so that each send is type-checked.
 */
#import <AppKit/AppKit.h>
#import "Utilities.h"

@protocol LVMailAccount <NSObject>
+ (NSArray *)activeAccounts;
- (NSArray *)allMailboxUids;
- (NSString *)displayName;
@end

@protocol LVIMAPAccount <LVMailAccount>
- (NSString *)serverPathPrefix;
@end

@protocol LVMailboxUid <NSObject>
+ (BOOL)typeIsGeneric:(int)type;
- (int)type;
- (NSString *)displayName;
- (NSString *)fullPath;
- (BOOL)isValid;
- (id<LVMailAccount>)account;
- (id<LVMailAccount>)ancestralAccount;
- (NSString *)accountRelativePath;
@end

@protocol LVMailboxesController <NSObject>
+ (NSImage *)iconForMailboxUid:(id<LVMailboxUid>)uid smallSize:(BOOL)small;
- (void)setCurrentTransferMailbox:(id<LVMailboxUid>)uid deletedOriginals:(BOOL)deleteOriginals;
@end

@protocol LVMailApp <NSObject>
- (id<LVMailboxesController>)mailboxesController;
@end

@protocol LVMessageViewer <NSObject>
- (void)transferSelectedMessagesToMailbox:(id<LVMailboxUid>)uid deleteOriginals:(BOOL)deleteOriginals;
- (void)setSelectedMailboxes:(NSArray *)mailboxes;
@end

@protocol LVTransferOperation <NSObject>
- (id<LVMailboxUid>)destinationMailboxUid;
@end

@protocol LVTableViewManager <NSObject>
- (NSTableView *)tableView;
@end

@protocol LVMailBundle <NSObject>
+ (void)registerBundle;
@end

/* Looks up one of Mail's classes by name; Nil when this Mail has no such class. */
static inline Class LVMailClass(NSString *name)
{
    return NSClassFromString(name);
}

/* The same for a name held as C text, which costs a string made for each lookup. */
static inline Class LVMailClass(const char *name)
{
    return LVMailClass([NSString stringWithUTF8String:name]);
}

/* Gives one of Mail's classes the methods of `additions`, where they run as Mail's own, and
   answers it; Nil, and nothing done, when this Mail has no such class. */
static inline Class LVExtendMailClass(const char *name, Class additions)
{
    Class hostClass = LVMailClass(name);
    if (hostClass != Nil)
        [LVBundleUtilities extendClass:hostClass withMethodsFromClass:additions];
    return hostClass;
}

/* Extends one of Mail's classes as above, then puts the method's "LV" twin in its place;
   answers Mail's own implementation, or NULL when this Mail has no such class. */
static inline IMP LVPatchMailClass(const char *name, Class additions, NSString *method)
{
    Class hostClass = LVExtendMailClass(name, additions);
    return hostClass != Nil ? [LVBundleUtilities swizzleInstanceMethod:method forClass:hostClass] : NULL;
}
