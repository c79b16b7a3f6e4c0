#!/usr/bin/env python3
"""Runs the benchmarks and prints the tables of docs/PERFORMANCE.md (Markdown, on standard output).

    bench/report.py [--build DIR] [--smoke] [SECTION ...]

Sections: api (setter and getter by mixers and file size), overhead (library against bare libusb
and bare durable writing), store (the settings file's update as the file grows), notify
(cross-process notification latency), startup (start-up time and peak memory of `mxrk7 show`).
Default: all. --smoke runs everything with tiny counts, only to check
that every program works and every table can be made (the figures then mean nothing).

Each benchmark program can also be run on its own; the report names the command of each table.
"""

import argparse
import json
import os
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

GOAL_RATIO = 1.2
GOAL_STORE_GROWTH = 12.0  # CPU time per update at 1,000 keys against 100 keys
GOAL_STORE_RATIO = 1.1    # a 100-key update against the bare durable write of the same bytes
GOAL_P99_US = 2000.0


def fail(message):
    sys.exit(f"report.py: {message}")


class Bench:
    def __init__(self, build, smoke):
        self.build = os.path.abspath(build)
        self.bin = os.path.join(self.build, "bin")
        self.smoke = smoke
        for program in ("api_bench", "component_bench", "usb_overhead_bench", "notify_latency", "measure_run", "mxrk7"):
            if not os.access(os.path.join(self.bin, program), os.X_OK):
                fail(f"{program} is not built in {self.bin} (configure with -DMXRK7_BUILD_BENCH=ON)")

    def google(self, program, bench_filter, min_time=None, repetitions=None):
        """Runs a Google Benchmark program; its benchmarks by name, from its JSON output."""
        command = [os.path.join(self.bin, program), f"--benchmark_filter={bench_filter}", "--benchmark_format=json"]
        if self.smoke:
            command.append("--benchmark_min_time=0.001")
        elif min_time:
            command.append(f"--benchmark_min_time={min_time}")
        if repetitions and not self.smoke:
            command.append(f"--benchmark_repetitions={repetitions}")
        result = subprocess.run(command, capture_output=True, text=True)
        if result.returncode != 0:
            fail(f"{' '.join(command)} failed:\n{result.stderr}")
        data = json.loads(result.stdout)
        # With repetitions: the best (lowest) time of each, wall and CPU alike. A shared machine only
        # ever adds time, so the best repetition is the least disturbed one.
        runs = {}
        for run in data["benchmarks"]:
            if "error_occurred" in run and run["error_occurred"]:
                fail(f"{run['name']}: {run.get('error_message')}")
            if run.get("run_type") == "aggregate":
                continue
            name = run.get("run_name", run["name"])
            if name not in runs:
                runs[name] = dict(run)
            else:
                for key in ("real_time", "cpu_time"):
                    runs[name][key] = min(runs[name][key], run[key])
        return runs


def us(run, key="real_time"):
    """A time of a Google Benchmark run in microseconds."""
    scale = {"ns": 1e-3, "us": 1.0, "ms": 1e3, "s": 1e6}[run["time_unit"]]
    return run[key] * scale


def fmt(value, digits=0):
    return f"{value:,.{digits}f}"


def slope(points):
    """Least-squares slope of (x, y) points."""
    xs = [p[0] for p in points]
    ys = [p[1] for p in points]
    mx, my = statistics.fmean(xs), statistics.fmean(ys)
    den = sum((x - mx) ** 2 for x in xs)
    return sum((x - mx) * (y - my) for x, y in points) / den if den else 0.0


