#import "NSToolbar-Recent.h"

@implementation NSToolbar_LVAdditions
@end
