#!/usr/bin/env python3
"""Turns the JSON output of algologic_bench into the results tables.

Pairs each figure "X" with its floor "floor/X" and prints figure, floor and
ratio with the target each must meet; adds the per-message flatness of every
router from 1k to 100k instances, the memory footprint against the reference,
and the reader latency under routing load. With --update-readme FILE the
tables replace the block between <!-- bench:begin --> and <!-- bench:end -->
in FILE.

    python3 scripts/bench_table.py RESULTS.json [--update-readme README.md]
"""

import argparse
import json
import os
import platform
import re
import subprocess
import sys

BEGIN = "<!-- bench:begin -->"
END = "<!-- bench:end -->"

ROUTE_RATIO = 1.5
FLAT_RATIO = 1.3
LOG_RATIO = 1.25
QUERY_LIMIT_US = 100.0
MEMORY_RATIO = 1.25


def load(path):
    with open(path, encoding="utf-8") as f:
        data = json.load(f)
    runs = {}
    for run in data["benchmarks"]:
        if run.get("error_occurred"):
            runs[run["run_name"]] = {"error": run.get("error_message", "error")}
            continue
        aggregate = run.get("aggregate_name")
        if aggregate not in (None, "median"):
            continue
        name = run.get("run_name", run["name"])
        name = re.sub(r"/iterations:\d+$", "", name)
        # Prefer the median of repetitions over a single run.
        if aggregate == "median" or name not in runs:
            runs[name] = run
    return data["context"], runs


def nanos(run):
    unit = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}[run.get("time_unit", "ns")]
    return run["cpu_time"] * unit


def fmt_time(ns):
    if ns >= 1e6:
        return f"{ns / 1e6:.2f} ms"
    if ns >= 1e3:
        return f"{ns / 1e3:.1f} µs"
    return f"{ns:.0f} ns"


def verdict(ok):
    return "yes" if ok else "**no**"


def target_for(name):
    if name.startswith("route/"):
        return f"≤ {ROUTE_RATIO}×", lambda r, t: r <= ROUTE_RATIO
    if name.startswith("log/"):
        return f"≤ {LOG_RATIO}×", lambda r, t: r <= LOG_RATIO
    if re.match(r"^query/(ids|live|liveAllTypes|names)/.*n:10000$", name):
        return f"≤ {QUERY_LIMIT_US:.0f} µs", lambda r, t: t <= QUERY_LIMIT_US * 1e3
    if name.startswith("tick/"):
        return f"≤ {ROUTE_RATIO}×", lambda r, t: r <= ROUTE_RATIO
    return "", None


def machine(context):
    cpu = ""
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as f:
            for line in f:
                if line.startswith("model name"):
                    cpu = line.split(":", 1)[1].strip()
                    break
    except OSError:
        pass
    try:
        qt = subprocess.run(["qmake", "-query", "QT_VERSION"], capture_output=True,
                            text=True, check=False).stdout.strip()
    except OSError:
        qt = ""
    try:
        gxx = subprocess.run(["g++", "-dumpfullversion"], capture_output=True, text=True,
                             check=False).stdout.strip()
    except OSError:
        gxx = ""
    load = context.get("load_avg", [])
    load_text = ", ".join(f"{x:.2f}" for x in load) if load else "n/a"
    return (f"{cpu or platform.processor()}, {context.get('num_cpus', '?')} cores, "
            f"{platform.system()} {platform.release()}, Qt {qt or '?'}, g++ {gxx or '?'}, "
            f"RelWithDebInfo (-O2); run {context.get('date', '')}; load average at start "
            f"{load_text}")


