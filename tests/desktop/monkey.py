#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Does anything to the player, in any order, and watches that it only ends when it is told to, and in peace.

    monkey.py TRVPLAYER TRVDUMP SAMPLES [--seed N] [--actions N | --soak MINUTES]

in a private session with a display and a sound server, where there is a bus over that too. The same seed does the same
actions; when they meet the player is for the machine to say. A soak keeps one player, and watches what that holds at rest.
"""

import argparse
import collections
import os
import random
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time

import desktop
from desktop import run, wait_for, windows

HERE = os.path.dirname(os.path.abspath(__file__))
FAULTS = ("Sanitizer", "runtime error:", "Assertion", "terminate called", "Unsupported ")
KEYS = ("space", "Left", "Right", "shift+Left", "shift+Right", "Prior", "Next", "Home", "End", "comma", "period", "Up",
        "Down", "0", "9", "m", "bracketleft", "bracketright", "BackSpace", "F11", "Escape", "Return", "Tab",
        "shift+Tab", "alt+f", "alt+p", "alt+h", "ctrl+w", "ctrl+c", "ctrl+o", "ctrl+n", "ctrl+plus", "ctrl+minus",
        "ctrl+0", "XF86AudioPlay", "XF86AudioStop", "XF86AudioNext", "XF86AudioPrev", "F10", "Menu", "a", "x")
RATES = ("nan", "inf", "-1", "0", "0.5", "1", "3", "1e300")
MENU_BAR = 30  # pixels
SOAK_GROWTH_KIB = 2048
TIMES = ("0", "1000000", "-5000000", "9223372036854775807", "-9223372036854775808")


class Monkey:
    def __init__(self, program, samples, seed, soak=False):
        self.program = program
        # A soak needs one player: it leaves alone what may end that, the menu bar too.
        self.weights = {k: w for k, w in self.WEIGHTS.items() if not soak or k not in ("second", "close")}
        self.pressed = [key for key in KEYS if not soak or key not in ("alt+f", "alt+p", "alt+h", "F10")]
        self.top = MENU_BAR if soak else 0
        self.random = random.Random(seed)
        self.folder = tempfile.mkdtemp(dir=os.environ["TRV_SESSION"])
        self.err = open(os.path.join(self.folder, "err"), "w+", encoding="utf-8", errors="replace")
        self.pulse = int(os.environ["TRV_PULSE_PID"])
        with open(f"/proc/{self.pulse}/cmdline", encoding="utf-8") as file:
            self.server = file.read().split("\0")[:-1]
        self.started = []  # servers of the monkey's own
        self.done = collections.Counter()
        self.last = collections.deque(maxlen=30)
        self.sinks = 0
        self.ends = 0
        self.files = self.make_files(samples)
        self.player = None
        self.start()

    def make_files(self, samples):
        """Messages that are whole, cut, damaged, empty, too long, and what is none."""
        files = []
        for name in ("greeting-video.trv", "greeting-voice.trv"):
            with open(os.path.join(samples, name), "rb") as file:
                whole = file.read()
            cut = whole[:self.random.randrange(len(whole))]
            damaged = bytearray(whole)
            for _ in range(200):
                damaged[self.random.randrange(13, len(whole))] = self.random.randrange(256)
            for kind, data in (("", whole), ("cut-", cut), ("damaged-", bytes(damaged)), ("head-", whole[:13]),
                               ("long-", whole + 40 * whole[13:])):
                files.append(os.path.join(self.folder, kind + name))
                with open(files[-1], "wb") as file:
                    file.write(data)
        files += [os.path.join(self.folder, name) for name in ("empty.trv", "pipe.trv", "folder.trv", "gone.trv")]
        with open(files[-4], "wb"):
            pass
        os.mkfifo(files[-3])
        os.mkdir(files[-2])
        return files

    def start(self, *files):
        options = os.environ.get("ASAN_OPTIONS", "") + ":handle_abort=1"
        self.player = subprocess.Popen([self.program, *files], cwd=self.folder, stderr=self.err, stdout=self.err,
                                       env={**os.environ, "QT_SCALE_FACTOR": "1", "ASAN_OPTIONS": options})

    def window(self):
        found = windows(self.player.pid)
        return self.random.choice(found) if found else None

    # What it can do, and how often.

    def keys(self):
        count = self.random.randrange(1, 6)
        run("xdotool", "key", "--delay", str(self.random.choice((0, 5, 30))), *self.random.choices(self.pressed, k=count))

    def held_key(self):
        key = self.random.choice(("Right", "Left", "period", "comma", "Up", "Down"))
        run("xdotool", "keydown", key, "sleep", str(self.random.random()), "keyup", key)

    def pointer(self):
        window = self.window()
        size = re.search(r"Geometry: (\d+)x(\d+)", run("xdotool", "getwindowgeometry", window)) if window else None
        if size is None:  # it has gone meanwhile
            return
        width, height = map(int, size.groups())

        def move():
            return ["mousemove", "--window", window, str(self.random.randrange(width)),
                    str(self.random.randrange(min(self.top, height - 1), height))]

        what = self.random.choice((["click", "1"], ["click", "--repeat", "2", "1"], ["click", "3"], ["click", "4"],
                                   ["click", "--repeat", "5", "5"], ["mousedown", "1", *move(), *move(), "mouseup", "1"]))
        run("xdotool", *move(), *what)

    def button(self):
        """One of the three, or a place of the position bar."""
        found = windows(self.player.pid, f"^{desktop.TITLE}")
        if found:
            x, y = self.random.choice([*desktop.BUTTONS.values(), (self.random.randrange(20, 340), 72)])
            run("xdotool", "mousemove", "--window", found[0], str(x), str(y + 20), "click", "1")

    def focus(self):
        window = self.window()
        if window:
            run("xdotool", self.random.choice(("windowactivate", "windowminimize", "windowmap", "windowraise")), window)

    def open(self):
        run("xdotool", "key", "ctrl+o", "sleep", "0.3", "key", "ctrl+a", "type", "--delay", "1",
            self.random.choice(self.files))
        run("xdotool", "key", self.random.choice(("Return", "Escape", "Return")))

    def drop(self):
        found = windows(self.player.pid, f"^{desktop.TITLE}")
        if found:
            files = self.random.choices(self.files, k=self.random.randrange(1, 9))
            run("timeout", "10", sys.executable, "-B", os.path.join(HERE, "drop.py"), found[0], *files)

    def second(self):
        """A newer player, which the one before it gives way to. Where both are starting, either may be the newer."""
        older, settled = self.player, self.window() is not None
        self.start(*self.random.choices(self.files, k=self.random.randrange(3)))
        newer = self.player
        if not settled:
            wait_for(lambda: older.poll() is not None or newer.poll() is not None, what="the end of one of them")
            if older.poll() is None:
                older, self.player = newer, older
        self.expect_end(older)

    def close(self):
        window = self.window()
        if window:
            run("xdotool", "windowactivate", window, "key", "alt+F4")

    def freeze_server(self):
        os.kill(self.pulse, signal.SIGSTOP)
        time.sleep(self.random.random() * 1.5)
        os.kill(self.pulse, signal.SIGCONT)

    def restart_server(self):
        if os.environ["TRV_SOUND"] != "pulseaudio":
            return
        os.kill(self.pulse, self.random.choice((signal.SIGTERM, signal.SIGKILL)))
        time.sleep(self.random.random())
        self.started.append(subprocess.Popen(["setpriv", "--pdeathsig", "TERM", *self.server],
                                             stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
        self.pulse = self.started[-1].pid

    def sink(self):
        self.sinks += 1
        name = f"monkey{self.sinks}"
        sink = os.environ["TRV_SINK"]
        inputs = run("timeout", "2", "pactl", "list", "short", "sink-inputs").split("\n")
        stream = self.random.choice(inputs).split("\t")[0]
        for words in self.random.choice((
                (("load-module", "module-null-sink", f"sink_name={name}"), ("set-default-sink", name)),
                (("load-module", "module-null-sink", f"sink_name={name}", "rate=48000", "channels=2"),
                 ("move-sink-input", stream, name)),
                (("unload-module", "module-null-sink"),
                 ("load-module", "module-null-sink", f"sink_name={sink}", "rate=8000", "channels=1")),
                (("set-default-sink", sink),),
                (("suspend-sink", sink, "1"), ("suspend-sink", sink, "0")),
                (("set-sink-volume", sink, f"{self.random.randrange(150)}%"),),
                (("set-sink-mute", sink, "toggle"),),
                (("set-sink-input-volume", stream, f"{self.random.randrange(150)}%"),),
                (("set-sink-input-mute", stream, "toggle"),))):
            run("timeout", "2", "pactl", *words)

    def bus(self):
        """What no desktop would send, too."""
        if "no-bus" in os.environ["DBUS_SESSION_BUS_ADDRESS"]:
            return
        player = "org.mpris.MediaPlayer2.Player"
        name, *words = self.random.choice((
            *((f"{player}.{name}",) for name in ("Play", "Pause", "PlayPause", "Stop", "Next", "Previous")),
            (f"{player}.Seek", f"int64 {self.random.choice(TIMES)}"),
            (f"{player}.SetPosition", "objectpath '/com/trivelle/MessagePlayer/Track/1'",
             f"int64 {self.random.choice(TIMES)}"),
            (f"{player}.OpenUri", f"'file://{self.random.choice(self.files)}'"),
            ("org.freedesktop.DBus.Properties.GetAll", f"'{player}'"),
            *(("org.freedesktop.DBus.Properties.Set", f"'{player}'", f"'{name}'",
               f"<double {self.random.choice(RATES)}>") for name in ("Rate", "Volume", "Metadata"))))
        run("gdbus", "call", "--session", "--timeout", "5", "-d", "org.mpris.MediaPlayer2.trvplayer", "-o",
            "/org/mpris/MediaPlayer2", "-m", name, *words)

    def wait(self):
        time.sleep(self.random.random() * 1.5)

    WEIGHTS = {"keys": 40, "pointer": 25, "button": 10, "held_key": 3, "focus": 5, "open": 8, "drop": 4, "second": 2,
               "close": 1, "freeze_server": 2, "restart_server": 1, "sink": 5, "bus": 8, "wait": 6}

    # What it watches.

    def expect_end(self, player, seconds=120):
        try:
            status = player.wait(seconds)
        except subprocess.TimeoutExpired:
            player.send_signal(signal.SIGABRT)
            player.wait(60)  # it may say where it stands
            raise AssertionError(f"it did not end within {seconds} s") from None
        self.ends += 1
        if status != 0:
            raise AssertionError(f"it ended with {status}")

    def check(self):
        self.err.flush()
        with open(self.err.name, encoding="utf-8", errors="replace") as file:
            text = file.read()
        if any(fault in text for fault in FAULTS):
            raise AssertionError("it complained")

    def act(self):
        name = self.random.choices(list(self.weights), weights=self.weights.values())[0]
        self.done[name] += 1
        self.last.append(name)
        getattr(self, name)()
        if self.player.poll() is not None:
            self.expect_end(self.player)
            self.start(*self.random.choices(self.files, k=self.random.randrange(2)))

    def at_rest(self):
        """Whether only the main window is left; else one more of the others is closed."""
        # Minimised, it is not among the visible ones.
        run("xdotool", "search", "--all", "--pid", str(self.player.pid), "--name", f"^{desktop.TITLE}", "windowmap", "%@")
        shown = windows(self.player.pid)
        for window in shown:
            run("timeout", "5", "xdotool", "windowactivate", "--sync", window)
            if desktop.keyboard_window() == window:
                deaf = desktop.title(window) in ("Audio Volume Controls", "About Message Player")  # to Escape
                run("xdotool", "key", "alt+F4" if deaf else "Escape")
        return len(shown) == 1

    def show(self, file, *keys):
        """Opens a message, and presses keys while it plays."""
        main = wait_for(lambda: windows(self.player.pid, f"^{desktop.TITLE}"), what="the main window")[0]
        run(sys.executable, "-B", os.path.join(HERE, "drop.py"), main, file)
        run("xdotool", "windowactivate", "--sync", main)
        for key in keys:
            run("xdotool", "key", key, "sleep", "0.5")
        return main

    def held(self):
        """KiB of its own memory, descriptors and threads, with no message and no dialog open; always after the same:
        what is shown first at a size takes memory then, as does a picture that was copied."""
        wait_for(self.at_rest, what="rest")
        self.show(self.files[0], "ctrl+0", "ctrl+c")
        self.show(self.files[5], "ctrl+0")
        wait_for(self.at_rest, what="rest")
        run("xdotool", "key", "ctrl+w", "sleep", "3")
        process = f"/proc/{self.player.pid}"
        with open(f"{process}/smaps_rollup", encoding="ascii") as file:
            memory = int(re.search(r"Anonymous: +(\d+)", file.read()).group(1))
        return memory, len(os.listdir(f"{process}/fd")), len(os.listdir(f"{process}/task"))

    def tour(self):
        """What fills the toolkit's caches for good: each dialog and each size of the window, once."""
        for file in (self.files[0], self.files[5]):
            main = self.show(file, "ctrl+o", "Escape", "alt+h", "a", "Escape", *["ctrl+plus"] * 8, "ctrl+0", "F11", "F11")
        x, y = desktop.BUTTONS["volume"]
        run("xdotool", "mousemove", "--window", main, str(x), str(y + 20), "click", "1", "sleep", "1")

    def soak(self, minutes):
        """Growth is counted from what was held after the first minute; of the later minutes the last counts."""
        player, held = self.player, []
        self.tour()
        for minute in range(1, minutes + 1):
            end = time.monotonic() + 60
            while time.monotonic() < end:
                self.act()
                if self.player is not player:
                    raise AssertionError("it ended")
            held.append(self.held())
            print(f"minute {minute}: {held[-1][0]} KiB, {held[-1][1]} descriptors, {held[-1][2]} threads", flush=True)
            self.check()
        growth = [last - first for first, last in zip(held[0], held[-1])]
        if growth[0] > SOAK_GROWTH_KIB or growth[1] > 0 or growth[2] > 0:
            raise AssertionError(f"more KiB, descriptors, threads: {growth}")

    def finish(self):
        """The last one ends by being closed, as a newer player does it."""
        self.second()
        self.player.terminate()
        self.player.wait()
        self.check()

    def end(self):
        for process in [self.player, *self.started]:
            process.kill()
            process.wait()


