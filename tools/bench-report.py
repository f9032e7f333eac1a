#!/usr/bin/env python3
"""Turns one benchmark run into bench/results/latest.json, docs/performance.md and
bench/results/scaling.png.

Usage:
  bench-report.py BASELINE.json PLUGIN.json RESULTS_DIR [PROCESS.json ...]
      Merges Mail alone (its runs renamed "...WithoutPlugin"), Mail with the plug-in (with the
      benchmarks run in processes of their own, from files named *-alone.json.tmp: the
      fastest run of each), and the extra processes that measure loading and start-up memory
      once each, into RESULTS_DIR/latest.json; then writes the documents below from it.
  bench-report.py --docs [LATEST.json]
      Writes docs/performance.md (from docs/performance.md.in) and, with matplotlib, the plot
      again from a saved run.
"""
import json
import os
import statistics
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
WITHOUT = "WithoutPlugin"
STORES = (1000, 10000, 50000)


def load(path):
    with open(path) as handle:
        return json.load(handle)


def renamed(run, suffix):
    run = dict(run)
    head, _, tail = run["name"].partition("/")
    run["name"] = run["run_name"] = head + suffix + ("/" + tail if tail else "")
    return run


def seconds_of(run):
    return run.get("median_step_s") or run["real_time"] * SECONDS[run.get("time_unit", "ns")]


def merge(baseline_path, plugin_path, process_paths):
    merged = load(plugin_path)
    merged["benchmarks"] = [renamed(run, WITHOUT) for run in load(baseline_path)["benchmarks"]] + merged["benchmarks"]
    merged["per_process"] = []
    fastest_alone = {}
    for path in process_paths:
        runs = load(path)["benchmarks"]
        if path.endswith("-alone.json.tmp"):
            for run in runs:
                kept = fastest_alone.get(run["name"])
                if kept is None or seconds_of(run) < seconds_of(kept):
                    fastest_alone[run["name"]] = run
        elif path.endswith("-without.json.tmp"):
            merged["per_process"] += [renamed(run, WITHOUT) for run in runs]
        else:
            merged["per_process"] += runs
    merged["benchmarks"] += list(fastest_alone.values())
    return merged


class Run:
    """The runs of one document by name and arguments, with their times in seconds: the median
    step where a benchmark timed steps one by one, else the mean per iteration."""

    def __init__(self, document):
        self.runs = {}
        for run in document["benchmarks"]:
            if run.get("run_type", "iteration") != "iteration":
                continue
            parts = run["name"].split("/")
            key = (parts[0], tuple(int(p) for p in parts[1:] if p.isdigit()))
            run = dict(run)
            run["seconds"] = seconds_of(run)
            self.runs[key] = run
        self.processes = document.get("per_process", [])

    def get(self, name, *args, field="seconds"):
        run = self.runs.get((name, args))
        return run.get(field) if run else None

    def per_process_median(self, name, field):
        values = [run[field] if field in run else run["real_time"] * SECONDS[run.get("time_unit", "ns")]
                  for run in self.processes if run["name"].split("/")[0] == name]
        return statistics.median(values) if values else None


def minus(a, b):
    return a - b if a is not None and b is not None else None


def ratio(slower, faster):
    return slower / faster if slower and faster else None


def us(value):
    return "%.2f µs" % (value * 1e6) if value is not None else "not measured"


def ms(value):
    return "%.2f ms" % (value * 1e3) if value is not None else "not measured"


def times(value):
    return "%sx" % "{:,.0f}".format(value) if value is not None and value >= 10 else ("%.1fx" % value if value else "not measured")


def goal_row(goal, measured, met):
    verdict = "not measured" if met is None else ("met" if met else "**missed**")
    return "| %s | %s | %s |" % (goal, measured, verdict)


def at_most(value, bound):
    return None if value is None else value <= bound


def at_least(value, bound):
    return None if value is None else value >= bound


