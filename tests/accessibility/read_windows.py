#!/usr/bin/python3
"""Reads the client's windows from outside, as a screen reader does, and works them by its actions.

    tests/accessibility/read_windows.py BIN

BIN is the folder with updown and updown-peer. Needs Xvfb, openbox, dbus-run-session, python3-xlib
and python3-pyatspi, with Debian's own python3. One line for each check; exit status 1 if one failed.
"""
import os
import sys
import tempfile

import pyatspi
from gi.repository import GLib

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "windows"))
from desktop import Desktop, wait_until  # noqa: E402
from launch import Client  # noqa: E402
from service import Service, store_transfers  # noqa: E402

PATIENCE = 10  # seconds
NAMED = {"frame", "dialog", "split pane", "table", "tree", "text", "link", "table column header",
         "separator", "progress bar", "push button"}
PACKAGES, ATTACHMENTS, TRANSFERS, TREE = ("Packages", "Attachments", "Transfers",
                                          "Packages on the service")
FIELDS = ("From", "To", "Subject", "Time Received")
failures = []


def check(what, good, measured=""):
    print(f"{'ok  ' if good else 'FAIL'}  {what}" + (f" ({measured})" if measured else ""), flush=True)
    if not good:
        failures.append(what)
    return good


def wait_for(look):
    """What `look` finds in time; it may meet what has gone meanwhile. Events come in between."""
    def careful():
        GLib.MainContext.default().iteration(False)
        try:
            return look()
        except (GLib.Error, AttributeError, NotImplementedError, IndexError):
            return None
    return wait_until(careful, PATIENCE, 0.05)


def has(node, state):
    return node.getState().contains(state)


def nodes(node, role=None):
    """All below, without what does not show."""
    for child in node:
        if child is None or (child.getRoleName() not in ("frame", "table cell", "link", "progress bar") and
                             not has(child, pyatspi.STATE_VISIBLE)):
            continue
        if role in (None, child.getRoleName()):
            yield child
        yield from nodes(child, role)


def named(app, role, name):
    return next((n for n in nodes(app, role) if n.name.rstrip(":") == name), None)


def action_names(node):
    actions = node.queryAction()
    return [actions.getName(i) for i in range(actions.nActions)]


def act(node, name):
    node.queryAction().doAction(action_names(node).index(name))


def check_table(app, name, rows):
    """A list with headings, whose rows can be read. Gives the table."""
    table = wait_for(lambda: named(app, "table", name))
    if not check(f"{name}: is a table", table is not None):
        return None
    grid = table.queryTable()
    check(f"{name}: has its rows", wait_for(lambda: grid.nRows == rows), f"{grid.nRows} of {rows}")
    headings = [n.name for n in nodes(table, "table column header")]
    check(f"{name}: headings have names", len(headings) == grid.nColumns and all(headings),
          ", ".join(headings))
    check(f"{name}: cells are told with their heading",
          [grid.getColumnDescription(c) for c in range(grid.nColumns)] == headings)
    check(f"{name}: rows can be read", wait_for(
        lambda: all(grid.getAccessibleAt(r, c).name for r in (0, rows - 1) for c in (0, 1) if grid.nRows == rows)))
    return table


def check_focus(app, where, expected):
    """The view and its current cell have the focus, and nothing else but their pane claims it."""
    def focused():
        return [n for n in nodes(app) if has(n, pyatspi.STATE_FOCUSED)]
    good = wait_for(lambda: focused() and
                    all(expected in (n, n.parent) or n == expected.parent for n in focused()) and focused())
    check(f"focus: {where}", good, ", ".join(f"{n.getRoleName()} {n.name!r}" for n in focused()))


def check_fields(app):
    for label in FIELDS:
        field = wait_for(lambda label=label: named(app, "text", label))
        value = field and field.queryText().getText(0, -1)
        check(f"header: {label} is a label with its value", bool(value), value or "not found")


def check_bar(app):
    bar = wait_for(lambda: next((n for n in nodes(app, "progress bar")
                                 if 0 < n.queryValue().currentValue < 100), None))
    if check("transfers: a bar has its value", bar is not None):
        value = bar.queryValue()
        check("transfers: from 0 to 100, and as text",
              (value.minimumValue, value.maximumValue) == (0, 100) and bar.name.endswith("%"),
              f"{value.currentValue:.2f}, {bar.name!r}")


