"""Refuses includes that point against the direction of dependencies.

tools, python, examples -> extras -> core, unicode -> format -> host
tools, python, examples -> files

Private headers are those that cmake/public_headers.txt does not list. Only their own part, tests,
fuzzers and benchmarks may include them; core/ and extras/ may also include those of format/. Run
this from the repository root. It prints each fault and fails if there is one.
"""

import pathlib
import re
import sys

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"')

COMMON = {"numera/export.h", "numera/version.h", "numera/arrow_version.h"}
HOST_INTERFACE = {
    f"numera/host/{name}.h"
    for name in ("array", "bound_host", "string_array", "text_codec", "message_id_exception")
}

# Each part: the prefix of its files, then the prefixes whose public headers it may include. The
# first prefix that matches a file decides.
PARTS = [
    ("numera/host/memory/", ["numera/host/"]),
    ("numera/host/", ["numera/host/"]),
    ("numera/format/", ["interface"]),
    ("numera/core/", ["interface", "numera/format/"]),
    ("numera/unicode/", ["interface"]),
    ("numera/extras/", ["numera/core/", "numera/unicode/", "numera/format/", "numera/host/"]),
    ("numera/files/", []),
    ("numera/", ["numera/"]),
    ("tools/", ["numera/"]),
    ("python/", ["numera/"]),
    ("examples/", ["numera/"]),
    ("benchmarks/", ["numera/", "tests/"]),
    ("fuzz/", ["numera/", "tests/"]),
    ("tests/", ["numera/", "tests/"]),
]


def part_of(path):
    return next(((prefix, targets) for prefix, targets in PARTS if path.startswith(prefix)), None)


def is_allowed(path, included, public):
    """Whether the file at `path` may include `included`; both are relative to the root."""
    prefix, targets = part_of(path)
    if included in COMMON or path.startswith(("tests/", "fuzz/", "benchmarks/")):
        return part_of(included) is not None
    if part_of(included) == (prefix, targets):
        return True
    if "interface" in targets and included in HOST_INTERFACE:
        return True
    if included.startswith("numera/format/"):
        return "numera/format/" in targets
    if included.startswith("tests/support/"):
        return "tests/support/" in targets
    return included in public and any(included.startswith(target) for target in targets)


def faults(root):
    """Yields "file:line: text" for every include that is not allowed."""
    public = set((root / "cmake/public_headers.txt").read_text().split())
    folders = sorted({prefix.split("/")[0] for prefix, _ in PARTS})
    files = [file for folder in folders for file in sorted((root / folder).rglob("*"))]
    for file in (file for file in files if file.suffix in (".h", ".cc")):
        path = file.relative_to(root).as_posix()
        for number, line in enumerate(file.read_text().splitlines(), start=1):
            match = INCLUDE.match(line)
            if match and not is_allowed(path, match[1], public):
                yield f"{path}:{number}: may not include {match[1]}"


if __name__ == "__main__":
    found = list(faults(pathlib.Path.cwd()))
    print(*found, sep="\n", end="\n" if found else "")
    sys.exit(1 if found else 0)
