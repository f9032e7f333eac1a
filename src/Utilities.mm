#import "Utilities.h"

@implementation LVBundleUtilities
@end
