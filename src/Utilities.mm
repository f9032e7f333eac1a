#import "Utilities.h"

#include <objc/runtime.h>
#include <cstdlib>
#include <functional>

// A provider field with this prefix stays behind when its class is subclassed.
static NSString *const LVDoNotCopyPrefix = @"DONOTCOPY_";
// A hook method is named after the Mail method it replaces, with this prefix.
static NSString *const LVReplacementPrefix = @"LV";
// Where a host class that lacks its hook method may find it: "<host class>_LVProvider".
static NSString *const LVProviderClassSuffix = @"_LVProvider";

#if defined(__GNU_LIBOBJC__)
// The GNU run-time's own rebuild of a class's dispatch table and its subclasses' tables,
// the one it runs itself when a class gains a method.
extern "C" void __objc_update_dispatch_table_for_class(Class aClass);
#endif

// What a menu-tree search looks for: an item with a given action, or a submenu with a given title.
typedef std::function<BOOL(NSMenuItem *)> LVMenuItemMatch;

@interface LVBundleUtilities (Swizzling)
+ (IMP)swizzleMethod:(NSString *)methodName forClass:(Class)hostClass classSide:(BOOL)classSide;
+ (Method)methodNamed:(SEL)selector inClass:(Class)aClass classSide:(BOOL)classSide;
+ (Method)replacementMethod:(NSString *)replacementName forClass:(Class)hostClass classSide:(BOOL)classSide;
+ (IMP)setImplementation:(IMP)implementation ofMethod:(Method)method foundFrom:(Class)hostClass classSide:(BOOL)classSide;
+ (void)logMissingMethod:(NSString *)methodName forClass:(Class)hostClass classSide:(BOOL)classSide;
@end

