/*
 * What the bundle tells the system about itself: the Info.plist a Mac build ships (written
 * by cmake/GenerateMacInfoPlist.cmake, checked with Python's plistlib, which reads plists
 * as strictly as macOS does), and the menu titles in each language the bundle carries.
 */
#import "LVMenuFixture.h"
#import "LVTestSupport.h"

#include <cstdlib>
#include <ostream>

namespace {

// Made up for the tests; Mail's real UUIDs come from each user's Mac.
NSString *const kTestUUID = @"6C1A3E52-9B0D-4F7E-A5C3-2D84E1F09B77";
NSString *const kOtherTestUUID = @"0F4B9D21-77E3-4C58-8A1E-93D5B6C2F410";

NSString *const kCompatibilityKey = @"SupportedPluginCompatibilityUUIDs";

NSString *versionedCompatibilityKey(NSString *version)
{
    return [NSString stringWithFormat:@"Supported%@PluginCompatibilityUUIDs", version];
}

// Every key Mail reads compatibility UUIDs from, plain and per system version.
NSArray *compatibilityKeys(NSDictionary *plist)
{
    NSMutableArray *keys = [NSMutableArray array];
    for (NSString *key in plist)
        if ([key hasPrefix:@"Supported"] && [key hasSuffix:@"PluginCompatibilityUUIDs"])
            [keys addObject:key];
    return keys;
}

struct ScriptRun {
    int status;
    NSString *output; // the Info.plist path the script was asked to write
    NSString *log;    // what cmake printed
};

// Runs the generator as the build does, with the bundle's names, a version of its own and
// the given lists.
ScriptRun runInfoPlistScript(NSString *uuids, NSString *versions)
{
    NSString *folder = LVMakeTemporaryFolder(@"mac-info-plist");
    NSString *output = [folder stringByAppendingPathComponent:@"Contents/Info.plist"];
    NSString *logPath = [folder stringByAppendingPathComponent:@"cmake.log"];
    NSString *command = [NSString stringWithFormat:
        @"'%s' '-DTEMPLATE=%s/Resources/Info.plist.in' '-DOUTPUT=%@'"
         " -DLORVANE_BUNDLE_NAME=Lorvane -DLORVANE_BUNDLE_IDENTIFIER=org.lorvane.mailbundle"
         " -DLORVANE_VERSION=2.7.1"
         " '-DLORVANE_MAIL_COMPATIBILITY_UUIDS=%@' '-DLORVANE_MAIL_SYSTEM_VERSIONS=%@'"
         " -P '%s/cmake/GenerateMacInfoPlist.cmake' >'%@' 2>&1",
        LORVANE_CMAKE_COMMAND, LORVANE_SOURCE_DIR, output, uuids, versions, LORVANE_SOURCE_DIR, logPath];
    int status = system([command fileSystemRepresentation]);
    NSString *log = [NSString stringWithContentsOfFile:logPath encoding:NSUTF8StringEncoding error:NULL];
    return ScriptRun{ status, output, log != nil ? log : @"" };
}

// The keys of every "Localizable" table: the English titles.
NSArray *titleKeys(void)
{
    return @[ @"Move to Recent", @"Copy to Recent", @"Go to Recent", @"Clear Menu", @"Go To" ];
}

NSString *builtResourcesFolder(void)
{
    return [@LORVANE_BUNDLE_PATH stringByAppendingPathComponent:@"Resources"];
}

NSString *builtTablePath(NSString *folder)
{
    return [builtResourcesFolder() stringByAppendingPathComponent:
                                        [NSString stringWithFormat:@"%@.lproj/Localizable.strings", folder]];
}

// The names of the *.lproj folders directly inside a folder, without the extension, sorted.
NSArray *languageFolders(NSString *resources)
{
    NSMutableArray *names = [NSMutableArray array];
    for (NSString *entry in [[NSFileManager defaultManager] contentsOfDirectoryAtPath:resources error:NULL])
        if ([[entry pathExtension] isEqualToString:@"lproj"])
            [names addObject:[entry stringByDeletingPathExtension]];
    return [names sortedArrayUsingSelector:@selector(compare:)];
}

// A table's text, decoded by its byte-order mark alone, so it reads the same whatever
// the process's default encoding is. nil without a mark.
NSString *tableText(NSString *path)
{
    NSData *data = [NSData dataWithContentsOfFile:path];
    if (data == nil || [data length] < 2)
        return nil;
    const unsigned char *bytes = (const unsigned char *)[data bytes];
    if ([data length] >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
        NSData *body = [data subdataWithRange:NSMakeRange(3, [data length] - 3)];
        return [[[NSString alloc] initWithData:body encoding:NSUTF8StringEncoding] autorelease];
    }
    if ((bytes[0] == 0xFF && bytes[1] == 0xFE) || (bytes[0] == 0xFE && bytes[1] == 0xFF))
        return [[[NSString alloc] initWithData:data encoding:NSUnicodeStringEncoding] autorelease];
    return nil;
}

NSDictionary *parseTable(NSString *path)
{
    NSString *text = tableText(path);
    if (text == nil)
        return nil;
    @try {
        id table = [text propertyListFromStringsFileFormat];
        return [table isKindOfClass:[NSDictionary class]] ? table : nil;
    } @catch (NSException *exception) {
        return nil;
    }
}

// The languages Lorvane ships: the folder name, and the language name GNUstep's
// NSLanguages uses for it (pt_BR is the folder name a Mac resolves as well).
struct Language {
    const char *folder;
    const char *name;
};

const Language kLanguages[] = {
    { "English", "English" },
    { "German", "German" },
    { "French", "French" },
    { "Spanish", "Spanish" },
    { "Italian", "Italian" },
    { "Japanese", "Japanese" },
    { "Dutch", "Dutch" },
    { "pt_BR", "BrasilPortuguese" },
};

// Test names show the folder, not the bytes of the row.
void PrintTo(const Language &language, std::ostream *out)
{
    *out << language.folder;
}

} // namespace

