/*
 * A running stand-in Mail with its menus, and providers made in it the way Mail makes
 * the plug-in's object, so that start-up and the recent submenus are tested through the
 * menus a user would open.
 *
 * Mail's own instance of the plug-in is made when the bundle loads, into a main menu of
 * its own; each provider under test then gets a fresh main menu, so its items are the
 * only ones there.
 */
#import "LVTestSupport.h"
#import "MHAlertRecorder.h"
#import "MHMailMenus.h"
#import "MailApp.h"
#import "IMAPAccount.h"
#import "MHMailStore.h"
#import "MailAccount.h"
#import "MailboxUid.h"
#import "LorvaneBundle_Provider.h"

#include <objc/runtime.h>

/* Starts Mail's application with its main menu and loads the plug-in into it, once per
   process. Alerts are recorded from here on, never shown. */
void LVStartMailWithPlugin(void);
/* Gives the application a fresh Mail-shaped main menu and answers it. */
NSMenu *LVInstallFreshMainMenu(void);
/* Sets the recent-items limit, then makes a provider as Mail does. Providers are never
   released: the plug-in's object lives as long as Mail. */
LorvaneBundle_Provider *LVMakeProvider(int limit);

/* The five recent submenus in the order move, copy, go-to, move-contextual, copy-contextual. */
NSArray *LVRecentSubmenus(LorvaneBundle_Provider *provider);
/* The submenus' pre-made item arrays, in the same order, read from the provider's fields. */
NSArray *LVPremadeItemArrays(LorvaneBundle_Provider *provider);
/* Names of the families in that order, for failure messages. */
extern const char *const LVFamilyNames[5];

/* The item right after the first item (searched depth-first through submenus) whose action
   is the selector; nil when there is none or it is the last one. */
NSMenuItem *LVItemAfterItemWithAction(NSMenu *menu, SEL action);
/* The item right after this one in its menu; nil when it is the last one. */
NSMenuItem *LVItemAfterItem(NSMenuItem *item);
/* The item right after the submenu item; nil when it is the last one. */
NSMenuItem *LVItemAfterSubmenu(NSMenu *submenu);

/* Selectors compared by name: on this run-time the same name can come with different types. */
#define EXPECT_SELEQ(expected, actual) EXPECT_STREQ(sel_getName(expected), sel_getName(actual))

/* Alerts recorded since the last clear whose title is "Lorvane Plugin Notification". */
NSArray *LVRecordedStartupAlerts(void);
