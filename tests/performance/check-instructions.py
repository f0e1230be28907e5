#!/usr/bin/env python3
"""Counts the instructions of each operation over the nodes of a plan, and compares them, as ratios to what Qt or
the standard library needs for the like, with those kept.

    check-instructions.py PROGRAM KEPT [--keep]

Fails where a ratio is 15 % worse. Where one is better for good, --keep writes what was counted.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

WORSE = 1.15
RATIOS = {
    "decode": "parse",
    "encode": "write",
    "import": "parse",
    "export": "write",
    "tree": "sort",
    "flat": "sort",
    "compare": "look up",
}


def counted(program):
    with tempfile.TemporaryDirectory() as folder:
        done = subprocess.run(
            ["valgrind", "--tool=callgrind", "--collect-atstart=no", f"--callgrind-out-file={folder}/count", program],
            stderr=subprocess.PIPE, text=True, check=False)
        if done.returncode != 0:
            sys.exit(f"{program} failed:\n{done.stderr}")
        counts = {}
        for dump in pathlib.Path(folder).iterdir():
            text = dump.read_text(encoding="utf-8", errors="replace")
            name = re.search(r"^desc: Trigger: Client Request: (.+)$", text, re.M)
            total = re.search(r"^(?:totals|summary): (\d+)", text, re.M)
            if name and total:
                counts[name.group(1)] = int(total.group(1))
        return counts


def main():
    program, kept_file = sys.argv[1], pathlib.Path(sys.argv[2])
    counts = counted(program)
    measured = {name: counts[name] / counts[reference] for name, reference in RATIOS.items()}
    if "--keep" in sys.argv:
        kept_file.write_text("".join(f"{name}\t{ratio:.3f}\n" for name, ratio in measured.items()), encoding="utf-8")
        return 0
    kept = dict(line.split("\t") for line in kept_file.read_text(encoding="utf-8").splitlines())
    failures = 0
    for name, ratio in measured.items():
        worse = ratio > float(kept[name]) * WORSE
        failures += worse
        print(f"{name:<8} {counts[name]:>12} instructions, {ratio:6.3f} of {RATIOS[name]}, "
              f"kept {float(kept[name]):6.3f}{'  WORSE' if worse else ''}")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
