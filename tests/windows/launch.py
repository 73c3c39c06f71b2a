"""The service and the client as processes of their own, in a folder that goes with the case."""
import hashlib
import os
import re
import signal
import struct
import subprocess
import time

from desktop import Pinger, wait_until

END_LIMIT = 2.0  # seconds


class Service:
    """updown-peer over an area of its own, steered by its commands."""

    def __init__(self, program, folder, *options):
        self.root = os.path.join(folder, "area")
        self.process = subprocess.Popen(
            [program, "--make-area", self.root, "--serve", "--packages", "6", "--control", *options],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        lines = list(iter(lambda: self.process.stdout.readline().strip() or "ready", "ready"))
        self.variables = dict(line.split("=", 1) for line in lines if "=" in line)
        self.names = sorted(one for one in os.listdir(self.root)
                            if os.path.isdir(os.path.join(self.root, one)))

    def tell(self, command):
        self.process.stdin.write(command + "\n")
        self.process.stdin.flush()
        answer = self.process.stdout.readline().strip()
        if not answer or answer.startswith("bad"):
            raise RuntimeError(f"the service says {answer!r} to {command!r}")
        return answer

    def count(self, message):
        return int(self.tell(f"count {message}"))

    def stop(self):
        self.process.stdin.close()
        self.process.stdout.close()
        try:
            self.process.wait(5)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()


def stored_record(number, remote, local):
    """One waiting download as the list file holds it."""
    def attribute(tag, value):
        return struct.pack(">BH", tag, len(value)) + value

    numbers = {1: 0, 4: 0, 5: 0, 6: 0, 7: number, 8: 0, 9: 0, 10: 0}
    values = {tag: struct.pack("<I", value) for tag, value in numbers.items()}
    values |= {2: remote.encode(), 3: local.encode()}
    return b"".join(attribute(tag, values[tag]) for tag in sorted(values)) + b"\xff"


class Client:
    """One start of the program. `stderr` as subprocess takes it."""

    def __init__(self, desktop, program, service, folder, stderr=subprocess.DEVNULL, closed=(),
                 variables=None):
        self.desktop = desktop
        runtime = os.path.join(folder, "runtime")
        os.makedirs(runtime, mode=0o700, exist_ok=True)
        names = {"DISPLAY": desktop.name, "HOME": folder, "XDG_RUNTIME_DIR": runtime,
                 "XDG_DATA_HOME": data_folder(folder), "XDG_STATE_HOME": os.path.join(folder, "state"),
                 "QT_QPA_PLATFORM": "xcb",
                 "QT_ACCESSIBILITY": "0"}

        def prepare():
            signal.signal(signal.SIGHUP, signal.SIG_DFL)  # whatever this check was started by
            for one in closed:
                os.close(one)

        self.started = time.monotonic()
        self.process = subprocess.Popen(
            [program, "-s", "fileservice", "-p", "8100"], stdout=subprocess.DEVNULL, stderr=stderr,
            env={**os.environ, **names, **service.variables, **(variables or {})},
            preexec_fn=prepare)
        self.pid = self.process.pid
        self.pinger = Pinger(desktop.name, self.pid)

    def main_window(self, seconds):
        """The main window and how long it took from the start, or None and the time waited."""
        found = wait_until(lambda: self.desktop.main_window(self.pid), seconds)
        return found, time.monotonic() - self.started

    def wakeups(self):
        total = 0
        for task in os.listdir(f"/proc/{self.pid}/task"):
            with open(f"/proc/{self.pid}/task/{task}/status") as status:
                total += int(re.search(r"\nvoluntary_ctxt_switches:\s*(\d+)", status.read())[1])
        return total

    def handles(self, number):
        """True once the signal is the program's to handle and no longer the system's."""
        with open(f"/proc/{self.pid}/status") as status:
            fields = dict(line.split(":\t", 1) for line in status if ":\t" in line)
        mask = int(fields.get("SigCgt", "0"), 16) | int(fields.get("SigBlk", "0"), 16)
        return bool(mask >> (number - 1) & 1)

    def end(self, way):
        """Closes the windows or sends a signal. Seconds and status; None: it did not end."""
        began = time.monotonic()
        if way == "close":
            self.close_windows()
        else:
            self.process.send_signal(getattr(signal, way))
        try:
            status = self.process.wait(END_LIMIT + 1)
        except subprocess.TimeoutExpired:
            status = None
        return time.monotonic() - began, status

    def close_windows(self):
        """The dialogs first, as they keep the main window from being closed."""
        for window in self.desktop.windows(self.pid):
            if self.desktop.is_dialog(window):
                self.desktop.close(window)
                wait_until(lambda: window not in self.desktop.windows(self.pid), END_LIMIT)
        main = self.desktop.main_window(self.pid)
        if main is not None:
            self.desktop.close(main)

    def stop(self):
        self.pinger.stop()
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()


def data_folder(folder):
    return os.path.join(folder, "data")


def store_transfers(service, folder, count, length):
    """Files on the service and waiting downloads of them; gives where they arrive."""
    variables = service.variables
    parts = ("3C9EE1FB-5D92-425d-9774-16549105F344", "C938D64454D44264A60AF8474D6AF303",
             "182980BB42EC4908B5DA097B293223F9")
    identity = "-".join(variables[name] for name in parts)
    stored = os.path.join(data_folder(folder), "oxapp")
    received = os.path.join(folder, "received")
    remote = os.path.join(service.root, "transfers")
    for one in (stored, received, remote):
        os.makedirs(one, exist_ok=True)
    arriving = []
    records = b""
    for number in range(1, count + 1):
        with open(os.path.join(remote, f"{number}.bin"), "wb") as file:
            file.truncate(length)
        arriving.append(os.path.join(received, f"{number}.bin"))
        records += stored_record(number, f"/transfers/{number}.bin", arriving[-1])
    name = hashlib.md5(identity.encode()).hexdigest() + ".lst"
    with open(os.path.join(stored, name), "wb") as file:
        file.write(records)
    return arriving
