"""Refuses the names of encoded fields as literals outside of numera/format/, which states them.

Run from the repository root; prints each fault and fails if there is one.
"""

import pathlib
import re
import sys

NAMES = pathlib.Path("numera/format/names.h")
FIELDS = re.compile(r"\\name Fields\n(.*?)/// @\}", re.DOTALL)
LITERAL = re.compile(r'"([^"\\]*)"')


def field_names(text):
    """The names of fields that names.h states."""
    return set(LITERAL.findall(FIELDS.search(text)[1]))


def faults(text, fields):
    """Yields the number and the name of each literal in C++ text that is a field name."""
    for number, line in enumerate(text.splitlines(), start=1):
        code = line.split("//")[0]
        yield from ((number, name) for name in LITERAL.findall(code) if name in fields)


def main():
    fields = field_names(NAMES.read_text())
    files = [file for file in sorted(pathlib.Path("numera").rglob("*")) if file.suffix in (".h", ".cc")]
    found = [
        f'{file}:{number}: the field "{name}" has a name in {NAMES}'
        for file in files
        if file.parent != NAMES.parent
        for number, name in faults(file.read_text(), fields)
    ]
    print(*found, sep="\n", end="\n" if found else "")
    return bool(found)


if __name__ == "__main__":
    sys.exit(main())
