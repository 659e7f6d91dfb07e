#!/usr/bin/env python3
"""scripts/private-session ends everything that it started, however it ends itself.

    session.py ROOT
"""

import os
import signal
import subprocess
import sys
import time
import unittest

REPORT = ('echo "$TRV_SESSION $DISPLAY $TRV_X_PID $TRV_PULSE_PID $HOME $XDG_RUNTIME_DIR $(pactl get-default-sink)";')


def alive(pid):
    """A process that has ended but is not yet collected by its new parent counts as ended."""
    try:
        with open(f"/proc/{pid}/stat", encoding="ascii") as file:
            return file.read().rsplit(")", 1)[1].split()[0] != "Z"
    except FileNotFoundError:
        return False


class PrivateSession(unittest.TestCase):
    script = None

    def start(self, command, options=()):
        process = subprocess.Popen([self.script, *options, "bash", "-c", REPORT + command],
                                   stdout=subprocess.PIPE, text=True)
        self.addCleanup(process.stdout.close)
        return process, process.stdout.readline().split()

    def assert_all_gone(self, report):
        folder, _, x_pid, pulse_pid = report[:4]
        deadline = time.monotonic() + 5
        while time.monotonic() < deadline and (alive(x_pid) or alive(pulse_pid)):
            time.sleep(0.02)
        self.assertFalse(alive(x_pid) or alive(pulse_pid))
        return folder

    def test_two_at_once_are_apart_and_pass_the_status_on(self):
        one, first = self.start("sleep 0.3; exit 7")
        two, second = self.start("sleep 0.3")
        self.assertEqual([7, 0], [one.wait(), two.wait()])
        for mine, other in zip(first[:6], second[:6]):
            self.assertNotEqual(mine, other)
        for report in (first, second):
            self.assertTrue(report[4].startswith(report[0]) and report[5].startswith(report[0]))
            self.assertEqual("test", report[6])
            self.assertFalse(os.path.exists(self.assert_all_gone(report)))

    def test_terminated_it_leaves_nothing(self):
        for name, command in (("waiting", "sleep 60"), ("stopped server", "kill -STOP $TRV_PULSE_PID; sleep 60"),
                              ("deaf command", "trap '' TERM; sleep 5")):
            with self.subTest(name):
                process, report = self.start(command)
                process.send_signal(signal.SIGTERM)
                self.assertEqual(143, process.wait(10))
                self.assertFalse(os.path.exists(self.assert_all_gone(report)))

    def test_killed_outright_its_servers_end(self):
        process, report = self.start("sleep 2")
        process.kill()
        process.wait()
        self.assert_all_gone(report)
        subprocess.run(["rm", "-r", report[0]], check=True)


if __name__ == "__main__":
    PrivateSession.script = os.path.join(sys.argv[1], "scripts", "private-session")
    unittest.main(argv=sys.argv[:1])
