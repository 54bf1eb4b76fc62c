#!/usr/bin/env python3
"""Runs all benchmarks and writes what they tell: results.json, all ratios (table.md), the main ones (summary.md) and a
plot of size against ratio (sizes.svg).

    benchmarks/run.py [BUILD_FOLDER [OUTPUT_FOLDER]] [--only REGULAR_EXPRESSION]

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

ROOT = pathlib.Path(__file__).resolve().parent.parent
OTHERS = ["raw", "floor", "compute", "bindings", "fresh_write"]
TITLES = {"raw": "to raw", "floor": "to raw + floor", "compute": "to Boost.Compute", "bindings": "to C++ bindings",
          "fresh_write": "to raw write into fresh buffer"}
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


def time_text(nanoseconds):
    for limit, unit in ((1e3, "ns"), (1e6, "us"), (1e9, "ms")):
        if nanoseconds < limit:
            return f"{nanoseconds / limit * 1e3:.3g} {unit}"
    return f"{nanoseconds / 1e9:.3g} s"


def table(results):
    """A section for each place, a line for each measure."""
    lines = []
    for place in dict.fromkeys(one["place"] for one in results):
        rows = [one for one in results if one["place"] == place and "ns_tarva" in one]
        others = [other for other in OTHERS if any(f"ratio_{other}" in one for one in rows)]
        lines += [f"### {place}", "", "| measure | time | " + " | ".join(TITLES[other] for other in others) + " |",
                  "|---|---:|" + "---:|" * len(others)]
        for one in rows:
            ratios = [f"{one[f'ratio_{other}']:.2f}" if f"ratio_{other}" in one else "" for other in others]
            lines.append(f"| {one['name']} | {time_text(one['ns_tarva'])} | " + " | ".join(ratios) + " |")
        lines.append("")
    for one in results:
        if "kilobytes_more" in one:
            lines.append(f"Resident memory of a started library beyond that of raw OpenCL: "
                         f"{one['kilobytes_more'] / 1024:.1f} MiB.")
    return "\n".join(lines) + "\n"


SUMMARY = ("launch/arguments:0", "launch/arguments:8", "launch/arguments:64", "write/bytes:4", "write/bytes:1048576",
           "write/bytes:268435456", "read/bytes:4", "read/bytes:268435456", "copy/bytes:4", "copy/bytes:268435456",
           "fill/bytes:4", "fill/bytes:268435456", "first_use/bytes:4", "first_use/bytes:268435456",
           "allocate_and_release/bytes:4096")
DEVICES = ("basic", "pthread")


def summary(results):
    """One table of the main measures, both devices side by side, pinned to one processor."""
    others = ("raw", "floor", "compute", "bindings")
    names = ("raw", "raw + floor", "Boost.Compute", "C++ bindings")
    lines = ["| measure | " + " | ".join(f"{device}: time | " + " | ".join(names) for device in DEVICES) + " |",
             "|---|" + "---:|" * (len(DEVICES) * (1 + len(others)))]
    for name in SUMMARY:
        cells = []
        for device in DEVICES:
            found = [one for one in results if (one["name"], one["place"]) == (name, f"{device}, pinned")]
            cells.append(time_text(found[0]["ns_tarva"]) if found else "")
            cells += [f"{found[0][f'ratio_{other}']:.2f}" if found and f"ratio_{other}" in found[0] else ""
                      for other in others]
        lines.append(f"| {name} | " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"


def plot(results):
    """Size, on a logarithmic axis, against the ratio to raw OpenCL on a worker thread: one curve a measure."""
    width, height, left, top, right, bottom = 760, 420, 60, 30, 190, 50
    curves = {}
    for one in results:
        kind = one["name"].split("/")[0]
        if one.get("bytes") and "ratio_floor" in one and kind in ("write", "read", "copy", "fill") \
                and one["place"].endswith("pinned"):
            curves.setdefault((one["place"].split(",")[0], kind), []).append((one["bytes"], one["ratio_floor"]))
    if not curves:
        return ""
    sizes = sorted({size for points in curves.values() for size, _ in points})
    highest = max(1.5, max(ratio for points in curves.values() for _, ratio in points) * 1.05)

    def x(size):
        return left + sizes.index(size) / max(1, len(sizes) - 1) * (width - left - right)

    def y(ratio):
        return height - bottom - ratio / highest * (height - top - bottom)

    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" font-family="sans-serif" '
             f'font-size="12">', '<rect width="100%" height="100%" fill="white"/>',
             f'<text x="{left}" y="18">Time of the library, over that of raw OpenCL on a worker thread</text>']
    for step in range(int(highest / 0.25) + 1):
        ratio = step * 0.25
        parts.append(f'<line x1="{left}" x2="{width - right}" y1="{y(ratio):.1f}" y2="{y(ratio):.1f}" '
                     f'stroke="{"black" if ratio == 1 else "#ddd"}"/>')
        parts.append(f'<text x="{left - 8}" y="{y(ratio) + 4:.1f}" text-anchor="end">{ratio:.2f}</text>')
    names = {4: "4 B", 4096: "4 KiB", 1 << 20: "1 MiB", 256 << 20: "256 MiB"}
    for size in sizes:
        parts.append(f'<text x="{x(size):.1f}" y="{height - bottom + 18}" text-anchor="middle">'
                     f'{names.get(size, int(size))}</text>')
    colours = {"write": "#1b6ca8", "read": "#c0392b", "copy": "#2e8b57", "fill": "#8e44ad"}
    for index, ((device, kind), points) in enumerate(sorted(curves.items())):
        dashes = "" if device == "basic" else ' stroke-dasharray="6 4"'
        line = " ".join(f"{x(size):.1f},{y(ratio):.1f}" for size, ratio in sorted(points))
        key_y = top + 14 + index * 18
        parts.append(f'<polyline points="{line}" fill="none" stroke="{colours[kind]}" stroke-width="2"{dashes}/>')
        parts.append(f'<line x1="{width - right + 15}" x2="{width - right + 45}" y1="{key_y - 4}" y2="{key_y - 4}" '
                     f'stroke="{colours[kind]}" stroke-width="2"{dashes}/>')
        parts.append(f'<text x="{width - right + 52}" y="{key_y}">{kind}, {device}</text>')
    return "\n".join(parts + ["</svg>"]) + "\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", nargs="?", default=ROOT / "build", type=pathlib.Path)
    parser.add_argument("output", nargs="?", type=pathlib.Path, help="BUILD_FOLDER/benchmarks/results unless given")
    parser.add_argument("--only", help="measures of these names only")
    wanted = parser.parse_args()
    output = wanted.output or wanted.build / "benchmarks" / "results"
    output.mkdir(parents=True, exist_ok=True)

    results = []
    with tempfile.TemporaryDirectory() as cache: # cold at first
        for device, processors, measures in RUNS:
            print(f"{device} on processors {processors}", file=sys.stderr, flush=True)
            results += run(wanted.build / "benchmarks" / "tarva_benchmarks", device, processors, measures, cache)
    if wanted.only:
        results = [one for one in results if re.search(wanted.only, one["name"])]
    (output / "results.json").write_text(json.dumps({"machine": machine(), "results": results}, indent=1) + "\n")
    (output / "table.md").write_text(f"Measured on a {machine()}.\n\n" + table(results))
    (output / "summary.md").write_text(summary(results))
    (output / "sizes.svg").write_text(plot(results))
    print(f"Written to {output}.")


if __name__ == "__main__":
    main()
