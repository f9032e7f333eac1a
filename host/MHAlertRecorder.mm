#import "MHAlertRecorder.h"

#include <dlfcn.h>
#include <initializer_list>
#include <objc/runtime.h>

NSString *const MHAlertKindKey = @"kind";
NSString *const MHAlertTitleKey = @"title";
NSString *const MHAlertMessageKey = @"message";
NSString *const MHAlertStyleKey = @"style";
NSString *const MHAlertButtonsKey = @"buttons";
NSString *const MHAlertHasIconKey = @"hasIcon";
NSString *const MHAlertKindNSAlert = @"NSAlert";
NSString *const MHAlertKindCriticalPanel = @"NSRunCriticalAlertPanel";

static BOOL recordsAlerts = NO;
static NSMutableArray *recordedAlerts;
static IMP originalRunModal;

typedef NSInteger (*CriticalAlertPanelFunction)(NSString *, NSString *, NSString *, NSString *, NSString *, ...);

static void recordAlert(NSDictionary *alert)
{
    if (recordedAlerts == nil)
        recordedAlerts = [[NSMutableArray alloc] init];
    [recordedAlerts addObject:alert];
}

static NSInteger recordingRunModal(NSAlert *self, SEL _cmd)
{
    if (!recordsAlerts)
        return ((NSInteger(*)(id, SEL))originalRunModal)(self, _cmd);
    NSMutableDictionary *alert = [NSMutableDictionary dictionary];
    [alert setObject:MHAlertKindNSAlert forKey:MHAlertKindKey];
    if ([self messageText] != nil)
        [alert setObject:[self messageText] forKey:MHAlertTitleKey];
    if ([self informativeText] != nil)
        [alert setObject:[self informativeText] forKey:MHAlertMessageKey];
    [alert setObject:[NSNumber numberWithInt:(int)[self alertStyle]] forKey:MHAlertStyleKey];
    [alert setObject:[[self buttons] valueForKey:@"title"] forKey:MHAlertButtonsKey];
    [alert setObject:[NSNumber numberWithBool:[self icon] != nil] forKey:MHAlertHasIconKey];
    recordAlert(alert);
    // Answer as if the first button were pressed; its tag is what runModal would return.
    NSButton *first = [[self buttons] firstObject];
    return first != nil ? [first tag] : NSAlertFirstButtonReturn;
}

static void installRunModalHook(void)
{
    if (originalRunModal != NULL)
        return;
    Method runModal = class_getInstanceMethod([NSAlert class], @selector(runModal));
    originalRunModal = method_setImplementation(runModal, (IMP)recordingRunModal);
}

void MHSetRecordsAlerts(BOOL records)
{
    if (records)
        installRunModalHook();
    recordsAlerts = records;
}

BOOL MHRecordsAlerts(void)
{
    return recordsAlerts;
}

NSArray *MHRecordedAlerts(void)
{
    return recordedAlerts != nil ? [[recordedAlerts copy] autorelease] : [NSArray array];
}

void MHClearRecordedAlerts(void)
{
    [recordedAlerts removeAllObjects];
}

static NSArray *buttonTitles(NSString *defaultButton, NSString *alternateButton, NSString *otherButton)
{
    NSMutableArray *titles = [NSMutableArray array];
    for (NSString *title : { defaultButton, alternateButton, otherButton }) {
        if (title != nil)
            [titles addObject:title];
    }
    return titles;
}

// Stands in front of AppKit's function of the same name: a plug-in loaded later binds here.
extern "C" __attribute__((visibility("default"))) NSInteger NSRunCriticalAlertPanel(
    NSString *title, NSString *msg, NSString *defaultButton, NSString *alternateButton, NSString *otherButton, ...)
{
    NSString *message = nil;
    if (msg != nil) {
        va_list arguments;
        va_start(arguments, otherButton);
        message = [[[NSString alloc] initWithFormat:msg arguments:arguments] autorelease];
        va_end(arguments);
    }
    if (!recordsAlerts) {
        static CriticalAlertPanelFunction appKitPanel = (CriticalAlertPanelFunction)dlsym(RTLD_NEXT, "NSRunCriticalAlertPanel");
        if (appKitPanel == NULL)
            return NSAlertDefaultReturn;
        return appKitPanel(title, message != nil ? @"%@" : nil, defaultButton, alternateButton, otherButton, message);
    }
    NSMutableDictionary *alert = [NSMutableDictionary dictionary];
    [alert setObject:MHAlertKindCriticalPanel forKey:MHAlertKindKey];
    if (title != nil)
        [alert setObject:title forKey:MHAlertTitleKey];
    if (message != nil)
        [alert setObject:message forKey:MHAlertMessageKey];
    [alert setObject:[NSNumber numberWithInt:NSCriticalAlertStyle] forKey:MHAlertStyleKey];
    [alert setObject:buttonTitles(defaultButton, alternateButton, otherButton) forKey:MHAlertButtonsKey];
    [alert setObject:[NSNumber numberWithBool:NO] forKey:MHAlertHasIconKey];
    recordAlert(alert);
    return NSAlertDefaultReturn;
}
