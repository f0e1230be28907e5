#!/usr/bin/env python3
"""Every message that a person can meet stands in the catalogue, and nothing else does.

    check-messages.py SOURCE-DIRECTORY docs/errors.md not-errors.txt

Messages are the texts of the programs' sources that begin like a sentence in small letters and have four words at
least; help begins with a capital letter. In windows, where labels begin with one too, they are the translated texts that
end like a sentence. What is none all the same stands in not-errors.txt, one a line. Of either
list, what the sources no longer have is a fault too. Placeholders read as an ellipsis.
"""

import pathlib
import re
import sys

FOLDERS = ["backend", "hosts", "platform/network"]
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
TRANSLATED = re.compile(r'\b(?:tr|translate|QT_TR_NOOP|QT_TRANSLATE_NOOP)\(\s*(?:"\w+",\s*)?"((?:[^"\\\n]|\\.)*)"')
SQL = re.compile(r"\b(SELECT|CASE|WHEN|EXISTS|INSERT|UPDATE|DELETE|CREATE|WHERE|ORDER BY|PRAGMA|BEGIN|ALTER|AND|OR|NOT|"
                 r"CAST|json_\w+|coalesce|nullif|iif|substr|count)\b\s*[('A-Za-z%]|\b(IS NULL|NULLS FIRST)\b")


def readable(literal):
    text = re.sub(r"\\n|\\t|\\r", " ", literal)
    text = re.sub(r"\\(.)", r"\1", text)
    text = re.sub(r"%L?[1-9](?!\d)|%[sdn]\b", "…", text)
    return " ".join(text.split()).strip(" ;:,.")


def is_message(text):
    if not re.match(r"[a-z'\"…(-]", text) or "=" in text.split(" ")[0] or SQL.search(text):
        return False
    if text.startswith(("yyyy", "http", "Content")) or "::" in text:
        return False
    return len(re.findall(r"[A-Za-z]{2,}|\ba\b", text)) >= 4 and len(text.split()) >= 4


def is_sentence(literal):
    return literal.endswith((".", "?")) and " " in literal


def messages(root):
    found = {}
    for folder in FOLDERS:
        for file in sorted((root / folder).rglob("*.cpp")):
            source = re.sub(r"^\s*//.*$|^#include.*$", "", file.read_text(encoding="utf-8"), flags=re.M)
            source = re.sub(r'"_s\b', '"', source)
            source = re.sub(r'(?<!\\)"\s*\n\s*"', "", source)  # texts that go on in the next line
            for literal in LITERAL.findall(source):
                text = readable(literal)
                if is_message(text):
                    found.setdefault(text, file.relative_to(root))
            for literal in filter(is_sentence, TRANSLATED.findall(source)):
                found.setdefault(readable(literal), file.relative_to(root))
    return found


def main():
    root, catalogue, others = (pathlib.Path(argument) for argument in sys.argv[1:4])
    found = messages(root)
    told = set()
    for row in catalogue.read_text(encoding="utf-8").splitlines():
        if row.startswith("| `"):
            cell = row.split(" | ")[0][2:]
            told.update(" ".join(text.split()) for text in re.findall(r"`+([^`]+)`+", cell))
    exempt = {line for line in others.read_text(encoding="utf-8").splitlines() if line}
    faults = [f"{file}: \"{text}\" is neither in {catalogue.name} nor in {others.name}"
              for text, file in sorted(found.items(), key=lambda item: str(item[1])) if text not in told | exempt]
    faults += [f"{catalogue.name}: no source has \"{text}\"" for text in sorted(told - set(found))]
    faults += [f"{others.name}: no source has \"{text}\"" for text in sorted(exempt - set(found))]
    faults += [f"\"{text}\" is an error in {catalogue.name} and none in {others.name}" for text in sorted(told & exempt)]
    if not found:
        faults.append("no message was found at all")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
