#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Compares how many instructions and allocations the library's main operations take with the numbers on record.

    counts_test.py check|record PROGRAM LIBRARY BUILD

Counted is what runs inside LIBRARY, by callgrind: not what it calls in others, so the numbers hold on every machine. They
hold for one compiler only, so BUILD, its name and the kind of build, stands on record, too. A number fails that is more
than a tenth above its record. Status 77, skipped: no valgrind, or another BUILD.
"""
import glob
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

RECORD = pathlib.Path(__file__).with_name("counts.json")
TIMES = 200
TOLERANCE = 1.1
ALLOCATORS = re.compile(r"operator new\(|malloc$|_Znwm$")


def run(program, folder):
    """The names of the operations, and for each the file with what was spent in it."""
    output = subprocess.run(
        ["valgrind", "--tool=callgrind", "--dump-before=begin_operation", "--compress-strings=no", "--compress-pos=no",
         f"--callgrind-out-file={folder}/out", program], check=True, capture_output=True, text=True).stdout
    names = output.splitlines()
    parts = [f"{folder}/out.{number + 1}" for number in range(len(names))]
    assert all(os.path.exists(part) for part in parts), sorted(glob.glob(f"{folder}/*"))
    # Part n is what ran before the n-th call: the parts of the operations stand before the calls without a name.
    return [(names[i - 1], parts[i]) for i in range(1, len(names)) if names[i] == ""]


def count(part, library):
    instructions = allocations = 0
    inside = is_call = False
    callee = ""
    for line in open(part):
        if line.startswith("ob="):
            inside = library in line
        elif line.startswith("cfn="):
            callee = line[4:].strip()
        elif line.startswith("calls="):
            is_call = True
            if inside and ALLOCATORS.search(callee):
                allocations += int(line[6:].split()[0])
        elif re.match(r"\d", line):
            # The line after `calls=` tells what was spent in the function called.
            if inside and not is_call:
                instructions += int(line.split()[1])
            is_call = False
    return {"instructions": round(instructions / TIMES), "allocations": round(allocations / TIMES)}


def main():
    action, program, library, build = sys.argv[1:]
    if shutil.which("valgrind") is None:
        print("Skipped: valgrind is not installed.")
        return 77
    record = json.loads(RECORD.read_text()) if RECORD.exists() else {}
    if action == "check" and record["build"] != build:
        print(f"Skipped: the record is of {record['build']}, and this is {build}.")
        return 77
    with tempfile.TemporaryDirectory() as folder:
        counts = {name: count(part, library) for name, part in run(program, folder)}
    if action == "record":
        rows = ",\n".join(f"    {json.dumps(name)}: {json.dumps(numbers)}" for name, numbers in counts.items())
        RECORD.write_text(f'{{\n  "build": {json.dumps(build)},\n  "counts": {{\n{rows}\n  }}\n}}\n')
        return 0
    failed = set(counts) != set(record["counts"])
    for name, now in counts.items():
        for what, number in now.items():
            allowed = record["counts"].get(name, {}).get(what, 0)
            too_many = number > allowed * TOLERANCE
            failed = failed or too_many
            print(f"{name}: {number} {what}, {allowed} on record" + (": TOO MANY" if too_many else ""))
    return 1 if failed else 0


sys.exit(main())
