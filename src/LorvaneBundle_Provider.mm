#import "LorvaneBundle_Provider.h"

@implementation LorvaneBundle_Provider
@end
