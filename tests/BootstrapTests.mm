/*
 * Loading the plug-in into Mail: the system-version gate and its alert, the run-time
 * class Mail registers, the version line, and the singleton every hook asks for.
 *
 * Each test starts Mail on a system of its own choosing before the bundle loads, so it
 * needs a process of its own (as CTest runs it); in a process where the plug-in is
 * already loaded it is skipped.
 */
#import "LVProviderFixture.h"
#import "MHAlertRecorder.h"
#import "MailApp.h"
#import "MHSystemVersion.h"
#import "MVMailBundle.h"

#include <objc/runtime.h>

namespace {

NSString *const AlertTitle = @"Lorvane Plugin Notification";
NSString *const TooOldText = @"You must be using at least OS X 10.6 (Snow Leopard) for this plugin to work.";
NSString *const GestaltFailedText = @"Gestalt(gestaltSystemVersion, &MacVersion) FAILED. Notify developer.";

int registerBundleCalls = 0;
IMP originalRegisterBundle = NULL;

void countingRegisterBundle(id self, SEL _cmd)
{
    registerBundleCalls++;
    ((void (*)(id, SEL))originalRegisterBundle)(self, _cmd);
}

class Bootstrap : public testing::Test {
protected:
    void SetUp() override
    {
        if (NSClassFromString(@"LorvaneBundle_Provider") != Nil)
            GTEST_SKIP() << "loads the plug-in itself: run it in a process of its own";
    }

    // Mail as it stands when it loads plug-ins, on a system that reports the given answer.
    void startMail(int systemVersion, short gestaltStatus)
    {
        MHSetRecordsAlerts(YES);
        [MailApp sharedMailApp];
        MHSetRecentItemsLimit(10);
        MHSetSystemVersion(systemVersion);
        MHSetGestaltStatus(gestaltStatus);
        Method registerBundle = class_getClassMethod([MVMailBundle class], @selector(registerBundle));
        originalRegisterBundle = method_setImplementation(registerBundle, (IMP)countingRegisterBundle);
        MHClearRecordedAlerts();
        LVClearLog();
        ASSERT_TRUE(LVLoadPluginBundle());
    }

    NSString *versionLine(id className)
    {
        NSBundle *bundle = [NSBundle bundleWithPath:@LORVANE_BUNDLE_PATH];
        return [NSString stringWithFormat:@"[Lorvane] Loaded %@ bundle %@", className, [bundle objectForInfoDictionaryKey:@"CFBundleVersion"]];
    }

    Class providerClass()
    {
        return NSClassFromString(@"LorvaneBundle_Provider");
    }

    void expectOneStartupAlert(NSString *text)
    {
        NSArray *alerts = MHRecordedAlerts();
        ASSERT_EQ(1u, [alerts count]);
        NSDictionary *alert = [alerts objectAtIndex:0];
        EXPECT_NSEQ(AlertTitle, [alert objectForKey:MHAlertTitleKey]);
        EXPECT_NSEQ(text, [alert objectForKey:MHAlertMessageKey]);
        EXPECT_EQ((int)NSCriticalAlertStyle, [[alert objectForKey:MHAlertStyleKey] intValue]);
        EXPECT_LE([[alert objectForKey:MHAlertButtonsKey] count], 1u);
    }

    void expectInertPlugin()
    {
        EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane]"));
        EXPECT_TRUE(NSClassFromString(@"LorvaneBundle") == Nil);
        EXPECT_EQ(0, registerBundleCalls);
        EXPECT_EQ(0u, [[MVMailBundle registeredBundleClasses] count]);
        EXPECT_TRUE([providerClass() activeLorvaneBundle_Provider] == nil);

        // The provider's own class still answers, and registers nothing.
        [providerClass() initialize];
        EXPECT_EQ(0, registerBundleCalls);

