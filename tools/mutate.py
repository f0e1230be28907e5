#!/usr/bin/env python3
"""Checks the tests by small mistakes made on purpose: each is put into src, one at a time, in a copy of the
tree, and the tests have to notice it. Mistakes that do not compile do not count. What was tried is kept, so
that a run that is broken off goes on where it was; a changed source file is tried anew.

    tools/mutate.py [--count 300] [--seed 1] [--build build/mutate] [--only src/model]
"""
import argparse
import collections
import difflib
import hashlib
import json
import os
import pathlib
import random
import re
import shutil
import signal
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROOMS = ("model", "service", "plandata", "setting")

Edit = collections.namedtuple("Edit", "file at length text kind")


def code_only(source):
    """The source with comments and preprocessor lines blanked, and literals blanked in a second copy."""
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|^\s*#[^\n]*(?:\\\n[^\n]*)*|R"\((?:.*?)\)"|"(?:\\.|[^"\\\n])*"'
                         r"|(?<![0-9])'(?:\\.|[^'\\\n])+'", re.S | re.M)
    without_comments, without_literals = list(source), list(source)
    for match in pattern.finditer(source):
        is_literal = match.group()[0] in "\"'R"
        for i in range(match.start(), match.end()):
            if source[i] != "\n":
                without_literals[i] = " "
                if not is_literal:
                    without_comments[i] = " "
    return "".join(without_comments), "".join(without_literals)


def edits_of(path):
    source = path.read_text(encoding="utf-8")
    text, plain = code_only(source)
    name = str(path.relative_to(ROOT))
    found = []

    def add(match, replacement, kind, group=0):
        found.append(Edit(name, match.start(group), match.end(group) - match.start(group), replacement, kind))

    comparisons = {"==": "!=", "!=": "==", "<=": "<", ">=": ">", " < ": " <= ", " > ": " >= ", "&&": "||", "||": "&&"}
    for match in re.finditer(r"==|!=|<=|>=| < | > |&&|\|\|", plain):
        if match.group() == "&&" and re.search(r"[\w>]$", plain[:match.start()]):
            continue  # an rvalue reference
        add(match, comparisons[match.group()], "comparison")
    for match in re.finditer(r"(?<=[(\s])!(?=[\w(])", plain):
        add(match, "", "comparison")
    for match in re.finditer(r"\b(true|false)\b", plain):
        add(match, "false" if match.group() == "true" else "true", "constant")
    for match in re.finditer(r"(?<![\w.%<:])(\d+)(?![\w.>])", plain):
        add(match, str(int(match.group()) + 1), "constant")
    for match in re.finditer(r"(?<![\w.])(\d+\.\d+)(?![\w.])", plain):
        add(match, str(float(match.group()) + 0.5), "constant")
    for match in re.finditer(r'"((?:\\.|[^"\\\n])+)"', text):
        if plain[match.start()] == " ":  # blanked, so a literal
            add(match, '"x' + match.group(1) + '"', "literal")
    for match in re.finditer(r"(?<=[\w)\]]) ([-+]) (?=[\w(])", plain):
        add(match, "-" if match.group(1) == "+" else "+", "operator", 1)
    # A statement on a line of its own that is no declaration and no jump.
    for match in re.finditer(r"^[ \t]+((?!return\b|break\b|continue\b|throw\b|using\b|static\b|const\b|friend\b|"
                             r"public|private|case\b|default\b|else\b|if\b|for\b|while\b|do\b|template\b|class\b|struct\b)"
                             r"[\w:.\->\[\]]+(?:\([^;{}]*\)|[ ]?[-+|&]?=[^;{}=][^;{}]*|\+\+|--)[\w.\->()\[\] ,]*;)"
                             r"[ \t]*$", plain, re.M):
        if re.match(r"[\w:<>]+[&*]? \w+", match.group(1)):
            continue
        add(match, ";", "dropped statement", 1)
    for match in re.finditer(r"\(([\w.:]+), ([\w.:]+)\)", plain):
        if match.group(1) != match.group(2):
            add(match, f"({match.group(2)}, {match.group(1)})", "swapped arguments")
    return found


