#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What the volume dialog costs beside a playing message: processor time and memory, with it closed and open.

    bench/dialog_cost.py [--build DIR] [--minutes N]

Plays a long video message in a session of its own: a fifth of the time with the dialog closed, the rest with it
open. The processor time is the player's own; the sound server's is told beside it, as the level meter makes it
send one small stream more.
"""

import argparse
import os
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
SESSION = os.path.join(HERE, "..", "scripts", "private-session")
DIALOG = "Audio Volume Controls"


def visible(pid, name):
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--pid", str(pid), "--name", name],
                           stdout=subprocess.PIPE, text=True, check=False)
    return found.stdout.split()


def wait_visible(pid, name):
    end = time.monotonic() + 10
    while time.monotonic() < end:
        if windows := visible(pid, name):
            return windows[0]
        time.sleep(0.1)
    sys.exit(f"no window {name}")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("--build", default=os.path.join(HERE, "..", "build", "bench"))
    parser.add_argument("--minutes", type=float, default=10, help="with the dialog open")
    options = parser.parse_args()
    if "TRV_SESSION" not in os.environ:
        os.execv(SESSION, [SESSION, sys.executable, *sys.argv])

    from competitors_material import Material
    from competitors_watch import memory, processor_seconds, stop

    server = int(os.environ["TRV_PULSE_PID"])
    with tempfile.TemporaryDirectory() as folder:
        material = Material(folder, os.path.join(options.build, "tools", "trvdump"))
        message = material.message(int(options.minutes * 1.25) + 2, True)
        player = subprocess.Popen([os.path.join(options.build, "app", "trvplayer"), message],
                                  stdin=subprocess.DEVNULL)
        window = wait_visible(player.pid, "Trivelle Message Player")
        time.sleep(5)

        def measure(what, seconds):
            begin, used, served = time.monotonic(), processor_seconds(player.pid), processor_seconds(server)
            sizes = []
            for _ in range(10):
                time.sleep(seconds / 10)
                sizes.append(memory(player.pid)["RssAnon"] / 1024)
            passed = time.monotonic() - begin
            cost = 100 * (processor_seconds(player.pid) - used) / passed
            theirs = 100 * (processor_seconds(server) - served) / passed
            print(f"{what}: {cost:.2f} % of a core over {passed:.0f} s (sound server {theirs:.2f} %), "
                  f"anonymous memory in MiB {' '.join(f'{size:.1f}' for size in sizes)}", flush=True)
            return cost

        closed = measure("dialog closed", 60 * options.minutes / 4)
        subprocess.run(["xdotool", "windowfocus", "--sync", window, "key", "Tab", "Tab", "space"], check=True)
        wait_visible(player.pid, DIALOG)
        opened = measure("dialog open", 60 * options.minutes)
        if not visible(player.pid, DIALOG):
            sys.exit("the dialog was closed meanwhile")
        print(f"the dialog costs {opened - closed:.2f} % of a core (limit 2)")
        stop(player)


if __name__ == "__main__":
    main()
