"""Figures as a Markdown table."""
import datetime
import os
import platform
import statistics


def machine():
    with open("/proc/meminfo") as info:
        memory = int(info.readline().split()[1]) / 2 ** 20
    return f"{os.cpu_count()} cores, {memory:.0f} GiB of memory, Linux {platform.release()}"


def title(quick):
    short = ", short run: smaller numbers" if quick else ""
    return f"Measured {datetime.date.today()} on {machine()}{short}.\n"


def number(value, digits):
    return f"{value:,.{digits}f}"


def median(values):
    return statistics.median(values)


def spread(values, digits):
    return f"{number(min(values), digits)} to {number(max(values), digits)}" if len(values) > 1 else ""


def verdict(goal, value):
    """The goal's text, and whether a value below it was reached; nothing without a goal."""
    if goal is None:
        return ""
    return f"{'reached' if value <= goal else '**missed**'}: at most {goal:g}"


def table(heading, columns, rows):
    """Columns are texts; rows are lists of texts, the first column left-aligned."""
    lines = [f"\n### {heading}\n", "| " + " | ".join(columns) + " |",
             "|" + "|".join(["---"] + ["---:"] * (len(columns) - 1)) + "|"]
    lines += ["| " + " | ".join(row) + " |" for row in rows]
    print("\n".join(lines), flush=True)


class Measures:
    """One table of measures that stand for themselves: values in one unit, and a goal or none."""

    COLUMNS = ("", "median", "spread", "goal")

    def __init__(self, heading):
        self.heading, self.rows = heading, []

    def add(self, what, unit, values, goal=None, digits=2):
        values = list(values)
        self.rows.append([what, f"{number(median(values), digits)} {unit}",
                          spread(values, digits), verdict(goal, median(values))])

    def show(self):
        table(self.heading, self.COLUMNS, self.rows)
