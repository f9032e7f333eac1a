#!/bin/sh
# Runs the benchmarks of the plug-in inside the stand-in Mail on a virtual display: first
# Mail alone, then Mail with the plug-in loaded from the built bundle (and, beside it, the
# yardsticks it is compared with). Writes bench/results/latest.json, docs/performance.md and,
# with matplotlib, bench/results/scaling.png.
set -e
started=$(date +%s)
build="${1:-build-release}"
root="$(cd "$(dirname "$0")/.." && pwd)"
results="$root/bench/results"
for program in lorvane_bench_baseline lorvane_bench; do
    if [ ! -x "$build/bench/$program" ]; then
        echo "bench.sh: $build/bench/$program is missing; build first (make bench)" >&2
        exit 1
    fi
done
mkdir -p "$results"
# Extra arguments for both programs, such as --benchmark_filter=Transfer (given after the
# filters below, it chooses for every run of the plug-in's program).
args="${LORVANE_BENCH_ARGS:---benchmark_min_time=0.2}"

echo "== Mail without the plug-in"
"$root/tools/xvfb-run.sh" "$build/bench/lorvane_bench_baseline" $args \
    --benchmark_out="$results/baseline.json.tmp" --benchmark_out_format=json
echo
echo "== Mail with the plug-in"
# Transfers, about a microsecond each, run in three processes of their own, and the report
# keeps each one's fastest: whole processes came out up to 1.8 times slower than others, the
# plain steps beside them alike, as the shared machine slowed and sped up.
transfers='Transfer|AddOrTouch'
"$root/tools/xvfb-run.sh" "$build/bench/lorvane_bench" --benchmark_filter="-($transfers)" $args \
    --benchmark_out="$results/plugin.json.tmp" --benchmark_out_format=json
for run in 1 2 3; do
    "$root/tools/xvfb-run.sh" "$build/bench/lorvane_bench" --benchmark_filter="$transfers" $args \
        --benchmark_out="$results/transfers-$run-alone.json.tmp" --benchmark_out_format=json
done
echo
# Loading the bundle and start-up's memory are measured once per process: four more
# processes of each program give medians.
for run in 1 2 3 4; do
    "$root/tools/xvfb-run.sh" "$build/bench/lorvane_bench" --benchmark_filter='BM_Startup(LoadBundle|Memory)' \
        --benchmark_out="$results/process-$run.json.tmp" --benchmark_out_format=json >/dev/null
    "$root/tools/xvfb-run.sh" "$build/bench/lorvane_bench_baseline" --benchmark_filter=BM_StartupMemory \
        --benchmark_out="$results/process-$run-without.json.tmp" --benchmark_out_format=json >/dev/null
done
# Debian's matplotlib belongs to the system's Python, which another python3 on PATH may hide.
python=python3
if ! python3 -c 'import matplotlib' 2>/dev/null && /usr/bin/python3 -c 'import matplotlib' 2>/dev/null; then
    python=/usr/bin/python3
fi
"$python" "$root/tools/bench-report.py" "$results/baseline.json.tmp" "$results/plugin.json.tmp" "$results" \
    "$results"/transfers-*-alone.json.tmp "$results"/process-*.json.tmp
rm -f "$results"/*.json.tmp
echo "The benchmarks ran for $(( $(date +%s) - started )) s."
