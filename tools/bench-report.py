#!/usr/bin/env python3
"""Summarises a benchmark run: Mail alone, Mail with the plug-in, and two yardsticks run
beside the plug-in (the list's steps done plainly, and the recent menu rebuilt from all
mailboxes on each opening, as other mail clients make it).

Usage:
  bench-report.py BASELINE.json PLUGIN.json RESULTS_DIR [PROCESS.json ...]
      Writes RESULTS_DIR/latest.json: Google Benchmark's JSON with the runs without the
      plug-in renamed "...WithoutPlugin", the start-up runs of the extra processes under
      "per_process" and the figures, ratios and goals under "summary". Prints them and, when
      matplotlib is installed, draws RESULTS_DIR/scaling.png (log-log, time against size).
  bench-report.py --markdown [LATEST.json]
      Prints the README's tables for a saved run (bench/results/latest.json by default).
"""
import json
import os
import statistics
import sys

SECONDS = {"ns": 1e-9, "us": 1e-6, "ms": 1e-3, "s": 1.0}
WITHOUT_PLUGIN = "WithoutPlugin"
LIMITS = (10, 50, 500)
STORES = (1000, 10000, 50000)
STARTUP_STORES = (100, 1000, 10000, 50000)
PRUNE_STORES = (1000, 10000)
COMPARED_ENTRIES = 50
LIST_STORE = 10000              # the store the openings by list size run in


def load(path):
    with open(path) as handle:
        return json.load(handle)


def runs(benchmarks):
    """{(benchmark, (args...)): run} for plain iterations, with times in seconds: the median
    step where a benchmark timed its steps one by one, else Google Benchmark's mean."""
    table = {}
    for run in benchmarks:
        if run.get("run_type", "iteration") != "iteration" or run.get("aggregate_name"):
            continue
        parts = run["name"].split("/")
        args = tuple(int(part) for part in parts[1:] if part.isdigit())
        run = dict(run)
        run["seconds"] = run.get("median_step_s") or run["real_time"] * SECONDS[run.get("time_unit", "ns")]
        table[(parts[0], args)] = run
    return table


def seconds(table, name, *args):
    run = table.get((name, args))
    return run["seconds"] if run else None


def ratio(slower, faster):
    return slower / faster if slower and faster else None


def median(values):
    values = [value for value in values if value is not None]
    return statistics.median(values) if values else None


# ---------------------------------------------------------------------------------------
# Merging one run's files

def renamed_without_plugin(run):
    run = dict(run)
    head, _, tail = run["name"].partition("/")
    run["name"] = head + WITHOUT_PLUGIN + ("/" + tail if tail else "")
    run["run_name"] = run["name"]
    return run


def merge(baseline_path, plugin_path, process_paths):
    baseline_doc, plugin_doc = load(baseline_path), load(plugin_path)
    merged = dict(plugin_doc)
    merged["benchmarks"] = [renamed_without_plugin(run) for run in baseline_doc.get("benchmarks", [])] \
        + plugin_doc.get("benchmarks", [])
    processes = []
    for path in process_paths:
        document = load(path)
        without = document.get("context", {}).get("executable", "").endswith("_baseline")
        processes += [renamed_without_plugin(run) if without else run for run in document.get("benchmarks", [])]
    merged["per_process"] = processes
    return merged


# ---------------------------------------------------------------------------------------
# Figures

def per_process_samples(document, name, field=None):
    """The main run's figure and the extra processes' figures, for a once-per-process run."""
    samples = []
    for run in [run for run in document["benchmarks"] if run["name"].split("/")[0] == name] + \
               [run for run in document.get("per_process", []) if run["name"].split("/")[0] == name]:
        value = run.get(field) if field else run["real_time"] * SECONDS[run.get("time_unit", "ns")]
        if value is not None and value >= 0:
            samples.append(value)
    return sorted(samples)


def transfer_figures(table):
    rows = []
    for limit in LIMITS:
        alone = seconds(table, "BM_TransferEvent" + WITHOUT_PLUGIN, limit)
        burst = seconds(table, "BM_TransferEvent", limit)
        after = seconds(table, "BM_TransferEventAfterOpening", limit)
        if alone is None or burst is None:
            continue
        rows.append({"limit": limit, "mail_alone_s": alone, "burst_s": burst, "burst_added_s": burst - alone,
                     "after_opening_s": after, "after_opening_added_s": after - alone if after else None})
    return rows


