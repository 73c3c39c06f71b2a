"""What the comparison starts, each in a folder of its own, and how that ends."""
import contextlib
import glob
import os
import select
import shutil
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
PROGRAMS = os.path.join(ROOT, "build", "release", "bin")
sys.path.insert(0, os.path.join(ROOT, "tests", "windows"))
from service import Service, data_folder  # noqa: E402

PATIENCE = 300.0  # seconds
DIES_WITH_US = ("setpriv", "--pdeathsig", "KILL")


class Failed(Exception):
    """Something did not do what is to be measured."""


def program(name):
    return os.path.join(PROGRAMS, name)


def end(process):
    if process.poll() is None:
        process.kill()
    process.wait()
    for stream in (process.stdin, process.stdout):
        if stream:
            with contextlib.suppress(BrokenPipeError):
                stream.close()


def wait_until(holds, what, patience=PATIENCE, step=0.002):
    limit = time.monotonic() + patience
    while not holds():
        if time.monotonic() > limit:
            raise Failed(f"{what}: not within {patience:g} s")
        time.sleep(step)


class World(contextlib.ExitStack):
    """A folder in memory, and all that was started in it; gone with the block."""

    def __enter__(self):
        self.folder = tempfile.mkdtemp(prefix="updown-compare-", dir="/dev/shm")
        self.callback(shutil.rmtree, self.folder, ignore_errors=True)
        return super().__enter__()

    def path(self, *names):
        made = os.path.join(self.folder, *names)
        os.makedirs(os.path.dirname(made), exist_ok=True)
        return made

    def environment(self, service=None, name="home"):
        """Nothing of the person who measures is read or written."""
        home = self.path(name, "runtime")
        os.makedirs(home, mode=0o700, exist_ok=True)
        base = self.path(name)
        own = {"HOME": base, "XDG_DATA_HOME": data_folder(base), "XDG_RUNTIME_DIR": home,
               "XDG_STATE_HOME": os.path.join(base, "state"),
               "XDG_CONFIG_HOME": os.path.join(base, "config"),
               "XDG_CACHE_HOME": os.path.join(base, "cache"), "QT_QPA_PLATFORM": "offscreen"}
        os.makedirs(own["XDG_DATA_HOME"], exist_ok=True)
        kept = {key: value for key, value in os.environ.items() if not key.startswith("XDG_")}
        return {**kept, **own, **(service.variables if service else {})}

    def service(self, *options):
        made = Service(program("updown-peer"), self.folder, *options)
        self.callback(made.stop)
        return made

    def http_server(self, folder):
        process = subprocess.Popen([program("http_server"), folder], stdin=subprocess.PIPE,
                                   stdout=subprocess.PIPE, text=True)
        self.callback(end, process)
        return f"http://127.0.0.1:{int(process.stdout.readline())}"

    def run(self, command, environment):
        """Processor seconds, seconds by the clock and peak MiB of a program that must succeed."""
        process = subprocess.Popen([*DIES_WITH_US, program("run_measured"), *command],
                                   stdout=subprocess.PIPE, text=True, env=environment)
        try:
            told, _ = process.communicate(timeout=PATIENCE)
        finally:
            end(process)
        processor, wall, memory, status = told.split()
        if status != "0":
            raise Failed(f"{' '.join(command)}: status {status}")
        return float(processor), float(wall), int(memory) / 1024

    def client(self, service, name="home", probe=True, **variables):
        made = Client(self.environment(service, name) | variables, probe)
        self.callback(made.stop)
        return made


class Client:
    """The client, with the probe's eyes or as it is installed."""

    def __init__(self, environment, probe):
        self.data = environment["XDG_DATA_HOME"]
        self.started = time.monotonic()
        self.process = subprocess.Popen(
            [*DIES_WITH_US, program("client_probe" if probe else "updown"), "-s", "fileservice"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
            env=environment)
        self.pid = self.process.pid
        self.unread = b""

    def say(self, line):
        self.process.stdin.write(line.encode() + b"\n")
        self.process.stdin.flush()

    def wait_for(self, word):
        """The line that begins with the word, and when it came, in seconds from the start."""
        while True:
            while b"\n" in self.unread:
                line, self.unread = self.unread.split(b"\n", 1)
                if line.decode().split(" ")[0] == word:
                    return line.decode(), time.monotonic() - self.started
            if not select.select([self.process.stdout], [], [], PATIENCE)[0]:
                raise Failed(f"the client does not say {word!r}")
            came = os.read(self.process.stdout.fileno(), 65536)
            if not came:
                raise Failed(f"the client ended before it said {word!r}")
            self.unread += came

    def headers(self):
        return len(glob.glob(os.path.join(self.data, "oxapp", "INICache", "*", "*.ini")))

    def wait_for_headers(self, count):
        """Until all header files are there; seconds from the start."""
        step = 0.005 if count < 5000 else 0.25  # a look costs what the folder holds
        wait_until(lambda: self.headers() >= count, f"{count} header files", step=step)
        return time.monotonic() - self.started

    def processor(self):
        return time.clock_gettime((~self.pid << 3) | 2)  # the process's own clock

    def wait_until_idle(self):
        """Until half a second has cost next to nothing."""
        def idle():
            before = self.processor()
            time.sleep(0.5)
            return self.processor() - before < 0.002
        wait_until(idle, "an idle client")

    def wakeups(self):
        total = 0
        for status in glob.glob(f"/proc/{self.pid}/task/*/status"):
            with open(status) as lines:
                total += next(int(line.split()[1]) for line in lines
                              if line.startswith("voluntary_ctxt_switches"))
        return total

    def memory(self):
        """MiB that are the process's share (PSS), and resident."""
        with open(f"/proc/{self.pid}/smaps_rollup") as lines:
            sizes = {line.split(":")[0]: line.split()[1] for line in lines if line.endswith("kB\n")}
        return int(sizes["Pss"]) / 1024, int(sizes["Rss"]) / 1024

    def stop(self):
        end(self.process)
