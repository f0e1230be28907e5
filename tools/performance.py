#!/usr/bin/env python3
"""What a run of the benchmarks measured, as their programs wrote it to a file: compared with the ratios that are
kept, or written into the page about performance.

    tools/performance.py check RATIOS KEPT        one line a ratio; fails past a limit or at 15 % worse
    tools/performance.py page RATIOS KEPT PAGE    the figures into the page, and the ratios to keep

A ratio's limit is its target or, where measurements prove that the target cannot be met, its bound; that the target is
missed is told all the same.
"""
import datetime
import pathlib
import platform
import re
import subprocess
import sys

WORSE = 1.15


def read(path):
    """The lines of a file of ratios: (program, title) to (ratio, target, bound); 0: none."""
    found = {}
    for line in pathlib.Path(path).read_text(encoding="utf-8").splitlines():
        program, title, *figures = line.split("\t")
        found[program, title] = tuple(float(figure) for figure in figures)
    return found


def check(ratios, kept):
    failures = 0
    missed = 0
    for key, (ratio, target, bound) in ratios.items():
        before = kept.get(key, (0, 0, 0))[0]
        verdict = ""
        if bound and ratio > bound:
            verdict = "PAST THE BOUND"
        elif target and not bound and ratio > target:
            verdict = "PAST THE TARGET"
        elif before and ratio > before * WORSE:
            verdict = "WORSE"
        failures += bool(verdict)
        if target and ratio > target:
            missed += 1
            verdict = verdict or "target missed"
        print(f"{key[0]:<15} {key[1]:<60} {ratio:8.2f}  kept {before:8.2f}"
              f"  target {target or '-':>5}  bound {bound or '-':>5}  {verdict}".rstrip())
    for key in kept.keys() - ratios.keys():
        print(f"{key[0]:<15} {key[1]:<60} not measured")
    print(f"{len(ratios)} ratios, {failures} not as they should be, {missed} past their target")
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
    today = datetime.datetime.now(datetime.timezone.utc).date()
    return "\n".join([
        f"- measured on {today.isoformat()}, commit {output('git', 'rev-parse', '--short', 'HEAD')}",
        f"- {processor.group(1) if processor else platform.machine()}, {len(output('nproc')) and output('nproc')}"
        f" processors, {int(memory.group(1)) // 1048576} GiB",
        f"- {platform.system()} {platform.release().split('-')[0]}, " + ", ".join(versions),
    ])


def row(title, ratio, target, bound):
    missed = " (missed)" if target and ratio > target else ""
    return f"| {title} | {ratio:.2f} | {f'{target:g}' + missed if target else '-'} | {f'{bound:.3g}' if bound else '-'} |"


def table(ratios, program):
    rows = ["| ratio | measured | target | bound |", "|---|---:|---:|---:|"]
    return "\n".join(rows + [row(title, *figures) for (name, title), figures in ratios.items() if name == program])


def growth(ratios):
    rows = ["| operation | exponent | target | bound |", "|---|---:|---:|---:|"]
    return "\n".join(rows + [row(title[8:], *figures) for (_, title), figures in ratios.items()
                             if title.startswith("growth, ")])


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
    lines = [f"{program}\t{title}\t{ratio:.4g}\t{target:g}\t{bound:g}\n"
             for (program, title), (ratio, target, bound) in ratios.items()]
    kept.write_text("".join(lines), encoding="utf-8")
    return page(ratios, sys.argv[4])


if __name__ == "__main__":
    sys.exit(main())
