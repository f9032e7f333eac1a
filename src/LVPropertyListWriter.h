#import <Foundation/Foundation.h>

/*
 * Writes property lists as XML, the form a Mac writes its preferences in.
 *
 * Written here rather than by GNUstep's serialiser, which spells characters beyond the Basic
 * Multilingual Plane (emoji) as "\U" escapes of its own: other readers keep them as text and
 * GNUstep itself reads them back wrong, so a mailbox named with an emoji would be gone at the
 * next start. Plain UTF-8 XML reads back the same everywhere.
 */
@interface LVPropertyListWriter : NSObject

/* The list as UTF-8 XML; it may hold dictionaries (keys in sorted order), arrays, strings,
   and integer or boolean numbers. */
+ (NSData *)XMLDataWithPropertyList:(id)plist;

@end
