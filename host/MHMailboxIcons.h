/*
 * Small pictures of mailbox kinds (inbox, sent, drafts, trash, junk, plain folder),
 * drawn in code so the stand-in needs no image files. MailboxesController caches them.
 */
#import <AppKit/AppKit.h>

@interface MHMailboxIcons : NSObject

/* The kind whose picture a mailbox of this type gets: one of Mail's special types, or
   MHMailboxTypeGeneric (a folder) for every other type. */
+ (int)iconKindForMailboxType:(int)type;

/* A new picture of the kind, size points square; the caller owns it. */
+ (NSImage *)newIconForKind:(int)kind size:(CGFloat)size;

@end
