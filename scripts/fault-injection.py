#!/usr/bin/env python3
"""Checks that the test suite still catches the faults it should: each fault below is a small,
realistic edit of the sources. One at a time it is applied, the programs of its area are built,
the tests of its area alone are run, and the file is checked out again, whatever happened. Prints
a table (fault, tests run, caught) and exits non-zero when a fault went unnoticed or could not be
tried. A tool for people, not part of CI: it takes a while.

  scripts/fault-injection.py [--preset dev] [--list] [NAME-PART ...]

NAME-PART picks the faults whose name contains it. The build folder of the preset is configured
when it is missing; at the end the programs are built again from the untouched sources.
Refuses to start when a file it edits has uncommitted changes (they would be checked out).
"""
import argparse
import os
import re
import subprocess
import sys
import time
from dataclasses import dataclass

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))

# Each area: the programs its tests need, and the CTest labels of its tests.
AREAS = {
    "library": (["library_tests", "core_tests"], "api"),
    "store": (["core_tests", "core_helper", "stress_tests"], "store|stress"),
    "notify": (["library_tests", "core_tests", "api_helper"], "notify"),
    "tool": (["mxrk7", "core_tests"], "cli"),
}

@dataclass
class Fault:
    name: str
    area: str
    path: str
    edits: list  # (text as it is, text with the fault), each found exactly once


FAULTS = [
    # The library: wire, keys, argument tests and kept quirks.
    Fault("request index: pad mode sent on fader start's wIndex", "library", "src/usb/request_table.h",
          [('{"SetPADModeSetting", Direction::Write, 0x8514}', '{"SetPADModeSetting", Direction::Write, 0x8513}')]),
    Fault("byte order: boost code in the low byte", "library", "src/tables/settings.cpp",
          [("_convDbTable[values[0]] << 8)", "_convDbTable[values[0]])")]),
    Fault("missing range test: play settings take one past the last", "library", "src/api/play_settings.cpp",
          [("index > setting.fields[0].last({})) return", "index > setting.fields[0].last({}) + 1) return")]),
    Fault("key name: cut lag stored as CRFaderCutlag", "library", "src/tables/settings.cpp",
          [('kCrossfaderCutLag = "CRFaderCutLag"', 'kCrossfaderCutLag = "CRFaderCutlag"')]),
    Fault("quirk lost: boost replay refuses a stored 4", "library", "src/api/boost.cpp",
          [("kLastReplayIndex = kBoostLevels;", "kLastReplayIndex = kBoostLevels - 1;")]),
    # The store: lock, modes, durability, trust, backups.
    Fault("lock dropped", "store", "src/store/update_lock.cpp",
          [("bool tryLock(int fd) { return ::flock(fd, LOCK_EX | LOCK_NB) == 0; }", "bool tryLock(int) { return true; }")]),
    Fault("file mode: a new file readable by all", "store", "src/store/auto_setup_file.cpp",
          [("file.existing->st_mode : 0600;", "file.existing->st_mode : 0644;")]),
    Fault("fsync of the temporary file removed", "store", "src/store/durable_file.cpp",
          [("replacement.bytes) || !fsyncRetrying(temp.get()))", "replacement.bytes))")]),
    Fault("fsync of the temporary file after the rename", "store", "src/store/durable_file.cpp",
          [("replacement.bytes) || !fsyncRetrying(temp.get()))", "replacement.bytes))"),
           ("  if (!temp.close()) return fail(WriteStep::Write);\n", ""),
           ("    return fail(WriteStep::Rename);\n", "    return fail(WriteStep::Rename);\n  fsyncRetrying(temp.get());\n"
                                                   "  temp.close();\n")]),
    Fault("fsync of the folder removed", "store", "src/store/durable_file.cpp",
          [("  fsyncRetrying(replacement.folderFd);\n", "")]),
    Fault("trust: a folder writable by all is accepted", "store", "src/store/folder_trust.cpp",
          [("const bool othersWrite = (folder.st_mode & S_IWOTH) != 0;", "const bool othersWrite = false;")]),
    Fault("backup: an unreadable file replaced without keeping it", "store", "src/store/auto_setup_file.cpp",
          [("const bool replacing = file.existing && !dict && file.existing->st_size > 0;",
            "const bool replacing = false;")]),
    # Notifications.
    Fault("payload key: Channel spelt channel", "notify", "src/notify/wire.h",
          [('kKeyChannel = "Channel";', 'kKeyChannel = "channel";')]),
    Fault("callback called for a foreign product", "notify", "src/notify/observer.cpp",
          [("if (!received || received->payload.productId != 0) {", "if (!received) {")]),
    Fault("unregister keeps the callback", "notify", "src/api/callbacks.cpp",
          [("  if (!isProduct(productId)) return NVX_ERROR;\n  slots.callback[0] = nullptr;\n  return NVX_OK;",
            "  if (!isProduct(productId)) return NVX_ERROR;\n  (void)slots;\n  return NVX_OK;")]),
    # The tool.
    Fault("import applied although an entry is bad", "tool", "src/support/settings_document.cpp",
          [("  if (checker.count() != 0) return ImportError{checker.take()};\n  std::stable_sort",
            "  std::stable_sort")]),
    Fault("an import that did not fully happen exits 0", "tool", "tools/mxrk7/verb_transfer.cpp",
          [("  context.out.result(doc, importText);\n  return exit;\n",
            "  context.out.result(doc, importText);\n  return Exit::Ok;\n")]),
    Fault("exit code: some mixers took it, reported as none", "tool", "tools/mxrk7/change_output.cpp",
          [("if (took < found) return Exit::Partial;", "if (took < found) return Exit::NoAccess;")]),
    Fault("per-mixer outcome: a busy mixer reported as denied", "tool", "src/support/setting_change.cpp",
          [('    case Result::Busy:\n      return "busy";\n', "    case Result::Busy:\n")]),
    Fault("word parsing: menu texts compared with case", "tool", "src/support/setting_domain.cpp",
          [("out += static_cast<char>(std::tolower(byte));", "out += static_cast<char>(byte);")]),
]


