/*
 * What ships: the Info.plist a Mac build carries, the menu titles in each language the bundle
 * carries, found by the translated Mail, and the demo that `make demo` plays.
 */
#import "LVLorvane.h"

#include <ostream>

namespace {

// A table's text, decoded by its byte-order mark alone, so it reads the same whatever the
// process's default encoding is; nil without a mark or when it does not parse.
NSDictionary *titlesOf(NSString *language)
{
    NSString *path = [@LORVANE_BUNDLE_PATH stringByAppendingFormat:@"/Resources/%@.lproj/Localizable.strings", language];
    NSData *data = [NSData dataWithContentsOfFile:path];
    const unsigned char *bytes = (const unsigned char *)[data bytes];
    NSString *text = nil;
    if ([data length] >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF)
        text = [[[NSString alloc] initWithData:[data subdataWithRange:NSMakeRange(3, [data length] - 3)] encoding:NSUTF8StringEncoding] autorelease];
    else if ([data length] >= 2 && ((bytes[0] == 0xFF && bytes[1] == 0xFE) || (bytes[0] == 0xFE && bytes[1] == 0xFF)))
        text = [[[NSString alloc] initWithData:data encoding:NSUnicodeStringEncoding] autorelease];
    @try {
        id table = [text propertyListFromStringsFileFormat];
        return [table isKindOfClass:[NSDictionary class]] ? table : nil;
    } @catch (NSException *exception) {
        return nil;
    }
}

// The languages Lorvane ships: the folder name, and the name GNUstep's NSLanguages uses.
struct Language {
    const char *folder, *name;
};

void PrintTo(const Language &language, std::ostream *out)
{
    *out << language.folder;
}

class TranslatedMail : public testing::TestWithParam<Language> {
};

// Mail running in the user's language shows its own "Go To" translated: the plug-in finds it by
// its translated title and places all three items with translated titles, each table holding
// the five titles, distinct, the English ones translated elsewhere.
TEST_P(TranslatedMail, GetsTheThreeMenuBarItemsInItsLanguageAndInTheirPlaces)
{
    NSString *folder = @(GetParam().folder);
    [NSUserDefaults setUserLanguages:@[ @(GetParam().name) ]];
    NSDictionary *titles = titlesOf(folder);
    NSArray *keys = @[ @"Move to Recent", @"Copy to Recent", @"Go to Recent", @"Clear Menu", @"Go To" ];
    EXPECT_TRUE([[NSSet setWithArray:keys] isEqualToSet:[NSSet setWithArray:[titles allKeys]]]) << [[titles description] UTF8String];
    EXPECT_EQ(5u, [[NSSet setWithArray:[titles allValues]] count]);
    for (NSString *key in @[ @"Move to Recent", @"Copy to Recent", @"Go to Recent" ])
        EXPECT_EQ([folder isEqualToString:@"English"], [key isEqualToString:[titles objectForKey:key]]) << [key UTF8String];

    NSMenu *mainMenu = [LVStartMail() mainMenu];
    NSMenuItem *move = LVItemAfterItemWithAction(mainMenu, @selector(moveMessagesToMailbox:));
    NSMenu *goToMenu = [MHMailMenus goToMenuInMainMenu:mainMenu];
    NSMenuItem *goTo = LVItemAfterItem((NSMenuItem *)[[goToMenu supermenu] itemAtIndex:[[goToMenu supermenu] indexOfItemWithSubmenu:goToMenu]]);
    EXPECT_NSEQ([titles objectForKey:@"Go To"], [goToMenu title]);
    EXPECT_NSEQ([titles objectForKey:@"Move to Recent"], [move title]);
    EXPECT_NSEQ([titles objectForKey:@"Copy to Recent"], [LVItemAfterItem(move) title]);
    EXPECT_NSEQ([titles objectForKey:@"Go to Recent"], [goTo title]);
    EXPECT_NSEQ([titles objectForKey:@"Clear Menu"], [[[[goTo submenu] itemArray] lastObject] title]);
}

INSTANTIATE_TEST_SUITE_P(Languages, TranslatedMail,
                         testing::Values(Language{ "English", "English" }, Language{ "German", "German" }, Language{ "French", "French" },
                                         Language{ "Spanish", "Spanish" }, Language{ "Italian", "Italian" },
                                         Language{ "Japanese", "Japanese" }, Language{ "Dutch", "Dutch" },
                                         Language{ "pt_BR", "BrasilPortuguese" }),
                         [](const testing::TestParamInfo<Language> &info) { return std::string(info.param.folder); });

} // namespace

TEST(MacBundle, InfoPlistDescribesTheSameBundleAsGNUstepsAndListsMailsCompatibilityKeys)
{
    NSDictionary *mac = LVPythonReadPlist([@LORVANE_BINARY_DIR stringByAppendingPathComponent:@"mac/Info.plist"]);
    NSDictionary *gnustep = LVReadPlist([@LORVANE_BUNDLE_PATH stringByAppendingPathComponent:@"Resources/Info-gnustep.plist"]);
    struct Row {
        NSString *key;
        id value; // nil: as GNUstep's Info
    } rows[] = {
        { @"CFBundlePackageType", @"BNDL" },       { @"CFBundleIdentifier", @"org.lorvane.mailbundle" },
        { @"CFBundleExecutable", @"Lorvane" },     { @"CFBundleName", nil },
        { @"CFBundleShortVersionString", nil },    { @"CFBundleVersion", nil },
        { @"NSPrincipalClass", @"LorvaneBundle_Provider" },
    };
    for (const Row &row : rows)
        EXPECT_NSEQ(row.value ?: [gnustep objectForKey:row.key], [mac objectForKey:row.key]) << [row.key UTF8String];
    // Mail makes the principal class itself: it must be one the bundle compiles in.
    EXPECT_TRUE(LVPluginClass("LorvaneBundle_Provider") != Nil);
    // Up to 10.11 Mail reads the plain key; from 10.12 to 13 one key per system version.
    NSArray *listed = [mac objectForKey:@"SupportedPluginCompatibilityUUIDs"];
    EXPECT_TRUE([listed isKindOfClass:[NSArray class]]);
    for (NSString *version in @[ @"10.12", @"10.13", @"10.14", @"10.15", @"11.0", @"12.0", @"13.0" ]) {
        NSString *key = [NSString stringWithFormat:@"Supported%@PluginCompatibilityUUIDs", version];
        EXPECT_NSEQ(listed, [mac objectForKey:key]) << [version UTF8String];
    }
}

// `make demo` on the suite's display rather than one of its own.
TEST(Demo, PlaysTheDayToTheEndAndNamesItsScreenshots)
{
    NSString *folder = LVMakeTemporaryFolder(@"demo");
    NSString *outputPath = [folder stringByAppendingPathExtension:@"out"];
    NSString *command = [NSString stringWithFormat:@"LORVANE_USE_DISPLAY=1 /bin/sh '%s/tools/demo.sh' '%s' '%@' > '%@' 2>&1", LORVANE_SOURCE_DIR,
                                                   LORVANE_BINARY_DIR, folder, outputPath];
    int status = system([command fileSystemRepresentation]);
    NSString *output = [NSString stringWithContentsOfFile:outputPath encoding:NSUTF8StringEncoding error:NULL];
    ASSERT_EQ(0, status) << [output UTF8String];
    NSString *lastLine = [@"Screenshots: " stringByAppendingFormat:@"%@/screenshots\n", folder];
    EXPECT_TRUE([output hasSuffix:lastLine]) << [output UTF8String];
}
