/*
 * What the bundle does to Mail's classes as it loads: the system-version gate and its alert,
 * the class Mail registers and the singleton every hook asks for; and the run-time utilities
 * behind them, on classes of this file's own: a subclass carrying another class's fields and
 * methods, methods copied, a method replaced by its "LV" twin, and a menu item placed below
 * another.
 *
 * Each test changes classes no other test uses; the bootstrap tests load the plug-in themselves
 * and so need a process of their own, as CTest runs every test.
 */
#import "LVLorvane.h"
#import "MHBundleLoader.h"
#import "MHSystemVersion.h"
#import "MVMailBundle.h"
#import "Utilities.h"

#include <objc/runtime.h>

#include <initializer_list>
#include <string>
#include <vector>

// What the tests' classes answer, so a test can tell whose code ran.
static NSString *const BaseAnswer = @"base";
static NSString *const ChildAnswer = @"child";
static NSString *const ProviderAnswer = @"provider";
static NSString *const HookAnswer = @"hook";

// Every selector the classes below answer, declared once so any receiver may be sent them.
@interface NSObject (RPAnswers)
+ (NSString *)kind;
- (NSString *)greeting;
+ (NSString *)providerOnlyClassMethod;
- (NSString *)providerOnly;
+ (NSString *)classDescribe;
- (NSString *)describe;
@end

/* ---- Subclassing ---- */

@interface RPFieldProvider : NSObject
{
    id _first;
    int DONOTCOPY_scratch;
    int _second;
    double _third;
    char _fourth;
}
+ (NSString *)providerKind;
- (void)setFirst:(id)first second:(int)second third:(double)third;
- (NSString *)summary;
@end

static NSMutableArray *initializedClassNames;

@implementation RPFieldProvider
+ (void)initialize
{
    if (initializedClassNames == nil)
        initializedClassNames = [[NSMutableArray alloc] init];
    [initializedClassNames addObject:NSStringFromClass(self)];
}
+ (NSString *)providerKind { return ProviderAnswer; }
- (void)setFirst:(id)first second:(int)second third:(double)third
{
    _first = first;
    _second = second;
    _third = third;
    _fourth = 'x';
}
- (NSString *)summary { return [NSString stringWithFormat:@"%@ %d %.1f %c", _first, _second, _third, _fourth]; }
@end

@interface RPSubclassBase : NSObject
@end
@implementation RPSubclassBase
@end

// A field of no size is one the run-time refuses to add.
@interface RPUnaddableFieldProvider : NSObject
{
    int _fine;
    char _empty[0];
}
@end
@implementation RPUnaddableFieldProvider
@end

/* ---- Copying methods ---- */

@interface RPCopyBase : NSObject
@end
@implementation RPCopyBase
+ (NSString *)kind { return BaseAnswer; }
- (NSString *)greeting { return BaseAnswer; }
@end

// What the run-time made classes below define themselves.
@interface RPChildMethods : NSObject
@end
@implementation RPChildMethods
+ (NSString *)kind { return ChildAnswer; }
- (NSString *)greeting { return ChildAnswer; }
@end

@interface RPCopyProvider : NSObject
@end
@implementation RPCopyProvider
+ (NSString *)kind { return ProviderAnswer; }
+ (NSString *)providerOnlyClassMethod { return ProviderAnswer; }
- (NSString *)greeting { return ProviderAnswer; }
- (NSString *)providerOnly { return ProviderAnswer; }
@end

/* ---- Swizzling ---- */

// The methods of the classes the swizzling rows make. The one replaced stands between others
// of its class, and the classes below it have methods of their own, as Mail's have.
@interface RPPatchedMethods : NSObject
@end
@implementation RPPatchedMethods
+ (NSString *)kind { return BaseAnswer; }
+ (NSString *)classDescribe { return BaseAnswer; }
+ (NSString *)providerOnlyClassMethod { return BaseAnswer; }
- (NSString *)greeting { return BaseAnswer; }
- (NSString *)describe { return BaseAnswer; }
- (NSString *)providerOnly { return BaseAnswer; }
@end
@interface RPHookMethods : NSObject
@end
@implementation RPHookMethods
+ (NSString *)LVclassDescribe { return HookAnswer; }
- (NSString *)LVdescribe { return HookAnswer; }
@end

