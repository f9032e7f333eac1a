#import "MHViewerChanges.h"
#import "MHMailboxPaths.h"
#import "MHTransferOperation.h"
#import "MailApp.h"
#import "MessageTransfer.h"
#import "MessageViewer.h"

@implementation MHViewerChanges

- (NSDictionary *)viewerStates
{
    NSMutableDictionary *states = [NSMutableDictionary dictionary];
    for (MessageViewer *viewer in [_application messageViewers]) {
        NSValue *key = [NSValue valueWithNonretainedObject:viewer];
        [states setObject:@[ [NSValue valueWithNonretainedObject:[viewer lastTransfer]], [viewer selectedMailboxes] ] forKey:key];
    }
    return states;
}

- (id)initWithApplication:(MailApp *)application
{
    if (nil == (self = [super init]))
        return nil;
    _application = application;
    _before = [[self viewerStates] retain];
    return self;
}

- (void)dealloc
{
    [_before release];
    [super dealloc];
}

- (NSString *)lineForTransfer:(MessageTransfer *)transfer
{
    NSArray *operations = [transfer operations];
    MHTransferOperation *last = [operations lastObject];
    NSUInteger arrived = [[operations filteredArrayUsingPredicate:[NSPredicate predicateWithFormat:@"resultPath != nil"]] count];
    return [NSString stringWithFormat:@"  %@ %lu of %lu messages to %@", [last deletesOriginal] ? @"moved" : @"copied", (unsigned long)arrived,
                     (unsigned long)[operations count], MHPathOfMailbox([last destinationMailboxUid])];
}

- (NSArray *)linesOfChanges
{
    NSMutableArray *lines = [NSMutableArray array];
    for (MessageViewer *viewer in [_application messageViewers]) {
        NSArray *old = [_before objectForKey:[NSValue valueWithNonretainedObject:viewer]];
        if (old != nil && [[old objectAtIndex:0] nonretainedObjectValue] != [viewer lastTransfer])
            [lines addObject:[self lineForTransfer:[viewer lastTransfer]]];
        if (old != nil && ![[old objectAtIndex:1] isEqualToArray:[viewer selectedMailboxes]])
            [lines addObject:[NSString stringWithFormat:@"  viewer shows %@", [[[viewer selectedMailboxes] valueForKey:@"displayName"] componentsJoinedByString:@", "]]];
    }
    return lines;
}

@end