def list_step_figures(table):
    """The plug-in's list steps beside the same steps done literally: ratio = literal / ours."""
    add_or_touch = []
    for case, suffix in (("burst", ""), ("after an opening", "AfterOpening")):
        for limit in LIMITS:
            ours = seconds(table, "BM_AddOrTouch" + suffix, limit)
            literal = seconds(table, "BM_LiteralAddOrTouch" + suffix, limit)
            if ours:
                add_or_touch.append({"case": case, "limit": limit, "lorvane_s": ours, "literal_s": literal,
                                     "ratio": ratio(literal, ours)})
    read_preferences = []
    for mailboxes in STARTUP_STORES:
        for records in LIMITS:
            ours = seconds(table, "BM_ReadPreferences", mailboxes, records)
            literal = seconds(table, "BM_LiteralReadPreferences", mailboxes, records)
            if ours:
                read_preferences.append({"mailboxes": mailboxes, "records": records, "lorvane_s": ours,
                                         "literal_s": literal, "ratio": ratio(literal, ours)})
    pruning = []
    for mailboxes in PRUNE_STORES:
        ours = seconds(table, "BM_PruneScan", mailboxes)
        literal = seconds(table, "BM_LiteralPruneScan", mailboxes)
        if ours:
            pruning.append({"mailboxes": mailboxes, "lorvane_s": ours, "literal_s": literal, "ratio": ratio(literal, ours)})
    return {"add_or_touch": add_or_touch, "read_preferences": read_preferences, "pruning": pruning}


def opening_figures(table):
    rows = []
    for entries, mailboxes in [(limit, LIST_STORE) for limit in LIMITS]:
        run = table.get(("BM_OpenSubmenuAfterChange", (entries, mailboxes)))
        if not run:
            continue
        rows.append({"entries": entries, "mailboxes": mailboxes, "after_change_s": run["seconds"],
                     "rebuilds_per_opening": run.get("rebuilds_per_opening"),
                     "titles_set_per_opening": run.get("titles_set_per_opening"),
                     "messages_held_s": seconds(table, "BM_OpenSubmenuAfterChangeMessagesHeld", entries, mailboxes)})
    return rows


def rebuild_on_opening_figures(table):
    """Openings of 50 entries beside the menu rebuilt from all mailboxes: ratio = theirs / ours."""
    rows = []
    for mailboxes in STORES:
        key = (COMPARED_ENTRIES, mailboxes)
        changed = table.get(("BM_OpeningsAfterChangeSideBySide", key))
        unchanged = table.get(("BM_OpeningsUnchangedSideBySide", key))
        if not changed or not unchanged:
            continue
        theirs_changed, ours_changed = changed["rebuild_on_opening_median_s"], changed["lorvane_median_s"]
        theirs_unchanged, ours_unchanged = unchanged["rebuild_on_opening_median_s"], unchanged["lorvane_median_s"]
        rows.append({"mailboxes": mailboxes, "entries": COMPARED_ENTRIES,
                     "toolkit_update_s": seconds(table, "BM_OpenSubmenuWithoutDelegate", COMPARED_ENTRIES, LIST_STORE),
                     "rebuild_on_opening_after_change_s": theirs_changed,
                     "rebuild_on_opening_unchanged_s": theirs_unchanged,
                     "lorvane_after_change_s": ours_changed, "lorvane_unchanged_s": ours_unchanged,
                     "ratio_after_change": ratio(theirs_changed, ours_changed),
                     "ratio_unchanged": ratio(theirs_unchanged, ours_unchanged)})
    return rows


def startup_figures(document, table):
    samples = per_process_samples(document, "BM_StartupLoadBundle")
    load_seconds = median(samples)
    warm_init = seconds(table, "BM_StartupInit", 10000, 50)
    # Loading, patching and first-use costs: a cold start less a warm init of the same size.
    patching = max(load_seconds - warm_init, 0.0) if load_seconds is not None and warm_init else 0.0
    init = {"%d/%d" % (mailboxes, records): seconds(table, "BM_StartupInit", mailboxes, records)
            for mailboxes in STARTUP_STORES for records in LIMITS
            if seconds(table, "BM_StartupInit", mailboxes, records) is not None}
    return {"load_samples_s": samples, "load_s": load_seconds, "load_patch_first_use_s": patching, "init_s": init}


