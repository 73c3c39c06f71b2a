"""An X server of its own with a window manager, and what a person and the manager do there."""
import os
import select
import subprocess
import threading
import time

from Xlib import X, XK, display, error
from Xlib.ext import xtest
from Xlib.protocol import event

PING_PERIOD = 0.05  # seconds
WITHDRAWN, NORMAL, ICONIC = 0, 1, 3  # WM_STATE


def wait_until(look, seconds, pause=0.01):
    """What `look` gives as soon as it is true, or what it gave last."""
    end = time.monotonic() + seconds
    while True:
        found = look()
        if found or time.monotonic() >= end:
            return found
        time.sleep(pause)


class Desktop:
    """Xvfb and openbox; ends them on exit. Used by one thread."""

    def __init__(self, folder):
        read, write = os.pipe()
        log = open(os.path.join(folder, "desktop.log"), "w")
        self.server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x960x24", "-nolisten", "tcp"],
            pass_fds=[write], stdout=log, stderr=log)
        os.close(write)
        with os.fdopen(read) as number:
            self.name = ":" + number.readline().strip()
        self.manager = subprocess.Popen(["openbox", "--sm-disable"], stdout=log, stderr=log,
                                        env={**os.environ, "DISPLAY": self.name, "HOME": folder})
        log.close()
        self.display = display.Display(self.name)
        self.display.set_error_handler(lambda *_: None)  # of a window that has gone meanwhile
        self.root = self.display.screen().root
        if not wait_until(lambda: self.property(self.root, "_NET_SUPPORTING_WM_CHECK"), 10):
            raise RuntimeError("the window manager does not start")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.display.close()
        for process in (self.manager, self.server):
            process.terminate()
            process.wait()

    def atom(self, name):
        return self.display.intern_atom(name)

    def property(self, window, name):
        """The property's value, or None where window or property are not there."""
        try:
            found = window.get_full_property(self.atom(name), X.AnyPropertyType)
        except (error.BadWindow, error.BadValue):
            return None
        return found.value if found else None

    def windows(self, pid):
        """The process's windows that the manager has, in the order of their mapping."""
        listed = self.property(self.root, "_NET_CLIENT_LIST")
        found = [self.display.create_resource_object("window", one) for one in listed or []]
        return [one for one in found if list(self.property(one, "_NET_WM_PID") or []) == [pid]]

    def main_window(self, pid):
        """The first one that is no dialog: the transfers' window comes after it."""
        return next((one for one in self.windows(pid) if not self.is_dialog(one)), None)

    def is_dialog(self, window):
        types = self.property(window, "_NET_WM_WINDOW_TYPE")
        return not types or types[0] != self.atom("_NET_WM_WINDOW_TYPE_NORMAL")

    def others(self, pid):
        main = self.main_window(pid)
        return [one for one in self.windows(pid) if one != main]

    def state(self, window):
        return (self.property(window, "WM_STATE") or [WITHDRAWN])[0]

    def icons_in_column(self, window, width, is_icon):
        """How many icons stand one below the other at the window's left. is_icon(red, green, blue)
        is true of their colour; 4 lines without it part one from the next."""
        shape = window.get_geometry()
        pixels = window.get_image(0, 0, width, shape.height, X.ZPixmap, 0xFFFFFFFF).data
        line = 4 * width
        lines = [start // line for start in range(0, len(pixels), line)
                 if any(is_icon(pixels[at + 2], pixels[at + 1], pixels[at])
                        for at in range(start, start + line, 4))]
        return sum(here - above > 4 for above, here in zip([-5] + lines, lines))

    def is_active(self, window):
        return list(self.property(self.root, "_NET_ACTIVE_WINDOW") or []) == [window.id]

    def tell(self, window, kind, values, target=None, mask=0):
        data = (32, (list(values) + [0] * 5)[:5])
        message = event.ClientMessage(window=window, client_type=self.atom(kind), data=data)
        (target or window).send_event(message, event_mask=mask)
        self.display.flush()

    def close(self, window):
        self.tell(window, "WM_PROTOCOLS", [self.atom("WM_DELETE_WINDOW"), X.CurrentTime])

    def minimise(self, window):
        self.tell(window, "WM_CHANGE_STATE", [ICONIC], self.root,
                  X.SubstructureRedirectMask | X.SubstructureNotifyMask)
        wait_until(lambda: self.state(window) == ICONIC, 5)

    def press(self, *names):
        """One key after the other; with "shift+" or "alt+" in front one that is held down."""
        held = {"shift": "Shift_L", "alt": "Alt_L"}
        for name in names:
            codes = [self.display.keysym_to_keycode(XK.string_to_keysym(held.get(one, one)))
                     for one in name.split("+")]
            for code in codes:
                xtest.fake_input(self.display, X.KeyPress, code)
            for code in reversed(codes):
                xtest.fake_input(self.display, X.KeyRelease, code)
            self.display.sync()
            time.sleep(0.03)


class Pinger:
    """Asks each window of one process every 50 ms whether it lives, and times the answers."""

    def __init__(self, name, pid):
        self.desk = object.__new__(Desktop)  # a connection of its own
        self.desk.display = display.Display(name)
        self.desk.display.set_error_handler(lambda *_: None)
        self.desk.root = self.desk.display.screen().root
        self.pid = pid
        self.lock = threading.Lock()
        self.waiting = {}  # stamp: when it was sent
        self.worst_seen = 0.0
        self.asked = 0
        self.over = threading.Event()
        self.thread = threading.Thread(target=self.run, daemon=True)
        self.thread.start()

    def run(self):
        desk = self.desk
        # The toolkit sends its answer to those who watch the root window itself.
        desk.root.change_attributes(event_mask=X.StructureNotifyMask | X.SubstructureNotifyMask)
        protocols, ping = desk.atom("WM_PROTOCOLS"), desk.atom("_NET_WM_PING")
        stamp = 1
        due = time.monotonic()
        while not self.over.is_set():
            while desk.display.pending_events():
                answer = desk.display.next_event()
                if answer.type == X.ClientMessage and answer.client_type == protocols \
                        and answer.data[1][0] == ping:
                    self.take(answer.data[1][1])
            if time.monotonic() >= due:
                due = max(due + PING_PERIOD, time.monotonic())
                for window in desk.windows(self.pid):
                    stamp += 1
                    with self.lock:
                        self.waiting[stamp] = time.monotonic()
                        self.asked += 1
                    desk.tell(window, "WM_PROTOCOLS", [ping, stamp, window.id])
            select.select([desk.display], [], [], max(0, due - time.monotonic()))

    def take(self, stamp):
        with self.lock:
            sent = self.waiting.pop(stamp, None)
            if sent is not None:
                self.worst_seen = max(self.worst_seen, time.monotonic() - sent)

    def begin(self):
        """Only what is asked from now on counts."""
        with self.lock:
            self.waiting.clear()
            self.worst_seen = 0.0
            self.asked = 0

    def worst(self):
        """Seconds of the slowest answer; a ping without one counts as long as it has waited."""
        with self.lock:
            now = time.monotonic()
            return max([self.worst_seen] + [now - sent for sent in self.waiting.values()])

    def stop(self):
        if not self.over.is_set():
            self.over.set()
            self.thread.join()
            self.desk.display.close()
