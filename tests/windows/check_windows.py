#!/usr/bin/python3
"""Watches the client in real windows: that it always answers, starts and ends in time.

    tests/windows/check_windows.py BIN [WORDS...]

BIN is the folder with updown and updown-peer; with WORDS only cases whose name has one of them run.
Needs Xvfb, openbox and python3-xlib. One line for each check, with what was measured; exit status 1
if one failed.
"""
import contextlib
import fcntl
import itertools
import os
import signal
import socket
import sys
import tempfile
import time

from desktop import ICONIC, NORMAL, Desktop, wait_until
from launch import END_LIMIT, Client
from service import Service, store_transfers

PING_LIMIT = 0.2  # seconds, as are all here
WINDOW_LIMIT = 1.0
WATCHED = 2.5  # how long a stall is looked at
PATIENCE = 10.0
AWAY = 30
TRANSFERS = 10
LIST, REMOVE_FOLDER, RENAME, REMOVE_FILE, READ = 4099, 4101, 4102, 4103, 4104

ROW_ICONS = 24  # pixels at the window's left
ENDS = ("close", "SIGTERM", "SIGINT", "SIGHUP")


def is_folder_colour(red, green, blue):
    return red > 180 and 90 < green < 190 and blue < 90


class Case:
    """What one case works with; prints its checks."""

    def __init__(self, name, desktop, programs, folder):
        self.name, self.desktop, self.folder = name, desktop, folder
        self.programs = programs
        self.failures = 0
        self.kept = contextlib.ExitStack()

    def check(self, what, good, measured=""):
        print(f"{'ok  ' if good else 'FAIL'}  {self.name}: {what}" +
              (f" ({measured})" if measured else ""), flush=True)
        self.failures += not good
        return good

    def service(self, *options):
        made = Service(os.path.join(self.programs, "updown-peer"), self.folder, *options)
        self.kept.callback(made.stop)
        return made

    def client(self, service, **options):
        made = Client(self.desktop, os.path.join(self.programs, "updown"), service, self.folder,
                      **options)
        self.kept.callback(made.stop)
        return made

    def window(self, client, limit=None):
        """The main window; with a limit its coming in time is checked."""
        window, took = client.main_window(PATIENCE if limit is None else limit + 2)
        if limit is not None or window is None:
            self.check("main window", window is not None and took <= (limit or PATIENCE),
                       f"{took * 1000:.0f} ms" if window else "none")
        return window

    def answers(self, client, seconds=WATCHED, what="answers pings"):
        time.sleep(seconds)
        worst, asked = client.pinger.worst(), client.pinger.asked
        self.check(what, asked > 0 and worst <= PING_LIMIT,
                   f"slowest of {asked}: {worst * 1000:.0f} ms")

    def ends(self, client, way):
        took, status = client.end(way)
        self.check(f"{way} ends it", status == 0 and took <= END_LIMIT,
                   f"{took * 1000:.0f} ms, status {status}")

    def listed(self, client, service, headers=1):
        """The window stands, is listed and at rest, and has the keyboard."""
        window = self.window(client)
        if window is None:
            return None
        wait_until(lambda: self.rows(window) > 0 and service.count(READ) >= headers, PATIENCE)
        calm = wait_until(lambda: self.at_rest(service), PATIENCE)
        active = wait_until(lambda: self.desktop.is_active(window), PATIENCE)
        if not (calm and active):
            self.check("the list comes to rest", False, f"calm {calm}, has the keyboard {active}")
        return window

    def rows(self, window):
        """How many packages the list shows: they have a folder in front."""
        return self.desktop.icons_in_column(window, ROW_ICONS, is_folder_colour)

    @staticmethod
    def at_rest(service):
        before = service.count(0)
        time.sleep(0.5)
        return service.count(0) == before

    def asked(self, service, message, before):
        came = wait_until(lambda: service.count(message) > before, PATIENCE)
        if not came:
            self.check(f"the request {message} comes", False, "never asked")
        return came


# Stalls, as (name, what to tell the service).
STALLS_AT_START = {
    "accept": "accept off",
    "resolve": "fault stall:1:times=0",
    "connect": "fault stall:2:times=0",
    "session": "fault stall:4352:times=0",
    "listing": "fault stall:4099:times=0",
}


