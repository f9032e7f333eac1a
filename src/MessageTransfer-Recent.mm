#import "MessageTransfer-Recent.h"
#import "LorvaneBundle_Provider.h"
#import "Utilities.h"
#import "MailInterfaces.h"

#include <objc/runtime.h>

// Mail's own -[MessageTransfer setDelegate:], run after the destination is recorded.
static IMP _old_setDelegate_IMP = NULL;

// Key-value coding looks its way to a private field by name on every call: more than the
// rest of the hook costs. Where it would end at that very field (the class keeps NSObject's
// -valueForKey:, allows reading fields directly and has no accessor the lookup prefers),
// the field is read straight away, with the same answer; otherwise key-value coding asks.
static BOOL hasAccessorPreferredToField(Class transferClass)
{
    static const char *const accessors[] = { "get_operations", "_operations", "is_operations", "_get_operations",
        "__operations", "countOf_operations" };
    for (const char *accessor : accessors) {
        if (class_getInstanceMethod(transferClass, sel_registerName(accessor)) != NULL)
            return YES;
    }
    static const char *const preferredFields[] = { "__operations", "_is_operations" };
    for (const char *field : preferredFields) {
        if (class_getInstanceVariable(transferClass, field) != NULL)
            return YES;
    }
    return NO;
}

static Ivar operationsFieldReadDirectly(Class transferClass)
{
    if (class_getMethodImplementation(transferClass, @selector(valueForKey:)) != class_getMethodImplementation([NSObject class], @selector(valueForKey:)))
        return NULL;
    if (![transferClass accessInstanceVariablesDirectly] || hasAccessorPreferredToField(transferClass))
        return NULL;
    Ivar field = class_getInstanceVariable(transferClass, "_operations");
    const char *type = field != NULL ? ivar_getTypeEncoding(field) : NULL;
    return type != NULL && type[0] == '@' ? field : NULL;
}

// Mail's own transfer class, examined once while loading (before any transfer), and its
// field when that may be read directly; subclasses go through key-value coding.
static Class examinedTransferClass = Nil;
static Ivar operationsField = NULL;

static id operationsOfTransfer(id transfer)
{
    if (operationsField != NULL && object_getClass(transfer) == examinedTransferClass)
        return object_getIvar(transfer, operationsField);
    return [transfer valueForKey:@"_operations"];
}

// Where the transfer's last operation goes, or nil when it has none. A function, not a
// method, so that Mail's MessageTransfer gains no selector beyond its hook.
static id<LVMailboxUid> lastDestinationOfTransfer(id transfer)
{
    id<LVTransferOperation> lastOperation = [operationsOfTransfer(transfer) lastObject];
    return [lastOperation destinationMailboxUid];
}

// This run-time looks a class up by its name at every message sent to it; Mail transfers
// often enough that the provider's class is looked up once.
static LorvaneBundle_Provider *activeProvider(void)
{
    static Class providerClass = [LorvaneBundle_Provider class];
    return [providerClass activeLorvaneBundle_Provider];
}

@implementation MessageTransfer_LVAdditions

+ (void)load
{
    Class hostClass = LVExtendMailClass("MessageTransfer", self);
    if (hostClass == Nil)
        return; // no transfers in this Mail: nothing to patch
    _old_setDelegate_IMP = [LVBundleUtilities swizzleInstanceMethod:@"setDelegate:" forClass:hostClass];
    examinedTransferClass = hostClass;
    operationsField = operationsFieldReadDirectly(hostClass);
}

// Runs as MessageTransfer. Mail makes a viewer the delegate of the moves and copies the
// user starts there; transfers Mail runs for itself (and viewers of a more special
// kind) have other delegates and do not count as the user's choice of mailbox.
- (void)LVsetDelegate:(id)delegate
{
    static Class messageViewerClass = Nil;
    if ([delegate isMemberOfClass:LVKeptMailClass(&messageViewerClass, "MessageViewer")]) {
        id<LVMailboxUid> destination = lastDestinationOfTransfer(self);
        if (destination != nil)
            [activeProvider() addOrTouchRecentMailboxFromUid:destination];
    }
    if (_old_setDelegate_IMP != NULL)
        ((void (*)(id, SEL, id))_old_setDelegate_IMP)(self, _cmd, delegate);
}

@end