def section_api(bench):
    mixers = [0, 1, 4, 16]
    keys = [10, 100, 1000]
    runs = bench.google("api_bench", ".", min_time=0.5, repetitions=5)
    parts = bench.google("component_bench", "BM_DeviceLoop|BM_LoadSettings", min_time=0.5, repetitions=5)

    def cell(name, m, k):
        return runs[f"{name}/mixers:{m}/keys:{k}/real_time"]

    out = ["## Cost of one setter and one getter", "",
           "`NVX_SetPADModeIndex` and `NVX_GetPADModeIndex` through the shared library, on virtual mixers",
           "(no request log), with a settings file of 10, 100 or 1,000 keys. Best of 5 repetitions; wall",
           "time, CPU time in brackets, in µs.", "",
           "Command: `scripts/bench.sh api` (or `build/bench/bin/api_bench`).", ""]
    for name, title in (("BM_SetPADModeIndex", "Setter"), ("BM_GetPADModeIndex", "Getter")):
        out.append(f"| {title} | " + " | ".join(f"{k} keys" for k in keys) + " |")
        out.append("|---|" + "---:|" * len(keys))
        for m in mixers:
            row = [f"{fmt(us(cell(name, m, k)))} ({fmt(us(cell(name, m, k), 'cpu_time'))})" for k in keys]
            out.append(f"| {m} mixer{'s' if m != 1 else ''} | " + " | ".join(row) + " |")
        out.append("")

    out += ["How the cost grows (least-squares slopes over the table, CPU time, which the disk's fsync",
            "latency does not blur):", "",
            "| | per added mixer | per 100 added keys |", "|---|---:|---:|"]
    for name, title in (("BM_SetPADModeIndex", "setter"), ("BM_GetPADModeIndex", "getter")):
        per_mixer = statistics.fmean(slope([(m, us(cell(name, m, k), "cpu_time")) for m in mixers]) for k in keys)
        per_key = statistics.fmean(slope([(k, us(cell(name, m, k), "cpu_time")) for k in keys]) for m in mixers)
        out.append(f"| {title} | {fmt(per_mixer, 1)} µs | {fmt(per_key * 100, 1)} µs |")
    out.append("")

    out += ["The parts on their own (internal modules, `build/bench/bin/component_bench`), CPU time in µs:", "",
            "| part | " + " | ".join(["0", "1", "4", "16"]) + " mixers |", "|---|---:|---:|---:|---:|",
            "| device loop (count, open, one write, close each) | "
            + " | ".join(fmt(us(parts[f"BM_DeviceLoop/mixers:{m}/real_time"], "cpu_time"), 1) for m in mixers) + " |",
            "", "| part | " + " | ".join(f"{k} keys" for k in keys) + " |", "|---|---:|---:|---:|",
            "| loading and parsing the settings file | "
            + " | ".join(fmt(us(parts[f"BM_LoadSettings/keys:{k}/real_time"], "cpu_time"), 1) for k in keys) + " |", ""]
    return out


def ratio_row(what, run, bare_name, library_name):
    ratio = run["ratio"]
    verdict = "met" if ratio <= GOAL_RATIO else "not met"
    return (f"| {what} | {bare_name}: {fmt(run['bare_us'])} | {library_name}: {fmt(run['library_us'])} | "
            f"{fmt(run['overhead_us'])} | **{ratio:.3f}** ({verdict}) |")


def section_overhead(bench):
    usb = bench.google("usb_overhead_bench", ".", min_time=3)
    store = bench.google("component_bench", "BM_StoreUpdateVsBareWrite", min_time=3)
    out = ["## Overhead against the physical work", "",
           "Library and bare work are timed in interleaved pairs (the order alternating), medians of the",
           "pairs, so a busy disk or CPU moves both alike. Goal: ratio at most 1.2.", "",
           "Commands: `scripts/bench.sh overhead` (or `build/bench/bin/usb_overhead_bench`, which runs",
           "under umockdev by itself, and `build/bench/bin/component_bench --benchmark_filter=Vs`).", "",
           "| comparison | bare (µs) | library (µs) | overhead (µs) | ratio |", "|---|---:|---:|---:|---:|",
           ratio_row("one mixer under umockdev: the setter's device loop against bare libusb "
                     "(init, list, open, one control transfer, close, exit)",
                     usb["BM_DeviceLoopVsBareLibusb/real_time"], "libusb", "device loop"),
           ratio_row("one mixer under umockdev: `NVX_SetPADModeIndex` against bare libusb + bare durable "
                     "write of the same 10-key file", usb["BM_SetterVsBareWork/real_time"], "bare work", "setter")]
    for k in (10, 100, 1000):
        out.append(ratio_row(f"store update of one key, file of {k} keys, against writing the same bytes "
                             "with fsync, rename, fsync of the folder",
                             store[f"BM_StoreUpdateVsBareWrite/keys:{k}/real_time"], "bare write", "update"))
    out.append("")
    return out


