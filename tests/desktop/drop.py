#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Drops files on a window, as a file manager does (XDND 5, freedesktop.org); of many names the list comes in parts.

    drop.py WINDOW FILE...
    drop.py WINDOW --names COUNT FILE      the same file so many times

Exits with 0 once the window has taken them, 1 when it did not want them.
"""

import select
import sys
import time
import urllib.parse

from Xlib import X, Xatom, display
from Xlib.protocol import event

PART = 1 << 17
PATIENCE = 120


class Drop:
    def __init__(self, target, data):
        self.display = display.Display()
        self.data = data
        self.target = self.display.create_resource_object("window", target)
        root = self.display.screen().root
        self.source = root.create_window(0, 0, 1, 1, 0, X.CopyFromParent, event_mask=X.PropertyChangeMask)
        self.parts = {}  # by requestor and property: the place in the data
        about = self.target.get_geometry()
        place = root.translate_coords(self.target, 0, 0)
        self.place = (place.x + about.width // 2) << 16 | (place.y + about.height // 2)

    def atom(self, name):
        return self.display.intern_atom(name)

    def send(self, kind, *words):
        words = [self.source.id, *words] + [0] * (4 - len(words))
        self.target.send_event(event.ClientMessage(window=self.target, client_type=self.atom(kind),
                                                   data=(32, words)))
        self.display.flush()

    def run(self):
        self.source.set_selection_owner(self.atom("XdndSelection"), X.CurrentTime)
        self.send("XdndEnter", 5 << 24, self.atom("text/uri-list"))
        self.send("XdndPosition", 0, self.place, X.CurrentTime, self.atom("XdndActionCopy"))
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            if not self.display.pending_events():
                select.select([self.display], [], [], 1)
                continue
            happened = self.display.next_event()
            if happened.type == X.SelectionRequest:
                self.answer(happened)
            elif happened.type == X.PropertyNotify and happened.state == X.PropertyDelete:
                self.go_on(happened)
            elif happened.type == X.ClientMessage and happened.client_type == self.atom("XdndStatus"):
                if not happened.data[1][1] & 1:
                    return False
                self.send("XdndDrop", 0, X.CurrentTime)
            elif happened.type == X.ClientMessage and happened.client_type == self.atom("XdndFinished"):
                return True
        return False

    def answer(self, request):
        wanted = request.target == self.atom("text/uri-list")
        if wanted and len(self.data) <= PART:
            request.requestor.change_property(request.property, request.target, 8, self.data)
        elif wanted:
            request.requestor.change_attributes(event_mask=X.PropertyChangeMask)
            self.parts[request.requestor.id, request.property] = 0
            request.requestor.change_property(request.property, self.atom("INCR"), 32, [len(self.data)])
        else:
            request.requestor.change_property(request.property, Xatom.ATOM, 32, [self.atom("text/uri-list")])
        request.requestor.send_event(event.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection, target=request.target,
            property=request.property))
        self.display.flush()

    def go_on(self, taken):
        at = self.parts.get((taken.window.id, taken.atom))
        if at is None:
            return
        part = self.data[at:at + PART]  # an empty one ends it
        self.parts[taken.window.id, taken.atom] = at + len(part)
        if not part:
            del self.parts[taken.window.id, taken.atom]
        taken.window.change_property(taken.atom, self.atom("text/uri-list"), 8, part)
        self.display.flush()


def main():
    window, files = int(sys.argv[1], 0), sys.argv[2:]
    if files[0] == "--names":
        files = files[2:] * int(files[1])
    addresses = ("file://" + urllib.parse.quote(file) + "\r\n" for file in files)
    sys.exit(0 if Drop(window, "".join(addresses).encode()).run() else 1)


if __name__ == "__main__":
    main()