def stalled_start(case, stall, ways):
    service = case.service()
    service.tell(STALLS_AT_START[stall])
    start_and_end(case, service, ways)


def start_and_end(case, service, ways, **options):
    for way in ways:
        client = case.client(service, **options)
        case.window(client, WINDOW_LIMIT)
        case.answers(client)
        case.ends(client, way)
        client.stop()


def dropped_start(case, ways):
    """A relay that lets every packet fall: its queue of new connections is full."""
    service = case.service()
    deaf = case.kept.enter_context(socket.create_server(("127.0.0.1", 0), backlog=0))
    for _ in range(3):
        filler = case.kept.enter_context(socket.socket())
        filler.setblocking(False)
        filler.connect_ex(deaf.getsockname())
    port = {"B99242F1C55F489fA98402890C4AA428": str(deaf.getsockname()[1])}
    start_and_end(case, service, ways, variables=port)


def press_refresh(case, _):
    case.desktop.press("F5")


def press_select(case, _):
    case.desktop.press("Down")


def ask_to_delete(case):
    case.desktop.press("Menu")
    time.sleep(0.3)
    case.desktop.press("d")


def press_delete(case, client):
    before = len(case.desktop.windows(client.pid))
    ask_to_delete(case)
    wait_until(lambda: len(case.desktop.windows(client.pid)) > before, PATIENCE)
    time.sleep(0.2)
    case.desktop.press("alt+d")  # the harmless button is the default


def press_rename(case, _):
    """The first package in the tree gets another package's name: no second has this number."""
    case.desktop.press("F6")
    time.sleep(0.2)
    case.desktop.press("Home", "Down")
    time.sleep(0.5)
    case.desktop.press("F2")
    time.sleep(0.2)
    case.desktop.press("End", "BackSpace", "BackSpace", "9", "9", "Return")


# (name: message that stalls, what the person does)
STALLS_LATER = {
    "F5": (LIST, press_refresh),
    "selection": (LIST, press_select),
    "delete": (REMOVE_FOLDER, press_delete),
    "delete's files": (REMOVE_FILE, press_delete),
    "rename": (RENAME, press_rename),
}


def stalled_later(case, stall, ways):
    message, act = STALLS_LATER[stall]
    service = case.service()
    for way in ways:
        client = case.client(service)
        if case.listed(client, service) is None:
            return
        before = service.count(message)
        service.tell(f"fault stall:{message}:times=0")
        client.pinger.begin()
        act(case, client)
        case.asked(service, message, before)
        case.answers(client)
        case.ends(client, way)
        client.stop()
        service.tell("clear")


def delayed(case):
    """Each reply 3 s late: the start, F5 and a selection, with ten transfers under way."""
    service = case.service("--delay", "0:3000", "--delay", "1:3000", "--delay", "2:3000")
    arriving = store_transfers(service, case.folder, TRANSFERS, 1 << 24)
    client = case.client(service)
    case.window(client, WINDOW_LIMIT)
    case.answers(client, 15, "answers pings while it starts")
    for keys in (["F5"], ["Down"]):
        client.pinger.begin()
        case.desktop.press(*keys)
        case.answers(client, 8, f"answers pings after {keys[0]}")
    came = wait_until(lambda: all(size_of(one) > 0 for one in arriving), 30)
    case.check("ten transfers run", came, str([size_of(one) for one in arriving]))
    case.ends(client, "close")


def size_of(path):
    return os.path.getsize(path) if os.path.exists(path) else 0


def transfers_go_on(case):
    """Restored transfers: their window is minimised, and they run on while a listing stalls."""
    service = case.service()
    arriving = store_transfers(service, case.folder, TRANSFERS, 1 << 24)
    client = case.client(service)
    window = case.window(client, WINDOW_LIMIT)
    others = wait_until(lambda: case.desktop.others(client.pid), PATIENCE)
    wait_until(lambda: all(size_of(one) > 0 for one in arriving), PATIENCE)
    states = [case.desktop.state(one) for one in others]
    case.check("restored transfers are minimised", states == [ICONIC], f"WM_STATE {states}")
    case.check("the main window has the keyboard",
               wait_until(lambda: case.desktop.is_active(window), PATIENCE))
    before = service.count(LIST)
    service.tell("fault stall:4099:times=0")
    client.pinger.begin()
    case.desktop.press("F5")
    case.asked(service, LIST, before)
    sizes = [size_of(one) for one in arriving]
    case.answers(client, 4)
    grown = sum(size_of(one) > size for one, size in zip(arriving, sizes))
    case.check("transfers go on", grown == TRANSFERS, f"{grown} of {TRANSFERS} grow")
    case.ends(client, "SIGTERM")