def section_store(bench):
    growth = bench.google("component_bench", "BM_StoreUpdate/", min_time=1, repetitions=5)
    paired = bench.google("component_bench", "BM_StoreUpdateVsBareWrite/keys:100", min_time=3)
    cpu = {k: us(growth[f"BM_StoreUpdate/keys:{k}/real_time"], "cpu_time") for k in (100, 1000)}
    wall = {k: us(growth[f"BM_StoreUpdate/keys:{k}/real_time"]) for k in (100, 1000)}
    factor = cpu[1000] / cpu[100] if cpu[100] else 0.0
    ratio = paired["BM_StoreUpdateVsBareWrite/keys:100/real_time"]["ratio"]
    return ["## The settings file's update as the file grows", "",
            "One update of one key (lock, read, parse, merge, write, fsync, rename, fsync of the folder)",
            "with a file of 100 and 1,000 keys. Best of 5 repetitions. The update's own work is linear in",
            f"the file: goal at most {GOAL_STORE_GROWTH:g} times the CPU time for 10 times the keys, and a",
            f"100-key update within {GOAL_STORE_RATIO:g} times the bare durable write of the same bytes.", "",
            "Command: `scripts/bench.sh store` (or `build/bench/bin/component_bench --benchmark_filter=Store`).", "",
            "| | 100 keys | 1,000 keys | growth |", "|---|---:|---:|---:|",
            f"| CPU time per update (µs) | {fmt(cpu[100])} | {fmt(cpu[1000])} | **{factor:.1f}x** "
            f"({'met' if factor <= GOAL_STORE_GROWTH else 'not met'}) |",
            f"| wall time per update (µs) | {fmt(wall[100])} | {fmt(wall[1000])} | |", "",
            f"100-key update against the bare durable write: **{ratio:.3f}** "
            f"({'met' if ratio <= GOAL_STORE_RATIO else 'not met'}).", ""]


def run_notify(bench, listeners, posts):
    command = [os.path.join(bench.bin, "notify_latency"), "--listeners", str(listeners), "--posts", str(posts),
               "--warmup", "5" if bench.smoke else "50"]
    result = subprocess.run(command, capture_output=True, text=True)
    if result.returncode != 0:
        fail(f"{' '.join(command)} failed:\n{result.stderr}")
    return json.loads(result.stdout)


def section_notify(bench):
    posts = 20 if bench.smoke else 2000
    out = ["## Notification latency across processes", "",
           f"From the start of a post (the library's posting code: connect, send, flush, close) to the",
           f"callback in each listening process (public API, GLib main loop), on a private session bus,",
           f"{posts} posts one at a time, each after every listener has reported the previous one. Goal:",
           "p99 under 2 ms with 10 listeners.", "",
           f"Command: `scripts/bench.sh notify` (or `build/bench/bin/notify_latency --listeners N --posts {posts}`).",
           "", "| listeners | post → callback p50 | p90 | p99 | max | post → last listener p99 | "
           "post call p50 | post call p99 | goal |", "|---:|---:|---:|---:|---:|---:|---:|---:|---|"]
    for listeners in (1, 10):
        r = run_notify(bench, listeners, posts)
        cb, last, call = r["post_to_callback"], r["post_to_last_callback"], r["post_call"]
        goal = ("met" if cb["p99_us"] < GOAL_P99_US else "not met") if listeners == 10 else "-"
        out.append(f"| {listeners} | {fmt(cb['p50_us'])} µs | {fmt(cb['p90_us'])} µs | **{fmt(cb['p99_us'])} µs** | "
                   f"{fmt(cb['max_us'])} µs | {fmt(last['p99_us'])} µs | {fmt(call['p50_us'])} µs | "
                   f"{fmt(call['p99_us'])} µs | {goal} |")
    out.append("")
    return out


def measure_process(bench, command, env, runs):
    """Wall time (ms) and peak resident memory (KiB) of each run of a command, through measure_run."""
    times, peaks = [], []
    for _ in range(runs):
        result = subprocess.run([os.path.join(bench.bin, "measure_run"), *command], env=env, capture_output=True,
                                text=True)
        words = result.stdout.split()
        if result.returncode != 0 or len(words) != 3 or words[2] != "0":
            fail(f"{' '.join(command)} failed: {result.stdout}{result.stderr}")
        times.append(float(words[0]))
        peaks.append(int(words[1]))
    return times, peaks