// Pre-order: each item is tested before its submenu is searched, so the first match in
// reading order wins, however deep. An item that carries a submenu points its target at
// its own parent menu here, so the walk goes down through the submenu, never the target.
// The caller owns the item answered (+1); the menu holds it too.
static NSMenuItem *newMenuItemBelowFirstMatch(NSString *title, SEL action, NSString *keyEquivalent, NSMenu *menu, const LVMenuItemMatch &matches)
{
    NSArray *items = [menu itemArray];
    NSString *key = keyEquivalent != nil ? keyEquivalent : @"";
    for (NSUInteger i = 0; i < [items count]; i++) {
        NSMenuItem *item = [items objectAtIndex:i];
        if (matches(item)) {
            NSMenuItem *inserted = [[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:key];
            [menu insertItem:inserted atIndex:(NSInteger)(i + 1)];
            return inserted;
        }
        NSMenu *submenu = [item submenu];
        if (submenu == nil)
            continue;
        NSMenuItem *inserted = newMenuItemBelowFirstMatch(title, action, key, submenu, matches);
        if (inserted != nil)
            return inserted;
    }
    return nil;
}

#if defined(__GNU_LIBOBJC__)
// The class (or metaclass) whose own method list holds the method.
static Class classDefiningMethod(Class aClass, Method method)
{
    for (; aClass != Nil; aClass = class_getSuperclass(aClass)) {
        unsigned int count = 0;
        Method *methods = class_copyMethodList(aClass, &count);
        BOOL found = NO;
        for (unsigned int i = 0; i < count && !found; i++)
            found = methods[i] == method;
        free(methods);
        if (found)
            return aClass;
    }
    return Nil;
}
#endif

@implementation LVBundleUtilities

+ (Class)subclass:(Class)superclass usingClassName:(NSString *)className providerClass:(Class)providerClass
{
    Class subclass = objc_allocateClassPair(superclass, [className UTF8String], 0);
    if (subclass == Nil)
        return nil; // the name is taken: that class is someone else's, leave it alone

    unsigned int ivarCount = 0;
    Ivar *ivars = class_copyIvarList(providerClass, &ivarCount);
    for (unsigned int i = 0; i < ivarCount; i++) {
        const char *name = ivar_getName(ivars[i]);
        const char *type = ivar_getTypeEncoding(ivars[i]);
        if ([[NSString stringWithUTF8String:name] hasPrefix:LVDoNotCopyPrefix])
            continue;
        NSUInteger size = 0;
        NSUInteger alignment = 0;
        NSGetSizeAndAlignment(type, &size, &alignment);
        // The alignment goes in as bytes, not as its log2, so fields are spread wider than
        // they need. Harmless: the copied methods keep the provider's own field offsets.
        if (!class_addIvar(subclass, name, size, (unsigned char)(alignment & 0xFF), type)) {
            NSLog(@"could not add iVar %s", name);
            return nil; // the half-made class is never registered, so nothing can use it
        }
    }
    free(ivars);

    objc_registerClassPair(subclass);
    [self extendClass:subclass withMethodsFromClass:providerClass];
    return subclass;
}

+ (void)extendClass:(Class)targetClass withMethodsFromClass:(Class)sourceClass
{
    unsigned int count = 0;
    Method *instanceMethods = class_copyMethodList(sourceClass, &count);
    if (instanceMethods != NULL) {
        for (unsigned int i = count; i > 0; i--) {
            NSString *name = NSStringFromSelector(method_getName(instanceMethods[i - 1]));
            [self addInstanceMethodName:name fromProviderClass:sourceClass toClass:targetClass];
        }
    }
    free(instanceMethods);

    count = 0;
    Method *classMethods = class_copyMethodList(object_getClass(sourceClass), &count);
    if (classMethods != NULL) {
        for (unsigned int i = count; i > 0; i--) {
            NSString *name = NSStringFromSelector(method_getName(classMethods[i - 1]));
            [self addClassMethodName:name fromProviderClass:sourceClass toClass:targetClass];
        }
    }
    free(classMethods);
}

+ (BOOL)addClassMethodName:(NSString *)methodName fromProviderClass:(Class)providerClass toClass:(Class)targetClass
{
    Class targetMetaclass = object_getClass(targetClass);
    if (targetMetaclass == Nil)
        return NO;
    Method method = class_getClassMethod(providerClass, NSSelectorFromString(methodName));
    if (method == NULL)
        return NO;
    IMP implementation = method_getImplementation(method);
    if (implementation == NULL)
        return NO;
    // A class that defines the method itself keeps its own; that still counts as done.
    class_addMethod(targetMetaclass, method_getName(method), implementation, method_getTypeEncoding(method));
    return YES;
}

+ (BOOL)addInstanceMethodName:(NSString *)methodName fromProviderClass:(Class)providerClass toClass:(Class)targetClass
{
    if (targetClass == Nil)
        return NO;
    Method method = class_getInstanceMethod(providerClass, NSSelectorFromString(methodName));
    if (method == NULL)
        return NO;
    IMP implementation = method_getImplementation(method);
    if (implementation == NULL)
        return NO;
    // A class that defines the method itself keeps its own; that still counts as done.
    class_addMethod(targetClass, method_getName(method), implementation, method_getTypeEncoding(method));
    return YES;
}

+ (IMP)swizzleClassMethod:(NSString *)methodName forClass:(Class)hostClass
{
    return [self swizzleMethod:methodName forClass:hostClass classSide:YES];
}

+ (IMP)swizzleInstanceMethod:(NSString *)methodName forClass:(Class)hostClass
{
    return [self swizzleMethod:methodName forClass:hostClass classSide:NO];
}

+ (NSMenuItem *)newMenuItemWithTitle:(NSString *)title action:(SEL)action andKeyEquivalent:(NSString *)keyEquivalent inMenu:(NSMenu *)menu underItemWithSelector:(SEL)selector
{
    return newMenuItemBelowFirstMatch(title, action, keyEquivalent, menu, [selector](NSMenuItem *item) -> BOOL {
        SEL itemAction = [item action];
        // Selectors are compared as the run-time identifies them: typed and untyped
        // copies of one name are different pointers here.
        return itemAction != NULL && selector != NULL && sel_isEqual(itemAction, selector);
    });
}

+ (NSMenuItem *)newMenuItemWithTitle:(NSString *)title action:(SEL)action andKeyEquivalent:(NSString *)keyEquivalent inMenu:(NSMenu *)menu underSubmenuWithTitle:(NSString *)submenuTitle
{
    return newMenuItemBelowFirstMatch(title, action, keyEquivalent, menu, [submenuTitle](NSMenuItem *item) -> BOOL {
        return [item hasSubmenu] && [[item title] isEqualToString:submenuTitle];
    });
}

@end

@implementation LVBundleUtilities (Swizzling)

// Both kinds of swizzle are one operation: class methods are the metaclass's instance methods.
+ (IMP)swizzleMethod:(NSString *)methodName forClass:(Class)hostClass classSide:(BOOL)classSide
{
    Method hostMethod = [self methodNamed:NSSelectorFromString(methodName) inClass:hostClass classSide:classSide];
    if (hostMethod == NULL) {
        [self logMissingMethod:methodName forClass:hostClass classSide:classSide];
        return NULL;
    }
    NSString *replacementName = [LVReplacementPrefix stringByAppendingString:methodName];
    Method replacement = [self replacementMethod:replacementName forClass:hostClass classSide:classSide];
    if (replacement == NULL) {
        [self logMissingMethod:methodName forClass:hostClass classSide:classSide];
        return NULL;
    }
    // Set where the method is defined: an inherited method changes for every class that inherits it.
    return [self setImplementation:method_getImplementation(replacement) ofMethod:hostMethod foundFrom:hostClass classSide:classSide];
}

+ (Method)methodNamed:(SEL)selector inClass:(Class)aClass classSide:(BOOL)classSide
{
    return classSide ? class_getClassMethod(aClass, selector) : class_getInstanceMethod(aClass, selector);
}

// The host's own hook method, or one fetched from "<host>_LVProvider" when the host lacks it.
+ (Method)replacementMethod:(NSString *)replacementName forClass:(Class)hostClass classSide:(BOOL)classSide
{
    SEL replacementSelector = NSSelectorFromString(replacementName);
    Method replacement = [self methodNamed:replacementSelector inClass:hostClass classSide:classSide];
    if (replacement != NULL)
        return replacement;
    Class providerClass = NSClassFromString([NSStringFromClass(hostClass) stringByAppendingString:LVProviderClassSuffix]);
    if (providerClass == Nil)
        return NULL;
    if (classSide)
        [self addClassMethodName:replacementName fromProviderClass:providerClass toClass:hostClass];
    else
        [self addInstanceMethodName:replacementName fromProviderClass:providerClass toClass:hostClass];
    return [self methodNamed:replacementSelector inClass:hostClass classSide:classSide];
}

#if defined(__GNU_LIBOBJC__)
// The GNU run-time needs help on both sides of the change. A class that has not yet
// received an instance message shares one placeholder dispatch table with all such
// classes; the change would be written into the placeholder, and their methods of the
// same name would run this implementation. So the defining class gets its own table
// first (asking it for any implementation does that). And each subclass keeps its own
// copy of the table, so one with methods of its own could go on running the old
// implementation; so the tables from the defining class down are rebuilt afterwards,
// as Apple's run-time does by itself.
+ (IMP)setImplementation:(IMP)implementation ofMethod:(Method)method foundFrom:(Class)hostClass classSide:(BOOL)classSide
{
    Class definingClass = classDefiningMethod(classSide ? object_getClass(hostClass) : hostClass, method);
    if (definingClass == Nil)
        return method_setImplementation(method, implementation);
    class_getMethodImplementation(definingClass, @selector(class));
    IMP previous = method_setImplementation(method, implementation);
    __objc_update_dispatch_table_for_class(definingClass);
    return previous;
}
#else
+ (IMP)setImplementation:(IMP)implementation ofMethod:(Method)method foundFrom:(Class)hostClass classSide:(BOOL)classSide
{
    (void)hostClass;
    (void)classSide;
    return method_setImplementation(method, implementation);
}
#endif

// Names the host selector whichever of the two methods was missing.
+ (void)logMissingMethod:(NSString *)methodName forClass:(Class)hostClass classSide:(BOOL)classSide
{
    if (classSide)
        NSLog(@"SWIZZLE Error - Can't find existing method for +[%@ %@]", NSStringFromClass(hostClass), methodName);
    else
        NSLog(@"SWIZZLE Error - Can't find existing method for -[%@ %@]", NSStringFromClass(hostClass), methodName);
}

@end
