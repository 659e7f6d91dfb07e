#!/usr/bin/env python3
"""play.sh where there is neither a display nor a sound card: what it says is true, and it cleans up.

    play.py ROOT PLAYER
"""

import array
import os
import re
import signal
import subprocess
import sys
import tempfile
import unittest


def processes_of(session):
    """Those whose environment names the session."""
    found = []
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/environ", "rb") as file:
                if session.encode() in file.read():
                    found.append(pid)
        except OSError:
            pass  # ended meanwhile, or somebody else's
    return found


class Play(unittest.TestCase):
    root = None
    player = None

    def start(self, *arguments):
        environment = {k: v for k, v in os.environ.items() if k not in ("DISPLAY", "WAYLAND_DISPLAY")}
        # A process group of its own, as a terminal gives it, so that the test can press Ctrl+C.
        return subprocess.Popen([os.path.join(self.root, "play.sh"), "--player", self.player, *arguments],
                                stderr=subprocess.PIPE, text=True, env=environment, start_new_session=True)

    def said(self, process):
        """The screenshot's command, the recording's command and the session's folder."""
        lines = []
        for line in process.stderr:
            lines.append(line.strip())
            if "until it ends" in line:
                break
        text = "\n".join(lines)
        return (re.search(r"^DISPLAY=.*import.*$", text, re.MULTILINE).group(),
                re.search(r"^parec.*$", text, re.MULTILINE).group(),
                re.search(r"until it ends: (.*)$", text, re.MULTILINE).group(1))

    def test_the_sample_is_seen_and_heard_as_it_says(self):
        process = self.start("--for", "6")
        look, listen, session = self.said(process)
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run("exec timeout 4 " + listen, shell=True, cwd=folder, check=False)
            subprocess.run(look, shell=True, cwd=folder, check=True)
            with open(os.path.join(folder, "sound.raw"), "rb") as file:
                data = file.read()
            samples = array.array("h", data[:len(data) // 2 * 2])
            self.assertGreater(len(samples), 8000)
            self.assertGreater(max(map(abs, samples)), 1000)
            colours = subprocess.run(["identify", "-format", "%k", os.path.join(folder, "screen.png")],
                                     capture_output=True, text=True, check=True).stdout
            # A photograph has thousands; an empty window and its frame have a few dozen.
            self.assertGreater(int(colours), 1000)
        self.assertEqual(0, process.wait(20), process.stderr.read())
        process.stderr.close()
        self.assertFalse(os.path.exists(session))

    def test_interrupted_it_leaves_nothing(self):
        process = self.start(os.path.join(self.root, "tests/data/samples/greeting-voice.trv"))
        _, _, session = self.said(process)
        os.killpg(process.pid, signal.SIGINT)
        self.assertEqual(130, process.wait(20))
        process.stderr.close()
        self.assertFalse(os.path.exists(session))
        self.assertEqual([], processes_of(session))

    def test_a_message_that_is_not_there_is_named(self):
        process = self.start("no such message.trv")
        self.assertEqual(1, process.wait(20))
        self.assertIn("no such message.trv", process.stderr.read())
        process.stderr.close()


if __name__ == "__main__":
    Play.root, Play.player = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])