def section_startup(bench):
    runs = 3 if bench.smoke else 50
    mxrk7 = os.path.join(bench.bin, "mxrk7")
    with tempfile.TemporaryDirectory(prefix="nvx-startup-") as home:
        env = dict(os.environ)
        for name in ("DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "MXRK7_VIRTUAL_MIXERS", "XDG_CONFIG_HOME"):
            env.pop(name, None)
        env["HOME"] = home
        env["XDG_STATE_HOME"] = os.path.join(home, "state")
        full = os.path.join(home, "full")
        # A settings file holding every setting: set each once through the tool.
        os.makedirs(full)
        for args in (["pad-mode", "2"], ["boost", "-10dB"], ["fx-filter", "B", "PITCH", "64"],
                     ["beat-fx", "A", "1", "depth", "200"], ["routing", "1", "Cross Fader A"]):
            done = subprocess.run([mxrk7, "--virtual", "--config-home", full, "set", *args], env=env, capture_output=True)
            if done.returncode != 0:
                fail(f"mxrk7 set {' '.join(args)} failed: {done.stderr.decode()}")
        cases = [
            ("`mxrk7 --virtual show`, no settings file", [mxrk7, "--virtual", "--config-home", os.path.join(home, "empty"), "show"]),
            ("`mxrk7 --virtual show`, settings file", [mxrk7, "--virtual", "--config-home", full, "show"]),
            ("`mxrk7 --virtual --json show`, settings file", [mxrk7, "--virtual", "--json", "--config-home", full, "show"]),
            ("`mxrk7 --version` (start-up and exit only)", [mxrk7, "--version"]),
            ("`/bin/true` (a process start on this machine)", [shutil.which("true") or "/bin/true"]),
        ]
        out = ["## Start-up time and peak memory of `mxrk7 show`", "",
               f"{runs} runs each of the built tool on the two demo mixers, settings in a scratch folder. Wall",
               "time from spawn to exit and peak resident memory (`ru_maxrss`), taken by `measure_run`, a",
               "small C launcher (the peak includes what the child held between fork and exec).", "",
               "Command: `scripts/bench.sh startup`.", "",
               "| command | median | p90 | peak memory (median) |", "|---|---:|---:|---:|"]
        for title, command in cases:
            times, peaks = measure_process(bench, command, env, runs)
            times.sort()
            p90 = times[min(len(times) - 1, int(0.9 * (len(times) - 1) + 0.5))]
            out.append(f"| {title} | {fmt(statistics.median(times), 1)} ms | {fmt(p90, 1)} ms | "
                       f"{fmt(statistics.median(peaks) / 1024, 1)} MiB |")
        out.append("")
    return out


def machine():
    load = os.getloadavg()
    tmp = os.environ.get("TMPDIR", "/tmp")
    fs = subprocess.run(["stat", "-f", "-c", "%T", tmp], capture_output=True, text=True).stdout.strip()
    return [f"Machine: {os.cpu_count()} CPUs, {platform.machine()}, Linux {platform.release()}; load average "
            f"{load[0]:.2f} at the start; scratch files in {tmp} ({fs}).", ""]


SECTIONS = {"api": section_api, "overhead": section_overhead, "store": section_store, "notify": section_notify,
            "startup": section_startup}


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", default=os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "build", "bench"))
    parser.add_argument("--smoke", action="store_true", help="tiny counts: check that everything runs")
    parser.add_argument("sections", nargs="*", metavar="SECTION", help=", ".join(SECTIONS))
    args = parser.parse_args()
    for name in args.sections:
        if name not in SECTIONS:
            parser.error(f"unknown section {name}; sections: {', '.join(SECTIONS)}")
    bench = Bench(args.build, args.smoke)
    lines = machine()
    for name in args.sections or list(SECTIONS):
        lines += SECTIONS[name](bench)
        print("\n".join(lines), flush=True)
        lines = []


if __name__ == "__main__":
    main()