def goals(r):
    rows = []
    for entries, bound in ((50, 60e-6), (500, 150e-6)):
        value = r.get("BM_OpenSubmenuAfterChange", entries, 10000)
        rows.append(goal_row("opening after a one-entry change, %d entries, at most %s" % (entries, us(bound)), us(value), at_most(value, bound)))
    for mailboxes in STORES:
        value = r.get("BM_OpeningsAfterChangeSideBySide", 50, mailboxes, field="lorvane_median_s")
        rows.append(goal_row("the same beside the other designs, 50 entries, %s mailboxes, at most %s" % ("{:,}".format(mailboxes), us(60e-6)),
                             us(value), at_most(value, 60e-6)))
    for entries in (50, 500):
        value = r.get("BM_OpenSubmenuAfterTouch", entries)
        rows.append(goal_row("opening after a touch that changes nothing visible, %d entries, at most 20 µs" % entries, us(value), at_most(value, 20e-6)))
    for mailboxes, bound in zip(STORES, (5, 20, 50)):
        ours = r.get("BM_OpeningsAfterChangeSideBySide", 50, mailboxes, field="lorvane_median_s")
        theirs = r.get("BM_OpeningsAfterChangeSideBySide", 50, mailboxes, field="rescan_by_path_median_s")
        value = ratio(theirs, ours)
        rows.append(goal_row("after a change, at least %dx cheaper than a rescan by path, %s mailboxes" % (bound, "{:,}".format(mailboxes)),
                             "%s (%s against %s)" % (times(value), us(ours), us(theirs)), at_least(value, bound)))
    worst = None
    for mailboxes in STORES:
        ours = r.get("BM_OpeningsUnchangedSideBySide", 50, mailboxes, field="lorvane_median_s")
        theirs = r.get("BM_OpeningsUnchangedSideBySide", 50, mailboxes, field="rescan_by_path_median_s")
        value = ratio(theirs, ours)
        if value is not None and (worst is None or value < worst[0]):
            worst = (value, mailboxes, ours, theirs)
    rows.append(goal_row("with nothing changed, at least 1,000x cheaper than a rescan by path, at every size",
                         "%s at worst (%s mailboxes: %s against %s)" % (times(worst[0]), "{:,}".format(worst[1]), us(worst[2]), us(worst[3]))
                         if worst else "not measured", at_least(worst[0] if worst else None, 1000)))
    for name, label in (("BM_TransferEvent", "a transfer in a burst"), ("BM_TransferEventTouch", "a transfer to a listed mailbox"),
                        ("BM_TransferEventAfterOpening", "the first transfer after an opening")):
        # Every transfer, the first after an opening included: a move in Mail costs milliseconds.
        for limit, bound in ((50, 1e-6), (500, 1e-6)):
            added = minus(r.get(name, limit), r.get("BM_TransferEvent" + WITHOUT, limit))
            rows.append(goal_row("%s adds at most %s, limit %d" % (label, us(bound), limit), us(added), at_most(added, bound)))
    first = r.get("BM_FirstOpening", 10000, 50)
    rows.append(goal_row("first opening after start-up, 50 entries, at most 2 ms", ms(first), at_most(first, 2e-3)))
    for mailboxes, records, bound in ((10000, 50, 4e-3), (50000, 500, 20e-3)):
        value = r.get("BM_StartupInit", mailboxes, records)
        rows.append(goal_row("start-up -init, %s mailboxes and %d records, at most %s" % ("{:,}".format(mailboxes), records, ms(bound)), ms(value), at_most(value, bound)))
    prune = r.get("BM_PruneScan", 10000)
    rows.append(goal_row("pruning, 10,000 mailboxes, under 1 ms", us(prune), at_most(prune, 1e-3)))
    memory = minus(r.per_process_median("BM_StartupMemory", "peak_rss_added_kib"), r.per_process_median("BM_StartupMemory" + WITHOUT, "peak_rss_added_kib"))
    rows.append(goal_row("memory added at start-up under 2 MiB (peak resident size, median of processes)",
                         "%.0f KiB" % memory if memory is not None else "not measured", at_most(memory, 2048)))
    return ["| goal | measured | |", "|---|---|---|"] + rows


