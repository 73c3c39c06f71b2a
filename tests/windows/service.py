"""The service as a process of its own, and what a client before it finds stored."""
import hashlib
import os
import struct
import subprocess


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
