#!/usr/bin/env python3
"""What the command line, a second player and the desktop's file types do at start-up.

    startup_test.py TRVPLAYER TRVDUMP SAMPLES      in a private session with a display and a sound server
"""

import os
import shutil
import sys
import tempfile
import unittest

import desktop
from desktop import TITLE, run, wait_for, windows


class StartUp(desktop.DesktopTest):
    def setUp(self):
        self.folder = tempfile.mkdtemp(dir=os.environ["TRV_SESSION"])
        for name in ("HELLO.TRV", "hello.trv.bak", "-hello.trv", "hello.trv"):
            shutil.copy(self.sample("greeting-voice.trv"), os.path.join(self.folder, name))

    def path(self, name):
        return os.path.join(self.folder, name)

    def test_the_words_of_the_command_line(self):
        cases = (
            ("capitals", [self.path("HELLO.TRV")], "HELLO.TRV"),
            ("another extension", [self.path("hello.trv.bak")], None),
            ("no extension", ["a"], None),
            ("a switch", ["-hello.trv"], None),
            ("a switch, then a message", ["-x", "hello.trv"], "hello.trv"),
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

    def test_of_many_started_at_once_one_stays(self):
        players = [self.start() for _ in range(12)]
        wait_for(lambda: sum(p.process.poll() is None for p in players) == 1, seconds=30, what="a single player")
        survivor = next(p for p in players if p.process.poll() is None)
        survivor.main_window()
        self.assert_stays(lambda: survivor.process.poll() is None)
        self.assertEqual([0] * 11, [p.process.poll() for p in players if p is not survivor])

    def test_the_desktop_knows_the_file_type_afterwards(self):
        self.start().main_window()

        def kind():
            return run("gio", "info", "-a", "standard::content-type", self.path("HELLO.TRV"))

        # The desktop's programs that do the rest are not waited for at start-up.
        wait_for(lambda: "application/x-trivelle-message" in kind(), what="the file type")
        entry = run("xdg-mime", "query", "default", "application/x-trivelle-message").strip()
        found = [os.path.join(folder, entry) for folder, _, names in os.walk(os.environ["XDG_DATA_HOME"])
                 if entry in names]
        self.assertEqual(1, len(found), f"it is opened by {entry!r}")
        with open(found[0], encoding="utf-8") as file:
            self.assertIn(os.path.basename(self.program), file.read())


if __name__ == "__main__":
    desktop.main()
