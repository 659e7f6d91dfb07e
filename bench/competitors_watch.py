# SPDX-License-Identifier: MIT
"""Sees from outside when a program's window is on the screen and when its sound is at the sound server, and
what the program uses meanwhile."""

import fcntl
import os
import subprocess
import threading
import time
from array import array

from Xlib import X, XK, display
from Xlib.ext import damage, xtest

from competitors_material import LOUD, SAMPLE_RATE


class ScreenWatch:
    """Notes when windows below the root are mapped and which areas of the screen are drawn.

    Times are time.monotonic() at the receipt of the X server's events. With a window manager a program's
    window lies in a frame, and the frame's mapping is what brings it to the screen.
    """

    SMALLEST = 100  # pixels each way; smaller windows are no program's main window

    def __init__(self):
        self._lock = threading.Lock()
        self._mapped = []  # times
        self._drawn = []  # (time, width, height)
        self._sizes = {}
        self._display = display.Display()
        root = self._display.screen().root
        root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self._display.damage_query_version()
        root.damage_create(damage.DamageReportRawRectangles)
        self._display.sync()
        threading.Thread(target=self._watch, daemon=True).start()

    def _watch(self):
        while True:
            event = self._display.next_event()
            now = time.monotonic()
            if event.type in (X.CreateNotify, X.ConfigureNotify):
                self._sizes[event.window.id] = (event.width, event.height)
            elif event.type == X.MapNotify:
                size = self._sizes.get(event.window.id, (0, 0))
                if min(size) >= self.SMALLEST:
                    with self._lock:
                        self._mapped.append(now)
            elif event.type == self._display.extension_event.DamageNotify:
                with self._lock:
                    self._drawn.append((now, event.area.width, event.area.height))

    def mapped_since(self, start):
        with self._lock:
            return next((t for t in self._mapped if t >= start), None)

    def drawn_since(self, start, width, height):
        """When an area of at least that size was drawn first."""
        with self._lock:
            return next((t for t, w, h in self._drawn if t >= start and w >= width and h >= height), None)


class SoundWatch:
    """Records the sink's monitor and notes when sound arrives.

    The recording asks for steps of 5 ms, which the sink then takes too, so that this is how exact the times
    are: time.monotonic() when the piece of the recording that holds the first loud sample could be read.
    """

    def __init__(self):
        self._lock = threading.Lock()
        self._loud = []
        command = ["parec", "--raw", "--latency-msec=5", "--process-time-msec=5", "--format=s16le",
                   f"--rate={SAMPLE_RATE}", "--channels=1", "-d", os.environ["TRV_SINK"] + ".monitor"]
        self._recorder = subprocess.Popen(command, stdout=subprocess.PIPE)
        threading.Thread(target=self._watch, daemon=True).start()

    def _watch(self):
        stream = self._recorder.stdout.fileno()
        rest = b""
        while data := os.read(stream, 65536):
            now = time.monotonic()
            data = rest + data
            rest = data[len(data) // 2 * 2:]
            samples = array("h", data[:len(data) // 2 * 2])
            if samples and max(max(samples), -min(samples)) >= LOUD:
                with self._lock:
                    self._loud.append(now)

    def loud_since(self, start):
        with self._lock:
            return next((t for t in self._loud if t >= start), None)

    def wait_quiet(self, seconds=0.3, most=5.0):
        end = time.monotonic() + most
        while time.monotonic() < end:
            start = time.monotonic()
            time.sleep(seconds)
            if self.loud_since(start) is None:
                return

    def close(self):
        self._recorder.terminate()
        self._recorder.wait()


class Keyboard:
    """Presses keys as a person would, for the window that has the focus."""

    def __init__(self):
        self._display = display.Display()

    def tap(self, key):
        """Gives time.monotonic() just before the key went down; programs that seek do it then."""
        code = self._display.keysym_to_keycode(XK.string_to_keysym(key))
        down = time.monotonic()
        for kind in (X.KeyPress, X.KeyRelease):
            xtest.fake_input(self._display, kind, code)
        self._display.sync()
        return down

    def press(self, key, held=None):
        """Gives time.monotonic() just before the key went up again."""
        codes = [self._display.keysym_to_keycode(XK.string_to_keysym(k)) for k in (held, key) if k]
        for code in codes:
            xtest.fake_input(self._display, X.KeyPress, code)
        self._display.sync()
        time.sleep(0.05)
        up = time.monotonic()
        for code in reversed(codes):
            xtest.fake_input(self._display, X.KeyRelease, code)
        self._display.sync()
        time.sleep(0.05)
        return up


class FastSink:
    """A sink of the session's sound server that takes sound a number of times faster than it is meant."""

    STEP = 0.01  # seconds
    PIPE_BYTES = 4096

    def __init__(self, path, speed):
        self.name = "fast"
        self._path = path
        self._bytes = int(2 * SAMPLE_RATE * speed * self.STEP)
        self._sounded = 0

    def __enter__(self):
        loaded = subprocess.run(
            ["pactl", "load-module", "module-pipe-sink", f"sink_name={self.name}", f"file={self._path}",
             "format=s16le", f"rate={SAMPLE_RATE}", "channels=1"], check=True, stdout=subprocess.PIPE)
        self._module = loaded.stdout.decode().strip()
        self._pipe = os.open(self._path, os.O_RDONLY | os.O_NONBLOCK)
        fcntl.fcntl(self._pipe, fcntl.F_SETPIPE_SZ, self.PIPE_BYTES)
        threading.Thread(target=self._take, daemon=True).start()
        return self

    def _take(self):
        due, owed = time.monotonic(), 0
        while True:
            due += self.STEP
            time.sleep(max(0.0, due - time.monotonic()))
            owed += self._bytes
            while owed > 0:
                try:
                    piece = os.read(self._pipe, owed)
                except BlockingIOError:
                    piece = b""
                except OSError:
                    return
                if not piece:
                    break
                owed -= len(piece)
                if any(piece):
                    self._sounded += len(piece)

    def minutes(self):
        """How much sound it has taken; silence, which the server makes when nothing plays, is not counted."""
        return self._sounded / (2 * SAMPLE_RATE * 60)

    def __exit__(self, *_):
        subprocess.run(["pactl", "unload-module", self._module], check=True)
        os.close(self._pipe)


def memory(pid):
    """Resident and proportional set in KiB, and the most that was ever resident."""
    figures = {}
    for name, fields in (("status", ("VmRSS", "VmHWM", "RssAnon")), ("smaps_rollup", ("Pss",))):
        with open(f"/proc/{pid}/{name}", encoding="ascii", errors="replace") as file:
            for line in file:
                key, _, value = line.partition(":")
                if key in fields:
                    figures[key] = int(value.split()[0])
    return figures


def processor_seconds(pid):
    """What all threads of a process have used so far, ended ones included, to the nanosecond."""
    return time.clock_gettime((~pid << 3) | 2)


def stop(process):
    process.terminate()
    try:
        process.wait(5)
    except subprocess.TimeoutExpired:
        process.kill()
        process.wait()
