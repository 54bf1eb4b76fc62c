# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""Pictures in PNG format, and the arguments that the examples share."""

import argparse
import struct
import zlib
from typing import Any

import numpy as np


def arguments(description: str) -> argparse.Namespace:
    """The picture to write, and whether to be quick about it."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("picture", nargs="?", default="picture.png", help="the file to write")
    parser.add_argument("--quick", action="store_true", help="a small picture, for a test")
    return parser.parse_args()


def write_png(path: str, pixels: Any) -> None:
    """Writes bytes of the shape (height, width, 3) as a picture in colours."""
    height, width, _ = pixels.shape
    rows = np.zeros((height, 1 + 3 * width), np.uint8)  # each row begins with the number of its filter, which is none
    rows[:, 1:] = pixels.reshape(height, -1)
    with open(path, "wb") as file:
        file.write(b"\x89PNG\r\n\x1a\n")
        for name, data in (
            (b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)),
            (b"IDAT", zlib.compress(rows.tobytes(), 9)),
            (b"IEND", b""),
        ):
            file.write(struct.pack(">I", len(data)) + name + data + struct.pack(">I", zlib.crc32(name + data)))


def coloured(values: Any, *colours: tuple[int, int, int]) -> Any:
    """Numbers from 0 to 1 as mixtures of colours in a row."""
    places = np.linspace(0, 1, len(colours))
    parts = [np.interp(values, places, [colour[part] for colour in colours]) for part in range(3)]
    return np.stack(parts, axis=-1).astype(np.uint8)
