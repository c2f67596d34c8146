"""The plots of docs/performance.md. The SVG files differ only if a figure differs."""

import re

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt
from matplotlib.ticker import FuncFormatter, NullFormatter

import summary

# The colours of Okabe and Ito, which colour-blind readers can tell apart, too.
BLUE, ORANGE, GREEN, RED, SKY, PURPLE, GREY = (
    "#0072B2", "#E69F00", "#009E73", "#D55E00", "#56B4E9", "#CC79A7", "#555555")
STYLES = [(BLUE, "o"), (ORANGE, "s"), (GREEN, "^"), (RED, "D"), (SKY, "v"), (PURPLE, "P"),
          (GREY, "X"), ("#000000", "*"), (BLUE, "<"), (ORANGE, ">"), (GREEN, "h"), (RED, "p"),
          (SKY, "d"), (PURPLE, "8")]
PEER_STYLES = {"pyarrow": (BLUE, "o"), "pandas": (ORANGE, "s"), "Polars": (GREEN, "^"),
               "DuckDB": (RED, "D"), "nanoarrow": (PURPLE, "P")}

plt.rcParams.update({
    "svg.hashsalt": "numera", "svg.fonttype": "path", "font.size": 10, "axes.titlesize": 11,
    "axes.spines.top": False, "axes.spines.right": False, "axes.axisbelow": True,
    "axes.grid": True, "grid.color": "#dddddd", "grid.linewidth": 0.6, "figure.facecolor": "white",
    "legend.frameon": False})


def save(figure, path):
    figure.savefig(path, format="svg", bbox_inches="tight", metadata={"Date": None})
    plt.close(figure)


def plain(number, _=None):
    return f"{number:g}" if number < 10_000 else f"$10^{{{len(str(int(number))) - 1}}}$"


def rows_on_axis(axes, names):
    axes.set_yticks(range(len(names)), names)
    axes.set_ylim(len(names) - 0.4, -0.6)
    axes.grid(axis="y", visible=False)
    axes.tick_params(axis="y", length=0)


def draw_limits(rows, path):
    """Time of each conversion over its limit, one line per row."""
    figure, axes = plt.subplots(figsize=(8.5, 0.27 * len(rows) + 1.1))
    ratios = [row["ratio_to_limit"] for row in rows]
    most = max(4.0, min(max(ratios), 6.0))
    for place, value in enumerate(ratios):
        shown = min(value, most)
        axes.plot([1, shown], [place, place], color=SKY, linewidth=3, solid_capstyle="butt")
        axes.plot(shown, place, marker="o" if value <= most else ">", color=BLUE, markersize=6)
        axes.annotate(f"{value:.2f}", (max(shown, 1), place), xytext=(8, 0),
                      textcoords="offset points", va="center", fontsize=9)
    axes.axvline(1, color=GREY, linewidth=1.2)
    axes.set_xlim(min(0.9, min(ratios) - 0.05), most * 1.1)
    axes.set_xlabel("time of the conversion / time of its limit (1 = the least work)")
    rows_on_axis(axes, [row["name"] for row in rows])
    save(figure, path)


def draw_peers(entries, path):
    """Time of each peer over our own, one line per row."""
    figure, axes = plt.subplots(figsize=(8.5, 0.29 * len(entries) + 1.6))
    for place, entry in enumerate(entries):
        ours = summary.median(entry["ours"])
        for peer in entry["peers"]:
            if not peer["times"] or peer["peer"] not in PEER_STYLES:
                continue
            color, marker = PEER_STYLES[peer["peer"]]
            copies = "not cop" not in peer["note"] and "does not" not in peer["note"]
            axes.plot(summary.median(peer["times"]) / ours, place, marker=marker, markersize=7,
                      color=color, markerfacecolor=color if copies else "white", linestyle="none")
    axes.set_xscale("log")
    axes.xaxis.set_major_formatter(FuncFormatter(plain))
    axes.axvline(1, color=GREY, linewidth=1.2)
    axes.set_xlabel("time of the peer / our time (right of 1 we are faster; hollow: does not copy)")
    rows_on_axis(axes, [entry["name"] for entry in entries])
    for name, (color, marker) in PEER_STYLES.items():
        axes.plot([], [], color=color, marker=marker, linestyle="none", markersize=7, label=name)
    axes.legend(loc="lower center", bbox_to_anchor=(0.4, 1.0), ncols=len(PEER_STYLES))
    save(figure, path)


def draw_costs(axes, title, costs, label):
    for (family, points), (color, marker) in zip(sorted(costs.items()), STYLES):
        sizes = sorted(points)
        axes.plot(sizes, [points[size] for size in sizes], color=color, marker=marker,
                  markersize=5, linewidth=1.3, label=family)
    axes.set_xscale("log")
    axes.set_yscale("log")
    axes.set_title(title, loc="left")
    axes.set_xlabel(label)
    axes.set_ylabel("milliseconds")
    axes.yaxis.set_major_formatter(FuncFormatter(plain))
    axes.yaxis.set_minor_formatter(NullFormatter())
    axes.legend(fontsize=8, handlelength=1.6, labelspacing=0.25)


def draw_sizes(entries, path):
    """Cost against the number of elements, and of columns."""
    lengths = summary.family_lengths(entries)
    times = {entry["name"]: summary.median(entry["ours"]) for entry in entries}
    columns = {direction: {count: time for count, time in
                           summary.column_counts(times, direction).items() if time}
               for direction in ("to_host", "to_arrow")}
    figure, panels = plt.subplots(2, 2, figsize=(11, 9.5), layout="constrained")

    def families(pattern):
        return {re.sub(r"^to_\w+?/", "", family): points
                for family, points in lengths.items() if re.match(pattern, family)}

    draw_costs(panels[0][0], "To the host", families("to_host/"), "elements")
    draw_costs(panels[0][1], "To Arrow", families("to_arrow/"), "elements")
    draw_costs(panels[1][0], "Gateway and encode", families("gateway/|encode/"), "elements")
    draw_costs(panels[1][1], "Tables of 1,000 rows", columns, "columns")
    save(figure, path)
