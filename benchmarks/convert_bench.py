"""Measures `numera-arrow convert` of a large Parquet file beside other programs that copy it.

`./dev bench-convert` runs this script where the peers are installed. All of them read the same file
and write Parquet with the same compression, one process after another, round by round:

- numera: reads, converts to host values and back, compares, writes; also without the comparison;
- pyarrow: reads and writes the same batches, and holds one of them;
- duckdb, polars: their own way from file to file.

The table has the median time of the rounds in seconds, the processor time, and the peak memory in
MiB. The last two columns divide the time by that of pyarrow and of numera on one thread.
"""

import argparse
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

BATCH_ROWS = 65536
DATA = pathlib.Path(__file__).with_name("convert_data.py")


PYARROW = f"""
import sys, pyarrow as pa, pyarrow.parquet as pq
source, target, threads = sys.argv[1:]
pa.set_cpu_count(int(threads))
file = pq.ParquetFile(source, pre_buffer=False, page_checksum_verification=True, buffer_size=1 << 20)
with pq.ParquetWriter(target, file.schema_arrow, compression="zstd", compression_level=1) as writer:
    for batch in file.iter_batches({BATCH_ROWS}, use_threads=threads != "1"):
        writer.write_batch(batch)
"""

DUCKDB = """
import sys, duckdb
source, target, threads = sys.argv[1:]
duckdb.sql(f"SET threads = {threads}")
duckdb.sql(f"COPY (FROM '{source}') TO '{target}' (FORMAT parquet, COMPRESSION zstd)")
"""

POLARS = """
import os, sys
source, target, threads = sys.argv[1:]
os.environ["POLARS_MAX_THREADS"] = threads
import polars
polars.scan_parquet(source).sink_parquet(target, compression="zstd", compression_level=1)
"""


def commands(program, source, target):
    """The name of each way, its threads, and its command."""
    for threads in ("1", "2"):
        numera = [program, "convert", source, "-o", target, "--threads", threads]
        yield "numera", threads, numera
        yield "numera --no-check", threads, [*numera, "--no-check"]
        for name, script in (("pyarrow", PYARROW), ("duckdb", DUCKDB), ("polars", POLARS)):
            yield name, threads, [sys.executable, "-c", script, source, target, threads]


def measure(command):
    """Seconds, seconds of processors, and peak memory in MiB of a process."""
    start = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    seconds = time.monotonic() - start
    if status != 0:
        raise SystemExit(f"convert_bench: this failed: {' '.join(command[:3])}")
    return seconds, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--megabytes", type=int, default=1000, help="size of the file")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--json", type=pathlib.Path, help="also write the figures to this file")
    arguments = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="numera_convert_") as folder:
        source, target = f"{folder}/rows.parquet", f"{folder}/back.parquet"
        # In a process of its own: a process counts the peak of the one that started it as its own.
        subprocess.run([sys.executable, DATA, source, str(arguments.megabytes)], check=True)
        size = os.path.getsize(source)
        print(f"{size / 1e6:,.0f} MB")
        ways = list(commands(str(arguments.program), source, target))
        measured = [[] for _ in ways]
        for _ in range(arguments.rounds):
            for figures, (_, _, command) in zip(measured, ways):
                figures.append(measure(command))
    entries = []
    for (name, threads, _), figures in zip(ways, measured):
        seconds, processors, peak = (statistics.median(values) for values in zip(*figures))
        entries.append({"name": name, "threads": int(threads), "seconds": round(seconds, 3),
                        "processor_seconds": round(processors, 3), "peak_mib": round(peak)})
    base = {entry["name"]: entry["seconds"] for entry in entries if entry["threads"] == 1}
    print(f"{'way':<20}{'threads':>8}{'s':>9}{'cpu s':>9}{'MiB':>7}{'/ pyarrow':>11}{'/ 1 thread':>12}")
    for entry in entries:
        print(f"{entry['name']:<20}{entry['threads']:>8}{entry['seconds']:>9.2f}"
              f"{entry['processor_seconds']:>9.2f}{entry['peak_mib']:>7}"
              f"{entry['seconds'] / base['pyarrow']:>11.2f}"
              f"{entry['seconds'] / base[entry['name']]:>12.2f}")
    if arguments.json:
        arguments.json.write_text(json.dumps({"bytes": size, "ways": entries}, indent=1))


if __name__ == "__main__":
    main()
