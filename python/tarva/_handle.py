# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""What devices, programs, kernels and arrays have in common."""

from __future__ import annotations

from typing import TYPE_CHECKING, Self

from . import _binding
from ._properties import Properties


class Handle:
    """Something of the library that is given up by close(), at the end of a `with` block, or when nothing refers to it
    any more."""

    __slots__ = ()

    if TYPE_CHECKING:  # these come from the binding

        def close(self) -> None:
            ...

        def _is_closed(self) -> bool:
            ...

        def _root(self) -> _binding.Property:
            ...

    @property
    def closed(self) -> bool:
        """Whether it has been given up."""
        return self._is_closed()

    @property
    def properties(self) -> Properties:
        """What the library and the device tell of it."""
        return Properties(self._root())

    def __enter__(self) -> Self:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()
