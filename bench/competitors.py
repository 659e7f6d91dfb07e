#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""The player beside mpv and ffplay, and trvdump beside sox: start, processor time, memory.

    bench/competitors.py [--build DIR] [--rounds N] [--seconds N] [--speed N] WHAT...

WHAT is start, first-picture, seeking, playing, lengths, dump or all. Everything runs in a session of its own (display
with a window manager, sound server with a null sink), and the programs of a comparison run in turn or at the same
time, so that a slow moment of the machine falls on all of them. Results also go to DIR/competitors.json.
"""

import argparse
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
SESSION = os.path.join(HERE, "..", "scripts", "private-session")
LENGTHS = (1, 10, 100)  # minutes
PERIOD = 0.2  # seconds, of a message with five pictures a second
QUIET = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}


def player_command(build, material, minutes, video):
    return [os.path.join(build, "app", "trvplayer"), material.message(minutes, video)]


def commands(build, material, minutes, video):
    """Each program's command for a message of that length; the other players' cheapest outputs."""
    matroska = material.matroska(minutes, video)
    ffplay = ["ffplay", "-hide_banner", "-loglevel", "quiet", "-nostats"]
    return {
        "player": player_command(build, material, minutes, video),
        "mpv": ["mpv", "--no-config", "--really-quiet", "--vo=x11", matroska],
        "ffplay": ffplay + ([] if video else ["-showmode", "waves"]) + [matroska],
    }


def spread(values):
    return f"{statistics.median(values):8.3f} ({min(values):.3f} to {max(values):.3f})"


def ratios(figures, smallest_of=("mpv", "ffplay")):
    """The player's figure by the better competitor's, round by round; None where a round lacks one."""
    rounds = zip(figures["player"], *(figures[name] for name in smallest_of if name in figures))
    return [own / min(competitors) for own, *competitors in rounds]


def start(options, material, results):
    """From the start of the process to the window on the screen and to the first sound at the server."""
    from competitors_watch import ScreenWatch, SoundWatch, processor_seconds, stop

    screen, sound = ScreenWatch(), SoundWatch()
    programs = commands(options.build, material, 1, True)
    lead = material.first_loud_second(material.message(1, True))
    figures = {what: {name: [] for name in programs} for what in ("window", "sound", "processor")}
    for turn in range(options.rounds + 1):
        for name, command in programs.items():
            sound.wait_quiet()
            begin = time.monotonic()
            process = subprocess.Popen(command, **QUIET)
            end = begin + 10
            mapped = heard = None
            while time.monotonic() < end and (mapped is None or heard is None):
                time.sleep(0.005)
                mapped, heard = screen.mapped_since(begin), sound.loud_since(begin)
            used = processor_seconds(process.pid)
            stop(process)
            if mapped is None or heard is None:
                sys.exit(f"{name}: window {mapped}, sound {heard} after 10 s")
            if turn > 0:  # the first one warms the caches
                figures["window"][name].append(mapped - begin)
                figures["sound"][name].append(heard - begin - lead)
                figures["processor"][name].append(used)
    sound.close()
    for what, by_name in figures.items():
        for name, values in by_name.items():
            print(f"start, {what:9} {name:7} {spread(values)} s")
        by_round = ratios(by_name)
        print(f"start, {what:9} player / faster competitor {spread(by_round)}  (limit 0.33)")
        results[f"start {what}"] = {**by_name, "ratio": by_round}


def playing(options, material, results):
    """Processor time and memory while everything plays at the same time."""
    from competitors_watch import memory, processor_seconds, stop

    for video in (True, False):
        kind = "video" if video else "voice"
        programs = commands(options.build, material, 2, video)
        programs["empty window"] = [os.path.join(options.build, "bench", "empty_window")]
        processes = {name: subprocess.Popen(command, **QUIET) for name, command in programs.items()}
        time.sleep(5)
        before = {name: (time.monotonic(), processor_seconds(p.pid)) for name, p in processes.items()}
        sizes = {name: [] for name in processes}
        for _ in range(3):
            time.sleep(options.seconds / 3)
            for name, process in processes.items():
                sizes[name].append(memory(process.pid))
        cost = {}
        for name, process in processes.items():
            passed = time.monotonic() - before[name][0]
            cost[name] = 100 * (processor_seconds(process.pid) - before[name][1]) / passed
            stop(process)
        for name in processes:
            middle = {key: statistics.median(size[key] for size in sizes[name]) / 1024 for key in sizes[name][0]}
            print(f"playing {kind}: {name:12} {cost[name]:6.2f} % of a core, resident {middle['VmRSS']:6.1f} MiB "
                  f"(anonymous {middle['RssAnon']:5.1f}), proportional {middle['Pss']:6.1f} MiB")
            results[f"playing {kind} {name}"] = {"percent": cost[name], **middle}
        competitors = ("mpv", "ffplay") if video else ("ffplay",)
        smaller = min(cost[name] for name in competitors)
        print(f"playing {kind}: processor, player / smaller competitor {cost['player'] / smaller:.3f}  "
              f"(limit {0.5 if video else 0.35})")
        for key in ("VmRSS", "Pss"):
            size = {name: statistics.median(s[key] for s in sizes[name]) for name in sizes}
            print(f"playing {kind}: {key}, player / smaller competitor "
                  f"{size['player'] / min(size['mpv'], size['ffplay']):.3f}  (limit 0.6)")


def dump(options, material, results):
    """Whole processes: trvdump --pcm of a ten-minute voice message, and sox on the same frames."""
    message = material.message(10, False)
    frames = message.replace(".trv", ".gsm")
    subprocess.run([os.path.join(options.build, "bench", "message_to_gsm"), message, frames], check=True)
    ours, theirs = material.path("ours.raw"), material.path("theirs.raw")
    programs = {
        "trvdump": [os.path.join(options.build, "tools", "trvdump"), "--force", "--pcm", ours, message],
        "sox": ["sox", "-t", "gsm", frames, "-t", "raw", "-e", "signed", "-b", "16", theirs],
    }
    figures = {what: {name: [] for name in programs} for what in ("processor", "wall")}
    for turn in range(options.rounds + 1):
        for name, command in programs.items():
            begin = time.monotonic()
            process = subprocess.Popen(command, **QUIET)
            _, status, usage = os.wait4(process.pid, 0)
            process.returncode = status
            if status != 0:
                sys.exit(f"{name} failed")
            if turn > 0:
                figures["wall"][name].append(time.monotonic() - begin)
                figures["processor"][name].append(usage.ru_utime + usage.ru_stime)
    with open(ours, "rb") as one, open(theirs, "rb") as other:
        same = one.read() == other.read()
    print(f"dump: the samples are {'the same' if same else 'NOT the same'}")
    for what, by_name in figures.items():
        for name, values in by_name.items():
            print(f"dump, {what:9} {name:7} {spread(values)} s")
        by_round = [own / other for own, other in zip(by_name["trvdump"], by_name["sox"])]
        print(f"dump, {what:9} trvdump / sox {spread(by_round)}  (limit 1)")
        results[f"dump {what}"] = {**by_name, "ratio": by_round}


def first_picture(options, material, results):
    """From the end of the key press that plays to the first picture drawn, less the message's period."""
    from competitors_watch import Keyboard, ScreenWatch, stop

    screen, keyboard = ScreenWatch(), Keyboard()
    begin = time.monotonic()
    process = subprocess.Popen(player_command(options.build, material, 2, True), **QUIET)
    while screen.drawn_since(begin, 320, 240) is None:
        time.sleep(0.05)
    time.sleep(1)
    late = []
    for _ in range(options.rounds):
        # The focus is on Play; Stop is the next one.
        keyboard.press("Tab")
        keyboard.press("space")
        keyboard.press("Tab", "Shift_L")
        time.sleep(0.5)
        played = keyboard.press("space")
        time.sleep(0.4)
        drawn = screen.drawn_since(played + PERIOD / 2, 320, 240)
        if drawn is None:
            sys.exit("no picture after Play")
        late.append(1000 * (drawn - played - PERIOD))
    stop(process)
    print(f"first picture: {spread(late)} ms after one period")
    results["first picture"] = late