TEST(MacInfoPlist, ScriptWritesTheKeysMailReadsWithTheUuidUnderEveryCompatibilityKey)
{
    ScriptRun run = runInfoPlistScript(kTestUUID, @"10.12;13.0");
    ASSERT_EQ(0, run.status) << [run.log UTF8String];
    NSDictionary *plist = LVPythonReadPlist(run.output);
    ASSERT_TRUE([plist isKindOfClass:[NSDictionary class]]) << "plistlib could not read " << [run.output UTF8String];

    struct {
        NSString *key;
        NSString *value;
    } const strings[] = {
        { @"CFBundlePackageType", @"BNDL" },
        { @"CFBundleIdentifier", @"org.lorvane.mailbundle" },
        { @"CFBundleExecutable", @"Lorvane" },
        { @"CFBundleName", @"Lorvane" },
        { @"CFBundleShortVersionString", @"2.7.1" },
        { @"CFBundleVersion", @"2.7.1" },
        { @"NSPrincipalClass", @"LorvaneBundle_Provider" },
    };
    for (const auto &row : strings) {
        id value = [plist objectForKey:row.key];
        EXPECT_TRUE([value isKindOfClass:[NSString class]]) << [row.key UTF8String];
        EXPECT_NSEQ(row.value, value) << [row.key UTF8String];
    }

    NSArray *expectedKeys = @[ kCompatibilityKey, versionedCompatibilityKey(@"10.12"), versionedCompatibilityKey(@"13.0") ];
    EXPECT_NSEQ([expectedKeys sortedArrayUsingSelector:@selector(compare:)],
                [compatibilityKeys(plist) sortedArrayUsingSelector:@selector(compare:)]);
    for (NSString *key in expectedKeys) {
        id uuids = [plist objectForKey:key];
        EXPECT_TRUE([uuids isKindOfClass:[NSArray class]]) << [key UTF8String];
        EXPECT_NSEQ(@[ kTestUUID ], uuids) << [key UTF8String];
    }
}

