#import <Foundation/Foundation.h>

#include <cstdint>

/*
 * Makes the objects of an XML property list read with libxml2, which is fuzzed without end by
 * others and tells well-formed XML from anything else in one call. GNUstep's own XML parser,
 * which raises and rewrites "\U" escapes in every string, never sees what a user typed.
 */
@interface LVXMLPropertyList : NSObject

/* The list's root object, or nil for anything but one well-formed property list within these
   bounds (objects counted keys and values alike). libxml2 stays silent meanwhile. */
+ (id)propertyListWithBytes:(const uint8_t *)bytes length:(size_t)length maximumDepth:(unsigned)depth maximumObjects:(uint64_t)objects;

@end
