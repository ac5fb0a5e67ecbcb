#!/usr/bin/env python3
"""Fails when a result code has no message, or is a bare number in the code, where this would not find it."""
import pathlib
import re
import sys

NAMED = (("include/qvn/result_codes.h", re.compile(r"#define QRN_ERROR_\w+ (\d+)u")),
         ("src/platform/base/error.h", re.compile(r"ErrorCode k\w+ = (\d+);")),
         ("src/platform/base/error.cpp", re.compile(r"ErrorCode k\w+ = (\d+);")))
MESSAGES = ("src/platform/process/system_information.cpp", re.compile(r"^    \{(\d+),", re.MULTILINE))
ANSWER = re.compile(r"\b(?:return|[rR]c =|setRc\() ?\d{2,}u?[;)]")
CONSTANT = re.compile(r"\buint32_t k(?!StillActive)\w+ = (\d{3,})u?;")
COMMENT_OR_TEXT = re.compile(r'//[^\n]*|"(?:[^"\\\n]|\\.)*"')


def violations(root):
    messages = set(MESSAGES[1].findall((root / MESSAGES[0]).read_text(encoding="utf-8")))
    named = {(name, code) for name, pattern in NAMED
             for code in pattern.findall((root / name).read_text(encoding="utf-8"))}
    for name, code in sorted(named):
        if code not in messages:
            yield f"{name}: {code} has no message"
    codes = {code for _, code in named}
    for path in sorted([*(root / "src").rglob("*.*"), *(root / "transports").rglob("*.*")]):
        if path.suffix in (".h", ".cpp"):
            for found in bare(path.read_text(encoding="utf-8"), codes):
                yield f"{path.relative_to(root)}: a code is a bare number: {found}"


def bare(text, codes):
    code = COMMENT_OR_TEXT.sub('""', text)
    yield from (match.group(0) for match in ANSWER.finditer(code))
    yield from (match.group(0) for match in CONSTANT.finditer(code) if match.group(1) in codes)


found = list(violations(pathlib.Path(sys.argv[1])))
print("\n".join(found))
sys.exit(1 if found else 0)
