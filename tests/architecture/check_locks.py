#!/usr/bin/env python3
"""Fails when docs/threads-and-locks.md and the locks in the sources are not the same."""
import pathlib
import re
import sys
import tempfile

DECLARATION = re.compile(
    r"^ *(?:static |inline |mutable )*(?:std::mutex|CriticalSection|Mutex|std::unique_ptr<Mutex>) +(\w+) *[;{=]", re.MULTILINE)
ENTRY = re.compile(r"`(\w+)`(?: and `(\w+)`)? \(`([^`]+)`\)")


def declared(root):
    for folder in ("src", "include", "transports/ipv4"):
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                name = path.relative_to(root).as_posix().removeprefix("src/")
                for lock in DECLARATION.findall(path.read_text(encoding="utf-8")):
                    yield lock, name


def listed(root):
    text = (root / "docs/threads-and-locks.md").read_text(encoding="utf-8")
    for first, second, name in ENTRY.findall(text):
        yield first, name
        if second:
            yield second, name


def differences(root):
    locks, entries = set(declared(root)), set(listed(root))
    if ("mutex", "platform/*.cpp") in entries:
        entries.remove(("mutex", "platform/*.cpp"))
        locks = {lock for lock in locks if not (lock[0] == "mutex" and lock[1].startswith("platform/"))}
    yield from (f"not listed: {lock} in {name}" for lock, name in sorted(locks - entries))
    yield from (f"listed, but not there: {lock} in {name}" for lock, name in sorted(entries - locks))


def self_test():
    """The check must find a lock that is not listed, and an entry without a lock."""
    with tempfile.TemporaryDirectory() as directory:
        root = pathlib.Path(directory)
        (root / "src/common").mkdir(parents=True)
        (root / "docs").mkdir()
        (root / "src/common/a.h").write_text("  mutable std::mutex kept_;\n  CriticalSection lost_;\n")
        (root / "docs/threads-and-locks.md").write_text("`kept_` (`common/a.h`), `gone_` (`common/a.h`)")
        found = list(differences(root))
    expected = ["not listed: lost_ in common/a.h", "listed, but not there: gone_ in common/a.h"]
    if found != expected:
        sys.exit(f"found {found}, not {expected}")


if sys.argv[1:] == ["--self-test"]:
    self_test()
else:
    found = list(differences(pathlib.Path(sys.argv[1])))
    print("\n".join(found))
    sys.exit(1 if found else 0)
