#!/usr/bin/env python3
"""Runs what a document tells its readers to run, and fails when that fails or when the document is not in form.

usage: run_document.py PREFIX DOCUMENT      runs its commands with the installation in PREFIX
       run_document.py --list DOCUMENT...   lists the commands that are not run, and why
       run_document.py --self-test PREFIX   whether it finds what it should

The commands are the ```sh fences of a Markdown file and the `.Bd -literal` displays of a manual page, run in order
in one empty directory, on this machine as it is with PREFIX installed in /usr, and with a network, processes and a
registry of the document's own: 192.0.2.0/24 is the machine itself, and what is written to /etc, /usr and /var is gone
at the end. A command fails as in `bash -e`, and must end with 130 when it is interrupted if its comment says "until Ctrl-C".

- A ```text fence right behind a ```sh fence is what that prints, blanks aside; "…" stands for anything.
- Comments that readers do not see (<!-- … -->, or .\\" in a manual page) say more, each at its place:
      run: COMMANDS        scenery.sh has functions for them
      not run: REASON      why the fence that follows cannot be run
      file: NAME           the fence that follows is written to this file
- Links, cross references and the files that a document names exist.
"""
import contextlib
import io
import os
import pathlib
import re
import select
import shutil
import signal
import subprocess
import sys
import tempfile

HERE = pathlib.Path(__file__).resolve().parent
TREE = HERE.parent.parent
LANGUAGES = {"sh", "text", "c", "c++", "cpp", "cmake", "json", "xml", "python"}
DIRECTIVE = re.compile(r"(run|not run|file): *(.*)", re.DOTALL)


class Step:
    """A fence or a display with what its directives say of it, or a hidden command (kind "run")."""

    def __init__(self, line, kind, text):
        self.line, self.kind, self.text = line, kind, text
        self.expected = self.not_run = self.file = None


class Document:
    def __init__(self, path):
        self.path, self.steps, self.faults = path, [], []
        self.marks = {}
        lines = path.read_text(encoding="utf-8").splitlines()
        (self.read_markdown if path.suffix == ".md" else self.read_manual)(lines)
        for mark in self.marks:
            self.fault(len(lines), f'"{mark}:" stands before nothing')

    def fault(self, line, what):
        self.faults.append(f"{self.path.name}:{line}: {what}")

    def hear_directive(self, line, comment):
        if not (found := DIRECTIVE.fullmatch(comment.strip())):
            return
        if found[1] == "run":
            self.steps.append(Step(line, "run", found[2]))
        else:
            self.marks[found[1]] = found[2]

    def add_block(self, line, kind, text):
        step = Step(line, kind, text)
        step.not_run, step.file = self.marks.pop("not run", None), self.marks.pop("file", None)
        self.steps.append(step)

    def read_markdown(self, lines):
        number, last_fence_end = 0, None
        while number < len(lines):
            line, begin = lines[number], number + 1
            number += 1
            if line.startswith("```"):
                language = line[3:].strip()
                body = []
                while number < len(lines) and lines[number] != "```":
                    body.append(lines[number])
                    number += 1
                number += 1
                text = "\n".join(body) + "\n"
                if language not in LANGUAGES:
                    self.fault(begin, f'a fence of the language "{language}"')
                behind = last_fence_end is not None and not "".join(lines[last_fence_end:begin - 1]).strip()
                if language == "text" and behind and self.steps[-1].kind == "sh":
                    self.steps[-1].expected = text
                else:
                    self.add_block(begin, language, text)
                last_fence_end = number
            elif line.startswith("<!--"):
                while "-->" not in line and number < len(lines):
                    line += "\n" + lines[number]
                    number += 1
                self.hear_directive(begin, line[4:line.index("-->")])
            elif line.startswith("    ") and not lines[begin - 2].strip():
                self.fault(begin, "a block without a fence")
            else:
                self.check_names(begin, line)

    def read_manual(self, lines):
        number = 0
        while number < len(lines):
            line, begin = lines[number], number + 1
            number += 1
            if line.startswith('.\\"'):
                self.hear_directive(begin, line[3:])
            elif line.startswith(".Bd -literal"):
                body = []
                while lines[number] != ".Ed":
                    body.append(lines[number].replace("\\&", "").replace("\\e", "\\").replace("\\-", "-"))
                    number += 1
                number += 1
                self.add_block(begin, "sh", "\n".join(body) + "\n")
            elif re.match(r"\.(Dl|D1|nf|EX|Bd)\b", line):
                self.fault(begin, f"{line.split()[0]} where the manual has .Bd -literal")
            elif (found := re.match(r"\.(?:Pq )?Xr (qvn\S*|\S+-qvn) (\d)", line)):
                if not (TREE / "docs/man" / f"{found[1]}.{found[2]}").exists():
                    self.fault(begin, f"there is no page {found[1]}({found[2]})")

    def check_names(self, number, line):
        for target, anchor in re.findall(r"\]\(([^)#:\s]*)(#[^)]*)?\)", line):
            path = (self.path.parent / target).resolve() if target else self.path
            if not path.exists():
                self.fault(number, f"links to {target}, which does not exist")
            elif anchor and anchor[1:] not in anchors(path):
                self.fault(number, f"links to {target}{anchor}, which does not exist")
        for name in re.findall(r"`([\w./-]+/[\w.-]+\.(?:h|cpp|py|sh|md|dot))`", line):
            if not name.startswith("/") and not any(path.endswith("/" + name) for path in files()):
                self.fault(number, f"names {name}, which does not exist")
        for verb in re.findall(r"`qvn ([a-z]+)", line):
            if not (TREE / f"docs/man/qvn-{verb}.1").exists():
                self.fault(number, f"names qvn {verb}, which no page explains")


