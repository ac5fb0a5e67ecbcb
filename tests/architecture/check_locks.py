#!/usr/bin/env python3
"""Fails when docs/threads-and-locks.md and the locks in the sources are not the same, in names or in order, or when a
lock that is held for a moment is held around what may take long."""
import pathlib
import re
import sys

RANKS = re.compile(r"enum class LockRank \{(.*?)\};", re.DOTALL)
DECLARATION = re.compile(r"\bOperationLock (\w+)[({]LockRank::(\w+)[)}]")
ROW = re.compile(r"^\| (\w+) \| `(\w+)` \(`([^`]+)`\) \|", re.MULTILINE)

MOMENT = re.compile(r"\b(?:(?:std::)?(?:lock_guard|unique_lock|scoped_lock)(?:<[^>]*>)?|CriticalSectionLock) +\w+[({]")
LONG = re.compile(
    r"\b(?:ClientCall::run|callEach|tellFound|callTransport|transportResult|startAndWait|waitFor|waitForCalls|flush"
    r"|ConnectionUse|VisitorRun|OperationLock::Turn)\b")
COMMENT_OR_TEXT = re.compile(r'//[^\n]*|"(?:[^"\\\n]|\\.)*"')


def sources(root):
    for folder in ("src", "include"):
        for path in sorted((root / folder).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(root).as_posix().removeprefix("src/"), COMMENT_OR_TEXT.sub(
                    '""', path.read_text(encoding="utf-8"))


def rest_of_block(text, position):
    """What follows until the block ends, or the lock is given up."""
    depth = 0
    for index in range(position, len(text)):
        depth += {"{": 1, "}": -1}.get(text[index], 0)
        if depth < 0 or text.startswith(".unlock()", index):
            return text[position:index]
    return text[position:]


def differences(root):
    listed, declared, order = [], [], []
    page = (root / "docs/threads-and-locks.md").read_text(encoding="utf-8")
    for rank, lock, name in ROW.findall(page):
        listed.append((rank, lock, name))
    for name, code in sources(root):
        if found := RANKS.search(code):
            order = [rank for rank in re.findall(r"\w+", found.group(1)) if rank != "None"]
        declared += [(rank, lock, name) for lock, rank in DECLARATION.findall(code)]
        for lock in MOMENT.finditer(code):
            if long := LONG.search(rest_of_block(code, lock.end())):
                yield f"{name}:{code.count(chr(10), 0, lock.start()) + 1}: {long.group()} with a lock held"
    yield from (f"not listed: {lock}" for lock in sorted(set(declared) - set(listed)))
    yield from (f"listed, but not there: {lock}" for lock in sorted(set(listed) - set(declared)))
    if [rank for rank, _, _ in listed] != order:
        yield f"the rows are not in the order {order}"


found = list(differences(pathlib.Path(sys.argv[1])))
print("\n".join(found))
sys.exit(1 if found else 0)
