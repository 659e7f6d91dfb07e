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


def run(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


def wait_for(condition, seconds=10.0, what="the condition"):
    """What the condition gives once it is true; a person's patience is the limit."""
    deadline = time.monotonic() + seconds
    while True:
        result = condition()
        if result:
            return result
        if time.monotonic() > deadline:
            raise AssertionError(f"{what} did not come about within {seconds} s")
        time.sleep(0.02)


def windows(pid, name=".*"):
    """The visible windows of a process whose title matches."""
    return run("xdotool", "search", "--all", "--onlyvisible", "--pid", str(pid), "--name", name).split()


def title(window):
    return run("xdotool", "getwindowname", window).rstrip("\n")


def geometry(window):
    """x and y on the screen, width, height; xdotool counts the frame twice."""
    about = run("xwininfo", "-id", window)
    return tuple(int(re.search(rf"{key}: +(-?\d+)", about).group(1))
                 for key in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height"))


class Image:
    """Rows of R, G, B bytes, the top one first."""

    def __init__(self, x, y, width, height):
        self.width, self.height = width, height
        self.data = subprocess.run(
            ["import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage", "-depth", "8", "rgb:-"],
            capture_output=True, check=True).stdout
        if len(self.data) != width * height * 3:
            raise AssertionError("the screen could not be read")

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
    def __init__(self, program, *arguments, folder=None):
        self.process = subprocess.Popen([program, *arguments], cwd=folder)
        self.pid = self.process.pid

    def main_window(self):
        """Waits until it is there and has the keyboard."""
        window = wait_for(lambda: windows(self.pid, f"^{TITLE}"), what="the main window")[0]
        wait_for(lambda: run("xdotool", "getactivewindow").strip() == window, what="the keyboard focus")
        return window

    def ended(self, seconds=5.0):
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

    def click(self, window, place):
        x, y = self.place(window, place)
        subprocess.run(["xdotool", "mousemove", str(x), str(y), "click", "1"], check=True)

    def point(self, window, place):
        x, y = self.place(window, place)
        subprocess.run(["xdotool", "mousemove", str(x), str(y)], check=True)

    def place(self, window, place):
        """Where a place of the client area is on the screen; the menu bar is what the window has more."""
        x, y, _, height = geometry(window)
        return x + place[0], y + height - 379 + place[1]

    def grab(self, window):
        return Image(*geometry(window))

    def dialog(self, player, name):
        return wait_for(lambda: windows(player.pid, name), what=f"the window {name!r}")[0]

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
