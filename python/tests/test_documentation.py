"""What docs/python.md shows happens."""

import doctest

from conftest import ROOT, synth


def test_tutorial(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    synth("demo.gzd", "--duration 20 --trials 5 --gap 20")
    result = doctest.testfile(str(ROOT / "docs/python.md"), module_relative=False,
                              optionflags=doctest.NORMALIZE_WHITESPACE)
    assert result.attempted > 10 and not result.failed
