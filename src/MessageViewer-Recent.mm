#import "MessageViewer-Recent.h"

@implementation MessageViewer_LVAdditions
@end
