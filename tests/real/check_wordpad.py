"""The word processor of Wine: a rich edit, a tool bar, and the list of a combo box."""

import unittest

from programs import program_at, replay, scratch, windows_path

WORDPAD = r"C:\Program Files\Windows NT\Accessories\wordpad.exe"


class Wordpad(unittest.TestCase):
    def test_formatted(self):
        """wordpad: text, a tool button and a row of a dropped list, found again elsewhere: the file is bold and of that size"""
        file = scratch("wordpad") / "page.rtf"
        file.write_text(r"{\rtf1 Hello\par}", encoding="ascii")
        with program_at("page.rtf - Wine Wordpad", 330, 210, WORDPAD, windows_path(file)):
            code, out = replay("wordpad.json")
            self.assertEqual(0, code, out)
        saved = file.read_text(encoding="ascii")
        self.assertIn("First line. ", saved)
        self.assertRegex(saved, r"\\b\b")
        self.assertRegex(saved, r"\\fs28\b")


if __name__ == "__main__":
    unittest.main()
