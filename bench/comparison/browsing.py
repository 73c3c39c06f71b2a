"""The whole client, offscreen: starts, refreshes, what it writes, wakes up for and holds."""
import os
import time

from comparison import report
from comparison.processes import World, wait_until

LIST = 4099  # the message that asks for a listing


def all_headers(service):
    return (os.path.join(folder, name) for folder, _, names in os.walk(service.root)
            for name in names if name.endswith(".ini"))


def header_count(service):
    return sum(1 for _ in all_headers(service))


def cold_start(packages, delay):
    """Seconds until the list, the texts on the screen, and all headers are there."""
    with World() as world:
        service = world.service("--packages", str(packages), "--delay", f"0:{delay}")
        expected = header_count(service)
        client = world.client(service)
        listed = client.wait_for("listed")[1]
        texts = client.wait_for("texts")[1]
        return listed, texts, client.wait_for_headers(expected)


def packages(quick):
    """Cold starts with 300 packages, without a delay in the service and with 50 ms."""
    count, runs = (60, 2) if quick else (300, 5)
    measures = report.Measures(f"{count} packages, none in the cache; from the start of the process")
    for delay, goals in ((0, (None, 0.5, 3.0)), (50, (None, None, None))):
        results = [cold_start(count, delay) for _ in range(runs)]
        words = "no delay" if delay == 0 else f"{delay} ms for each reply"
        for place, what in enumerate(("the list", "texts of the rows on the screen",
                                      "all header files")):
            measures.add(f"{what}, {words}", "s", [one[place] for one in results], goals[place])
    measures.show()


def save_once(packages_there):
    with World() as world:
        service = world.service("--packages", str(packages_there))
        with open(os.path.join(service.root, "wanted.bin"), "wb") as file:
            file.write(os.urandom(100_000))
        client = world.client(service)
        client.wait_for("texts")
        target = world.path("saved", "wanted.bin")
        client.say(f"save /wanted.bin {target}")
        client.wait_for("saving")
        before = time.monotonic()
        wait_until(lambda: os.path.exists(target) and os.path.getsize(target) > 0, "the first byte")
        return time.monotonic() - before


def save(quick):
    """A Save while the headers of many packages are to come."""
    count, runs = (1000, 2) if quick else (10000, 5)
    measures = report.Measures(f"A Save while the headers of {count} packages are being fetched")
    measures.add("from the dialog's OK to the first byte", "s",
                 [save_once(count) for _ in range(runs)], 1.0, 3)
    measures.show()


def complete(service):
    """Gives each package both header files: what the service lacks is asked for again each time."""
    with open(next(one for one in all_headers(service)), "rb") as file:
        text = file.read()
    for name in service.names:
        for ending in (".ini", "_Start.ini"):
            path = os.path.join(service.root, name, name + ending)
            if name[:14].isdigit() and not os.path.exists(path):
                with open(path, "wb") as file:
                    file.write(text)


def fill(world, count, probe):
    """A service with that many packages, and a client that has just fetched all their headers."""
    service = world.service("--packages", str(count))
    complete(service)
    expected = header_count(service)
    client = world.client(service, probe=probe)
    client.wait_for_headers(expected)
    client.wait_until_idle()
    return service, client


def refresh(quick):
    """Processor time of a refresh, what a cold start writes, and memory right behind it."""
    count, runs = (1000, 3) if quick else (10000, 9)
    measures = report.Measures(f"{count} packages")
    with World() as world:
        service, client = fill(world, count, probe=True)
        seconds = time.monotonic() - client.started
        client.say("written")
        headers, others = (int(word) for word in client.wait_for("written")[0].split()[1:])
        measures.add("cold start until all headers are there", "s", [seconds], digits=1)
        measures.add("written in the cold start: headers", "KiB", [headers / 1024], digits=0)
        measures.add("written in the cold start: all else", "KiB", [others / 1024], 100)
        measures.add("memory behind the cold start, resident", "MiB", [client.memory()[1]], digits=1)
        client.stop()
        client = world.client(service)  # the headers are in the cache now
        client.wait_for("texts")
        client.wait_until_idle()
        costs = []
        for _ in range(runs):
            before, asked = client.processor(), service.count(LIST)
            client.say("refresh")
            wait_until(lambda: service.count(LIST) > asked, "a refresh")
            client.wait_until_idle()
            costs.append((client.processor() - before) * 1e6 / count)
        measures.add("processor time of a refresh, a row", "µs", costs, 12, 1)
    measures.show()


def idle(quick):
    """Wake-ups of the client as it is installed, and its memory, with few and many packages."""
    seconds = 3 if quick else 20
    measures = report.Measures("The client at rest, headers in the cache")
    for count in (12, 300 if quick else 10000):
        with World() as world:
            service, client = fill(world, count, probe=False)
            client.stop()
            client = world.client(service, probe=False)
            wait_until(lambda: client.wakeups() > 50, "a client that works")
            client.wait_until_idle()
            before = client.wakeups()
            time.sleep(seconds)
            measures.add(f"{count} packages: wake-ups a second", "",
                         [(client.wakeups() - before) / seconds])
            share, resident = client.memory()
            measures.add(f"{count} packages: memory, proportional share", "MiB", [share], digits=1)
            measures.add(f"{count} packages: memory, resident", "MiB", [resident], digits=1)
    measures.show()
