#!/usr/bin/env python3
"""Fails when a manual page, the shell completion and --help do not know the same verbs and options.
usage: check_manual.py QVN QVN_SIM MANUAL_DIRECTORY COMPLETION"""
import pathlib
import re
import subprocess
import sys

QVN, QVN_SIM, MANUAL, COMPLETION = sys.argv[1:]
faults = []


def expect_equal(what, help_says, other_says):
    for missing in sorted(help_says - other_says):
        faults.append(f"{what} lacks {missing}")
    for extra in sorted(other_says - help_says):
        faults.append(f"{what} has {extra}, which --help has not")


def help_of(*command):
    """The verbs and the options, --help excepted, that the command's help lists."""
    text = subprocess.run([*command, "--help"], check=True, capture_output=True, text=True, timeout=30).stdout
    section, verbs, options = "", set(), set()
    for line in text.splitlines():
        if re.match(r"\S.*:$", line):
            section = line
        elif not line.strip():
            section = ""
        elif section == "Subcommands:" and (found := re.match(r"  (\S+)", line)):
            verbs.add(found[1])
        elif section == "Options:":
            options.update(re.findall(r"^  (?:-\w,)?(--[a-z-]+)", line))
    return verbs, options - {"--help"}


def examples_of(*command):
    """The commands that the help shows, each on one line."""
    text = subprocess.run([*command, "--help"], check=True, capture_output=True, text=True, timeout=30).stdout
    shown = re.search(r"^Examples?:\n((?:  .*\n?)+)", text, re.MULTILINE)
    return [] if shown is None else [line.strip() for line in re.sub(r"\\\n *", "", shown[1]).splitlines()]


def check_examples(page, *command):
    """They are on the page, whose commands a test runs."""
    text = pathlib.Path(MANUAL, page).read_text(encoding="utf-8").replace("\\e\n", "").replace("\\e", "\\")
    on_page = " ".join(text.split())
    for example in examples_of(*command) or ["an example"]:
        if " ".join(example.split()) not in on_page:
            faults.append(f"{page} lacks {example}, which {' '.join(command[1:])} --help shows")


def page_of(name, verb_list):
    """The verbs that the page's lists explain, and every option it names."""
    path = pathlib.Path(MANUAL, name + ".1")
    if not path.exists():
        faults.append(f"{path.name} is missing")
        return set(), set()
    text = path.read_text(encoding="utf-8")
    verbs = set(re.findall(verb_list, text, re.MULTILINE))
    return verbs, {"--" + option for option in re.findall(r"Fl -([a-z-]+)", text)} - {"--help"}


def completed(*words):
    """What the shell offers after these words."""
    script = 'source "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _${1/-/_}; printf "%s\\n" "${COMPREPLY[@]}"'
    run = subprocess.run(["bash", "-c", script, "bash", COMPLETION, *words], check=True, capture_output=True, text=True,
                         timeout=30)
    return set(run.stdout.split()) - {"--help"}


verbs, options = help_of(QVN)
page_verbs, page_options = page_of("qvn", r"^\.Pq Xr qvn-(\w+) 1")
expect_equal("qvn.1", verbs, page_verbs)
expect_equal("qvn.1", options, page_options)
expect_equal("the completion of qvn", verbs, completed("qvn", ""))
for verb in sorted(verbs):
    subverbs, options = help_of(QVN, verb)
    if subverbs:
        expect_equal(f"the completion of qvn {verb}", subverbs, completed("qvn", verb, ""))
    for path in [(verb, subverb) for subverb in sorted(subverbs)] or [(verb,)]:
        options |= help_of(QVN, *path)[1]
        check_examples(f"qvn-{verb}.1", QVN, *path)
    page_verbs, page_options = page_of("qvn-" + verb, r"^\.It Cm (\w+)")
    expect_equal(f"qvn-{verb}.1", options, page_options)
    if subverbs:
        expect_equal(f"qvn-{verb}.1", subverbs, page_verbs)
for path in pathlib.Path(MANUAL).glob("qvn-*.1"):
    if path.stem != "qvn-sim" and path.stem.removeprefix("qvn-") not in verbs:
        faults.append(f"{path.name} explains no verb of qvn")

options = help_of(QVN_SIM)[1]
expect_equal("qvn-sim.1", options, page_of("qvn-sim", "")[1])
expect_equal("the completion of qvn-sim", options, completed("qvn-sim", "-"))

for fault in faults:
    print(fault)
sys.exit(1 if faults else 0)
