#import <Foundation/Foundation.h>

/* Whether row `oldIndex` of the old list is row `newIndex` of the new one. */
typedef BOOL (*LVRowsMatch)(const void *context, NSUInteger oldIndex, NSUInteger newIndex);

/*
 * The shortest edit between two lists of rows: which rows of the old list stay, and which rows
 * of the new list they become. Every other old row goes and every other new row comes.
 *
 * This class exists so that a menu brought to new rows takes out and puts in only the rows
 * that changed. It sees rows only through the match function; the rows kept always read the
 * same, in the same order, in both lists.
 */
@interface LVShortestEdit : NSObject

/* Marks each of the `oldCount` entries of `oldKept` and the `newCount` of `newKept`: YES for a
   row kept. Past +longestSearchedEdit rows going or coming, the rows between the unchanged
   ends of the two lists are all replaced rather than searched. Answers how many rows go or come. */
+ (NSUInteger)markRowsKeptFrom:(NSUInteger)oldCount
                      to:(NSUInteger)newCount
                   match:(LVRowsMatch)match
                 context:(const void *)context
                 oldKept:(BOOL *)oldKept
                 newKept:(BOOL *)newKept;

/* The most rows going and coming that are searched for: past it, the search costs more than
   the toolkit's work it saves. */
+ (NSUInteger)longestSearchedEdit;

@end
