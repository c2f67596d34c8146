"""Measures the peers of the benchmarks, interleaved with the C++ program.

Each row is measured in several rounds, 7 by default. A round measures our own conversion and its
limit, then each peer. The C++ program, started for this row alone, measures the conversion and the
limit. All times are processor times of the process in milliseconds. They include system calls and
all threads.
"""

import argparse
import gc
import json
import pathlib
import re
import subprocess
import sys
import tempfile
import time

import peer_work
import python_rows
from summary import median

TIMES = ("ours", "limit", "warm_copy", "freeing")
SHORTEST = 0.02  # minimum seconds for all calls of one measurement


def processor_milliseconds(work, calls, value):
    begin = time.process_time_ns()
    if work.fresh is None:
        for _ in range(calls):
            work.run()
    else:
        for _ in range(calls):
            work.run(value)
    return (time.process_time_ns() - begin) / 1e6 / calls


def measure(work, calls):
    value = work.fresh() if work.fresh else None
    gc.collect()
    gc.disable()
    try:
        return processor_milliseconds(work, calls, value)
    finally:
        gc.enable()


class Measured:
    """Measures one peer for one row."""

    def __init__(self, work):
        self.work = work
        self.times = []
        self.failure = None
        self.calls = 1
        try:
            first = measure(work, 1)  # loads what the peer loads on first use
            if work.fresh is None and first < SHORTEST * 1e3:
                self.calls = max(1, round(SHORTEST * 1e3 / max(measure(work, 1), 1e-3)))
        except Exception as error:  # a failing peer does not stop the others
            self.failure = f"{type(error).__name__}: {error}"

    def run(self):
        if self.failure is None:
            self.times.append(measure(self.work, self.calls))

    def result(self):
        return {"peer": self.work.peer, "call": self.work.call, "note": self.work.note,
                "times": self.times, "failure": self.failure}


def run_ours(program, name, quick):
    """The row's JSON entry from the C++ program, with a single time for each measurement."""
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder) / "row.json"
        command = [program, f"--rows={re.escape(name)}", f"--json={file}",
                   "--benchmark_repetitions=1"]
        command += ["--quick"] if quick else ["--benchmark_min_time=0.05"]
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
        rows = json.loads(file.read_text())
    if not rows:
        raise SystemExit(f"peers: the program has no row {name}")
    for key in TIMES:
        rows[0][key] = [median(rows[0][key])] if rows[0][key] else []
    return rows[0]


def own_rounds(row, program, quick):
    """The entry of a row, and a function that measures one round and returns its times."""
    if row.own is None:
        entry = run_ours(program, row.name, quick)
        return entry, lambda: run_ours(program, row.name, quick)
    elements, size, work = row.own(quick)
    measured = Measured(work)

    def run():
        measured.times.clear()
        measured.run()
        return {"ours": measured.times[:]}

    return {"name": row.name, "elements": elements, "bytes": size}, run


def measure_row(row, program, rounds, quick):
    peers = [Measured(work) for work in row.make(quick)]
    entry, run = own_rounds(row, program, quick)
    entry |= {key: [] for key in TIMES}
    for _ in range(rounds):
        for key, times in run().items():
            if key in TIMES:
                entry[key] += times
        for peer in peers:
            peer.run()
    entry["named_peer"] = row.peer
    entry["peers"] = [peer.result() for peer in peers]
    return entry


def show(entry):
    own = median(entry["ours"])
    print(f"{entry['name']}: ours {own:.4f} ms, minimum {min(entry['ours']):.4f}")
    for peer in entry["peers"]:
        if peer["times"]:
            time_ = median(peer["times"])
            print(f"  {peer['peer']:24} {time_:12.4f} ms, minimum {min(peer['times']):12.4f}, "
                  f"{time_ / own:8.2f} x ours; {peer['call']}; {peer['note']}")
        else:
            print(f"  {peer['peer']:24} failed: {peer['failure']}", file=sys.stderr)
    sys.stdout.flush()


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--json", type=pathlib.Path, required=True)
    parser.add_argument("--rows", default=".*",
                        help="regular expression; measure the rows whose whole name matches it")
    parser.add_argument("--rounds", type=int, default=7)
    parser.add_argument("--quick", action="store_true")
    arguments = parser.parse_args()
    rounds = 1 if arguments.quick else arguments.rounds
    entries = []
    for row in peer_work.ROWS + python_rows.ROWS:
        if re.fullmatch(arguments.rows, row.name):
            entries.append(measure_row(row, arguments.program, rounds, arguments.quick))
            show(entries[-1])
    arguments.json.write_text(json.dumps(entries, indent=1))


if __name__ == "__main__":
    main()
