#!/usr/bin/env python3
"""Takes the C program out of a document or out of a header's first comment. usage: example_program.py FROM TO"""
import pathlib
import re
import sys

source, target = map(pathlib.Path, sys.argv[1:])
text = source.read_text(encoding="utf-8")
if source.suffix == ".md":
    (program,) = re.findall(r"^```c\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)
else:
    (indented,) = re.findall(r"^ \*     #include.*?(?=^ \* \S)", text, re.MULTILINE | re.DOTALL)
    program = re.sub(r"^ \*(     )?", "", indented, flags=re.MULTILINE)
target.write_text(program, encoding="utf-8")
