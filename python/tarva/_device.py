# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""The devices of the machine, and how to choose one."""

from __future__ import annotations

import os
from collections.abc import Mapping
from typing import Any

from . import _binding
from ._errors import BuildError, Error, NoDevice
from ._handle import Handle
from ._program import Program
from ._types import constant_of

# In the order in which best_device() prefers them.
_TYPES = ("gpu", "accelerator", "cpu", "custom", "other")
_KINDS = {
    "source": 1, "source 1.0": 1, "source 1.1": 2, "source 1.2": 3, "source 2.0": 4, "source 2.1": 5,
    "spir 1.2": 6, "spir 2.0": 7, "spir-v": 8, "binary": 9,
}  # fmt: skip
_BYTE_ORDER_MARK = "\ufeff"  # allowed at the very beginning only
_SPIR_V_MAGIC = (b"\x03\x02\x23\x07", b"\x07\x23\x02\x03")
_BITCODE_MAGIC = (b"BC\xc0\xde", b"\xde\xc0\x17\x0b")

Data = bytes | bytearray | memoryview


class Device(_binding.Device, Handle):
    """One OpenCL device, under one OpenCL version. Take it from devices(), best_device() or first_device()."""

    __slots__ = ("_known_name", "__weakref__")

    @property
    def name(self) -> str:
        """The name that the implementation gives it."""
        if not hasattr(self, "_known_name"):
            self._known_name = str(self.properties["NAME"])
        return self._known_name

    @property
    def type(self) -> str:
        """gpu, accelerator, cpu, custom or other."""
        for each in _TYPES[:-1]:
            if _read(self, f"CL_DEVICE_TYPE_{each.upper()}", False):
                return each
        return "other"

    @property
    def version(self) -> str:
        """The OpenCL version under which the library offers it, such as "1.2". The device itself may be of a later one,
        which its CL_DEVICE_VERSION tells."""
        return str(self.properties["FRIENDLY_SUMMARY"]).split(" ")[1]

    def build(self, source: str, options: str = "", label: str = "") -> Program:
        """Builds OpenCL C source. Raises BuildError, which has the log, if it does not build.

        Args:
            source: the text; or put it into a file, and give that file's text with its name as the label
            options: for the compiler, such as "-cl-fast-relaxed-math -D SIZE=16"
            label: the name of the program, which stands in the compiler's messages as that of the file
        """
        if not isinstance(source, str):
            raise TypeError(
                f"a source is a str, not {type(source).__name__}; Device.load takes other kinds of programs"
            )
        text = f"#line 1 {_quoted(label)}\n{source.removeprefix(_BYTE_ORDER_MARK)}" if label else source
        return self._build("source", text.encode(), options, label, {}, source)

    def load(
        self,
        data: Data,
        options: str = "",
        label: str = "",
        *,
        kind: str | None = None,
        constants: Mapping[int, Any] | None = None,
    ) -> Program:
        """Loads a program of any kind. Raises BuildError, which has the log, if it does not build.

        Args:
            data: its bytes
            options: for the compiler
            label: the name of the program
            kind: "spir-v", "spir 1.2", "spir 2.0", "binary" for Program.binary of such a device, or "source 1.2" and
                the like; by itself SPIR-V is recognised, bitcode is taken for SPIR 1.2, and all else for a binary
            constants: values for specialization constants of a SPIR-V module, by their ids: np.float32(2), True
        """
        if isinstance(data, str):
            raise TypeError("a program to load is bytes, not str; Device.build takes OpenCL C")
        return self._build(kind or _kind_of(data), data, options, label, constants or {}, None)

    def supports(self, kind: str, constants: Mapping[int, Any] | None = None) -> bool:
        """Whether the device takes programs of that kind, as Device.load has them."""
        return self._supports(_code_of(kind), _constants(constants or {}))

    @property
    def builtin_program(self) -> Program:
        """The program of the kernels that are built into the device; it may have none."""
        return self._builtin_program(Program)._set("", "", None)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Device):
            return NotImplemented
        return self is other or self.properties["OBJECT_ID"] == other.properties["OBJECT_ID"]

    def __hash__(self) -> int:
        return hash(self.properties["OBJECT_ID"])

    def __repr__(self) -> str:
        known = getattr(self, "_known_name", None)
        return f"<tarva.Device {self.name if known is None and not self.closed else known!s}>"

    def _build(
        self, kind: str, data: Data, options: str, label: str, constants: Mapping[int, Any], source: str | None
    ) -> Program:
        try:
            made, log, success = self._load(Program, _code_of(kind), data, options, label, _constants(constants))
        except Error as failure:
            what = f"The program was given as {kind}{f', with the options {options}' if options else ''}."
            failure.args = (f"{failure} ({what})",)
            raise
        if not success:
            what = f"The program{f' {label}' if label else ''} does not build"
            advice = (
                "" if source is None or "{" in source else "A source is the text of a program, not the name of a file."
            )
            raise BuildError(f"{what}{f' with the options {options}' if options else ''}:\n{log}{advice}", log)
        return made._set(label, log, source)


