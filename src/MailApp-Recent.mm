#import "MailApp-Recent.h"

@implementation MailApp_LVAdditions
@end
