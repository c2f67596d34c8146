"""Progress bars of long work."""

import io
import sys

import numera
import pyarrow as pa
from table_files import ROWS, file_of


class Terminal(io.StringIO):
    def isatty(self):
        return True


def test_long_work_shows_a_bar_on_a_terminal_alone(tmp_path, monkeypatch):
    monkeypatch.setattr(numera.io, "_SECONDS_BEFORE_BAR", 0)
    path = tmp_path / "rows.parquet"

    def everything():
        numera.write(numera.to_host(pa.table(ROWS)), path)
        numera.read(path)
        list(numera.scan(path))

    monkeypatch.setattr(sys, "stderr", Terminal())
    everything()
    for doing in ("writing", "reading", "scanning"):
        assert doing in sys.stderr.getvalue()
    monkeypatch.setattr(sys, "stderr", io.StringIO())
    everything()
    assert sys.stderr.getvalue() == ""


def test_short_work_shows_no_bar(tmp_path, monkeypatch):
    monkeypatch.setattr(sys, "stderr", Terminal())
    numera.read(file_of(tmp_path, pa.table(ROWS), ".parquet"))
    assert sys.stderr.getvalue() == ""