def tables(context, runs):
    out = []
    out.append(f"Machine: {machine(context)}.")
    out.append("")
    load = context.get("load_avg", [])
    cores = context.get("num_cpus", 1) or 1
    if load and load[0] > 0.5 * cores:
        out.append(f"**Indicative only**: other work was running (load average {load[0]:.1f} "
                   f"on {cores} cores). Regenerate on a quiet machine.")
        out.append("")
    out.append("Times are CPU time per operation, median of the repetitions. A floor is a "
               "lean hand-written version of the same work measured in the same run "
               "(static keys, QStringBuilder, no logging or signals; see bench/floors.h); "
               "ratio = figure / floor.")
    out.append("")
    out.append("| Benchmark | Figure | Floor | Ratio | Target | Holds |")
    out.append("|---|---:|---:|---:|---|---|")
    for name, run in runs.items():
        if name.startswith(("floor/", "ref/", "input/", "mem/", "latency/")):
            continue
        if "error" in run:
            out.append(f"| `{name}` | {run['error']} | | | | **no** |")
            continue
        floor = runs.get("floor/" + name)
        figure = nanos(run)
        target, check = target_for(name)
        if floor and "error" not in floor:
            ratio = figure / nanos(floor)
            holds = verdict(check(ratio, figure)) if check else ""
            extra = ""
            if run.get("warnings"):
                extra = f" ({int(run['warnings'])} warnings)"
            out.append(f"| `{name}`{extra} | {fmt_time(figure)} | {fmt_time(nanos(floor))} | "
                       f"{ratio:.2f} | {target} | {holds} |")
        else:
            out.append(f"| `{name}` | {fmt_time(figure)} | | | {target} | |")
    out.append("")

    refs = [(n, r) for n, r in runs.items() if n.startswith(("ref/", "input/"))]
    if refs:
        out.append("For scale (no target): the bare parse of the log bodies, a walk over a "
                   "QMap of lean instances, and building the input messages.")
        out.append("")
        out.append("| Reference | Time |")
        out.append("|---|---:|")
        for name, run in refs:
            out.append(f"| `{name}` | {fmt_time(nanos(run))} |")
        out.append("")

    out.append(f"Per-message flatness: the same router at 100k instances against 1k "
               f"(target ≤ {FLAT_RATIO}×).")
    out.append("")
    out.append("| Router | 1k | 10k | 100k | 100k / 1k | Holds |")
    out.append("|---|---:|---:|---:|---:|---|")
    for name, run in runs.items():
        m = re.match(r"^route/([^/]+)/n:1000/legs:(\d+)$", name)
        if not m:
            continue
        sizes = [runs.get(f"route/{m.group(1)}/n:{n}/legs:{m.group(2)}")
                 for n in (1000, 10000, 100000)]
        if any(s is None or "error" in s for s in sizes):
            continue
        times = [nanos(s) for s in sizes]
        ratio = times[2] / times[0]
        out.append(f"| `{m.group(1)}` {m.group(2)} legs | " + " | ".join(map(fmt_time, times))
                   + f" | {ratio:.2f} | {verdict(ratio <= FLAT_RATIO)} |")
    out.append("")

    mem = [(n, r) for n, r in runs.items() if n.startswith("mem/")]
    if mem:
        out.append(f"Memory retained per registered instance (without its legs) and per "
                   f"leg, against the reference (target ≤ {MEMORY_RATIO}×).")
        out.append("")
        out.append("| Class | Instance | Reference | Ratio | Leg | Reference | Ratio | Holds |")
        out.append("|---|---:|---:|---:|---:|---:|---:|---|")
        for name, run in mem:
            inst = run.get("instance_bytes", 0.0)
            inst_ref = run.get("instance_reference", 1.0)
            row = f"| {name[4:]} | {inst:.0f} B | {inst_ref:.0f} B | {inst / inst_ref:.2f} |"
            ok = inst / inst_ref <= MEMORY_RATIO
            if "leg_bytes" in run:
                leg = run["leg_bytes"]
                leg_ref = run.get("leg_reference", 1.0)
                row += f" {leg:.0f} B | {leg_ref:.0f} B | {leg / leg_ref:.2f} |"
                ok = ok and leg / leg_ref <= MEMORY_RATIO
            else:
                legs = int(run.get("legs", 0))
                row += f" ({legs} leg{'s' if legs != 1 else ''} included) | | |"
            out.append(row + f" {verdict(ok)} |")
        out.append("")

    for name, run in runs.items():
        if not name.startswith("latency/"):
            continue
        out.append("Reader latency while one thread routes progress for every instance of a "
                   "10k registry (target p99 ≤ 1 ms):")
        out.append("")
        out.append("| Reader | p50 | p99 | max | samples |")
        out.append("|---|---:|---:|---:|---:|")
        for prefix, label in (("read_wait", "wait for the content lock (ReadLocker)"),
                              ("query", "GetAllInstanceIDsExceptDeleted, whole call")):
            if f"{prefix}_p50_us" not in run:
                continue
            out.append(f"| {label} | {run[prefix + '_p50_us']:.1f} µs | "
                       f"{run[prefix + '_p99_us']:.1f} µs | {run[prefix + '_max_us']:.0f} µs | "
                       f"{int(run[prefix + '_samples'])} |")
        out.append("")
        out.append(f"The router meanwhile handled {run.get('routed_per_s', 0):,.0f} messages/s.")
        out.append("")
    return "\n".join(out).rstrip() + "\n"


def update_readme(path, text):
    with open(path, encoding="utf-8") as f:
        content = f.read()
    if BEGIN not in content or END not in content:
        sys.exit(f"{path}: no {BEGIN} ... {END} block")
    head, rest = content.split(BEGIN, 1)
    _, tail = rest.split(END, 1)
    with open(path, "w", encoding="utf-8") as f:
        f.write(head + BEGIN + "\n" + text + END + tail)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("results")
    parser.add_argument("--update-readme", metavar="FILE")
    args = parser.parse_args()
    context, runs = load(args.results)
    text = tables(context, runs)
    print(text)
    if args.update_readme:
        update_readme(args.update_readme, text)
        print(f"updated {os.path.normpath(args.update_readme)}")


if __name__ == "__main__":
    main()
