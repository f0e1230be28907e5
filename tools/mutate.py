#!/usr/bin/env python3
"""Checks the tests by small mistakes made on purpose: each is put into src, one at a time, in a copy of the
tree, and the tests have to notice it. Mistakes that do not compile do not count. What was tried is kept, so
that a run that is broken off goes on where it was; a changed source file is tried anew.

    tools/mutate.py [--count 300] [--seed 1] [--build build/mutate] [--only src/model] [--jobs 2] [--again]
"""
import argparse
import collections
import contextlib
import difflib
import hashlib
import json
import os
import pathlib
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROOMS = ("model", "service", "plandata", "setting")

LIBRARIES = ["KvPlanDataObjects", "KvPlanData"]

# In the copies the objects are a library of their own, so that a mistake is linked once and not into every test.
OBJECTS_AS_LIBRARY = b"""
set_target_properties(KvPlanDataObjects PROPERTIES CXX_VISIBILITY_PRESET default VISIBILITY_INLINES_HIDDEN OFF)
"""

# Hints to the processor and to the allocator: what they change nobody can see, however wrong they are.
HINT = re.compile(r"^[^\n;]*\bfetch\w*\([^\n;]*\n\{.*?^\}|^[^\n]*(?:\breserve\(|\bfetch\w*\(|\bFetchCount\b)[^\n]*", re.S | re.M)

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
    hints = [match.span() for match in HINT.finditer(plain)]

    def add(match, replacement, kind, group=0):
        if any(begin <= match.start() < end for begin, end in hints):
            return
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
    """A copy of the tree, its build and its tests. Each worker has one of its own."""

    def __init__(self, folder):
        self.tree = folder / "tree"
        self.build = folder / "build"
        self.tests = {}
        self.passed = folder / "passed.json"
        self.made = set()  # programs that stand as things are
        self.commands = {}  # that make a target
        self.durations = {}  # seconds of processor and of clock, of the tests that passed as things are

    def refresh(self):
        files = subprocess.check_output(["git", "ls-files", "-z"], cwd=ROOT, text=True).split("\0")
        whole = hashlib.sha1()
        for name in filter(None, files):
            source, target = ROOT / name, self.tree / name
            if not source.is_file():
                continue
            content = source.read_bytes()
            if name == "src/CMakeLists.txt":
                content += OBJECTS_AS_LIBRARY
                content = content.replace(b"add_library(KvPlanDataObjects OBJECT", b"add_library(KvPlanDataObjects SHARED")
            if name.partition("/")[0] not in ("docs", "tools"):
                whole.update(content)
            target.parent.mkdir(parents=True, exist_ok=True)
            if not target.exists() or target.read_bytes() != content:
                target.write_bytes(content)
                shutil.copymode(source, target)
        self.state = whole.hexdigest()
        if self.passed.exists():
            self.durations = json.loads(self.passed.read_text()).get(self.state, {})

    def configure(self):
        self.build.mkdir(parents=True, exist_ok=True)
        linker = " -fuse-ld=lld" if shutil.which("ld.lld") else ""
        command = ["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Debug",
                   "-DKVPLANDATA_BUILD_BENCHMARKS=OFF", "-DKVPLANDATA_BUILD_HOSTS=OFF",
                   # A read beyond a vector's end is a mistake even where what stands there does no harm.
                   "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -D_GLIBCXX_ASSERTIONS",
                   f"-DCMAKE_EXE_LINKER_FLAGS={linker}", f"-DCMAKE_SHARED_LINKER_FLAGS={linker}",
                   "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON"]
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
                self.tests[name] = (room, arguments, {**os.environ, "QTEST_DISABLE_STACK_DUMP": "1"})
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

    def make(self, targets, jobs="-j1"):
        done = subprocess.run(["ninja", "-C", self.build, jobs, *targets], capture_output=True, text=True)
        return done.returncode == 0

    def ready(self, names):
        """Builds these tests and sees them pass as things are."""
        programs = {self.program(name) for name in names} - self.made
        if programs and not self.make(sorted({*LIBRARIES, *programs}), "-j2"):
            raise RuntimeError("the copy does not build; try ./dev test")
        self.made |= programs
        for name in names:
            if name in self.durations:
                continue
            if not self.passes(name):
                raise RuntimeError(f"{name} fails without any mistake; try ./dev test -R {name}")
        self.passed.write_text(json.dumps({self.state: self.durations}))

    def passes(self, name):
        """Whether the test passes, within a multiple of what it took as things are."""
        # Twice, so that no test counts that fails now and then on a busy machine.
        status = self.run(name)
        return status == 0 or (os.WIFEXITED(status) and self.run(name) == 0)

    def run(self, name):
        _, command, environment = self.tests[name]
        processor, clock = self.durations.get(name, (60, 120))
        # Processor time where that ends it: a busy machine makes the clock go further.
        most = max(3, int(5 * processor) + 1)
        start = time.monotonic()
        process = subprocess.Popen(command, env=environment, cwd=self.build, stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, start_new_session=True,
                                   preexec_fn=lambda: limit(most))
        ended = threading.Event()
        watch = threading.Thread(target=end_what_hangs, args=(process.pid, max(60, 10 * clock), ended))
        watch.start()
        _, status, usage = os.wait4(process.pid, 0)
        ended.set()
        watch.join()
        process.returncode = status
        if status == 0:
            self.durations.setdefault(name, (usage.ru_utime + usage.ru_stime, time.monotonic() - start))
        return status

    def attempt(self, edit, tests):
        if edit.file.endswith(".h"):
            return self.attempt_in_header(edit, tests)
        # Past the build system, which would look at the whole tree before and once more after it.
        built = [self.build / object_of(edit.file)]
        built += [(self.build / f"src/lib{name}.so").resolve() for name in LIBRARIES]
        with kept(self.tree / edit.file, *built):
            self.change(edit)
            if not all(self.command(file) for file in built):
                return {"outcome": "does not compile"}
            return self.first_to_notice(tests)

    def attempt_in_header(self, edit, tests):
        """What a header says has its way into the tests too."""
        touched = set()

        def is_made(name):
            touched.add(self.program(name))
            return self.make([self.program(name)])

        with kept(self.tree / edit.file):
            self.change(edit)
            result = self.first_to_notice(tests, is_made) if self.make(LIBRARIES) else {"outcome": "does not compile"}
        os.utime(self.tree / edit.file)
        if not self.make([*LIBRARIES, *touched], "-j2"):
            raise RuntimeError(f"the copy does not build after {edit}")
        return result

    def change(self, edit):
        target = self.tree / edit.file
        text = target.read_text(encoding="utf-8")
        target.write_text(text[:edit.at] + edit.text + text[edit.at + edit.length:], encoding="utf-8")

    def command(self, file):
        """Makes one target by its own command."""
        if file not in self.commands:
            lines = subprocess.check_output(["ninja", "-C", self.build, "-t", "commands", file.relative_to(self.build)],
                                            text=True).splitlines()
            self.commands[file] = next(line for line in reversed(lines) if f" -o {file.relative_to(self.build)}" in line)
        return subprocess.run(self.commands[file], shell=True, cwd=self.build, capture_output=True,
                              env={**os.environ, "CCACHE_DISABLE": "1"}).returncode == 0

    def first_to_notice(self, tests, is_made=lambda name: True):
        for name in tests:
            if not is_made(name):
                return {"outcome": "does not compile"}
            if not self.passes(name):
                return {"outcome": "noticed", "by": name}
        return {"outcome": "survived"}


