import pathlib
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent))

from field_names import NAMES, faults, field_names


class FieldNames(unittest.TestCase):
    def test_are_those_that_the_header_states(self):
        names = field_names(NAMES.read_text())
        self.assertEqual(len(names), 17)
        self.assertIn("StartOffsets", names)
        self.assertNotIn("buffer", names)

    def test_are_refused_as_literals(self):
        self.assertEqual(list(faults('a;\nfield(s, 0, "Type");', {"Type"})), [(2, "Type")])

    def test_may_stand_in_comments_and_longer_texts(self):
        text = """/// "Type" of it
refuse("Field 'Type': found none");  // "Type"
"""
        self.assertEqual(list(faults(text, {"Type"})), [])


if __name__ == "__main__":
    unittest.main()