// Has the methods to replace but no "LV" twins; the run-time made RPSwizzleFromProvider
// defines them too, and its hooks come from the class named after it with "_LVProvider".
@interface RPSwizzleNoHook : NSObject
@end
@implementation RPSwizzleNoHook
+ (NSString *)classDescribe { return BaseAnswer; }
- (NSString *)describe { return BaseAnswer; }
@end

@interface RPSwizzleFromProvider_LVProvider : NSObject
@end
@implementation RPSwizzleFromProvider_LVProvider
+ (NSString *)LVclassDescribe { return HookAnswer; }
- (NSString *)LVdescribe { return HookAnswer; }
@end

// Its "_LVProvider" class exists but does not have the hook either.
@interface RPSwizzleEmptyProvider : NSObject
@end
@implementation RPSwizzleEmptyProvider
- (NSString *)describe { return BaseAnswer; }
@end
@interface RPSwizzleEmptyProvider_LVProvider : NSObject
@end
@implementation RPSwizzleEmptyProvider_LVProvider
@end

typedef NSString *(*LVStringIMP)(id, SEL);

namespace {

std::vector<std::string> ownFieldNames(Class aClass)
{
    std::vector<std::string> names;
    unsigned int count = 0;
    Ivar *ivars = class_copyIvarList(aClass, &count);
    for (unsigned int i = 0; i < count; i++)
        names.push_back(ivar_getName(ivars[i]));
    free(ivars);
    return names;
}

void copyOwnMethods(Class source, Class target)
{
    unsigned int count = 0;
    Method *methods = class_copyMethodList(source, &count);
    for (unsigned int i = 0; i < count; i++)
        class_addMethod(target, method_getName(methods[i]), method_getImplementation(methods[i]), method_getTypeEncoding(methods[i]));
    free(methods);
}

// A class made at run time, defining the methods of the classes given itself, and already
// messaged, as a running Mail has messaged its classes. Tests that copy class methods use
// these: this run-time reads the flags of a compiled metaclass as "under construction" and
// files class methods added to it where no lookup finds them.
Class makeClass(const char *name, Class superclass, std::initializer_list<Class> methodsFrom = {})
{
    Class made = objc_allocateClassPair(superclass, name, 0);
    if (made == Nil)
        return Nil;
    for (Class source : methodsFrom) {
        if (source == Nil)
            continue;
        copyOwnMethods(source, made);
        copyOwnMethods(object_getClass(source), object_getClass(made));
    }
    objc_registerClassPair(made);
    [made class];
    return made;
}

// What a class answers on one side: its class method, or a new instance's method.
NSString *describeOn(Class aClass, BOOL classSide)
{
    return classSide ? [aClass classDescribe] : [[[[aClass alloc] init] autorelease] describe];
}

// The plug-in's utilities, loaded into a running Mail; the log starts empty.
class RuntimePatching : public testing::Test {
protected:
    Class utilities = Nil;

    void SetUp() override
    {
        LVStartMail();
        utilities = LVPluginClass("LVBundleUtilities");
        LVClearLog();
    }
};

} // namespace

