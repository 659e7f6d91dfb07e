#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""What saving messages costs: ten hours of speech beside ffmpeg, many messages at once, cancelling.

    bench/save_bench.py [--build DIR] [--hours N] [long] [jobs] [broken] [cancel]

Without a word all of them. Needs ffmpeg; `long` also bench's message_to_gsm.
"""

import argparse
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

from competitors_material import Material

QUIET = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}


def resident(pid):
    try:
        with open(f"/proc/{pid}/status", encoding="ascii") as file:
            return next((int(line.split()[1]) for line in file if line.startswith("VmRSS:")), 0)
    except OSError:
        return 0


def measured(command):
    """Processor time, wall time, and the resident memory (KiB) at a quarter, a half and three quarters of it."""
    begin = time.monotonic()
    process = subprocess.Popen(command, **QUIET)
    sizes = []
    ended = threading.Event()

    def watch():
        while not ended.wait(0.2):
            sizes.append(resident(process.pid))

    watcher = threading.Thread(target=watch)
    watcher.start()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = status
    ended.set()
    watcher.join()
    if status != 0:
        sys.exit(f"{command[0]} failed")
    quarters = [sizes[len(sizes) * part // 4] for part in (1, 2, 3)] if len(sizes) > 3 else sizes
    return usage.ru_utime + usage.ru_stime, time.monotonic() - begin, quarters


def long(options, material, trvdump):
    message = material.message(60 * options.hours, False)
    frames = message.replace(".trv", ".gsm")
    subprocess.run([os.path.join(options.build, "bench", "message_to_gsm"), message, frames], check=True)
    ours, theirs = material.path("ours.opus"), material.path("theirs.opus")
    results = {}
    for name, command in (
            ("trvdump", [trvdump, "--force", "--audio", ours, message]),
            ("ffmpeg", ["ffmpeg", "-nostdin", "-loglevel", "error", "-y", "-f", "gsm", "-i", frames, "-c:a", "libopus",
                        "-b:a", "24k", theirs])):
        results[name] = measured(command)
        processor, wall, sizes = results[name]
        print(f"long: {name:8} processor {processor:.1f} s, {3600 * options.hours / processor:.0f} times real time, "
              f"wall {wall:.1f} s, resident {' / '.join(f'{size / 1024:.1f}' for size in sizes)} MiB")
    print(f"long: processor, trvdump / ffmpeg {results['trvdump'][0] / results['ffmpeg'][0]:.3f}  (limit 1.2)")


def jobs(_, material, trvdump):
    """A thousand messages one after the other, and on all processors."""
    folder = material.path("thousand")
    os.makedirs(folder, exist_ok=True)
    message = material.message(1, True)
    messages = [shutil.copy(message, os.path.join(folder, f"{i:04}.trv")) for i in range(1000)]
    walls = {}
    for count in (1, os.cpu_count()):
        walls[count] = measured([trvdump, "--force", "--jobs", str(count), "--pcm", os.path.join(folder, "{}.raw"),
                                 *messages])[1]
        print(f"jobs: {count} at a time: {walls[count]:.2f} s")
    ratio = walls[os.cpu_count()] / walls[1] * os.cpu_count()
    print(f"jobs: share of one after the other, times the processors {ratio:.2f}  (limit 1.1)")


def broken(_, material, trvdump):
    folder = material.path("broken")
    os.makedirs(folder, exist_ok=True)
    message = material.message(1, True)
    messages = [shutil.copy(message, os.path.join(folder, f"{i:03}.trv")) for i in range(200)]
    for name in messages[::10]:
        with open(name, "r+b") as file:
            file.write(b"XXX")
    run = subprocess.run([trvdump, "--force", "--json-lines", "--audio", os.path.join(folder, "{}.opus"), *messages],
                         capture_output=True, text=True, check=False)
    lines = run.stdout.splitlines()
    written = sum(name.endswith(".opus") for name in os.listdir(folder))
    print(f"broken: status {run.returncode}, {len(lines)} lines, {sum('error' in line for line in lines)} errors, "
          f"{written} files")
    if (run.returncode, len(lines), written) != (1, 200, 180):
        sys.exit("broken: that is wrong")


def cancel(_, material, trvdump):
    message = material.message(60, True)
    left = 0
    for _ in range(20):
        with tempfile.TemporaryDirectory() as folder:
            process = subprocess.Popen([trvdump, "--video", os.path.join(folder, "f.mp4"), message], **QUIET)
            time.sleep(random.uniform(0, 3))
            process.send_signal(signal.SIGINT)
            status = process.wait()
            left += len(os.listdir(folder)) + (status != -signal.SIGINT)
    print(f"cancel: 20 times, {left} files left or other ends")
    if left:
        sys.exit(1)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--build", default="build/bench")
    parser.add_argument("--hours", type=int, default=10)
    parser.add_argument("what", nargs="*")
    options = parser.parse_args()
    known = {"long": long, "jobs": jobs, "broken": broken, "cancel": cancel}
    trvdump = os.path.join(options.build, "tools", "trvdump")
    with tempfile.TemporaryDirectory() as folder:
        material = Material(folder, trvdump)
        for what in options.what or known:
            known[what](options, material, trvdump)


main()
