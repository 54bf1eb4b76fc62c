# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Programs, which are built for one device."""

from __future__ import annotations

from collections.abc import Iterable, Sequence

from . import _binding
from ._errors import Error, KernelNotFound
from ._handle import Handle
from ._kernel import Kernel


class Program(_binding.Program, Handle):
    """A program of one device. Its kernels are its attributes: program.saxpy, or program["saxpy"].

    The same kernel comes each time, so that what it takes has to be said only once. A kernel of the name of something
    that is described here, such as close, is program["close"].
    """

    __slots__ = ("label", "log", "_source", "_kernels", "__weakref__")

    label: str
    #: what the compiler said, though it did build the program
    log: str
    _source: str | None
    _kernels: dict[str, Kernel]

    @property
    def kernels(self) -> tuple[str, ...]:
        """The names of its kernels."""
        try:
            names: tuple[str, ...] = self.properties["KERNEL_NAMES"]
        except Error:  # a device without built-in kernels has no such program, and says so
            return ()
        return names

    @property
    def binary(self) -> bytes:
        """The program as a binary of its device, to be given to Device.load of such a device."""
        binary: bytes = self.properties["CL_PROGRAM_BINARY"]
        return binary

    def __getitem__(self, name: str) -> Kernel:
        kernel = self._kernels.get(name)
        if kernel is None:
            kernel = self._make_kernel(name)
            self._kernels[name] = kernel
        return kernel

    def __getattr__(self, name: str) -> Kernel:
        if name.startswith("__") or name in self.__slots__:
            raise AttributeError(name)
        return self[name]

    def __dir__(self) -> Iterable[str]:
        return [*super().__dir__(), *self.kernels]

    def __repr__(self) -> str:
        return f"<tarva.Program {self.label!r}>" if self.label else "<tarva.Program>"

    def _make_kernel(self, name: str) -> Kernel:
        if name not in self.kernels:
            raise KernelNotFound(f"{self!r} has no kernel {name}; {_offer(self.kernels)}")
        made = self._kernel(Kernel, name)
        made.name, made._source, made._parameters = name, self._source, None
        return made

    def _set(self, label: str, log: str, source: str | None) -> Program:
        self.label, self.log, self._source, self._kernels = label, log, source, {}
        return self


def _offer(names: Sequence[str]) -> str:
    return f"it has: {', '.join(names)}." if names else "it has none at all."
