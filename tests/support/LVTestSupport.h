/*
 * What every test shares: a private Library folder, the log lines the process wrote,
 * the plug-in loaded from the built bundle, and small plist helpers. The files in the
 * Library folder are written and found with MHUserLibrary.h.
 *
 * Tests reach the plug-in's classes by name (LVPluginClass), as Mail does: the bundle
 * is loaded at run time, never linked in.
 */
#import <AppKit/AppKit.h>
#import "MHUserLibrary.h"
#include <gtest/gtest.h>

/* The private Library folder ("<tmp>/Library") and home folder of this test process. */
NSString *LVTestLibraryFolder(void);
NSString *LVTestHomeFolder(void);
/* A fresh, empty folder under the process's temporary root. */
NSString *LVMakeTemporaryFolder(NSString *name);

/* Every line NSLog wrote since the last LVClearLog(), oldest first. */
NSArray *LVLoggedLines(void);
void LVClearLog(void);
/* How many logged lines equal the text exactly, or begin with the prefix. */
NSUInteger LVLogCount(NSString *line);
NSUInteger LVLogCountWithPrefix(NSString *prefix);

/* Loads build/Lorvane.mailbundle once per process; YES when it is loaded. */
BOOL LVLoadPluginBundle(void);
/* A class of the loaded plug-in, by name; loads the bundle first. */
Class LVPluginClass(const char *name);

/* Opens a menu as AppKit does before showing it: its delegate is asked to bring it up to date. */
void LVOpenRecentMenu(NSMenu *menu);
/* Titles of the items above the separator: the recent mailboxes, top to bottom. */
NSArray *LVTitlesAboveSeparator(NSMenu *menu);

/* Reads any property list file; nil when missing or unreadable. */
id LVReadPlist(NSString *path);
/* Runs Python's plistlib on the file and answers what it printed as JSON, or nil. */
id LVPythonReadPlist(NSString *path);

/* Tests of the plug-in's class utilities, loaded into a running Mail; the log starts empty
   after loading. */
class LVBundleUtilitiesTest : public testing::Test {
protected:
    Class utilities = Nil;

    void SetUp() override
    {
        MHSetRecentItemsLimit(10);
        utilities = LVPluginClass("LVBundleUtilities");
        ASSERT_TRUE(utilities != Nil);
        LVClearLog();
    }
};

/* Equality of Objective-C strings with readable failure output. */
#define EXPECT_NSEQ(expected, actual) EXPECT_STREQ([[(expected) description] UTF8String], [[(actual) description] UTF8String])
#define ASSERT_NSEQ(expected, actual) ASSERT_STREQ([[(expected) description] UTF8String], [[(actual) description] UTF8String])
