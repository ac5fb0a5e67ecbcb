#!/usr/bin/python3
"""Draws the rows of a run of the benchmarks into an SVG file: how much of what its bound allows each one takes.
usage: bench_chart.py RUN SVG"""
# The interpreter is Debian's own, for which its package of matplotlib is installed.
import json
import sys

import matplotlib
from matplotlib.figure import Figure

WIDTH = 9.3  # of the picture, in inches of 96 pixels
ROW = 0.19  # the height of a row
END = 1.6  # of the axis; a bar beyond it ends there

MET, MISSED, NOISY = "#3a7d44", "#c0392b", "//////"


def bound_of(row):
    """The bound, and how much of it the row takes: 1 is all."""
    ratio = row["ratio"]
    if "at_least" in row:
        return "≥", row["at_least"], row["at_least"] / ratio
    if row["at_most"] == 0:
        return "≤", 0, 0 if ratio == 0 else END
    return "≤", row["at_most"], ratio / row["at_most"]


with open(sys.argv[1], encoding="utf-8") as file:
    run = json.load(file)
rows = run["rows"]

# Text stays text, and two drawings of one run are the same.
matplotlib.rcParams.update({"svg.fonttype": "none", "svg.hashsalt": "bench", "font.size": 7.5})
figure = Figure(figsize=(WIDTH, ROW * (len(rows) + 5)), layout="constrained")
axes = figure.subplots()
for place, row in enumerate(rows):
    sign, bound, taken = bound_of(row)
    axes.barh(place, min(taken, END), height=0.65, color=MISSED if taken > 1 else MET, edgecolor="white", linewidth=0,
              hatch=None if row["stable"] else NOISY)
    noise = "" if row["stable"] else f"  ±{row['half_width'] * 100:.0f} %"
    axes.text(END + 0.03, place, f"{row['ratio']:.2f}{noise}  ({sign} {bound:g})", va="center")
axes.axvline(1, color="black", linewidth=1)
axes.set_yticks(range(len(rows)), [row["name"] for row in rows])
axes.set_ylim(len(rows) - 0.4, -0.6)
axes.set_xlim(0, END + 0.35)
axes.set_xticks([0, 0.5, 1, 1.5], ["0", "half", "the bound", "1.5 times"])
axes.tick_params(left=False)
axes.spines[["top", "right", "left"]].set_visible(False)
figure.suptitle("What each row takes of what it may take: shorter is better; red is missed, hatched too noisy.\n"
                f"{run['date']}, {run['machine']}, load {run['load']} at the start.", fontsize=8, x=0.01, ha="left")
figure.savefig(sys.argv[2], facecolor="white", metadata={"Date": run["date"]})
