#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The player's window as a person meets it, with a window manager, real keys, a real pointer and real sound.

    window_test.py TRVPLAYER TRVDUMP SAMPLES      in a private session with a display and a sound server
"""

import json
import os
import subprocess
import time
import unittest
import unittest.mock

import desktop
from desktop import TITLE, run, wait_for, windows


class Window(desktop.DesktopTest):
    def test_a_named_message_plays_in_picture_and_sound(self):
        with open(self.sample("expected.json"), encoding="utf-8") as file:
            expected = next(m for m in json.load(file) if m["file"] == "greeting-video.trv")
        ear = desktop.Ear()
        self.addCleanup(ear.close)
        player = self.start(self.sample("greeting-video.trv"))
        window = player.main_window()
        self.wait_for_title(window, f"{TITLE} - greeting-video.trv")
        digests = expected["picture_sha256"]

        def shown():
            index = self.grab(window).has_picture(digests)
            return index is not None and [index]

        first = wait_for(shown, what="a decoded picture on the screen")[0]
        wait_for(lambda: shown() and shown()[0] > first, what="a later picture")
        samples = self.decoded("greeting-video.trv")
        # A stretch of one second, three seconds into the message: the very samples, since nothing on the way
        # resamples or scales.
        wait_for(lambda: ear.hears(samples[3 * 16000:4 * 16000]), what="the speech at the monitor")

    def test_the_menu_opens_a_message_and_ends_the_player_by_keyboard(self):
        player = self.start()
        window = player.main_window()
        self.assertEqual(TITLE, desktop.title(window))
        self.keys("alt+f", "o")
        player.dialog("^Open Trivelle Message")
        self.type(self.sample("greeting-voice.trv"))
        self.keys("Return")
        self.assert_gone(player, "^Open Trivelle Message")
        self.wait_for_title(player.wait_for_keyboard(), f"{TITLE} - greeting-voice.trv")
        self.keys("ctrl+w")
        self.wait_for_title(window, TITLE)
        self.keys("alt+f", "x")
        self.assertEqual(0, player.ended())

    def test_enter_and_escape_do_nothing(self):
        player = self.start(self.sample("greeting-voice.trv"))
        window = player.main_window()
        self.wait_for_title(window, f"{TITLE} - greeting-voice.trv")
        self.keys("Return", "KP_Enter", "Escape")
        self.assert_stays(lambda: desktop.title(window) == f"{TITLE} - greeting-voice.trv")
        self.keys("alt+h", "a")
        player.dialog("^About Message Player$")
        self.keys("Return", "Escape")
        self.assert_stays(lambda: windows(player.pid, "^About Message Player$"))
        self.keys("space")
        self.assert_gone(player, "^About Message Player$")

    def test_the_buttons_have_tips_and_space_presses_the_focused_one(self):
        player = self.start(self.sample("greeting-voice.trv"))
        window = player.main_window()
        self.wait_for_title(window, f"{TITLE} - greeting-voice.trv")
        before = len(popups())
        self.point(player, desktop.BUTTONS["play"])
        wait_for(lambda: len(popups()) > before, what="the tool tip")
        wait_for(lambda: len(popups()) == before, what="the end of the tool tip")
        # The focus is on Play/Pause: held, the window stands still; pressed again, it moves.
        self.keys("space")
        self.wait_for_stillness(window)
        self.keys("space")
        self.wait_for_movement(window)

    def test_a_button_is_lit_just_as_long_as_the_pointer_is_over_it(self):
        player = self.start()
        player.main_window()
        outside = (180, 200)

        def stop_button():
            return desktop.Image(lambda: (*self.place(player, (61, 11)), 47, 41)).data

        self.point(player, outside)
        # An area of one colour has four bytes at the most: there is no icon on it yet.
        wait_for(lambda: len(set(stop_button())) > 4, what="the button")
        unlit = stop_button()
        self.point(player, desktop.BUTTONS["stop"])
        wait_for(lambda: stop_button() != unlit, what="the light")
        self.point(player, outside)
        wait_for(lambda: stop_button() == unlit, what="its end")
        # The pointer stays where it clicked, and then leaves at once.
        self.click(player, desktop.BUTTONS["stop"])
        wait_for(lambda: stop_button() != unlit, what="the light after a click")
        self.assert_stays(lambda: stop_button() != unlit, 0.3)
        self.point(player, outside)
        wait_for(lambda: stop_button() == unlit, what="its end after a click")

    def test_a_file_that_is_no_message_is_reported_and_closes_what_played(self):
        player = self.start(self.sample("greeting-voice.trv"))
        window = player.main_window()
        self.wait_for_title(window, f"{TITLE} - greeting-voice.trv")
        self.keys("ctrl+o")
        player.dialog("^Open Trivelle Message")
        self.type(self.sample("expected.json"))
        self.keys("Return")
        player.dialog(f"^{TITLE}$")
        self.keys("Return")
        self.wait_for_title(window, TITLE)
        self.assertEqual(1, len(windows(player.pid, f"^{TITLE}")))

    def test_minimised_and_restored_it_goes_on(self):
        player = self.start(self.sample("greeting-video.trv"))
        window = player.main_window()

        def minimised():
            # The window manager ignores what it is asked before it has taken the window in.
            subprocess.run(["xdotool", "windowminimize", window], check=True)
            return "Iconic" in run("xprop", "-id", window, "WM_STATE")

        wait_for(minimised, what="the icon")
        subprocess.run(["xdotool", "windowmap", window, "windowactivate", window], check=True)
        wait_for(lambda: "Normal" in run("xprop", "-id", window, "WM_STATE"), what="the window")
        self.wait_for_movement(window)

    def test_it_cannot_be_maximised_or_resized(self):
        player = self.start()
        window = player.main_window()
        allowed = run("xprop", "-id", window, "_NET_WM_ALLOWED_ACTIONS")
        self.assertIn("MINIMIZE", allowed)
        self.assertNotIn("MAXIMIZE", allowed)
        self.assertNotIn("RESIZE", allowed)

    def test_on_a_scaled_screen_it_is_larger_and_clicks_land(self):
        player = self.start(scale=1.5)
        _, _, width, height = desktop.geometry(player.main_window())
        self.assertEqual(552, width)
        self.assertTrue(1.5 * desktop.CLIENT_HEIGHT < height < 1.5 * desktop.CLIENT_HEIGHT + 60)
        self.click(player, desktop.BUTTONS["volume"])
        player.dialog("^Audio Volume Controls$")

    def test_drawn_piece_by_piece_it_looks_as_drawn_as_a_whole(self):
        def looks_alike():
            for key, width in (("F11", 1024), ("F11", 368 * player.scale)):
                self.keys(key)
                wait_for(lambda: desktop.geometry(window)[2] == width, what=f"a width of {width} pixels")
            self.wait_for_stillness(window)
            whole = self.grab(window).data
            self.keys("period")
            wait_for(lambda: self.grab(window).data != whole, what="the next picture")
            self.keys("comma")
            self.wait_for_stillness(window)
            return self.grab(window).data == whole

        for scale in (1, 1.5):
            player = self.start(self.sample("greeting-video.trv"), scale=scale)
            window = player.main_window()
            self.wait_for_movement(window)
            self.keys("space", "Home", "period")
            # Once more where it was not yet drawn when looked at.
            wait_for(looks_alike, what="a window that looks alike")

    def test_moved_to_a_screen_of_another_scale_it_keeps_its_size(self):
        for name, left, output in (("left", 0, "screen"), ("right", 512, "none")):
            subprocess.run(["xrandr", "--setmonitor", name, f"512/135x768/203+{left}+0", output], check=True)
            self.addCleanup(run, "xrandr", "--delmonitor", name)
        with unittest.mock.patch.dict(os.environ, QT_SCREEN_SCALE_FACTORS="left=1;right=1.5"):
            player = self.start()
        window = player.main_window()
        for x, width in ((560, 552), (40, 368)):
            run("xdotool", "windowmove", window, str(x), "40")
            wait_for(lambda: desktop.geometry(window)[2] == width, what=f"a width of {width} pixels")
        self.click(player, desktop.BUTTONS["volume"])
        player.dialog("^Audio Volume Controls$")

    def test_alt_f4_closes_what_has_the_keyboard(self):
        cases = {"the window": (), "About": ("alt+h", "a"), "Open": ("ctrl+o",)}
        for name, keys in cases.items():
            with self.subTest(name):
                player = self.start(self.sample("greeting-voice.trv"))
                window = player.main_window()
                self.wait_for_title(window, f"{TITLE} - greeting-voice.trv")
                if keys:
                    self.keys(*keys)
                    player.dialog(f"^{name}")
                    self.keys("alt+F4")
                    player.wait_for_keyboard()
                self.keys("alt+F4")
                self.assertEqual(0, player.ended())

    def test_the_volume_dialog_opens_mutes_nothing_and_goes_with_the_player(self):
        subprocess.run(["pactl", "set-sink-mute", os.environ["TRV_SINK"], "1"], check=True)
        player = self.start(self.sample("greeting-voice.trv"))
        window = player.main_window()
        wait_for(lambda: "no" in run("pactl", "get-sink-mute", os.environ["TRV_SINK"]), what="the sound back")
        self.click(player, desktop.BUTTONS["volume"])
        player.dialog("^Audio Volume Controls$")
        for key, volume in (("End", " 0%"), ("Home", " 100%")):
            self.keys(key)
            wait_for(lambda: volume in run("pactl", "get-sink-volume", os.environ["TRV_SINK"]), what=volume)
        self.keys("Escape", "Return")
        self.assert_stays(lambda: windows(player.pid, "^Audio Volume Controls$"), 0.3)
        self.keys("alt+F4")
        self.assert_gone(player, "^Audio Volume Controls$")
        player.wait_for_keyboard()
        self.click(player, desktop.BUTTONS["volume"])
        player.dialog("^Audio Volume Controls$")
        subprocess.run(["xdotool", "windowactivate", window], check=True)
        player.wait_for_keyboard()
        self.keys("alt+F4")
        self.assertEqual(0, player.ended())

    def test_the_keyboards_media_keys_play_and_stop(self):
        player = self.start(self.sample("greeting-voice.trv"))
        window = player.main_window()
        self.wait_for_title(window, f"{TITLE} - greeting-voice.trv")
        for key in ("XF86AudioPlay", "XF86AudioStop"):
            self.wait_for_movement(window)
            self.keys(key)
            self.wait_for_stillness(window)
            self.keys("XF86AudioPlay")

    def wait_for_movement(self, window):
        still = self.grab(window).data
        wait_for(lambda: self.grab(window).data != still, what="movement")

    def wait_for_stillness(self, window):
        def still():
            data = self.grab(window).data
            time.sleep(0.3)
            return self.grab(window).data == data
        wait_for(still, what="stillness")

    def decoded(self, name):
        """The message's speech as trvdump gives it."""
        return subprocess.run([self.dump, "--pcm", "/dev/stdout", self.sample(name)], check=True,
                              capture_output=True).stdout


def popups():
    """Windows that the window manager does not manage, as tool tips are."""
    tree = run("xwininfo", "-root", "-children")
    shown = []
    for line in tree.splitlines():
        words = line.split()
        if words and words[0].startswith("0x"):
            about = run("xwininfo", "-id", words[0])
            if "IsViewable" in about and "Override Redirect State: yes" in about:
                shown.append(words[0])
    return shown


if __name__ == "__main__":
    desktop.main()