class Copy:
    """The copy of the tree, its build and its tests."""

    def __init__(self, folder):
        self.tree = folder / "tree"
        self.build = folder / "build"
        self.tests = {}

    def refresh(self):
        files = subprocess.check_output(["git", "ls-files", "-z"], cwd=ROOT, text=True).split("\0")
        for name in filter(None, files):
            source, target = ROOT / name, self.tree / name
            if not source.is_file():
                continue
            target.parent.mkdir(parents=True, exist_ok=True)
            if not target.exists() or target.read_bytes() != source.read_bytes():
                shutil.copyfile(source, target)
                shutil.copymode(source, target)

    def configure(self):
        command = ["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                   "-DCMAKE_CXX_FLAGS_DEBUG=-O1", "-DKVPLANDATA_BUILD_BENCHMARKS=OFF", "-DKVPLANDATA_BUILD_HOSTS=OFF"]
        if shutil.which("ccache"):
            command.append("-DCMAKE_CXX_COMPILER_LAUNCHER=ccache")
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
        # From CTest's own files, as it names no command of a program that is not built yet.
        for listing in sorted(self.build.rglob("CTestTestfile.cmake")):
            self.read_tests(listing.read_text(encoding="utf-8"))

    def read_tests(self, listing):
        for name, command in re.findall(r'^add_test\((\S+) (".*")\)$', listing, re.M):
            name = name.strip("[=]\"")
            room, arguments = name.split("_")[0], re.findall(r'"([^"]*)"', command)
            if room in ROOMS + ("fuzz",) and any(part.startswith(str(self.build)) for part in arguments):
                self.tests[name] = (room, arguments, dict(os.environ))
        for name, value in re.findall(r'^set_tests_properties\((\S+) PROPERTIES .*?ENVIRONMENT "(.*?)(?<!\\)"', listing,
                                      re.M):
            name = name.strip("[=]\"")
            if name in self.tests:
                self.tests[name][2].update(variable.split("=", 1) for variable in value.split(";"))

    def program(self, name):
        command = self.tests[name][1]
        for part in command:
            if part.startswith(str(self.build)):
                return str(pathlib.Path(part).relative_to(self.build))
        raise LookupError(name)

    def make(self, targets):
        done = subprocess.run(["ninja", "-C", self.build, "-j2", *targets], capture_output=True, text=True)
        return done.returncode == 0

    def passes(self, name, seconds):
        _, command, environment = self.tests[name]
        process = subprocess.Popen(command, env=environment, cwd=self.build, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True)
        try:
            return process.wait(seconds) == 0
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.wait()
            return False


def room_of(name):
    return pathlib.PurePath(name).parts[1]


def difference(edit):
    source = (ROOT / edit.file).read_text(encoding="utf-8")
    changed = source[:edit.at] + edit.text + source[edit.at + edit.length:]
    lines = difflib.unified_diff(source.splitlines(), changed.splitlines(), edit.file, edit.kind, n=1, lineterm="")
    return "\n".join(lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=300, help="how many mistakes have to compile")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/mutate")
    parser.add_argument("--only", default="src", help="a file or folder of src")
    options = parser.parse_args()

    files = sorted(path for path in (ROOT / "src").rglob("*") if path.suffix in (".cpp", ".h"))
    edits = [edit for path in files if str(path.relative_to(ROOT)).startswith(options.only) for edit in edits_of(path)]
    random.Random(options.seed).shuffle(edits)
    hashes = {edit.file: hashlib.sha1((ROOT / edit.file).read_bytes()).hexdigest() for edit in edits}

    copy = Copy(options.build.resolve())
    copy.build.mkdir(parents=True, exist_ok=True)
    kept = options.build / "results.jsonl"
    known = {}
    if kept.exists():
        for line in kept.read_text().splitlines():
            entry = json.loads(line)
            known[entry["key"]] = entry

    copy.refresh()
    copy.configure()
    durations = {}

    def ready(names):
        """Builds these tests and sees them pass as things are."""
        names = [name for name in names if name not in durations]
        if not names:
            return
        if not copy.make(sorted({copy.program(name) for name in names})):
            sys.exit("mutate: the copy does not build; try ./dev test")
        for name in names:
            start = time.monotonic()
            if not copy.passes(name, 300):
                sys.exit(f"mutate: {name} fails without any mistake; try ./dev test -R {name}")
            durations[name] = time.monotonic() - start

    def keep(entry):
        known[entry["key"]] = entry
        with kept.open("a") as log:
            log.write(json.dumps(entry) + "\n")

    def show(number, entry):
        print(f"{number}/{options.count} {entry['outcome']}: {entry['edit']['kind']} in {entry['edit']['file']}",
              file=sys.stderr, flush=True)

    # First the tests of the same room, which notice most; then all others, for what is left.
    print(f"{len(edits)} places for mistakes, {len(copy.tests)} tests", file=sys.stderr, flush=True)
    tried = []
    for edit in edits:
        if len(tried) == options.count:
            break
        key = hashlib.sha1(repr((edit, hashes[edit.file])).encode()).hexdigest()
        if key not in known:
            own = [name for name in copy.tests if copy.tests[name][0] == room_of(edit.file)]
            ready(own)
            keep({"key": key, "edit": edit._asdict(), **attempt(copy, edit, own, durations)})
        if known[key]["outcome"] != "does not compile":
            tried.append((edit, key))
            show(len(tried), known[key])
    for number, (edit, key) in enumerate(tried, 1):
        if known[key]["outcome"] != "survived its room":
            continue
        others = [name for name in copy.tests if copy.tests[name][0] != room_of(edit.file)]
        ready(others)
        entry = {"key": key, "edit": edit._asdict(), **attempt(copy, edit, others, durations)}
        if entry["outcome"] == "survived its room":
            entry["outcome"] = "survived"
        keep(entry)
        show(number, entry)

    survivors = [edit for edit, key in tried if known[key]["outcome"] != "noticed"]
    for edit in survivors:
        print(difference(edit), end="\n\n")
    noticed = len(tried) - len(survivors)
    print(f"noticed: {noticed} of {len(tried)} ({100 * noticed / max(1, len(tried)):.1f} %)")
    return 0


def attempt(copy, edit, tests, durations):
    target = copy.tree / edit.file
    original = target.read_text(encoding="utf-8")
    try:
        target.write_text(original[:edit.at] + edit.text + original[edit.at + edit.length:], encoding="utf-8")
        if not copy.make(["KvPlanDataObjects"]):
            return {"outcome": "does not compile"}
        for name in sorted(tests, key=durations.get):  # the quick ones first
            if not copy.make([copy.program(name)]):
                return {"outcome": "does not compile"}  # or does not link
            if not copy.passes(name, max(10.0, 8 * durations[name])):
                return {"outcome": "noticed", "by": name}
        return {"outcome": "survived its room"}
    finally:
        target.write_text(original, encoding="utf-8")


if __name__ == "__main__":
    sys.exit(main())