        // A plug-in that did not start leaves the user's preferences as they are.
        NSData *before = [@"<plist><dict/></plist>" dataUsingEncoding:NSUTF8StringEncoding];
        ASSERT_TRUE([before writeToFile:MHPreferencesFilePath() atomically:YES]);
        [LVMakeListProvider(10, 2, NO) writePreferences];
        EXPECT_TRUE([[NSData dataWithContentsOfFile:MHPreferencesFilePath()] isEqualToData:before]);
        EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane]"));
    }
};

} // namespace

TEST_F(Bootstrap, SystemOf10_6_0StartsRegistersOnceAndLogsItsVersion)
{
    // Other plug-ins beside ours; the start-up reads the folder but says nothing about it.
    NSString *bundles = [NSHomeDirectory() stringByAppendingPathComponent:@"Library/Mail/Bundles"];
    for (NSString *entry in @[ @"A.mailbundle", @"B.txt", @"C.MailBundle" ])
        ASSERT_TRUE([[NSFileManager defaultManager] createDirectoryAtPath:[bundles stringByAppendingPathComponent:entry]
                                              withIntermediateDirectories:YES attributes:nil error:NULL]);

    startMail(0x1060, 0);

    EXPECT_EQ(0u, [MHRecordedAlerts() count]);
    Class bundleClass = NSClassFromString(@"LorvaneBundle");
    ASSERT_TRUE(bundleClass != Nil);
    EXPECT_EQ([MVMailBundle class], class_getSuperclass(bundleClass));
    EXPECT_EQ(1, registerBundleCalls);
    EXPECT_NSEQ(@[ bundleClass ], [MVMailBundle registeredBundleClasses]);
    EXPECT_EQ(1u, LVLogCount(versionLine(@"LorvaneBundle")));
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"Installed bundles: "));
    EXPECT_EQ(0u, LVLogCountWithPrefix(@"[Lorvane] Failed to create subclass"));

    // The singleton is Mail's one instance of the registered class, made by its init.
    id mailsInstance = [[MVMailBundle bundleInstances] lastObject];
    ASSERT_TRUE(mailsInstance != nil);
    EXPECT_TRUE([mailsInstance isKindOfClass:bundleClass]);
    EXPECT_EQ(mailsInstance, [providerClass() activeLorvaneBundle_Provider]);
    EXPECT_EQ(mailsInstance, [bundleClass activeLorvaneBundle_Provider]);
}

TEST_F(Bootstrap, InitializeRegistersOnlyMailsCopyOfTheClass)
{
    startMail(0x10C6, 0);
    ASSERT_EQ(1, registerBundleCalls);

    [providerClass() initialize];
    EXPECT_EQ(1, registerBundleCalls);

    [NSClassFromString(@"LorvaneBundle") initialize];
    EXPECT_EQ(2, registerBundleCalls);
    EXPECT_EQ(1u, [[MVMailBundle registeredBundleClasses] count]);
}

TEST_F(Bootstrap, VersionLineNamesMailsClassWhoeverIsAsked)
{
    startMail(0x10C6, 0);
    LVClearLog();

    [providerClass() logBundleVersion];
    [NSClassFromString(@"LorvaneBundle") logBundleVersion];

    EXPECT_EQ(2u, LVLogCount(versionLine(@"LorvaneBundle")));
    EXPECT_EQ(2u, [LVLoggedLines() count]);
}

TEST_F(Bootstrap, SystemOlderThan10_6ShowsOneAlertAndLeavesThePluginInert)
{
    startMail(0x105F, 0);
    expectOneStartupAlert(TooOldText);
    expectInertPlugin();
}

TEST_F(Bootstrap, FailingGestaltShowsItsOwnTextEvenWhenTheVersionWouldPass)
{
    startMail(0x10C6, -5551);
    expectOneStartupAlert(GestaltFailedText);
    expectInertPlugin();
}

TEST_F(Bootstrap, VersionLineWithoutMailsClassPrintsNoClass)
{
    startMail(0x1050, 0);
    LVClearLog();
    [providerClass() logBundleVersion];
    EXPECT_EQ(1u, LVLogCount(versionLine(nil)));
}