TEST(MacInfoPlist, UuidsAreListedOnceEachInCapitalsInTheOrderGiven)
{
    NSString *lowerOther = [kOtherTestUUID lowercaseString];
    struct {
        NSString *given;
        NSArray *listed;
    } const rows[] = {
        { [NSString stringWithFormat:@"%@;%@", kTestUUID, kOtherTestUUID], @[ kTestUUID, kOtherTestUUID ] },
        { [NSString stringWithFormat:@"%@, %@", kOtherTestUUID, kTestUUID], @[ kOtherTestUUID, kTestUUID ] },
        { lowerOther, @[ kOtherTestUUID ] },
        { [NSString stringWithFormat:@"%@;%@;%@", kTestUUID, lowerOther, kTestUUID], @[ kTestUUID, kOtherTestUUID ] },
    };
    for (const auto &row : rows) {
        ScriptRun run = runInfoPlistScript(row.given, @"11.0");
        ASSERT_EQ(0, run.status) << [row.given UTF8String] << "\n" << [run.log UTF8String];
        NSDictionary *plist = LVPythonReadPlist(run.output);
        ASSERT_TRUE(plist != nil) << [row.given UTF8String];
        EXPECT_NSEQ(row.listed, [plist objectForKey:kCompatibilityKey]) << [row.given UTF8String];
        EXPECT_NSEQ(row.listed, [plist objectForKey:versionedCompatibilityKey(@"11.0")]) << [row.given UTF8String];
    }
}

TEST(MacInfoPlist, WithoutUuidsEveryCompatibilityKeyIsAnEmptyArray)
{
    ScriptRun run = runInfoPlistScript(@"", @"10.15;12.4");
    ASSERT_EQ(0, run.status) << [run.log UTF8String];
    NSDictionary *plist = LVPythonReadPlist(run.output);
    ASSERT_TRUE(plist != nil);
    NSArray *keys = compatibilityKeys(plist);
    EXPECT_EQ(3u, [keys count]);
    for (NSString *key in @[ kCompatibilityKey, versionedCompatibilityKey(@"10.15"), versionedCompatibilityKey(@"12.4") ])
        EXPECT_NSEQ(@[], [plist objectForKey:key]) << [key UTF8String];
}

TEST(MacInfoPlist, MalformedUuidOrVersionStopsTheScriptWithoutWritingAFile)
{
    struct {
        NSString *uuids;
        NSString *versions;
    } const rows[] = {
        { @"not-a-uuid", @"13.0" },
        { [kTestUUID substringFromIndex:1], @"13.0" },
        { [kTestUUID stringByReplacingOccurrencesOfString:@"-" withString:@""], @"13.0" },
        { [NSString stringWithFormat:@"%@;%@x", kTestUUID, kOtherTestUUID], @"13.0" },
        { kTestUUID, @"13" },
        { kTestUUID, @"Ventura" },
    };
    for (const auto &row : rows) {
        ScriptRun run = runInfoPlistScript(row.uuids, row.versions);
        EXPECT_NE(0, run.status) << [row.uuids UTF8String] << " / " << [row.versions UTF8String];
        EXPECT_FALSE([[NSFileManager defaultManager] fileExistsAtPath:run.output]) << [row.uuids UTF8String];
        EXPECT_TRUE([run.log rangeOfString:@"GenerateMacInfoPlist"].location != NSNotFound) << [run.log UTF8String];
    }
}