def startup_added(startup, mailboxes, records):
    init = startup["init_s"].get("%d/%d" % (mailboxes, records))
    return init + startup["load_patch_first_use_s"] if init is not None else None


def pruning_figures(table):
    rows = []
    for mailboxes in PRUNE_STORES:
        opening = table.get(("BM_OpenSubmenuAfterDelete", (mailboxes,)))
        if opening:
            rows.append({"mailboxes": mailboxes, "opening_after_delete_s": opening["seconds"],
                         "pass_s": seconds(table, "BM_PruneScan", mailboxes),
                         "literal_pass_s": seconds(table, "BM_LiteralPruneScan", mailboxes)})
    return rows


def memory_figures(document):
    figures = {}
    for field in ("peak_rss_added_kib", "heap_kept_kib"):
        with_plugin = median(per_process_samples(document, "BM_StartupMemory", field))
        without = median(per_process_samples(document, "BM_StartupMemory" + WITHOUT_PLUGIN, field))
        figures[field] = {"with_plugin": with_plugin, "without_plugin": without,
                          "added": with_plugin - without if with_plugin is not None and without is not None else None}
    figures["processes"] = len(per_process_samples(document, "BM_StartupMemory", "peak_rss_added_kib"))
    return figures


# ---------------------------------------------------------------------------------------
# Goals

def verdict(key, name, met, measured, missed):
    return {"key": key, "goal": name, "measured": measured, "met": met, "verdict": "met" if met else "missed: " + missed}


def not_measured(key, name):
    return {"key": key, "goal": name, "measured": "not measured", "met": False, "verdict": "not measured"}


def at_most(key, name, value, goal, text):
    if value is None:
        return not_measured(key, name)
    return verdict(key, name, value <= goal, text, overshoot(value / goal))


def overshoot(times_goal):
    if times_goal < 2:
        return "%d%% over" % max(1, round((times_goal - 1) * 100))
    return "%.1fx the goal" % times_goal


def at_least(key, name, value, goal, text):
    if value is None:
        return not_measured(key, name)
    return verdict(key, name, value >= goal, text, "x%s of x%s" % (short_ratio(value), short_ratio(goal)))


def short_ratio(value):
    return "%.2g" % value if value < 10 else "{:,.0f}".format(value)


def transfer_goals(summary):
    found = []
    transfers = {row["limit"]: row for row in summary["transfer"]}
    for limit, goal in ((50, 0.5e-6), (500, 1e-6)):
        row = transfers.get(limit)
        worst = max(row["burst_added_s"], row["after_opening_added_s"] or 0) if row else None
        text = "%.2f us (burst %.2f, after an opening %.2f)" % (
            worst * 1e6, row["burst_added_s"] * 1e6, (row["after_opening_added_s"] or 0) * 1e6) if row else ""
        found.append(at_most("transfer_%d" % limit, "transfer adds <= %g us at limit %d" % (goal * 1e6, limit), worst, goal, text))
    return found


def opening_goals(summary):
    row = {(row["entries"], row["mailboxes"]): row for row in summary["openings"]}.get((COMPARED_ENTRIES, LIST_STORE))
    value = row["after_change_s"] if row else None
    rebuilds = [row["rebuilds_per_opening"] for row in summary["openings"] if row["rebuilds_per_opening"] is not None]
    return [at_most("opening", "opening after a change <= 0.3 ms at 50 entries", value, 0.3e-3,
                    "%.3f ms" % (value * 1e3) if row else ""),
            verdict("one_rebuild", "one rebuild per opening after a change", bool(rebuilds) and all(r == 1 for r in rebuilds),
                    ", ".join("%.2f" % r for r in rebuilds), "more than one")]


