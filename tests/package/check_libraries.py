"""Checks what the installed libraries export and need.

usage: check_libraries.py LIBRARY_FOLDER
"""

import pathlib
import re
import subprocess
import sys

# A name of the namespaces numera and NUMERA, or of the host interface; before it the return type
# of a template.
PUBLIC_NAME = re.compile(
    r"(typeinfo (name )?for |vtable for |VTT for )?"
    r"(numera::|NUMERA::|hx[A-Z]|MessageIdException)"
    r"|arrow::Result<.*> numera::"
    r"|NR(Initialize|Terminate)_ArrowCoreModule$"
)


def names(library, *options):
    output = subprocess.run(
        ["nm", "-D", "-C", *options, library], check=True, capture_output=True, text=True
    ).stdout
    return [re.sub(r"^[0-9a-f ]*\s\w ", "", line) for line in output.splitlines()]


def needed(library):
    output = subprocess.run(
        ["readelf", "-d", library], check=True, capture_output=True, text=True
    ).stdout
    return re.findall(r"\(NEEDED\).*\[(.*)\]", output)


def faults(folder):
    for part in ("arrow", "host", "extras"):
        library = folder / f"libnumera_{part}.so"
        exported = names(library, "--defined-only")
        if not exported:
            yield f"{library.name} exports nothing"
        for name in exported:
            if not PUBLIC_NAME.match(name):
                yield f"{library.name} exports {name}"
    for part in ("arrow", "extras"):
        library = folder / f"libnumera_{part}.so"
        undefined = names(library, "--undefined-only")
        if not any(name.startswith("hx") for name in undefined):
            yield f"{library.name} leaves no operation of the host undefined"
        for name in undefined:
            if name.startswith("numera::host::"):
                yield f"{library.name} runs on no host but the one that has {name}"
        for name in names(library, "--defined-only"):
            if re.match(r"hx(Create|Get|Set|Is|Make|Destroy|Error|Throw)\w*\(", name):
                yield f"{library.name} defines the host's {name}"
        if any("numera_host" in name for name in needed(library)):
            yield f"{library.name} needs a host library"


if __name__ == "__main__":
    found = list(faults(pathlib.Path(sys.argv[1])))
    print(*found, sep="\n", end="\n" if found else "")
    sys.exit(1 if found else 0)
