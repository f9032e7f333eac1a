#!/bin/sh
# Runs the whole test suite of a build configured with -DLORVANE_SANITIZE=ON (AddressSanitizer
# and UndefinedBehaviorSanitizer), the end-to-end demo included, and fails on any sanitizer
# report, whether from a test or from a MailHost that a test starts.
#
#   tools/check-asan.sh [BUILD]
build="${1:-build-asan}"
reports="$build/Testing/sanitizer-reports"
rm -rf "$reports" && mkdir -p "$reports" && reports=$(cd "$reports" && pwd)

# Each report goes to a file of its own and stops its process: a MailHost that a test starts
# writes its standard error where no test shows it. Both sanitizers share the log path.
# GNUstep is not instrumented, but a message sent to a freed object still stops the process
# with a report: GNUstep overwrites the class pointer of each object it frees.
# No leak detection here: GNUstep and the Objective-C run-time keep memory for the life of the
# process that LeakSanitizer calls leaked, their stacks stop at the first library frame (no
# frame pointers), and every object is allocated inside GNUstep, so no suppression could tell
# their memory from ours. tools/memcheck.sh checks for leaks instead.
log="log_path=$reports/report:log_exe_name=1"
export ASAN_OPTIONS="halt_on_error=1:detect_leaks=0:detect_stack_use_after_return=1:$log"
export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1:$log"

"$(dirname "$0")/run-tests.sh" "$build"
status=$?
count=0
for report in "$reports"/*; do
    [ -f "$report" ] || continue
    echo "== $report"
    cat "$report"
    count=$((count + 1))
done
if [ $count -eq 0 ]; then echo "sanitizers: no reports"
else echo "sanitizers: $count report(s), shown above"; status=1; fi
exit $status
