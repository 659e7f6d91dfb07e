#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""setup.sh never removes a package, and says why it cannot install one.

    setup_test.py ROOT

The package manager is a script that notes what it is asked, so nothing of the machine is touched.
"""

import os
import subprocess
import sys
import tempfile
import unittest

ROOT = sys.argv[1]
APT = """#!/bin/bash
echo "$*" >>"$LOG"
[[ " $* " == *" -s "* ]] || exit 0
case "$FAULT $*" in
    removing*pulseaudio*)
        echo "Remv pipewire-alsa [0.3.65]"
        [[ "$*" != *--no-remove* ]] || { echo "E: Packages need to be removed but remove is disabled."; exit 100; } ;;
    unknown*cmake*) echo "E: Unable to locate package cmake"; exit 100 ;;
esac
"""
PROGRAMS = {"dpkg-query": "#!/bin/sh\necho installed g++\n", "apt-get": APT, "sudo": '#!/bin/sh\nexec "$@"\n'}
NEEDED = ("bash", "env", "grep", "id", "paste", "sed")


class SetUp(unittest.TestCase):
    def run_setup(self, *levels, fault="", programs=PROGRAMS):
        """What it exits with, says on standard error, and asked the package manager for."""
        with tempfile.TemporaryDirectory() as folder:
            for name, text in programs.items():
                with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
                    file.write(text)
                os.chmod(file.name, 0o755)
            for name in NEEDED:
                os.symlink(f"/bin/{name}", os.path.join(folder, name))
            log = os.path.join(folder, "log")
            environment = {"PATH": folder, "LOG": log, "FAULT": fault}
            run = subprocess.run([f"{ROOT}/setup.sh", *levels], env=environment, capture_output=True, text=True)
            asked = []
            if os.path.exists(log):
                with open(log, encoding="utf-8") as file:
                    asked = [line.split() for line in file]
            return run.returncode, run.stderr, asked

    def test_what_is_missing_is_installed_after_a_simulation_and_removing_is_off(self):
        status, _, asked = self.run_setup()
        self.assertEqual(0, status)
        update, simulated, installed = asked
        self.assertEqual("update", update[0])
        self.assertEqual(["-s", *installed], simulated)
        self.assertIn("--no-remove", installed)
        self.assertIn("qt6-base-dev", installed)
        for package in ("g++", "xvfb", "openbox", "pulseaudio", "libgtest-dev"):  # there already, or not for playing
            self.assertNotIn(package, installed)

    def test_nothing_is_installed_where_one_cannot_be_and_it_is_named(self):
        for fault, said in (("removing", "pulseaudio cannot be installed without removing pipewire-alsa"),
                            ("unknown", "Unable to locate package cmake")):
            with self.subTest(fault):
                status, message, asked = self.run_setup("test", fault=fault)
                self.assertEqual(1, status)
                self.assertIn(said, message)
                self.assertTrue(all("-s" in words or words[0] == "update" for words in asked), asked)

    def test_beside_pipewire_no_pulseaudio_is_wanted(self):
        _, _, asked = self.run_setup("sound", programs={**PROGRAMS, "pipewire-pulse": "#!/bin/sh\n"})
        self.assertIn("wireplumber", asked[-1])
        self.assertNotIn("pulseaudio", asked[-1])

    def test_without_apt_what_is_missing_is_probed_for(self):
        programs = {"c++": "#!/bin/sh\n", "pkg-config": '#!/bin/sh\n[ "$2" != libpulse ]\n', "cmake": "#!/bin/sh\n"}
        status, message, _ = self.run_setup(programs=programs)
        self.assertEqual(1, status)
        missing = message.splitlines()[0].split()
        self.assertIn("libpulse", missing)
        self.assertIn("ninja", missing)
        self.assertFalse({"Qt6Widgets", "c++", "gsm/gsm.h"} & set(missing), missing)


unittest.main(argv=sys.argv[:1])
