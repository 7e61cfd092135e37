"""The native declarations of the platform against the cross compiler's own Windows headers.

What is compared is read from the declarations themselves, so that a new one is covered as soon as it is there: both
compilers describe it, in a program that is compiled and not run.
"""

import re
import struct
import unittest

from repository import PLATFORM, ROOT, SCRATCH, run, source, tool

NATIVE = PLATFORM / "native.h"
FACTS = ROOT / "tests/checks/platform_facts.h"
CROSS = "x86_64-w64-mingw32-"
# Of a structure that is declared as void here, because only a null pointer to it is ever given.
ANY_STRUCTURE = re.compile(r"\*(const )?void")


class Declarations:
    """What native.h declares, by kind."""

    def __init__(self, text):
        text = re.sub(r"^\s*#(.*\\\n)*.*$", "", text, flags=re.M)
        self.types = re.findall(r"^using (\w+) = ", text, re.M)
        self.handles = re.findall(r"^struct (\w+__);", text, re.M)
        self.structures = {
            name: list(members(body))
            for name, body in re.findall(r"^(?:struct|union) (\w+) \{\n(.*?)^\};", text, re.S | re.M)
        }
        # With what stands for them: a compiler folds that, but not always the name.
        self.constants, self.identifiers = {}, {}
        for type_, name, value in re.findall(
            r"^inline const(?:expr)? ([\w* ]+?) ?\*?(?:const )?(\w+) =\s([^;]*);", text, re.M
        ):
            if type_.endswith("ID"):
                self.identifiers[name] = name if not name.startswith("IID_") else f"__uuidof({name[4:]})"
            else:
                self.constants[name] = value
        for values in re.findall(r"^enum [^{]*\{([^}]*)\}", text, re.M):
            self.constants |= re.findall(r"(\w+) = (\w+)", values)
        self.functions = [
            name
            for block in re.findall(r'^extern "" \{\n(.*?)^\}', text, re.S | re.M)
            for name in re.findall(r"(\w+)\([^;]*\);", block)
        ]


def members(body, prefix=""):
    """The names of a structure's members, those of an unnamed union within it like its own."""
    body = re.sub(r"\{(?:(?!virtual|friend)[^{};])*\}", "", body)
    for nested in re.finditer(r"(?:union|struct) \{(.*?)\} ?(\w*);", body, re.S):
        yield from members(nested[1], f"{prefix}{nested[2]}." if nested[2] else prefix)
    body = re.sub(r"(?:union|struct) \{.*?\} ?\w*;", "", body, flags=re.S)
    for name in re.findall(r"^\s*[\w:*]+ \**(\w+)(?:\[\w+\])?;$", body, re.M):
        # What only fills a union up to its size is no member of the platform's.
        if name != "reserved":
            yield prefix + name


def program(declared):
    names = [*declared.structures, *declared.handles]
    lines = ["#define INITGUID", '#include "platform/platform.h"', f'#include "{FACTS}"']
    lines += [f'template <> struct NameOf<{n}> {{ static constexpr const char* kName = "{n}"; }};' for n in names]
    lines += ["constexpr auto kFacts = [] {", "  std::string text;"]
    lines += [f'  text += Fact("type", "{name}", Describe<{name}>());' for name in declared.types]
    for name, its_members in declared.structures.items():
        if its_members:
            lines.append(
                f'  text += Fact("structure", "{name}", Digits(sizeof({name})) + " aligned " + Digits(alignof({name})));'
            )
        for member in its_members:
            value = f'Digits(offsetof({name}, {member})) + " " + Describe<decltype(std::declval<{name}&>().{member})>()'
            lines.append(f'  text += Fact("member", "{name}.{member}", {value});')
    for name in declared.functions:
        lines.append(f'  text += Fact("function", "{name}", Describe<std::remove_pointer_t<decltype(&{name})>>());')
    lines += ["  return text;", "};", 'IN_SECTION(".facts") constexpr auto facts = Bytes(kFacts);']
    for condition, values, identifiers in (
        ("#ifdef _WIN32", declared.constants.keys(), declared.identifiers.values()),
        ("#else", declared.constants.values(), declared.identifiers.keys()),
    ):
        values = ", ".join(f"(std::uint64_t)({value})" for value in values)
        lines += [condition, f'IN_SECTION(".values") extern const std::uint64_t values[] = {{{values}}};']
        lines += [f'IN_SECTION(".guids") extern const GUID identifiers[] = {{{", ".join(identifiers)}}};']
    lines.append("#endif")
    return "\n".join(lines) + "\n"


