#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Runs the fenced blocks of documents, and follows their links within the source tree.

    run_blocks.py <source folder> <document>...

Blocks run in order, in a folder in which the source tree seems to lie. What a block may be:

    ```c file=NAME, ```cpp file=NAME   is written to that file, for the commands that follow; an example of that name
                                       has to be the same
    ```c, ```cpp                       is compiled and run: with main as it is, else as the body of one
    ```sh                              is run, and has to end with status 0
    ```console                         each line that begins with "$ " is run; what it prints has to be what follows,
                                       in which ... stands for any text, and a line of it for any lines
    ```python                          is only looked at here: the tests of the Python package run it
    ```text                            is only looked at

A comment <!-- not run: why --> in the line before a block lets it be, and <!-- not compared: why --> lets its output be;
with <!-- only if: COMMAND --> the block is left out where that command fails. What blocks leave running is ended.
"""
import contextlib
import os
import re
import signal
import subprocess
import sys
import tempfile
from pathlib import Path

BLOCK = re.compile(r"^(?:<!-- (?P<what>not run|not compared|only if): (?P<why>.+?) -->\n)?```(?P<info>[^\n]*)\n(?P<body>.*?)^```$", re.M | re.S)
LINK = re.compile(r"\]\((?!https?:|#)([^)#]+)(?:#[^)]*)?\)")
CPP_HEAD = """#include <iostream>
#include <tarva.hpp>
int main() {
[[maybe_unused]] const tarva::device device = tarva::best_device();
[[maybe_unused]] const std::vector<float> numbers(1024, 1.0F);
"""


def end_group(group):
    with contextlib.suppress(ProcessLookupError):
        os.killpg(group, signal.SIGKILL)


def run(command, folder, started=None):
    """The output of a shell command; a failure if its status is not 0. `started` is told its process group."""
    with subprocess.Popen(["bash", "-ec", command], cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          stdin=subprocess.DEVNULL, text=True, errors="replace", start_new_session=True) as done:
        if started is not None:
            started.append(done.pid)
        try:
            output = done.communicate(timeout=240)[0]
        except subprocess.TimeoutExpired:
            end_group(done.pid)
            raise
    if done.returncode != 0:
        raise AssertionError(f"status {done.returncode} from: {command}\n{output}")
    return output


def run_program(language, body, folder):
    extension, compiler = {"c": ("c", "cc -std=c99"), "cpp": ("cpp", "c++ -std=c++17")}[language]
    if language == "cpp" and "main(" not in body:
        body = CPP_HEAD + body + "}\n"
    (folder / f"block.{extension}").write_text(body)
    run(f"{compiler} -Wall -Wextra -Wpedantic -Werror block.{extension} $(pkg-config --cflags --libs tarva) -o block "
        "&& ./block", folder)


def matches(expected, output):
    pattern = "".join(".*" if part == "..." else re.escape(part) for part in re.split(r"(\.\.\.)", expected))
    return re.fullmatch(pattern, output, re.S) is not None


def run_console(body, folder, compared):
    for command, expected in re.findall(r"^\$ ([^\n]*(?:\\\n[^\n]*)*)\n((?:(?!\$ )[^\n]*\n)*)", body, re.M):
        output = run(command, folder)
        if compared and not matches(expected.rstrip("\n"), output.rstrip("\n")):
            raise AssertionError(f"another output of: {command}\n--- expected\n{expected}--- printed\n{output}")


def run_block(info, body, folder, compared, started):
    language, _, rest = info.partition(" ")
    if rest.startswith("file="):
        name = rest[len("file="):]
        (folder / name).write_text(body)
        example = folder / "examples" / name
        if example.exists() and re.sub(r"\A(.*SPDX-.*\n)+\n", "", example.read_text()) != body:
            raise AssertionError(f"examples/{name} reads otherwise")
    elif language in ("c", "cpp"):
        run_program(language, body, folder)
    elif language == "sh":
        run(body, folder, started)
    elif language == "console":
        run_console(body, folder, compared)
    elif language not in ("text", "python"):
        raise AssertionError(f"a block of an unknown kind: {info!r}")


def check_document(source, document):
    text = (source / document).read_text()
    failures = [f"a link leads nowhere: {link}" for link in LINK.findall(re.sub(r"```.*?```", "", text, flags=re.S))
                if not ((source / document).parent / link).exists()]
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        for entry in source.iterdir():
            if not entry.name.startswith(".") and not entry.name.startswith("build"):
                (folder / entry.name).symlink_to(entry)
        (folder / "build").symlink_to(os.environ["TARVA_BUILD"])
        ran, started = 0, []
        for block in BLOCK.finditer(text):
            line = text.count("\n", 0, block.start("info")) + 1
            if block["what"] == "not run":
                print(f"{document}:{line}: not run: {block['why']}")
                continue
            if block["what"] == "only if" and subprocess.run(["bash", "-c", block["why"]], check=False).returncode != 0:
                print(f"{document}:{line}: not run, since this is not so: {block['why']}")
                continue
            try:
                run_block(block["info"], block["body"], folder, block["what"] != "not compared", started)
                ran += 1
            except (AssertionError, subprocess.TimeoutExpired) as failure:
                failures.append(f"line {line}: {failure}")
        for group in started:
            end_group(group)
    if text.count("\n```") % 2 != 0 or len(BLOCK.findall(text)) * 2 != text.count("\n```"):
        failures.append("blocks are not closed, or not at the beginning of a line")
    print(f"{document}: {ran} blocks ran")
    for failure in failures:
        print(f"{document}: {failure}")
    return not failures


if __name__ == "__main__":
    results = [check_document(Path(sys.argv[1]).resolve(), document) for document in sys.argv[2:]]
    sys.exit(0 if all(results) else 1)
