#import "MHMessageSummary.h"

@implementation MHMessageSummary

// Header names compare without case, as in mail headers; answers name -> value.
+ (NSDictionary *)headersOfText:(NSString *)text
{
    NSMutableDictionary *headers = [NSMutableDictionary dictionary];
    for (NSString *line in [text componentsSeparatedByString:@"\n"]) {
        NSString *trimmed = [line stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
        if ([trimmed length] == 0)
            break;
        NSRange colon = [trimmed rangeOfString:@":"];
        if (colon.location == NSNotFound)
            continue;
        NSString *name = [[trimmed substringToIndex:colon.location] lowercaseString];
        NSString *value = [[trimmed substringFromIndex:NSMaxRange(colon)] stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceCharacterSet]];
        if ([headers objectForKey:name] == nil)
            [headers setObject:value forKey:name];
    }
    return headers;
}

+ (MHMessageSummary *)summaryOfMessageAtPath:(NSString *)path
{
    NSString *text = [NSString stringWithContentsOfFile:path encoding:NSUTF8StringEncoding error:NULL];
    NSDictionary *headers = [self headersOfText:text != nil ? text : @""];
    MHMessageSummary *summary = [[[self alloc] init] autorelease];
    summary->_path = [path copy];
    summary->_sender = [([headers objectForKey:@"from"] ?: @"") copy];
    summary->_subject = [([headers objectForKey:@"subject"] ?: @"") copy];
    summary->_date = [([headers objectForKey:@"date"] ?: @"") copy];
    return summary;
}

- (void)dealloc
{
    [_path release];
    [_sender release];
    [_subject release];
    [_date release];
    [super dealloc];
}

- (NSString *)path
{
    return _path;
}

- (NSString *)sender
{
    return _sender;
}

- (NSString *)subject
{
    return _subject;
}

- (NSString *)date
{
    return _date;
}

@end