def _quoted(label: str) -> str:
    plain = "".join(each if each.isprintable() else " " for each in label)
    return '"' + plain.replace("\\", "\\\\").replace('"', '\\"') + '"'


def _kind_of(data: Data) -> str:
    start = bytes(data[:4])
    return "spir-v" if start in _SPIR_V_MAGIC else "spir 1.2" if start in _BITCODE_MAGIC else "binary"


def _code_of(kind: str) -> int:
    if kind not in _KINDS:
        raise ValueError(f"{kind!r} is no kind of program; there are: {', '.join(_KINDS)}.")
    return _KINDS[kind]


def _constants(constants: Mapping[int, Any]) -> list[tuple[int, int, bytes]]:
    return [(id, *constant_of(value)) for id, value in constants.items()]


def _read(device: Device, name: str, otherwise: Any) -> Any:
    """A property, or something else if the device does not answer."""
    try:
        return device.properties[name]
    except (Error, KeyError):
        return otherwise


def devices(type: str | None = None) -> list[Device]:
    """All devices of the machine, those of the oldest OpenCL version first; or those of one type.

    Args:
        type: gpu, accelerator, cpu or custom
    """
    if type is not None and type.lower() not in _TYPES:
        raise ValueError(f"{type!r} is no type of device; there are: {', '.join(_TYPES)}.")
    found = _binding.devices(Device)
    return found if type is None else [each for each in found if each.type == type.lower()]


def first_device() -> Device:
    """The first of the list: of the oldest OpenCL version, not the fastest. Raises NoDevice if the machine has none."""
    return _some_devices()[0]


def best_device() -> Device:
    """The available device that promises most: graphics processors come first, then accelerators, then processors; then
    decide compute units times clock, then the newest OpenCL version.

    The user of the program can choose by TARVA_DEVICE in the environment: the number of a device in the list, a type,
    or a part of the name, each for the best such device. Raises NoDevice if there is none.
    """
    candidates = [_Candidate(device, index) for index, device in enumerate(_some_devices())]
    has_rights_of_caller = (os.getuid(), os.getgid()) == (os.geteuid(), os.getegid())
    wanted = os.environ.get("TARVA_DEVICE", "") if has_rights_of_caller else ""
    chosen = _chosen(candidates, wanted)
    if not chosen:
        reason = f"TARVA_DEVICE is {wanted}, and no available device is that." if wanted else "No device is available."
        raise NoDevice(f"{reason} There are: {', '.join(map(str, candidates))}.")
    return max(chosen, key=lambda each: each.rank).device


class _Candidate:
    """What is known of a device before it is chosen. What it does not tell counts as little."""

    def __init__(self, device: Device, index: int) -> None:
        self.device = device
        self.index = index
        self.type = device.type
        self.is_available = bool(_read(device, "CL_DEVICE_AVAILABLE", False))
        units = _read(device, "CL_DEVICE_MAX_COMPUTE_UNITS", 1)
        clock = _read(device, "CL_DEVICE_MAX_CLOCK_FREQUENCY", 1)
        self.rank = (-_TYPES.index(self.type), max(units, 1) * max(clock, 1), device.version, -index)

    def __str__(self) -> str:
        reserve = "" if self.is_available else ", not available"
        return f"{self.index} ({self.device.name}, {self.type}, OpenCL {self.device.version}{reserve})"


def _some_devices() -> list[Device]:
    found = devices()
    if not found:
        raise NoDevice(
            "The machine has no OpenCL device. An implementation of OpenCL has to be installed: on Debian and Ubuntu"
            " the package pocl-opencl-icd is one for every processor, and intel-opencl-icd, mesa-opencl-icd,"
            " nvidia-opencl-icd and rocm-opencl-icd are for graphics processors. QV_LOG=1 in the environment has the"
            " reason written why a device is left out."
        )
    return found


def _chosen(candidates: list[_Candidate], wanted: str) -> list[_Candidate]:
    if wanted.isdecimal() and int(wanted) < len(candidates):
        return [candidates[int(wanted)]]
    text = wanted.lower()
    by_type = any(each.type == text for each in candidates)
    return [
        each
        for each in candidates
        if each.is_available and (each.type == text if by_type else text in each.device.name.lower())
    ]
