#!/usr/bin/env python3
"""Fails when an #include points against the drawing in docs/architecture.md, or when anything but src/platform
includes a header of the operating system, the registry's storage or the dynamic linker."""
import pathlib
import re
import sys

# Where rooms are, and how the includes in it name them: bottom first. A room may include itself and what stands in a
# line before it; rooms in one line do not include each other. A folder without an entry belongs to the one it is in,
# and "" is what lies in no folder. Where states and tasks know their device, one room holds them all.
HOUSES = {
    "src": [
        ["platform/base"],
        ["platform/files"],
        ["platform/threads"],
        ["platform/registry"],
        ["platform/process"],
        ["kit"],
        ["common"],
        ["common/process"],
        ["common/threads"],
        ["common/settings"],
        ["common/logging"],
        ["common/clients", "common/tasks"],
        ["npa"],
        ["transport"],
        ["device/factories"],
        ["device/store"],
        ["device"],
        ["bidi", "bidi/element"],
        ["bidi/xml"],
        ["bidi/object_store"],
        ["printer/clients", "printer/job"],
        ["printer"],
        ["printer/cpd", "printer/bpd"],
        ["scanner", "scanner/esc"],
        ["scanner/cpd", "scanner/bpd"],
        ["hid"],
        ["api"],
    ],
    "transports/shared": [
        ["base", "channel"],
        ["streams"],
        ["sessions"],
        ["connections"],
        ["visitors"],
        [""],
    ],
    "transports/ipv4": [
        ["base", "net"],
        ["discovery"],
        [""],
    ],
    "transports/usb1": [
        ["base", "descriptors"],
        ["bus"],
        ["channels", "discovery"],
        [""],
    ],
    "tools/qvn": [[""], ["scan", "watch"], ["verbs"]],
    "tools/qvn-sim": [
        ["base"],
        ["net"],
        ["faults"],
        ["page"],
        ["print", "esc", "documents", "hid", "usb"],
        [""],
    ],
}

# What stands before the room in the includes of a house that several others stand on.
PREFIXES = {"transports/shared": "shared/"}

# The program starts the rooms that lie above it.
ROOFS = {"tools/qvn/main.cpp"}

SYSTEM_HEADERS = re.compile(
    r"^(sys/.*|arpa/.*|net/.*|netinet/.*|linux/.*|asm/.*|bits/.*|unistd\.h|fcntl\.h|pthread\.h|poll\.h|signal\.h"
    r"|spawn\.h|dlfcn\.h|link\.h|lmdb\.h|semaphore\.h|sched\.h|dirent\.h|pwd\.h|grp\.h|termios\.h|syslog\.h"
    r"|strings\.h|csignal|cups/.*)$")

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)


def includes(path):
    return INCLUDE.findall(path.read_text(encoding="utf-8"))


def files(folder):
    return (path for path in sorted(folder.rglob("*")) if path.suffix in (".h", ".cpp"))


def levels(house):
    return {room: level for level, rooms in enumerate(house) for room in rooms}


def room_of(relative, level_of):
    """The innermost listed folder that a file lies in; None when there is none."""
    for folder in pathlib.PurePosixPath(relative).parents:
        name = "" if str(folder) == "." else str(folder)
        if name in level_of:
            return name
    return None


def against_the_drawing(root, base, house):
    level_of = levels(house)
    for path in files(root / base):
        relative = path.relative_to(root / base).as_posix()
        room = room_of(relative, level_of)
        if room is None:
            yield f"{base}/{relative}: lies in no room"
            continue
        for quote, name in includes(path):
            name = name.removeprefix(PREFIXES.get(base, ""))
            if quote != '"' or not (root / base / name).is_file() or f"{base}/{relative}" in ROOFS:
                continue
            other = room_of(name, level_of)
            where = f"{base}/{relative}: #include {name}"
            if other != room and (other is None or level_of[other] >= level_of[room]):
                yield f"{where}: {room or base} does not stand on {other or base}"


def violations(root):
    for base, house in HOUSES.items():
        yield from against_the_drawing(root, base, house)
    sources = root / "src"
    for path in files(sources):
        room = path.relative_to(sources).parts[0]
        for quote, name in includes(path):
            where = f"{path.relative_to(root)}: #include {name}"
            if quote == "<" and room != "platform" and SYSTEM_HEADERS.match(name):
                yield f"{where}: only src/platform may include a system header"
            if quote == '"' and "/" not in name:
                yield f"{where}: name the room"
    for path in sorted((root / "include").rglob("*.h")):
        client = "transport" not in path.relative_to(root / "include" / "qvn").parts
        for quote, name in includes(path):
            where = f"{path.relative_to(root)}: #include {name}"
            if quote == '"' and not name.startswith("qvn/"):
                yield f"{where}: a public header includes public headers only"
            if client and name.startswith("qvn/transport/"):
                yield f"{where}: clients do not need the plug-ins' headers"
            if quote == "<" and SYSTEM_HEADERS.match(name):
                yield f"{where}: a public header includes no system header"


found = list(violations(pathlib.Path(sys.argv[1])))
print("\n".join(found))
sys.exit(1 if found else 0)
