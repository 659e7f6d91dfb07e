#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""What assistive programs see of the player and can have it do, over the accessibility bus alone.

    assistive_test.py TRVPLAYER TRVDUMP SAMPLES      in a private session with a display, a sound server and a bus
"""

import os
import subprocess
import warnings

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

import desktop  # noqa: E402
from desktop import TITLE, run  # noqa: E402

LAUNCHERS = ("/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher")


def wait_for(condition, what):
    """As desktop.wait_for; what the player sends meanwhile is taken in, without which the tree here stays as it was."""
    def taken_in():
        while GLib.MainContext.default().iteration(False):
            pass
        return condition()

    return desktop.wait_for(taken_in, what=what)


def children(node):
    return [child for i in range(node.get_child_count()) if (child := node.get_child_at_index(i)) is not None]


def nodes(node):
    yield node
    for child in children(node):
        yield from nodes(child)


def is_shown(node):
    return node.get_state_set().contains(Atspi.StateType.SHOWING)


def find(node, role, name):
    return next((n for n in nodes(node) if (n.get_role_name(), n.get_name()) == (role, name)), None)


def act(node, action="Press"):
    names = [node.get_action_name(i) for i in range(node.get_n_actions())]
    node.do_action(names.index(action))


def caption(label):
    """The name of what a label is labelled by."""
    return [relation.get_target(0).get_name() for relation in label.get_relation_set()
            if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY]


class Assistive(desktop.DesktopTest):
    @classmethod
    def setUpClass(cls):
        warnings.simplefilter("ignore", DeprecationWarning)  # all of the binding's calls are
        launcher = next(path for path in LAUNCHERS if os.path.exists(path))
        cls.bus = subprocess.Popen([launcher, "--launch-immediately"], stderr=subprocess.DEVNULL)
        cls.addClassCleanup(cls.bus.wait)
        cls.addClassCleanup(cls.bus.terminate)
        subprocess.run(["gdbus", "wait", "--session", "--timeout", "60", "org.a11y.Bus"], check=True)
        os.environ["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        Atspi.init()

    def play(self, sample):
        player = self.start(self.sample(sample))
        self.window = wait_for(lambda: self.frame(f"{TITLE} - {sample}"), "the window on the bus")
        self.position = find(self.window, "slider", "Position")
        return player

    def frame(self, name):
        top = Atspi.get_desktop(0)
        return next((found for program in children(top) if program.get_name() == TITLE
                     for found in children(program) if found.get_name() == name), None)

    def button(self, name):
        return wait_for(lambda: find(self.window, "push button", name), f"the button {name!r}")

    def test_everything_has_a_role_a_name_and_a_caption(self):
        player = self.play("greeting-video.trv")
        self.assertEqual(self.window.get_role_name(), "frame")
        wait_for(lambda: all(n.get_name() for n in children(self.window) if n.get_role_name() == "label"), "the times")
        seen = [(n.get_role_name(), n.get_name()) for n in children(self.window) if is_shown(n)]
        for wanted in (("push button", "Pause"), ("push button", "Stop"), ("push button", "Open Audio Volume Controls"),
                       ("slider", "Position"), ("image", "Picture"), ("label", "Total:"), ("label", "Current:")):
            self.assertIn(wanted, seen)
        self.assertEqual([role for role, name in seen if not name], ["menu bar"])
        self.assertEqual([caption(n) for n in children(self.window)
                          if n.get_role_name() == "label" and not n.get_name().endswith(":")],
                         [["Total:"], ["Current:"]])
        act(find(self.window, "menu item", "Exit"))
        self.assertEqual(player.ended(), 0)

    def test_plays_seeks_stops_and_announces_each_once(self):
        self.play("greeting-voice.trv")
        announced = []
        listener = Atspi.EventListener.new(lambda event: announced.append(event.source.get_name()))
        listener.register("object:property-change:accessible-value")
        self.addCleanup(listener.deregister, "object:property-change:accessible-value")
        value = self.position.get_value_iface()
        before = value.get_current_value()
        wait_for(lambda: value.get_current_value() > before + 1, "a second of playing")
        self.assertEqual(announced, [], "while it plays")
        act(self.button("Pause"))
        self.button("Play")
        wait_for(lambda: announced == ["Position"], "the announcement of the pause")
        end = value.get_maximum_value()
        self.assertTrue(value.set_current_value(3))
        wait_for(lambda: abs(value.get_current_value() - 3) < 0.02, "the place asked for")
        wait_for(lambda: announced == ["Position"] * 2, "the announcement of the seek")
        self.assertEqual(self.position.get_description(), f"0:03 of {end // 60:.0f}:{end % 60 // 1:02.0f}")
        act(self.button("Play"))
        self.button("Pause")
        wait_for(lambda: value.get_current_value() > 3.5, "playing on from there")
        act(self.button("Stop"))
        wait_for(lambda: value.get_current_value() == 0, "the start")
        wait_for(lambda: announced == ["Position"] * 3, "the announcement of the stop")
        act(find(self.window, "menu item", "Close"))
        wait_for(lambda: self.frame(TITLE), "the empty window")

    def test_the_volume_dialog_is_worked_by_action_and_value_alone(self):
        self.play("greeting-voice.trv")
        act(self.button("Open Audio Volume Controls"))
        dialog = wait_for(lambda: next((n for top in children(Atspi.get_desktop(0)) for n in nodes(top)
                                        if n.get_role_name() == "dialog"), None), "the dialog")
        sliders = [n for n in nodes(dialog) if n.get_role_name() == "slider"]
        self.assertEqual(len({n.get_name() for n in sliders} - {""}), len(sliders), "each with a name of its own")
        for slider in sliders:
            value = slider.get_value_iface()
            value.set_current_value((value.get_minimum_value() + value.get_maximum_value()) / 2)
            wait_for(lambda s=slider: s.get_description() == "50 %", f"half of {slider.get_name()}")
        wait_for(lambda: " 50% " in run("pactl", "get-sink-volume", os.environ["TRV_SINK"]), "half at the server")
        mute = next(n for n in nodes(dialog) if n.get_role_name() == "check box")
        act(mute, "Toggle")
        wait_for(lambda: "Mute: yes" in run("pactl", "get-sink-mute", os.environ["TRV_SINK"])
                 or "Mute: yes" in run("pactl", "list", "sink-inputs"), "silence at the server")
        self.assertTrue(mute.get_state_set().contains(Atspi.StateType.CHECKED))
        act(mute, "Toggle")


if __name__ == "__main__":
    desktop.main()
