#import <Foundation/Foundation.h>

/*
 * Collation keys for the user's current locale. They are made with the collator the
 * platform's -localizedCompare: opens for that locale, so that comparing two keys byte by byte
 * answers what comparing the two strings would.
 *
 * This class exists so that a name is collated once, when it is first seen, rather than at
 * every comparison. Where the platform has no such collator, it makes no keys and strings are
 * compared with -localizedCompare: itself.
 */
@interface LVCollator : NSObject
{
    NSString *_localeIdentifier; // the locale the collator was opened for; nil before the first
    void *_collator;             // owned: the open ICU collator, or NULL
}

/* Opens the collator for the current locale unless it is open already. Answers YES when it
   opened one: keys made before are then stale. */
- (BOOL)followCurrentLocale;

/* YES while a collator is open and -keyOfString: makes keys. */
- (BOOL)makesKeys;

/* The string's collation key, without its final 0; nil when no collator is open, and the
   empty string's key for nil. */
- (NSData *)keyOfString:(NSString *)string;

@end
