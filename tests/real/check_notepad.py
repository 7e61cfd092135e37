"""The editor of Wine: menus and file dialogs, by the mouse."""

import unittest

from programs import program_at, replay, scratch, windows_path

TEXT = "One line, saved and opened again."


class Notepad(unittest.TestCase):
    def test_saved_and_opened(self):
        """notepad: a text saved and opened again through menus and file dialogs, found again elsewhere: it is in the file"""
        file = scratch("notepad") / "saved.txt"
        with program_at("Untitled - Notepad", 260, 180, "notepad"):
            code, out = replay("notepad.json", FILE=windows_path(file))
            self.assertEqual(0, code, out)
        self.assertEqual(TEXT, file.read_text(encoding="utf-8"))


if __name__ == "__main__":
    unittest.main()
