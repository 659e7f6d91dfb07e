#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Which libraries each folder may use, how long a file may be, and no path that exists on one machine only.

    rules_test.py ROOT

Who may include whom inside the repository is held by each target's own include directories.
"""

import os
import re
import subprocess
import sys

ROOT = sys.argv[1]
LINES = 450
CODE = (".h", ".cpp", ".py", ".sh", ".cmake", "CMakeLists.txt")
TEXT = CODE + (".md", ".txt", ".json", ".in", ".rc", ".svg", ".supp", ".yml")
# Nobody's machine has the home of the examples' Ida.
MACHINE_PATH = re.compile(r"(?<![\w.$}])/(?:work/|root/|Users/|home/(?!ida/))\w|\.\./shared")
INCLUDE = re.compile(r"^\s*#\s*include\s*<(.+)>", re.MULTILINE)
CXX = "[a-z_0-9]+"  # only the C++ library's headers have neither folder nor ending
SYSTEM = r"(?!pulse/|gsm|q)[a-z_0-9/]+\.h"
# What stands in angle brackets, by the first pattern that the file's name begins with.
ALLOWED = (
    ("codec/", (CXX, SYSTEM, r"gsm(/gsm)?\.h", r"\w+intrin\.h")),
    ("platform/qt/", (CXX, SYSTEM, "Q.+", "qpa/.+")),
    ("platform/pulse/", (CXX, SYSTEM, "pulse/.+")),
    ("platform/", (CXX, SYSTEM)),
    ("audio/speed_converter.cpp", (CXX, r"sonic\.h")),
    ("(app|audio|controls|playback|res|video|volume)/", (CXX, r"gsm/gsm\.h", r"sys/stat\.h")),
    ("(tools|tests|bench)/", ("(?!pulse/).+",)),
    ("", ()),
)


def complaints(name, text):
    lines = text.splitlines()
    # Tables are data; they are as long as what they list.
    if name.endswith(CODE) and "table" not in name and len(lines) > LINES:
        yield f"{name}: {len(lines)} lines, more than {LINES}"
    yield from (f"{name}: a path of one machine: {line.strip()}" for line in lines if MACHINE_PATH.search(line))
    if name.endswith((".h", ".cpp")):
        allowed = next(allowed for folder, allowed in ALLOWED if re.match(folder, name))
        for header in INCLUDE.findall(text):
            if not any(re.fullmatch(pattern, header) for pattern in allowed):
                yield f"{name} includes <{header}>"


def main():
    # Whoever owns the checkout: only its names are read.
    names = subprocess.run(["git", "-c", "safe.directory=*", "-C", ROOT, "ls-files", "-z"], check=True,
                           capture_output=True, text=True).stdout.split("\0")
    found = []
    for name in names:
        path = os.path.join(ROOT, name)
        if os.path.isfile(path) and (name.endswith(TEXT) or "." not in os.path.basename(name)):
            with open(path, encoding="utf-8", errors="replace") as file:
                found += complaints(name, file.read())
    print("\n".join(found))
    sys.exit(1 if found or "app/main.cpp" not in names else 0)


main()
