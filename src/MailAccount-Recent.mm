#import "MailAccount-Recent.h"

@implementation MailAccount_LVAdditions
@end
