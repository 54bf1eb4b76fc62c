#!/usr/bin/env python3
"""Runs all benchmarks and writes what they tell: results.json, all ratios (table.md), the main ones (summary.md) and a
plot of size against ratio (sizes.svg).

    benchmarks/run.py [BUILD_FOLDER [OUTPUT_FOLDER]] [--publish]

Each device of the implementation is measured in a process of its own, which may use one processor only, and again with
two: waking a thread costs many times more across processors than on one.
"""
import argparse
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

sys.dont_write_bytecode = True # nothing is left behind beside the sources
import report

ROOT = pathlib.Path(__file__).resolve().parent.parent
# Devices that PoCL is to offer, processors, and what is measured there.
EVERYWHERE = "^(launch|write|read|copy|fill/|first_use|allocate|submit|retain|look_up)"
RUNS = [
    ("basic", "0", EVERYWHERE + "|^(fill_on_host|property_tree|build)"),
    ("pthread", "0", EVERYWHERE),
    ("basic pthread", "0", "^move"),
    ("basic", "0,1", EVERYWHERE + "|^(start|stop|resident)"),
    ("pthread", "0,1", EVERYWHERE),
    ("basic pthread", "0,1", "^move"),
]


def machine():
    """What kind of machine this is, without its name."""
    facts = dict(re.findall(r"^([\w ]+?)\s*: (.*)$", pathlib.Path("/proc/cpuinfo").read_text(), re.MULTILINE))
    kind = "virtual machine" if "hypervisor" in facts.get("flags", "") else "machine"
    families = {"23": "Zen or Zen 2", "25": "Zen 3 or Zen 4", "26": "Zen 5"}
    is_amd = facts.get("vendor_id") == "AuthenticAMD"
    processor = families.get(facts.get("cpu family")) if is_amd else None
    return f"{len(os.sched_getaffinity(0))}-core x86-64 {kind}, {processor or facts.get('model name', 'unknown processor')}"


def run(program, device, processors, wanted, cache):
    with tempfile.NamedTemporaryFile(suffix=".json") as output:
        subprocess.run(["taskset", "-c", processors, program, f"--benchmark_filter={wanted}",
                        f"--benchmark_out={output.name}", "--benchmark_out_format=json"],
                       check=True, stdout=subprocess.DEVNULL,
                       env={**os.environ, "POCL_DEVICES": device, "POCL_CACHE_DIR": cache})
        measured = json.load(open(output.name))["benchmarks"]
    place = f"{device.replace(' ', ' and ')}, " + ("pinned" if processors == "0" else "free")
    return [{"place": place, "name": re.sub("/iterations:.*", "", one["name"]),
             **{key: one[key] for key in one if re.match("ns_|ratio_|bytes|kilobytes|error_message", key)}}
            for one in measured]


def write(output, results):
    (output / "results.json").write_text(json.dumps({"machine": machine(), "results": results}, indent=1) + "\n")
    (output / "table.md").write_text(f"Measured on a {machine()}.\n\n" + report.table(results))
    (output / "summary.md").write_text(report.summary(results))
    (output / "sizes.svg").write_text(report.plot(results))


def publish(results):
    measured = f"Measured on a {machine()}, pinned to one processor:\n\n" + report.summary(results)
    for name, content in (("README.md", measured), ("docs/speed.md", measured + "\n" + report.more(results))):
        page = ROOT / name
        page.write_text(report.replace_measured(page.read_text(), content))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", default=ROOT / "build", type=pathlib.Path)
    parser.add_argument("output", nargs="?", type=pathlib.Path, help="BUILD_FOLDER/benchmarks/results unless given")
    parser.add_argument("--publish", action="store_true", help="renew docs/speed/, and the figures in docs/speed.md and "
                        "README.md")
    wanted = parser.parse_args()
    output = ROOT / "docs" / "speed" if wanted.publish else wanted.output or wanted.build / "benchmarks" / "results"
    output.mkdir(parents=True, exist_ok=True)

    results = []
    with tempfile.TemporaryDirectory() as cache: # cold at first
        for device, processors, measures in RUNS:
            print(f"{device} on processors {processors}", file=sys.stderr, flush=True)
            results += run(wanted.build / "benchmarks" / "tarva_benchmarks", device, processors, measures, cache)
    write(output, results)
    if wanted.publish:
        publish(results)
    print(f"Written to {output}.")


if __name__ == "__main__":
    main()
