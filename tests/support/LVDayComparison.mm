#import "LVDayComparison.h"
#import "LorvaneMailbox.h"
#import "MailAccount.h"
#import "MailboxUid.h"

#include <objc/runtime.h>

#include <cstdio>
#include <sstream>

const char *const LVFamilyNames[5] = { "move", "copy", "go-to", "move-contextual", "copy-contextual" };

NSArray *LVLiveMailboxes(BOOL genericOnly)
{
    NSMutableArray *mailboxes = [NSMutableArray array];
    for (MailAccount *account in [MailAccount activeAccounts])
        for (MailboxUid *mailbox in [account allMailboxUids])
            if ([mailbox isValid] && (!genericOnly || [MailboxUid typeIsGeneric:[mailbox type]]))
                [mailboxes addObject:mailbox];
    return mailboxes;
}

NSArray *LVRecentSubmenus(LorvaneBundle_Provider *provider)
{
    return @[
        [provider moveToRecentSubmenu], [provider copyToRecentSubmenu], [provider goToRecentSubmenu], [provider moveToRecentContextualSubmenu],
        [provider copyToRecentContextualSubmenu]
    ];
}

#pragma mark The day's clock

static NSTimeInterval dayNow;
static IMP systemDate;

static id dayDate(id self, SEL _cmd)
{
    (void)_cmd;
    return [self dateWithTimeIntervalSinceReferenceDate:dayNow];
}

// Changing a method makes the run-time update every class's dispatch table: the clock is put
// in once and only its time changes from day to day.
void LVStartDayClock(NSTimeInterval sinceReferenceDate)
{
    dayNow = sinceReferenceDate;
    if (systemDate == NULL)
        systemDate = method_setImplementation(class_getClassMethod([NSDate class], @selector(date)), (IMP)dayDate);
}

void LVStopDayClock(void)
{
    if (systemDate != NULL)
        method_setImplementation(class_getClassMethod([NSDate class], @selector(date)), systemDate);
    systemDate = NULL;
}

NSTimeInterval LVDayClockNow(void)
{
    return dayNow;
}

void LVAdvanceDayClock(NSTimeInterval seconds)
{
    dayNow += seconds;
}

NSString *LVSavedDateText(NSTimeInterval sinceReferenceDate, int zoneMinutes)
{
    NSCalendarDate *date = [NSCalendarDate dateWithTimeIntervalSinceReferenceDate:sinceReferenceDate];
    [date setTimeZone:[NSTimeZone timeZoneForSecondsFromGMT:zoneMinutes * 60]];
    return [date descriptionWithCalendarFormat:@"%Y-%m-%d %H:%M:%S %z"];
}

#pragma mark Comparisons

std::string LVText(NSString *string)
{
    return string != nil ? [string UTF8String] : "(nil)";
}

// Texts that differ only in spelling ("é" as one character or two) must look different.
static std::string spelled(NSString *string)
{
    if (string == nil)
        return "(nil)";
    std::string text;
    for (NSUInteger i = 0; i < [string length]; i++) {
        unichar c = [string characterAtIndex:i];
        if (c >= 0x20 && c < 0x7F) {
            text += (char)c;
        } else {
            char escaped[8];
            snprintf(escaped, sizeof escaped, "\\u%04X", c);
            text += escaped;
        }
    }
    return text;
}

static std::string describe(id<LVMailboxUid> uid, int accesses, NSDate *date)
{
    std::ostringstream out;
    out << spelled([uid fullPath]) << " (" << (void *)uid << ") x" << accesses << " @" << LVText([date description]);
    return out.str();
}

// Entries until the index raises, as many as the plain list holds and one more.
static std::string listedEntries(LorvaneBundle_Provider *provider, NSUInteger wanted)
{
    std::string entries;
    for (NSUInteger index = 0; index <= wanted; index++) {
        @try {
            LorvaneMailbox *record = [provider getRecentMailboxAtIndex:(int)index];
            entries += "  " + describe([record uid], [record accesses], [record date]) + "\n";
        } @catch (NSException *exception) {
            return entries + "  (" + LVText([exception name]) + " at entry " + std::to_string(index) + ")\n";
        }
    }
    return entries;
}

static bool sameEntries(LorvaneBundle_Provider *provider, NSArray *expected)
{
    for (NSUInteger index = 0; index < [expected count]; index++) {
        LVLiteralRecord *wanted = [expected objectAtIndex:index];
        LorvaneMailbox *record = nil;
        @try {
            record = [provider getRecentMailboxAtIndex:(int)index];
        } @catch (NSException *exception) {
            return false;
        }
        bool sameDate = [record date] == wanted->date || [[record date] isEqualToDate:wanted->date];
        if ((id)[record uid] != wanted->uid || [record accesses] != wanted->accesses || !sameDate)
            return false;
    }
    @try {
        [provider getRecentMailboxAtIndex:(int)[expected count]];
    } @catch (NSException *exception) {
        return [[exception name] isEqualToString:NSRangeException];
    }
    return false;
}

// Both lists are written out only when they differ: describing a date costs more than comparing.
std::string LVListDifference(LorvaneBundle_Provider *provider, LVLiteralLorvane *plain)
{
    NSArray *expected = [plain records];
    if (sameEntries(provider, expected))
        return "";
    std::string wanted;
    for (LVLiteralRecord *record in expected)
        wanted += "  " + describe(record->uid, record->accesses, record->date) + "\n";
    wanted += "  (" + LVText(NSRangeException) + " at entry " + std::to_string([expected count]) + ")\n";
    std::string listed = listedEntries(provider, [expected count]);
    return listed == wanted ? "" : "the provider lists\n" + listed + "wanted\n" + wanted;
}

static std::string shownRow(NSString *title, NSString *toolTip, NSImage *icon)
{
    return spelled(title) + " | " + spelled(toolTip) + " | " + LVText([icon name] ?: [NSString stringWithFormat:@"%p", icon]) + "\n";
}

std::string LVMenusDifference(LorvaneBundle_Provider *provider, LVLiteralLorvane *plain)
{
    std::string wanted;
    for (LVLiteralRow *row in [plain rows])
        wanted += shownRow(row->title, row->toolTip, row->icon);
    wanted += std::string("---\nClear Menu ") + ([plain clearItemsEnabled] ? "enabled" : "disabled") + "\n";
    NSArray *submenus = LVRecentSubmenus(provider);
    for (NSUInteger family = 0; family < [submenus count]; family++) {
        std::string shown;
        for (NSMenuItem *item in [[submenus objectAtIndex:family] itemArray]) {
            if ([item isSeparatorItem])
                shown += "---\n";
            else if (sel_isEqual([item action], @selector(clearRecentMenus:)))
                shown += spelled([item title]) + ([item isEnabled] ? " enabled\n" : " disabled\n");
            else
                shown += shownRow([item title], [item toolTip], [item image]);
        }
        if (shown != wanted)
            return std::string(LVFamilyNames[family]) + " shows\n" + shown + "wanted\n" + wanted;
    }
    return "";
}

std::string LVSavedFileDifference(id written, LVLiteralLorvane *plain)
{
    if ([[plain savedPreferences] isEqual:written])
        return "";
    return "wrote " + LVText([written description]) + "\nwanted " + LVText([[plain savedPreferences] description]);
}