def startup_goals(summary):
    found = []
    startup = summary["startup"]
    for mailboxes, records, goal in ((10000, 50, 10e-3), (50000, 500, 60e-3)):
        value = startup_added(startup, mailboxes, records)
        text = "%.2f ms (init %.2f + load, patch, first use %.2f)" % (
            value * 1e3, (value - startup["load_patch_first_use_s"]) * 1e3, startup["load_patch_first_use_s"] * 1e3) \
            if value is not None else ""
        found.append(at_most("startup_%d" % mailboxes, "start-up adds <= %d ms at %s mailboxes / %d records"
                             % (goal * 1e3, "{:,}".format(mailboxes), records), value, goal, text))
    return found


def pruning_goals(summary):
    prune = {row["mailboxes"]: row for row in summary["pruning"]}.get(10000)
    value = prune["pass_s"] if prune else None
    return [at_most("pruning", "pruning at 10,000 mailboxes <= 1 ms", value, 1e-3,
                    "%.3f ms (the pass; the opening it runs in: %.2f ms)" % (value * 1e3, prune["opening_after_delete_s"] * 1e3)
                    if value is not None else "")]


def rebuild_on_opening_goals(summary):
    found = []
    compared = {row["mailboxes"]: row for row in summary["rebuild_on_opening"]}
    for mailboxes, goal in ((10000, 5), (50000, 10)):
        row = compared.get(mailboxes)
        value = row["ratio_after_change"] if row else None
        text = "x%s (%.3f ms against %.3f ms)" % (short_ratio(value), row["lorvane_after_change_s"] * 1e3,
                                                  row["rebuild_on_opening_after_change_s"] * 1e3) if value else ""
        found.append(at_least("ratio_after_change_%d" % mailboxes, "opening after a change >= %dx cheaper than rebuilding on opening, %s mailboxes"
                              % (goal, "{:,}".format(mailboxes)), value, goal, text))
    unchanged = [row for row in compared.values() if row["ratio_unchanged"]]
    worst = min(unchanged, key=lambda row: row["ratio_unchanged"]) if unchanged else None
    text = "x%s at worst (%s mailboxes: %.0f ns, of which the toolkit's update %s, against %.3f ms)" % (
        short_ratio(worst["ratio_unchanged"]), "{:,}".format(worst["mailboxes"]), worst["lorvane_unchanged_s"] * 1e9,
        "%.0f ns" % (worst["toolkit_update_s"] * 1e9) if worst["toolkit_update_s"] else "not measured",
        worst["rebuild_on_opening_unchanged_s"] * 1e3) if worst else ""
    found.append(at_least("ratio_unchanged", "opening with nothing changed >= 1,000x cheaper than rebuilding on opening, "
                          "1,000 to 50,000 mailboxes", worst["ratio_unchanged"] if worst else None, 1000, text))
    return found


def goals(summary):
    return transfer_goals(summary) + opening_goals(summary) + startup_goals(summary) + pruning_goals(summary) \
        + rebuild_on_opening_goals(summary)


def summarise(document):
    table = runs(document["benchmarks"])
    summary = {"transfer": transfer_figures(table), "list_steps": list_step_figures(table),
               "openings": opening_figures(table), "rebuild_on_opening": rebuild_on_opening_figures(table),
               "startup": startup_figures(document, table), "pruning": pruning_figures(table),
               "memory": memory_figures(document)}
    summary["goals"] = goals(summary)
    return summary


# ---------------------------------------------------------------------------------------
# Text report

def us(value):
    return "%10.3f us" % (value * 1e6) if value is not None else "%13s" % "-"


def ms(value):
    return "%10.3f ms" % (value * 1e3) if value is not None else "%13s" % "-"


def times(value):
    return "%9s" % ("x" + short_ratio(value)) if value else "%9s" % "-"


def print_transfers(summary):
    print("Transfer event (-[MessageTransfer setDelegate:] with a viewer as delegate), added to Mail's own")
    print("  limit     Mail alone   burst, added   after an opening, added")
    for row in summary["transfer"]:
        print("  %5d  %s  %s  %s" % (row["limit"], us(row["mail_alone_s"]), us(row["burst_added_s"]), us(row["after_opening_added_s"])))


