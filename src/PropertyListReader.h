#import <Foundation/Foundation.h>

/*
 * Reads the property-list files Lorvane does not write alone: its preferences, which people
 * edit by hand, and the system's recent-items list.
 *
 * Only the two forms a Mac writes are read, and only within the size and shape such a file
 * has. XML lists are made into objects by LVXMLPropertyList. Binary lists go to the
 * platform's parser, which crashes, loops, allocates without bound or raises on some damaged
 * lists, only when every offset, reference, count and string in them is one it reads.
 * Everything else reads as no file.
 */
@interface LVPropertyListReader : NSObject

/* The file's property list, or nil when the file is missing, refused or unreadable. Never raises. */
+ (id)propertyListWithContentsOfFile:(NSString *)path;
+ (id)propertyListWithData:(NSData *)data;

/* YES when these bytes read as a property list; nil and empty data do not. */
+ (BOOL)admitsData:(NSData *)data;

/* The most bytes a file may hold to be read at all. */
+ (NSUInteger)maximumLength;

@end
