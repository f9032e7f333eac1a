#import <AppKit/AppKit.h>

/*
 * Records the destination of every move or copy the user starts in a viewer.
 * Its +load copies these methods into Mail's MessageTransfer and patches MessageTransfer.
 */
@interface MessageTransfer_LVAdditions : NSObject

+ (void)load;
- (void)LVsetDelegate:(id)delegate;

@end
