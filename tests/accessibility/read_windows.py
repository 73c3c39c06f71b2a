#!/usr/bin/python3
"""Reads the client's windows from outside, as a screen reader does, and says what it cannot read.

    dbus-run-session -- tests/accessibility/read_windows.py build/<preset>/bin/updown-peer \
        --make-area DIR --packages 4 --print-command

Needs a display with a window manager, and Debian's python3-pyatspi with Debian's own python3. The
arguments start the service; the client is the program updown beside it. Exit status 0: all is read.
"""
import os
import shlex
import subprocess
import sys
import tempfile
import time

import pyatspi

PATIENCE = 30  # seconds
NAMED = {"frame", "dialog", "split pane", "table", "tree", "text", "link", "table column header"}
faults = []


def check(condition, text):
    print(("ok    " if condition else "FAULT ") + text)
    if not condition:
        faults.append(text)


def wait_for(look):
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = look()
        if found:
            return found
        time.sleep(0.2)
    return None


def client(pid):
    return next((a for a in pyatspi.Registry.getDesktop(0) if a and a.get_process_id() == pid), None)


def walk(node):
    yield node
    for child in node:
        if child is not None:
            yield from walk(child)


def tables(app):
    return [n for n in walk(app) if n.getRoleName() == "table"]


def cells(table):
    grid = table.queryTable()
    return [[grid.getAccessibleAt(r, c) for c in range(grid.nColumns)] for r in range(grid.nRows)]


def read(app):
    listed = wait_for(lambda: next((t for t in tables(app) if t.queryTable().nRows == 4), None))
    check(listed is not None, "the package list has four rows")
    if listed is None:
        return
    check(wait_for(lambda: any(row[1].name for row in cells(listed))), "rows read their sender")
    check(all(row[4].name for row in cells(listed)), "rows read their status")
    for node in walk(app):
        if node.getRoleName() in NAMED:
            check(node.name != "", f"{node.getRoleName()} has a name: {node.name!r}")

    def links():
        return [n for n in walk(app) if n.getRoleName() == "link"]

    cells(listed)[-1][0].queryAction().doAction(0)  # selects the row
    wait_for(links)
    check(links(), "attachments have links")
    for link in links():
        actions = link.queryAction()
        names = [actions.getName(i) for i in range(actions.nActions)]
        check("Press" in names, f"link {link.name!r} can be pressed")


def main():
    with tempfile.TemporaryDirectory() as data:
        peer = subprocess.Popen(sys.argv[1:] + ["--serve"], stdout=subprocess.PIPE, text=True)
        program = os.path.join(os.path.dirname(sys.argv[1]), "updown")
        command = shlex.split(peer.stdout.readline())
        command[command.index("updown")] = program
        variables = {"XDG_DATA_HOME": data, "XDG_STATE_HOME": data,
                     "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1"}
        started = subprocess.Popen(command, env={**os.environ, **variables},
                                   stderr=subprocess.DEVNULL)
        try:
            app = wait_for(lambda: client(started.pid))
            check(app is not None, "the client is on the accessibility bus")
            if app is not None:
                read(app)
        finally:
            started.terminate()
            started.wait()
            peer.terminate()
            peer.wait()
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