@contextlib.contextmanager
def kept(*files):
    """Puts the files back as they were, times included."""
    with tempfile.TemporaryDirectory() as folder:
        copies = [(file, os.path.join(folder, str(number))) for number, file in enumerate(files)]
        for file, copy in copies:
            shutil.copy2(file, copy)
        try:
            yield
        finally:
            for file, copy in reversed(copies):  # the source last: should this be cut off, it is still seen to differ
                shutil.copy2(copy, file)


def object_of(source):
    return f"src/CMakeFiles/KvPlanDataObjects.dir/{pathlib.PurePath(source).relative_to('src')}.o"


def end_what_hangs(pid, seconds, ended):
    """Kills the process and its like after so many seconds, or 45 in which it asked for no processor time."""
    used, idle, begin = None, time.monotonic(), time.monotonic()
    while not ended.wait(3):
        now = time.monotonic()
        try:
            fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
        except OSError:
            continue
        if fields[11:13] != used or fields[0] == "R":
            used, idle = fields[11:13], now
        if now > begin + seconds or now > idle + 45:
            os.killpg(pid, signal.SIGKILL)
            return


def limit(seconds):
    resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
    resource.setrlimit(resource.RLIMIT_DATA, (6 << 30, 6 << 30))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


class Record:
    """What was tried, kept in a file of one line an attempt."""

    def __init__(self, file):
        self.file = file
        self.lock = threading.Lock()
        self.known = {}
        self.notices = collections.Counter()  # by file and test
        if file.exists():
            for line in file.read_text().splitlines():
                self.take(json.loads(line))

    def take(self, entry):
        self.known[entry["key"]] = entry
        if entry["outcome"] == "noticed":
            self.notices[entry["edit"]["file"], entry["by"]] += 1

    def keep(self, entry):
        with self.lock:
            self.take(entry)
            with self.file.open("a") as log:
                log.write(json.dumps(entry) + "\n")

    def forget_survivors(self):
        self.known = {key: entry for key, entry in self.known.items() if not entry["outcome"].startswith("survived")}

    def outcome(self, key):
        return self.known[key]["outcome"] if key in self.known else None

    def most_telling(self, copy, edit, tests):
        """First what noticed most mistakes in this file, then the quick ones."""
        return sorted(tests, key=lambda name: (-self.notices[edit.file, name], copy.durations[name][0]))


def room_of(name):
    return pathlib.PurePath(name).parts[1]


