/*
 * Lorvane's own preferences file, as any bytes: read at start-up by -readPreferences.
 *
 * Whatever the file holds, reading it never stops Mail, logs nothing, and leaves settings in
 * their ranges and a list within its limit whose every record names one of Mail's mailboxes.
 * A file the reader refuses gives exactly the defaults.
 */
#import "FuzzMail.h"
#import "LVPreferencesFile.h"
#import "LorvaneMailbox.h"

namespace {

// Below the number of records the seeds hold, so that loading has to choose which to keep.
const int LVListLimit = 3;

LorvaneBundle_Provider *provider;

// The platform's date parser reports a record's out-of-range date fields itself ("invalid
// hour given") and answers no date, which the plug-in takes as it is. Every other line
// would be a message about a file that must give its defaults without one.
void expectNoMessage(NSArray *lines)
{
    for (NSString *line in lines) {
        if (![line hasPrefix:@"File NSCalendarDate.m:"])
            LVFuzzFail("reading the preferences logged a line");
    }
}

// The provider has no method for the exclusion flag: it takes the file's answer as it is.
BOOL excludesSpecialMailboxes(void)
{
    return [[NSClassFromString(@"LVPreferencesFile") userPreferencesFile] excludesSpecialMailboxes];
}

void expectSettingsInRange(void)
{
    int sortType = [provider getSortType];
    if (sortType < 0 || sortType > 2)
        LVFuzzFail("sort type out of range");
    int exclude = excludesSpecialMailboxes();
    if (exclude != YES && exclude != NO)
        LVFuzzFail("exclusion flag is neither YES nor NO");
}

void expectListOfMailsMailboxes(NSArray *list)
{
    if ([list count] > (NSUInteger)LVListLimit)
        LVFuzzFail("list longer than its limit");
    for (LorvaneMailbox *record in list) {
        if (![LVFuzzMailboxes() containsObject:(id)[record uid]])
            LVFuzzFail("a record names no mailbox of Mail's");
        if ([record displayName] == nil)
            LVFuzzFail("a record has no name to show");
    }
}

void expectDefaults(NSArray *list)
{
    if ([provider getSortType] != 0 || !excludesSpecialMailboxes() || [list count] != 0)
        LVFuzzFail("a refused file did not give the defaults");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    provider = LVFuzzStartMail(LVListLimit);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    LVFuzzWritePreferencesFile(bytes, length);
    LVFuzzForget();
    [provider readPreferences];

    if (LVFuzzExceptionsRaised() != 0)
        LVFuzzFail("an exception was raised while reading");
    expectNoMessage(LVFuzzLoggedLines());
    NSArray *list = LVFuzzListedRecords(provider, LVListLimit + 1);
    expectSettingsInRange();
    expectListOfMailsMailboxes(list);
    if (!LVFuzzReaderAdmits(bytes, length))
        expectDefaults(list);
    [pool release];
    return 0;
}
