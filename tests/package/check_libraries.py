"""Checks what the installed libraries export and need, and that they and the program are hardened.

usage: check_libraries.py [--write] LIBRARY_FOLDER

The exported names are listed in exported_names.txt beside this file, and the names that a host must
supply in host_names.txt. A new or missing name changes what users link against or what their hosts
lack, so it must be intended. --write writes the lists anew.
"""

import pathlib
import platform
import re
import subprocess
import sys

EXPORTED = pathlib.Path(__file__).with_name("exported_names.txt")
OF_HOST = pathlib.Path(__file__).with_name("host_names.txt")
BOUND_HOST = pathlib.Path(__file__).parents[2] / "numera/core/util/bound_host.cc"
PARTS = ("arrow", "host", "extras", "files")
PARTS_ON_A_HOST = ("arrow", "extras")


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def names(library, *options):
    lines = output_of("nm", "-D", "-C", *options, library).splitlines()
    return [re.sub(r"^[0-9a-f ]*\s\w ", "", line) for line in lines]


def exported(folder):
    return {
        f"{part}: {name}"
        for part in PARTS
        for name in names(folder / f"libnumera_{part}.so", "--defined-only")
    }


def needed_of_host(folder):
    return {
        f"{part}: {name}"
        for part in PARTS_ON_A_HOST
        for name in names(folder / f"libnumera_{part}.so", "--undefined-only")
        if name.startswith("hx")
    }


def faults_of_list(path, found, what):
    listed = set(path.read_text().splitlines())
    yield from (f"{what}, but not listed: {name}" for name in sorted(found - listed))
    yield from (f"listed, but not {what}: {name}" for name in sorted(listed - found))


def faults_of_host_names(folder):
    for part in PARTS_ON_A_HOST:
        library = folder / f"libnumera_{part}.so"
        for name in names(library, "--undefined-only"):
            if name.startswith("numera::host::"):
                yield f"{library.name} runs on no host but the one that has {name}"
        for name in names(library, "--defined-only"):
            if re.match(r"hx(Create|Get|Set|Is|Make|Destroy|Error|Throw)\w*\(", name):
                yield f"{library.name} defines the host's {name}"
        if re.search(r"\(NEEDED\).*numera_host", output_of("readelf", "-d", library)):
            yield f"{library.name} needs a host library"


def faults_of_bound_host(folder):
    """other_host asks for every function that libnumera_arrow needs, but for what has no address."""
    asked = re.findall(r"address_of(?:<.*>)?\(&?([\w:]+)\),", BOUND_HOST.read_text())
    needed = [re.match(r"arrow: ((\w+)(?:::(~?\w+))?)", name).groups()
              for name in needed_of_host(folder) if name.startswith("arrow: ")]
    needed = sorted(name for name, owner, member in needed
                    if member is None or member.lstrip("~") != owner)
    if sorted(asked) != needed:
        yield f"{BOUND_HOST.name} asks for {sorted(asked)}, but needed are {needed}"


def faults_of_hardening(binary):
    dynamic = output_of("readelf", "-d", binary)
    segments = output_of("readelf", "-lW", binary)
    if not re.search(r"BIND_NOW|\bNOW\b", dynamic):
        yield f"{binary.name} binds names late"
    if "GNU_RELRO" not in segments:
        yield f"{binary.name} has no tables that become read-only"
    if re.search(r"GNU_STACK.*RWE", segments):
        yield f"{binary.name} has an executable stack"
    undefined = " ".join(names(binary, "--undefined-only"))
    if "__stack_chk_fail" not in undefined:
        yield f"{binary.name} does not guard its stack"
    if platform.machine() == "x86_64":
        # Looks for the instruction itself. A property of the whole file would need start files that
        # have it, and those of Debian's C library do not.
        if "endbr64" not in output_of("objdump", "-d", "--no-show-raw-insn", binary):
            yield f"{binary.name} does not guard its jumps"


def program_beside(folder):
    found = [parent / "bin" / "numera-arrow" for parent in folder.parents]
    return next(path for path in found if path.exists())


def faults(folder):
    yield from faults_of_list(EXPORTED, exported(folder), "exported")
    yield from faults_of_list(OF_HOST, needed_of_host(folder), "needed of the host")
    yield from faults_of_host_names(folder)
    yield from faults_of_bound_host(folder)
    for part in PARTS:
        yield from faults_of_hardening(folder / f"libnumera_{part}.so")
    yield from faults_of_hardening(program_beside(folder))


if __name__ == "__main__":
    folder = pathlib.Path(sys.argv[-1])
    if "--write" in sys.argv:
        for path, found in ((EXPORTED, exported(folder)), (OF_HOST, needed_of_host(folder))):
            path.write_text("".join(f"{name}\n" for name in sorted(found)))
    found = list(faults(folder))
    print(*found, sep="\n", end="\n" if found else "")
    sys.exit(1 if found else 0)
