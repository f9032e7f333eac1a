#import <AppKit/AppKit.h>

/*
 * Records the destination of every move or copy the user starts in a viewer.
 * At start-up, +lv_installInMail copies these methods into Mail's MessageTransfer and patches MessageTransfer.
 */
@interface MessageTransfer_LVAdditions : NSObject

+ (void)lv_installInMail;
- (void)LVsetDelegate:(id)delegate;

@end
