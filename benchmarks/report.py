"""Writes docs/performance.md and its plots from the measurements."""

import plots
import summary

TEXT = """# Performance

How close every conversion comes to the least work that its data needs, and how it compares with
the libraries that people use today. `./dev bench` measures all of it in one run on one machine and
writes this page. The figures below are of the machine described below. Compare ratios between
machines, not milliseconds.

## How to read it

- **Ours** is the time of the conversion, from the call until its result is destroyed. A loop over
  many columns pays this time.
- **Limit** is the time of the least work that puts the same bytes into memory of the same host: one
  copy, one pass that widens or transcodes, or one copy per column. It reads no more of the data
  than it must, and it makes no value that a user could read. [limits.h](../benchmarks/limits.h)
  lists the limits; none takes more than a few lines. The ratio is ours divided by the limit: 1.00
  is the least. A ratio clearly below 1 means that the limit is wrong; the run names such limits.
- **Warm copy** is the time of `memcpy` for the input's bytes, between two blocks of memory that are
  already in use. It shows how fast the memory is.
- **Peer** is the closest equivalent in another library: from Arrow data to values that a user can
  work on without Arrow, or back. Copies are compared with copies; if a peer does not copy, the
  table says so. The ratio is the peer divided by ours: above 1 we are faster.
- **Peak** is the most host memory that is held during the call, divided by what the result holds.

## How it is measured

The figures are medians of at least 7 repetitions in one run, with the minimums beside them. Times
are processor times of the process, including system calls and all threads, so that other programs
on the machine change them little. Only parallel conversions are measured by the clock. The
repetitions of a row, its limit and the warm copy run in random order. Rows with peers are measured
in rounds. In each round our own program, started for that row alone, runs first, and then each peer
in turn. Every library runs on one thread, on data made by the same rule. Texts have 12 bytes of
ASCII, or 29 bytes of Latin, Chinese and Greek; byte strings have 16 bytes. Each differs from the
one before it. Python texts are made anew for each measurement, because Python keeps the UTF-8 of a
text once it has made it.

The name of a row states the direction, the type, and the one property that differs from the row
without it: `to_host/text_ascii/length=1000`. A row without such a property has no nulls, one chunk
and no offset.
"""


def number(value):
    """Milliseconds or a ratio, with about three digits."""
    if value is None:
        return ""
    if value >= 100:
        return f"{value:,.0f}"
    return f"{value:.1f}" if value >= 10 else f"{value:.2f}" if value >= 1 else f"{value:.3g}"


def milliseconds(value):
    if value is None:
        return ""
    if value >= 0.01:
        return number(value) + " ms"
    return f"{value * 1e3:.2f} µs" if value >= 1e-4 else f"{value * 1e6:.0f} ns"


def ratio(value):
    return "" if value is None else f"{value:.2f}" if value < 100 else f"{value:,.0f}"


def table(head, rows):
    align = ["---"] + ["---:"] * (len(head) - 1)
    lines = ["| " + " | ".join(cells) + " |" for cells in [head, align, *rows]]
    return "\n".join(lines) + "\n"


def names_as_code(cells):
    return [f"`{cells[0]}`", *cells[1:]]


def machine_list(machine):
    versions = ", ".join(f"{name} {version or '(not installed)'}"
                         for name, version in machine["packages"].items())
    facts = [f"{machine['processor']}, {machine['processors']} processors, "
             f"{machine['memory_gib']} GiB of memory, huge pages: {machine['huge_pages']}",
             f"{machine['system']}; {machine['compiler']}; Python {machine['python']}", versions]
    return "\n".join(f"- {fact}" for fact in facts) + "\n"


