#import "LVXMLPropertyList.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <array>
#include <memory>
#include <vector>

namespace {

// One document's reading: how deep it may nest and how many objects it may hold, keys and
// values alike, and how many it has made so far.
struct Reading {
    unsigned maximumDepth;
    uint64_t maximumObjects;
    uint64_t objects;
};

// libxml2 reports some faults (a bad encoding among them) whatever the options say, and inside
// Mail they would reach the user's console: silenced for one document, then put back as found.
struct QuietLibxml {
    xmlStructuredErrorFunc handler = xmlStructuredError;
    void *context = xmlStructuredErrorContext;

    static void ignore(void *, xmlErrorPtr) { }

    QuietLibxml()
    {
        xmlSetStructuredErrorFunc(nullptr, ignore);
    }
    ~QuietLibxml()
    {
        xmlSetStructuredErrorFunc(context, handler);
    }
};

bool named(xmlNodePtr node, const char *name)
{
    return xmlStrcmp(node->name, (const xmlChar *)name) == 0;
}

// The node's elements in order; NO when anything but elements, comments and white space is in it.
bool elementsOf(xmlNodePtr node, std::vector<xmlNodePtr> &elements)
{
    for (xmlNodePtr child = node->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE)
            elements.push_back(child);
        else if (child->type == XML_TEXT_NODE && !xmlIsBlankNode(child))
            return false;
        else if (child->type != XML_TEXT_NODE && child->type != XML_COMMENT_NODE)
            return false;
    }
    return true;
}

// The text of a leaf element; nil when it holds anything but text.
NSString *textOf(xmlNodePtr node)
{
    NSMutableString *text = [NSMutableString string];
    for (xmlNodePtr child = node->children; child != nullptr; child = child->next) {
        if (child->type != XML_TEXT_NODE && child->type != XML_CDATA_SECTION_NODE && child->type != XML_COMMENT_NODE)
            return nil;
        if (child->type != XML_COMMENT_NODE && child->content != nullptr)
            [text appendString:[NSString stringWithUTF8String:(const char *)child->content] ?: @""];
    }
    return text;
}

// Numbers read as GNUstep's XML parser reads them: leading digits, the rest ignored.
NSNumber *integerOf(NSString *text)
{
    NSString *trimmed = [text stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
    if ([trimmed hasPrefix:@"-"])
        return [NSNumber numberWithLongLong:[trimmed longLongValue]];
    return [NSNumber numberWithUnsignedLongLong:(unsigned long long)[trimmed longLongValue]];
}

NSDate *dateOf(NSString *text)
{
    NSString *format = [text length] == 20 && [text hasSuffix:@"Z"] ? @"%Y-%m-%dT%H:%M:%SZ" : @"%Y-%m-%d %H:%M:%S %z";
    return [NSCalendarDate dateWithString:text calendarFormat:format];
}

// Base64 as property lists hold it: white space and any other character outside the alphabet
// skipped, padding ending the data, a last group of two or three characters giving one or two
// bytes. GNUstep's own decoder raises on some damaged text.
NSData *dataOf(NSString *text)
{
    static const std::array<int8_t, 256> values = [] {
        std::array<int8_t, 256> table;
        table.fill(-1);
        const char *alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
        for (int8_t value = 0; value < 64; value++)
            table[(uint8_t)alphabet[value]] = value;
        return table;
    }();
    NSMutableData *data = [NSMutableData dataWithCapacity:[text length] * 3 / 4];
    uint32_t group = 0;
    int count = 0;
    for (const char *c = [text UTF8String]; *c != '\0' && *c != '='; c++) {
        int8_t value = values[(uint8_t)*c];
        if (value < 0)
            continue;
        group = (group << 6) | (uint32_t)value;
        if (++count == 4) {
            uint8_t bytes[3] = { (uint8_t)(group >> 16), (uint8_t)(group >> 8), (uint8_t)group };
            [data appendBytes:bytes length:3];
            group = 0;
            count = 0;
        }
    }
    if (count >= 2) {
        group <<= 6 * (4 - count);
        uint8_t bytes[2] = { (uint8_t)(group >> 16), (uint8_t)(group >> 8) };
        [data appendBytes:bytes length:(NSUInteger)count - 1];
    }
    return data;
}

id objectOf(xmlNodePtr node, unsigned depth, Reading &reading);

NSDictionary *dictionaryOf(const std::vector<xmlNodePtr> &elements, unsigned depth, Reading &reading)
{
    if (elements.size() % 2 != 0)
        return nil;
    NSMutableDictionary *dictionary = [NSMutableDictionary dictionaryWithCapacity:elements.size() / 2];
    for (size_t i = 0; i < elements.size(); i += 2) {
        NSString *key = named(elements[i], "key") ? textOf(elements[i]) : nil;
        id value = key != nil ? objectOf(elements[i + 1], depth + 1, reading) : nil;
        if (value == nil)
            return nil;
        [dictionary setObject:value forKey:key];
    }
    return dictionary;
}

NSArray *arrayOf(const std::vector<xmlNodePtr> &elements, unsigned depth, Reading &reading)
{
    NSMutableArray *array = [NSMutableArray arrayWithCapacity:elements.size()];
    for (xmlNodePtr element : elements) {
        id value = objectOf(element, depth + 1, reading);
        if (value == nil)
            return nil;
        [array addObject:value];
    }
    return array;
}

// One object of the list, or nil (and the whole list with it) for anything a property list
// cannot hold. Depth and count are bounded as for binary lists.
id objectOf(xmlNodePtr node, unsigned depth, Reading &reading)
{
    if (depth > reading.maximumDepth || ++reading.objects > reading.maximumObjects)
        return nil;
    if (named(node, "dict") || named(node, "array")) {
        std::vector<xmlNodePtr> elements;
        if (!elementsOf(node, elements))
            return nil;
        return named(node, "dict") ? (id)dictionaryOf(elements, depth, reading) : (id)arrayOf(elements, depth, reading);
    }
    if (named(node, "true") || named(node, "false"))
        return node->children == nullptr ? [NSNumber numberWithBool:named(node, "true")] : nil;
    NSString *text = textOf(node);
    if (text == nil)
        return nil;
    if (named(node, "string"))
        return text;
    if (named(node, "integer"))
        return integerOf(text);
    if (named(node, "real"))
        return [NSNumber numberWithDouble:strtod([text UTF8String], NULL)];
    if (named(node, "date"))
        return dateOf(text);
    if (named(node, "data"))
        return dataOf(text);
    return nil;
}

} // namespace

@implementation LVXMLPropertyList

// A document that declares entities could expand them behind the reader's back; a Mac
// writes none.
+ (id)propertyListWithBytes:(const uint8_t *)bytes length:(size_t)length maximumDepth:(unsigned)depth maximumObjects:(uint64_t)objects
{
    QuietLibxml quiet;
    int options = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;
    std::unique_ptr<xmlDoc, void (*)(xmlDocPtr)> document(xmlReadMemory((const char *)bytes, (int)length, nullptr, nullptr, options), xmlFreeDoc);
    if (document == nullptr)
        return nil;
    xmlDtdPtr doctype = document->intSubset;
    if (doctype != nullptr && (doctype->entities != nullptr || doctype->pentities != nullptr))
        return nil;
    xmlNodePtr root = xmlDocGetRootElement(document.get());
    std::vector<xmlNodePtr> elements;
    if (root == nullptr || !named(root, "plist") || !elementsOf(root, elements) || elements.size() != 1)
        return nil;
    Reading reading = { depth, objects, 0 };
    return objectOf(elements[0], 1, reading);
}

@end
