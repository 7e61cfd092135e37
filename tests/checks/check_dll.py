"""The DLL as it is shipped."""

import re
import unittest

from repository import OBJDUMP, ROOT, dll, run

SYSTEM_DLLS = {"KERNEL32.dll", "USER32.dll", "SHELL32.dll", "ole32.dll", "OLEAUT32.dll", "msvcrt.dll"}
# What the compiler's runtime needs: start-up, exceptions, thread-local state, memory and text. Everything else has to
# be a function that the library itself declares. Nothing here touches other threads or the host's exception handlers,
# which virus scanners look for beside hooks and input.
RUNTIME = set("""
    CreateSemaphoreW DeleteCriticalSection EnterCriticalSection InitializeCriticalSection LeaveCriticalSection
    RaiseException ReleaseSemaphore RtlCaptureContext RtlLookupFunctionEntry RtlUnwindEx RtlVirtualUnwind SetLastError
    TlsAlloc TlsFree TlsGetValue TlsSetValue VirtualProtect VirtualQuery
    __iob_func _amsg_exit _initterm _lock _unlock abort calloc fflush free fwrite iswspace malloc memcmp memcpy memmove
    memset realloc strcmp strlen strncmp towlower vfprintf wcslen
""".split())
# In the place of a standard lock, which needs construction.
LOCKS = {"AcquireSRWLockExclusive", "ReleaseSRWLockExclusive"}
DECLARATIONS = "platform/native.h"
MOST_BYTES = 256 * 1024


def version():
    text = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"project\(korvane VERSION ([\d.]+)", text)[1]


class Dll(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.file = dll()
        cls.report = run(OBJDUMP, "-x", str(cls.file)).stdout

    def test_hardening(self):
        """DLL: 64-bit, relocatable anywhere in a wide address space, no execution of data"""
        self.assertIn("file format pei-x86-64", self.report)
        flags = self.report.split("DllCharacteristics")[1].split("\n\n")[0]
        for flag in ("DYNAMIC_BASE", "HIGH_ENTROPY_VA", "NX_COMPAT"):
            self.assertIn(flag, flags)
        relocations = re.search(r"^\s*\d+ \.reloc\s+([0-9a-f]+)", self.report, re.M)
        self.assertIsNotNone(relocations, "no relocations: the loader cannot move it")
        self.assertGreater(int(relocations[1], 16), 0)
        self.assertNotIn("relocations stripped", self.report)

    def test_imports(self):
        """DLL: needs nothing but the system's own DLLs"""
        imports = set(re.findall(r"DLL Name: (\S+)", self.report))
        self.assertTrue(imports)
        self.assertEqual(set(), imports - SYSTEM_DLLS)

    def test_imported_functions(self):
        """DLL: imports the functions that the library declares, and of the runtime what is known"""
        functions = set(re.findall(r"^\t[0-9a-f]+\t +\d+  (\w+)$", self.report, re.M))
        self.assertIn("SendInput", functions)
        declared = set(re.findall(r"\b(\w+)\(", (ROOT / DECLARATIONS).read_text(encoding="utf-8")))
        self.assertEqual(set(), functions - declared - RUNTIME - LOCKS)

    def test_size(self):
        """DLL: at most 256 KB, without symbols"""
        self.assertIn("SYMBOL TABLE:\nno symbols", self.report)
        self.assertLessEqual(self.file.stat().st_size, MOST_BYTES)

    def test_version(self):
        """DLL: carries the project's version"""
        image = self.file.read_bytes()
        self.assertIn("VS_VERSION_INFO\0".encode("utf-16-le"), image)
        for name in ("FileVersion", "ProductVersion"):
            text = image.split(f"{name}\0".encode("utf-16-le"))[1].lstrip(b"\0")
            self.assertEqual(version(), text[:40].decode("utf-16-le", "replace").split("\0")[0], name)
        # The same in numbers: after the signature and the structure's version.
        numbers = image.split(b"\xbd\x04\xef\xfe\x00\x00\x01\x00")[1][:8]
        high, low = int.from_bytes(numbers[:4], "little"), int.from_bytes(numbers[4:], "little")
        self.assertEqual(version() + ".0", f"{high >> 16}.{high & 0xFFFF}.{low >> 16}.{low & 0xFFFF}")
