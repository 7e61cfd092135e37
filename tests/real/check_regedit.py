"""The registry editor of Wine: a recording made at one place deletes the right value at another, after a restart."""

import time
import unittest

from programs import program_at, reg, replay

VALUES = ("First", "Second", "Third")
NEW_KEY = r"HKCU\New Key #1"


class RegistryEditor(unittest.TestCase):
    def setUp(self):
        for value in VALUES:
            self.assertEqual(0, reg("add", "HKCU", "/v", value, "/d", value, "/f"))

    def tearDown(self):
        for value in VALUES:
            reg("delete", "HKCU", "/v", value, "/f")

    def test_value_deleted(self):
        """regedit: a tree item and a row of a list, found again elsewhere: the value that was meant is deleted"""
        with program_at("Registry Editor", 240, 160, "regedit"):
            code, out = replay("regedit.json")
            self.assertEqual(0, code, out)
            time.sleep(0.5)
        there = [value for value in VALUES if reg("query", "HKCU", "/v", value) == 0]
        self.assertEqual(["First", "Third"], there)

    def test_key_and_value_made(self):
        """regedit: items of a menu and of the menu it opens, found again elsewhere: a key with a value is made"""
        reg("delete", NEW_KEY, "/f")
        self.addCleanup(reg, "delete", NEW_KEY, "/f")
        with program_at("Registry Editor", 200, 120, "regedit"):
            code, out = replay("regedit_new.json")
            self.assertEqual(0, code, out)
            time.sleep(0.5)
        self.assertEqual(0, reg("query", NEW_KEY, "/v", "New Value #1"))


if __name__ == "__main__":
    unittest.main()
