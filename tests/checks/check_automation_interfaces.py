"""uia.h against an independent declaration of the same interfaces: Wine's, generated from its own IDL.

Ours is asked of the compiler: a pointer to a virtual member function holds its place in the table.
"""

import re
import unittest

import automation_slots
from automation_slots import OURS, UNKNOWN, our_interfaces, reference_table
from repository import PLATFORM, SCRATCH, run, source, sources

PROGRAM = """
#include <cstdio>
#include <cstring>
#include "platform/uia.h"

template <class Method>
void Slot(const char* interface, const char* name, Method method) {
  std::uintptr_t place[2];
  static_assert(sizeof method == sizeof place);
  std::memcpy(place, &method, sizeof place);
  std::printf("slot %%s %%s %%zu\\n", interface, name, (place[0] - 1) / sizeof(void*));
}

void Id(const char* name, const GUID& id) {
  std::printf("id %%s %%08x-%%04x-%%04x-%%02x%%02x-%%02x%%02x%%02x%%02x%%02x%%02x\\n", name, id.Data1, id.Data2, id.Data3,
              id.Data4[0], id.Data4[1], id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
}

int main() {
%s
}
"""


def types(parameters):
    """The parameter types, in one spelling and without the names."""
    split = [re.sub(r"\b(enum|struct)\b", "", parameter).strip() for parameter in parameters.split(",")]
    return [re.sub(r"\s+", "", re.sub(r"\w+$", "", parameter)) for parameter in split if parameter]


class AutomationInterfaces(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.reference = automation_slots.reference_text()
        cls.interfaces = dict(our_interfaces())
        names = [name for name, _ in re.findall(r"\b((?:IID|CLSID)_\w*Automation\w*) = (\{)", source(OURS))]
        calls = [f'Slot("{i}", "{m}", &{i}::{m});' for i, all in cls.interfaces.items() for m, _ in all]
        calls += [f'Id("{name}", {name});' for name in names]
        SCRATCH.mkdir(parents=True, exist_ok=True)
        program = SCRATCH / "automation_interfaces"
        program.with_suffix(".cpp").write_text(PROGRAM % "\n".join("  " + call for call in calls), encoding="utf-8")
        built = run("g++", "-std=c++20", "-I", str(PLATFORM.parent), str(program) + ".cpp", "-o", str(program))
        assert built.returncode == 0, built.stderr
        cls.answers = [line.split() for line in run(str(program)).stdout.splitlines()]

    def test_slots(self):
        """UI Automation: every declared method has the platform's name and place in its table"""
        self.assertEqual(6, len(self.interfaces))
        ours = {}
        for kind, interface, method, *place in self.answers:
            if kind == "slot":
                ours.setdefault(interface, {})[int(place[0])] = method
        for interface in self.interfaces:
            reference = [name for _, name, _ in reference_table(self.reference, interface)]
            self.assertEqual(UNKNOWN, reference[:3], interface)
            declared = ours.get(interface, {})
            self.assertEqual(dict(zip(range(3, 3 + len(declared)), reference[3:])), declared, interface)

    def test_parameters(self):
        """UI Automation: every method that is called has the platform's parameters"""
        for interface, methods in self.interfaces.items():
            reference = {name: given for _, name, given in reference_table(self.reference, interface)}
            for method, parameters in methods:
                if parameters is not None:
                    self.assertEqual(types(reference[method])[1:], types(parameters), f"{interface}::{method}")

    def test_calls(self):
        """UI Automation: every method that is called natively arrives at its place with its arguments"""
        program, count = automation_slots.build("native")
        result = run(str(program))
        self.assertEqual(f"{count} methods called, 0 differ\n", result.stdout + result.stderr)

    def test_identifiers(self):
        """UI Automation: class and interface identifiers are the platform's"""
        ours = {name: value for kind, name, value, *_ in self.answers if kind == "id"}
        reference = {
            f"IID_{name}": identifier
            for identifier, name in re.findall(r'MIDL_INTERFACE\("([^"]+)"\)\s*(\w+)', self.reference)
        }
        reference["CLSID_CUIAutomation"] = re.search(
            r'DECLSPEC_UUID\("([^"]+)"\) CUIAutomation;', self.reference
        )[1]
        self.assertEqual({"CLSID_CUIAutomation"} | {f"IID_{name}" for name in self.interfaces}, set(ours))
        for name, value in ours.items():
            self.assertEqual(reference[name], value, name)

    def test_numbers(self):
        """UI Automation: property, control type and scope numbers are the platform's"""
        text = source(OURS)
        numbers = dict(re.findall(r"\b(UIA_\w+) = (\d+);", text))
        numbers |= dict(re.findall(r"\b(TreeScope_\w+) = (\d+)", text))
        self.assertGreater(len(numbers), 9)
        for name, number in numbers.items():
            reference = re.search(rf"\b{name}\s*(?:\((\d+)\)|=\s*(0x[0-9a-f]+))", self.reference)
            self.assertIsNotNone(reference, name)
            self.assertEqual(int(reference[1] or reference[2], 0), int(number), name)

    def test_only_what_is_called(self):
        """UI Automation: every method with parameters is called by the library, its companion, or a walk it is measured against"""
        callers = "\n".join(source(file) for file in sources("src", "host", "benchmarks") if file != OURS)
        never = [
            f"{interface}::{method}"
            for interface, methods in self.interfaces.items()
            for method, parameters in methods
            if parameters is not None and not re.search(rf"(->|\.){method}\(", callers)
        ]
        self.assertEqual([], never)
