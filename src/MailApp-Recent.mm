#import "MailApp-Recent.h"
#import "LorvaneBundle_Provider.h"
#import "MailInterfaces.h"

// Mail's own applicationWillTerminate:, run after the preferences are saved.
static IMP _old_applicationWillTerminate_IMP = NULL;

@implementation MailApp_LVAdditions

+ (void)lv_installInMail
{
    _old_applicationWillTerminate_IMP = LVPatchMailClass("MailApp", self, @"applicationWillTerminate:");
}

// Runs as MailApp. The file is written completely before Mail goes on to quit.
- (void)LVapplicationWillTerminate:(id)notification
{
    [[LorvaneBundle_Provider activeLorvaneBundle_Provider] writePreferences];
    if (_old_applicationWillTerminate_IMP != NULL)
        ((void (*)(id, SEL, id))_old_applicationWillTerminate_IMP)(self, _cmd, notification);
}

@end
