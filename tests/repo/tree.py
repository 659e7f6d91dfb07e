"""The repository's own files, and the includes that a source file makes."""

import os
import re
import subprocess

SOURCE_SUFFIXES = (".h", ".cpp")


def files(root):
    """Paths relative to root: what is under version control, or in a bare copy every file outside build/."""
    if os.path.exists(os.path.join(root, ".git")):
        # Whoever owns the checkout: only its names are read.
        listed = subprocess.run(["git", "-c", "safe.directory=*", "-C", root, "ls-files", "-z"], check=True,
                                capture_output=True)
        names = listed.stdout.decode().split("\0")
        return sorted(n for n in names if n and os.path.isfile(os.path.join(root, n)))
    found = []
    for folder, subfolders, names in os.walk(root):
        relative = os.path.relpath(folder, root)
        if relative == ".":
            subfolders[:] = [s for s in subfolders if s not in ("build", ".git")]
        found += [os.path.normpath(os.path.join(relative, n)) for n in names]
    return sorted(found)


def read(root, name):
    with open(os.path.join(root, name), encoding="utf-8", errors="replace") as file:
        return file.read()


INCLUDE = re.compile(r'^[ \t]*#[ \t]*include[ \t]+(?:<([^>\n]+)>|"([^"\n]+)"|(\S+))', re.MULTILINE)
COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)


def includes(text):
    """(line number, name, quoted) of each include; a computed include comes with its macro's name."""
    text = COMMENT.sub(lambda m: "\n" * m.group().count("\n"), text)
    for match in INCLUDE.finditer(text):
        angle, quoted, macro = match.groups()
        line = text.count("\n", 0, match.start()) + 1
        yield line, angle or quoted or macro, angle is None