def difference(edit):
    source = (ROOT / edit.file).read_text(encoding="utf-8")
    changed = source[:edit.at] + edit.text + source[edit.at + edit.length:]
    lines = difflib.unified_diff(source.splitlines(), changed.splitlines(), edit.file, edit.kind, n=1, lineterm="")
    return "\n".join(lines)


def drawn(edits, seed):
    """The edits in an order that is given by the seed; a change of one file moves no edits of the others."""
    seen, order = collections.Counter(), []
    for edit in edits:
        source = (ROOT / edit.file).read_text(encoding="utf-8")
        begin, end = source.rfind("\n", 0, edit.at) + 1, source.find("\n", edit.at)
        line = (edit.file, edit.kind, edit.text, source[begin:end].strip())
        seen[line] += 1
        order.append((hashlib.sha1(repr((seed, line, seen[line])).encode()).hexdigest(), edit))
    return [edit for _, edit in sorted(order)]


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--count", type=int, default=300, help="how many mistakes have to compile")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--build", type=pathlib.Path, default=ROOT / "build/mutate")
    parser.add_argument("--only", default="src", help="a file or folder of src")
    parser.add_argument("--again", action="store_true", help="try once more what no test noticed")
    parser.add_argument("--jobs", type=int, default=2, help="how many mistakes at a time")
    options = parser.parse_args()

    files = sorted(path for path in (ROOT / "src").rglob("*") if path.suffix in (".cpp", ".h"))
    edits = [edit for path in files if str(path.relative_to(ROOT)).startswith(options.only) for edit in edits_of(path)]
    edits = drawn(edits, options.seed)
    hashes = {edit.file: hashlib.sha1((ROOT / edit.file).read_bytes()).hexdigest() for edit in edits}
    keys = [hashlib.sha1(repr((edit, hashes[edit.file])).encode()).hexdigest() for edit in edits]

    build = options.build.resolve()
    build.mkdir(parents=True, exist_ok=True)
    record = Record(build / "results.jsonl")
    if options.again:
        record.forget_survivors()
    copies = [Copy(build / str(number)) for number in range(options.jobs)]
    for copy in copies:
        copy.refresh()
        copy.configure()
    print(f"{len(edits)} places for mistakes, {len(copies[0].tests)} tests", file=sys.stderr, flush=True)

    def in_all_copies(work, numbers):
        """Each copy takes the next number until there is none left or one fails."""
        waiting, taking, failures = iter(numbers), threading.Lock(), []

        def run(copy):
            try:
                while not failures:
                    with taking:
                        number = next(waiting, None)
                    if number is None:
                        return
                    entry = {"key": keys[number], "edit": edits[number]._asdict(), **work(copy, edits[number])}
                    record.keep(entry)
                    print(f"{number + 1} {entry['outcome']} {entry.get('by', '')}: {edits[number].kind} in "
                          f"{edits[number].file}", file=sys.stderr, flush=True)
            except Exception as failure:  # told below, when the others have finished theirs
                failures.append(failure)

        workers = [threading.Thread(target=run, args=(copy,)) for copy in copies]
        for worker in workers:
            worker.start()
        for worker in workers:
            worker.join()
        if failures:
            sys.exit(f"mutate: {failures[0]}")

    # First the tests of the same room, which notice most; then all others, for what is left.
    def by_own_room(copy, edit):
        return by_tests(copy, edit, lambda room: room == room_of(edit.file), "survived its room")

    def by_others(copy, edit):
        return by_tests(copy, edit, lambda room: room != room_of(edit.file), "survived")

    def by_tests(copy, edit, is_room, otherwise):
        tests = [name for name in copy.tests if is_room(copy.tests[name][0])]
        copy.ready(tests)
        result = copy.attempt(edit, record.most_telling(copy, edit, tests))
        return {**result, "outcome": otherwise} if result["outcome"] == "survived" else result

    def compiling():
        """The numbers of the first edits that compile."""
        numbers = [n for n, key in enumerate(keys) if record.outcome(key) not in (None, "does not compile")]
        return numbers[:options.count]

    def untried():
        """Of the first ones until enough of them compile; those in headers last, as they make tests anew."""
        given = set()
        while True:
            enough, waiting = 0, []
            for number, key in enumerate(keys):
                if enough == options.count:
                    break
                if record.outcome(key) != "does not compile":
                    enough += 1
                    if record.outcome(key) is None and number not in given:
                        waiting.append(number)
            if not waiting:
                return
            number = min(waiting, key=lambda n: (edits[n].file.endswith(".h"), n))
            given.add(number)
            yield number

    in_all_copies(by_own_room, untried())
    in_all_copies(by_others, [n for n in compiling() if record.outcome(keys[n]) == "survived its room"])

    tried = compiling()
    survivors = [n for n in tried if record.outcome(keys[n]) != "noticed"]
    for number in survivors:
        print(difference(edits[number]), end="\n\n")
    noticed = len(tried) - len(survivors)
    print(f"noticed: {noticed} of {len(tried)} ({100 * noticed / max(1, len(tried)):.1f} %)")
    return 0


if __name__ == "__main__":
    sys.exit(main())
