#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""A private session, and play.sh in one: apart from others, true to what it says, and gone however it ends.

    session_test.py ROOT PLAYER
"""

import array
import os
import pathlib
import re
import shutil
import signal
import subprocess
import sys
import time
import unittest

ROOT, PLAYER = sys.argv[1:3]
REPORT = 'echo "$TRV_SESSION $HOME $XDG_RUNTIME_DIR $DBUS_SESSION_BUS_ADDRESS $DISPLAY $TRV_SOUND $(pactl get-default-sink)";'


def processes_of(session):
    """Those whose environment or command line names the session."""
    found = []
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            environment, command = (pathlib.Path("/proc", pid, name).read_bytes() for name in ("environ", "cmdline"))
            if session.encode() in environment + command:
                found.append((pid, command))
        except OSError:
            pass  # ended meanwhile, or somebody else's
    return found


class Session(unittest.TestCase):
    def start(self, *command):
        # A process group of its own, as a terminal provides it, so that the test can press Ctrl+C.
        environment = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY")}
        process = subprocess.Popen(command, cwd=ROOT, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                                   env=environment, start_new_session=True)
        self.addCleanup(process.stdout.close)
        self.addCleanup(process.stderr.close)
        return process

    def session(self, command, *options):
        process = self.start("scripts/private-session", *options, "bash", "-c", REPORT + command)
        return process, process.stdout.readline().split()

    def assert_gone(self, session):
        deadline = time.monotonic() + 5
        while processes_of(session) and time.monotonic() < deadline:
            time.sleep(0.02)
        self.assertEqual([], processes_of(session))

    def test_two_at_once_are_apart_and_pass_the_status_on(self):
        servers = ["pulseaudio", "pipewire"]
        if not shutil.which("pipewire-pulse"):
            servers[1] = "pulseaudio"
        runs = [self.session("sleep 0.3; exit 7", "--bus", *["--pipewire"] * (name == "pipewire"))
                for name in servers if shutil.which(name)]
        for process, report in runs:
            self.assertEqual(7, process.wait(20), process.stderr.read())
            self.assertTrue(all(report[0] in place for place in report[:4]), report)
            self.assertIn(report[5], servers)
            self.assertEqual("test", report[6])
            self.assertFalse(os.path.exists(report[0]))
            self.assert_gone(report[0])
        reports = [report for _, report in runs]
        self.assertEqual(5 * len(reports), len(set(sum((report[:5] for report in reports), []))))

    def test_stopped_in_any_way_it_leaves_no_process(self):
        for name, command, how, status in (("waiting", "sleep 60", signal.SIGTERM, 143),
                                           ("stopped server", "kill -STOP $TRV_PULSE_PID; sleep 60", signal.SIGTERM, 143),
                                           ("deaf command", "trap '' TERM; sleep 5", signal.SIGTERM, 143),
                                           ("killed outright", "sleep 2", signal.SIGKILL, -9)):
            with self.subTest(name):
                process, report = self.session(command)
                process.send_signal(how)
                self.assertEqual(status, process.wait(10))
                self.assert_gone(report[0])
                self.assertEqual(how == signal.SIGKILL, os.path.exists(report[0]))
                shutil.rmtree(report[0], ignore_errors=True)

    def said(self, process):
        """The screenshot's command, the recording's command and the session's folder."""
        text = ""
        while "until it ends" not in text:
            line = process.stderr.readline()
            self.assertTrue(line, text)
            text += line
        return [re.search(pattern, text).group(1) for pattern in
                (r"(DISPLAY=.*import.*)", r"(parec.*)", r"until it ends: (.*)")]

    def test_play_shows_and_sounds_as_it_says_and_an_interrupt_leaves_nothing(self):
        process = self.start("./play.sh", "--player", PLAYER)
        look, listen, session = self.said(process)
        sound = subprocess.run(f"cd {session}; timeout 4 {listen}; {look}; cat sound.raw", shell=True,
                               capture_output=True, check=True).stdout
        samples = array.array("h", sound[:len(sound) // 2 * 2])
        self.assertGreater(len(samples), 8000)
        self.assertGreater(max(map(abs, samples)), 1000)
        colours = subprocess.check_output(["identify", "-format", "%k", f"{session}/screen.png"])
        # A photograph has thousands; an empty window and its frame have a few dozen.
        self.assertGreater(int(colours), 1000)
        os.killpg(process.pid, signal.SIGINT)
        self.assertEqual(130, process.wait(20))
        self.assertFalse(os.path.exists(session))
        self.assert_gone(session)

    def test_play_closes_the_window_in_time_and_names_a_message_that_is_not_there(self):
        self.assertEqual(0, self.start("./play.sh", "--for", "1", "--player", PLAYER).wait(30))
        process = self.start("./play.sh", "--player", PLAYER, "no such message.trv")
        self.assertEqual(1, process.wait(20))
        self.assertIn("no such message.trv", process.stderr.read())


unittest.main(argv=sys.argv[:1])
