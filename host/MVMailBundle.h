/*
 * Mail's plug-in base class. A plug-in's class sends +registerBundle while its bundle
 * loads; Mail then makes one instance of it (see MHBundleLoader.h) and keeps it.
 *
 * Class and selector names are Mail's: the plug-in finds them by name at run time.
 */
#import <Foundation/Foundation.h>

@interface MVMailBundle : NSObject
+ (void)registerBundle;
/* Every class registered so far, in order, and the instances made of them. */
+ (NSArray *)registeredBundleClasses;
+ (NSArray *)bundleInstances;
@end

/* The loader's side: keeps an instance it made of a registered class, for as long as Mail runs. */
void MHKeepMailBundleInstance(MVMailBundle *instance);
