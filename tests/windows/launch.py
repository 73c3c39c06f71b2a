"""The client as a process of its own, in a folder that goes with the case."""
import os
import re
import signal
import subprocess
import time

from desktop import Pinger, wait_until
from service import data_folder

END_LIMIT = 2.0  # seconds


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
