# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""The matrix as lines for a terminal, as a table in Markdown, and as JSON."""
import json
import os
import platform
import re
import shutil
from dataclasses import asdict

from matrix.implementations import REPORTED
from matrix.rows import EXAMPLES, GROUPS, STOPPED

BEGIN, END = "<!-- written by scripts/implementation-matrix -->", "<!-- end of what it writes -->"


def count_text(passed, skipped):
    return f"{passed} passed" + (f", {skipped} skipped" if skipped else "")


def troubles(row):
    """What failed or was stopped, with the status and the time."""
    for name, result in row.results.items():
        if result.state == "failed":
            tests = f", {result.failed} tests" if result.failed else ""
            yield f"**{name} failed** ({result.status}{tests})"
        elif result.state == STOPPED:
            yield f"{name} stopped at {result.seconds:.0f} s" if result.seconds else f"{name} left out for time"
    if not row.devices:
        yield "**no device**"


def tests_of(rows):
    """The counts over all groups and rows."""
    results = [row.results[group] for row in rows for group in GROUPS if group in row.results]
    return count_text(sum(one.passed for one in results), sum(one.skipped for one in results))


def programs_of(rows):
    """The counts of the main job and the examples."""
    states = [row.results[name].state for row in rows for name in ("main_job", *EXAMPLES)]
    return count_text(states.count("passed"), states.count("skipped"))


def line(row):
    """For the terminal, when a row is done."""
    label = "every" if "," in row.versions else row.versions
    seconds = sum(one.seconds for one in row.results.values())
    parts = [
        f"{row.implementation:<15} {label:<9} {seconds:6.0f} s",
        f"tests {tests_of([row])}",
        f"main job and examples {programs_of([row])}",
        *troubles(row),
    ]
    return "; ".join(parts)


def devices_text(row):
    """Drivers with the versions that their devices report and are offered as, each once."""
    seen = {}
    for one in row.devices:
        report = " ".join(one["reports"].split()[:2])
        seen[f"{one['driver']}: {report}, offered as {one['offered as'].removeprefix('OpenCL ')}"] = None
    return "; ".join(seen)


def markdown(rows, limits):
    """A line for each implementation: as its devices report, and under versions that are given."""
    lines = [
        "| Implementation | Driver and OpenCL | Devices | Tests | Main job and examples "
        "| Tests, other versions | Main job and examples | Troubles |",
        "|---|---|---|---|---|---|---|---|",
    ]
    for name in dict.fromkeys(row.implementation for row in rows):
        mine = [row for row in rows if row.implementation == name]
        reported, others = ([row for row in mine if (row.versions == REPORTED) == wanted] for wanted in (True, False))
        shown = (reported or others)[0]
        found = [
            f"{'' if row.versions == REPORTED else f'as {row.versions}: '}{trouble}"
            for row in mine
            for trouble in troubles(row)
        ]
        cells = [name, devices_text(shown) if len(shown.devices) < 3 else "several", str(len(shown.devices))]
        for some in (reported, others):
            cells += [tests_of(some), programs_of(some)] if some else ["-", "-"]
        lines.append("| " + " | ".join([*cells, "; ".join(found) or "none"]) + " |")
    lines += [
        "",
        f"On {os.cpu_count()} processors ({platform.machine()}), with at most "
        f"{limits.memory:.1f} GiB of address space and {limits.seconds:.0f} s for a process, and "
        f"{limits.row_seconds:.0f} s for all programs under one setting.",
    ]
    return "\n".join(lines) + "\n"


def write(path, rows, limits):
    """Both tables, at `path` with their endings; in JSON a line for each row."""
    path.with_suffix(".md").write_text(markdown(rows, limits))
    lines = ",\n".join(json.dumps(asdict(row)) for row in rows)
    path.with_suffix(".json").write_text(f'{{"limits": {json.dumps(asdict(limits))},\n"rows": [\n{lines}\n]}}\n')


def publish(document, written):
    """Replaces what stands between the markers of a document, and puts the JSON beside it."""
    text = written.with_suffix(".md").read_text()
    old = document.read_text()
    pattern = re.compile(f"(?<={re.escape(BEGIN)}\n).*?(?={re.escape(END)})", re.S)
    if not pattern.search(old):
        raise SystemExit(f"{document} has no markers for the table")
    document.write_text(pattern.sub(lambda _: "\n" + text + "\n", old, count=1))
    shutil.copyfile(written.with_suffix(".json"), document.with_suffix(".json"))
