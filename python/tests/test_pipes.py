"""Named pipes and standard input."""

import os
import subprocess
import sys
import threading

import numera
import pyarrow as pa
import pytest
from table_files import ROWS, columns, file_of


@pytest.fixture
def pipe(tmp_path):
    path = tmp_path / "pipe"
    os.mkfifo(path)
    return path


def through(pipe, content, call):
    """What the call returns while another thread writes into the pipe."""
    writer = threading.Thread(target=lambda: pipe.write_bytes(content))
    writer.start()
    try:
        return call()
    finally:
        writer.join()


def scanned(path):
    [table] = numera.scan(path)
    return table


CALLS = pytest.mark.parametrize("call", [numera.read, scanned])


@CALLS
@pytest.mark.parametrize("suffix", [".csv", ".jsonl", ".parquet", ".arrow", ".arrows"])
def test_a_named_pipe_is_read(tmp_path, pipe, call, suffix):
    content = file_of(tmp_path, pa.table(ROWS), suffix).read_bytes()
    assert columns(through(pipe, content, lambda: call(pipe))) == ROWS


def test_a_scan_gives_the_first_rows_of_a_pipe_before_it_ends(pipe):
    more = threading.Event()

    def write():
        with open(pipe, "wb", buffering=0) as file:
            file.write(b"n\n" + b"1\n" * 1_000_000)
            more.wait()
            file.write(b"2\n")

    writer = threading.Thread(target=write, daemon=True)
    writer.start()
    tables = numera.scan(pipe, 10)
    try:
        first = columns(next(tables))
    finally:
        more.set()
    rest = [columns(table)["n"] for table in tables]
    writer.join()
    assert first == {"n": [1] * 10} and rest[-1] == [2]


def test_all_rows_of_a_pipe_decide_the_types_for_read(pipe):
    content = b"n\n" + b"1\n" * 1_000_000 + b"0.5\n"
    table = through(pipe, content, lambda: numera.read(pipe))
    assert numera.to_arrow(table)["n"][-1].as_py() == 0.5


def test_columns_that_a_pipe_does_not_have_are_refused_without_another_look(pipe):
    def call():
        with pytest.raises(pa.ArrowInvalid) as caught:
            numera.read(pipe, ["m"])
        return str(caught.value)

    assert through(pipe, b"n\n1\n", call) == f"{str(pipe)!r}: there is no column 'm'"


def run(code, content):
    command = [sys.executable, "-c", f"import numera; {code}"]
    return subprocess.run(command, input=content, capture_output=True)


PRINT = "print(numera.to_arrow(numera.make_readable({})).to_pydict())"


@pytest.mark.parametrize("call", ["numera.read('-')", "next(numera.scan('-'))"])
@pytest.mark.parametrize("suffix", [".csv", ".parquet"])
def test_standard_input_is_read(tmp_path, call, suffix):
    content = file_of(tmp_path, pa.table(ROWS), suffix).read_bytes()
    result = run(PRINT.format(call), content)
    assert (result.stdout.decode(), result.stderr) == (f"{ROWS}\n", b"")


def test_standard_input_may_be_one_of_several(tmp_path):
    (tmp_path / "rows.csv").write_text("n\n1\n")
    call = f"numera.read([{str(tmp_path / 'rows.csv')!r}, '-'])"
    assert run(PRINT.format(call), b"n\n2\n").stdout == b"{'n': [1, 2]}\n"


def test_standard_input_that_is_no_table_is_refused():
    result = run("numera.read('-')", b"\0\1\2\3")
    assert result.stderr.decode().splitlines()[-1] == (
        "pyarrow.lib.ArrowInvalid: '-': it is no table in a known format (Parquet, "
        "Arrow IPC, ORC, CSV, JSON lines)")


def interrupted(call):
    """What a process prints whose call is interrupted. Nothing comes from its standard input."""
    code = ("import numera, os, signal, threading\n"
            "try:\n"
            "    threading.Timer(0.5, os.kill, [os.getpid(), signal.SIGINT]).start()\n"
            f"    {call}\n"
            "except KeyboardInterrupt:\n"
            "    print('interrupted')\n")
    nothing, writer = os.pipe()
    try:
        result = subprocess.run([sys.executable, "-c", code], stdin=nothing, capture_output=True,
                                timeout=60)
    finally:
        os.close(nothing)
        os.close(writer)
    return result.stdout


def test_ctrl_c_ends_the_wait_for_the_writer_of_a_pipe(pipe):
    assert interrupted(f"numera.read({str(pipe)!r}, ['n'])") == b"interrupted\n"


def test_ctrl_c_ends_the_wait_for_a_pipe_that_gives_nothing():
    assert interrupted("numera.read('-')") == b"interrupted\n"


@pytest.mark.parametrize(("row", "refused"), [(b'{"n":1}\n', b"x\n"), (b"1\n", b'"x\n')])
def test_ctrl_c_ends_the_reading_of_a_text_for_its_types(tmp_path, row, refused):
    """It takes seconds to come to the end of the text, where it is refused."""
    piece = pa.compress(row * (2 ** 24 // len(row)), "gzip", asbytes=True)
    path = tmp_path / "rows.gz"
    path.write_bytes(piece * 16 + pa.compress(refused, "gzip", asbytes=True))
    call = f"numera.read({str(path)!r}, csv_types_of_all_rows=True)"
    assert interrupted(call) == b"interrupted\n"