def second_start(case):
    service = case.service()
    client = case.client(service)
    window = case.listed(client, service)
    for stalled in (False, True):
        if stalled:
            service.tell("fault stall:4099:times=0")
            case.desktop.press("F5")
            time.sleep(0.5)
        case.desktop.minimise(window)
        second = case.client(service)
        began = time.monotonic()
        forward = wait_until(lambda: case.desktop.state(window) == NORMAL and
                             case.desktop.is_active(window), 3)
        took = time.monotonic() - began
        while_what = " in a stall" if stalled else ""
        case.check(f"a second start brings the first forward{while_what}", forward,
                   f"{took * 1000:.0f} ms")
        status = wait_until(lambda: second.process.poll() is not None, END_LIMIT)
        case.check(f"and ends{while_what}", status and second.process.returncode == 0,
                   f"status {second.process.returncode}")


def size_comes_back(case):
    service = case.service()
    sizes = {}
    for way in ("close", "SIGTERM"):
        client = case.client(service)
        window = case.listed(client, service)
        sizes[way] = (700 + 100 * len(sizes), 480)
        window.configure(width=sizes[way][0], height=sizes[way][1])
        case.desktop.display.sync()
        time.sleep(0.5)
        case.ends(client, way)
        client = case.client(service)
        window = case.listed(client, service)
        shape = window.get_geometry()
        shown = (shape.width, shape.height)
        case.check(f"its size comes back after {way}", shown == sizes[way], f"{shown}")
        case.ends(client, "close")


def fill(write_end):
    """Up to the last byte, as a reader that has stopped would leave it."""
    flags = fcntl.fcntl(write_end, fcntl.F_GETFL)
    fcntl.fcntl(write_end, fcntl.F_SETFL, flags | os.O_NONBLOCK)
    with contextlib.suppress(BlockingIOError):
        while True:
            os.write(write_end, b"x")
    fcntl.fcntl(write_end, fcntl.F_SETFL, flags)


def error_stream(case, kind):
    service = case.service()
    ends = os.pipe() if kind != "full socket" else [one.detach() for one in socket.socketpair()]
    read, write = ends
    case.kept.callback(os.close, write)
    if kind == "without a reader":
        os.close(read)
    else:
        case.kept.callback(os.close, read)
        fill(write)
    flags = fcntl.fcntl(write, fcntl.F_GETFL)
    client = case.client(service, **({"closed": [2]} if kind == "closed" else {"stderr": write}))
    if case.listed(client, service, headers=6) is None:
        return
    client.pinger.begin()
    case.desktop.press("F5")
    case.answers(client)
    fetched = service.count(READ)
    case.check("headers are fetched", fetched >= 6, f"{fetched} blocks")
    case.check("the parent's stream is as it was", fcntl.fcntl(write, fcntl.F_GETFL) == flags)
    case.ends(client, "close")


def signal_before_window(case, way):
    """As soon as the program handles the signal, which must be before it waits for anything."""
    service = case.service()
    service.tell("accept off")
    client = case.client(service)
    number = getattr(signal, way)
    handled = wait_until(lambda: client.handles(number), 2, 0.001)
    case.check("handles the signal early", handled)
    case.ends(client, way)


def ends_in_a_prompt(case, way):
    service = case.service("--login", "user:secret")
    client = case.client(service)
    prompt = wait_until(lambda: case.desktop.others(client.pid), PATIENCE)
    case.check("the login prompt is shown", bool(prompt))
    client.pinger.begin()
    case.answers(client, 1)
    case.ends(client, way)


def ends_in_a_box(case, way):
    service = case.service()
    client = case.client(service)
    if case.listed(client, service) is None:
        return
    ask_to_delete(case)
    box = wait_until(lambda: case.desktop.others(client.pid), PATIENCE)
    case.check("the question is shown", bool(box))
    case.ends(client, way)


