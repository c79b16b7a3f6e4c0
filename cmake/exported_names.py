#!/usr/bin/env python3
"""Lists the names that the public header exports: every NVX_API function and variable.

  exported_names.py --list HEADER          prints one name a line
  exported_names.py --map HEADER OUT       writes a linker version script exporting exactly those
"""
import re
import sys


def exported_names(header_text):
    text = re.sub(r"/\*.*?\*/", " ", header_text, flags=re.S)
    text = re.sub(r"//[^\n]*", " ", text)
    text = re.sub(r"^\s*#.*$", " ", text, flags=re.M)  # preprocessor lines define NVX_API itself
    names = []
    for decl in re.findall(r"\bNVX_API\b([^;]*);", text):
        decl = " ".join(decl.split())
        if decl.startswith("extern"):
            # extern const char *const Name[48]  /  extern int32_t name
            match = re.search(r"(\w+)\s*(\[[^\]]*\]\s*)*$", decl)
        else:
            match = re.search(r"(\w+)\s*\(", decl)
        if not match:
            raise SystemExit(f"cannot read the declaration: {decl}")
        names.append(match.group(1))
    return sorted(set(names))


def main(argv):
    if len(argv) >= 3 and argv[1] == "--list":
        with open(argv[2], encoding="utf-8") as f:
            print("\n".join(exported_names(f.read())))
        return 0
    if len(argv) == 4 and argv[1] == "--map":
        with open(argv[2], encoding="utf-8") as f:
            names = exported_names(f.read())
        with open(argv[3], "w", encoding="utf-8") as out:
            out.write("{\n  global:\n")
            for name in names:
                out.write(f"    {name};\n")
            out.write("  local: *;\n};\n")
        return 0
    print(__doc__, file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv))