TEST(MacInfoPlist, BuildWritesOneDescribingTheSameBundleAsTheGnustepInfo)
{
    NSString *path = [@LORVANE_BINARY_DIR stringByAppendingPathComponent:@"mac/Info.plist"];
    NSDictionary *mac = LVPythonReadPlist(path);
    ASSERT_TRUE([mac isKindOfClass:[NSDictionary class]]) << "plistlib could not read " << [path UTF8String];
    NSDictionary *gnustep = LVReadPlist([@LORVANE_BUNDLE_PATH stringByAppendingPathComponent:@"Resources/Info-gnustep.plist"]);
    ASSERT_TRUE(gnustep != nil);

    EXPECT_NSEQ(@"BNDL", [mac objectForKey:@"CFBundlePackageType"]);
    EXPECT_NSEQ(@"org.lorvane.mailbundle", [mac objectForKey:@"CFBundleIdentifier"]);
    EXPECT_NSEQ(@"Lorvane", [mac objectForKey:@"CFBundleExecutable"]);
    for (NSString *key in @[ @"CFBundleIdentifier", @"CFBundleName", @"CFBundleExecutable", @"CFBundleShortVersionString",
                             @"CFBundleVersion", @"NSPrincipalClass" ])
        EXPECT_NSEQ([gnustep objectForKey:key], [mac objectForKey:key]) << [key UTF8String];

    // Mail makes the principal class itself: it must be one the bundle compiles in.
    NSString *principal = [mac objectForKey:@"NSPrincipalClass"];
    ASSERT_TRUE(principal != nil);
    EXPECT_TRUE(LVPluginClass([principal UTF8String]) != Nil) << [principal UTF8String];

    // Up to 10.11 Mail reads the plain key; from 10.12 to 13 one key per system version.
    NSArray *keys = compatibilityKeys(mac);
    EXPECT_TRUE([keys containsObject:kCompatibilityKey]);
    for (NSString *version in @[ @"10.12", @"10.13", @"10.14", @"10.15", @"11.0", @"12.0", @"13.0" ])
        EXPECT_TRUE([keys containsObject:versionedCompatibilityKey(version)]) << [version UTF8String];
    NSArray *listed = [mac objectForKey:kCompatibilityKey];
    ASSERT_TRUE([listed isKindOfClass:[NSArray class]]);
    for (NSString *key in keys)
        EXPECT_NSEQ(listed, [mac objectForKey:key]) << [key UTF8String];
}

TEST(Localization, BundleCarriesEveryLanguageFolderOfTheSourceTree)
{
    NSArray *source = languageFolders([@LORVANE_SOURCE_DIR stringByAppendingPathComponent:@"Resources"]);
    NSArray *built = languageFolders(builtResourcesFolder());
    EXPECT_NSEQ(source, built);
    for (const Language &language : kLanguages)
        EXPECT_TRUE([built containsObject:@(language.folder)]) << language.folder;
}

TEST(Localization, EveryTableHoldsExactlyTheFiveTitlesEachDistinctAndNonEmpty)
{
    NSSet *expectedKeys = [NSSet setWithArray:titleKeys()];
    NSArray *folders = languageFolders(builtResourcesFolder());
    ASSERT_GT([folders count], 0u);
    for (NSString *folder in folders) {
        NSString *path = builtTablePath(folder);
        ASSERT_TRUE(tableText(path) != nil) << [path UTF8String] << ": missing, or no UTF-8 or UTF-16 byte-order mark";
        NSDictionary *table = parseTable(path);
        ASSERT_TRUE(table != nil) << [path UTF8String] << " does not parse";
        EXPECT_TRUE([expectedKeys isEqualToSet:[NSSet setWithArray:[table allKeys]]])
            << [folder UTF8String] << " has the keys " << [[[table allKeys] description] UTF8String];

        NSMutableSet *titles = [NSMutableSet set];
        for (NSString *key in titleKeys()) {
            NSString *title = [table objectForKey:key];
            EXPECT_GT([title length], 0u) << [folder UTF8String] << ": " << [key UTF8String];
            EXPECT_NSEQ([title stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]], title)
                << [folder UTF8String] << ": " << [key UTF8String];
            if (title != nil)
                [titles addObject:title];
        }
        EXPECT_EQ([titleKeys() count], [titles count]) << [folder UTF8String] << ": two menu items would share a title";
    }
}

