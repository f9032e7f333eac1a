#import "MVMailBundle.h"

static NSMutableArray *registeredClasses;
static NSMutableArray *instances;

@implementation MVMailBundle

+ (void)registerBundle
{
    if (registeredClasses == nil)
        registeredClasses = [[NSMutableArray alloc] init];
    if (![registeredClasses containsObject:self])
        [registeredClasses addObject:self];
}

+ (NSArray *)registeredBundleClasses
{
    return registeredClasses != nil ? registeredClasses : @[];
}

+ (NSArray *)bundleInstances
{
    return instances != nil ? instances : @[];
}

@end

void MHKeepMailBundleInstance(MVMailBundle *instance)
{
    if (instance == nil)
        return;
    if (instances == nil)
        instances = [[NSMutableArray alloc] init];
    [instances addObject:instance];
}