def print_list_steps(summary):
    steps = summary["list_steps"]
    print("\nThe list's steps against the same steps done literally (ratio: literal / Lorvane)")
    print("  addOrTouchRecentMailboxFromUid: with eviction   limit        Lorvane        literal     ratio")
    for row in steps["add_or_touch"]:
        print("  %-46s %5d  %s  %s  %s" % (row["case"], row["limit"], us(row["lorvane_s"]), us(row["literal_s"]), times(row["ratio"])))
    print("  readPreferences (parse + match + place)  mailboxes records    Lorvane        literal     ratio")
    for row in steps["read_preferences"]:
        print("  %40s %9d %7d  %s  %s  %s" % ("", row["mailboxes"], row["records"], ms(row["lorvane_s"]), ms(row["literal_s"]), times(row["ratio"])))
    print("  removeDeletedMailboxes (50 entries)      mailboxes            Lorvane        literal     ratio")
    for row in steps["pruning"]:
        print("  %40s %9d %7s  %s  %s  %s" % ("", row["mailboxes"], "", ms(row["lorvane_s"]), ms(row["literal_s"]), times(row["ratio"])))


def print_openings(summary):
    print("\nOpening a recent submenu after a change ([menu update]; all five submenus rebuilt)")
    print("  entries  mailboxes   per opening   rebuilds  titles set   with AppKit's menu-changed messages held")
    for row in summary["openings"]:
        print("  %7d  %9d  %s   %8.2f  %10.0f   %s" % (row["entries"], row["mailboxes"], ms(row["after_change_s"]),
              row["rebuilds_per_opening"] or float("nan"), row["titles_set_per_opening"] or float("nan"), ms(row["messages_held_s"])))


def print_rebuild_on_opening(summary):
    print("\nOpenings (50 entries) against the menu rebuilt from all mailboxes on each opening (both opened in turn;")
    print("medians; ratio: theirs / Lorvane)")
    print("  mailboxes   after a change: theirs     Lorvane     ratio   nothing changed: theirs    Lorvane       ratio")
    for row in summary["rebuild_on_opening"]:
        print("  %9d   %s  %s  %s   %s  %8.1f ns  %s" % (
            row["mailboxes"], ms(row["rebuild_on_opening_after_change_s"]), ms(row["lorvane_after_change_s"]),
            times(row["ratio_after_change"]), ms(row["rebuild_on_opening_unchanged_s"]),
            (row["lorvane_unchanged_s"] or float("nan")) * 1e9, times(row["ratio_unchanged"])))
    toolkit = next((row["toolkit_update_s"] for row in summary["rebuild_on_opening"] if row["toolkit_update_s"]), None)
    if toolkit:
        print("  ([menu update] on the plug-in's submenu with no delegate to ask takes %.1f ns: the toolkit's own part)" % (toolkit * 1e9))


def print_startup(summary):
    startup = summary["startup"]
    print("\nStart-up")
    if startup["load_s"] is not None:
        print("  loading the bundle into Mail (10,000 mailboxes, 50 records, incl. Mail's instance): median %.2f ms of %d processes (%s)"
              % (startup["load_s"] * 1e3, len(startup["load_samples_s"]), ", ".join("%.1f" % (x * 1e3) for x in startup["load_samples_s"])))
        print("  less a warm init at that size: about %.2f ms for loading, patching and first-use costs"
              % (startup["load_patch_first_use_s"] * 1e3))
    print("  init with readPreferences (ms)   10 records   50 records   500 records")
    for mailboxes in STARTUP_STORES:
        cells = [startup["init_s"].get("%d/%d" % (mailboxes, records)) for records in LIMITS]
        print("  %9d mailboxes            %s" % (mailboxes, "   ".join("%10.2f" % (c * 1e3) if c is not None else "%10s" % "-" for c in cells)))


def print_pruning(summary):
    print("\nPruning deleted mailboxes (50 entries)")
    print("  mailboxes   opening after a delete   pass alone      literal pass")
    for row in summary["pruning"]:
        print("  %9d   %s            %s   %s" % (row["mailboxes"], ms(row["opening_after_delete_s"]), ms(row["pass_s"]), ms(row["literal_pass_s"])))


