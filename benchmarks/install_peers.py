"""Installs the packages of requirements.txt one by one, so that a missing one stops no other."""

import pathlib
import subprocess
import sys
import tempfile

REQUIREMENTS = pathlib.Path(__file__).with_name("requirements.txt")


def requirements(text):
    """The requirements, each with the lines of its hashes."""
    blocks = []
    for line in text.splitlines():
        if line.startswith("#"):
            continue
        if line.startswith(" "):
            blocks[-1] += "\n" + line
        elif line:
            blocks.append(line)
    return blocks


def install(requirement):
    with tempfile.NamedTemporaryFile("w", suffix=".txt") as file:
        file.write(requirement + "\n")
        file.flush()
        command = [sys.executable, "-m", "pip", "install", "--quiet", "--no-deps", "--no-input",
                   "--disable-pip-version-check", "--require-hashes", "--only-binary", ":all:",
                   "-r", file.name]
        return subprocess.run(command, check=False).returncode == 0


def main():
    for requirement in requirements(REQUIREMENTS.read_text()):
        if not install(requirement):
            print(f"install_peers: cannot install {requirement.split()[0]}; continuing without it",
                  file=sys.stderr)


if __name__ == "__main__":
    main()
