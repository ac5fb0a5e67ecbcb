#!/usr/bin/env python3
"""Fails when the library calls a client or a plug-in beside the one function for it: what they throw would get through,
and nobody would know that the thread is inside a callback."""
import pathlib
import re
import sys

# Only these files know what a plug-in gives.
PLUGIN_FILES = {
    "api/discovery_manager.cpp", "api/system_enumeration.cpp", "device/connected_device.cpp", "device/connection.cpp",
    "device/connection.h", "device/device.cpp", "device/visitor_run.cpp", "device/visitor_run.h",
}
PLUGIN_ROOMS = ("kit/", "transport/")
PLUGIN_TYPE = re.compile(r"\b(?:Connectable|ConnectionManager|VisitorManager|Visitor|Discoverer)\b")
PLUGIN_CALL = re.compile(
    r"(?:->|\.)(?:getConnection|releaseConnection|getVisitor|releaseVisitor)\("
    r"|\b(?:service|connectable_|visitor_)->\w+\(|\bconnectable\(\)\.\w+\(")
PLUGIN_FUNCTIONS = {"callTransport", "transportResult"}

CLIENT_CALL = re.compile(r"\bcallback\(")
CLIENT_FUNCTIONS = {"run", "callEach", "tellFound"}

COMMENT_OR_TEXT = re.compile(r'//[^\n]*|"(?:[^"\\\n]|\\.)*"')


def enclosing_calls(text, position):
    """The names of the functions in whose argument lists the position lies."""
    depth = 0
    for index in range(position - 1, -1, -1):
        if text[index] == ")":
            depth += 1
        elif text[index] == "(":
            depth -= 1
            if depth < 0:
                depth = 0
                if name := re.search(r"(\w+)(?:<[^<>]*>)?$", text[:index]):
                    yield name.group(1)


def beside(text, call, functions):
    for match in call.finditer(text):
        if not functions & set(enclosing_calls(text, match.start() + 2)):
            yield text.count("\n", 0, match.start()) + 1


def violations(root):
    seen = set()
    for path in sorted((root / "src").rglob("*")):
        if path.suffix not in (".h", ".cpp"):
            continue
        name = path.relative_to(root / "src").as_posix()
        code = COMMENT_OR_TEXT.sub('""', path.read_text(encoding="utf-8"))
        if not name.startswith(PLUGIN_ROOMS) and name not in PLUGIN_FILES:
            for found in sorted(set(PLUGIN_TYPE.findall(code))):
                yield f"{name}: knows a plug-in's {found}"
        elif not name.startswith("kit/"):
            for line in beside(code, PLUGIN_CALL, PLUGIN_FUNCTIONS):
                yield f"{name}:{line}: calls a plug-in beside {' and '.join(sorted(PLUGIN_FUNCTIONS))}"
        for line in beside(code, CLIENT_CALL, CLIENT_FUNCTIONS):
            yield f"{name}:{line}: calls a client beside ClientCall"
        seen |= {call for call in (PLUGIN_CALL, CLIENT_CALL) if call.search(code)}
    if len(seen) < 2:
        yield "no calls of clients or of plug-ins are found any more"


found = list(violations(pathlib.Path(sys.argv[1])))
print("\n".join(found))
sys.exit(1 if found else 0)
