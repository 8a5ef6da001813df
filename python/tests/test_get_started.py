"""The program of the page Get started prints what stands beside it."""

import pathlib
import runpy

FOLDER = pathlib.Path(__file__).resolve().parents[2] / "examples" / "get_started"


def test_get_started(capsys):
    runpy.run_path(str(FOLDER / "bore.py"))
    assert capsys.readouterr().out == (FOLDER / "bore.out").read_text()
