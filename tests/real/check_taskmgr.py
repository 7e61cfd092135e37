"""The task manager of Wine: tabs, and cells of a list with columns."""

import unittest

from programs import await_window_gone, program_at, replay


class TaskManager(unittest.TestCase):
    def test_program_ended(self):
        """taskmgr: tabs, a cell and a button, found again elsewhere: the program that was meant is ended"""
        with program_at("Untitled - Notepad", 600, 40, "notepad"), program_at("Task Manager", 200, 220, "taskmgr"):
            code, out = replay("taskmgr.json")
            self.assertEqual(0, code, out)
            await_window_gone("Untitled - Notepad")


if __name__ == "__main__":
    unittest.main()
