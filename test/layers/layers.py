#!/usr/bin/env python3
"""What may include what. Usage: layers.py SOURCE_DIR. Prints one line per fault; exit status 1 if there is one.

Headers of the library include only downwards: frame < world < passes < composite < sample < filter, colour on world;
retime on the host's headers and the chief header alone. A folder's RKp_ headers are its own, but for those of frame
and world; no public header includes one. Sources may include any family's public header. The host's headers include
only their like, the reference host those and its own, tool and modules public headers only.
"""
import pathlib
import re
import sys

BELOW = {
    "frame": {"frame"},
    "world": {"frame", "world"},
    "passes": {"frame", "world", "passes"},
    "composite": {"frame", "world", "passes", "composite"},
    "sample": {"frame", "world", "passes", "composite", "sample"},
    "filter": {"frame", "world", "passes", "composite", "sample", "filter"},
    "colour": {"frame", "world", "colour"},
    "retime": {"retime"},
}
CHIEF = "RK/indep/frame/RK.h"
FOR_ALL = {"frame", "world"}
# These know every family: two name and fill the table of their functions, the other starts them.
SEE_ALL = {"RKp_SlotBodies.h", "RK_OverFuncs.cpp", "RK_Birth.cpp"}
# The retiming engine meets the library's worlds here and nowhere else.
RETIME_BOUNDARY = re.compile(r"RK_")

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


def is_private(included):
    return pathlib.PurePosixPath(included).name.startswith("RKp_")


def family_of(included):
    parts = included.split("/")
    return parts[2] if included.startswith("RK/indep/") and len(parts) > 3 else None


def faults_of_library_file(path, family, included):
    """Why a file of pkg/RK/indep/FAMILY must not include that, or None."""
    other = family_of(included)
    header = path.suffix != ".cpp"
    if other is None:
        return None if included.startswith("RK/host/") else "only RK/host/ and RK/indep/ are for the library"
    if other not in BELOW:
        return f"there is no family {other}"
    if family == "frame" and path.name in SEE_ALL:
        return None
    if is_private(included):
        if header and path.name.startswith("RK_"):
            return "a public header includes a private one"
        if other != family and other not in FOR_ALL:
            return f"the private headers of {other} are its own"
    if family == "retime" and not (path.name.startswith("RK_") and not header):
        if other != "retime" and included != CHIEF:
            return "retime stands on the host's headers and the chief header alone"
        return None
    if header and other not in BELOW[family]:
        return f"{family} does not stand on {other}"
    return None


def fault_of(root, path, included):
    place = path.relative_to(root).parts
    if place[:3] == ("pkg", "RK", "host"):
        return None if included.startswith("RK/host/") else "the host's headers include only their like"
    if place[:3] == ("pkg", "RK", "indep"):
        return faults_of_library_file(path, place[3], included)
    if place[0] == "refhost":
        allowed = included.startswith(("RK/host/", "refhost/"))
        return None if allowed else "the reference host knows nothing of the library"
    if place[0] in ("tool", "modules"):
        return f"{place[0]} goes through public headers" if is_private(included) else None
    return None


def exists(root, path, included):
    return any((base / included).is_file() for base in (path.parent, root, root / "pkg", root / "tool"))


def check(root):
    """The faults of a tree, as lines."""
    lines = []
    for top in ("pkg/RK", "refhost", "tool", "modules"):
        for path in sorted((root / top).rglob("*")):
            if path.suffix not in (".h", ".cpp", ".def"):
                continue
            for match in INCLUDE.finditer(path.read_text(encoding="utf-8")):
                included = match.group(1)
                why = fault_of(root, path, included)
                if why is None and not exists(root, path, included):
                    why = "there is no such file"
                if why:
                    lines.append(f'{path.relative_to(root)} includes "{included}": {why}')
    return lines


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    lines = check(pathlib.Path(sys.argv[1]).resolve())
    print("\n".join(lines) if lines else "every include keeps to its layer")
    return 1 if lines else 0


if __name__ == "__main__":
    sys.exit(main())
