#!/usr/bin/env python3
"""Checks the shared library's dynamic symbols against the public header.

  check_exports.py HEADER LIBRARY

Every name the header declares must be defined, nothing else may be, no name may carry a version
suffix, and the SONAME must be libNorvaneMXRK7Setup.so.<major>.
"""
import os
import re
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "cmake"))
from exported_names import exported_names  # noqa: E402


def main(header, library):
    with open(header, encoding="utf-8") as f:
        declared = set(exported_names(f.read()))
    out = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    defined = set()
    for line in out.splitlines():
        parts = line.split()
        if len(parts) >= 3:
            defined.add(parts[2])
    failures = []
    versioned = sorted(n for n in defined if "@" in n)
    if versioned:
        failures.append(f"names with a version suffix: {versioned}")
    plain = {n.split("@")[0] for n in defined}
    missing = sorted(declared - plain)
    extra = sorted(plain - declared)
    if missing:
        failures.append(f"declared in the header but not defined: {missing}")
    if extra:
        failures.append(f"exported but not in the header: {extra}")
    dyn = subprocess.run(["readelf", "-d", library], check=True, capture_output=True, text=True).stdout
    soname = re.search(r"\(SONAME\).*\[(.*)\]", dyn)
    if not soname or not re.fullmatch(r"libNorvaneMXRK7Setup\.so\.\d+", soname.group(1)):
        failures.append(f"unexpected SONAME: {soname.group(1) if soname else None}")
    for failure in failures:
        print("FAIL:", failure)
    print(f"{len(declared)} names declared, {len(plain)} exported")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1], sys.argv[2]))
