"""The settings of Wine: a tab and a check box, found again at another place after a restart."""

import time
import unittest

from programs import program_at, reg, replay

DRIVER = r"HKCU\Software\Wine\X11 Driver"
SETTING = ("/v", "GrabFullscreen")


class Settings(unittest.TestCase):
    def setUp(self):
        reg("delete", DRIVER, *SETTING, "/f")

    tearDown = setUp

    def test_check_box(self):
        """winecfg: a tab and a check box of its page, found again elsewhere: the setting is stored"""
        self.assertNotEqual(0, reg("query", DRIVER, *SETTING))
        with program_at("winecfg", "Wine configuration", 300, 200):
            code, out = replay("winecfg.json")
            self.assertEqual(0, code, out)
            time.sleep(1)
        self.assertEqual(0, reg("query", DRIVER, *SETTING))


if __name__ == "__main__":
    unittest.main()