def anchors(path):
    headings = re.findall(r"^#+ (.*)$", path.read_text(encoding="utf-8"), re.MULTILINE)
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in headings}


def files(found=[]):  # asked for once
    if not found:
        for directory, below, names in os.walk(TREE):
            below[:] = [name for name in below if name not in ("build", ".git")]
            found.extend(f"{directory}/{name}" for name in names)
    return found


def script_of(text):
    """The commands, those that go on until Ctrl-C handed to this program."""
    lines = []
    for line in text.splitlines():
        interrupted = re.fullmatch(r"([^#]*\S)\s+#.*\buntil Ctrl-C\b.*", line)
        lines.append(f"until_ctrl_c {interrupted[1]}" if interrupted else line)
    return "\n".join(lines) + "\n"


def words(text):
    return " ".join(text.split())


def run(step, directory, environment):
    """What is wrong with the step, or nothing."""
    if step.file:
        pathlib.Path(directory, step.file).write_text(step.text, encoding="utf-8")
    if step.kind not in ("sh", "run") or step.not_run:
        return None
    # A file, because what the commands leave running holds their output open.
    with tempfile.TemporaryFile(mode="w+", encoding="utf-8", errors="replace") as output:
        code = subprocess.run(["bash", "-euo", "pipefail", "-c", script_of(step.text)], cwd=directory, env=environment,
                              stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, check=False).returncode
        output.seek(0)
        printed = output.read()
    if code != 0:
        return f"ends with {code}\n{step.text}\n{printed}"
    if step.expected is not None:
        pattern = ".*".join(re.escape(part) for part in words(step.expected).split("…"))
        if not re.fullmatch(pattern, words(printed), re.DOTALL):
            return f"prints\n{printed}\nand not\n{step.expected}"
    return None


def run_document(prefix, path):
    document = Document(path)
    faults = list(document.faults)
    ran = 0
    environment = {"PATH": "/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin", "HOME": "/root", "LC_ALL": "C.UTF-8",
                   "BASH_ENV": str(HERE / "scenery.sh"), "RUNNER": __file__, "TREE": str(TREE), "PREFIX": str(prefix)}
    with tempfile.TemporaryDirectory() as directory, tempfile.TemporaryDirectory() as state:
        if not os.access("/var/lib", os.W_OK):  # who is root in here only
            environment["QVN_HOME"] = state
        for step in document.steps:
            if fault := run(step, directory, environment):
                faults.append(f"{path.name}:{step.line}: {fault}")
                break
            ran += step.kind == "sh" and not step.not_run
            if step.not_run:
                print(f"{path.name}:{step.line}: not run: {step.not_run}")
    print(f"{path.name}: ran {ran} blocks")
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


def run_until_ctrl_c(command):
    """Presses Ctrl-C once the command has said something; 0 when it then ends as an interrupted one does."""
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, bufsize=0) as process:
        spoke = select.select([process.stdout], [], [], 30)[0]
        print(process.stdout.read(4096).decode(errors="replace") if spoke else "says nothing for 30 s\n", end="")
        process.send_signal(signal.SIGINT)
        print(process.stdout.read().decode(errors="replace"), end="", flush=True)
        code = process.wait()
    if code != 130:
        print(f"Ctrl-C ends it with {code}")
    return 0 if spoke and code == 130 else 1


