/*
 * What the message list shows of one message file: its sender, subject and date, read
 * from the file's header lines ("From: ...", up to the first empty line).
 */
#import <Foundation/Foundation.h>

@interface MHMessageSummary : NSObject
{
    NSString *_path;
    NSString *_sender;
    NSString *_subject;
    NSString *_date;
}

/* Reads the headers of the file; a missing header reads as an empty string, an
   unreadable file as a summary with only its path. */
+ (MHMessageSummary *)summaryOfMessageAtPath:(NSString *)path;

- (NSString *)path;
- (NSString *)sender;
- (NSString *)subject;
- (NSString *)date;

@end
