#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Takes the pictures of the player that the documents show.

    scripts/private-session --screen 1120x630 tests/desktop/pictures.py TRVPLAYER TRVDUMP SAMPLES FOLDER
"""

import os
import subprocess
import sys
import time

import desktop
from desktop import TITLE, run, wait_for, windows

FOLDER = os.path.abspath(sys.argv.pop())


class Pictures(desktop.DesktopTest):
    def take(self, name, *shown):
        """The windows with their frames, in few colours."""
        time.sleep(0.4)
        boxes = []
        for window in shown:
            x, y, width, height = desktop.geometry(window)
            extents = run("xprop", "-id", window, "_NET_FRAME_EXTENTS").split("=")[1]
            left, right, top, bottom = (int(v) for v in extents.split(","))
            boxes.append((x - left, y - top, x + width + right, y + height + bottom))
        x, y, right, bottom = (f(box[i] for box in boxes) for i, f in enumerate((min, min, max, max)))
        area = f"{right - x}x{bottom - y}+{x}+{y}"
        subprocess.run(["import", "-window", "root", "-crop", area, "+repage", "-strip", "+dither", "-colors", "200",
                        f"PNG8:{FOLDER}/player-{name}.png"], check=True)

    def test_all(self):
        player = self.start()
        window = player.main_window()
        self.take("empty", window)
        self.keys("alt+h", "a")
        self.take("about", window, player.dialog("^About Message Player$"))
        self.keys("space")
        self.assert_gone(player, "^About Message Player$")
        player.kill()

        player = self.start("/home/ida/Messages/birthday.trv")
        wait_for(lambda: len(windows(player.pid, f"^{TITLE}")) == 2, what="the message box")
        self.take("failure", *windows(player.pid, f"^{TITLE}"))
        player.kill()

        player = self.start(self.sample("greeting-video.trv"))
        window = player.main_window()
        time.sleep(2.2)
        self.take("playing", window)
        self.keys("space")
        self.take("held", window)
        player.kill()

        player = self.start(self.sample("greeting-voice.trv"))
        window = player.main_window()
        time.sleep(2.5)
        self.take("voice", window)
        self.click(player, desktop.BUTTONS["volume"])
        dialog = player.dialog("^Audio Volume Controls$")
        subprocess.run(["pactl", "set-sink-volume", os.environ["TRV_SINK"], "70%"], check=True)
        time.sleep(1.5)
        self.take("volume", dialog)

        player.kill()

    def test_in_use(self):
        """The whole screen, as 16:9 as software centres want it."""
        player = self.start(os.path.join(os.path.dirname(__file__), "../../res/sample/welcome.trv"))
        window = player.main_window()
        self.click(player, desktop.BUTTONS["volume"])
        dialog = player.dialog("^Audio Volume Controls$")
        subprocess.run(["pactl", "set-sink-volume", os.environ["TRV_SINK"], "70%"], check=True)
        for shown, x in ((window, "230"), (dialog, "640")):
            subprocess.run(["xdotool", "windowmove", shown, x, "100", "mousemove", "1119", "629"], check=True)
        time.sleep(2.5)
        screen = subprocess.run(["import", "-window", "root", "miff:-"], capture_output=True, check=True).stdout
        subprocess.run(["convert", "miff:-", "-strip", "-fill", "#6d93b8", "-draw", "color 0,0 floodfill", "+dither",
                        "-colors", "250", f"PNG8:{FOLDER}/player-in-use.png"], input=screen, check=True)


if __name__ == "__main__":
    desktop.main()
