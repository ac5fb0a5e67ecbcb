#!/usr/bin/env python3
"""Fails when an #include points against the drawing in docs/architecture.md, or when anything but src/platform
includes a header of the operating system, the registry's storage or the dynamic linker."""
import pathlib
import re
import sys
import tempfile

# Bottom first: a room may include itself and what stands before it.
ROOMS = ["platform", "kit", "common", "npa", "transport", "device", "bidi", "printer", "scanner", "hid", "api"]

SYSTEM_HEADERS = re.compile(
    r"^(sys/.*|arpa/.*|net/.*|netinet/.*|linux/.*|asm/.*|bits/.*|unistd\.h|fcntl\.h|pthread\.h|poll\.h|signal\.h"
    r"|spawn\.h|dlfcn\.h|link\.h|lmdb\.h|semaphore\.h|sched\.h|dirent\.h|pwd\.h|grp\.h|termios\.h|syslog\.h"
    r"|strings\.h|csignal|cups/.*)$")

INCLUDE = re.compile(r'^\s*#\s*include\s*(["<])([^">]+)[">]', re.MULTILINE)


def violations(root):
    sources = root / "src"
    for path in sorted(sources.rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        room = path.relative_to(sources).parts[0]
        for quote, name in INCLUDE.findall(path.read_text(encoding="utf-8")):
            where = f"{path.relative_to(root)}: #include {name}"
            if quote == "<" and room != "platform" and SYSTEM_HEADERS.match(name):
                yield f"{where}: only src/platform may include a system header"
            included = name.split("/")[0]
            if quote == '"' and included in ROOMS and ROOMS.index(included) > ROOMS.index(room):
                yield f"{where}: {room} stands below {included}"
            if quote == '"' and "/" not in name:
                yield f"{where}: name the room"
    for path in sorted((root / "include").rglob("*.h")):
        client = "transport" not in path.relative_to(root / "include" / "qvn").parts
        for quote, name in INCLUDE.findall(path.read_text(encoding="utf-8")):
            where = f"{path.relative_to(root)}: #include {name}"
            if quote == '"' and not name.startswith("qvn/"):
                yield f"{where}: a public header includes public headers only"
            if client and name.startswith("qvn/transport/"):
                yield f"{where}: clients do not need the plug-ins' headers"
            if quote == "<" and SYSTEM_HEADERS.match(name):
                yield f"{where}: a public header includes no system header"


def self_test():
    """The check must find each kind of violation."""
    cases = {
        "src/npa/a.cpp": ['#include "device/printer.h"', "#include <unistd.h>", '#include "b.h"'],
        "include/qvn/a.h": ['#include "qvn/transport/data.h"'],
        "include/qvn/transport/b.h": ['#include "common/mutex.h"', "#include <pthread.h>"],
    }
    with tempfile.TemporaryDirectory() as directory:
        root = pathlib.Path(directory)
        for name, lines in cases.items():
            file = root / name
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text("\n".join(lines) + '\n#include <vector>\n#include "qvn/result_codes.h"\n')
        found = list(violations(root))
    expected = sum(len(lines) for lines in cases.values())
    print("\n".join(found))
    return 0 if len(found) == expected else 1


if __name__ == "__main__":
    if sys.argv[1] == "--self-test":
        sys.exit(self_test())
    problems = list(violations(pathlib.Path(sys.argv[1])))
    print("\n".join(problems))
    sys.exit(1 if problems else 0)
