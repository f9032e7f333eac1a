/*
 * MailHost's command line:
 *
 *   MailHost (--store DIR | --copy-store DIR) [--bundle PATH]... [--scenario FILE]
 *            [--screenshots DIR] [--system-version 0x1068]
 *
 * --copy-store opens a fresh copy of the store in a temporary folder, so a run leaves the
 * original as it was. GNUstep's own "-Name value" arguments (-NSLanguages '(German)',
 * -NSMenuInterfaceStyle ...) are left to GNUstep.
 */
#import <Foundation/Foundation.h>

@interface MHLaunchOptions : NSObject
{
    NSString *_storePath;
    BOOL _copiesStore;
    NSMutableArray *_bundlePaths;   // absolute
    NSString *_scenarioPath;
    NSString *_screenshotFolder;
    int _systemVersion;             // 0 when not given
}

/* The options of an argument list whose first entry is the program; nil with *problem
   set when they are wrong. Relative paths are taken from the current folder. */
+ (MHLaunchOptions *)optionsWithArguments:(NSArray *)arguments error:(NSString **)problem;
+ (NSString *)usage;

- (NSString *)storePath;
- (BOOL)copiesStore;
- (NSArray *)bundlePaths;
- (NSString *)scenarioPath;
- (NSString *)screenshotFolder;
- (int)systemVersion;

@end