def conversion_table(rows, entries):
    head = ["row", "elements", "ours", "minimum", "limit", "ours / limit", "warm copy", "peer",
            "peer / ours", "peak"]
    by_name = {entry["name"]: entry for entry in entries}
    lines = []
    for row in rows:
        entry = by_name.get(row["name"])
        peer = f"{row['peer']}, {milliseconds(row['peer_ms'])}" if row["peer"] else ""
        lines.append(names_as_code([
            row["name"], f"{row['elements']:,}", milliseconds(row["ours_ms"]),
            milliseconds(min(entry["ours"])) if entry else "", milliseconds(row["limit_ms"]),
            ratio(row["ratio_to_limit"]),
            milliseconds(summary.median(entry["warm_copy"])) if entry else "", peer,
            ratio(row["ratio_to_peer"]), ratio(row["peak_over_result"])]))
    return table(head, lines)


def peer_table(entries):
    head = ["row", "peer", "what it does", "copies?", "median", "minimum", "median / ours"]
    lines = []
    for entry in entries:
        ours = summary.median(entry["ours"])
        for peer in entry["peers"]:
            cells = [entry["name"], peer["peer"], f"`{peer['call']}`", peer["note"]]
            if peer["times"]:
                median = summary.median(peer["times"])
                cells += [milliseconds(median), milliseconds(min(peer["times"])),
                          ratio(median / ours)]
            else:
                cells += ["fails", "", ""]
            lines.append(names_as_code(cells))
    return table(head, lines)


def variant_table(rows):
    head = ["row", "elements", "ours", "limit", "ours / limit"]
    return table(head, [names_as_code([
        row["name"], f"{row['elements']:,}", milliseconds(row["ours_ms"]),
        milliseconds(row["limit_ms"]), ratio(row["ratio_to_limit"])]) for row in rows])


def parallel_section(rows):
    if not rows:
        return ""
    head = ["row", "elements", "threads", "serial", "parallel", "serial / parallel"]
    lines = [names_as_code([row["name"], f"{row['elements']:,}", str(row["threads"]),
                            milliseconds(row["serial_ms"]), milliseconds(row["parallel_ms"]),
                            ratio(row["speedup"])]) for row in rows]
    return ("## Columns spread over threads\n\n"
            "Measured by the clock. Both ways give the same value.\n\n"
            + table(head, lines) + "\n")


def is_base(row):
    return "=" not in row["name"] and not row["name"].endswith("/sliced")


def document(whole, entries):
    rows = whole["rows"]
    base = [row for row in rows if is_base(row)]
    variants = [row for row in rows if not is_base(row)]
    with_peers = [entry for entry in entries if "peers" in entry]
    of_limits = whole["slopes_of_limits"]
    slopes = table(["family", "slope", "of its limit"], [
        names_as_code([family, f"{slope:.2f}", ratio(of_limits.get(family))])
        for family, slope in whole["slopes"].items()])
    return f"""{TEXT}
## The machine

{machine_list(whole["machine"])}
## Beside the limit

![Time of each conversion over its limit](performance/limits.svg)

![Time of each peer over our own](performance/peers.svg)

In the row `to_host/binary/freeing`, "ours" is the time to destroy the result and "limit" is the
time to make it. The limits of `files/...` are those of their columns.

{conversion_table(base, entries)}
## Beside the peers

{peer_table(with_peers)}
{parallel_section(whole["parallel"])}## Cost against size

![Cost against the number of elements and of columns](performance/sizes.svg)

The slope of log cost over log size, between 100,000 and 10,000,000 elements and between 100 and
10,000 columns. A slope of 1 means that the cost is proportional to the size. The slope of a
conversion towards Arrow that wraps memory is near 0. 100,000 numbers stay in the caches of the
processor and 10,000,000 do not, so that the slope of a plain copy is above 1, too. The slope of the
limit shows by how much.

{slopes}
## Every axis

{variant_table(variants)}"""


def write(docs, whole, entries):
    folder = docs / "performance"
    folder.mkdir(exist_ok=True)
    limited = [row for row in whole["rows"] if is_base(row) and row["ratio_to_limit"]
               and not row["name"].endswith("/freeing")]
    with_peers = [entry for entry in entries if "peers" in entry]
    plots.draw_limits(limited, folder / "limits.svg")
    plots.draw_peers(with_peers, folder / "peers.svg")
    plots.draw_sizes(entries, folder / "sizes.svg")
    (docs / "performance.md").write_text(document(whole, entries))