TEST_F(RuntimePatching, SubclassCarriesTheProviderFieldsInOrderExceptDoNotCopyOnesAndRunsItsMethodsAndInitialize)
{
    [RPSubclassBase class];
    [RPFieldProvider class];
    Class made = [utilities subclass:[RPSubclassBase class] usingClassName:@"RPMadeWithFields" providerClass:[RPFieldProvider class]];

    ASSERT_TRUE(made != Nil);
    EXPECT_EQ(made, NSClassFromString(@"RPMadeWithFields"));
    EXPECT_EQ([RPSubclassBase class], class_getSuperclass(made));
    const std::vector<std::string> expected = { "_first", "_second", "_third", "_fourth" };
    EXPECT_EQ(expected, ownFieldNames(made));

    // Observed through methods only: the copied code keeps the provider's field offsets.
    EXPECT_NSEQ(ProviderAnswer, [made providerKind]);
    id instance = [[made alloc] init];
    [instance setFirst:@"one" second:2 third:3.5];
    EXPECT_NSEQ(@"one 2 3.5 x", [instance summary]);
    [instance release];
    // The provider's +initialize ran once for itself and once, as a copy, for the subclass.
    NSCountedSet *initialized = [NSCountedSet setWithArray:initializedClassNames];
    EXPECT_EQ(1u, [initialized countForObject:@"RPFieldProvider"]);
    EXPECT_EQ(1u, [initialized countForObject:@"RPMadeWithFields"]);
    EXPECT_EQ(0u, [LVLoggedLines() count]);
}

TEST_F(RuntimePatching, SubclassingFailsSilentlyUnderATakenNameAndWithALogLineAtAFieldTheRuntimeRefuses)
{
    EXPECT_TRUE([utilities subclass:[NSObject class] usingClassName:@"RPSubclassBase" providerClass:[RPFieldProvider class]] == Nil);
    EXPECT_EQ([RPSubclassBase superclass], [NSObject class]);
    EXPECT_EQ(0u, [LVLoggedLines() count]);

    Class made = [utilities subclass:[RPSubclassBase class] usingClassName:@"RPMadeHalfway" providerClass:[RPUnaddableFieldProvider class]];
    EXPECT_TRUE(made == Nil);
    EXPECT_TRUE(NSClassFromString(@"RPMadeHalfway") == Nil);
    EXPECT_EQ(1u, LVLogCount(@"could not add iVar _empty"));
    EXPECT_EQ(1u, [LVLoggedLines() count]);
}

TEST_F(RuntimePatching, CopyingAMethodKeepsTheTargetsOwnAndOverridesAnInheritedOneInTheTargetOnly)
{
    Class child = makeClass("RPCopyChild", [RPCopyBase class], { [RPChildMethods class] });
    Class sibling = makeClass("RPCopySibling", [RPCopyBase class]);
    for (Class target : { child, sibling }) {
        EXPECT_TRUE([utilities addInstanceMethodName:@"greeting" fromProviderClass:[RPCopyProvider class] toClass:target]);
        EXPECT_TRUE([utilities addClassMethodName:@"kind" fromProviderClass:[RPCopyProvider class] toClass:target]);
        NSString *expected = target == child ? ChildAnswer : ProviderAnswer;
        EXPECT_NSEQ(expected, [[[[target alloc] init] autorelease] greeting]);
        EXPECT_NSEQ(expected, [target kind]);
    }
    EXPECT_NSEQ(BaseAnswer, [[[[RPCopyBase alloc] init] autorelease] greeting]);
    EXPECT_NSEQ(BaseAnswer, [RPCopyBase kind]);
}

TEST_F(RuntimePatching, CopyingAMethodAnswersNoWhenThereIsNothingToCopyOrNowhereToPutIt)
{
    Class target = makeClass("RPCopyTarget", [RPCopyBase class]);
    ASSERT_TRUE(target != Nil);
    struct Row {
        const char *name;
        BOOL instanceSide;
        NSString *method;
        Class target;
        BOOL expected;
    };
    const Row rows[] = {
        { "instance method to a class", YES, @"providerOnly", target, YES },
        { "class method to a class", NO, @"providerOnlyClassMethod", target, YES },
        { "instance method the provider lacks", YES, @"noSuchMethod", target, NO },
        { "class method the provider lacks", NO, @"noSuchMethod", target, NO },
        { "a class method is not an instance method", YES, @"providerOnlyClassMethod", target, NO },
        { "instance method to no class", YES, @"providerOnly", Nil, NO },
        { "class method to no class", NO, @"providerOnlyClassMethod", Nil, NO },
    };
    for (const Row &row : rows) {
        BOOL added = row.instanceSide ? [utilities addInstanceMethodName:row.method fromProviderClass:[RPCopyProvider class] toClass:row.target]
                                      : [utilities addClassMethodName:row.method fromProviderClass:[RPCopyProvider class] toClass:row.target];
        EXPECT_EQ(row.expected, added) << row.name;
    }
    EXPECT_NSEQ(ProviderAnswer, [[[[target alloc] init] autorelease] providerOnly]);
    EXPECT_NSEQ(ProviderAnswer, [target providerOnlyClassMethod]);
    EXPECT_FALSE([[[[target alloc] init] autorelease] respondsToSelector:@selector(providerOnlyClassMethod)]);
    EXPECT_EQ(0u, [LVLoggedLines() count]);
}

