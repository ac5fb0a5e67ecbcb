#!/usr/bin/env python3
"""Draws the ratios of a bench.json in the terminal: a bar each, as long as the ratio is against its bound, which is the
line in the middle. A row that must be at least its bound should reach the line, one that must be at most, not pass it.
usage: bench_chart.py BENCH_JSON"""
import json
import sys

HALF = 12  # columns from 0 to the bound; a bar ends at twice the bound

with open(sys.argv[1], encoding="utf-8") as file:
    rows = json.load(file)["rows"]
for row in rows:
    kind = "at_least" if "at_least" in row else "at_most"
    bound, ratio = row[kind], row["ratio"]
    filled = min(2 * HALF, round(HALF * ratio / bound)) if bound else 2 * HALF * (ratio > 0)
    bar = ("█" * filled).ljust(2 * HALF)
    met = ratio >= bound if kind == "at_least" else ratio <= bound
    print(f"{ratio:7.2f} {'≥' if kind == 'at_least' else '≤'} {bound:<5g} {bar[:HALF]}│{bar[HALF:]} {row['name']}"
          f"{'' if met else '  missed'}")
