# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""What devices, programs, kernels and memory objects tell of themselves."""

from __future__ import annotations

from collections.abc import Iterator, Mapping
from typing import Any

from . import _binding

# These have any number of elements, so a single one is a tuple all the same.
_LISTS = frozenset(
    (
        "KERNEL_NAMES",
        "CL_DEVICE_EXTENSIONS",
        "CL_DEVICE_BUILT_IN_KERNELS",
        "CL_KERNEL_ATTRIBUTES",
    )
)


class Properties(Mapping[str, Any]):
    """A mapping from names to values: int, bool, str, bytes, a tuple of these, or a mapping again.

    A value is read from the device when it is asked for. Names below another one may be given by a path, and those
    below OPENCL by themselves: properties["OPENCL"]["CL_DEVICE_NAME"], properties["OPENCL/CL_DEVICE_NAME"] and
    properties["CL_DEVICE_NAME"] are the same. Sizes are in bytes, clocks in MHz, and groups in work-items, as in
    OpenCL.
    """

    __slots__ = ("_root",)

    def __init__(self, root: _binding.Property) -> None:
        self._root = root

    def __getitem__(self, name: str) -> Any:
        return _value(self._find(name))

    def __iter__(self) -> Iterator[str]:
        return iter([child.texts()[0] for child in self._root.children()])

    def __len__(self) -> int:
        return len(self._root.children())

    def node(self, name: str) -> Properties:
        """What is below a property that has a value, too, such as CL_DEVICE_IMAGE_SUPPORT."""
        return Properties(self._find(name))

    def describe(self, name: str) -> str:
        """What a property means, for people."""
        return self._find(name).texts()[2]

    def as_dict(self) -> dict[str, Any]:
        """All of it, read now."""
        return {
            name: value.as_dict() if isinstance(value, Properties) else value
            for name, value in ((child.texts()[0], _value(child)) for child in self._root.children())
        }

    def __str__(self) -> str:
        """All of it as lines for people."""
        return self._root.text()

    def __repr__(self) -> str:
        return f"<tarva.Properties {self._root.texts()[0]}>"

    def _find(self, path: str) -> _binding.Property:
        found = _walk(self._root, path) or _walk(self._root, f"OPENCL/{path}")
        if found is None:
            raise KeyError(path)
        return found


def _walk(start: _binding.Property, path: str) -> _binding.Property | None:
    place: _binding.Property | None = start
    for name in path.split("/"):
        if place is None:
            return None
        place = place.child(name)
    return place


def _value(of: _binding.Property) -> Any:
    value = of.value()
    if value is None:
        return Properties(of)
    if isinstance(value, bytes):
        return value
    return value[0] if len(value) == 1 and of.texts()[0] not in _LISTS else tuple(value)
