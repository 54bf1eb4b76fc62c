# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""What the benchmarks have measured, as tables and as a plot."""

OTHERS = ["raw", "floor", "fresh", "compute", "bindings", "fresh_write", "alone"]
TITLES = {"raw": "to raw", "floor": "to raw + floor", "fresh": "to raw with fresh kernel", "compute": "to Boost.Compute",
          "bindings": "to C++ bindings", "fresh_write": "to raw write into fresh buffer",
          "alone": "to itself with the other device idle"}
SIZES = {4: "4 B", 4096: "4 KiB", 1 << 20: "1 MiB", 64 << 20: "64 MiB", 256 << 20: "256 MiB", 1 << 30: "1 GiB"}
NOT_MEASURED = "not measured"


def time_text(nanoseconds):
    for limit, unit in ((1e3, "ns"), (1e6, "us"), (1e9, "ms")):
        if nanoseconds < limit:
            return f"{nanoseconds / limit * 1e3:.3g} {unit}"
    return f"{nanoseconds / 1e9:.3g} s"


def label(name):
    """As people say it: "write, 4 KiB" for write/bytes:4096."""
    parts = name.split("/")
    for index, part in enumerate(parts):
        what, _, number = part.partition(":")
        if what == "bytes":
            parts[index] = SIZES[int(number)]
        elif number:
            parts[index] = f"{number} {what}"
    return ", ".join(parts).replace("_", " ")


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
            lines.append(f"| {label(one['name'])} | {time_text(one['ns_tarva'])} | " + " | ".join(ratios) + " |")
        lines.append("")
    for one in results:
        if "kilobytes_more" in one:
            lines.append(f"Resident memory of a started library beyond that of raw OpenCL: "
                         f"{one['kilobytes_more'] / 1024:.1f} MiB.")
    return "\n".join(lines) + "\n"


SUMMARY = ("launch/arguments:0", "launch/arguments:8", "launch/arguments:64", "write/bytes:4", "write/bytes:1048576",
           "write/bytes:268435456", "read/bytes:4", "read/bytes:1048576", "read/bytes:268435456", "copy/bytes:4",
           "copy/bytes:268435456", "fill/bytes:4", "fill/bytes:268435456", "first_launch/never_written/bytes:4096",
           "first_launch/never_written/bytes:1048576", "first_launch/never_written/bytes:67108864",
           "first_launch/never_written/bytes:1073741824", "first_launch/written/bytes:4",
           "first_launch/written/bytes:268435456", "allocate_and_release/bytes:4096")
# What a user asks for first.
SHORT_SUMMARY = ("launch/arguments:0", "launch/arguments:8", "write/bytes:4", "write/bytes:1048576",
                 "write/bytes:268435456", "read/bytes:268435456", "copy/bytes:268435456",
                 "first_launch/never_written/bytes:67108864", "first_launch/written/bytes:268435456",
                 "allocate_and_release/bytes:4096")
DEVICES = ("basic", "pthread")


