#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A program's --help, manual page and completions name the same options.

    options_agree.py PROGRAM PACKAGING

PROGRAM is run without a display, bus or home, as completions and packagers run it.
"""

import os
import re
import subprocess
import sys

OPTION = re.compile(r"(?<![\w-])(--[a-z][a-z-]*|-[a-z])(?![\w-])")


def read(*parts):
    with open(os.path.join(*parts), encoding="utf-8") as file:
        return file.read()


def documented(program):
    """Options that begin a line of --help."""
    text = subprocess.run([program, "--help"], check=True, capture_output=True, text=True, env={}, timeout=10).stdout
    lines = (re.match(r" +((?:-[a-z], )?-[\w-]+)", line) for line in text.splitlines())
    return {option for line in lines if line for option in OPTION.findall(line[1])}


def in_manual(text):
    """Options in the tags of the OPTIONS section's paragraphs."""
    section = re.search(r"^\.SH OPTIONS\n(.*?)^\.SH ", text, re.S | re.M)[1].replace("\\-", "-")
    return {option for tag in re.findall(r"^\.TP\n(.*)$", section, re.M)
            for option in OPTION.findall(re.sub(r"\\f.", "", tag).replace('"', " "))}


def in_bash(name, path):
    """What bash offers for a word that begins with a hyphen."""
    script = f"""
        . /usr/share/bash-completion/bash_completion && . "$1" || exit
        COMP_WORDS=({name} -) COMP_CWORD=1 COMP_LINE='{name} -' COMP_POINT={len(name) + 2}
        _{name} {name} - {name}; printf '%s\\n' "${{COMPREPLY[@]}}"
    """
    return set(subprocess.run(["bash", "-c", script, "bash", path], check=True, capture_output=True, text=True)
               .stdout.split())


def in_zsh(text):
    """The names before each specification's description."""
    specifications = (re.match(r"    (?:'\([^)]*\)'?)?([^\[:]*)", line) for line in text.splitlines())
    return {option for match in specifications if match for option in OPTION.findall(match[1])}


def in_fish(text):
    return {"--" + word for word in re.findall(r" -l ([a-z-]+)", text)} | \
           {"-" + word for word in re.findall(r" -s ([a-z])\b", text)}


def main():
    program, packaging = sys.argv[1:3]
    name = os.path.basename(program)
    completions = os.path.join(packaging, "completions")
    expected = documented(program)
    found = {
        "manual page": in_manual(read(packaging, "man", name + ".1")),
        "zsh completion": in_zsh(read(completions, "_" + name)),
        "fish completion": in_fish(read(completions, name + ".fish")),
    }
    if os.path.exists("/usr/share/bash-completion/bash_completion"):
        found["bash completion"] = in_bash(name, os.path.join(completions, name + ".bash"))
    else:
        print("bash-completion is not installed: its completion was not tried")
    wrong = [f"{place}: lacks {sorted(expected - options)}, adds {sorted(options - expected)}"
             for place, options in found.items() if options != expected]
    print("\n".join(wrong) or f"{name}: {' '.join(sorted(expected))}")
    sys.exit(1 if wrong or len(expected) < 3 else 0)


if __name__ == "__main__":
    main()
