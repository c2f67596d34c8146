"""The command line program: `python -m numera` runs `numera-arrow`."""

import os
import signal
import sys
from pathlib import Path


def main():
    program = Path(__file__).parent / "bin" / "numera-arrow"
    # Python ignores these signals, and exec keeps ignored signals ignored.
    for name in ("SIGPIPE", "SIGXFSZ"):
        signal.signal(getattr(signal, name), signal.SIG_DFL)
    os.execv(program, [program, *sys.argv[1:]])


if __name__ == "__main__":
    main()
