#!/usr/bin/env python3
"""The requests that the headers' comments name are paths of the service's description.

    check-requests.py docs/openapi.yaml HEADER...
"""

import re
import sys


def pattern(path):
    return re.sub(r"\{[^}]*\}", "{}", path)


def main():
    described, path = set(), None
    with open(sys.argv[1], encoding="utf-8") as file:
        for line in file:
            if found := re.match(r"  (/[^:]+):$", line):
                path = found[1]
            elif path and (found := re.match(r"    (get|put|post|delete):$", line)):
                described.add(found[1].upper() + " " + pattern(path))
    faults, count = [], 0
    for header in sys.argv[2:]:
        with open(header, encoding="utf-8") as file:
            for verb, named in re.findall(r"/// Request: `(\w+) ([^?`]+)[^`]*`", file.read()):
                count += 1
                named = pattern("/" + named).replace("/plan_hideHeader", "/{}")
                if f"{verb} {named}" not in described:
                    faults.append(f"{header}: the service does not describe {verb} {named}")
    if not described or not count:
        faults.append("nothing to compare")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
