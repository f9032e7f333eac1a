#!/bin/sh
# Fuzzes each file Lorvane reads for FUZZ_SECONDS seconds (300 unless set). Inputs the fuzzer
# finds stay in the build folder; one that fails is copied into fuzz/regressions/<target>/,
# where `make check` replays it from then on.
build="${1:-build}"
seconds="${FUZZ_SECONDS:-300}"
settings="$build/fuzz/fuzz-settings.sh"
if [ ! -f "$settings" ]; then
    echo "No fuzz targets in $build: the compiler cannot build with -fsanitize=fuzzer." >&2
    exit 1
fi
. "$settings"

status=0
for entry in $targets; do
    name="${entry%%:*}"
    program="${entry#*:}"
    artifacts="$work/$name-artifacts"
    log="$work/$name.log"
    mkdir -p "$work/$name" "$artifacts"
    echo "Fuzzing $name for $seconds s (log: $log)"
    # shellcheck disable=SC2086 # the limits are separate arguments
    if "$program" $limits -max_total_time="$seconds" -print_final_stats=1 -dict="$dictionary" \
        -artifact_prefix="$artifacts/" "$work/$name" "$sources/corpus/$name" "$sources/regressions/$name" >"$log" 2>&1; then
        grep -E '^stat::(number_of_executed_units|new_units_added|peak_rss_mb)' "$log"
    else
        status=1
        tail -n 40 "$log"
        for found in "$artifacts"/*; do
            [ -f "$found" ] || continue
            mv "$found" "$sources/regressions/$name/"
            echo "Kept $sources/regressions/$name/$(basename "$found")"
        done
    fi
done
exit $status
