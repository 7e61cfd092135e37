"""The export list is law: header, module definition and DLL agree."""

import re
import unittest

from repository import OBJDUMP, ROOT, dll, exported_functions, run


class Exports(unittest.TestCase):
    maxDiff = None

    def test_module_definition(self):
        """exports: the header's 54 functions are those of the module definition"""
        declared = exported_functions()
        self.assertEqual(54, len(declared))
        self.assertEqual(54, len(set(declared)))
        listed = (ROOT / "src/korvane.def").read_text(encoding="utf-8").split("EXPORTS")[1].split()
        self.assertEqual(sorted(declared), listed)

    def test_export_table(self):
        """exports: the DLL exports them under their plain names and nothing else"""
        report = run(OBJDUMP, "-p", str(dll())).stdout
        table = report.split("[Ordinal/Name Pointer] Table")[1].split("\n\n")[0]
        names = re.findall(r"^\s*\[\s*\d+\]\s+(?:\+base\[\s*\d+\]\s+[0-9a-f]+\s+)?(\S+)$", table, re.M)
        self.assertEqual(sorted(exported_functions()), sorted(names))
        self.assertIn("Name \t\t\t\t", report)
        self.assertRegex(report, r"Name\s+\S+\s+korvane\.dll\n")
