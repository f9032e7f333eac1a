#!/bin/sh
# Runs the CTest suite on a virtual display and ends with "N passed, N failed".
build="${1:-build}"
log="$build/Testing/last-run.log"
mkdir -p "$build/Testing"
"$(dirname "$0")/xvfb-run.sh" ctest --test-dir "$build" -j "$(nproc)" --output-on-failure --timeout 120 >"$log" 2>&1
status=$?
cat "$log"
# CTest ends each test's line with its status and time.
passed=$(grep -c -E '^ *[0-9]+/[0-9]+ Test +#[0-9]+: .* Passed +[0-9.]+ sec$' "$log")
failed=$(grep -c -E '^ *[0-9]+/[0-9]+ Test +#[0-9]+: .*(\*\*\*[A-Za-z]+|Not Run) +[0-9.]+ sec$' "$log")
echo "$passed passed, $failed failed"
[ "$status" -eq 0 ] && [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
