#import "LVTestSupport.h"

TEST(BundleLoading, BuiltBundleLoadsFromItsAbsolutePathWithItsIdentifier)
{
    NSBundle *bundle = [NSBundle bundleWithPath:@LORVANE_BUNDLE_PATH];
    ASSERT_TRUE(bundle != nil);
    EXPECT_NSEQ(@"org.lorvane.mailbundle", [bundle bundleIdentifier]);
    ASSERT_TRUE(LVLoadPluginBundle());
    EXPECT_TRUE(LVPluginClass("LorvaneMailbox") != Nil);
    EXPECT_TRUE(LVPluginClass("LVBundleUtilities") != Nil);
    EXPECT_TRUE([bundle pathForImageResource:@"icon"] != nil);
}
