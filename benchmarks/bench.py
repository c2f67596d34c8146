"""Runs all benchmarks and writes summary.json. Without --quick, also writes docs/performance.md.

`./dev bench` runs this script in the environment where the peers are installed. With --quick, every
benchmark runs once on little data, and only the form of the summary is checked.
"""

import argparse
import importlib.metadata
import json
import pathlib
import re
import subprocess
import sys

import peer_work
import peers
import python_rows
import summary

ROOT = pathlib.Path(__file__).resolve().parent.parent
PEERS = ("pyarrow", "pandas", "polars", "duckdb", "nanoarrow", "numpy")


def run_alone(program, names, folder, quick):
    """The rows without peers, all measured in one process. Leaves out the rows in `names`."""
    file = folder / "ours.json"
    pattern = "(?!(?:" + "|".join(map(re.escape, names)) + ")$).*"
    command = [program, f"--rows={pattern}", f"--json={file}", *(["--quick"] if quick else [])]
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL if quick else None)
    return json.loads(file.read_text())


def peak_over_result(program, entries):
    """The peak of host memory during a conversion, divided by the memory of its result.

    Small results are left out, because their ratio only shows how allocations are rounded up.
    """
    peaks = {}
    for entry in entries:
        name = entry["name"]
        run = subprocess.run([program, name], check=True, capture_output=True, text=True)
        use = json.loads(run.stdout)
        if entry["bytes"] >= 1_000_000 and use["result_bytes"] >= 1_000_000:
            peaks[name] = summary.rounded(use["peak_bytes"] / use["result_bytes"])
    return peaks


def is_base(name):
    return "=" not in name and not name.endswith("/sliced") and not name.startswith(("parallel/", "python/"))


def in_order(entries, program):
    """The entries in the order in which the program lists its rows; other entries come last."""
    listed = subprocess.run([program, "--list"], check=True, capture_output=True, text=True)
    places = {name: place for place, name in enumerate(listed.stdout.split())}
    return sorted(entries, key=lambda entry: places.get(entry["name"], len(places)))


def packages():
    versions = {}
    for name in PEERS:
        try:
            versions[name] = importlib.metadata.version(name)
        except importlib.metadata.PackageNotFoundError:
            versions[name] = None
    return versions


def measure(arguments, folder):
    program = arguments.programs / "numera_benchmarks"
    with_peers = [row.name for row in peer_work.ROWS]
    entries = run_alone(program, with_peers, folder, arguments.quick)
    for row in peer_work.ROWS + python_rows.ROWS:
        entries.append(
            peers.measure_row(row, program, 1 if arguments.quick else 7, arguments.quick))
        if not arguments.quick:
            peers.show(entries[-1])
    entries = in_order(entries, program)
    bases = [entry for entry in entries if is_base(entry["name"])]
    peaks = peak_over_result(arguments.programs / "numera_peak_memory",
                             bases[:2] if arguments.quick else bases)
    return entries, peaks


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--programs", type=pathlib.Path, required=True,
                        help="folder of the built benchmark programs")
    parser.add_argument("--folder", type=pathlib.Path, default=ROOT / "build" / "bench")
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--no-document", action="store_true",
                        help="do not write docs/performance.md")
    arguments = parser.parse_args()
    folder = arguments.folder / "quick" if arguments.quick else arguments.folder
    folder.mkdir(parents=True, exist_ok=True)

    entries, peaks = measure(arguments, folder)
    whole = summary.summarize(entries, peaks, packages())
    summary.write(folder / "details.json", entries)
    summary.write(folder / "summary.json", whole)
    if not arguments.quick:
        for line in summary.wrong_limits(whole):
            print(f"bench: a conversion is faster than its limit, so the limit is wrong: {line}")
        if not arguments.no_document:
            import report  # the only part that needs matplotlib
            report.write(ROOT / "docs", whole, entries)
    found = summary.faults(whole)
    for fault in found:
        print(f"bench: {fault}", file=sys.stderr)
    print(f"bench: {len(whole['rows'])} rows in {folder / 'summary.json'}")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
