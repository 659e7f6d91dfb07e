#!/usr/bin/env python3
"""Rules for single files: their length, paths that exist on one machine only, and the style.

    file_rules.py ROOT
"""

import re
import subprocess
import sys

import tree

LINES = 450
CODE = tree.SOURCE_SUFFIXES + (".py", ".sh", ".cmake", "CMakeLists.txt")
TEXT = CODE + (".md", ".txt", ".json", ".in", ".rc", ".svg", ".supp", ".yml")
# Nobody's machine has the home of the examples' Ida.
MACHINE_PATH = re.compile(r"(?<![\w.$}])/(?:work/|root/|Users/|home/(?!ida/))\w|\.\./shared")


def main():
    root = sys.argv[1]
    found = []
    sources = []
    for name in tree.files(root):
        if not name.endswith(TEXT) and "." in name.rsplit("/", 1)[-1]:
            continue
        text = tree.read(root, name)
        lines = text.splitlines()
        # Tables are data; they are as long as what they list.
        if name.endswith(CODE) and "table" not in name and len(lines) > LINES:
            found.append(f"{name}: {len(lines)} lines, more than {LINES}")
        for number, line in enumerate(lines, 1):
            if MACHINE_PATH.search(line):
                found.append(f"{name}:{number}: a path of one machine: {line.strip()[:80]}")
        if name.endswith(tree.SOURCE_SUFFIXES):
            sources.append(name)
    style = subprocess.run(["clang-format", "--dry-run", *sources], cwd=root, text=True, capture_output=True)
    if style.returncode != 0:
        found.append(style.stderr)
    found += sorted({line.split(":")[0] + ": not in the style of .clang-format"
                     for line in style.stderr.splitlines() if "[-Wclang-format-violations]" in line})
    if not sources:
        found.append("no source files")
    print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
