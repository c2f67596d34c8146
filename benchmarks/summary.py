"""Combines the measurements: summary.json for comparisons, details.json with all times."""

import json
import math
import os
import pathlib
import platform
import re
import subprocess

ROW_KEYS = ("name", "elements", "bytes", "ours_ms", "limit_ms", "ratio_to_limit", "peer", "peer_ms",
            "ratio_to_peer", "peak_over_result")

# The rows that the performance targets name.
TARGET_ROWS = (
    "to_host/float64", "to_host/float64_nulls", "to_host/float64_1000_chunks",
    "to_host/bool_aligned", "to_host/bool_unaligned", "to_host/text_ascii", "to_host/text_mixed",
    "to_host/dictionary", "to_host/dictionary_20_chunks", "to_host/list", "to_host/struct",
    "to_host/binary", "to_host/table_1000_columns", "to_host/one_call", "to_arrow/one_call",
    "to_arrow/one_call_1e7", "to_arrow/table_1000_columns", "gateway/text_ascii",
    "gateway/text_mixed")

# A limit is the least work. If the library beats it by more than the noise, the limit is wrong.
WRONG_LIMIT_BELOW = 0.95

SMALLEST_AND_LARGEST = (100_000, 10_000_000)
FEWEST_AND_MOST_COLUMNS = (100, 10_000)


def median(times):
    return sorted(times)[(len(times) - 1) // 2] if times else None


def rounded(number):
    return None if number is None else float(f"{number:.4g}")


def ratio(number, over):
    return None if number is None or not over else rounded(number / over)


def named_peer(entry):
    for peer in entry.get("peers", ()):
        if peer["peer"] == entry["named_peer"] and peer["times"]:
            return peer
    return None


def summary_row(entry, peaks):
    ours = median(entry["ours"])
    limit = median(entry["limit"])
    peer = named_peer(entry)
    peer_ms = median(peer["times"]) if peer else None
    values = (entry["name"], entry["elements"], entry["bytes"], rounded(ours), rounded(limit),
              ratio(ours, limit), peer["peer"] if peer else None, rounded(peer_ms),
              ratio(peer_ms, ours), peaks.get(entry["name"]))
    return dict(zip(ROW_KEYS, values))


def freeing_row(entry):
    """The cost of freeing a result. Its limit is the cost of making it, without freeing it."""
    freeing = median(entry["freeing"])
    making = median(entry["ours"]) - freeing
    values = (entry["name"] + "/freeing", entry["elements"], entry["bytes"], rounded(freeing),
              rounded(making), ratio(freeing, making), None, None, None, None)
    return dict(zip(ROW_KEYS, values))


def slope(small, large):
    """The slope of log cost over log size, between two pairs of size and cost."""
    return round(math.log(large[1] / small[1]) / math.log(large[0] / small[0]), 3)


def column_counts(times, direction):
    counts = {1000: times.get(f"{direction}/table_1000_columns")}
    for name, time in times.items():
        match = re.fullmatch(rf"{direction}/table/columns=(\d+)", name)
        if match:
            counts[int(match[1])] = time
    return counts


def family_lengths(entries, key="ours"):
    """The cost per length, for every family that was measured at several lengths."""
    base_lengths = {entry["name"]: entry["elements"] for entry in entries}
    lengths = {}
    for entry in entries:
        family, _, variant = entry["name"].partition("/length=")
        if variant:
            lengths.setdefault(family, {})[int(variant)] = median(entry[key])
    for entry in entries:
        if entry["name"] in lengths:
            lengths[entry["name"]][base_lengths[entry["name"]]] = median(entry[key])
    return lengths


def slopes(entries, key="ours"):
    """The slope of every family that was measured; with "limit", the slope of its limit."""
    result = {}
    small, large = SMALLEST_AND_LARGEST
    for family, costs in family_lengths(entries, key).items():
        if costs.get(small) and costs.get(large):
            result[family] = slope((small, costs[small]), (large, costs[large]))
    few, many = FEWEST_AND_MOST_COLUMNS
    times = {entry["name"]: median(entry[key]) for entry in entries}
    for direction in ("to_host", "to_arrow"):
        counts = column_counts(times, direction)
        if counts.get(few) and counts.get(many):
            result[f"{direction}/table/columns"] = slope((few, counts[few]), (many, counts[many]))
    return result


def parallel_row(entry):
    """A row whose limit is the serial call."""
    serial, parallel = median(entry["limit"]), median(entry["ours"])
    return {"name": entry["name"], "elements": entry["elements"], "bytes": entry["bytes"],
            "threads": 2, "serial_ms": rounded(serial), "parallel_ms": rounded(parallel),
            "speedup": ratio(serial, parallel)}


def first_line(path, pattern):
    try:
        match = re.search(pattern, pathlib.Path(path).read_text(), re.MULTILINE)
    except OSError:
        return None
    return match[1].strip() if match else None


def machine(packages):
    memory = first_line("/proc/meminfo", r"^MemTotal:\s*(\d+) kB")
    compiler = subprocess.run(["c++", "--version"], capture_output=True, text=True, check=False)
    return {
        "processor": first_line("/proc/cpuinfo", r"^model name\s*:\s*(.*)$") or platform.machine(),
        "processors": os.cpu_count(),
        "memory_gib": round(int(memory) / 2**20, 1) if memory else None,
        "huge_pages": first_line("/sys/kernel/mm/transparent_hugepage/enabled", r"\[(\w+)\]"),
        "system": f"{platform.system()} {platform.release()}",
        "compiler": compiler.stdout.splitlines()[0] if compiler.stdout else None,
        "python": platform.python_version(),
        "packages": packages,
    }


def summarize(entries, peaks, packages):
    serial = [entry for entry in entries if not entry["name"].startswith("parallel/")]
    rows = []
    for entry in serial:
        rows.append(summary_row(entry, peaks))
        if entry["freeing"]:
            rows.append(freeing_row(entry))
    return {
        "machine": machine(packages),
        "rows": rows,
        "slopes": slopes(serial),
        "slopes_of_limits": slopes(serial, "limit"),
        "parallel": [parallel_row(entry) for entry in entries if entry not in serial],
    }


def wrong_limits(summary):
    return [f"{row['name']}: {row['ratio_to_limit']} x its limit" for row in summary["rows"]
            if row["ratio_to_limit"] is not None and row["ratio_to_limit"] < WRONG_LIMIT_BELOW
            and not row["name"].endswith("/freeing")]


def faults(summary):
    """What is wrong with the form of a summary. The figures themselves are not judged."""
    found = []
    for key in ("machine", "rows", "slopes"):
        if key not in summary:
            return [f"there is no {key!r}"]
    names = [row.get("name") for row in summary["rows"]]
    found += [f"there is no row {name}" for name in TARGET_ROWS if name not in names]
    found += [f"there are two rows {name}" for name in set(names) if names.count(name) > 1]
    for row in summary["rows"]:
        if tuple(row) != ROW_KEYS:
            found.append(f"{row.get('name')}: the keys are {', '.join(row)}")
            continue
        for key in ROW_KEYS[1:4]:
            if not isinstance(row[key], (int, float)) or row[key] < 0:
                found.append(f"{row['name']}: {key} is {row[key]!r}")
        if (row["limit_ms"] is None) != (row["ratio_to_limit"] is None):
            found.append(f"{row['name']}: a limit without its ratio, or a ratio without a limit")
        if (row["peer_ms"] is None) != (row["ratio_to_peer"] is None):
            found.append(f"{row['name']}: a peer without its ratio, or a ratio without a peer")
    return found


def write(path, value):
    path.write_text(json.dumps(value, indent=1) + "\n")
