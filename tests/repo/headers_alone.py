#!/usr/bin/env python3
"""Each header outside tests/ compiles alone, twice in a row, as the build compiles the code that uses it.

    headers_alone.py ROOT BUILD

The flags are those that BUILD/compile_commands.json has for a source file that includes the header, else for
one of the same folder.
"""

import concurrent.futures
import json
import os
import shlex
import subprocess
import sys

import tree


def flags_by_header_and_folder(root, build):
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as file:
        entries = json.load(file)
    flags = {}
    for entry in entries:
        source = os.path.relpath(os.path.realpath(entry["file"]), root)
        if not source.endswith(".cpp") or source.startswith((os.pardir, "build", "tests", "bench")):
            continue
        words = shlex.split(entry["command"])
        kept = [words[0]]
        skip = False
        for word in words[1:]:
            if skip or word == "-c" or word == entry["file"]:
                skip = False
            elif word in ("-o", "-MF", "-MT"):
                skip = True
            elif not word.startswith(("-fsanitize", "-O", "-g")):
                kept.append(word)
        kept = (kept, entry["directory"])
        flags.setdefault(os.path.dirname(source), kept)
        for _, name, quoted in tree.includes(tree.read(root, source)):
            if quoted:
                flags.setdefault(name, kept)
    return flags


def check(header, flags, any_flags):
    command, directory = flags.get(header) or flags.get(os.path.dirname(header), any_flags)
    text = f'#include "{header}"\n' * 2
    result = subprocess.run(command + ["-fsyntax-only", "-x", "c++", "-"], input=text, text=True,
                            cwd=directory, capture_output=True)
    return header, result.returncode, result.stderr


def main():
    root, build = (os.path.realpath(a) for a in sys.argv[1:3])
    flags = flags_by_header_and_folder(root, build)
    headers = [n for n in tree.files(root)
               if n.endswith(".h") and n.split("/")[0] not in ("tests", "bench")]
    if not headers or not flags:
        sys.exit("nothing to compile")
    any_flags = next(iter(flags.values()))
    failed = 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for header, status, message in pool.map(lambda h: check(h, flags, any_flags), headers):
            if status != 0:
                failed += 1
                print(f"{header} does not compile alone:\n{message}")
    print(f"{len(headers)} headers, {failed} failed")
    sys.exit(1 if failed else 0)


if __name__ == "__main__":
    main()
