#import "MessageTransfer-Recent.h"

@implementation MessageTransfer_LVAdditions
@end
