#import <Foundation/Foundation.h>
@interface U : NSObject
+ (id)hello;
@end
@implementation U
+ (id)hello { return self; }
@end
