"""Tests of include_directions.py."""

import pathlib
import tempfile
import unittest

from include_directions import faults, is_allowed

PUBLIC = {
    "numera/core/to_arrow.h",
    "numera/extras/inspect/inspect.h",
    "numera/files/read.h",
    "numera/host/array.h",
    "numera/host/memory.h",
    "numera/numera.h",
    "numera/unicode/convert.h",
}

ALLOWED = [
    ("numera/host/memory/layout.cc", "numera/host/memory.h"),
    ("numera/host/memory/layout.cc", "numera/host/memory/layout.h"),
    ("numera/core/to_arrow.cc", "numera/host/array.h"),
    ("numera/core/to_arrow.cc", "numera/core/types/numeric.h"),
    ("numera/core/to_arrow.cc", "numera/export.h"),
    ("numera/core/to_arrow.cc", "numera/format/records.h"),
    ("numera/extras/encode/text.cc", "numera/format/records.h"),
    ("numera/format/records.cc", "numera/host/array.h"),
    ("numera/unicode/convert.cc", "numera/host/array.h"),
    ("numera/extras/inspect/print.cc", "numera/core/to_arrow.h"),
    ("numera/extras/inspect/print.h", "numera/host/memory.h"),
    ("numera/extras/inspect/print.cc", "numera/extras/inspect/private.h"),
    ("numera/numera.h", "numera/core/to_arrow.h"),
    ("numera/files/source.cc", "numera/files/read.h"),
    ("numera/files/source.cc", "numera/export.h"),
    ("tools/main.cc", "numera/files/read.h"),
    ("tools/main.cc", "numera/extras/inspect/inspect.h"),
    ("tools/main.cc", "tools/options.h"),
    ("examples/round_trip.cc", "numera/host/memory.h"),
    ("benchmarks/numeric.cc", "tests/support/host_builder.h"),
    ("benchmarks/limits.cc", "numera/host/memory/layout.h"),
    ("tests/core/types/numeric_test.cc", "numera/core/types/numeric.h"),
]

REFUSED = [
    ("numera/host/array.h", "numera/core/to_arrow.h"),
    ("numera/host/array.h", "numera/host/memory/layout.h"),
    ("numera/host/memory/layout.cc", "numera/core/to_arrow.h"),
    ("numera/core/to_arrow.cc", "numera/host/memory.h"),
    ("numera/core/to_arrow.cc", "numera/unicode/convert.h"),
    ("numera/core/to_arrow.cc", "numera/extras/inspect/inspect.h"),
    ("numera/core/to_arrow.cc", "numera/numera.h"),
    ("numera/core/to_arrow.cc", "tests/support/host_builder.h"),
    ("numera/core/to_arrow.cc", "messages.h"),
    ("numera/format/records.cc", "numera/core/messages.h"),
    ("numera/unicode/convert.cc", "numera/format/records.h"),
    ("numera/files/source.cc", "numera/host/array.h"),
    ("numera/files/source.cc", "numera/core/to_arrow.h"),
    ("numera/extras/convert/convert.cc", "numera/files/read.h"),
    ("tools/main.cc", "numera/files/formats.h"),
    ("tools/main.cc", "numera/format/records.h"),
    ("numera/unicode/convert.cc", "numera/core/to_arrow.h"),
    ("numera/extras/inspect/print.cc", "numera/core/types/numeric.h"),
    ("numera/extras/inspect/print.cc", "numera/host/memory/layout.h"),
    ("numera/extras/inspect/print.cc", "tools/options.h"),
    ("numera/numera.h", "numera/core/messages.h"),
    ("tools/main.cc", "numera/core/messages.h"),
    ("tools/main.cc", "tests/support/host_builder.h"),
    ("examples/round_trip.cc", "numera/extras/inspect/private.h"),
    ("tests/core/types/numeric_test.cc", "numeric.h"),
]


class IncludeDirections(unittest.TestCase):
    def test_includes_along_the_arrows_are_allowed(self):
        for path, included in ALLOWED:
            with self.subTest(path=path, included=included):
                self.assertTrue(is_allowed(path, included, PUBLIC))

    def test_includes_against_the_arrows_are_refused(self):
        for path, included in REFUSED:
            with self.subTest(path=path, included=included):
                self.assertFalse(is_allowed(path, included, PUBLIC))

    def test_a_fault_is_reported_with_its_file_and_line(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            (root / "cmake").mkdir()
            (root / "cmake/public_headers.txt").write_text("numera/host/memory.h\n")
            (root / "numera/core").mkdir(parents=True)
            (root / "numera/core/a.cc").write_text(
                '#include <vector>\n#include "numera/host/array.h"\n#include "numera/host/memory.h"\n'
            )
            self.assertEqual(
                list(faults(root)), ["numera/core/a.cc:3: may not include numera/host/memory.h"]
            )


if __name__ == "__main__":
    unittest.main()
