"""The UI Automation methods as the cross compiler calls them; natively they are called in tests/checks."""

import unittest

import automation_slots
from repository import run_windows


class AutomationSlots(unittest.TestCase):
    maxDiff = None

    def test_calls(self):
        """UI Automation: every method that is called on Windows arrives at its place with its arguments"""
        program, count = automation_slots.build("windows")
        _, output = run_windows(program, folder=program.parent)
        self.assertEqual(f"{count} methods called, 0 differ\n", output)
