#import <Foundation/Foundation.h>

/*
 * Starts Lorvane when Mail loads the bundle. Its +load is the bundle's only one and runs the
 * start-up steps in the order it states: the provider's version gate and Mail's plug-in
 * class first, then Mail's classes patched one by one.
 *
 * The build links this unit after every other source of the bundle, whatever their order.
 * The GNU run-time registers a bundle's classes file by file and calls each file's +load as
 * soon as that file is registered, so only the last file's +load finds every class and
 * category of the bundle in place (a Mac registers the whole bundle before any +load).
 */
@interface LVStartUp : NSObject

+ (void)load;

@end
