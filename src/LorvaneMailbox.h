#import <Foundation/Foundation.h>
#import "MailInterfaces.h"

/*
 * One entry of the recent-mailbox list: a mailbox, how often and when it was last
 * used, and the name the menus show for it.
 *
 * The record does not own its mailbox: Mail keeps MailboxUid objects alive, and the
 * provider prunes records whose mailbox Mail no longer knows.
 */
@interface LorvaneMailbox : NSObject <NSCopying>
{
    id<LVMailboxUid> _uid; // not retained
    int _accesses;
    NSDate *_date;                 // owned; nil only if a saved date did not parse
    NSMutableString *_displayName; // owned; made once by -init, only its text changes
}

/* The designated initialiser, which copies use too: one use, dated now, an empty name. */
- (id)init;

/* Also resets the display name to Mail's name for the mailbox. */
- (void)setUid:(id<LVMailboxUid>)uid;
- (void)setAccesses:(int)accesses;
- (void)setDate:(NSDate *)date;
/* Copies the text; the caller's string is not kept. */
- (void)setDisplayName:(NSString *)displayName;

- (id<LVMailboxUid>)uid;
- (int)accesses;
- (NSDate *)date;
/* The record's own buffer, not a copy: later renames show through it. */
- (NSMutableString *)displayName;

- (void)incrementAccesses;

/* Comparators for -sortUsingSelector:; NSOrderedAscending puts the receiver first. */
- (NSComparisonResult)sortCompareDate:(LorvaneMailbox *)other;        // newest first
- (NSComparisonResult)sortCompareAccesses:(LorvaneMailbox *)other;    // most used first
- (NSComparisonResult)sortCompareDisplayName:(LorvaneMailbox *)other; // by the user's locale

/* Debugging aid: prints the mailbox's address to standard output. */
- (void)printf;

@end
