#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What the desktop's media controls see of the player and can have it do, with playerctl as their client.

    media_test.py TRVPLAYER TRVDUMP SAMPLES      in a private session with a display, a sound server and a bus
"""

import json
import math
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

import dbus

import desktop
from desktop import TITLE, run, wait_for, windows

NAME = "org.mpris.MediaPlayer2.trvplayer"
PATH = "/org/mpris/MediaPlayer2"
ROOT = "org.mpris.MediaPlayer2"
PLAYER = ROOT + ".Player"
PROPERTIES = "org.freedesktop.DBus.Properties"
SAVER = ("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver")
PORTAL = ("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Inhibit")


def ctl(*words):
    return run("playerctl", "-p", "trvplayer", *words).strip()


class Recorder:
    """What a program writes while it runs."""

    def __init__(self, test, *command):
        self.file = tempfile.NamedTemporaryFile(dir=os.environ["TRV_SESSION"])
        self.process = subprocess.Popen(command, stdout=self.file, stderr=self.file)
        test.addCleanup(self.end)

    def text(self):
        # Opened anew: this program and the other one share the place in what they have both inherited.
        with open(self.file.name, encoding="utf-8") as file:
            return file.read()

    def end(self):
        self.process.kill()
        self.process.wait()
        self.file.close()


class Media(desktop.DesktopTest):
    def setUp(self):
        self.folder = tempfile.mkdtemp(dir=os.environ["TRV_SESSION"])
        self.bus = dbus.SessionBus()

    def copy(self, name, sample="greeting-voice.trv"):
        path = os.path.join(os.fsencode(self.folder), os.fsencode(name))
        shutil.copy(self.sample(sample), path)
        return path

    def play(self, *arguments):
        player = self.start(*arguments)
        self.window = player.main_window()
        wait_for(lambda: ctl("status"), what="the player on the bus")
        return player

    def call(self, interface, method, *values, **keywords):
        remote = self.bus.get_object(NAME, PATH, introspect=False)
        return remote.get_dbus_method(method, interface)(*values, **keywords)

    def property(self, name):
        return self.call(PROPERTIES, "Get", PLAYER, name)

    def set(self, name, number):
        self.call(PROPERTIES, "Set", PLAYER, name, dbus.Double(number, variant_level=1))

    def wait_for_state(self, title, status):
        wait_for(lambda: (ctl("metadata", "title"), ctl("status")) == (title, status),
                 what=f"{title!r} {status}, not {ctl('metadata', 'title')!r} {ctl('status')}")

    def test_every_command_of_playerctl(self):
        self.copy("voice 2.trv")
        self.copy("voice 10.trv")
        player = self.play(self.copy("Voice 1.trv"))
        url = "file://" + self.folder.replace(" ", "%20") + "/"
        # What is done, and what must then be answered.
        cases = (
            (["pause"], ["status"], "Paused"),
            (["pause"], ["status"], "Paused"),
            (["position", "5"], ["position"], "5.000000"),
            (["position", "3-"], ["position"], "2.000000"),
            (["position", "1+"], ["position"], "3.000000"),
            (["position", "60-"], ["position"], "0.000000"),
            (["play"], ["status"], "Playing"),
            (["play-pause"], ["status"], "Paused"),
            (["next"], ["metadata", "title"], "voice 2"),
            ([], ["status"], "Paused"),
            (["play"], ["status"], "Playing"),
            (["next"], ["metadata", "xesam:url"], url + "voice%2010.trv"),
            ([], ["status"], "Playing"),
            (["stop"], ["status"], "Stopped"),
            (["previous"], ["metadata", "title"], "voice 2"),
            ([], ["status"], "Stopped"),
            (["open", url + "Voice%201.trv"], ["metadata", "title"], "Voice 1"),
            ([], ["status"], "Playing"),
            (["position", "100+"], ["metadata", "title"], "voice 2"),  # beyond the end is the next one
            (["volume", "0.4"], ["volume"], "0.4000"),
            (["volume", "0.1+"], ["volume"], "0.5000"),
            (["pause"], ["--format", "{{lc(status)}} {{duration(mpris:length)}}", "metadata"], "paused 0:10"),
            (["loop", "Track"], ["loop"], ""),
            (["shuffle", "On"], ["shuffle"], ""),
            ([], ["-l"], "trvplayer"),
        )
        for words, question, expected in cases:
            with self.subTest(words=words, question=question):
                if words:
                    ctl(*words)
                wait_for(lambda: ctl(*question).startswith(expected), seconds=10,
                         what=f"{expected!r}, not {ctl(*question)!r}")
        self.call(ROOT, "Raise")
        self.call(ROOT, "Quit")
        self.assertEqual(0, player.ended())
        self.assertEqual("", ctl("status"))

    def test_the_first_picture_is_a_file_as_long_as_its_message_is_open(self):
        with open(self.sample("expected.json"), encoding="utf-8") as file:
            digests = {m["file"]: m.get("picture_sha256") for m in json.load(file)}
        player = self.play(self.sample("greeting-video.trv"))
        art = ctl("metadata", "mpris:artUrl")
        self.assertTrue(art.startswith("file://" + os.environ["XDG_RUNTIME_DIR"]), art)
        picture = art.removeprefix("file://")
        rows = subprocess.run(["convert", picture, "-depth", "8", "rgb:-"], check=True, capture_output=True).stdout
        rows = [rows[at:at + 960] for at in range(0, len(rows), 960)]
        self.assertEqual(digests["greeting-video.trv"][0], desktop.bottom_up_digest(rows))
        self.call(PLAYER, "OpenUri", "file://" + self.sample("greeting-voice.trv"))
        wait_for(lambda: ctl("metadata", "title") == "greeting-voice", what="the other message")
        self.assertEqual("", ctl("metadata", "mpris:artUrl"))
        self.assertFalse(os.path.exists(picture))
        self.call(PLAYER, "OpenUri", "file://" + self.sample("greeting-video.trv"))
        picture = wait_for(lambda: ctl("metadata", "mpris:artUrl")).removeprefix("file://")
        self.assertTrue(os.path.exists(picture))
        self.keys("ctrl+w")
        wait_for(lambda: not os.path.exists(picture), what="the picture's end")
        self.call(ROOT, "Quit")
        self.assertEqual(0, player.ended())

    def test_what_changes_is_announced_and_the_position_only_at_jumps(self):
        self.play(self.sample("greeting-voice.trv"))
        signals = Recorder(self, "gdbus", "monitor", "--session", "-d", NAME, "-o", PATH)
        wait_for(lambda: "owned by" in signals.text(), what="the monitor")
        told = 0
        for name, act, expected in (
                ("pause by key", lambda: self.keys("space"), "'PlaybackStatus': <'Paused'>"),
                ("volume by key", lambda: self.keys("9"), "'Volume': <0."),
                ("speed by key", lambda: self.keys("bracketright"), "'Rate': <1.25>"),
                ("speed by program", lambda: self.set("Rate", 1e300), "'Rate': <3.0>"),
                ("jump by key", lambda: self.keys("Right"), "Player.Seeked (int64 "),
                ("jump by program", lambda: ctl("position", "2"), "Player.Seeked (int64 2000000,)"),
                ("play by program", lambda: ctl("play"), "'PlaybackStatus': <'Playing'>"),
                ("another message",
                 lambda: self.call(PLAYER, "OpenUri", "file://" + self.sample("greeting-video.trv")), "greeting-video"),
                ("no message", lambda: self.keys("ctrl+w"), "'CanPlay': <false>")):
            with self.subTest(name):
                act()
                wait_for(lambda: expected in signals.text()[told:], seconds=10,
                         what=f"{expected!r} in {signals.text()[told:]!r}")
                told = len(signals.text())
        self.assertNotIn("'Position'", signals.text())

    def test_a_queue_plays_through_and_a_single_message_ends(self):
        short = os.path.join(self.samples, "..", "short.trv")
        for name in ("b.trv", "a.trv", "c.trv"):
            shutil.copy(short, os.path.join(self.folder, name))
        follow = Recorder(self, "playerctl", "-p", "trvplayer", "-F", "metadata", "title")
        self.play(*(os.path.join(self.folder, name) for name in ("b.trv", "a.trv")))
        self.wait_for_state("a", "Stopped")
        self.assertFalse(self.property("CanGoNext"))
        self.assertTrue(self.property("CanGoPrevious"))
        before = follow.text().split().count("b")
        self.keys("less")
        wait_for(lambda: follow.text().split().count("b") > before, what="the message before")
        self.wait_for_state("a", "Stopped")
        self.assertEqual([], [line for line in follow.text().split() if line not in "ab"])
        self.call(PLAYER, "OpenUri", "file://" + os.path.join(self.folder, "b.trv"))
        self.wait_for_state("b", "Stopped")
        self.assert_stays(lambda: ctl("metadata", "title") == "b")
        self.keys("greater")
        wait_for(lambda: ctl("metadata", "title") == "c", what="the folder's next message")

    def test_a_damaged_message_in_a_queue_is_reported_and_the_next_one_plays(self):
        with open(os.path.join(self.folder, "bad.trv"), "wb"):
            pass
        short = os.path.join(self.folder, "short.trv")
        shutil.copy(os.path.join(self.samples, "..", "short.trv"), short)
        player = self.start(short, os.path.join(self.folder, "bad.trv"), self.sample("greeting-voice.trv"))
        # The box may have the keyboard before anybody has seen it at the main window.
        player.main = wait_for(lambda: windows(player.pid, f"^{TITLE} - "), what="the main window")[0]
        player.dialog(f"^{TITLE}$")
        self.keys("Return")
        self.wait_for_state("greeting-voice", "Playing")

    def test_names_of_any_bytes(self):
        for name in (b"gr\xfc\xdfe 1.trv", b"gr\xfc\xdfe 2.trv"):
            self.copy(name)
        self.play(os.path.join(os.fsencode(self.folder), b"gr\xfc\xdfe 1.trv"))
        url = f"file://{self.folder}/gr%FC%DFe%20"
        self.assertEqual(url + "1.trv", ctl("metadata", "xesam:url"))
        ctl("next")
        wait_for(lambda: ctl("metadata", "xesam:url") == url + "2.trv", what="the next one")
        self.call(PLAYER, "OpenUri", url + "1.trv")
        wait_for(lambda: ctl("metadata", "xesam:url") == url + "1.trv", what="the first one again")

    def test_arguments_of_every_kind_do_no_harm(self):
        player = self.play(self.sample("greeting-voice.trv"))
        ctl("pause")
        ctl("position", "3")
        before = self.call(PROPERTIES, "GetAll", PLAYER)
        values = [dbus.Byte(1), dbus.Boolean(True), dbus.Int16(-1), dbus.UInt16(1), dbus.Int32(-1), dbus.UInt32(1),
                  dbus.Int64(1), dbus.UInt64(1), dbus.Double(math.nan), dbus.String("\U0001f600"), dbus.ObjectPath("/"),
                  dbus.Signature("a{sv}"), dbus.Array(["x"]), dbus.Dictionary({"x": 1}), dbus.Struct((1, "x"))]
        methods = [(ROOT, "Open"), (PLAYER, "Seek"), (PLAYER, "SetPosition"), (PLAYER, "OpenUri"), (PLAYER, "Next"),
                   (PLAYER, "Stop"), (PROPERTIES, "Get"), (PROPERTIES, "GetAll"), (PROPERTIES, "Set"), ("no.such", "Stop")]
        for interface, method in methods:
            for value in values:
                variant = type(value)(value, variant_level=1)
                for arguments in ((value,), (value, value), (variant,), (PLAYER, "Volume", value),
                                  (PLAYER, "Volume", variant), (PLAYER, "Rate", variant), (PLAYER, "Metadata", variant)):
                    if method == "Seek" and type(value) is dbus.Int64 and arguments == (value,):
                        continue
                    with self.assertRaises(dbus.DBusException, msg=f"{method} {arguments}"):
                        self.call(interface, method, *arguments)
        track = dbus.ObjectPath(str(before["Metadata"]["mpris:trackid"]))
        for method, arguments in (
                ("SetPosition", (track, dbus.Int64(-1))),
                ("SetPosition", (track, dbus.Int64(2 ** 63 - 1))),
                ("SetPosition", (track, dbus.Int64(-2 ** 63))),
                ("SetPosition", (dbus.ObjectPath(track + "0"), dbus.Int64(0))),
                ("SetPosition", (dbus.ObjectPath("/org/mpris/MediaPlayer2/TrackList/NoTrack"), dbus.Int64(0)))):
            self.call(PLAYER, method, *arguments)
        for rate in (1e308, -math.inf, 0.0, 1.0):
            self.set("Rate", rate)
        for uri in ("http://example.org/a.trv", "file://elsewhere/a.trv", "file:relative.trv", "file:///a%00b", "file:"):
            with self.assertRaises(dbus.DBusException, msg=uri):
                self.call(PLAYER, "OpenUri", uri)
        self.assertEqual(before, self.call(PROPERTIES, "GetAll", PLAYER))
        for wanted, volume in ((-5.0, 0), (1e300, 1), (math.inf, 1)):
            self.set("Volume", wanted)
            wait_for(lambda: self.property("Volume") == volume, what=f"the volume {volume}")
        self.call(PLAYER, "Seek", dbus.Int64(-2 ** 63))
        self.assertEqual(0, self.property("Position"))
        for before, after in (("pause", "Paused"), ("play", "Stopped")):  # as Next, of which there is none
            ctl(before)
            self.call(PLAYER, "Seek", dbus.Int64(2 ** 63 - 1))
            self.wait_for_state("greeting-voice", after)
        self.assertIsNone(player.process.poll())

    def serve(self, service, method, takes, returns, code):
        """A service that notes what it is asked."""
        log = Recorder(self, sys.executable, "-u", "-m", "dbusmock", *service)
        wait_for(lambda: self.bus.name_has_owner(service[0]), what=service[0])
        self.mock = self.bus.get_object(*service[:2])
        self.mock.AddMethod(service[2], method, takes, returns, code, dbus_interface="org.freedesktop.DBus.Mock")
        return log

    def check_inhibitions(self, log, release):
        """As many inhibitions as the pairs, of which the last may be in force."""
        def counts():
            lines = [line.split()[1] for line in log.text().splitlines() if len(line.split()) > 1]
            return lines.count("Inhibit"), lines.count(release)

        def expect(*wanted):
            wait_for(lambda: counts() == wanted, seconds=10, what=f"{wanted} in {log.text()}")
            # Noted before it is answered; the player has the answer before what it is asked from here on.
            self.mock.GetCalls(dbus_interface="org.freedesktop.DBus.Mock")

        player = self.play(self.sample("greeting-voice.trv"))
        self.call(PLAYER, "OpenUri", "file://" + self.sample("greeting-video.trv"))
        expect(1, 0)
        ctl("pause")
        expect(1, 1)
        ctl("play")
        expect(2, 1)
        ctl("stop")
        expect(2, 2)
        ctl("play")
        expect(3, 2)
        self.call(ROOT, "Quit")
        self.assertEqual(0, player.ended())
        expect(3, 3)

    def test_the_screen_stays_on_while_a_video_plays(self):
        log = self.serve(SAVER, "Inhibit", "ss", "u", "ret = 7")
        self.mock.AddMethod(SAVER[2], "UnInhibit", "u", "", "assert args[0] == 7",
                            dbus_interface="org.freedesktop.DBus.Mock")
        self.check_inhibitions(log, "UnInhibit")

    def test_the_portal_keeps_it_on_where_there_is_no_screen_saver(self):
        request = PORTAL[1] + "/request/1"
        log = self.serve(PORTAL, "Inhibit", "sua{sv}", "o", f"assert args[1] == 8; ret = dbus.ObjectPath('{request}')")
        self.mock.AddObject(request, "org.freedesktop.portal.Request", {}, [("Close", "", "", "")],
                            dbus_interface="org.freedesktop.DBus.Mock")
        self.check_inhibitions(log, "Close")


if __name__ == "__main__":
    desktop.main()
