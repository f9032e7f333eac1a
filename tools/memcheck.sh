#!/bin/sh
# Plays the demo's day in the stand-in Mail with the plug-in under valgrind's memcheck, on a
# virtual display: both launches, samples/demo.scenario and then samples/demo-relaunch.scenario,
# which reads back what the first one saved. Fails when a step of a scenario fails or memcheck
# reports an error: an invalid read or write, a use of an uninitialised value, or memory that
# nothing points to any more. tools/memcheck.supp lists what the libraries leave behind.
#
#   tools/memcheck.sh [BUILD]
#
# BUILD (build-memcheck by default, which `make memcheck` makes) is a build without sanitizers,
# with debug information in DWARF 4, the newest that valgrind 3.19 reads.
# Everything goes into a new temporary folder: a private home, the store, and per launch what
# Mail printed (<scenario>.out) and memcheck's report (<scenario>.memcheck).
set -u
top=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "${1:-build-memcheck}" 2>/dev/null && pwd) || { echo "memcheck: no build folder ${1:-build-memcheck}; run make memcheck" >&2; exit 2; }

if [ -z "${LORVANE_MEMCHECK_ON_DISPLAY:-}" ]; then
    LORVANE_MEMCHECK_ON_DISPLAY=1 exec "$top/tools/xvfb-run.sh" "$0" "$@"
fi

out=$(mktemp -d /tmp/lorvane-memcheck-XXXXXX)
. "$top/tools/private-home.sh"
make_private_home "$out" "$build"
mkdir -p "$out/screenshots"
# Mail's own exit statuses are small numbers; this one says memcheck found something.
memcheck_status=99

# Blocks still pointed to at exit are not leaks, and every live Objective-C object is filed
# as "possibly lost" (see memcheck.supp): only "definitely lost" counts.
run_under_memcheck() {
    valgrind --tool=memcheck --error-exitcode=$memcheck_status \
        --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite \
        --track-origins=yes --num-callers=40 --child-silent-after-fork=yes \
        --suppressions="$top/tools/memcheck.supp" --log-file="$1" "$build/MailHost" \
        --store "$out/store" --scenario "$top/samples/$2" --screenshots "$out/screenshots" \
        -NSMenuInterfaceStyle NSMacintoshInterfaceStyle -GSX11HandlesWindowDecorations NO
}

# One launch of Mail; says what memcheck counted and, on a failure, shows why.
launch() {
    report="$out/$1.memcheck"
    echo "== $1"
    run_under_memcheck "$report" "$1" >"$out/$1.out" 2>>"$out/mail.log"
    status=$?
    sed -n -e 's/^==[0-9]*== *\(definitely lost:\)/  \1/p' -e 's/^==[0-9]*== \(ERROR SUMMARY\)/  \1/p' "$report"
    if [ $status -eq $memcheck_status ]; then
        echo "  memcheck found errors; its report, $report:"
        sed -n '/^==[0-9]*== Command:/,$p' "$report"
    elif [ $status -ne 0 ]; then
        echo "  Mail stopped at a failing step (exit status $status); what it printed last:"
        tail -n 5 "$out/$1.out" | sed 's/^/    /'
    fi
    return $status
}

failures=0
for scenario in demo.scenario demo-relaunch.scenario; do
    launch "$scenario" || failures=$((failures + 1))
done
echo "Everything is in $out"
if [ $failures -eq 0 ]; then echo "memcheck: no errors in 2 launches of Mail"
else echo "memcheck: $failures of 2 launches of Mail failed; see above"; fi
[ $failures -eq 0 ]
