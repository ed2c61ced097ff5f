#!/usr/bin/env python3
"""Holds docs/kept.md to the "Kept:" comments of the sources. With --write, writes it anew."""
import pathlib
import re
import sys

HEAD = """# Behaviours that look like mistakes and stay

Each line is a `Kept:` comment of a source, with its file. Results depend on them: do not mend them. The page is
written by `test/docs/kept.py --write`, and a test holds it to the sources.

"""


def kept_comments(path):
    """Yields the text of each comment that begins with Kept:, its following comment lines joined."""
    text = None
    for line in path.read_text().splitlines():
        comment = re.search(r"//\s?(.*)$", line)
        start = re.search(r"//\s*Kept: ?(.*)$", line)
        if start:
            if text:
                yield text
            text = start.group(1).strip()
        elif text and comment and line.lstrip().startswith("//"):
            text += " " + comment.group(1).strip()
        elif text:
            yield text
            text = None
    if text:
        yield text


def page(root):
    lines = []
    for path in sorted(p for d in ("pkg", "refhost") for e in ("*.h", "*.cpp", "*.def") for p in (root / d).rglob(e)):
        for text in kept_comments(path):
            lines.append(f"- `{path.relative_to(root).as_posix()}`: {text}")
    return HEAD + "\n".join(lines) + "\n"


def main():
    root = pathlib.Path(__file__).resolve().parents[2]
    target = root / "docs" / "kept.md"
    now = page(root)
    if "--write" in sys.argv:
        target.write_text(now)
        return 0
    if not target.exists() or target.read_text() != now:
        print("docs/kept.md is not what the sources say: run test/docs/kept.py --write", file=sys.stderr)
        return 1
    return 0


sys.exit(main())