def print_memory(summary):
    memory = summary["memory"]
    print("\nMemory added at start-up (10,000 mailboxes, limit 50; medians of %d processes each)" % memory["processes"])
    for field, label in (("peak_rss_added_kib", "peak resident size"), ("heap_kept_kib", "heap kept in use")):
        figure = memory[field]
        if figure["added"] is not None:
            print("  %-20s +%7.0f KiB  (with the plug-in %.0f KiB, without %.0f KiB, over the same part of start-up)"
                  % (label, figure["added"], figure["with_plugin"], figure["without_plugin"]))


def print_goals(summary):
    print("\nGoals")
    for goal in summary["goals"]:
        print("  %-84s %-58s %s" % (goal["goal"], goal["measured"], goal["verdict"]))


def print_report(summary):
    for section in (print_transfers, print_list_steps, print_openings, print_rebuild_on_opening, print_startup,
                    print_pruning, print_memory, print_goals):
        section(summary)


# ---------------------------------------------------------------------------------------
# Markdown for the README

def markdown(summary):
    lines = ["| Goal | Measured | Met, or the gap |", "|---|---|---|"]
    lines += ["| %s | %s | %s |" % (goal["goal"], goal["measured"], goal["verdict"]) for goal in summary["goals"]]
    memory = summary["memory"]["peak_rss_added_kib"]["added"]
    heap = summary["memory"]["heap_kept_kib"]["added"]
    if memory is not None:
        lines.append("| memory added at start-up (10,000 mailboxes, limit 50) | peak resident size +%.1f MiB, heap kept +%.1f MiB | no goal set |"
                     % (memory / 1024, heap / 1024))
    lines += ["", "Ratios to the yardsticks (how many times cheaper Lorvane is; below x1 it is dearer):", "",
              "| Step | Size | Lorvane | Yardstick | Ratio |", "|---|---|---|---|---|"]
    for row in summary["rebuild_on_opening"]:
        lines.append("| opening after a change vs rebuilding on opening | %s mailboxes, 50 entries | %.3f ms | %.3f ms | x%s |"
                     % ("{:,}".format(row["mailboxes"]), row["lorvane_after_change_s"] * 1e3,
                        row["rebuild_on_opening_after_change_s"] * 1e3, short_ratio(row["ratio_after_change"])))
    for row in summary["rebuild_on_opening"]:
        lines.append("| opening, nothing changed, vs rebuilding on opening | %s mailboxes, 50 entries | %.0f ns | %.3f ms | x%s |"
                     % ("{:,}".format(row["mailboxes"]), row["lorvane_unchanged_s"] * 1e9,
                        row["rebuild_on_opening_unchanged_s"] * 1e3, short_ratio(row["ratio_unchanged"])))
    steps = summary["list_steps"]
    for row in steps["add_or_touch"]:
        lines.append("| adding with eviction (%s) vs a full sort per eviction | limit %d | %.2f us | %.2f us | x%s |"
                     % (row["case"], row["limit"], row["lorvane_s"] * 1e6, row["literal_s"] * 1e6, short_ratio(row["ratio"])))
    for row in steps["read_preferences"]:
        lines.append("| readPreferences vs every path against every mailbox | %s mailboxes, %d records | %.2f ms | %.2f ms | x%s |"
                     % ("{:,}".format(row["mailboxes"]), row["records"], row["lorvane_s"] * 1e3, row["literal_s"] * 1e3,
                        short_ratio(row["ratio"])))
    for row in steps["pruning"]:
        lines.append("| pruning vs every record against every mailbox | %s mailboxes, 50 entries | %.3f ms | %.3f ms | x%s |"
                     % ("{:,}".format(row["mailboxes"]), row["lorvane_s"] * 1e3, row["literal_s"] * 1e3, short_ratio(row["ratio"])))
    return "\n".join(lines)


# ---------------------------------------------------------------------------------------
# Plot

GOAL_MET, GOAL_MISSED = "tab:green", "tab:red"
# Measured lines keep clear of the goals' green and red.
LINE_COLOURS = ["tab:blue", "tab:orange", "tab:purple", "tab:brown", "tab:gray", "tab:cyan", "tab:olive", "tab:pink"]


def mark_goal(axis, x, y, label, met):
    """A goal as a short bar at its size and time, labelled below to its left."""
    color = GOAL_MET if met else GOAL_MISSED
    axis.plot([x], [y], marker="_", markersize=22, markeredgewidth=2.5, color=color, linestyle="none")
    axis.annotate(label, (x, y), textcoords="offset points", xytext=(-14, -11), ha="right", fontsize=7, color=color)


