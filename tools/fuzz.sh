#!/bin/sh
# Runs each fuzz target (the files Lorvane reads, and days in Mail), or those named in
# FUZZ_TARGETS (for example "day"): FUZZ_SECONDS seconds per target (300 unless set), or
# FUZZ_RUNS inputs per target when that is set. FUZZ_FROM=empty starts each target from a new,
# empty work folder; otherwise it starts from the inputs kept in the build folder, the seeds
# (fuzz/corpus) and every input that once failed (fuzz/regressions). A failing input is copied into
# fuzz/regressions/<target>/, where `make check` replays it from then on. Prints, per target,
# the inputs run, inputs per second, the time taken and the peak memory. The targets run on a
# virtual display: a day needs Mail's windows and menus.
build="${1:-build}"
seconds="${FUZZ_SECONDS:-300}"
settings="$build/fuzz/fuzz-settings.sh"
if [ ! -f "$settings" ]; then
    echo "No fuzz targets in $build: the compiler cannot build with -fsanitize=fuzzer." >&2
    exit 1
fi
. "$settings"

if [ -n "${FUZZ_RUNS:-}" ]; then
    length="-runs=$FUZZ_RUNS"
else
    length="-max_total_time=$seconds"
fi

status=0
for entry in $targets; do
    name="${entry%%:*}"
    rest="${entry#*:}"
    program="${rest%%:*}"
    rest="${rest#*:}"
    dictionary="${rest%%:*}"
    options=$(echo "${rest#*:}" | tr ',' ' ')
    if [ -n "${FUZZ_TARGETS:-}" ]; then
        case " $FUZZ_TARGETS " in
        *" $name "*) ;;
        *) continue ;;
        esac
    fi
    artifacts="$work/$name-artifacts"
    log="$work/$name.log"
    if [ "${FUZZ_FROM:-}" = empty ]; then
        folders=$(mktemp -d "${TMPDIR:-/tmp}/lorvane-fuzz-$name-XXXXXX")
        from="an empty work folder"
    else
        folders="$work/$name $sources/corpus/$name $sources/regressions/$name"
        from="the kept inputs"
    fi
    mkdir -p "$work/$name" "$artifacts"
    echo "Fuzzing $name ($length, from $from; log: $log)"
    started=$(date +%s)
    # In fork mode the peak is the largest of the processes run (the fuzzer's jobs, and the
    # virtual display); otherwise libFuzzer's own figure for its process.
    # shellcheck disable=SC2086 # the limits, options and folders are separate arguments
    python3 -c 'import resource, subprocess, sys
status = subprocess.call(sys.argv[2:])
open(sys.argv[1], "w").write("%d\n" % (resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss // 1024))
sys.exit(status)' "$work/$name.peak" \
        "$(dirname "$0")/xvfb-run.sh" "$program" $limits $options $length -print_final_stats=1 ${dictionary:+-dict="$dictionary"} \
        -artifact_prefix="$artifacts/" $folders >"$log" 2>&1
    result=$?
    elapsed=$(( $(date +%s) - started ))
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    # Fork mode prints no totals of its own: its last progress line counts the runs.
    [ -n "$runs" ] || runs=$(sed -n 's/^#\([0-9]*\): cov:.*/\1/p' "$log" | tail -n 1)
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
    [ -n "$rate" ] || rate=$(( ${runs:-0} / (elapsed > 0 ? elapsed : 1) ))
    peak=$(sed -n 's/^stat::peak_rss_mb: *//p' "$log")
    [ -n "$peak" ] || peak=$(cat "$work/$name.peak")
    echo "  $name: ${runs:-?} inputs, ${rate:-?} a second, ${elapsed} s, peak ${peak:-?} MB"
    if [ "$result" -ne 0 ]; then
        status=1
        tail -n 40 "$log"
        for found in "$artifacts"/*; do
            [ -f "$found" ] || continue
            mv "$found" "$sources/regressions/$name/"
            echo "Kept $sources/regressions/$name/$(basename "$found")"
        done
    fi
    [ "${FUZZ_FROM:-}" = empty ] && rm -rf "$folders"
done
exit $status
