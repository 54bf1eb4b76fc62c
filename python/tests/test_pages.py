# SPDX-FileCopyrightText: 2026 TARVA developers
# SPDX-License-Identifier: MIT

"""The code of the pages runs, prints what they say, and the examples make their pictures."""

import contextlib
import io
import os
import re
import runpy
import subprocess
import sys
from pathlib import Path

import pytest

SOURCE = Path(__file__).resolve().parents[2]
BLOCK = re.compile(r"^```python\n(.*?)^```$(?:\n\n```text\n(.*?)^```$)?", re.M | re.S)
pytestmark = pytest.mark.usefixtures("device")


PAGES = [page for page in [*SOURCE.glob("*.md"), *SOURCE.glob("docs/*.md")] if BLOCK.search(page.read_text())]


@pytest.mark.parametrize("page", PAGES, ids=str)
def test_page(page: Path, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    """All blocks of a page are one program. What a block prints is the text below it, where ... stands for anything."""
    monkeypatch.chdir(tmp_path)
    text = page.read_text()
    names: dict[str, object] = {"__name__": "page"}
    for block in BLOCK.finditer(text):
        printed = io.StringIO()
        line = text.count("\n", 0, block.start(1))
        with contextlib.redirect_stdout(printed):
            exec(compile("\n" * line + block[1], str(page), "exec"), names)
        wanted = ".*".join(re.escape(part) for part in (block[2] or "").split("..."))
        assert re.fullmatch(wanted, printed.getvalue(), re.S), f"{page}:{line} printed:\n{printed.getvalue()}"


@pytest.mark.parametrize("example", ["mandelbrot", "heat", "nbody"])
def test_example(example: str, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.setattr(sys, "argv", [example, str(tmp_path / "picture.png"), "--quick"])
    monkeypatch.syspath_prepend(SOURCE / "python" / "examples")
    runpy.run_path(str(SOURCE / "python" / "examples" / f"{example}.py"), run_name="__main__")
    assert (tmp_path / "picture.png").read_bytes().startswith(b"\x89PNG")


@pytest.mark.parametrize("port", sorted(SOURCE.glob("examples/ports/*.py")), ids=str)
def test_port(port: Path, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> None:
    """The same program in C++ and in Python has the same result, to the byte."""
    cpp = Path(os.environ.get("TARVA_EXAMPLES", "")) / port.stem
    if not cpp.is_file():
        pytest.skip(f"there is no {cpp}")
    monkeypatch.setattr(sys, "argv", [str(port), str(tmp_path / "python")])
    runpy.run_path(str(port), run_name="__main__")
    subprocess.run([cpp, tmp_path / "cpp"], check=True)
    assert (tmp_path / "python").read_bytes() == (tmp_path / "cpp").read_bytes()