def seeking(options, material, results):
    """From a key that goes five seconds on, out of a quiet stretch into a loud one, to the picture drawn, while
    paused, and to the sound at the server, while playing. mpv is told to seek as exactly and to draw nothing else."""
    from competitors_material import Material
    from competitors_watch import Keyboard, ScreenWatch, SoundWatch, stop

    own = Material(material.path("seeking"), material.trvdump)
    own.alternate(5)
    programs = {name: commands(options.build, own, 3, True)[name] for name in ("player", "mpv")}
    keys = own.path("keys.conf")
    with open(keys, "w", encoding="ascii") as file:
        file.write("HOME seek 0 absolute+exact\nRIGHT seek 5 exact\n")
    programs["mpv"][1:1] = [f"--input-conf={keys}", "--osd-level=0", "--no-osd-bar", "--osc=no"]
    screen, sound, keyboard = ScreenWatch(), SoundWatch(), Keyboard()
    figures = {what: {name: [] for name in programs} for what in ("picture", "sound")}
    for name, command in programs.items():
        begin = time.monotonic()
        process = subprocess.Popen(command, **QUIET)
        while screen.drawn_since(begin, 320, 240) is None:
            time.sleep(0.05)
        time.sleep(1)
        for what, watch in (("sound", sound.loud_since),
                            ("picture", lambda since: screen.drawn_since(since, 320, 240))):
            if what == "picture":
                keyboard.tap("space")  # Play/Pause has the focus in the one, and is the key in the other
            for _ in range(options.rounds):
                keyboard.tap("Home")
                time.sleep(0.3)
                sound.wait_quiet()
                asked = keyboard.tap("Right")
                end = asked + 3
                while (seen := watch(asked)) is None and time.monotonic() < end:
                    time.sleep(0.005)
                if seen is None:
                    sys.exit(f"{name}: no {what} after a seek")
                figures[what][name].append(1000 * (seen - asked))
        stop(process)
    sound.close()
    for what, by_name in figures.items():
        for name, values in by_name.items():
            print(f"seeking, {what:7} {name:7} {spread(values)} ms")
        by_round = ratios(by_name, ("mpv",))
        print(f"seeking, {what:7} player / mpv {spread(by_round)}  (limit 0.5)")
        results[f"seeking {what}"] = {**by_name, "ratio": by_round}


