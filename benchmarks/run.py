#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Runs all benchmarks and writes what they tell: results.json, all ratios (table.md), the main ones (summary.md) and a
plot of size against ratio (sizes.svg).

    benchmarks/run.py [BUILD_FOLDER [OUTPUT_FOLDER]] [--publish]

Each device of the implementation is measured in a process of its own, which may use one processor only, and again with
two: waking a thread costs many times more across processors than on one. A device of another machine is measured if
BENCHMARK_NETWORKED says how its implementation is reached, by settings of the environment as `env` takes them. It has
to be the first device that these offer.
"""
import argparse
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile
import typing

sys.dont_write_bytecode = True # nothing is left behind beside the sources
import report

ROOT = pathlib.Path(__file__).resolve().parent.parent
EVERYWHERE = "^(launch|fresh_kernel|write|read|copy|fill/|first_launch|allocate|submit|retain|look_up)"
WAITS = "^(launch/arguments:0|write/bytes:(4|1048576))/"
# Each in a process of its own, which takes no other along where it fails.
OVER_NETWORK = ["^launch/arguments:0/", "^launch/arguments:8/", "^fresh_kernel/arguments:0/", "^fresh_kernel/arguments:8/",
                "^(write|read)/bytes:(4|1048576)/"]
PROCESSORS = {"pinned": "0", "free": "0,1", "all": f"0-{os.cpu_count() - 1}"}


class Run(typing.NamedTuple):
    """One process: what it is to see, and what is measured there."""
    place: str
    processors: str # one of PROCESSORS
    measures: str
    environment: dict
    limit: int = 600 # seconds


def pocl(devices, processors, measures):
    return Run(devices.replace(" ", " and "), processors, measures, {"POCL_DEVICES": devices})


def concurrent(devices, processors, measures):
    return Run(devices.replace(" ", " and ") + ", concurrent", processors, measures,
               {"POCL_DEVICES": devices, "TARVA_SCHEDULER": "concurrent"})


def busy_waiting(device, processors):
    return Run(f"{device}, busy waiting", processors, WAITS, {"POCL_DEVICES": device, "TARVA_BUSY_WAIT_US": "200"})


RUNS = [
    pocl("basic", "pinned", EVERYWHERE + "|^(fill_on_host|property_tree|build)"),
    pocl("pthread", "pinned", EVERYWHERE),
    pocl("basic pthread", "pinned", "^move"),
    pocl("basic", "free", EVERYWHERE + "|^(start|stop|resident)"),
    pocl("pthread", "free", EVERYWHERE),
    pocl("basic pthread", "free", "^move"),
    pocl("pthread basic", "free", "^other_device_busy"),
    concurrent("pthread basic", "free", "^other_device_busy"),
    *(run("basic", processors, "^many_writes") for run in (pocl, concurrent) for processors in ("pinned", "all")),
    *(run("basic basic basic basic", "all", "^all_devices") for run in (pocl, concurrent)),
    *(concurrent("basic", "pinned", measure) for measure in ("^launch/arguments:[08]/",)),
    pocl("basic", "pinned", "^table_growth"),
    pocl("basic", "all", "^(retain|look_up)"),
    *(busy_waiting(device, processors) for device in ("basic", "pthread") for processors in ("pinned", "free")),
]


def networked_runs():
    settings = os.environ.get("BENCHMARK_NETWORKED", "")
    if not settings:
        print("No networked device: BENCHMARK_NETWORKED is not set.", file=sys.stderr)
        return []
    environment = dict(setting.split("=", 1) for setting in shlex.split(settings))
    return [Run("networked", processors, measures, environment, 20)
            for processors in PROCESSORS for measures in OVER_NETWORK]


def machine():
    """What kind of machine this is, without its name."""
    facts = dict(re.findall(r"^([\w ]+?)\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.MULTILINE))
    kind = "virtual machine" if "hypervisor" in facts.get("flags", "") else "machine"
    families = {"23": "Zen or Zen 2", "25": "Zen 3 or Zen 4", "26": "Zen 5"}
    is_amd = facts.get("vendor_id") == "AuthenticAMD"
    processor = families.get(facts.get("cpu family")) if is_amd else None
    return f"{len(os.sched_getaffinity(0))}-core x86-64 {kind}, {processor or facts.get('model name', 'unknown processor')}"


def measure(program, wanted, cache):
    print(f"{wanted.place}, {wanted.processors}", file=sys.stderr, flush=True)
    with tempfile.NamedTemporaryFile(suffix=".json") as output:
        subprocess.run(["taskset", "-c", PROCESSORS[wanted.processors], program, f"--benchmark_filter={wanted.measures}",
                        f"--benchmark_out={output.name}", "--benchmark_out_format=json"],
                       check=True, stdout=subprocess.DEVNULL, timeout=wanted.limit,
                       env={**os.environ, "POCL_CACHE_DIR": cache, **wanted.environment})
        measured = json.load(open(output.name))["benchmarks"]
    return [{"place": f"{wanted.place}, {wanted.processors}", "name": re.sub("/iterations:.*", "", one["name"]),
             **{key: one[key] for key in one if re.match("ns_|ratio_|bytes|kilobytes|error_message", key)}}
            for one in measured]


def measure_if_possible(program, wanted, cache):
    """What a network or a client of it can break or hang, is tried once more."""
    for _ in range(2):
        try:
            return measure(program, wanted, cache)
        except subprocess.SubprocessError as failure:
            print(f"Not measured: {failure}", file=sys.stderr)
    return []


def measure_all(program):
    results = []
    with tempfile.TemporaryDirectory() as cache: # cold at first
        for wanted in RUNS:
            results += measure(program, wanted, cache)
        for wanted in networked_runs():
            results += measure_if_possible(program, wanted, cache)
    is_near = re.search(r"127\.0\.0\.1|localhost", os.environ.get("BENCHMARK_NETWORKED", ""))
    return {"machine": machine(), "server": "on the same machine" if is_near else "on another machine", "results": results}


def write(output, measured):
    results = measured["results"]
    (output / "results.json").write_text(json.dumps(measured, indent=1) + "\n")
    (output / "table.md").write_text(f"Measured on a {measured['machine']}.\n\n" + report.table(results))
    (output / "summary.md").write_text(report.summary(results, report.SUMMARY))
    (output / "sizes.svg").write_text(report.plot(results))


def publish(measured):
    results = measured["results"]
    head = f"Measured on a {measured['machine']}, pinned to one processor:\n\n"
    busy = report.beside_busy_device(results) + "\n" + report.side_by_side(results) + "\n"
    pages = {
        "README.md": "\n".join((head + report.summary(results, report.SHORT_SUMMARY), report.overlap(results))),
        "docs/speed.md": "\n".join((head + report.summary(results, report.SUMMARY), report.more(results),
                                    report.waits(results), report.many_threads(results), busy)),
        "docs/guide.md": busy,
        "docs/networked-devices.md": report.over_network(results, measured["server"]) + "\n",
    }
    for name, content in pages.items():
        page = ROOT / name
        page.write_text(report.replace_measured(page.read_text(), content))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", default=ROOT / "build", type=pathlib.Path)
    parser.add_argument("output", nargs="?", type=pathlib.Path, help="BUILD_FOLDER/benchmarks/results unless given")
    parser.add_argument("--publish", action="store_true",
                        help="renew docs/speed/, and the figures in the documents")
    parser.add_argument("--again", action="store_true", help="measure nothing: take the results that are there")
    wanted = parser.parse_args()
    output = ROOT / "docs" / "speed" if wanted.publish else wanted.output or wanted.build / "benchmarks" / "results"
    output.mkdir(parents=True, exist_ok=True)

    if wanted.again:
        measured = json.loads((output / "results.json").read_text())
    else:
        measured = measure_all(wanted.build / "benchmarks" / "tarva_benchmarks")
    write(output, measured)
    if wanted.publish:
        publish(measured)
    print(f"Written to {output}.")


if __name__ == "__main__":
    main()