def table(header, rows):
    return ["| " + " | ".join(header) + " |", "|" + "---|" * len(header)] + ["| " + " | ".join(row) + " |" for row in rows]


def transfers(r):
    rows = []
    for limit in (10, 50, 500):
        alone = r.get("BM_TransferEvent" + WITHOUT, limit)
        rows.append(["%d" % limit, us(alone), us(minus(r.get("BM_TransferEvent", limit), alone)),
                     us(minus(r.get("BM_TransferEventTouch", limit), alone)) if limit != 10 else "",
                     us(minus(r.get("BM_TransferEventAfterOpening", limit), alone)),
                     us(r.get("BM_AddOrTouch", limit)), us(r.get("BM_LiteralAddOrTouch", limit)),
                     us(r.get("BM_AddOrTouchAfterOpening", limit)), us(r.get("BM_LiteralAddOrTouchAfterOpening", limit))])
    return table(["limit", "Mail alone", "added, burst of misses", "added, touches", "added, first after an opening",
                  "list step", "plain list step", "list step after an opening", "plain, after an opening"], rows)


def openings(r):
    rows = [["after a one-entry change, shared names", us(r.get("BM_OpenSubmenuAfterChange", 50, 10000)), us(r.get("BM_OpenSubmenuAfterChange", 500, 10000)),
             "%.1f" % (r.get("BM_OpenSubmenuAfterChange", 50, 10000, field="titles_set_per_opening") or 0)],
            ["after a one-entry change, names all different", us(r.get("BM_OpenSubmenuAfterChangePlainNames", 50, 10000)),
             us(r.get("BM_OpenSubmenuAfterChangePlainNames", 500, 10000)), "%.1f" % (r.get("BM_OpenSubmenuAfterChangePlainNames", 50, 10000, field="titles_set_per_opening") or 0)],
            ["after a touch that changes nothing visible", us(r.get("BM_OpenSubmenuAfterTouch", 50)), us(r.get("BM_OpenSubmenuAfterTouch", 500)), "0"],
            ["the toolkit's floor: one row moved in each of the five", us(r.get("BM_ToolkitFloorOneRow", 50)), us(r.get("BM_ToolkitFloorOneRow", 500)), "5"],
            ["the plain rebuild: every row out and in again", us(r.get("BM_LiteralMenuRebuild", 50)), us(r.get("BM_LiteralMenuRebuild", 500)), ""],
            ["first opening after start-up (10,000 / 50,000 mailboxes)", ms(r.get("BM_FirstOpening", 10000, 50)), ms(r.get("BM_FirstOpening", 50000, 500)), ""]]
    return table(["opening", "50 entries", "500 entries", "titles set"], rows)


def comparison(r):
    rows = []
    for mailboxes in STORES:
        for name, label in (("BM_OpeningsAfterChangeSideBySide", "after a change"), ("BM_OpeningsUnchangedSideBySide", "nothing changed")):
            ours = r.get(name, 50, mailboxes, field="lorvane_median_s")
            prepared = r.get(name, 50, mailboxes, field="prepared_list_median_s")
            rescan = r.get(name, 50, mailboxes, field="rescan_by_path_median_s")
            rows.append(["{:,}".format(mailboxes), label, us(ours), us(rescan), times(ratio(rescan, ours)), us(prepared), times(ratio(prepared, ours))])
    return table(["mailboxes", "opening", "Lorvane", "rescan by path", "ratio", "prepared list", "ratio"], rows)


def startup(r):
    rows = []
    for mailboxes in STORES:
        for records in (10, 50, 500):
            rows.append(["{:,}".format(mailboxes), "%d" % records, ms(r.get("BM_StartupInit", mailboxes, records)),
                         ms(r.get("BM_ReadPreferences", mailboxes, records)), ms(r.get("BM_LiteralReadPreferences", mailboxes, records))])
    return table(["mailboxes", "records", "-init", "reading the file", "plain reading"], rows)