// On both sides: a method the host defines, not first of its class's list, and one it inherits,
// which is replaced where it is defined. Classes below it with methods of their own have run
// it before, as Mail's have by the time a bundle loads.
TEST_F(RuntimePatching, SwizzlingReplacesAMethodWhereItIsDefinedForEveryClassThatRunsItAndHandsBackWhatRanBefore)
{
    struct Row {
        const char *name;
        BOOL classSide, inherited;
    } rows[] = {
        { "instance method of the host's own", NO, NO },
        { "instance method the host inherits", NO, YES },
        { "class method of the host's own", YES, NO },
        { "class method the host inherits", YES, YES },
    };
    for (const Row &row : rows) {
        std::string name = "RPSwizzle" + std::to_string(&row - rows);
        Class base = makeClass((name + "Base").c_str(), [NSObject class], { [RPPatchedMethods class], row.inherited ? Nil : [RPHookMethods class] });
        Class host = row.inherited ? makeClass((name + "Host").c_str(), base, { [RPHookMethods class], [RPChildMethods class] }) : base;
        Class below = makeClass((name + "Below").c_str(), host, { [RPChildMethods class] });
        Class sibling = makeClass((name + "Sibling").c_str(), base, { [RPChildMethods class] });
        for (Class ran : { base, host, below, sibling })
            EXPECT_NSEQ(BaseAnswer, describeOn(ran, row.classSide)) << row.name;

        IMP previous = row.classSide ? [utilities swizzleClassMethod:@"classDescribe" forClass:host] : [utilities swizzleInstanceMethod:@"describe" forClass:host];
        ASSERT_TRUE(previous != NULL) << row.name;
        EXPECT_NSEQ(BaseAnswer, ((LVStringIMP)previous)(host, @selector(describe))) << row.name;
        for (Class patched : { base, host, below, sibling })
            EXPECT_NSEQ(HookAnswer, describeOn(patched, row.classSide)) << row.name << ", " << class_getName(patched);
        EXPECT_NSEQ(BaseAnswer, row.classSide ? [below providerOnlyClassMethod] : [[[[below alloc] init] autorelease] providerOnly]) << row.name;
        EXPECT_EQ(0u, [LVLoggedLines() count]) << row.name;
    }
    // A second time hands back the replacement the first one installed.
    Class twice = NSClassFromString(@"RPSwizzle0Base");
    IMP hook = method_getImplementation(class_getInstanceMethod(twice, @selector(LVdescribe)));
    EXPECT_EQ(hook, [utilities swizzleInstanceMethod:@"describe" forClass:twice]);
}

TEST_F(RuntimePatching, SwizzlingTakesAMissingHookFromTheClassNamedWithTheProviderSuffix)
{
    Class host = makeClass("RPSwizzleFromProvider", [NSObject class], { [RPSwizzleNoHook class] });
    ASSERT_TRUE(host != Nil);
    IMP previous = [utilities swizzleInstanceMethod:@"describe" forClass:host];
    IMP previousClass = [utilities swizzleClassMethod:@"classDescribe" forClass:host];

    EXPECT_TRUE(previous != NULL);
    EXPECT_TRUE(previousClass != NULL);
    EXPECT_NSEQ(HookAnswer, [[[[host alloc] init] autorelease] describe]);
    EXPECT_NSEQ(HookAnswer, [host classDescribe]);
    EXPECT_EQ(0u, [LVLoggedLines() count]);
}

