#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What the command line, a second player and the desktop's file types do at start-up.

    startup_test.py TRVPLAYER TRVDUMP SAMPLES      in a private session with a display and a sound server
"""

import contextlib
import os
import shutil
import socket
import sys
import subprocess
import tempfile
import time
import unittest
from unittest import mock

import desktop
from desktop import TITLE, run, wait_for, windows


class StartUp(desktop.DesktopTest):
    def setUp(self):
        self.folder = tempfile.mkdtemp(dir=os.environ["TRV_SESSION"])
        for name in ("HELLO.TRV", "hello.trv.bak", "-hello.trv", "hello.trv"):
            shutil.copy(self.sample("greeting-voice.trv"), os.path.join(self.folder, name))

    def path(self, name):
        return os.path.join(self.folder, name)

    def stopped(self, *words, **environment):
        """What a player that has opened a message and been stopped looks like, once that no longer changes."""
        with mock.patch.dict(os.environ, environment):
            player = self.start(*words)
        window = player.main_window()
        self.wait_for_title(window, f"{TITLE} - {os.path.basename(words[-1])}")
        self.keys("XF86AudioStop")

        def image():
            before = self.grab(window).data
            time.sleep(0.5)
            return before if self.grab(window).data == before else None

        image = wait_for(image, what="a window that stays as it is")
        player.kill()
        return image

    def test_help_and_version_need_no_display(self):
        usage = "usage: trvplayer [MESSAGE...]"
        for words, first in (["--help"], usage), (["x.trv", "-h"], usage), (["--version"], "trvplayer 1.0"):
            with self.subTest(words):
                ended = subprocess.run([self.program, *words], env={}, capture_output=True, text=True, check=False)
                self.assertEqual((0, first, ""), (ended.returncode, ended.stdout.splitlines()[0], ended.stderr))

    def test_a_decimal_comma_changes_no_text(self):
        with open(self.path("comma"), "w", encoding="ascii") as file:
            file.write('LC_NUMERIC\ndecimal_point ","\nthousands_sep "."\ngrouping 3;3\nEND LC_NUMERIC\n')
        run("localedef", "-c", "-i", self.path("comma"), self.path("xx"))
        comma = {"LC_ALL": "", "LANG": "C.UTF-8", "LC_NUMERIC": "xx", "LOCPATH": self.folder}
        with mock.patch.dict(os.environ, comma):
            self.assertEqual("1,5", run("/usr/bin/printf", "%.1f", "1,5"))
        message = self.path("hello.trv")
        self.assertTrue(self.stopped(message) == self.stopped(message, **comma), "the window looks different")

    def test_the_words_of_the_command_line(self):
        cases = (
            ("capitals", [self.path("HELLO.TRV")], "HELLO.TRV"),
            ("another extension", [self.path("hello.trv.bak")], None),
            ("no extension", ["a"], None),
            ("a switch", ["-hello.trv"], None),
            ("what is none, then a message", ["-x", "hello.trv.bak", "hello.trv"], "hello.trv"),
            ("two messages", [self.path("hello.trv"), self.path("HELLO.TRV")], "hello.trv"),
            ("nothing", [], None),
        )
        for name, words, played in cases:
            with self.subTest(name):
                player = self.start(*words, folder=self.folder)
                window = player.main_window()
                if played:
                    self.wait_for_title(window, f"{TITLE} - {played}")
                else:
                    self.assert_stays(lambda: desktop.title(window) == TITLE, 0.3)
                self.assertEqual([window], windows(player.pid, f"^{TITLE}"))
                player.kill()

    def test_a_missing_message_is_reported(self):
        player = self.start(self.path("gone.trv"))
        wait_for(lambda: len(windows(player.pid, f"^{TITLE}")) == 2, what="the message box")

    def test_the_newest_player_stays(self):
        old = self.start(self.path("hello.trv"))
        self.wait_for_title(old.main_window(), f"{TITLE} - hello.trv")
        new = self.start(self.path("HELLO.TRV"))
        self.assertEqual(0, old.ended())
        self.wait_for_title(new.main_window(), f"{TITLE} - HELLO.TRV")

    def test_a_newer_player_closes_one_with_a_box_or_dialog_up(self):
        cases = (
            ("About", [], ("alt+h", "a")),
            ("Open", [], ("ctrl+o",)),
            ("message box", [self.path("gone.trv")], ()),
            ("menu", [], ("alt+f",)),
        )
        old = None
        for name, words, keys in cases:
            with self.subTest(name):
                player = self.start(*words)
                if old:
                    self.assertEqual(0, old.ended())
                if keys:
                    player.main_window()
                    before = len(windows(player.pid))
                    self.keys(*keys)
                    wait_for(lambda: len(windows(player.pid)) > before, what=name)
                else:
                    wait_for(lambda: len(windows(player.pid, f"^{TITLE}")) == 2, what=name)
                old = player
        self.start()
        self.assertEqual(0, old.ended())

    def test_requests_to_close_that_meet_the_players_end(self):
        folder = os.environ["XDG_RUNTIME_DIR"]
        for _ in range(3):
            player = self.start(self.path("hello.trv"))
            player.main_window()
            [name] = [n for n in os.listdir(folder) if n.endswith(".socket")]
            # One request after the other, as newer players would send them, until the process has gone.
            while player.process.poll() is None:
                with socket.socket(socket.AF_UNIX, socket.SOCK_SEQPACKET) as newer, contextlib.suppress(OSError):
                    newer.setblocking(False)
                    newer.connect(os.path.join(folder, name))
                    newer.send(b"close")
            self.assertEqual(0, player.process.returncode)

    def test_of_many_started_at_once_one_stays(self):
        players = [self.start() for _ in range(12)]
        wait_for(lambda: sum(p.process.poll() is None for p in players) == 1, seconds=60, what="a single player")
        survivor = next(p for p in players if p.process.poll() is None)
        survivor.main_window()
        self.assert_stays(lambda: survivor.process.poll() is None)
        self.assertEqual([0] * 11, [p.process.poll() for p in players if p is not survivor])

    def test_the_desktop_knows_the_file_type_afterwards(self):
        # Not the machine's own data, which may have the player installed.
        patch = mock.patch.dict(os.environ, XDG_DATA_DIRS=self.folder)
        patch.start()
        self.addCleanup(patch.stop)
        self.start().main_window()

        def kind():
            return run("gio", "info", "-a", "standard::content-type", self.path("HELLO.TRV"))

        # The desktop's programs that do the rest are not waited for at start-up.
        wait_for(lambda: "application/x-trivelle-message" in kind(), what="the file type")
        entry = wait_for(lambda: run("xdg-mime", "query", "default", "application/x-trivelle-message").strip(),
                         seconds=60, what="the type's program")
        found = [os.path.join(folder, entry) for folder, _, names in os.walk(os.environ["XDG_DATA_HOME"])
                 if entry in names]
        self.assertEqual(1, len(found), f"it is opened by {entry!r}")
        with open(found[0], encoding="utf-8") as file:
            self.assertIn(os.path.basename(self.program), file.read())


if __name__ == "__main__":
    desktop.main()
