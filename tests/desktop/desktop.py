# SPDX-License-Identifier: MIT
"""A player in a private session, and a person's eyes, ears and hands for it."""

import hashlib
import os
import re
import signal
import subprocess
import sys
import time
import unittest

TITLE = "Trivelle Message Player"
# The client area's place of things, below the menu bar, in pixels: a dialog unit is 6/4 by 13/8 of one.
BUTTONS = {"play": (34, 32), "stop": (85, 32), "volume": (334, 32)}
PICTURE = (320, 240)
CLIENT_HEIGHT = 379


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


def wait_for(condition, seconds=60.0, what="the condition"):
    """What the condition returns once it is true; the time is for a machine that is busy with much else."""
    deadline = time.monotonic() + seconds
    while not (result := condition()):
        if time.monotonic() > deadline:
            raise AssertionError(f"{what} did not come about within {seconds} s")
        time.sleep(0.02)
    return result


def windows(pid, name=".*"):
    """The visible windows of a process whose title matches."""
    return run("xdotool", "search", "--all", "--onlyvisible", "--pid", str(pid), "--name", name).split()


def title(window):
    return run("xdotool", "getwindowname", window).rstrip("\n")


def keyboard_window():
    """The window that keys go to, once display and window manager agree on it: the manager names the active
    window before the program has taken the keyboard to it, and keys typed meanwhile would go to another one."""
    focus = run("xdotool", "getwindowfocus", "-f").strip()
    return focus if focus == run("xdotool", "getactivewindow").strip() else None


def geometry(window):
    """x and y on the screen, width, height; xdotool counts the frame twice."""
    about = run("xwininfo", "-id", window)
    return tuple(int(re.search(rf"{key}: +(-?\d+)", about).group(1))
                 for key in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))


class Image:
    """Rows of R, G, B bytes, the top one first."""

    def __init__(self, place):
        """place() returns x, y, width and height on the screen. A window that is just being placed reaches over
        its edge for a moment, and its picture comes out cut: it is then read again."""
        def read():
            x, y, self.width, self.height = place()
            self.data = subprocess.run(
                ["import", "-window", "root", "-crop", f"{self.width}x{self.height}+{x}+{y}", "+repage", "-depth", "8",
                 "rgb:-"], capture_output=True, check=False).stdout
            return len(self.data) == self.width * self.height * 3

        wait_for(read, what="a whole picture of the window")

    def crop(self, x, y, width, height):
        row = self.width * 3
        return [self.data[(y + i) * row + x * 3:(y + i) * row + (x + width) * 3] for i in range(height)]

    def has_picture(self, digests):
        """The index of the decoded picture that stands somewhere in the middle of this image, or None."""
        # The frame around the picture is a few pixels wide; its exact place is for the unit tests to say.
        width, height = PICTURE
        for y in range((self.height - height) // 2 - 30, self.height - height):
            for x in range((self.width - width) // 2 - 3, (self.width - width) // 2 + 4):
                if y < 0 or x < 0:
                    continue
                digest = bottom_up_digest(self.crop(x, y, width, height))
                if digest in digests:
                    return digests.index(digest)
        return None


def bottom_up_digest(rows):
    """Of a picture as the decoder gives it: bottom row first, B, G, R."""
    digest = hashlib.sha256()
    for row in reversed(rows):
        swapped = bytearray(row)
        swapped[0::3], swapped[2::3] = row[2::3], row[0::3]
        digest.update(swapped)
    return digest.hexdigest()


class Ear:
    """Records what the sound server's sink plays."""

    def __init__(self):
        self.process = subprocess.Popen(
            ["parec", "-d", os.environ["TRV_SINK"] + ".monitor", "--raw", "--rate=8000", "--channels=1",
             "--format=s16le", "--latency-msec=20"], stdout=subprocess.PIPE)
        os.set_blocking(self.process.stdout.fileno(), False)
        self.heard = b""
        wait_for(self.listen, what="the monitor")

    def listen(self):
        self.heard += self.process.stdout.read() or b""
        return self.heard

    def hears(self, samples):
        return self.listen().find(samples) >= 0

    def close(self):
        self.process.kill()
        self.process.wait()
        self.process.stdout.close()


class Player:
    def __init__(self, program, *arguments, folder=None, scale=1):
        self.process = subprocess.Popen([program, *arguments], cwd=folder,
                                        env={**os.environ, "QT_SCALE_FACTOR": str(scale)})
        self.pid = self.process.pid
        self.scale = scale
        self.main = None

    def main_window(self):
        """Waits until it is there and has the keyboard."""
        self.main = wait_for(lambda: windows(self.pid, f"^{TITLE}"), what="the main window")[0]
        return self.wait_for_keyboard()

    def wait_for_keyboard(self):
        wait_for(lambda: keyboard_window() == self.main, what="the main window's keyboard focus")
        return self.main

    def dialog(self, name):
        """A further window, once it has the keyboard."""
        return wait_for(lambda: {keyboard_window()} & {*windows(self.pid, name)} - {self.main},
                        what=f"the window {name!r}").pop()

    def ended(self, seconds=60.0):
        try:
            return self.process.wait(seconds)
        except subprocess.TimeoutExpired:
            return None

    def kill(self):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait()


class DesktopTest(unittest.TestCase):
    program = None
    dump = None
    samples = None

    def start(self, *arguments, **keywords):
        player = Player(self.program, *arguments, **keywords)
        self.addCleanup(player.kill)
        return player

    def sample(self, name):
        return os.path.join(self.samples, name)

    def wait_for_title(self, window, text):
        wait_for(lambda: title(window) == text, what=f"the title {text!r} (it is {title(window)!r})")

    def keys(self, *keys):
        """To whichever window has the keyboard."""
        subprocess.run(["xdotool", "key", "--delay", "30", *keys], check=True)

    def type(self, text):
        subprocess.run(["xdotool", "type", "--delay", "5", text], check=True)

    def click(self, player, place):
        self.point(player, place, "click", "1")

    def point(self, player, place, *then):
        x, y = self.place(player, place)
        subprocess.run(["xdotool", "mousemove", str(x), str(y), *then], check=True)

    def place(self, player, place):
        """Where a place of the client area is on the screen; the menu bar is what the window has more."""
        x, y, _, height = geometry(player.main)
        return (round(x + player.scale * place[0]), round(y + height + player.scale * (place[1] - CLIENT_HEIGHT)))

    def grab(self, window):
        return Image(lambda: geometry(window))

    def assert_gone(self, player, name):
        wait_for(lambda: not windows(player.pid, name), what=f"the end of the window {name!r}")

    def assert_stays(self, condition, seconds=0.5):
        deadline = time.monotonic() + seconds
        while time.monotonic() < deadline:
            self.assertTrue(condition())
            time.sleep(0.05)


def main():
    DesktopTest.program, DesktopTest.dump, DesktopTest.samples = (os.path.abspath(a) for a in sys.argv[1:4])
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
