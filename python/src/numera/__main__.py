"""The command line program: `python -m numera` does what `numera-arrow` does."""

import os
import signal
import sys
from pathlib import Path


def main():
    program = Path(__file__).parent / "bin" / "numera-arrow"
    # Python ignores these, and what is ignored stays so in a program that takes its place.
    for name in ("SIGPIPE", "SIGXFSZ"):
        signal.signal(getattr(signal, name), signal.SIG_DFL)
    os.execv(program, [program, *sys.argv[1:]])


if __name__ == "__main__":
    main()
