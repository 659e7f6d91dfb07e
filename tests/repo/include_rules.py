#!/usr/bin/env python3
"""Who may include whom.

    include_rules.py ROOT DECODER_SOURCE...

The decoders stand alone, the player sees only framework-shaped headers, the layer never looks up at the
player, Qt and libpulse each stay in their one folder, and nothing that ships includes tests.
"""

import os
import sys
import tempfile
import unittest

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
PLAYER = ("app", "playback", "audio", "video", "controls", "volume")

# What each part may include besides the C++ library: folders of this repository, and libraries.
RULES = {
    "decoders": (("playback", "video"), ("gsm", "intrinsics")),
    "player": (PLAYER + ("res", "platform/framework", "platform/sound", "platform/shell"), ("gsm",)),
    "res": (("res", "platform/framework"), ()),
    "platform/framework": (("platform",), ("system",)),
    "platform/qt": (("platform",), ("system", "qt")),
    "platform/sound": (("platform",), ("system",)),
    "platform/pulse": (("platform",), ("system", "pulse")),
    "platform/shell": (("platform",), ("system",)),
    "tools": (("tools", "playback", "video"), ("gsm", "system", "qt", "sndfile")),
    "bench": (PLAYER + ("bench", "tests", "tools", "res", "platform"),
              ("gsm", "system", "qt", "sndfile", "benchmark", "pictures")),
    "tests": (PLAYER + ("tests", "tools", "res", "platform"), ("gsm", "system", "qt", "sndfile", "gtest")),
}


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


def part_of(name, decoders):
    if name in decoders:
        return "decoders"
    for part in RULES:
        if inside(name, part):
            return part
    return "player" if name.split("/")[0] in PLAYER else None


def with_headers(root, sources):
    """The decoders' files: their sources, and every header of this repository that these draw in."""
    seen, waiting = set(), list(sources)
    while waiting:
        name = waiting.pop()
        if name in seen or not os.path.isfile(os.path.join(root, name)):
            continue
        seen.add(name)
        for _, target, quoted in tree.includes(tree.read(root, name)):
            if quoted and target.split("/")[0] in ("playback", "video"):
                waiting.append(target)
    return seen


def violations(root, decoder_sources):
    found = []
    decoders = with_headers(root, decoder_sources)
    for name in tree.files(root):
        if not name.endswith(tree.SOURCE_SUFFIXES):
            continue
        part = part_of(name, decoders)
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
            elif part == "decoders" and target not in decoders:
                found.append(where)
            elif not os.path.isfile(os.path.join(root, target)):
                found.append(f"{where}, which does not exist")
    return found


class IncludeRules(unittest.TestCase):
    root = None
    decoder_sources = ()

    def test_the_repository_keeps_them(self):
        self.assertTrue(self.decoder_sources)
        self.assertEqual([], violations(self.root, self.decoder_sources))

    def test_each_forbidden_include_is_found(self):
        files = ("playback/message_file.h", "playback/panel.h", "video/vdec.h", "app/app.h", "tests/ref.h",
                 "bench/run.h", "res/resource.h", "tools/maker.h", "platform/framework/afxwin.h",
                 "platform/qt/window.h", "platform/sound/driver.h", "platform/pulse/driver.h",
                 "platform/shell/run_program.h")
        cases = (
            ("video/vdec.cpp", "<vector>", True),
            ("video/vdec.cpp", '"playback/message_file.h"', True),
            ("video/vdec.cpp", "<gsm.h>", True),
            ("video/vdec.cpp", "<immintrin.h>", True),
            ("video/vdec.cpp", "<unistd.h>", False),
            ("video/vdec.cpp", '"platform/framework/afxwin.h"', False),
            ("video/vdec.cpp", '"app/app.h"', False),
            ("video/vdec.h", '"platform/sound/driver.h"', False),
            ("app/app.cpp", '"video/vdec.h"', True),
            ("app/app.cpp", '"platform/shell/run_program.h"', True),
            ("app/app.cpp", '"res/resource.h"', True),
            ("app/app.cpp", '"platform/qt/window.h"', False),
            ("app/app.cpp", '"platform/pulse/driver.h"', False),
            ("app/app.cpp", "<QString>", False),
            ("app/app.cpp", '"tests/ref.h"', False),
            ("app/app.cpp", '"bench/run.h"', False),
            ("app/app.cpp", '"tools/maker.h"', False),
            ("app/app.cpp", '"app.h"', False),
            ("app/app.cpp", '"app/missing.h"', False),
            ("app/app.cpp", "HEADER", False),
            ("controls/bar.cpp", "<pulse/pulseaudio.h>", False),
            ("platform/framework/wnd.cpp", '"app/app.h"', False),
            ("platform/framework/wnd.cpp", "<QtWidgets/QWidget>", False),
            ("platform/qt/window.cpp", "<QWidget>", True),
            ("platform/qt/window.cpp", "<pulse/pulseaudio.h>", False),
            ("platform/qt/window.cpp", '"playback/panel.h"', False),
            ("platform/pulse/driver.cpp", "<pulse/pulseaudio.h>", True),
            ("platform/pulse/driver.cpp", "<QTimer>", False),
            ("platform/shell/run_program.cpp", "<sys/socket.h>", True),
            ("platform/shell/run_program.cpp", '"tests/ref.h"', False),
            ("tools/dump.cpp", "<QImage>", True),
            ("tools/dump.cpp", '"app/app.h"', False),
            ("tests/test_panel.cpp", '"playback/panel.h"', True),
        )
        for where, include, allowed in cases:
            with self.subTest(file=where, include=include), tempfile.TemporaryDirectory() as root:
                for name in files:
                    os.makedirs(os.path.join(root, os.path.dirname(name)), exist_ok=True)
                    with open(os.path.join(root, name), "w", encoding="utf-8") as file:
                        file.write("#pragma once\n")
                os.makedirs(os.path.join(root, os.path.dirname(where)), exist_ok=True)
                with open(os.path.join(root, where), "a", encoding="utf-8") as file:
                    file.write(f"/* <QString>\n#include <QString> */\n  # include {include}\n")
                sources = ["playback/message_file.h", "video/vdec.h", "video/vdec.cpp"]
                found = violations(root, sources)
                self.assertEqual(0 if allowed else 1, len(found), found)
                if found:
                    self.assertIn(where, found[0])


if __name__ == "__main__":
    IncludeRules.root = sys.argv[1]
    IncludeRules.decoder_sources = [os.path.relpath(s, sys.argv[1]) for s in sys.argv[2:]]
    unittest.main(argv=sys.argv[:1])
