#!/usr/bin/env python3
"""Who may include whom.

    include_rules.py ROOT

The decoders stand alone, the player's folders stand one on the other and see only framework-shaped headers, the
layer never looks up at the player, Qt and libpulse each stay in their one folder, and nothing that ships includes
tests. The build's include directories hold the same order; this adds which libraries each folder may use.
"""

import os
import sys

import tree

CXX = """algorithm any array atomic barrier bit bitset charconv chrono codecvt compare complex concepts
condition_variable coroutine deque exception execution filesystem format forward_list fstream functional
future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string
string_view strstream syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map
unordered_set utility valarray variant vector version cassert cctype cerrno cfenv cfloat cinttypes climits
clocale cmath csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar
cwctype""".split()
# From the bottom: a folder includes those before it.
PLAYER = ("controls", "volume", "audio", "video", "playback", "app")

# What each part may include besides the C++ library: folders of this repository, and libraries.
RULES = {
    "codec": (("codec",), ("gsm", "intrinsics")),
    "res": (("res", "platform/framework"), ()),
    "platform/framework": (("platform/framework",), ("system",)),
    "platform/sound": (("platform/sound", "platform/framework"), ("system",)),
    "platform/shell": (("platform/shell", "platform/framework"), ("system",)),
    "platform/qt": (("platform/qt", "platform/framework", "platform/shell"), ("system", "qt")),
    "platform/pulse": (("platform/pulse", "platform/sound", "platform/framework"), ("system", "pulse")),
    "tools": (("tools", "codec"), ("gsm", "system", "qt", "sndfile")),
    "bench": (PLAYER + ("bench", "codec", "tests", "tools", "res", "platform"),
              ("gsm", "system", "qt", "sndfile", "benchmark", "pictures")),
    "tests": (PLAYER + ("codec", "tests", "tools", "res", "platform"),
              ("gsm", "system", "qt", "sndfile", "gtest")),
}
for place, room in enumerate(PLAYER):
    RULES[room] = (PLAYER[:place + 1] + ("codec", "res", "platform/framework", "platform/sound", "platform/shell"),
                   ("gsm",))


def inside(name, folder):
    return name.startswith(folder + "/")


def library(name):
    """Which library an include in angle brackets belongs to."""
    # The compiler's own intrinsics come with the language.
    if name in CXX or name.endswith("intrin.h"):
        return "std"
    if name in ("gsm.h", "gsm/gsm.h"):
        return "gsm"
    if inside(name, "pulse"):
        return "pulse"
    if name.startswith("Q") or name.split("/")[0].startswith(("qpa", "Qt", "private")):
        return "qt"
    if name in ("sndfile.h", "sndfile.hh", "samplerate.h"):
        return "sndfile"
    if name.startswith(("gtest/", "gmock/")):
        return "gtest"
    if inside(name, "benchmark"):
        return "benchmark"
    if name == "turbojpeg.h" or name.startswith("openjpeg-"):
        return "pictures"
    if os.path.exists(os.path.join("/usr/include", name)) and not inside(name, "X11"):
        return "system"
    if name.endswith("intrin.h"):
        return "intrinsics"
    # The C library's kernel headers, which Debian keeps in a folder of the machine's kind.
    return "system" if inside(name, "sys") else "unknown"


def part_of(name):
    return next((part for part in RULES if inside(name, part)), None)


def violations(root):
    found = []
    for name in tree.files(root):
        if not name.endswith(tree.SOURCE_SUFFIXES):
            continue
        part = part_of(name)
        if part is None:
            found.append(f"{name}: lies in no known folder")
            continue
        folders, libraries = RULES[part]
        for line, target, quoted in tree.includes(tree.read(root, name)):
            where = f"{name}:{line}: {part} includes {target}"
            if not quoted:
                if library(target) not in ("std",) + libraries:
                    found.append(where)
            elif target.endswith(".moc"):
                if "qt" not in libraries:
                    found.append(where)
            elif not any(inside(target, f) for f in folders):
                found.append(where)
            elif not os.path.isfile(os.path.join(root, target)):
                found.append(f"{where}, which does not exist")
    return found


def main():
    found = violations(sys.argv[1])
    print("\n".join(found))
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
