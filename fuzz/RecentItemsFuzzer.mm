/*
 * The system's recent-items file, as any bytes: read at start-up by +[LVRecentItemsLimit
 * systemLimit] for the "Number of Recent Items".
 *
 * Whatever the file holds, reading it never stops Mail and logs only the two lines that say
 * a dictionary is missing, the second only after the first and only with a limit of 0. A
 * file the reader refuses reads as no file: both lines and a limit of 0.
 */
#import "FuzzMail.h"
#import "LVRecentItemsLimit.h"

namespace {

NSString *const LVNoRecentDocumentsLine = @"[Lorvane] failed to find RecentDocuments dictionary.";
NSString *const LVNoDictionaryLine = @"[Lorvane] failed to find the RecentDocuments or Documents dictionaries.";

// The logged lines: none, the first alone, or the first then the second.
void expectKnownLines(NSArray *lines, int limit)
{
    NSUInteger count = [lines count];
    if (count > 2)
        LVFuzzFail("more than two lines logged");
    if (count >= 1 && ![[lines objectAtIndex:0] isEqualToString:LVNoRecentDocumentsLine])
        LVFuzzFail("an unexpected first line");
    if (count == 2 && ![[lines objectAtIndex:1] isEqualToString:LVNoDictionaryLine])
        LVFuzzFail("an unexpected second line");
    if (count == 2 && limit != 0)
        LVFuzzFail("a limit without a dictionary to take it from");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    LVFuzzStartMail(0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t length)
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    LVFuzzWriteRecentItemsFile(bytes, length);
    LVFuzzForget();
    int limit = [NSClassFromString(@"LVRecentItemsLimit") systemLimit];

    if (LVFuzzExceptionsRaised() != 0)
        LVFuzzFail("an exception was raised while reading");
    NSArray *lines = LVFuzzLoggedLines();
    expectKnownLines(lines, limit);
    if (!LVFuzzReaderAdmits(bytes, length) && ([lines count] != 2 || limit != 0))
        LVFuzzFail("a refused file did not read as no file");
    [pool release];
    return 0;
}
