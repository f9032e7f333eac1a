/*
 * The shortest edit the recent submenus are brought to new rows by: which rows stay, which go
 * and which come, for the changes a list makes between two openings.
 */
#import "LVLorvane.h"
#import "LVShortestEdit.h"

#include <string>
#include <vector>

namespace {

// A row is a word: "b" and "b'" stand for one mailbox before and after its title changed.
// Words are made afresh for each list, so that rows are told apart by their text, not by
// being the same object.
NSArray *words(const char *text)
{
    NSMutableArray *rows = [NSMutableArray array];
    for (NSString *word in [@(text) componentsSeparatedByString:@" "]) {
        if ([word length] > 0)
            [rows addObject:[NSMutableString stringWithString:word]];
    }
    return rows;
}

// The rows marked kept, in order: "-" for a row that goes or comes.
NSString *marked(NSArray *rows, const std::vector<BOOL> &kept)
{
    NSMutableArray *marks = [NSMutableArray array];
    for (NSUInteger i = 0; i < [rows count]; i++)
        [marks addObject:kept[i] ? [rows objectAtIndex:i] : @"-"];
    return [marks componentsJoinedByString:@" "];
}

testing::AssertionResult editIs(const char *before, const char *after, const char *oldMarks, const char *newMarks, NSUInteger length)
{
    NSArray *old = words(before), *now = words(after);
    std::vector<BOOL> oldKept([old count], NO), newKept([now count], NO);
    NSUInteger changed = [LVPluginClass("LVShortestEdit") markRowsKeptFrom:old to:now oldKept:oldKept.data() newKept:newKept.data()];
    NSString *gone = marked(old, oldKept), *come = marked(now, newKept);
    if ([gone isEqualToString:@(oldMarks)] && [come isEqualToString:@(newMarks)] && changed == length)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "\"" << before << "\" to \"" << after << "\" kept \"" << [gone UTF8String] << "\" and \""
                                       << [come UTF8String] << "\", " << changed << " rows changed";
}

#define LVAssertEdit(before, after, oldMarks, newMarks, length) EXPECT_TRUE(editIs(before, after, oldMarks, newMarks, length))

} // namespace

TEST(ShortestEdit, KeepsEveryRowBothListsShareInOrderAndChangesTheRest)
{
    LVAssertEdit("a b c", "a b c", "a b c", "a b c", 0);              // unchanged
    LVAssertEdit("a b c", "a x b c", "a b c", "a - b c", 1);          // one in
    LVAssertEdit("a b c", "a c", "a - c", "a c", 1);                  // one out
    LVAssertEdit("a b c d", "a d b c", "a b c -", "a - b c", 2);      // one moved up
    LVAssertEdit("a b c d", "b c a d", "- b c d", "b c - d", 2);      // one moved down
    LVAssertEdit("a b c", "x y z", "- - -", "- - -", 6);              // all replaced
    LVAssertEdit("", "a b c", "", "- - -", 3);                        // empty to full
    LVAssertEdit("a b c", "", "- - -", "", 3);                        // full to empty
    LVAssertEdit("a b c", "a b' c", "a - c", "a - c", 2);             // a title alone changed
    LVAssertEdit("a b c d e", "e b c d x", "- b c d -", "- b c d -", 4); // both ends changed
}

TEST(ShortestEdit, PastTheLongestSearchedEditReplacesTheRowsBetweenTheUnchangedEnds)
{
    NSUInteger longest = [LVPluginClass("LVShortestEdit") longestSearchedEdit];
    std::string before = "first", after = "first";
    for (NSUInteger i = 0; i < longest; i++) {
        before += " o" + std::to_string(i) + " kept" + std::to_string(i);
        after += " kept" + std::to_string(i) + " n" + std::to_string(i);
    }
    std::string replaced = "first";
    for (NSUInteger i = 0; i < 2 * longest; i++)
        replaced += " -";
    before += " last", after += " last", replaced += " last";
    LVAssertEdit(before.c_str(), after.c_str(), replaced.c_str(), replaced.c_str(), 4 * longest);
}
