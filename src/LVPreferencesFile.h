#import <Foundation/Foundation.h>

/* Identifies the plug-in's bundle and names its preferences file. */
extern NSString *const LVBundleIdentifier;

/* The Library folder of the user's domain, where both files Lorvane reads live; nil when the
   platform names none. */
NSString *LVUserLibraryFolder(void);

/*
 * The plug-in's preferences file: its two settings and the saved list, an XML property list
 * in the user's Preferences folder named after the bundle identifier.
 *
 * It is read once at start-up and written once when Mail quits; people edit it by hand in
 * between launches, so reading takes what it can: a missing, unreadable or malformed file
 * gives the defaults, a value of the wrong kind is read through its own -intValue or
 * -boolValue where it has one, and settings out of range are clamped. Bytes that did not
 * read are not thrown away: before the first write replaces them they go, as they were found,
 * to "<file>.bak". A write goes to a temporary file, synced, then renamed over the old one,
 * so the file is always either the old one or the whole new one.
 *
 * There is one such file per user; Mail makes one provider, which reads it once and writes it
 * once, so the file is one shared object.
 */
@interface LVPreferencesFile : NSObject
{
    NSData *_unreadBytes;    // the file as read at start-up, when it did not read
    NSDictionary *_contents; // what it held; nil when it held nothing readable
}

+ (LVPreferencesFile *)userPreferencesFile;

/* Rebuilt from the one literal identifier each time, so a renamed bundle keeps its settings. */
- (NSString *)path;

/* Reads the file again; the accessors below answer what it held. */
- (void)read;
/* 0 to 2: anything else reads as 0, the order by name. */
- (int)sortType;
/* YES unless the file says otherwise. */
- (BOOL)excludesSpecialMailboxes;
/* The saved records that name a mailbox, in file order, as records without a mailbox yet,
   with their counts and dates (read as +[NSDate dateWithString:] reads them, nil when that
   does not parse); `paths` receives the full path each one names. */
- (NSArray *)savedRecordsWithPaths:(NSArray **)paths;

/* Replaces the file; NO when it could not be written, the old file then left as it was. */
- (BOOL)writeSortType:(int)sortType excludeSpecialMailboxes:(BOOL)exclude records:(NSArray *)records;

@end
