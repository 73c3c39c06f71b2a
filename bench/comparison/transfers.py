"""Downloads beside other programs and beside the least that a download can be."""
import os

from comparison import report
from comparison.processes import Failed, World, program

FILE = "one.bin"


def rounds_of(contenders, rounds):
    """Runs each contender once a round, each of them beginning a round in turn."""
    names = list(contenders)
    results = {name: [] for name in names}
    for round_number in range(rounds):
        for step in range(len(names)):
            name = names[(round_number + step) % len(names)]
            results[name].append(contenders[name]())
    return results


def fetchers(service, url, size):
    """Commands that fetch the one file to a path."""
    port = service.variables["B99242F1C55F489fA98402890C4AA428"]
    return {
        "UpDown": lambda to: [program("engine_fetch"), "file", f"/{FILE}", to],
        "bare loop of recv": lambda to: [program("bare_fetch"), "recv", port, f"/{FILE}",
                                         str(size), to],
        "bare loop of splice": lambda to: [program("bare_fetch"), "splice", port, f"/{FILE}",
                                           str(size), to],
        "curl": lambda to: ["curl", "-q", "-s", "-f", "-o", to, f"{url}/{FILE}"],
        "aria2": lambda to: ["aria2c", "--no-conf", "-q", "--file-allocation=none", "-s1", "-x1",
                             "-d", os.path.dirname(to), "-o", os.path.basename(to),
                             f"{url}/{FILE}"],
        "lftp": lambda to: ["lftp", "-c", f"get {url}/{FILE} -o {to}"],
    }


def gib(quick):
    """Processor time and memory of 1 GiB at blocks of 1 MiB."""
    size, rounds = (64 << 20, 3) if quick else (1 << 30, 10)
    with World() as world:
        service = world.service("--packages", "0", "--block", str(1 << 20))
        with open(os.path.join(service.root, FILE), "wb") as file:
            piece = os.urandom(1 << 20)
            for _ in range(size >> 20):
                file.write(piece)
        environment = world.environment(service) | {"UPDOWN_BLOCK_PACE_MS": "0"}
        url = world.http_server(service.root)
        target = world.path("target", FILE)

        def run(command):
            cost = world.run(command(target), environment)
            if os.path.getsize(target) != size:
                raise Failed("the file is not whole")
            os.unlink(target)
            return cost

        commands = fetchers(service, url, size)
        results = rounds_of({name: lambda command=command: run(command)
                             for name, command in commands.items()}, rounds)
    show_gib(results, size, rounds)


def show_gib(results, size, rounds):
    updown = [cost[0] for cost in results["UpDown"]]
    rows = []
    for name, costs in results.items():
        processor = [cost[0] for cost in costs]
        ratios = [one / other for one, other in zip(updown, processor)]
        goal = {"bare loop of recv": 0.88, "curl": 1.0, "lftp": 1.0}.get(name)
        rows.append([name, report.number(report.median(processor), 3), report.spread(processor, 3),
                     "" if name == "UpDown" else report.number(report.median(ratios), 2),
                     report.verdict(goal, report.median(ratios)),
                     report.number(report.median([cost[1] for cost in costs]), 2),
                     report.number(report.median([cost[2] for cost in costs]), 1)])
    report.table(f"{size >> 20} MiB at blocks of 1 MiB, {rounds} rounds",
                 ["", "processor s", "spread", "UpDown to it", "goal", "wall s", "peak MiB"], rows)


def files(quick):
    """Many small files by one folder task, beside aria2 with ten connections."""
    count, rounds = (200, 3) if quick else (2000, 7)
    with World() as world:
        service = world.service("--packages", "0")
        folder = os.path.join(service.root, "files")
        os.mkdir(folder)
        names = [f"file-{number:05}.bin" for number in range(count)]
        for name in names:
            with open(os.path.join(folder, name), "wb") as file:
                file.write(os.urandom(4096))
        url = world.http_server(service.root)
        environment = world.environment(service) | {"UPDOWN_BLOCK_PACE_MS": "0"}
        links = world.path("links")
        with open(links, "w") as file:
            file.writelines(f"{url}/files/{name}\n" for name in names)
        fresh = iter(range(10 ** 6))

        def run(command):
            target = world.path(f"got-{next(fresh)}", "x")
            target = os.path.dirname(target)
            cost = world.run(command(target), environment)
            got = [os.path.getsize(os.path.join(target, name)) for name in names]
            if got != [4096] * count:
                raise Failed("not all files came")
            return cost

        results = rounds_of({
            "UpDown": lambda: run(lambda to: [program("engine_fetch"), "folder", "/files", to]),
            "aria2 -j10": lambda: run(lambda to: ["aria2c", "--no-conf", "-q", "-j10",
                                                  "--file-allocation=none", "-i", links,
                                                  "-d", to]),
        }, rounds)
    walls = {name: [cost[1] for cost in costs] for name, costs in results.items()}
    ratios = [one / other for one, other in zip(walls["UpDown"], walls["aria2 -j10"])]
    rows = [[name, report.number(report.median(wall), 2), report.spread(wall, 2),
             report.number(report.median([cost[0] for cost in results[name]]), 2),
             report.number(report.median(ratios), 2) if name != "UpDown" else "",
             report.verdict(3.0, report.median(ratios)) if name != "UpDown" else ""]
            for name, wall in walls.items()]
    report.table(f"{count} files of 4 KiB, {rounds} rounds",
                 ["", "wall s", "spread", "processor s", "UpDown to it", "goal"], rows)