def pruning(r):
    rows = [["{:,}".format(m), us(r.get("BM_PruneScan", m)), us(r.get("BM_LiteralPruneScan", m)), us(r.get("BM_OpenSubmenuAfterDelete", m))] for m in STORES]
    return table(["mailboxes", "pruning", "plain pruning", "opening after a deletion"], rows)


def run_line(document):
    context = document.get("context", {})
    loads = context.get("load_avg") or []
    # The context's "library_build_type" is Google Benchmark's own library build, not ours: the
    # plug-in and the programs are always the Release build the method names.
    return "Run of %s on %s, %d CPUs at %s MHz, load %s." % (
        context.get("date", "?"), context.get("host_name", "?"), context.get("num_cpus", 0), context.get("mhz_per_cpu", "?"),
        ", ".join("%.2f" % l for l in loads) or "?")


def write_docs(document, results):
    r = Run(document)
    parts = {"run": [run_line(document)], "goals": goals(r), "transfers": transfers(r), "openings": openings(r),
             "comparison": comparison(r), "startup": startup(r), "pruning": pruning(r)}
    with open(os.path.join(ROOT, "docs", "performance.md.in")) as handle:
        text = handle.read()
    for name, lines in parts.items():
        text = text.replace("<!-- %s -->" % name, "\n".join(lines))
    with open(os.path.join(ROOT, "docs", "performance.md"), "w") as handle:
        handle.write(text)
    print("\n".join(parts["goals"]))
    plot(r, os.path.join(results, "scaling.png"))


def plot(r, path):
    try:
        import matplotlib
        matplotlib.use("Agg")
        import matplotlib.pyplot as plt
    except ImportError:
        print("matplotlib is missing: no plot")
        return
    figure, (left, right) = plt.subplots(1, 2, figsize=(12, 4.5))
    for name, label, style in (("lorvane_median_s", "Lorvane", "s-"), ("rescan_by_path_median_s", "rescan by path", "o--"),
                               ("prepared_list_median_s", "prepared list", "^:")):
        for bench, kind in (("BM_OpeningsAfterChangeSideBySide", "after a change"), ("BM_OpeningsUnchangedSideBySide", "nothing changed")):
            points = [(m, r.get(bench, 50, m, field=name)) for m in STORES]
            points = [(m, v * 1e6) for m, v in points if v]
            if points:
                left.plot([p[0] for p in points], [p[1] for p in points], style, label="%s, %s" % (label, kind))
    left.axhline(60, color="grey", linewidth=0.8)
    left.set(xscale="log", yscale="log", xlabel="mailboxes in Mail", ylabel="opening, µs (50 entries)", title="Openings against the store's size")
    left.legend(fontsize=7)
    limits = (10, 50, 500)
    for name, label in (("BM_TransferEvent", "burst"), ("BM_TransferEventAfterOpening", "first after an opening")):
        points = [(l, minus(r.get(name, l), r.get("BM_TransferEvent" + WITHOUT, l))) for l in limits]
        points = [(l, v * 1e9) for l, v in points if v is not None]
        right.plot([p[0] for p in points], [p[1] for p in points], "o-", label="added to a transfer, %s" % label)
    right.plot([50, 500], [1000, 1000], "k_", markersize=20, label="goals")
    right.set(xscale="log", yscale="log", xlabel="list limit", ylabel="ns", title="What a transfer adds")
    right.legend(fontsize=7)
    figure.tight_layout()
    figure.savefig(path, dpi=100)


def main(argv):
    if len(argv) >= 2 and argv[1] == "--docs":
        latest = argv[2] if len(argv) > 2 else os.path.join(ROOT, "bench", "results", "latest.json")
        write_docs(load(latest), os.path.dirname(latest))
        return 0
    if len(argv) < 4:
        print(__doc__)
        return 2
    document = merge(argv[1], argv[2], argv[4:])
    with open(os.path.join(argv[3], "latest.json"), "w") as handle:
        json.dump(document, handle, indent=1)
    write_docs(document, argv[3])
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
