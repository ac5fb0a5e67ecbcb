#!/usr/bin/env python3
"""The table of a run of the benchmarks, and the kept one: docs/performance.json, which docs/performance.md shows.
usage: bench_table.py begin RUN   tell the machine and its load, and begin the file of a run with them
       bench_table.py show RUN    print the run's rows beside those of the kept one
       bench_table.py keep RUN    keep the run, and the picture beside its file
       bench_table.py check       fail when the document or its picture does not show the kept run"""
import datetime
import json
import os
import pathlib
import platform
import re
import shutil
import sys

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
KEPT = DOCS / "performance.json"
DOCUMENT = DOCS / "performance.md"
PICTURE = DOCS / "pictures/performance.svg"
SECTION = re.compile(r"(?<=<!-- The kept run, written by ./dev bench --keep. -->\n).*?(?=<!-- Its end. -->)", re.DOTALL)

# What is worse by so many per cent than in the kept run is marked.
WORSE = 5
# What else the machine may do, per processor, while it measures.
BUSY = 0.5


def read(path):
    return json.loads(pathlib.Path(path).read_text(encoding="utf-8"))


def bound(row):
    return ("≥", row["at_least"]) if "at_least" in row else ("≤", row["at_most"])


def marks(row):
    """What is to be known of a row beside its ratio."""
    sign, limit = bound(row)
    if row["ratio"] < limit if sign == "≥" else row["ratio"] > limit:
        yield "missed"
    if not row["stable"]:
        yield f"too noisy (±{row['half_width'] * 100:.0f} %)"


def begin(path):
    cpuinfo = pathlib.Path("/proc/cpuinfo").read_text(encoding="utf-8")
    model = re.search(r"^model name\s*: (.*)$", cpuinfo, re.MULTILINE)
    processors = len(os.sched_getaffinity(0))
    load = os.getloadavg()[0]
    run = {
        "machine": f"{model[1] if model else platform.machine()}, {processors} processors",
        "date": datetime.datetime.now(datetime.timezone.utc).strftime("%Y-%m-%d %H:%M UTC"),
        "load": round(load, 2),
        "rows": [],
    }
    print(f"{run['date']}, {run['machine']}, load {load:.2f}")
    if load > BUSY * processors:
        print("warning: this machine is busy, and what is measured now says little")
    path = pathlib.Path(path)
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(json.dumps(run), encoding="utf-8")


def show(path):
    run, kept = read(path), read(KEPT)
    before = {row["name"]: row["ratio"] for row in kept["rows"]}
    print(f"beside the kept run: {kept['date']}, {kept['machine']}, load {kept['load']}")
    print(f"{'ratio':>8} {'bound':>7} {'kept':>8} {'change':>7}")
    for row in run["rows"]:
        sign, limit = bound(row)
        notes = list(marks(row))
        old, ratio = before.get(row["name"]), row["ratio"]
        was = "new" if old is None else f"{old:.3f}"
        change = ""
        if old:
            per_cent = (ratio / old - 1) * 100
            change = f"{per_cent:+.0f} %"
            if (-per_cent if sign == "≥" else per_cent) > WORSE:
                notes.append("worse")
        print(f"{ratio:8.3f} {sign} {limit:<5g} {was:>8} {change:>7}  {'  '.join([row['name'], *notes])}")


def section(run):
    lines = [
        f"{run['date']}, {run['machine']}, load {run['load']} at the start.\n",
        "\n",
        "| row | ratio | bound | what a user gains while it is met |\n",
        "|---|---|---|---|\n",
    ]
    for row in run["rows"]:
        sign, limit = bound(row)
        ratio = ", ".join([f"{row['ratio']:.2f}", *marks(row)])
        lines.append(f"| {row['name']} | {ratio} | {sign} {limit:g} | {row['gain']} |\n")
    return "".join(lines)


def document_of(run):
    text = DOCUMENT.read_text(encoding="utf-8")
    return text, SECTION.sub(lambda _: section(run), text)


def keep(path):
    run = read(path)
    shutil.copyfile(path, KEPT)
    shutil.copyfile(pathlib.Path(path).with_suffix(".svg"), PICTURE)
    DOCUMENT.write_text(document_of(run)[1], encoding="utf-8")
    print(f"kept in {KEPT}, {DOCUMENT} and {PICTURE}")


def check():
    run = read(KEPT)
    is_text, should_be = document_of(run)
    if is_text != should_be or section(run) not in is_text:
        sys.exit(f"{DOCUMENT} does not show {KEPT}: write both with ./dev bench --keep")
    if run["date"] not in PICTURE.read_text(encoding="utf-8"):
        sys.exit(f"{PICTURE} is not that of {KEPT}: write both with ./dev bench --keep")


VERBS = {"begin": begin, "show": show, "keep": keep, "check": check}
if len(sys.argv) != (2 if sys.argv[1:] == ["check"] else 3) or sys.argv[1] not in VERBS:
    sys.exit(__doc__)
VERBS[sys.argv[1]](*sys.argv[2:])
