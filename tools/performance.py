#!/usr/bin/env python3
"""What a run of the benchmarks measured, as their programs wrote it to a file: compared with the ratios that are
kept, or written into the page about performance.

    tools/performance.py check RATIOS KEPT        one line a ratio; fails past a limit or at 15 % worse
    tools/performance.py page RATIOS KEPT PAGE    the figures into the page, and the ratios to keep
"""
import datetime
import pathlib
import platform
import re
import subprocess
import sys

WORSE = 1.15


def read(path):
    """The lines of a file of ratios: (program, title) to (ratio, limit); 0: no limit."""
    found = {}
    for line in pathlib.Path(path).read_text(encoding="utf-8").splitlines():
        program, title, ratio, limit = line.split("\t")
        found[program, title] = float(ratio), float(limit)
    return found


def check(ratios, kept):
    failures = 0
    for key, (ratio, limit) in ratios.items():
        before = kept.get(key, (0, 0))[0]
        verdict = ""
        if limit and ratio > limit:
            verdict = "PAST THE LIMIT"
        elif before and ratio > before * WORSE:
            verdict = "WORSE"
        failures += bool(verdict)
        print(f"{key[0]:<15} {key[1]:<60} {ratio:8.2f}  kept {before:8.2f}"
              f"  limit {limit or '-':>5}  {verdict}".rstrip())
    for key in kept.keys() - ratios.keys():
        print(f"{key[0]:<15} {key[1]:<60} not measured")
    print(f"{len(ratios)} ratios, {failures} not as they should be")
    return 1 if failures else 0


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout.strip()


def machine():
    processor = re.search(r"Model name:\s*(.*)", output("lscpu"))
    memory = re.search(r"MemTotal:\s*(\d+)", pathlib.Path("/proc/meminfo").read_text(encoding="ascii"))
    versions = [
        output("g++", "--version").split("\n")[0],
        "Qt " + output("qmake", "-qt5", "-v").split("Using Qt version ")[-1].split(" ")[0],
    ]
    for package in ("libsimdjson-dev", "nlohmann-json3-dev", "libcurl4-openssl-dev", "libsqlite3-0"):
        versions.append(f"{package} {output('dpkg-query', '-W', '-f', '${Version}', package)}")
    return "\n".join([
        f"- measured on {datetime.date.today().isoformat()}, commit {output('git', 'rev-parse', '--short', 'HEAD')}",
        f"- {processor.group(1) if processor else platform.machine()}, {len(output('nproc')) and output('nproc')}"
        f" processors, {int(memory.group(1)) // 1048576} GiB",
        f"- {platform.system()} {platform.release().split('-')[0]}, " + ", ".join(versions),
    ])


def table(ratios, program):
    rows = ["| ratio | measured | limit |", "|---|---:|---:|"]
    for (name, title), (ratio, limit) in ratios.items():
        if name == program:
            past = " (past it)" if limit and ratio > limit else ""
            rows.append(f"| {title} | {ratio:.2f} | {f'{limit:g}' + past if limit else '-'} |")
    return "\n".join(rows)


def growth(ratios):
    rows = ["| operation | exponent | limit |", "|---|---:|---:|"]
    for (_, title), (ratio, limit) in ratios.items():
        if title.startswith("growth, "):
            rows.append(f"| {title[8:]} | {ratio:.2f} | {limit:g} |")
    return "\n".join(rows)


def page(ratios, path):
    """Replaces what stands between the marks of each block, and tells of programs that have none."""
    text = pathlib.Path(path).read_text(encoding="utf-8")
    blocks = {"machine": machine(), "growth": growth(ratios)}
    plain = {key: figures for key, figures in ratios.items() if not key[1].startswith("growth, ")}
    blocks.update({program: table(plain, program) for program, _ in plain})
    for name, block in blocks.items():
        marks = re.compile(rf"(<!-- {name} -->\n).*?(<!-- end -->)", re.S)
        if not marks.search(text):
            print(f"{path} has no place for the figures of {name}", file=sys.stderr)
            return 1
        text = marks.sub(lambda match, block=block: match.group(1) + block + "\n" + match.group(2), text)
    pathlib.Path(path).write_text(text, encoding="utf-8")
    return 0


def main():
    job, ratios = sys.argv[1], read(sys.argv[2])
    kept = pathlib.Path(sys.argv[3])
    if job == "check":
        return check(ratios, read(kept) if kept.exists() else {})
    lines = [f"{program}\t{title}\t{ratio:.4g}\t{limit:g}\n" for (program, title), (ratio, limit) in ratios.items()]
    kept.write_text("".join(lines), encoding="utf-8")
    return page(ratios, sys.argv[4])


if __name__ == "__main__":
    sys.exit(main())