def idle(case):
    service = case.service()
    client = case.client(service)
    case.listed(client, service, headers=6)
    client.pinger.stop()
    time.sleep(1)
    before = client.wakeups()
    time.sleep(10)
    woken = (client.wakeups() - before) / 10
    case.check("rests", woken < 1, f"{woken:.1f} wake-ups a second")
    case.ends(client, "close")


def service_away(case):
    """Gone for half a minute and back on its port, with every session forgotten."""
    service = case.service()
    length = 10 * 65536  # ten seconds
    arriving = store_transfers(service, case.folder, 2, length)
    client = case.client(service)
    window = case.window(client)
    wait_until(lambda: all(size_of(one) > 0 for one in arriving), PATIENCE)
    wait_until(lambda: case.desktop.is_active(window), PATIENCE)
    known = len(case.desktop.windows(client.pid))
    wait_until(lambda: case.rows(window) > 0, PATIENCE)
    rows = case.rows(window)
    service.tell(f"away {AWAY}")
    client.pinger.begin()
    time.sleep(2)
    case.desktop.press("F5")
    case.answers(client, AWAY, "answers pings while the service is away")
    boxes = len(case.desktop.windows(client.pid)) - known
    case.check("shows no box", boxes <= 0, f"{boxes} more windows")
    case.check("rows stay", 0 < rows == case.rows(window), f"{rows}, then {case.rows(window)}")
    wait_until(lambda: back(service), PATIENCE)
    client.pinger.begin()
    case.desktop.press("F5")
    case.check("F5 lists again", wait_until(lambda: service.count(LIST) > 0, PATIENCE),
               f"{service.count(LIST)} listings")
    case.answers(client, 1, "answers pings after its return")
    case.check("rows are back", rows == case.rows(window), f"{case.rows(window)}")
    # The last try is 60 s behind the drop, and then each block takes a second.
    came = wait_until(lambda: all(size_of(one) == length for one in arriving), 60)
    case.check("the transfers go on by themselves", came, str([size_of(one) for one in arriving]))
    case.ends(client, "close")


def back(service):
    try:
        return service.tell("connections")
    except RuntimeError:
        return None


def cases():
    """Name and body of each. In each stall it is closed; the signals take turns over them."""
    signals = itertools.cycle(ENDS[1:])
    for stall in STALLS_AT_START:
        ways = ("close", next(signals))
        yield f"start, {stall} stalls", lambda c, s=stall, w=ways: stalled_start(c, s, w)
    ways = ("close", next(signals))
    yield "start, packets are dropped", lambda c, w=ways: dropped_start(c, w)
    for stall in STALLS_LATER:
        ways = ("close", next(signals))
        yield f"{stall} stalls", lambda c, s=stall, w=ways: stalled_later(c, s, w)
    yield "replies 3 s late", delayed
    yield "ten transfers", transfers_go_on
    yield "second start", second_start
    yield "size comes back", size_comes_back
    for kind in ("full pipe", "full socket", "closed", "without a reader"):
        yield f"error stream, {kind}", lambda c, k=kind: error_stream(c, k)
    for way in ENDS[1:]:
        yield f"{way} before the window", lambda c, w=way: signal_before_window(c, w)
    for way in ENDS:
        yield f"{way} in the login prompt", lambda c, w=way: ends_in_a_prompt(c, w)
    yield "SIGTERM in a box", lambda c: ends_in_a_box(c, "SIGTERM")
    yield "idle", idle
    yield f"service away for {AWAY} s", service_away


def main():
    programs, words = os.path.abspath(sys.argv[1]), sys.argv[2:]
    failures = ran = 0
    with tempfile.TemporaryDirectory() as folder, Desktop(folder) as desktop:
        for number, (name, body) in enumerate(cases()):
            if words and not any(word in name for word in words):
                continue
            own = os.path.join(folder, str(number))
            os.mkdir(own)
            case = Case(name, desktop, programs, own)
            try:
                with case.kept:
                    body(case)
            except Exception as problem:  # the other cases still have something to say
                case.check("runs to its end", False, repr(problem))
            ran += 1
            failures += case.failures > 0
    print(f"{ran} cases, {failures} with failures")
    return 1 if failures or not ran else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(main())