def facts(compiler, objcopy, text, declared):
    """From (kind, name) to what the compiler says."""
    SCRATCH.mkdir(parents=True, exist_ok=True)
    base = SCRATCH / f"platform_{'windows' if 'mingw' in compiler else 'native'}"
    base.with_suffix(".cpp").write_text(text, encoding="utf-8")
    built = run(tool(compiler), "-std=c++20", "-O2", "-w", "-fconstexpr-ops-limit=1000000000", "-I", str(PLATFORM.parent),
                "-c", f"{base}.cpp", "-o", f"{base}.o")  # fmt: skip
    assert built.returncode == 0, built.stderr

    def section(name):
        extracted = run(tool(objcopy), "-O", "binary", "--only-section", name, f"{base}.o", f"{base}.bin")
        assert extracted.returncode == 0, extracted.stderr
        return base.with_suffix(".bin").read_bytes()

    said = {}
    for line in section(".facts").rstrip(b"\0").decode().splitlines():
        kind, name, value = line.split("\t")
        said[kind, name] = value
    for (value,), name in zip(struct.iter_unpack("<Q", section(".values")), declared.constants):
        said["constant", name] = hex(value)
    for (value,), name in zip(struct.iter_unpack("16s", section(".guids")), declared.identifiers):
        said["identifier", name] = value.hex()
    return said


def agree(native, windows):
    """Whether a native description says the same; a pointer to void may stand for one to a structure never used here."""
    pattern = ANY_STRUCTURE.sub("@", re.escape(native).replace(r"\*", "*").replace(r"\ ", " "))
    return native == windows or re.fullmatch(
        pattern.replace("*", r"\*").replace("@", r"\*(?:const )?(?:void|struct)"), windows
    )


class PlatformDeclarations(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.declared = Declarations(source(NATIVE))
        text = program(cls.declared)
        cls.native = facts("g++", "objcopy", text, cls.declared)
        cls.windows = facts(CROSS + "g++-win32", CROSS + "objcopy", text, cls.declared)

    def compare(self, kind, names):
        for name in names:
            with self.subTest(name):
                native, windows = self.native[kind, name], self.windows[kind, name]
                if not agree(native, windows):
                    self.fail(f"{kind} {name}: {native}, on Windows: {windows}")

    def test_types(self):
        """native.h: every type has the platform's size and sign"""
        self.compare("type", self.declared.types)

    def test_structures(self):
        """native.h: every structure has the platform's size and members"""
        for name, its_members in self.declared.structures.items():
            self.compare("structure", [name] if its_members else [])
            self.compare("member", [f"{name}.{member}" for member in its_members])

    def test_constants(self):
        """native.h: every constant and identifier has the platform's value"""
        self.compare("constant", self.declared.constants)
        self.compare("identifier", self.declared.identifiers)

    def test_functions(self):
        """native.h: every function has the platform's signature"""
        self.compare("function", self.declared.functions)

    def test_nothing_is_overlooked(self):
        """native.h: the check reads every declaration"""
        text = source(NATIVE)
        constants = text.count("inline const") + len(re.findall(r"\bVT_\w+ =", text))
        self.assertEqual(constants, len(self.declared.constants) + len(self.declared.identifiers))
        self.assertEqual(len(re.findall(r"^\w[\w* ]* \**\w+\([^{;]*\);", text, re.M)), len(self.declared.functions))
        self.assertEqual(len(re.findall(r"^using ", text, re.M)), len(self.declared.types))
        self.assertEqual(len(re.findall(r"^(?:struct|union) \w+ \{", text, re.M)), len(self.declared.structures))
