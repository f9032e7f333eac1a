#import "AccountPreferences-Recent.h"

@implementation AccountPreferences_MFAdditions
@end
