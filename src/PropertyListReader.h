#import <Foundation/Foundation.h>

/*
 * Reads the property-list files Lorvane does not write alone: its preferences, which people
 * edit by hand, and the system's recent-items list.
 *
 * The platform's parser crashes, loops or allocates without bound on some damaged files, so
 * it is only ever given the two forms a Mac writes (XML and binary lists), and only when
 * their size and shape stay within what such a file holds. Everything else reads as no file.
 */
@interface LVPropertyListReader : NSObject

/* The file's property list, or nil when the file is missing, refused or unparsable. Never raises. */
+ (id)propertyListWithContentsOfFile:(NSString *)path;

/* YES when the parser may be given these bytes; nil and empty data are refused. */
+ (BOOL)admitsData:(NSData *)data;

/* The most bytes a file may hold to be read at all. */
+ (NSUInteger)maximumLength;

@end