def lengths(options, material, results):
    """Processor time per minute of message and memory, over the whole of voice messages of 1, 10 and 100
    minutes, played as many times faster as the sound server takes the sound; and over the first minute of
    video messages of these lengths, in real time."""
    from competitors_watch import FastSink, memory, processor_seconds, stop

    with FastSink(material.path("fast"), options.speed) as sink:
        for minutes in LENGTHS:
            command = player_command(options.build, material, minutes, False)
            process = subprocess.Popen(command, env={**os.environ, "PULSE_SINK": sink.name}, **QUIET)
            whole = 60 * minutes / options.speed
            time.sleep(whole / 20)
            rows = []
            for _ in range(4):
                before = sink.minutes(), processor_seconds(process.pid)
                time.sleep(whole / 5)
                cost = (processor_seconds(process.pid) - before[1]) / (sink.minutes() - before[0])
                rows.append((cost, memory(process.pid)["VmRSS"] / 1024))
            stop(process)
            report_length("voice", minutes, rows, results)
    for minutes in LENGTHS:
        process = subprocess.Popen(player_command(options.build, material, minutes, True), **QUIET)
        time.sleep(3)
        rows = []
        for _ in range(2):
            before = processor_seconds(process.pid)
            time.sleep(25)
            cost = (processor_seconds(process.pid) - before) * 60 / 25
            rows.append((cost, memory(process.pid)["VmRSS"] / 1024))
        stop(process)
        report_length("video", minutes, rows, results)


def report_length(kind, minutes, rows, results):
    print(f"length, {kind}, {minutes:3} min: " + ", ".join(f"{1000 * cost:.0f} ms a minute, {rss:.1f} MiB"
                                                         for cost, rss in rows))
    results[f"length {kind} {minutes}"] = rows


WHAT = {"start": start, "first-picture": first_picture, "seeking": seeking, "playing": playing, "lengths": lengths,
        "dump": dump}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    parser.add_argument("--build", default=os.path.join(HERE, "..", "build", "bench"))
    parser.add_argument("--rounds", type=int, default=15)
    parser.add_argument("--seconds", type=int, default=60)
    parser.add_argument("--speed", type=int, default=60)
    parser.add_argument("what", nargs="+", choices=[*WHAT, "all"])
    options = parser.parse_args()
    options.build = os.path.abspath(options.build)
    if "TRV_SESSION" not in os.environ:
        os.execv(SESSION, [SESSION, "--screen", "1600x1200", sys.executable, *sys.argv])

    from competitors_material import Material

    chosen = list(WHAT) if "all" in options.what else options.what
    results = {}
    with tempfile.TemporaryDirectory() as folder:
        material = Material(folder, os.path.join(options.build, "tools", "trvdump"))
        for what in chosen:
            WHAT[what](options, material, results)
            sys.stdout.flush()
    path = os.path.join(options.build, "competitors.json")
    known = {}
    if os.path.exists(path):
        with open(path, encoding="utf-8") as file:
            known = json.load(file)
    with open(path, "w", encoding="utf-8") as file:
        json.dump({**known, **results}, file, indent=1)


if __name__ == "__main__":
    main()
