/*
 * The stand-in Mail the fuzz targets read files in: a private Library folder, the plug-in
 * loaded from its fuzzing build the way Mail loads it, and accounts in memory whose
 * mailboxes saved paths can name ("Home/Work", "Office/Archive/2023").
 *
 * Each target writes the fuzzer's bytes to the file the plug-in reads and lets the
 * plug-in's own reading code take it from there. A target that finds an outcome the
 * plug-in must never show calls LVFuzzFail, which stops the run with the input kept.
 */
#import <Foundation/Foundation.h>
#import "LorvaneBundle_Provider.h"

#include <cstddef>
#include <cstdint>

/* Starts Mail once per process; answers a provider made without -init (which would install
   menus), holding the given limit and an empty list. Stops the process when Mail cannot start. */
LorvaneBundle_Provider *LVFuzzStartMail(int limit);

/* Mail as a user runs it: the application with Mail's main menu, alerts recorded instead of
   shown, the plug-in loaded as Mail loads it, then a provider started by -init as Mail starts
   one, with this recent-items limit and no preferences file. Stops the process when Mail
   cannot start; needs a display. Moves to a shared start-up once tests and fuzzers have one. */
LorvaneBundle_Provider *LVFuzzStartMailApplication(int limit);

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

/* Reports what the plug-in did wrong with the input and aborts, so libFuzzer keeps it. */
void LVFuzzFail(const char *what) __attribute__((noreturn));
