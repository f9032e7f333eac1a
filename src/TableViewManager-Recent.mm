#import "TableViewManager-Recent.h"

@implementation TableViewManager_LVAdditions
@end
