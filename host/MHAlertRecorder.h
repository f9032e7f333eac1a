/*
 * Alerts without a person at the screen.
 *
 * While recording is on, -[NSAlert runModal] and NSRunCriticalAlertPanel return at
 * once (with the first button's answer) and each call is kept as a dictionary instead
 * of showing a modal panel. Tests and scenario runs record; an interactive MailHost
 * shows real alerts. A plug-in loaded into the process binds to the host's
 * NSRunCriticalAlertPanel, since the host library comes before AppKit in link order.
 */
#import <AppKit/AppKit.h>

/* Keys of a recorded alert. */
extern NSString *const MHAlertKindKey;          // MHAlertKindNSAlert or MHAlertKindCriticalPanel
extern NSString *const MHAlertTitleKey;         // messageText, or the panel's title
extern NSString *const MHAlertMessageKey;       // informativeText, or the panel's formatted message
extern NSString *const MHAlertStyleKey;         // NSNumber of NSAlertStyle; critical (2) for the panel
extern NSString *const MHAlertButtonsKey;       // array of button titles, in order, nil ones left out
extern NSString *const MHAlertHasIconKey;       // NSNumber BOOL: an icon was set on the NSAlert

extern NSString *const MHAlertKindNSAlert;
extern NSString *const MHAlertKindCriticalPanel;

#ifdef __cplusplus
extern "C" {
#endif

/* Switches recording on or off; off by default. Switching on installs the NSAlert hook once. */
void MHSetRecordsAlerts(BOOL records);
BOOL MHRecordsAlerts(void);
/* Every alert recorded since the last clear, oldest first (a copy). */
NSArray *MHRecordedAlerts(void);
void MHClearRecordedAlerts(void);

#ifdef __cplusplus
}
#endif
