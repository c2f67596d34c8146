"""Prints the cost of a host function on a local cluster: rows per second, memory per worker."""

import os
import pathlib
import resource
import tempfile
import time

import cluster
import flights
import host_batches

COPIES = 2
BATCHES = [1_000, 10_000, 50_000]


class Sized:
    """The speed of flights. Writes the peak resident memory of its process to a folder."""

    def __init__(self, folder):
        self._folder = pathlib.Path(folder)

    def __call__(self, table):
        result = flights.ground_speed(table)
        peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
        (self._folder / str(os.getpid())).write_text(str(peak // 1024))
        return result


def measured(dataset, batch_rows, workers):
    """The seconds, and the peak memory of the largest worker in MiB."""
    with tempfile.TemporaryDirectory() as notes:
        start = time.perf_counter()
        host_batches.map_actors(dataset, lambda: Sized(notes), batch_rows, workers).materialize()
        seconds = time.perf_counter() - start
        return seconds, max(int(note.read_text()) for note in pathlib.Path(notes).iterdir())


def main():
    with tempfile.TemporaryDirectory() as folder:
        rows = flights.write_partitions(pathlib.Path(folder), COPIES)
        print(f"{rows} rows, {os.cpu_count()} cores, load {os.getloadavg()[0]:.1f}\n")
        print("| Workers | Rows a batch | Seconds | Rows a second | Peak MiB of a worker |")
        print("|--------:|-------------:|--------:|--------------:|---------------------:|")
        for workers in (1, 2):
            with cluster.local_cluster(workers):
                dataset = host_batches.read(folder, flights.COLUMNS)
                measured(dataset, BATCHES[-1], workers)  # the first run also starts processes
                for batch_rows in BATCHES:
                    seconds, peak = measured(dataset, batch_rows, workers)
                    print(f"| {workers} | {batch_rows} | {seconds:.1f} |"
                          f" {rows / seconds:.0f} | {peak} |", flush=True)


if __name__ == "__main__":
    main()
