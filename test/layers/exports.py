#!/usr/bin/env python3
"""The census of what the library exports.

Usage: exports.py LIBRARY LIST          compares; exit status 1 when they differ or a name is not the library's own
       exports.py LIBRARY LIST --renew  writes the list
The list holds the demangled names, sorted. nm and c++filt must be at hand.
"""
import re
import subprocess
import sys

# What the world may call, the global data, and the parts of our classes that a caller's compiler refers to.
OWN = re.compile(r"^(typeinfo for |typeinfo name for |vtable for |VTT for |guard variable for |\w[\w ]*[*&]? )?"
                 r"(RK_|RKp_G_)\w")
# The host's base class, whose type information each side emits for itself.
HOSTS = {"typeinfo for KIT_MemTrackedObject", "typeinfo name for KIT_MemTrackedObject"}
# What a host that makes its own records calls too, under the names that these always had.
OF_RECORDS = re.compile(r"^RKp_(WorldDepth|SetWorldDepth|GetPixelFormat|DepthOfPixelFormat)\(")
# What sanitizers put beside every global.
INSTRUMENTS = re.compile(r"^__(odr_)?(asan|ubsan)")


def demangled_exports(library):
    lines = subprocess.run(["nm", "-D", "--defined-only", "-P", library], check=True, capture_output=True,
                           text=True).stdout.splitlines()
    names = "\n".join(line.split()[0] for line in lines)
    shown = subprocess.run(["c++filt"], input=names, check=True, capture_output=True, text=True).stdout.splitlines()
    return sorted({name for name in shown if name and not INSTRUMENTS.match(name)})


def foreign(names):
    """Those that are not the library's own."""
    return [name for name in names if not (OWN.match(name) or OF_RECORDS.match(name) or name in HOSTS)]


def differences(now, kept):
    """What is exported and not listed, and the other way round, as lines."""
    return ([f"exported, but not listed: {name}" for name in sorted(set(now) - set(kept))] +
            [f"listed, but not exported: {name}" for name in sorted(set(kept) - set(now))])


def main():
    if len(sys.argv) not in (3, 4) or sys.argv[3:] not in ([], ["--renew"]):
        print(__doc__, file=sys.stderr)
        return 2
    library, path = sys.argv[1:3]
    now = demangled_exports(library)
    lines = [f"not the library's own: {name}" for name in foreign(now)]
    if sys.argv[3:]:
        with open(path, "w", encoding="utf-8") as kept:
            kept.write("".join(name + "\n" for name in now))
    else:
        with open(path, encoding="utf-8") as kept:
            lines += differences(now, kept.read().splitlines())
    print("\n".join(lines) if lines else f"{len(now)} names, all listed and all the library's own")
    if lines and not sys.argv[3:]:
        print("If that is meant: cmake --build BUILD --target renew_exports")
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main())
