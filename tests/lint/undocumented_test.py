"""Tests that the reference fails for each kind of public name without a comment."""

import os
import pathlib
import subprocess
import tempfile
import unittest

from undocumented import undocumented

DOXYFILE = pathlib.Path("docs/Doxyfile").resolve()

HEADER = """\
/// \\file
/// Fruit.

/// Marks a fruit.
#define FRUIT 1

/// \\namespace fruit
/// A garden.
namespace fruit {

/// What a fruit is.
enum class Kind {
  Apple,  ///< grows on trees
  Melon   ///< grows on the ground
};

/// One fruit.
struct Fruit {
  Kind kind;  ///< of the fruit
  /// Peels it.
  void peel();
};

/// Eats a fruit.
void eat(Fruit fruit);

/// Fruits in a bowl.
using Count = int;

}  // namespace fruit
"""

FOUND_BY_DOXYGEN = [
    "/// Marks a fruit.",
    "/// What a fruit is.",
    "/// One fruit.",
    "///< of the fruit",
    "/// Peels it.",
    "/// Eats a fruit.",
    "/// Fruits in a bowl.",
]

FOUND_HERE = {
    "/// \\file\n/// Fruit.\n": "file fruit.h",
    "/// \\namespace fruit\n/// A garden.\n": "namespace fruit",
    "///< grows on the ground": "enumerator Kind::Melon",
}


def run_doxygen(header):
    """Returns the exit status of Doxygen and the names that it does not report."""
    with tempfile.TemporaryDirectory() as name:
        root = pathlib.Path(name)
        (root / "docs").mkdir()
        (root / "build" / "docs").mkdir(parents=True)
        (root / "docs" / "reference.dox").write_text("/// \\file\n/// Nothing more.\n")
        (root / "fruit.h").write_text(header)
        settings = {"NUMERA_VERSION": "1", "NUMERA_PUBLIC_HEADERS": "fruit.h"}
        status = subprocess.run(
            ["doxygen", DOXYFILE],
            cwd=root,
            env={**os.environ, **settings},
            capture_output=True,
            check=False,
        ).returncode
        return status, list(undocumented(root / "build" / "docs" / "xml"))


class Reference(unittest.TestCase):
    def test_passes_when_everything_has_a_comment(self):
        self.assertEqual(run_doxygen(HEADER), (0, []))

    def test_fails_for_names_that_doxygen_reports(self):
        for comment in FOUND_BY_DOXYGEN:
            with self.subTest(comment):
                self.assertEqual(HEADER.count(comment), 1)
                status, _ = run_doxygen(HEADER.replace(comment, ""))
                self.assertNotEqual(status, 0)

    def test_finds_the_names_that_doxygen_passes_over(self):
        for comment, name in FOUND_HERE.items():
            with self.subTest(comment):
                self.assertEqual(HEADER.count(comment), 1)
                self.assertEqual(run_doxygen(HEADER.replace(comment, "")), (0, [name]))


if __name__ == "__main__":
    unittest.main()
