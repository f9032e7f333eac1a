/*
 * The shortest edit the recent submenus are brought to new rows by: which rows stay, which go
 * and which come, for the changes a list makes between two openings.
 */
#import "LVLorvane.h"
#import "LVShortestEdit.h"

#include <string>
#include <vector>

namespace {

// Rows are words, made afresh for each list so that rows match by their text alone; "b'" is
// the row of b's mailbox after its title changed.
NSArray *rowsOf(const std::string &text)
{
    return text.empty() ? @[] : [@(text.c_str()) componentsSeparatedByString:@" "];
}

// The old list, then the new, each row that goes or comes shown as "-", then how many do.
std::string edit(const std::string &before, const std::string &after)
{
    NSArray *lists[] = { rowsOf(before), rowsOf(after) };
    std::vector<BOOL> kept[] = { std::vector<BOOL>([lists[0] count]), std::vector<BOOL>([lists[1] count]) };
    LVShortestEdit *edit = [[[LVPluginClass("LVShortestEdit") alloc] init] autorelease];
    NSUInteger changed = [edit markRowsKeptFrom:lists[0] to:lists[1] oldKept:kept[0].data() newKept:kept[1].data()];
    NSMutableArray *marks[] = { [NSMutableArray array], [NSMutableArray array] };
    for (int list = 0; list < 2; list++) {
        for (NSUInteger i = 0; i < [lists[list] count]; i++)
            [marks[list] addObject:kept[list][i] ? [lists[list] objectAtIndex:i] : @"-"];
    }
    return [[NSString stringWithFormat:@"%@ | %@ (%lu)", [marks[0] componentsJoinedByString:@" "], [marks[1] componentsJoinedByString:@" "],
                      (unsigned long)changed] UTF8String];
}

} // namespace

TEST(ShortestEdit, KeepsEveryRowBothListsShareInOrderAndChangesTheRest)
{
    EXPECT_EQ("a b c | a b c (0)", edit("a b c", "a b c"));             // unchanged
    EXPECT_EQ("a b c | a - b c (1)", edit("a b c", "a x b c"));         // one in
    EXPECT_EQ("a - c | a c (1)", edit("a b c", "a c"));                 // one out
    EXPECT_EQ("a b c - | a - b c (2)", edit("a b c d", "a d b c"));     // one moved up
    EXPECT_EQ("- b c d | b c - d (2)", edit("a b c d", "b c a d"));     // one moved down
    EXPECT_EQ("- - - | - - - (6)", edit("a b c", "x y z"));             // all replaced
    EXPECT_EQ(" | - - - (3)", edit("", "a b c"));                       // empty to full
    EXPECT_EQ("- - - |  (3)", edit("a b c", ""));                       // full to empty
    EXPECT_EQ("a - c | a - c (2)", edit("a b c", "a b' c"));            // a title alone changed
    EXPECT_EQ("- b c d - | - b c d - (4)", edit("a b c d e", "e b c d x")); // both ends changed

    // Past the longest edit searched, the rows between the unchanged ends are all replaced.
    NSUInteger longest = [LVPluginClass("LVShortestEdit") longestSearchedEdit];
    std::string before = "first", after = "first", replaced = "first";
    for (NSUInteger i = 0; i < longest; i++) {
        before += " o" + std::to_string(i) + " k" + std::to_string(i);
        after += " k" + std::to_string(i) + " n" + std::to_string(i);
        replaced += " - -";
    }
    replaced += " last";
    EXPECT_EQ(replaced + " | " + replaced + " (" + std::to_string(4 * longest) + ")", edit(before + " last", after + " last"));
}