def line(axis, xs, ys, style, label, **options):
    points = [(x, y) for x, y in zip(xs, ys) if y is not None and y > 0]
    if points:
        axis.plot([p[0] for p in points], [p[1] for p in points], style, label=label, **options)


def plot_transfers(axis, summary, verdicts):
    transfers = summary["transfer"]
    limits = [row["limit"] for row in transfers]
    line(axis, limits, [row["burst_added_s"] for row in transfers], "o-", "added to a transfer, burst")
    line(axis, limits, [row["after_opening_added_s"] for row in transfers], "o-", "added to a transfer after an opening")
    mark_goal(axis, 50, 0.5e-6, "goal <= 0.5 us", verdicts[0])
    mark_goal(axis, 500, 1e-6, "goal <= 1 us", verdicts[1])
    axis.set(xlabel="list limit", title="Transfer event, time added by the plug-in")


def plot_list_step(axis, summary):
    for case, colour in (("burst", "tab:blue"), ("after an opening", "tab:orange")):
        rows = [row for row in summary["list_steps"]["add_or_touch"] if row["case"] == case]
        limits = [row["limit"] for row in rows]
        line(axis, limits, [row["lorvane_s"] for row in rows], "o-", "Lorvane, %s" % case, color=colour)
        line(axis, limits, [row["literal_s"] for row in rows], "o--", "yardstick: full sort per eviction, %s" % case, color=colour)
    axis.set(xlabel="list limit", title="addOrTouchRecentMailboxFromUid: with eviction")


def plot_openings_by_entries(axis, summary, met):
    rows = [row for row in summary["openings"] if row["mailboxes"] == LIST_STORE]
    entries = [row["entries"] for row in rows]
    line(axis, entries, [row["after_change_s"] for row in rows], "s-", "opening after a change (five submenus rebuilt)")
    line(axis, entries, [row["messages_held_s"] for row in rows], "s:", "the same, AppKit's menu-changed messages held")
    mark_goal(axis, 50, 0.3e-3, "goal <= 0.3 ms", met)
    axis.set(xlabel="entries in the list (store of 10,000 mailboxes)", title="Opening a recent submenu")


def plot_openings_by_store(axis, summary, verdicts):
    rows = summary["rebuild_on_opening"]
    sizes = [row["mailboxes"] for row in rows]
    line(axis, sizes, [row["lorvane_after_change_s"] for row in rows], "s-", "Lorvane, after a change", color="tab:blue")
    line(axis, sizes, [row["rebuild_on_opening_after_change_s"] for row in rows], "s--",
         "yardstick: rebuilt from all mailboxes, after a change", color="tab:blue")
    line(axis, sizes, [row["lorvane_unchanged_s"] for row in rows], "v-", "Lorvane, nothing changed", color="tab:orange")
    line(axis, sizes, [row["rebuild_on_opening_unchanged_s"] for row in rows], "v--",
         "yardstick: rebuilt from all mailboxes, nothing changed", color="tab:orange")
    by_size = {row["mailboxes"]: row for row in rows}
    for mailboxes, goal, met in ((10000, 5, verdicts[0]), (50000, 10, verdicts[1])):
        if mailboxes in by_size:
            mark_goal(axis, mailboxes, by_size[mailboxes]["rebuild_on_opening_after_change_s"] / goal,
                      "goal: %dx under the yardstick" % goal, met)
    unchanged = [(row["mailboxes"], row["rebuild_on_opening_unchanged_s"] / 1000) for row in rows if row["rebuild_on_opening_unchanged_s"]]
    if unchanged:
        axis.plot([u[0] for u in unchanged], [u[1] for u in unchanged], ":", linewidth=2.5,
                  color=GOAL_MET if verdicts[2] else GOAL_MISSED, label="goal, nothing changed: 1,000x under the yardstick")
    # The lines span the panel from top to bottom: room above them for the legend.
    axis.set_yscale("log")
    axis.set_ylim(top=axis.get_ylim()[1] * 100)
    axis.set(xlabel="mailboxes in Mail", title="Opening a submenu of 50 entries, against rebuilding it on each opening")


