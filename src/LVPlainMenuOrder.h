#import <AppKit/AppKit.h>
#import "LVMenuOrder.h"

/*
 * The menus' order and names worked out whole, for a list the menu order cannot keep (a
 * record without a mailbox, a mailbox listed twice or without a name, a record without a date
 * where dates order the list): every name asked of Mail, the list sorted by name with the
 * records' comparators, each run of namesakes named, the list sorted by the sort type, and
 * every row made again. Comparators that call records without a date equal to every other
 * record order nothing consistently: only the same sorts give the same answer.
 */
@interface LVPlainMenuOrder : NSObject

/* Names the list's records, leaving it in name order; a record without a mailbox is logged, on
   every turn, and never passed. */
+ (void)nameList:(NSMutableArray *)list describer:(id<LVMailboxDescribing>)describer;
/* Names the records, then sorts the list by the sort type. */
+ (void)orderList:(NSMutableArray *)list sortType:(int)sortType describer:(id<LVMailboxDescribing>)describer;

/* The LVMenuRow objects of the list as it stands, front first, at most `capacity`; a record
   without a mailbox has none. */
+ (NSArray *)rowsOfList:(NSArray *)list capacity:(NSUInteger)capacity describer:(id<LVMailboxDescribing>)describer;

@end
