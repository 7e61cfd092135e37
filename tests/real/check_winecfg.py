"""The settings of Wine: tabs, a check box, and a combo box whose choice goes into a list."""

import subprocess
import time
import unittest

from programs import program_at, reg, replay

DRIVER = r"HKCU\Software\Wine\X11 Driver"
OVERRIDES = r"HKCU\Software\Wine\DllOverrides"
SETTING = ("/v", "GrabFullscreen")


def overrides():
    """The names that have an override."""
    done = subprocess.run(["wine", "reg", "query", OVERRIDES], stdin=subprocess.DEVNULL, capture_output=True,
                          check=False, timeout=60)
    return {line.split()[0] for line in done.stdout.decode("utf-8", "replace").splitlines() if "REG_SZ" in line}


class Settings(unittest.TestCase):
    def setUp(self):
        reg("delete", DRIVER, *SETTING, "/f")

    tearDown = setUp

    def test_check_box(self):
        """winecfg: a tab and a check box of its page, found again elsewhere: the setting is stored"""
        self.assertNotEqual(0, reg("query", DRIVER, *SETTING))
        with program_at("Wine configuration", 300, 200, "winecfg"):
            code, out = replay("winecfg.json")
            self.assertEqual(0, code, out)
            time.sleep(1)
        self.assertEqual(0, reg("query", DRIVER, *SETTING))

    def test_choice(self):
        """winecfg: a row of a combo box and a button, found again elsewhere: what was chosen is stored"""
        before = overrides()
        with program_at("Wine configuration", 420, 260, "winecfg"):
            code, out = replay("winecfg_libraries.json")
            self.assertEqual(0, code, out)
            time.sleep(1)
        added = overrides() - before
        for name in added:
            reg("delete", OVERRIDES, "/v", name, "/f")
        self.assertEqual(1, len(added), added)


if __name__ == "__main__":
    unittest.main()
