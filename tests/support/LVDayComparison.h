/*
 * A day in Mail seen twice, through the plug-in and through its plain steps (LVLiteralSteps),
 * and the comparisons that tell the two apart: what the replay test and the day fuzzer share.
 *
 * Each comparison answers an empty string when both sides agree, and otherwise says what the
 * plug-in shows and what the plain steps want, ready for a failure message. The day's clock
 * is one both sides read, so that their dates tie where a user's would.
 */
#import <AppKit/AppKit.h>
#import "LVLiteralSteps.h"
#import "LorvaneBundle_Provider.h"

#include <string>

/* The five recent submenus: move, copy, go-to, move-contextual, copy-contextual. */
NSArray *LVRecentSubmenus(LorvaneBundle_Provider *provider);
extern const char *const LVFamilyNames[5];

/* Every mailbox of Mail's active accounts that is still valid; with genericOnly, the user's
   own mailboxes only. */
NSArray *LVLiveMailboxes(BOOL genericOnly);

/* ---- The day's clock ---- */

/* Makes every +[NSDate date] read the day's clock, starting at this time; LVStopDayClock()
   gives the system's clock back. */
void LVStartDayClock(NSTimeInterval sinceReferenceDate);
void LVStopDayClock(void);
NSTimeInterval LVDayClockNow(void);
void LVAdvanceDayClock(NSTimeInterval seconds);

/* A saved date as NSDate writes it ("2025-09-20 14:03:00 +0000"), or as a hand-edited file
   may have it, in a zone this many minutes east of GMT. */
NSString *LVSavedDateText(NSTimeInterval sinceReferenceDate, int zoneMinutes);

/* ---- Comparisons ---- */

/* The list through the provider's accessors (mailbox, count and date of every entry, and
   where the list ends) against the plain list. */
std::string LVListDifference(LorvaneBundle_Provider *provider, LVLiteralLorvane *plain);
/* All five submenus, item by item (title, tool tip, icon, separator, "Clear Menu" and its
   state), against the rows the plain steps' last rebuild made. */
std::string LVMenusDifference(LorvaneBundle_Provider *provider, LVLiteralLorvane *plain);
/* The preferences file as written (a property list, nil when unreadable) against the plain
   steps' file. */
std::string LVSavedFileDifference(id written, LVLiteralLorvane *plain);

/* The text, or "(nil)". */
std::string LVText(NSString *string);
