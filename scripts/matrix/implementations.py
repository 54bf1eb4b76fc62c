# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Which implementations of OpenCL are at hand, and what each needs to run."""
import re
import subprocess
import sys
from dataclasses import dataclass, field
from pathlib import Path

RUNTIMES = Path(__file__).parent / "runtimes"
RUNTIME_LIBRARY = "libintelocl.so"

# How devices are offered: as what they report, and by QV_OPENCL_VERSIONS.
REPORTED = "reported"
EVERY_VERSION = "1.0,1.1,1.2,2.0,2.1,2.2"
MANY_DEVICES = 20


@dataclass
class Implementation:
    """A row of the matrix for each setting, which is how devices are offered."""

    name: str
    libraries: list[str]
    search_path: str = ""
    environment: dict[str, str] = field(default_factory=dict)
    settings: tuple[str, ...] = (REPORTED, EVERY_VERSION)
    least_devices: int = 1
    simulates: bool = False  # too slow for some programs, which is no failure

    def family(self):
        """Libraries of one family cannot be in one process: they have the same name, or the same symbols."""
        return re.match(r"[A-Za-z]*", Path(self.libraries[0]).name)[0]


def fetch(folder):
    """Unpacks the packaged runtimes below `folder`, with pip, which checks their hashes."""
    for pins in sorted(RUNTIMES.glob("*.txt")):
        prefix = folder / "runtimes" / pins.stem
        if (prefix / "complete").exists():
            continue
        command = [sys.executable, "-m", "pip", "install", "--quiet", "--ignore-installed", "--no-deps", "--no-compile"]
        command += ["--no-warn-script-location", "--disable-pip-version-check", "--root-user-action", "ignore"]
        command += ["--require-hashes", "--prefix", str(prefix), "--requirement", str(pins)]
        if subprocess.run(command, check=False).returncode != 0:
            print(f"{pins.stem} is not to be had; going on without it", file=sys.stderr)
            continue
        for loader in prefix.rglob("libOpenCL.so*"):
            loader.unlink()  # the machine's own is the one to use
        (prefix / "complete").touch()


def processor_for_runtime():
    """On another maker's processor older runtimes take a target without SSE 4.1 and then use it: tell them a better one."""
    flags = Path("/proc/cpuinfo").read_text()
    if "GenuineIntel" in flags or " avx2 " not in flags:
        return {}
    return {"CL_CONFIG_CPU_TARGET_ARCH": "skx" if " avx512f " in flags else "core-avx2"}


def fetched(folder):
    """The runtimes that `fetch` has brought, the newest of a family first."""
    for pins in sorted(RUNTIMES.glob("*.txt"), reverse=True):
        prefix = folder / "runtimes" / pins.stem
        if (prefix / "complete").exists():
            # Debian's Python puts things below local/, others do not.
            library = next(prefix.rglob(RUNTIME_LIBRARY)).resolve()
            yield Implementation(pins.stem, [str(library)], str(library.parent), processor_for_runtime())


def installed(tests):
    """What the machine has: the tests of the build say, save for Clover."""
    own = {"pocl": {}, "oclgrind": {}, "rusticl": {"RUSTICL_ENABLE": "llvmpipe"}}
    for name, environment in own.items():
        icd = tests / "icd" / name / f"{name}.icd"
        if icd.exists():
            yield Implementation(name, [icd.read_text().strip()], environment=environment, simulates=name == "oclgrind")
            if name == "pocl":
                yield Implementation("pocl-basic", [icd.read_text().strip()], environment={"POCL_DEVICES": "basic"})
    clover = Path("/etc/OpenCL/vendors/mesa.icd")
    if clover.exists():  # refuses what later versions than its own have
        yield Implementation("clover", [clover.read_text().strip()], "", {"LP_CL": "1"}, (REPORTED, "1.0,1.1"))


def named(text):
    """NAME=LIBRARY[:PATH], as on the command line."""
    form = re.fullmatch(r"([\w.-]+)=([^:]+)(?::(.+))?", text)
    if form is None:
        sys.exit(f"--icd takes NAME=LIBRARY[:PATH], not {text!r}")
    if "/" in form[2] and not Path(form[2]).exists():
        sys.exit(f"there is no {form[2]}")
    return Implementation(form[1], [form[2]], form[3] or "")


def remote(client, addresses):
    """Devices of running servers, each of which is device 0 of its server unless the address says otherwise."""
    places = [one if "/" in one else one + "/0" for one in addresses]
    for place in places:
        if not re.fullmatch(r"[^\s:]+:\d+/\d+(#\S+)?", place):
            sys.exit(f"--remote takes HOST:PORT[/DEVICE[#PEER]], not {place!r}")
    client.environment = {f"POCL_REMOTE{k}_PARAMETERS": place for k, place in enumerate(places)}
    client.environment["POCL_DEVICES"] = " ".join(["remote"] * len(places))
    client.least_devices = len(places)
    return client


def merged(name, chosen, settings):
    """Implementations as one."""
    together = Implementation(
        name,
        [library for one in chosen for library in one.libraries],
        ":".join(filter(None, (one.search_path for one in chosen))),
        settings=settings,
        least_devices=len(chosen),
    )
    for one in chosen:
        together.environment |= one.environment
    return together


def in_one_process(members):
    """Of each family the first one; and the same with so many devices of PoCL's that there are twenty in all."""
    families = {}
    for one in members.values():
        families.setdefault(one.family(), one)
    chosen = list(families.values())
    together = merged("together", chosen, (REPORTED,))
    yield together
    with_every_version = [one for one in chosen if EVERY_VERSION in one.settings]
    if len(with_every_version) > 1:
        yield merged("together-every", with_every_version, (EVERY_VERSION,))
    if "pocl" in members:
        basic = MANY_DEVICES - len(chosen)
        yield Implementation(
            "twenty",
            together.libraries,
            together.search_path,
            together.environment | {"POCL_DEVICES": "pthread" + " basic" * basic},
            (REPORTED,),
            MANY_DEVICES,
        )


def at_hand(build, folder, icds, addresses):
    """All implementations by name, in the order in which they are tried."""
    members = {one.name: one for one in installed(build / "tests" / "device")}
    members |= {one.name: one for one in fetched(folder)}
    members |= {one.name: one for one in map(named, icds)}
    client = members.pop("remote", None)
    if addresses:
        if client is None:
            sys.exit("--remote needs a client: --icd remote=LIBRARY")
        return {"remote": remote(client, addresses)}
    combined = list(in_one_process(members)) if len(members) > 1 else []
    return members | {one.name: one for one in combined}