def answer(app, title, path, button):
    """Fills the dialog that asks for a file or folder, and accepts it."""
    dialog = wait_for(lambda: next((n for n in nodes(app) if n.getRoleName() in
                                    ("dialog", "file chooser") and n.name == title), None))
    if not check(f"{title}: is asked", dialog is not None):
        return
    line = wait_for(lambda: next(n for n in nodes(dialog, "text") if has(n, pyatspi.STATE_EDITABLE)))
    line.queryEditableText().setTextContents(path)
    act(wait_for(lambda: named(dialog, "push button", button)), "Press")


def save(app, folder):
    links = wait_for(lambda: list(nodes(named(app, "table", ATTACHMENTS), "link")))
    files = [link.parent.queryTable().getAccessibleAt(row, 0).name
             for row, link in enumerate(links or [])]
    check("links: each tells its file", bool(links) and
          all(file and file in link.name for file, link in zip(files, links)),
          ", ".join(link.name for link in links or []))
    check("links: each can be pressed", bool(links) and
          all("Press" in action_names(link) for link in links))
    if links:
        target = os.path.join(folder, "by link")
        act(links[0], "Press")
        answer(app, "Save", target, "Save")
        check("Save by action: the file arrives", wait_for(lambda: os.path.exists(target)))


def save_all(app, table, folder):
    command = next((n for n in action_names(table) if n.startswith("Save All")), None)
    if check("Save All is an action of the list", command is not None, ", ".join(action_names(table))):
        os.mkdir(folder)
        act(table, command)
        answer(app, "Save All Files", folder, "Choose")
        check("Save All by action: a folder arrives", wait_for(
            lambda: [len(files) for _, _, files in os.walk(folder) if files]), os.listdir(folder))


def check_notice(app, desktop, service):
    told = []
    pyatspi.Registry.registerEventListener(
        lambda event: told.append((event.detail1, event.source.getRoleName(), event.source.name)),
        "object:state-changed:showing")
    service.stop()
    desktop.press("F5")
    check("notice: is announced",
          wait_for(lambda: any(on and role == "notification" and name for on, role, name in told)),
          str(told))


def read(app, desktop, service, folder):
    packages = check_table(app, PACKAGES, 6)
    check_focus(app, "in the list at first", packages)
    check_fields(app)
    check_table(app, TRANSFERS, 1)
    check_bar(app)
    save(app, folder)
    save_all(app, packages, os.path.join(folder, "all"))
    attachments = named(app, "table", ATTACHMENTS)
    check_table(app, ATTACHMENTS, attachments.queryTable().nRows)
    desktop.press("Escape")  # the transfers' window, which has come to the front
    desktop.press("F6")
    check_focus(app, "in the tree after F6", named(app, "tree", TREE))
    desktop.press("F6")
    check_focus(app, "back in the list", packages)
    nameless = [n.getRoleName() for n in nodes(app) if n.getRoleName() in NAMED and not n.name and
                n.parent.getRoleName() not in ("scroll bar",)]
    check("everything has a name", not nameless, ", ".join(nameless))
    handles = [n.name for n in nodes(app, "separator")]
    check("splitter handles tell what they divide", len(handles) == 2 and
          all(all(name.split(" | ")) for name in handles), "; ".join(handles))
    check_notice(app, desktop, service)


def main():
    programs = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as folder, Desktop(folder) as desktop:
        service = Service(os.path.join(programs, "updown-peer"), folder)
        store_transfers(service, folder, 1, 1 << 26)
        client = Client(desktop, os.path.join(programs, "updown"), service, folder, variables={
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1", "XDG_STATE_HOME": os.path.join(folder, "state")})
        try:
            app = wait_for(lambda: next((a for a in pyatspi.Registry.getDesktop(0)
                                         if a and a.get_process_id() == client.pid), None))
            if check("the client is on the accessibility bus", app is not None):
                read(app, desktop, service, folder)
        finally:
            client.stop()
            service.stop()
    return 1 if failures else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    if "inside" not in os.environ.get("UPDOWN_BUS", ""):
        os.environ["UPDOWN_BUS"] = "inside"
        os.execvp("dbus-run-session", ["dbus-run-session", "--", "/usr/bin/python3", *sys.argv])
    sys.exit(main())