def plot_startup(axis, summary, verdicts):
    startup = summary["startup"]
    colours = dict(zip(LIMITS, LINE_COLOURS))
    for records in LIMITS:
        sizes = [n for n in STARTUP_STORES if startup_added(startup, n, records) is not None]
        line(axis, sizes, [startup_added(startup, n, records) for n in sizes], "o-", "start-up added, %d records" % records,
             color=colours[records])
    for records in (50, 500):
        rows = [row for row in summary["list_steps"]["read_preferences"] if row["records"] == records]
        line(axis, [row["mailboxes"] for row in rows], [row["lorvane_s"] for row in rows], "x:",
             "readPreferences alone, %d records" % records, color=colours[records])
        line(axis, [row["mailboxes"] for row in rows], [row["literal_s"] for row in rows], "x--",
             "yardstick: every path against every mailbox, %d records" % records, color=colours[records])
    mark_goal(axis, 10000, 10e-3, "goal <= 10 ms (50 records)", verdicts[0])
    mark_goal(axis, 50000, 60e-3, "goal <= 60 ms (500 records)", verdicts[1])
    axis.set(xlabel="mailboxes in Mail", title="Start-up (init + load, patch, first use)")


def plot_pruning(axis, summary, met):
    rows = summary["pruning"]
    sizes = [row["mailboxes"] for row in rows]
    line(axis, sizes, [row["pass_s"] for row in rows], "^-", "pruning pass")
    line(axis, sizes, [row["opening_after_delete_s"] for row in rows], "s-", "opening after a delete (pass + rebuild)")
    line(axis, sizes, [row["literal_pass_s"] for row in rows], "^--", "yardstick: every record against every mailbox",
         color="tab:blue")
    mark_goal(axis, 10000, 1e-3, "goal <= 1 ms", met)
    axis.set(xlabel="mailboxes in Mail", title="Pruning deleted mailboxes (50 entries)")


def plot(summary, path):
    try:
        import matplotlib
        matplotlib.use("Agg")
        import matplotlib.pyplot as plt
    except ImportError:
        print("\n(matplotlib is not installed: no scaling.png)")
        return
    met = {goal["key"]: goal["met"] for goal in summary["goals"]}

    def verdicts(*keys):
        return [met.get(key, False) for key in keys]

    plt.rcParams["axes.prop_cycle"] = plt.cycler(color=LINE_COLOURS)
    figure, axes = plt.subplots(2, 3, figsize=(19, 10))
    plot_transfers(axes[0][0], summary, verdicts("transfer_50", "transfer_500"))
    plot_list_step(axes[0][1], summary)
    plot_openings_by_entries(axes[0][2], summary, met.get("opening", False))
    plot_openings_by_store(axes[1][0], summary, verdicts("ratio_after_change_10000", "ratio_after_change_50000", "ratio_unchanged"))
    plot_startup(axes[1][1], summary, verdicts("startup_10000", "startup_50000"))
    plot_pruning(axes[1][2], summary, met.get("pruning", False))
    for axis in axes.flat:
        axis.set(xscale="log", yscale="log", ylabel="seconds")
        axis.grid(True, which="both", alpha=0.3)
        axis.legend(fontsize=7, loc="best")
        axis.title.set_fontsize(10)
    figure.suptitle("Lorvane in the stand-in Mail, time against size (log-log). Goals: bars and dotted line, green met, red missed;"
                    " dashed lines are the yardsticks")
    figure.tight_layout()
    figure.savefig(path, dpi=90)
    print("\nWrote %s" % path)


def main(argv):
    if argv and argv[0] == "--markdown":
        default = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "bench", "results", "latest.json")
        print(markdown(summarise(load(argv[1] if len(argv) > 1 else default))))
        return
    baseline_path, plugin_path, results = argv[:3]
    document = merge(baseline_path, plugin_path, argv[3:])
    summary = summarise(document)
    document["summary"] = summary
    with open(os.path.join(results, "latest.json"), "w") as handle:
        json.dump(document, handle, indent=2)
    print_report(summary)
    plot(summary, os.path.join(results, "scaling.png"))


if __name__ == "__main__":
    main(sys.argv[1:])
