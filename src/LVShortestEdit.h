#import <Foundation/Foundation.h>

/*
 * The shortest edit between two lists of rows: which rows of the old list stay, and which rows
 * of the new list they become. Every other old row goes and every other new row comes.
 *
 * This class exists so that a menu brought to new rows takes out and puts in only the rows
 * that changed. Rows are objects, compared with -isEqual: (the very same object is equal
 * without asking); the rows kept read the same, in the same order, in both lists. An edit
 * keeps nothing from one call to the next; each submenu holds one, so that an opening sends
 * its edits no message through the class, which this run-time looks up by name each time.
 */
@interface LVShortestEdit : NSObject

/* Marks each of the old rows in `oldKept` and each of the new in `newKept`: YES for a row
   kept. Past +longestSearchedEdit rows going or coming, the rows between the unchanged ends
   of the two lists are all replaced rather than searched. Answers how many rows go or come. */
- (NSUInteger)markRowsKeptFrom:(NSArray *)oldRows to:(NSArray *)newRows oldKept:(BOOL *)oldKept newKept:(BOOL *)newKept;

/* The most rows going and coming that are searched for: past it, the search costs more than
   the toolkit's work it saves. */
+ (NSUInteger)longestSearchedEdit;

@end
