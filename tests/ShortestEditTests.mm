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
std::vector<std::string> words(const char *text)
{
    std::vector<std::string> rows;
    std::string word;
    for (const char *c = text;; c++) {
        if (*c != ' ' && *c != '\0') {
            word += *c;
            continue;
        }
        if (!word.empty())
            rows.push_back(word);
        word.clear();
        if (*c == '\0')
            return rows;
    }
}

struct Lists {
    std::vector<std::string> old, now;
};

BOOL sameWord(const void *context, NSUInteger oldIndex, NSUInteger newIndex)
{
    const Lists *lists = (const Lists *)context;
    return lists->old[oldIndex] == lists->now[newIndex];
}

// The rows marked kept, in order: "-" for a row that goes or comes.
std::string marked(const std::vector<std::string> &rows, const std::vector<BOOL> &kept)
{
    std::string text;
    for (size_t i = 0; i < rows.size(); i++)
        text += (text.empty() ? "" : " ") + (kept[i] ? rows[i] : std::string("-"));
    return text;
}

testing::AssertionResult editIs(const char *before, const char *after, const char *oldMarks, const char *newMarks, NSUInteger length)
{
    Lists lists = { words(before), words(after) };
    std::vector<BOOL> oldKept(lists.old.size(), NO), newKept(lists.now.size(), NO);
    NSUInteger changed = [LVPluginClass("LVShortestEdit") markRowsKeptFrom:lists.old.size()
                                                                        to:lists.now.size()
                                                                     match:sameWord
                                                                   context:&lists
                                                                   oldKept:oldKept.data()
                                                                   newKept:newKept.data()];
    std::string gone = marked(lists.old, oldKept), come = marked(lists.now, newKept);
    if (gone == oldMarks && come == newMarks && changed == length)
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << "\"" << before << "\" to \"" << after << "\" kept \"" << gone << "\" and \"" << come << "\", "
                                       << changed << " rows changed";
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