TEST_F(RuntimePatching, SwizzlingWithSomethingMissingLogsTheHostSelectorAndChangesNothing)
{
    struct Row {
        const char *name;
        BOOL instanceSide;
        NSString *method;
        Class host;
        NSString *expectedLine;
    };
    const Row rows[] = {
        { "host instance method missing", YES, @"noSuchMethod", [RPSwizzleNoHook class],
          @"SWIZZLE Error - Can't find existing method for -[RPSwizzleNoHook noSuchMethod]" },
        { "host class method missing", NO, @"noSuchMethod", [RPSwizzleNoHook class],
          @"SWIZZLE Error - Can't find existing method for +[RPSwizzleNoHook noSuchMethod]" },
        { "instance hook missing and no provider class", YES, @"describe", [RPSwizzleNoHook class],
          @"SWIZZLE Error - Can't find existing method for -[RPSwizzleNoHook describe]" },
        { "class hook missing and no provider class", NO, @"classDescribe", [RPSwizzleNoHook class],
          @"SWIZZLE Error - Can't find existing method for +[RPSwizzleNoHook classDescribe]" },
        { "hook missing from the provider class too", YES, @"describe", [RPSwizzleEmptyProvider class],
          @"SWIZZLE Error - Can't find existing method for -[RPSwizzleEmptyProvider describe]" },
    };
    for (const Row &row : rows) {
        LVClearLog();
        IMP previous = row.instanceSide ? [utilities swizzleInstanceMethod:row.method forClass:row.host]
                                        : [utilities swizzleClassMethod:row.method forClass:row.host];
        EXPECT_TRUE(previous == NULL) << row.name;
        EXPECT_EQ(1u, LVLogCount(row.expectedLine)) << row.name;
        EXPECT_EQ(1u, [LVLoggedLines() count]) << row.name;
    }
    EXPECT_NSEQ(BaseAnswer, [[[[RPSwizzleNoHook alloc] init] autorelease] describe]);
    EXPECT_NSEQ(BaseAnswer, [RPSwizzleNoHook classDescribe]);
    EXPECT_NSEQ(BaseAnswer, [[[[RPSwizzleEmptyProvider alloc] init] autorelease] describe]);
}

