/*
 * Mail's classes change name from one version to the next. A Mail that lacks one of the
 * classes Lorvane patches must still start, work as Mail, and keep the rest of Lorvane.
 *
 * The stand-in Mail has every class compiled in, so a test hides one: this executable
 * exports its own NSClassFromString, which the loaded bundle binds to before Foundation's,
 * and which answers Nil for the hidden name.
 */
#import "LVMailFixture.h"
#import "MessageTransfer.h"

#include <dlfcn.h>

static const char *hiddenClassName;

extern "C" __attribute__((visibility("default"))) Class NSClassFromString(NSString *name)
{
    static Class (*foundationLookup)(NSString *) = (Class(*)(NSString *))dlsym(RTLD_NEXT, "NSClassFromString");
    if (hiddenClassName != nullptr && [name isEqualToString:[NSString stringWithUTF8String:hiddenClassName]])
        return Nil;
    return foundationLookup(name);
}

namespace {

struct MissingClass {
    const char *name;
    const char *hook;            // the method Lorvane would have given the class
    bool transfersReachTheList;  // whether the recent list still learns of transfers
};

const MissingClass kMissingClasses[] = {
    { "AccountPreferences", "LVaccountsDidChange:", true },
    { "MailAccount", "LVdeleteMailbox:reflectToServer:", true },
    { "MailApp", "LVapplicationWillTerminate:", true },
    { "MessageTransfer", "LVsetDelegate:", false },
    { "TableViewManager", "recentContextualMenu", true },
};

void PrintTo(const MissingClass &row, std::ostream *out)
{
    *out << row.name;
}

class MissingMailClass : public testing::TestWithParam<MissingClass> {
};

TEST_P(MissingMailClass, IsPassedOverSilentlyAndTheRestOfLorvaneWorks)
{
    const MissingClass &row = GetParam();
    hiddenClassName = row.name;
    LorvaneBundle_Provider *plugin = LVStartMailWithSampleStore();
    ASSERT_TRUE(plugin != nil);
    hiddenClassName = nullptr;

    Class mailClass = objc_getClass(row.name);
    EXPECT_FALSE([mailClass instancesRespondToSelector:sel_registerName(row.hook)]);
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"SWIZZLE Error - "));
    EXPECT_EQ(0u, [MHRecordedAlerts() count]);
    EXPECT_TRUE([plugin moveToRecentSubmenu] != nil && [plugin goToRecentSubmenu] != nil);

    // Mail still moves messages, and the list hears of it wherever its hook is installed.
    MessageViewer *viewer = [(MailApp *)NSApp openMessageViewer];
    MailboxUid *archive = LVSampleMailbox(@"Home/Archive");
    NSUInteger before = [LVMessageFileNames(archive) count];
    LVUseMailboxes(viewer, LVSampleMailbox(@"Home/Inbox"), @[ archive ]);
    EXPECT_EQ(before + 1, [LVMessageFileNames(archive) count]);
    NSArray *listed = LVListedMailboxNames(plugin);
    EXPECT_EQ(row.transfersReachTheList, [listed containsObject:@"Archive"]) << [[listed description] UTF8String];
}

INSTANTIATE_TEST_SUITE_P(MailWithout, MissingMailClass, testing::ValuesIn(kMissingClasses),
                         [](const testing::TestParamInfo<MissingClass> &info) { return std::string(info.param.name); });

} // namespace

// Classes the transfer path uses are looked for at each transfer until Mail has them.
TEST(MailWithoutAtFirst, ClassMissingAtATransferIsLookedForAgainAtTheNext)
{
    LorvaneBundle_Provider *plugin = LVStartMailWithSampleStore();
    ASSERT_TRUE(plugin != nil);
    MessageViewer *viewer = [(MailApp *)NSApp openMessageViewer];
    NSArray *paths = @[ [[LVSampleMailbox(@"Home/Inbox") messagePaths] firstObject] ];
    id<LVMailboxUid> archive = (id<LVMailboxUid>)LVSampleMailbox(@"Home/Archive");
    // Each class is missing at the first transfer that needs it, then Mail has it.
    for (const char *missing : { "MessageViewer", "MailboxUid", (const char *)nullptr }) {
        hiddenClassName = missing;
        MessageTransfer *transfer = [[MessageTransfer alloc] initWithMessagesAtPaths:paths destinationMailbox:(MailboxUid *)archive deleteOriginals:NO];
        [transfer setDelegate:viewer];
        [transfer release];
        EXPECT_EQ(missing != nullptr ? -1 : 0, [plugin getRecentMailboxIndexWithUid:archive]) << (missing != nullptr ? missing : "none") << " missing";
    }
    hiddenClassName = nullptr;
}
