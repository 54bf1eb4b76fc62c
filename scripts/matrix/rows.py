# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""One row of the matrix: the tests, the main job and the examples on one implementation under one setting."""
import contextlib
import json
import os
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

from matrix.implementations import MANY_DEVICES, REPORTED

GROUPS = ("road", "program_kinds", "mistakes")
EXAMPLES = (
    "first",
    "saxpy",
    "saxpy_cpp",
    "errors",
    "two_devices",
    "properties",
    "reduction",
    "specialization",
    "nbody",
    "life",
    "vector_addition",
    "matrix_product",
    "histogram",
)
NOT_FOR_THIS_DEVICE = 77
STOPPED = "stopped"


@dataclass
class Limits:
    """The most address space of a process in GiB, and the most time of a process and of a row in seconds."""

    memory: float
    seconds: float
    row_seconds: float


@dataclass
class Result:
    """What became of one program: passed, failed, skipped or stopped; with the number of tests if it is one of tests."""

    state: str
    seconds: float
    status: int | None = None
    passed: int = 0
    skipped: int = 0
    failed: int = 0


@dataclass
class Row:
    """What became of all programs, by name."""

    implementation: str
    versions: str
    devices: list[dict[str, str]]
    simulates: bool
    results: dict[str, Result] = field(default_factory=dict)

    def is_failure(self, result):
        """A simulator may take longer than there is time."""
        return result.state == "failed" or (result.state == STOPPED and not self.simulates)

    def has_failed(self):
        return not self.devices or any(map(self.is_failure, self.results.values()))


def half_of_memory():
    return os.sysconf("SC_PHYS_PAGES") * os.sysconf("SC_PAGE_SIZE") / 2 / 2**30


def check_built(build):
    """Ends the process if something is missing."""
    programs = [f"tests/device/{group}_test" for group in GROUPS]
    programs += ["tarva-info", "examples/main_job", *(f"examples/{name}" for name in EXAMPLES)]
    missing = [one for one in programs if not os.access(build / one, os.X_OK)]
    if missing:
        sys.exit(f"{build} lacks {' '.join(missing)}; build tests, tools and examples first")


def environment_of(build, implementation, versions, vendors):
    """That of the caller, without what chooses implementations or devices."""
    environment = {
        name: value
        for name, value in os.environ.items()
        if not re.match(r"(OCL_ICD_|POCL_(DEVICES|REMOTE)|QV_|TARVA_)|(RUSTICL_ENABLE|LP_CL)$", name)
    }
    environment |= implementation.environment
    environment["OCL_ICD_VENDORS"] = str(vendors)
    environment["POCL_CACHE_DIR"] = str(build / "pocl-cache")
    environment["TARVA_TEST_NEEDS_DEVICE"] = str(implementation.least_devices)
    if implementation.search_path:
        environment["LD_LIBRARY_PATH"] = ":".join(
            filter(None, (implementation.search_path, os.environ.get("LD_LIBRARY_PATH")))
        )
    if versions == REPORTED:
        environment["TARVA_TEST_LARGE"] = "1"
    else:
        environment["QV_OPENCL_VERSIONS"] = versions
    return environment


def run(command, environment, limits, seconds, log):
    """The result of a command, whose output goes to the file `log`. What outlives it is ended, too."""

    def bound():
        resource.setrlimit(resource.RLIMIT_AS, (int(limits.memory * 2**30),) * 2)
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    began = time.monotonic()
    with open(log, "wb") as output, subprocess.Popen(
        command,
        env=environment,
        stdin=subprocess.DEVNULL,
        stdout=output,
        stderr=subprocess.STDOUT,
        start_new_session=True,
        preexec_fn=bound,
    ) as process:
        status = None
        try:
            status = process.wait(timeout=max(seconds, 0.1))
        except subprocess.TimeoutExpired:
            pass
        finally:  # also when this process is told to end
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGKILL)
    states = {0: "passed", NOT_FOR_THIS_DEVICE: "skipped", None: STOPPED}
    return Result(states.get(status, "failed"), round(time.monotonic() - began, 1), status)


def count_tests(result, output):
    """How many tests passed, were skipped or failed; of a program that did not come to its end, as far as it went."""

    def told(word):
        return sum(map(int, re.findall(rf"^\[  {word:<8}\] (\d+) test", output, re.M)))

    result.passed, result.skipped, result.failed = told("PASSED"), told("SKIPPED"), told("FAILED")
    if "[  PASSED  ]" not in output:
        result.passed = len(re.findall(r"^\[       OK \]", output, re.M))
        result.failed = len(re.findall(r"^\[  FAILED  \]", output, re.M))


def read_devices(build, environment, limits, log):
    """Name, version and driver of each device, as the library offers them."""
    run([str(build / "tarva-info"), "--json"], environment, limits, limits.seconds, log)
    try:
        output = log.read_text(errors="replace")  # the drivers may have said something, too
        devices = json.JSONDecoder().raw_decode(output[output.find("{") :])[0]["devices"]
    except (ValueError, KeyError):
        return []
    return [
        {
            "name": one["NAME"],
            "reports": one["OPENCL"].get("CL_DEVICE_VERSION", ""),
            "offered as": one["FRIENDLY_SHORT_DESCRIPTION"].split(" device")[0],
            "driver": one["OPENCL"].get("CL_DRIVER_VERSION", ""),
        }
        for one in devices
    ]


def programs_of(build, folder, implementation, versions):
    """Names and commands, in order. The mistakes take a process each on each device: one setting and few devices do."""
    for group in GROUPS:
        if group != "mistakes" or (versions == REPORTED and implementation.least_devices < MANY_DEVICES):
            yield group, [str(build / "tests" / "device" / f"{group}_test")]
    yield "main_job", [str(build / "examples" / "main_job"), str(folder / "mandelbrot.png")]
    arguments = {"nbody": [str(folder), "3"], "life": ["40"]}
    for name in EXAMPLES:
        yield name, [str(build / "examples" / name), *arguments.get(name, [])]


def run_row(build, folder, implementation, versions, limits):
    """All programs, one after the other, until the time of the row is over."""
    with tempfile.TemporaryDirectory() as name:
        vendors = Path(name)
        for k, library in enumerate(implementation.libraries):
            (vendors / f"{k}.icd").write_text(library + "\n")
        environment = environment_of(build, implementation, versions, vendors)
        log = f"{implementation.name}.{versions}."
        row = Row(
            implementation.name,
            versions,
            read_devices(build, environment, limits, folder / "log" / (log + "devices")),
            implementation.simulates,
        )
        end = time.monotonic() + limits.row_seconds
        for program, command in programs_of(build, folder, implementation, versions):
            path = folder / "log" / (log + program)
            left = end - time.monotonic()
            result = Result(STOPPED, 0)
            if left > 0:
                result = run(command, environment, limits, min(limits.seconds, left), path)
            if program in GROUPS and path.exists() and left > 0:
                count_tests(result, path.read_text(errors="replace"))
            row.results[program] = result
    return row
