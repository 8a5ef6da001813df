"""The examples of docstrings, of the handbook page and of the notebooks."""

import doctest
import importlib
import pathlib
import pkgutil

import nbformat
import pytest
from nbclient import NotebookClient

import nu

ROOT = pathlib.Path(__file__).resolve().parents[2]
MODULES = ["nu", *sorted(f"nu.{m.name}" for m in pkgutil.iter_modules(nu.__path__) if m.name != "_core")]


@pytest.mark.parametrize("module", MODULES)
def test_docstrings(module):
    assert doctest.testmod(importlib.import_module(module)).failed == 0


def test_handbook_page(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    found = doctest.testfile(str(ROOT / "docs" / "python.md"), module_relative=False)
    assert found.failed == 0 and found.attempted > 20


@pytest.mark.parametrize("notebook", sorted((ROOT / "python" / "notebooks").glob("*.ipynb")), ids=lambda p: p.stem)
def test_notebook(notebook):
    NotebookClient(nbformat.read(notebook, 4), timeout=120, kernel_name="python3").execute()