namespace {

NSMenuItem *item(NSString *title, SEL action, NSArray *submenuItems = nil)
{
    NSMenuItem *made = [[[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:@""] autorelease];
    if (submenuItems != nil) {
        NSMenu *submenu = [[[NSMenu alloc] initWithTitle:title] autorelease];
        for (NSMenuItem *child in submenuItems)
            [submenu addItem:child];
        [made setSubmenu:submenu];
    }
    return made;
}

NSMenu *menu(NSString *title, NSArray *items)
{
    return [item(title, NULL, items) submenu];
}

// "<menu title>/<index>" of the first item titled so, in pre-order; "" when there is none.
NSString *placeOf(NSString *title, NSMenu *menu)
{
    for (NSInteger i = 0; i < [menu numberOfItems]; i++) {
        NSMenuItem *entry = (NSMenuItem *)[menu itemAtIndex:i];
        if ([[entry title] isEqualToString:title])
            return [NSString stringWithFormat:@"%@/%ld", [menu title], (long)i];
        NSString *deeper = [entry submenu] != nil ? placeOf(title, [entry submenu]) : @"";
        if ([deeper length] > 0)
            return deeper;
    }
    return @"";
}

} // namespace

TEST_F(RuntimePatching, AMenuItemGoesRightBelowTheFirstMatchInPreOrderAsASiblingWithoutTarget)
{
    SEL move = @selector(moveMessagesToMailbox:);
    struct Row {
        const char *name;
        NSMenu *menu;
        NSString *sought; // a submenu's title, or nil to seek the action
        NSString *place;
    } rows[] = {
        { "below the action", menu(@"Main", @[ item(@"Reply", @selector(reply:)), item(@"Move To", move), item(@"Delete", NULL) ]), nil, @"Main/2" },
        { "two levels down in the first menu before a later top-level match",
          menu(@"Main", @[ item(@"Message", NULL, @[ item(@"More", NULL, @[ item(@"Move To", move) ]) ]), item(@"Move To", move) ]), nil, @"More/1" },
        { "on into later submenus", menu(@"Main", @[ item(@"File", NULL, @[ item(@"Close", NULL) ]), item(@"Message", NULL, @[ item(@"Move To", move) ]) ]),
          nil, @"Message/1" },
        { "the upper of two in one menu", menu(@"Message", @[ item(@"Move To", move), item(@"Again", move) ]), nil, @"Message/1" },
        { "no action, no item", menu(@"Main", @[ item(@"Message", NULL, @[ item(@"Reply", @selector(reply:)) ]) ]), nil, @"" },
        { "a title without a submenu is passed over", menu(@"Mailbox", @[ item(@"Go To", @selector(goTo:)), item(@"Go To", NULL, @[]) ]), @"Go To", @"Mailbox/2" },
        { "a title differing in case is passed over", menu(@"Mailbox", @[ item(@"go to", NULL, @[]), item(@"Go To", NULL, @[]) ]), @"Go To", @"Mailbox/2" },
        { "a match is tested before its own submenu", menu(@"Main", @[ item(@"Go To", NULL, @[ item(@"Go To", NULL, @[]) ]) ]), @"Go To", @"Main/1" },
        { "no submenu with the title, no item", menu(@"Main", @[ item(@"Mailbox", NULL, @[ item(@"Go To", @selector(goTo:)) ]) ]), @"Go To", @"" },
        { "no menu", nil, nil, @"" },
        { "no menu to search by title", nil, @"Go To", @"" },
    };
    for (const Row &row : rows) {
        NSString *keyEquivalent = row.sought ? nil : @"m";
        NSMenuItem *inserted =
            row.sought ? [utilities newMenuItemWithTitle:@"Inserted" action:@selector(inserted:) andKeyEquivalent:keyEquivalent inMenu:row.menu underSubmenuWithTitle:row.sought]
                       : [utilities newMenuItemWithTitle:@"Inserted" action:@selector(inserted:) andKeyEquivalent:keyEquivalent inMenu:row.menu underItemWithSelector:move];
        [inserted autorelease];
        EXPECT_NSEQ(row.place, placeOf(@"Inserted", row.menu)) << row.name;
        EXPECT_EQ([row.place length] > 0, inserted != nil && [inserted menu] != nil) << row.name;
        if (inserted == nil)
            continue;
        EXPECT_SELEQ(@selector(inserted:), [inserted action]);
        EXPECT_TRUE([inserted target] == nil && ![inserted hasSubmenu]) << row.name;
        EXPECT_NSEQ(keyEquivalent ?: @"", [inserted keyEquivalent]) << row.name;
    }
}

namespace {

NSString *const TooOldText = @"You must be using at least OS X 10.6 (Snow Leopard) for this plugin to work.";
NSString *const GestaltFailedText = @"Gestalt(gestaltSystemVersion, &MacVersion) FAILED. Notify developer.";

int registerBundleCalls = 0;
IMP originalRegisterBundle = NULL;

void countingRegisterBundle(id self, SEL _cmd)
{
    registerBundleCalls++;
    ((void (*)(id, SEL))originalRegisterBundle)(self, _cmd);
}

NSString *versionLine(id className)
{
    NSBundle *bundle = [NSBundle bundleWithPath:LVPluginBundlePath()];
    return [NSString stringWithFormat:@"[Lorvane] Loaded %@ bundle %@", className, [bundle objectForInfoDictionaryKey:@"CFBundleVersion"]];
}

// Mail loading the plug-in on a system that reports this version and status.
class Bootstrap : public testing::Test {
protected:
    void startMail(int systemVersion, short gestaltStatus)
    {
        if (NSClassFromString(@"LorvaneBundle_Provider") != Nil)
            GTEST_SKIP() << "loads the plug-in itself: run it in a process of its own";
        MHSetSystemVersion(systemVersion);
        MHSetGestaltStatus(gestaltStatus);
        Method registerBundle = class_getClassMethod([MVMailBundle class], @selector(registerBundle));
        originalRegisterBundle = method_setImplementation(registerBundle, (IMP)countingRegisterBundle);
        ASSERT_TRUE(LVLoadPluginBundle());
    }

