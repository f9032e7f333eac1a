#!/usr/bin/env python3
"""Summarises a benchmark run: Mail alone and Mail with the plug-in.

Usage: bench-report.py BASELINE.json PLUGIN.json RESULTS_DIR

Writes RESULTS_DIR/latest.json (Google Benchmark's JSON, the runs without the plug-in
renamed "..WithoutPlugin"), prints the plug-in's added costs against their goals and,
when matplotlib is installed, draws RESULTS_DIR/scaling.png (log-log, time against size).
"""
import glob
import json
import os
import sys

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}


def load(path):
    with open(path) as handle:
        return json.load(handle)


def runs(document):
    """{(benchmark, (args...)): run} for plain iterations, times in seconds."""
    table = {}
    for run in document.get("benchmarks", []):
        if run.get("run_type", "iteration") != "iteration" or run.get("aggregate_name"):
            continue
        parts = run["name"].split("/")
        args = tuple(int(part) for part in parts[1:] if part.isdigit())
        run = dict(run)
        run["seconds"] = run["real_time"] * SECONDS[run.get("time_unit", "ns")]
        table[(parts[0], args)] = run
    return table


def verdict(value, goal):
    return "met" if value <= goal else "MISSED"


def main():
    baseline_path, plugin_path, results = sys.argv[1:4]
    baseline_doc, plugin_doc = load(baseline_path), load(plugin_path)
    baseline, plugin = runs(baseline_doc), runs(plugin_doc)

    merged = dict(plugin_doc)
    renamed = []
    for run in baseline_doc.get("benchmarks", []):
        run = dict(run)
        head, _, tail = run["name"].partition("/")
        run["name"] = head + "WithoutPlugin" + ("/" + tail if tail else "")
        run["run_name"] = run["name"]
        renamed.append(run)
    merged["benchmarks"] = renamed + plugin_doc.get("benchmarks", [])
    with open(os.path.join(results, "latest.json"), "w") as handle:
        json.dump(merged, handle, indent=2)

    goals = []
    print("Transfer event (-[MessageTransfer setDelegate:] with a viewer as delegate)")
    print("  limit   Mail alone   burst (added, ratio)           after an opening (added)")
    transfer_added = {}
    for limit in (10, 50, 500):
        alone = baseline.get(("BM_TransferEvent", (limit,)))
        burst = plugin.get(("BM_TransferEvent", (limit,)))
        after = plugin.get(("BM_TransferEventAfterOpening", (limit,)))
        if not (alone and burst):
            continue
        added = burst["seconds"] - alone["seconds"]
        after_added = after["seconds"] - alone["seconds"] if after else float("nan")
        transfer_added[limit] = (added, after_added)
        print("  %5d   %8.3f us   %8.3f us (+%.3f us, x%.0f)   %9.3f us (+%.3f us)" % (
            limit, alone["seconds"] * 1e6, burst["seconds"] * 1e6, added * 1e6,
            burst["seconds"] / alone["seconds"], (after["seconds"] if after else float("nan")) * 1e6,
            after_added * 1e6))
    for limit, goal in ((50, 0.5e-6), (500, 1e-6)):
        if limit in transfer_added:
            worst = max(transfer_added[limit])
            goals.append(("transfer adds <= %.1f us at limit %d" % (goal * 1e6, limit),
                          "%.2f us (worst of burst / after opening)" % (worst * 1e6), verdict(worst, goal)))

    print("\nOpening a recent submenu after a change (all five rebuilt)")
    print("  entries   per opening   rebuilds/opening   titles set/opening")
    for entries in (10, 50, 500):
        run = plugin.get(("BM_OpenSubmenuAfterChange", (entries,)))
        if not run:
            continue
        held = plugin.get(("BM_OpenSubmenuAfterChangeMessagesHeld", (entries,)))
        print("  %7d   %8.3f ms   %16.2f   %18.0f   (%.3f ms with AppKit's menu-changed messages held)" % (
              entries, run["seconds"] * 1e3, run.get("rebuilds_per_opening", float("nan")),
              run.get("titles_set_per_opening", float("nan")), held["seconds"] * 1e3 if held else float("nan")))
        if entries == 50:
            goals.append(("opening after a change <= 0.3 ms at 50 entries", "%.3f ms" % (run["seconds"] * 1e3),
                          verdict(run["seconds"], 0.3e-3)))
            rebuilds = run.get("rebuilds_per_opening", float("nan"))
            goals.append(("exactly one rebuild per opening", "%.2f" % rebuilds, "met" if rebuilds == 1 else "MISSED"))

    print("\nStart-up: a provider's init with readPreferences (ms)")
    load_run = plugin.get(("BM_StartupLoadBundle", ()))
    init_at_load = plugin.get(("BM_StartupInit", (10000, 50)))
    patching = None
    if load_run:
        # Once per process: the main run's figure and those of the extra processes, if any.
        samples = [load_run["seconds"]]
        for path in glob.glob(os.path.join(os.path.dirname(plugin_path), "load-*.json.tmp")):
            extra = runs(load(path)).get(("BM_StartupLoadBundle", ()))
            if extra:
                samples.append(extra["seconds"])
        samples.sort()
        load_seconds = samples[len(samples) // 2]
        print("  loading the bundle into Mail (10,000 mailboxes, 50 records, incl. Mail's instance):"
              " median %.2f ms of %d processes (%s)" % (load_seconds * 1e3, len(samples),
                                                        ", ".join("%.1f" % (x * 1e3) for x in samples)))
        if init_at_load:
            patching = max(load_seconds - init_at_load["seconds"], 0.0)
            print("  less a warm init at that size: about %.2f ms for loading, patching and first-use costs" % (patching * 1e3))
    print("  mailboxes   10 records   50 records   500 records   (init only)")
    for mailboxes in (100, 1000, 10000, 50000):
        cells = []
        for records in (10, 50, 500):
            run = plugin.get(("BM_StartupInit", (mailboxes, records)))
            cells.append("%10.2f" % (run["seconds"] * 1e3) if run else "%10s" % "-")
        print("  %9d   %s" % (mailboxes, "   ".join(cells)))
    for mailboxes, records, goal in ((10000, 50, 10e-3), (50000, 500, 60e-3)):
        run = plugin.get(("BM_StartupInit", (mailboxes, records)))
        if run:
            total = run["seconds"] + (patching or 0.0)
            goals.append(("start-up <= %d ms at %d mailboxes / %d records" % (goal * 1e3, mailboxes, records),
                          "%.2f ms (init %.2f + load, patch, first use %.2f)" % (total * 1e3, run["seconds"] * 1e3, (patching or 0) * 1e3),
                          verdict(total, goal)))

    print("\nPruning deleted mailboxes (50 entries)")
    print("  mailboxes   opening after a delete   prune pass alone")
    for mailboxes in (1000, 10000):
        opening = plugin.get(("BM_OpenSubmenuAfterDelete", (mailboxes,)))
        scan = plugin.get(("BM_PruneScan", (mailboxes,)))
        if not opening:
            continue
        print("  %9d   %18.3f ms   %13.3f ms" % (mailboxes, opening["seconds"] * 1e3,
              (scan["seconds"] * 1e3) if scan else float("nan")))
        if mailboxes == 10000 and scan:
            goals.append(("pruning at 10,000 mailboxes <= 1 ms", "%.3f ms (pass; %.2f ms with the rebuild)"
                          % (scan["seconds"] * 1e3, opening["seconds"] * 1e3), verdict(scan["seconds"], 1e-3)))

    print("\nGoals")
    for name, value, result in goals:
        print("  %-52s %-44s %s" % (name, value, result))

    plot(plugin, transfer_added, os.path.join(results, "scaling.png"))


def plot(plugin, transfer_added, path):
    try:
        import matplotlib
        matplotlib.use("Agg")
        import matplotlib.pyplot as plt
    except ImportError:
        print("\n(matplotlib is not installed: no scaling.png)")
        return
    figure, axes = plt.subplots(1, 2, figsize=(12, 5))
    left, right = axes
    if transfer_added:
        limits = sorted(transfer_added)
        left.plot(limits, [max(transfer_added[limit][0], 1e-9) for limit in limits], "o-", label="transfer event, burst (added)")
        left.plot(limits, [max(transfer_added[limit][1], 1e-9) for limit in limits], "o-", label="transfer event after an opening (added)")
    sizes = [n for n in (10, 50, 500) if ("BM_OpenSubmenuAfterChange", (n,)) in plugin]
    left.plot(sizes, [plugin[("BM_OpenSubmenuAfterChange", (n,))]["seconds"] for n in sizes], "s-", label="opening after a change")
    left.set(xscale="log", yscale="log", xlabel="list size (entries / limit)", ylabel="seconds", title="Per event and per opening")
    for records in (10, 50, 500):
        sizes = [n for n in (100, 1000, 10000, 50000) if ("BM_StartupInit", (n, records)) in plugin]
        right.plot(sizes, [plugin[("BM_StartupInit", (n, records))]["seconds"] for n in sizes], "o-",
                   label="start-up init, %d records" % records)
    sizes = [n for n in (1000, 10000) if ("BM_OpenSubmenuAfterDelete", (n,)) in plugin]
    right.plot(sizes, [plugin[("BM_OpenSubmenuAfterDelete", (n,))]["seconds"] for n in sizes], "s-", label="opening after a delete (50 entries)")
    sizes = [n for n in (1000, 10000) if ("BM_PruneScan", (n,)) in plugin]
    right.plot(sizes, [plugin[("BM_PruneScan", (n,))]["seconds"] for n in sizes], "^-", label="prune pass alone (50 entries)")
    right.set(xscale="log", yscale="log", xlabel="mailboxes in Mail", ylabel="seconds", title="Against the size of the store")
    for axis in axes:
        axis.grid(True, which="both", alpha=0.3)
        axis.legend(fontsize=8)
    figure.tight_layout()
    figure.savefig(path, dpi=100)
    print("\nWrote %s" % path)


if __name__ == "__main__":
    main()
