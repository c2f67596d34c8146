"""Threads, Ctrl-C, the shutdown of the interpreter, and the memory of many conversions."""

import concurrent.futures
import gc
import signal
import subprocess
import sys
import textwrap
import threading

import numera
import pyarrow as pa
import pytest
from numera import host

WIDE = pa.table({f"c{i}": pa.array([f"text {i} {j}" for j in range(100)]) for i in range(200)})


def there_and_back(table):
    return numera.to_arrow(numera.make_readable(numera.to_host(table)))


def test_several_threads_convert_at_once():
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        results = list(pool.map(there_and_back, [WIDE] * 16))
    assert all(result.to_pydict() == WIDE.to_pydict() for result in results)


def test_one_value_is_read_by_several_threads():
    value = numera.to_host(WIDE)
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        results = list(pool.map(lambda _: numera.to_arrow(numera.make_readable(value)), range(16)))
    assert all(result.to_pydict() == WIDE.to_pydict() for result in results)


def test_values_are_freed_on_another_thread():
    before = host.live_arrays()
    values = [numera.to_host(WIDE) for _ in range(4)]
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        list(pool.map(lambda _: values.pop(), range(4)))
    assert host.live_arrays() == before


class Stream:
    """A stream that waits for another Python thread before it gives its second batch."""

    def __init__(self, other_ran):
        self.other_ran = other_ran

    def batches(self):
        yield pa.record_batch({"a": [1]})
        assert self.other_ran.wait(60)
        yield pa.record_batch({"a": [2]})

    def __arrow_c_stream__(self, requested_schema=None):
        schema = pa.schema({"a": pa.int64()})
        reader = pa.RecordBatchReader.from_batches(schema, self.batches())
        return reader.__arrow_c_stream__(requested_schema)


def test_other_threads_run_while_a_stream_is_read():
    other_ran = threading.Event()
    other = threading.Timer(0.05, other_ran.set)
    other.start()
    value = numera.to_host(Stream(other_ran))
    assert value["Columns"][0]["Data"].to_python() == [1, 2]


class Converting:
    """A stream that runs a conversion while it is being converted."""

    def __arrow_c_stream__(self, requested_schema=None):
        def batches():
            yield numera.to_arrow(there_and_back_value()).to_batches()[0]

        reader = pa.RecordBatchReader.from_batches(pa.schema({"a": pa.int64()}), batches())
        return reader.__arrow_c_stream__(requested_schema)


def there_and_back_value():
    return numera.make_readable(numera.to_host(pa.table({"a": [1, 2]})))


def test_a_conversion_may_convert():
    assert numera.to_host(Converting())["Columns"][0]["Data"].to_python() == [1, 2]


@pytest.mark.parametrize("convert", ["to_host", "make_readable", "to_arrow"])
def test_ctrl_c_ends_a_conversion_between_two_columns(convert):
    column = pa.array(["text of some length"] * 20_000)
    table = pa.table({f"c{i}": column for i in range(3_000)})
    value = numera.to_host(table.slice(0, 1)) if convert == "to_host" else None
    started = table if convert == "to_host" else numera.to_host(table.select(range(1_000)))
    del value
    before = host.live_arrays()
    # The signal arrives while the conversion runs, which takes much longer.
    signal.setitimer(signal.ITIMER_REAL, 0.1)
    previous = signal.signal(signal.SIGALRM, signal.default_int_handler)
    try:
        with pytest.raises(KeyboardInterrupt):
            getattr(numera, convert)(started)
    finally:
        signal.setitimer(signal.ITIMER_REAL, 0)
        signal.signal(signal.SIGALRM, previous)
    assert host.live_arrays() == before


def run(code):
    return subprocess.run(
        [sys.executable, "-c", textwrap.dedent(code)], capture_output=True, text=True, timeout=120
    )


PROLOGUE = """
import numera, pyarrow as pa, sys, threading
table = pa.table({"t": ["a", None] * 1000, "n": [1, None] * 1000, "l": [[1], None] * 1000})
host = numera.to_host(table)
back = numera.to_arrow(numera.make_readable(host))
view = host["Columns"][1]["Data"].numpy()
"""


@pytest.mark.parametrize(
    "end",
    [
        "",
        "del host, table",
        "del back; sys.modules.clear()",
        "import builtins; builtins.kept = [view, back, host]",
        "class Cycle: pass\nc = Cycle(); c.self, c.host, c.back, c.view = c, host, back, view",
        "import atexit; atexit.register(lambda host=host: numera.to_arrow(numera.make_readable(host)))",
        "del sys.modules['pyarrow'], sys.modules['numera']",
        "class Late:\n  def __del__(self): self.host['ArrowType'].text\nlate = Late(); late.host = host",
        "threading.Thread(target=lambda: [numera.to_host(table) for _ in iter(int, 1)], daemon=True).start()",
        "sys.exit(0)",
        "threading.Thread(target=lambda host=host: numera.make_readable(host)).start()",
    ],
)
def test_values_live_to_the_end_of_the_interpreter_and_go_without_a_crash(end):
    result = run(PROLOGUE + end)
    assert (result.returncode, result.stdout, result.stderr) == (0, "", "")


def convert_everything():
    value = numera.to_host(SMALL)
    numera.to_arrow(numera.make_readable(value))
    value["Data"].to_python()
    value["Data"].numpy()
    value == value
    repr(value["Type"])


SMALL = pa.array([1.5, None, 2.5])


def test_a_hundred_thousand_conversions_leave_nothing():
    convert_everything()
    gc.collect()
    arrays, bytes_, arrow = host.live_arrays(), host.live_bytes(), pa.total_allocated_bytes()
    with open("/proc/self/statm") as file:
        before = int(file.read().split()[1])
    for _ in range(100_000):
        convert_everything()
    with open("/proc/self/statm") as file:
        after = int(file.read().split()[1])
    assert (host.live_arrays(), host.live_bytes()) == (arrays, bytes_)
    assert pa.total_allocated_bytes() == arrow
    assert (after - before) * 4096 < 16 * 2**20  # one byte lost per call is 100 kB, one value 50 MB
