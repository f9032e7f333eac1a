#import "LVPropertyListWriter.h"

#include <cstring>
#include <vector>

// The text of an element. Markup characters go as character references, and so do control
// characters, which a reader would otherwise drop or fold (a carriage return reads as a line feed).
static NSString *xmlText(NSString *text)
{
    NSUInteger length = [text length];
    std::vector<unichar> characters(length);
    [text getCharacters:characters.data() range:NSMakeRange(0, length)];
    NSMutableString *xml = [NSMutableString stringWithCapacity:length];
    NSUInteger plainFrom = 0;
    for (NSUInteger i = 0; i < length; i++) {
        unichar c = characters[i];
        if (c != '&' && c != '<' && c != '>' && (c >= 0x20 || c == '\t' || c == '\n'))
            continue;
        [xml appendString:[text substringWithRange:NSMakeRange(plainFrom, i - plainFrom)]];
        [xml appendFormat:@"&#%u;", (unsigned)c];
        plainFrom = i + 1;
    }
    [xml appendString:[text substringFromIndex:plainFrom]];
    return xml;
}

// A number made from a BOOL reports the type that every such number reports, on a Mac too,
// where a BOOL's own encoding is not always that type.
static BOOL isBooleanNumber(id value)
{
    return [value isKindOfClass:[NSNumber class]] && strcmp([value objCType], [[NSNumber numberWithBool:YES] objCType]) == 0;
}

static void appendXML(NSMutableString *xml, id value, NSString *indent)
{
    NSString *inner = [indent stringByAppendingString:@"\t"];
    if ([value isKindOfClass:[NSDictionary class]]) {
        [xml appendFormat:@"%@<dict>\n", indent];
        for (NSString *key in [[value allKeys] sortedArrayUsingSelector:@selector(compare:)]) {
            [xml appendFormat:@"%@<key>%@</key>\n", inner, xmlText(key)];
            appendXML(xml, [value objectForKey:key], inner);
        }
        [xml appendFormat:@"%@</dict>\n", indent];
    } else if ([value isKindOfClass:[NSArray class]]) {
        [xml appendFormat:@"%@<array>\n", indent];
        for (id element in value)
            appendXML(xml, element, inner);
        [xml appendFormat:@"%@</array>\n", indent];
    } else if ([value isKindOfClass:[NSString class]]) {
        [xml appendFormat:@"%@<string>%@</string>\n", indent, xmlText(value)];
    } else if (isBooleanNumber(value)) {
        [xml appendFormat:@"%@<%@/>\n", indent, [value boolValue] ? @"true" : @"false"];
    } else {
        [xml appendFormat:@"%@<integer>%lld</integer>\n", indent, [value longLongValue]];
    }
}

@implementation LVPropertyListWriter

+ (NSData *)XMLDataWithPropertyList:(id)plist
{
    NSMutableString *xml = [NSMutableString stringWithString:@"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                                              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                                              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                                              "<plist version=\"1.0\">\n"];
    appendXML(xml, plist, @"");
    [xml appendString:@"</plist>\n"];
    // A text Mail could hold but UTF-8 cannot (half a surrogate pair) loses that character,
    // not the whole file.
    return [xml dataUsingEncoding:NSUTF8StringEncoding allowLossyConversion:YES];
}

@end
