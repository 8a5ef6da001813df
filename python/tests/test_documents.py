"""The examples of docstrings, of the handbook page and of the notebooks."""

import doctest
import importlib
import inspect
import pathlib
import pkgutil
import re

import nbformat
import nu.dask
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


def test_readme(capsys):
    readme = (ROOT / "README.md").read_text(encoding="utf-8")
    program, printed = (re.search(rf"```{kind}\n(.*?)```", readme, re.DOTALL)[1] for kind in ("python", "text"))
    exec(compile(program, "README.md", "exec"), {})
    assert capsys.readouterr().out == printed


@pytest.mark.parametrize("notebook", sorted((ROOT / "python" / "notebooks").glob("*.ipynb")), ids=lambda p: p.stem)
def test_notebook(notebook):
    NotebookClient(nbformat.read(notebook, 4), timeout=120, kernel_name="python3").execute()


def has_text(thing, name):
    """Whether there is more than the signatures that the extension writes."""
    lines = (line.strip() for line in (inspect.getdoc(thing) or "").splitlines())
    return any(line and not re.match(rf"(\d+\. )?`*{name}\(|Overloaded", line) for line in lines)


def test_everything_public_has_text():
    modules = ((nu, nu.__all__), (nu.dask, nu.dask.__all__))
    things = {f"{module.__name__}.{name}": getattr(module, name) for module, names in modules for name in names}
    for name, thing in list(things.items()):
        if inspect.isclass(thing):
            public = {f"{name}.{member}": getattr(thing, member) for member in vars(thing) if member[0] != "_"}
            things.update(
                {path: member for path, member in public.items() if callable(member) or isinstance(member, property)}
            )
    assert len(things) > 200
    assert [path for path, thing in things.items() if not has_text(thing, path.split(".")[-1])] == []