def main():
    parser = argparse.ArgumentParser()
    for name in ("program", "dump", "samples"):
        parser.add_argument(name)
    parser.add_argument("--actions", type=int, default=500)
    parser.add_argument("--seed", type=int)
    parser.add_argument("--soak", type=int, default=0)
    arguments = parser.parse_args()
    seed = arguments.seed if arguments.seed is not None else random.SystemRandom().randrange(1 << 32)
    print(f"seed {seed}", flush=True)
    monkey = Monkey(os.path.abspath(arguments.program), os.path.abspath(arguments.samples), seed, arguments.soak > 0)
    try:
        wait_for(monkey.window, what="a window")
        if arguments.soak:
            monkey.soak(arguments.soak)
        while not arguments.soak and monkey.done.total() < arguments.actions:
            monkey.act()
            if monkey.done.total() % 20 == 0:
                monkey.check()
        monkey.finish()
    except BaseException:
        with open(monkey.err.name, encoding="utf-8", errors="replace") as file:
            print(file.read()[-20000:])
        print(f"after {monkey.done.total()} actions, seed {seed}; the last ones: {' '.join(monkey.last)}")
        raise
    finally:
        monkey.end()
        shutil.rmtree(monkey.folder, ignore_errors=True)
    print(f"{monkey.done.total()} actions, {monkey.ends} players ended in peace: {dict(monkey.done)}")


if __name__ == "__main__":
    main()
