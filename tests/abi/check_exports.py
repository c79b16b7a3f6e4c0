#!/usr/bin/env python3
"""Checks the shared library's dynamic symbols against the public header, and that each program
holds one copy of the library's code.

  check_exports.py HEADER LIBRARY
      Every name the header declares must be defined, nothing else may be, no name may carry a
      version suffix, and the SONAME must be libNorvaneMXRK7Setup.so.<major>.

  check_exports.py --programs LIBRARY PROGRAM_DIR CARRIER...
      No program in PROGRAM_DIR both loads the shared library and defines functions of the
      library's code itself (two copies of the core). Each CARRIER (the tool, the setup
      application: paths) carries the core: it defines the exported functions itself, loads no
      shared library of ours and has no RPATH or RUNPATH.
"""
import os
import re
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "cmake"))
from exported_names import exported_names  # noqa: E402


def declared_names(header):
    with open(header, encoding="utf-8") as f:
        return set(exported_names(f.read()))


def defined_names(path, dynamic=False, types=None):
    """Names defined in the file (its dynamic symbols, or its whole symbol table), of the given nm
    symbol types only when `types` is given."""
    args = ["nm", "--defined-only"] + (["-D"] if dynamic else []) + [path]
    out = subprocess.run(args, check=True, capture_output=True, text=True).stdout
    return {parts[2] for parts in (line.split() for line in out.splitlines())
            if len(parts) >= 3 and (types is None or parts[1] in types)}


def dynamic_section(path):
    return subprocess.run(["readelf", "-d", path], check=True, capture_output=True, text=True).stdout


def check_library(header, library):
    declared = declared_names(header)
    defined = defined_names(library, dynamic=True)
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
    soname = re.search(r"\(SONAME\).*\[(.*)\]", dynamic_section(library))
    if not soname or not re.fullmatch(r"libNorvaneMXRK7Setup\.so\.\d+", soname.group(1)):
        failures.append(f"unexpected SONAME: {soname.group(1) if soname else None}")
    print(f"{len(declared)} names declared, {len(plain)} exported")
    return failures


def is_elf_program(path):
    if not os.path.isfile(path) or not os.access(path, os.X_OK):
        return False
    with open(path, "rb") as f:
        return f.read(4) == b"\x7fELF"


def check_programs(library, folder, carriers):
    # The core's functions: every function of the shared library, hidden ones included. A program
    # that defines one of them as a global function of its own carries the core.
    # (C++ functions and the exported C functions: not the start-up code every file has.)
    exported = defined_names(library, dynamic=True, types="T")
    core = {n for n in defined_names(library, types="Tt") if n.startswith("_Z") or n in exported}
    failures = []
    programs = sorted(os.path.join(folder, p) for p in os.listdir(folder) if is_elf_program(os.path.join(folder, p)))
    for path in sorted(set(programs) | set(carriers)):
        name = os.path.basename(path)
        dynamic = dynamic_section(path)
        loads_library = re.search(r"\(NEEDED\).*\[libNorvaneMXRK7Setup\.so", dynamic) is not None
        own = core & defined_names(path, types="T")
        if path in carriers:
            if loads_library:
                failures.append(f"{name} loads the shared library")
            if re.search(r"\((RPATH|RUNPATH)\)", dynamic):
                failures.append(f"{name} has an RPATH or RUNPATH")
            if not own & exported:
                failures.append(f"{name} does not carry the library's code")
        elif loads_library and own:
            failures.append(f"{name} loads the shared library and carries {len(own)} of its functions, "
                            f"such as {sorted(own)[0]}")
    print(f"{len(programs)} programs checked")
    return failures


def main(argv):
    if len(argv) >= 5 and argv[1] == "--programs":
        failures = check_programs(argv[2], argv[3], argv[4:])
    elif len(argv) == 3:
        failures = check_library(argv[1], argv[2])
    else:
        print(__doc__, file=sys.stderr)
        return 2
    for failure in failures:
        print("FAIL:", failure)
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
