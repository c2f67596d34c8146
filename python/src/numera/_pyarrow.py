"""Checks that the installed pyarrow is one that the compiled parts are linked against."""

OLDEST = (26, 0, 1)
BEFORE = (26, 1)


def check():
    try:
        import pyarrow
    except ImportError as error:
        raise ImportError(f"numera: found no pyarrow, expected {_expected()}.") from error
    found = pyarrow.__version__
    numbers = tuple(int(part) for part in found.split(".")[:3] if part.isdigit())
    if not OLDEST <= numbers < BEFORE:
        raise ImportError(
            f"numera: found pyarrow {found}, expected {_expected()}: "
            f"pip install 'pyarrow{_expected()}'"
        )


def _expected():
    return f">={'.'.join(map(str, OLDEST))},<{'.'.join(map(str, BEFORE))}"