def list_marks(paths):
    marks = [(path, step) for path in paths for step in Document(path).steps if step.not_run]
    for path, step in marks:
        print(f"{path}:{step.line}: {step.not_run}")
    print(f"{len(marks)} blocks are not run")
    return 0


def self_test(prefix):
    """Documents with one fault each, and what is to be said of it."""
    cases = [
        ("x.md", "```sh\nfalse\ntrue\n```\n", "ends with 1"),
        ("x.md", "```sh\nfalse | true\n```\n", "ends with 1"),
        ("x.md", "```sh\nqvn no-such-verb\n```\n", "ends with 2"),
        ("x.md", "<!-- run: false -->\n", "ends with 1"),
        ("x.md", "```sh\necho a b\n```\n```text\na … c\n```\n", "and not"),
        ("x.md", "```sh\ncat /etc/passwd  # until Ctrl-C\n```\n", "Ctrl-C ends it with "),
        ("x.md", "```\nqvn\n```\n", 'a fence of the language ""'),
        ("x.md", "Do:\n\n    qvn\n", "a block without a fence"),
        ("x.md", "<!-- not run: no reason -->\n", "stands before nothing"),
        ("x.md", "[there](nowhere.md)\n", "links to nowhere.md"),
        ("x.md", "# Here\n[there](#there)\n", "links to #there"),
        ("x.md", "In `src/no_such_file.cpp`.\n", "names src/no_such_file.cpp"),
        ("x.md", "As `qvn fly` does.\n", "names qvn fly"),
        ("x.1", ".Bd -literal\nfalse\n.Ed\n", "ends with 1"),
        ("x.1", ".Dl qvn\n", ".Dl where"),
        ("x.1", ".Xr qvn-nothing 1\n", "no page qvn-nothing(1)"),
    ]
    wrong = 0
    for name, text, fault in cases:
        with tempfile.TemporaryDirectory() as directory:
            path = pathlib.Path(directory, name)
            path.write_text(text, encoding="utf-8")
            said = io.StringIO()
            with contextlib.redirect_stdout(said):
                code = run_document(prefix, path)
        if code == 0 or fault not in said.getvalue():
            print(f"{text!r}: {fault!r} is not found but\n{said.getvalue()}")
            wrong = 1
    return wrong


def enter_world(prefix):
    def do(*command):
        subprocess.run(command, check=True)

    do("ip", "link", "set", "lo", "up")
    do("ip", "address", "add", "192.0.2.1/24", "dev", "lo")
    do("mount", "-t", "tmpfs", "tmpfs", "/run")
    for name, below in ("etc", f"{prefix}/etc:/etc"), ("usr", f"{prefix}:/usr"), ("var", "/var"):
        changes = pathlib.Path("/run/changes", name)
        for part in "upper", "work":
            (changes / part).mkdir(parents=True)
        do("mount", "-t", "overlay", "-o", f"lowerdir={below},upperdir={changes}/upper,workdir={changes}/work", "overlay",
           f"/{name}")
    shutil.rmtree("/var/lib/qvn", ignore_errors=True)  # what this machine's root has stored


def mounts(process):
    return pathlib.Path(f"/proc/{process}/mountinfo").read_text(encoding="utf-8").splitlines()


def main(arguments):
    if arguments[0] == "--until-ctrl-c":
        return run_until_ctrl_c(arguments[1:])
    if arguments[0] == "--list":
        return list_marks([pathlib.Path(argument) for argument in arguments[1:]])
    if arguments[0] != "--inside":  # when the machine does not let it, the document fails
        # In place of this process, so that whoever kills it ends what the document has started.
        private = ["unshare", "--mount", "--net", "--pid", "--fork", "--kill-child", "--mount-proc"]
        private += [] if os.geteuid() == 0 else ["--map-root-user"]
        # Below a chroot nothing is mounted at /, which unshare wants to keep from the outside; nothing gets there
        # either unless the outside shares its mounts.
        in_chroot = not any(mount.split()[4] == "/" for mount in mounts("self"))
        if in_chroot and not any(" shared:" in mount for mount in mounts("1")):
            private += ["--propagation", "unchanged"]
        os.execvp(private[0], [*private, sys.executable, __file__, "--inside", *arguments])
    if arguments[1] == "--self-test":
        prefix = pathlib.Path(arguments[2]).resolve()
        enter_world(prefix)
        return self_test(prefix)
    prefix, document = (pathlib.Path(argument).resolve() for argument in arguments[1:])
    enter_world(prefix)
    return run_document(prefix, document)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