def run(args, **kwargs):
    return subprocess.run(args, cwd=ROOT, text=True, errors="replace", capture_output=True, **kwargs)


def build_folder(preset):
    return os.path.join(ROOT, "build", preset)


def apply_edits(fault):
    full = os.path.join(ROOT, fault.path)
    with open(full, encoding="utf-8") as f:
        text = f.read()
    for old, new in fault.edits:
        if text.count(old) != 1:
            raise RuntimeError(f"{fault.path}: the text to change is found {text.count(old)} times: {old!r}")
        text = text.replace(old, new)
    with open(full, "w", encoding="utf-8") as f:
        f.write(text)


def build(preset, targets):
    return run(["cmake", "--build", build_folder(preset), "--target", *targets])


def test(preset, labels):
    """Runs the tests of the labels; (number run, number failed, output)."""
    result = run(["ctest", "--test-dir", build_folder(preset), "-L", labels, "-j", "2", "--no-tests=error",
                  "--stop-on-failure", "--timeout", "300"])
    out = result.stdout + result.stderr
    finished = re.findall(r"^\s*\d+/\d+ Test\s+#\d+:.*$", out, re.M)
    ran = len(finished)
    failed = sum(1 for line in finished if not re.search(r"\bPassed\s+[\d.]+ sec$", line))
    if result.returncode != 0 and failed == 0:
        failed = -1  # no test failed, yet ctest did (nothing found, or stopped)
    return ran, failed, out


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--preset", default="dev")
    parser.add_argument("--list", action="store_true", help="list the faults and exit")
    parser.add_argument("names", nargs="*", help="run only faults whose name contains one of these")
    options = parser.parse_args()

    faults = [f for f in FAULTS if not options.names or any(n in f.name for n in options.names)]
    if options.list:
        for f in faults:
            print(f"{f.area:8} {f.name}  ({f.path})")
        return 0
    if not faults:
        print("no fault matches", file=sys.stderr)
        return 2
    paths = sorted({f.path for f in faults})
    dirty = run(["git", "status", "--porcelain", "--", *paths]).stdout.strip()
    if dirty:
        print(f"uncommitted changes in files this script edits and checks out again:\n{dirty}", file=sys.stderr)
        return 2
    if not os.path.isdir(build_folder(options.preset)):
        subprocess.run(["cmake", "--preset", options.preset], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)

    rows = []
    targets_used = set()
    for fault in faults:
        targets, labels = AREAS[fault.area]
        targets_used.update(targets)
        started = time.monotonic()
        print(f"-- {fault.name} ...", file=sys.stderr, flush=True)
        try:
            apply_edits(fault)
            built = build(options.preset, targets)
            if built.returncode != 0:
                rows.append((fault, f"-L '{labels}'", "NOT BUILT", time.monotonic() - started))
                print(built.stdout[-3000:], file=sys.stderr)
                continue
            ran, failed, out = test(options.preset, labels)
            caught = "yes" if failed > 0 else "NO" if failed == 0 else "NO (ctest failed)"
            if failed < 0:
                print(out[-2000:], file=sys.stderr)
            rows.append((fault, f"-L '{labels}': {ran} run, {max(failed, 0)} failed", caught,
                         time.monotonic() - started))
        except RuntimeError as error:
            rows.append((fault, "-", f"NOT APPLIED: {error}", time.monotonic() - started))
        finally:
            subprocess.run(["git", "checkout", "--", fault.path], cwd=ROOT, check=True)

    print("-- building again from the untouched sources", file=sys.stderr, flush=True)
    rebuilt = build(options.preset, sorted(targets_used))

    width = max(len(f.name) for f, *_ in rows)
    print(f"{'fault':{width}}  {'area':8} {'tests run':34} caught  seconds")
    for fault, tests, caught, seconds in rows:
        print(f"{fault.name:{width}}  {fault.area:8} {tests:34} {caught:7} {seconds:5.0f}")
    missed = [f for f, _, caught, _ in rows if caught != "yes"]
    print(f"{len(rows) - len(missed)} of {len(rows)} faults caught")
    if rebuilt.returncode != 0:
        print("the build from the untouched sources failed", file=sys.stderr)
        return 1
    return 1 if missed else 0


if __name__ == "__main__":
    sys.exit(main())
