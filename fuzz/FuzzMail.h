/*
 * The stand-in Mail the fuzz targets read files in, started through MHMailSession as tests
 * start it: a private Library folder, accounts in memory whose mailboxes saved paths can name
 * ("Home/Work", "Office/Archive/2023"), and the plug-in loaded from its fuzzing build the way
 * Mail loads it, Mail making its instance with -init.
 *
 * Each target writes the fuzzer's bytes where Mail's user keeps the file and lets the
 * plug-in's own reading code take it from there. A target that finds an outcome the
 * plug-in must never show calls LVFuzzFail, which stops the run with the input kept.
 */
#import <Foundation/Foundation.h>
#import "LorvaneBundle_Provider.h"

#include <cstddef>
#include <cstdint>

/* Starts Mail once per process, with the system's recent-items limit and no preferences file;
   answers the provider Mail's start made. Stops the process when Mail or the plug-in cannot
   start. */
LorvaneBundle_Provider *LVFuzzStartMail(int limit);
/* Mail started again in the same process with the system's recent-items limit changed: a fresh
   main menu, then a new provider made by -init, which reads the limit and the preferences file
   as they stand. Answers it; it lives as long as the process. */
LorvaneBundle_Provider *LVFuzzStartPluginAgain(int limit);

/* Where the plug-in's preferences file is kept. */
NSString *LVFuzzPreferencesFilePath(void);

/* A folder of that name under the process's private folder, made if missing. */
NSString *LVFuzzTemporaryFolder(NSString *name);

/* Lorvane's preferences file, or the system's recent-items file, holding exactly these bytes. */
void LVFuzzWritePreferencesFile(const uint8_t *bytes, size_t length);
void LVFuzzWriteRecentItemsFile(const uint8_t *bytes, size_t length);

/* YES when the plug-in's reader may hand these bytes to the platform's parser. */
BOOL LVFuzzReaderAdmits(const uint8_t *bytes, size_t length);

/* Log lines and exceptions raised (caught or not) since the last LVFuzzForget(). */
NSArray *LVFuzzLoggedLines(void);
NSUInteger LVFuzzExceptionsRaised(void);
void LVFuzzForget(void);

/* Every mailbox of the store, as Mail lists them. */
NSArray *LVFuzzMailboxes(void);
/* The provider's list as its methods report it, front first; at most `most` records are read,
   so a list longer than that shows as `most` records. Reading past the end raises once. */
NSArray *LVFuzzListedRecords(LorvaneBundle_Provider *provider, int most);

/* Reports what the plug-in did wrong with the input and aborts, so libFuzzer keeps it. */
void LVFuzzFail(const char *what) __attribute__((noreturn));