def summary(results, measures):
    """One table of the main measures, both devices side by side, pinned to one processor."""
    others = ("raw", "floor", "compute", "bindings")
    names = ("raw", "raw + floor", "Boost.Compute", "C++ bindings")
    lines = ["| measure | " + " | ".join(f"{device}: time | " + " | ".join(names) for device in DEVICES) + " |",
             "|---|" + "---:|" * (len(DEVICES) * (1 + len(others)))]
    for name in measures:
        cells = []
        for device in DEVICES:
            found = [one for one in results if (one["name"], one["place"]) == (name, f"{device}, pinned")]
            cells.append(time_text(found[0]["ns_tarva"]) if found else "")
            cells += [f"{found[0][f'ratio_{other}']:.2f}" if found and f"ratio_{other}" in found[0] else ""
                      for other in others]
        lines.append(f"| {label(name)} | " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"


def plot(results):
    """Size, on a logarithmic axis, against the ratio to raw OpenCL on a worker thread: one curve a measure."""
    width, height, left, top, right, bottom = 760, 420, 60, 30, 190, 50
    curves = {}
    for one in results:
        kind = one["name"].split("/")[0]
        if one.get("bytes") and "ratio_floor" in one and kind in ("write", "read", "copy", "fill") \
                and one["place"] in [f"{device}, pinned" for device in DEVICES]:
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
    for size in sizes:
        parts.append(f'<text x="{x(size):.1f}" y="{height - bottom + 18}" text-anchor="middle">'
                     f'{SIZES.get(size, int(size))}</text>')
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


def lookup(results):
    """A function from place, measure, key and form to a text."""
    found = {(one["place"], one["name"]): one for one in results}

    def text(place, name, key="ns_tarva", form=time_text):
        one = found.get((place, name), {})
        return form(one[key]) if key in one else NOT_MEASURED
    return text


def more(results):
    """The measures that have no place in the summary, one line each."""
    text = lookup(results)
    basic, free, everywhere, networked = "basic, pinned", "basic, free", "basic, all", "networked, free"

    def times(place, *names, key="ns_tarva"):
        return ", ".join(text(place, name, key) for name in names)

    def ratios(place, other, *names):
        return ", ".join(text(place, name, f"ratio_{other}", "{:.2f}".format) for name in names)

    look_ups = [f"look_up/handles:{count}/threads:1" for count in (1, 1000, 1000000)]
    threads = [f"submit/threads:{count}" for count in (1, 4, 16)]
    lines = [
        ("handle look-up with 1, a thousand and a million handles, picked at random", times(basic, *look_ups)),
        ("the same by 4 threads on all processors, each with handles of its own save the one, per call of all",
         times(everywhere, *(name[:-1] + "4" for name in look_ups))),
        ("retain or release of one handle by 1 and by 4 threads on all processors, per call of all",
         times(everywhere, "retain_or_release/threads:1", "retain_or_release/threads:4")),
        ("the same, to clRetainContext and clReleaseContext",
         ratios(everywhere, "raw", "retain_or_release/threads:1", "retain_or_release/threads:4")),
        ("a fill of one memory object with 1, a thousand and a million alive",
         times(basic, *(f"fill_on_host/same/live:{count}" for count in (1, 1000, 1000000)))),
        ("the same, to the floor", ratios(basic, "floor", *(f"fill_on_host/same/live:{count}" for count in (1, 1000, 1000000)))),
        ("the same, of one picked at random, which misses the processor's caches",
         times(basic, *(f"fill_on_host/random/live:{count}" for count in (1, 1000, 1000000)))),
        ("launches by 1, 4 and 16 threads, per launch", times(basic, *threads)),
        ("the same, to raw + floor", ratios(basic, "floor", *threads)),
        ("movement of 4 B and 256 MiB between devices, with a launch, to raw + floor",
         ratios("basic and pthread, pinned", "floor", "move/bytes:4", "move/bytes:268435456")),
        ("first launch with 256 MiB that were written, to a raw write into a fresh buffer",
         ratios(basic, "fresh_write", "first_launch/written/bytes:268435456")),
        ("building a program, and from the implementation's cache, to raw",
         ratios(basic, "raw", "build/cold", "build/cached")),
        ("start and stop, to raw", ratios(free, "raw", "start", "stop")),
        ("resident memory of the started library beyond that of raw OpenCL",
         text(free, "resident_memory", "kilobytes_more", lambda kilobytes: f"{kilobytes / 1024:.1f} MiB")),
        ("text and XML of a device's whole property tree", times(basic, "property_tree/text", "property_tree/xml")),
        ("the queries for it alone, and each of them once",
         times(basic, "property_tree/text", key="ns_raw") + ", " + times(basic, "property_tree/text", key="ns_once")),
        ("a launch with 0 and with 8 arguments, to raw with a kernel made for each launch",
         ratios(basic, "fresh", "fresh_kernel/arguments:0", "fresh_kernel/arguments:8")),
        ("on a networked device: a launch with 0 and with 8 arguments, to raw",
         ratios(networked, "raw", "launch/arguments:0", "launch/arguments:8")),
        ("the same, to raw with a kernel made for each launch",
         ratios(networked, "fresh", "fresh_kernel/arguments:0", "fresh_kernel/arguments:8")),
        ("there, a write and a read of 4 B, and of 1 MiB, to raw",
         ratios(networked, "raw", "write/bytes:4", "read/bytes:4", "write/bytes:1048576", "read/bytes:1048576")),
    ]
    return "\n".join(["| measure | result |", "|---|---|"] + [f"| {what} | {result} |" for what, result in lines]) + "\n"


def waits(results):
    """What looking before sleeping brings, where it is asked for."""
    text = lookup(results)
    places = [(device, processors) for device in DEVICES for processors in ("free", "pinned")]
    lines = ["| measure | " + " | ".join(f"{device}, {processors}: asleep | looking" for device, processors in places) + " |",
             "|---|" + "---:|" * (2 * len(places))]
    for name in ("launch/arguments:0", "write/bytes:4", "write/bytes:1048576"):
        cells = [text(f"{device}{how}, {processors}", name)
                 for device, processors in places for how in ("", ", busy waiting")]
        lines.append(f"| {label(name)} | " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n"


def beside_busy_device(results):
    text = lookup(results)
    times = {key: text("pthread and basic, free", "other_device_busy/write/bytes:4", f"ns_{key}")
             for key in ("launch", "tarva", "longest", "alone", "raw", "raw_alone")}
    if NOT_MEASURED in times.values():
        return ""
    return ("While one thread runs launches of {launch} on one device, one after the other, a write of 4 B to another device "
            "takes\n{tarva} on average and {longest} at worst within a tenth of a second, and {alone} on average without "
            "them.\nRaw OpenCL with a thread for each device takes {raw}, and {raw_alone} without them.").format(**times)


def many_threads(results):
    """4-byte writes by many threads on one device, under each scheduler."""
    text = lookup(results)
    lines = ["| writes of 4 B by | scheduler | processors | per call of all | median | 99th percentile | worst | most to least served |",
             "|---|---|---|---:|---:|---:|---:|---:|"]
    for scheduler, place in (("default", "basic"), ("concurrent", "basic, concurrent")):
        for processors in ("pinned", "all"):
            for threads in (1, 4, 16, 64):
                where = (f"{place}, {processors}", f"many_writes/threads:{threads}")
                cells = [text(*where, f"ns_{key}") for key in ("tarva", "median", "99th", "longest")]
                cells.append(text(*where, "ratio_most_to_least", "{:.2f}".format))
                lines.append(f"| {threads} threads | {scheduler} | {'one' if processors == 'pinned' else 'all'} | "
                             + " | ".join(cells) + " |")
    growth = [text("basic, pinned", f"table_growth/handles:{count}", "ns_longest") for count in (10000, 1000000, 10000000)]
    lines += ["", "The worst call while ten thousand, a million and ten million handles are made and released takes "
              + ", ".join(growth) + ".\n"]
    return "\n".join(lines)


def side_by_side(results):
    """What TARVA_SCHEDULER=concurrent changes."""
    times = overlap_times(results)
    if NOT_MEASURED in times.values():
        return ""
    return ("With `TARVA_SCHEDULER=concurrent` that write takes {beside}. A launch on each of four devices at once takes\n"
            "{together} times as long as on one of them, and {in_turn} times without that setting.").format(**times)


def overlap(results):
    """What overlaps and what does not, in one sentence."""
    times = overlap_times(results)
    if NOT_MEASURED in times.values():
        return ""
    return ("One operation runs at a time: beside launches of {launch} on one device, a write of 4 B to another takes "
            "{waiting}\ninstead of {alone}. With `TARVA_SCHEDULER=concurrent` what shares no memory object and no device "
            "overlaps: that write takes\n{beside}, and a launch on each of four devices at once {together} times as long as "
            "on one of them, instead of {in_turn} times.\n").format(**times)


def overlap_times(results):
    text = lookup(results)
    busy, four = "pthread and basic", "basic and basic and basic and basic"
    write = "other_device_busy/write/bytes:4"
    return {"beside": text(f"{busy}, concurrent, free", write), "waiting": text(f"{busy}, free", write),
            "alone": text(f"{busy}, free", write, "ns_alone"), "launch": text(f"{busy}, free", write, "ns_launch"),
            **{key: text(f"{place}, all", "all_devices", "ratio_one_device", "{:.2f}".format)
               for key, place in (("together", f"{four}, concurrent"), ("in_turn", four))}}


def over_network(results, server):
    text = lookup(results)
    place = "networked, free"
    time = text(place, "launch/arguments:0")
    raw = text(place, "launch/arguments:0", "ratio_raw", "{:.2f}".format)
    fresh = text(place, "fresh_kernel/arguments:0", "ratio_fresh", "{:.2f}".format)
    if NOT_MEASURED in (time, raw, fresh):
        return ""
    return (f"A launch without arguments took {time} with a server {server}: {raw} times what the OpenCL calls alone take\n"
            f"with a kernel that is there, and {fresh} times what they take with a kernel made for each launch.")


def replace_measured(text, content):
    """`text` with `content` between its two marks."""
    begin, end = "<!-- measured -->\n", "<!-- end of measured -->\n"
    return text[:text.index(begin) + len(begin)] + content + text[text.index(end):]