TEST(Localization, EnglishTitlesAreTheKeysAndOtherLanguagesTranslateTheRecentMenus)
{
    for (const Language &language : kLanguages) {
        NSString *folder = @(language.folder);
        NSDictionary *table = parseTable(builtTablePath(folder));
        ASSERT_TRUE(table != nil) << language.folder;
        BOOL english = [folder isEqualToString:@"English"];
        for (NSString *key in @[ @"Move to Recent", @"Copy to Recent", @"Go to Recent" ]) {
            if (english)
                EXPECT_NSEQ(key, [table objectForKey:key]);
            else
                EXPECT_FALSE([key isEqualToString:[table objectForKey:key]]) << language.folder << ": " << [key UTF8String];
        }
    }
}

class LocalizedTitles : public testing::TestWithParam<Language> {
};

// GNUstep picks the table from the NSLanguages default, as Mail on a Mac follows the
// user's language order; the bundle must answer that language's titles, not English.
// A bundle keeps the first table it reads, so each language needs a process of its own,
// which is how CTest runs every test.
TEST_P(LocalizedTitles, BundleAnswersTheTableOfTheChosenLanguage)
{
    const Language &language = GetParam();
    NSString *folder = @(language.folder);
    [NSUserDefaults setUserLanguages:@[ @(language.name) ]];

    NSBundle *bundle = [NSBundle bundleWithPath:@LORVANE_BUNDLE_PATH];
    ASSERT_TRUE(bundle != nil);
    NSString *found = [bundle pathForResource:@"Localizable" ofType:@"strings"];
    EXPECT_NSEQ([folder stringByAppendingPathExtension:@"lproj"], [[found stringByDeletingLastPathComponent] lastPathComponent]);

    NSDictionary *table = parseTable(builtTablePath(folder));
    ASSERT_TRUE(table != nil);
    for (NSString *key in titleKeys())
        EXPECT_NSEQ([table objectForKey:key], [bundle localizedStringForKey:key value:@"(missing)" table:@"Localizable"])
            << [key UTF8String];
}

INSTANTIATE_TEST_SUITE_P(Languages, LocalizedTitles, testing::ValuesIn(kLanguages),
                         [](const testing::TestParamInfo<Language> &info) { return std::string(info.param.folder); });

class TranslatedMail : public testing::TestWithParam<Language> {
};

// Mail running in the user's language shows its own "Go To" translated; the plug-in must
// find it by its translated title and place all three items with translated titles.
TEST_P(TranslatedMail, GetsTheThreeMenuBarItemsInItsLanguageAndInTheirPlaces)
{
    const Language &language = GetParam();
    [NSUserDefaults setUserLanguages:@[ @(language.name) ]];
    NSDictionary *titles = parseTable(builtTablePath(@(language.folder)));
    ASSERT_TRUE(titles != nil);

    LVStartMailWithPlugin();
    NSMenu *mainMenu = [NSApp mainMenu];
    NSMenuItem *move = LVItemAfterItemWithAction(mainMenu, @selector(moveMessagesToMailbox:));
    NSMenuItem *copy = LVItemAfterItem(move);
    NSMenuItem *goTo = LVItemAfterSubmenu([MHMailMenus goToMenuInMainMenu:mainMenu]);
    EXPECT_NSEQ([titles objectForKey:@"Move to Recent"], [move title]);
    EXPECT_NSEQ([titles objectForKey:@"Copy to Recent"], [copy title]);
    EXPECT_NSEQ([titles objectForKey:@"Go to Recent"], [goTo title]);
    EXPECT_TRUE([goTo hasSubmenu]);
}

INSTANTIATE_TEST_SUITE_P(Languages, TranslatedMail, testing::ValuesIn(kLanguages),
                         [](const testing::TestParamInfo<Language> &info) { return std::string(info.param.folder); });
