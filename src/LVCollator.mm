#import "LVCollator.h"

#include <string>

// Names are compared by ICU's collation keys where GNUstep has ICU; otherwise (and in the
// build that tests that path) by the locale's -localizedCompare:.
#if defined(GS_USE_ICU) && GS_USE_ICU == 1 && !defined(LORVANE_WITHOUT_COLLATION_KEYS)
#include <unicode/ucol.h>
#define LV_COLLATION_KEYS 1
#endif

@implementation LVCollator

- (void)dealloc
{
#if LV_COLLATION_KEYS
    if (_collator != NULL)
        ucol_close((UCollator *)_collator);
#endif
    [_localeIdentifier release];
    [super dealloc];
}

- (BOOL)followCurrentLocale
{
    NSString *identifier = [[NSLocale currentLocale] localeIdentifier];
    if (_localeIdentifier != nil && [identifier isEqualToString:_localeIdentifier])
        return NO;
    [_localeIdentifier release];
    _localeIdentifier = [identifier copy];
#if LV_COLLATION_KEYS
    if (_collator != NULL)
        ucol_close((UCollator *)_collator);
    UErrorCode status = U_ZERO_ERROR;
    const char *locale = [identifier length] > 0 ? [identifier UTF8String] : NULL;
    UCollator *collator = ucol_open(locale, &status);
    if (!U_SUCCESS(status)) {
        ucol_close(collator);
        collator = nullptr;
    }
    _collator = collator;
#endif
    return YES;
}

- (BOOL)makesKeys
{
    return _collator != NULL;
}

- (NSData *)keyOfString:(NSString *)string
{
#if LV_COLLATION_KEYS
    if (_collator == NULL)
        return nil;
    std::u16string characters(string != nil ? [string length] : 0, u'\0');
    [string getCharacters:(unichar *)characters.data() range:NSMakeRange(0, characters.size())];
    std::string key(64, '\0');
    for (;;) {
        int32_t length = ucol_getSortKey((const UCollator *)_collator, (const UChar *)characters.data(), (int32_t)characters.size(),
            (uint8_t *)&key[0], (int32_t)key.size());
        if (length <= (int32_t)key.size())
            return [NSData dataWithBytes:key.data() length:length > 0 ? (NSUInteger)length - 1 : 0];
        key.resize((size_t)length);
    }
#else
    (void)string;
    return nil;
#endif
}

@end