    Class providerClass() { return NSClassFromString(@"LorvaneBundle_Provider"); }
};

} // namespace

TEST_F(Bootstrap, ASystemOf10_6StartsRegistersMailsClassOnceAndLogsTheVersionWhoeverIsAsked)
{
    startMail(0x1060, 0);
    Class bundleClass = NSClassFromString(@"LorvaneBundle");
    EXPECT_EQ(0u, [MHRecordedAlerts() count]);
    EXPECT_EQ([MVMailBundle class], class_getSuperclass(bundleClass));
    EXPECT_EQ(1, registerBundleCalls);
    EXPECT_NSEQ(@[ bundleClass ], [MVMailBundle registeredBundleClasses]);
    EXPECT_EQ(1u, LVLogCount(versionLine(@"LorvaneBundle")));
    // The singleton is Mail's one instance of the registered class, made by its init.
    id mailsInstance = [[MVMailBundle bundleInstances] lastObject];
    EXPECT_TRUE([mailsInstance isKindOfClass:bundleClass]);
    EXPECT_EQ(mailsInstance, [providerClass() activeLorvaneBundle_Provider]);
    EXPECT_EQ(mailsInstance, [bundleClass activeLorvaneBundle_Provider]);

    // Only Mail's copy of the class registers; the version line names it whoever is asked.
    [providerClass() initialize];
    EXPECT_EQ(1, registerBundleCalls);
    [bundleClass initialize];
    EXPECT_EQ(2, registerBundleCalls);
    EXPECT_EQ(1u, [[MVMailBundle registeredBundleClasses] count]);
    LVClearLog();
    [providerClass() logBundleVersion];
    [bundleClass logBundleVersion];
    EXPECT_EQ(2u, LVLogCount(versionLine(@"LorvaneBundle")));
}

namespace {

struct Refusal {
    const char *name;
    int version;
    short status;
};

class RefusingBootstrap : public Bootstrap, public testing::WithParamInterface<Refusal> {
};

TEST_P(RefusingBootstrap, ShowsItsAlertAndLeavesThePluginInert)
{
    startMail(GetParam().version, GetParam().status);
    NSString *text = GetParam().status != 0 ? GestaltFailedText : TooOldText;

    ASSERT_EQ(1u, [MHRecordedAlerts() count]);
    NSDictionary *alert = [MHRecordedAlerts() firstObject];
    EXPECT_NSEQ(@"Lorvane Plugin Notification", [alert objectForKey:MHAlertTitleKey]);
    EXPECT_NSEQ(text, [alert objectForKey:MHAlertMessageKey]);
    EXPECT_EQ((int)NSCriticalAlertStyle, [[alert objectForKey:MHAlertStyleKey] intValue]);
    EXPECT_LE([[alert objectForKey:MHAlertButtonsKey] count], 1u);
    EXPECT_TRUE(NSClassFromString(@"LorvaneBundle") == Nil);
    EXPECT_EQ(0, registerBundleCalls);
    EXPECT_TRUE([providerClass() activeLorvaneBundle_Provider] == nil);
    [providerClass() initialize];
    EXPECT_EQ(0, registerBundleCalls);
    [providerClass() logBundleVersion];
    EXPECT_EQ(1u, LVLogCount(versionLine(nil)));
    EXPECT_EQ(1u, LVLogCountWithPrefix(@"[Lorvane]"));
}

INSTANTIATE_TEST_SUITE_P(Bootstrap, RefusingBootstrap, testing::Values(Refusal{ "SystemOlderThan10_6", 0x105F, 0 }, Refusal{ "FailingGestalt", 0x10C6, -5551 }),
                         [](const testing::TestParamInfo<Refusal> &info) { return std::string(info.param.name); });

} // namespace
