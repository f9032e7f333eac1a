#import <AppKit/AppKit.h>

/*
 * Changing classes while Mail runs, and placing items in Mail's menus.
 *
 * Class methods only. Classes and selectors are handled by name, so nothing here links
 * against Mail. Failures are logged with the "SWIZZLE Error - " prefix and answered
 * with nil, NO or NULL; nothing is thrown.
 */
@interface LVBundleUtilities : NSObject

/* A new, registered subclass of superclass carrying the provider's fields and methods. */
+ (Class)subclass:(Class)superclass usingClassName:(NSString *)className providerClass:(Class)providerClass;
+ (void)extendClass:(Class)targetClass withMethodsFromClass:(Class)sourceClass;
+ (BOOL)addClassMethodName:(NSString *)methodName fromProviderClass:(Class)providerClass toClass:(Class)targetClass;
+ (BOOL)addInstanceMethodName:(NSString *)methodName fromProviderClass:(Class)providerClass toClass:(Class)targetClass;
/* Replaces the host method by its "LV" twin; answers the host's previous implementation. */
+ (IMP)swizzleClassMethod:(NSString *)methodName forClass:(Class)hostClass;
+ (IMP)swizzleInstanceMethod:(NSString *)methodName forClass:(Class)hostClass;

/* Insert a new item right after the first match in a pre-order walk of the menu tree. */
+ (NSMenuItem *)newMenuItemWithTitle:(NSString *)title action:(SEL)action andKeyEquivalent:(NSString *)keyEquivalent inMenu:(NSMenu *)menu underItemWithSelector:(SEL)selector;
+ (NSMenuItem *)newMenuItemWithTitle:(NSString *)title action:(SEL)action andKeyEquivalent:(NSString *)keyEquivalent inMenu:(NSMenu *)menu underSubmenuWithTitle:(NSString *)submenuTitle;

@end
