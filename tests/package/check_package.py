"""The package as it is shipped."""

import hashlib
import os
import posixpath
import re
import shutil
import sys
import unittest
import uuid
import zipfile
from xml.etree import ElementTree

from check_dll import version
from repository import OBJDUMP, ROOT, SCRATCH, exported_functions, run, tool
from unpacked import OUTPUT, archive, unpacked, wine_archive

sys.path.insert(0, str(ROOT / "packaging"))
from make_package import BUILT, WINE_BUILT, put  # noqa: E402


class Package(unittest.TestCase):
    maxDiff = None

    def test_tree(self):
        """package: holds what a host author needs, whole and nothing else"""
        there = {file.relative_to(unpacked()).as_posix() for file in unpacked().rglob("*") if file.is_file()}
        needed = {
            "bin/korvane.dll", "bin/korvane.dll.debug", "bin/korvane.exe", "bin/korvane.pdb", "lib/korvane.lib", "lib/libkorvane.dll.a",
            "include/korvane/korvane.h", "include/korvane/korvane.hpp", "include/korvane/recording.hpp", "include/korvane/version.h",
            "lib/cmake/korvane/korvaneConfig.cmake", "lib/cmake/korvane/korvaneConfigVersion.cmake",
            "lib/pkgconfig/korvane.pc", "README.md", "CHANGELOG.md", "LICENSE.txt", "NOTICES.txt", "docs/reference.md",
            "examples/session/order.steps.json", "demo.cmd", "docs/images/report.png",
        }
        self.assertEqual(set(), needed - there)
        self.assertEqual([], [name for name in there if "nuget" in name])
        # What is for Linux comes in the other zip, which adds files and replaces none.
        with zipfile.ZipFile(wine_archive()) as file:
            wine = {name.split("/", 1)[1] for name in file.namelist()}
        self.assertLessEqual({"wine/wine_automation.dll", "scripts/run_under_wine.sh"}, wine)
        there -= wine
        with zipfile.ZipFile(archive()) as file:
            self.assertEqual(there, {name.split("/", 1)[1] for name in file.namelist()})
        listed = dict(reversed(line.split("  ", 1)) for line in (unpacked() / "SHA256SUMS").read_text().splitlines())
        self.assertEqual(there - {"SHA256SUMS"}, set(listed))
        for name, digest in listed.items():
            self.assertEqual(digest, hashlib.sha256((unpacked() / name).read_bytes()).hexdigest(), name)

    def test_links(self):
        """package: every link in its documents leads to a file of the package"""
        pages = sorted(unpacked().rglob("*.md"))
        links = [
            (page, link) for page in pages
            for link in re.findall(r"\]\(([^)#\s]+)[^)\s]*\)", page.read_text(encoding="utf-8"))
        ]
        self.assertGreater(len(links), 20)
        self.assertEqual([], [f"{page.name}: {link}" for page, link in links if not (page.parent / link).exists()])

    def test_version(self):
        """package: every file has the project's version"""
        self.assertEqual(f"korvane-{version()}-windows-x64.zip", archive().name)
        major, minor, patch = version().split(".")
        header = (unpacked() / "include/korvane/version.h").read_text()
        for name, number in (("MAJOR", major), ("MINOR", minor), ("PATCH", patch), ("TEXT", f'"{version()}"')):
            self.assertIn(f"#define KORVANE_VERSION_{name} {number}\n", header)
        self.assertIn(f"Version: {version()}\n", (unpacked() / "lib/pkgconfig/korvane.pc").read_text())
        self.assertIn(f'"{version()}"', (unpacked() / "lib/cmake/korvane/korvaneConfigVersion.cmake").read_text())
        self.assertIn(f"## {version()} ", (ROOT / "CHANGELOG.md").read_text(encoding="utf-8"))

    def test_import_libraries(self):
        """package: both import libraries name the DLL and its 54 functions"""
        for library in ("lib/korvane.lib", "lib/libkorvane.dll.a"):
            names = run("x86_64-w64-mingw32-nm", str(unpacked() / library)).stdout
            self.assertEqual(sorted(exported_functions()), sorted(set(re.findall(r" T (\w+)", names))), library)
            self.assertIn(b"korvane.dll\0", (unpacked() / library).read_bytes(), library)

    def test_debug_symbols(self):
        """package: the debug symbols are those of the DLL, and show its source lines"""
        addr2line = tool("x86_64-w64-mingw32-addr2line")
        table = run(OBJDUMP, "-p", str(unpacked() / "bin/korvane.dll")).stdout
        self.assertRegex(run(OBJDUMP, "-h", str(unpacked() / "bin/korvane.dll")).stdout, r"\.gnu_debuglink")
        base = int(re.search(r"ImageBase\s+([0-9a-f]+)", table)[1], 16)
        addresses = re.findall(r"\[\s*\d+\] \+base\[\s*\d+\]\s+([0-9a-f]+) Export RVA", table)
        self.assertEqual(54, len(addresses))
        symbols = str(unpacked() / "bin/korvane.dll.debug")
        # With what is inlined at the function's beginning: innermost first, the function last.
        output = run(addr2line, "-a", "-f", "-i", "-e", symbols, *(hex(base + int(each, 16)) for each in addresses)).stdout
        found = [chunk.splitlines()[1:] for chunk in re.split(r"^(?=0x)", output, flags=re.M) if chunk]
        self.assertEqual(sorted(exported_functions()), sorted(lines[-2] for lines in found))
        self.assertEqual([], [lines for lines in found if "src/" not in lines[-1]])

    def test_pdb(self):
        """package: the PDB is that of the DLL, and shows where each function is"""
        dll, pdb = str(unpacked() / "bin/korvane.dll"), str(unpacked() / "bin/korvane.pdb")
        in_dll = run(tool("llvm-readobj"), "--coff-debug-directory", dll).stdout
        self.assertIn("PDBFileName: korvane.pdb", in_dll)
        (guid,) = re.findall(r"PDBGUID: \((.*)\)", in_dll)
        own = run(tool("llvm-pdbutil"), "dump", "-summary", pdb).stdout
        (shown,) = re.findall(r"GUID: \{([0-9A-F-]+)\}", own)
        data = bytes.fromhex(guid)
        self.assertEqual(str(uuid.UUID(bytes_le=data)).upper(), shown)
        text = int(re.search(r"\.text\s+[0-9a-f]+\s+([0-9a-f]+)", run(OBJDUMP, "-h", dll).stdout)[1], 16)
        table = run(OBJDUMP, "-p", dll).stdout
        base = int(re.search(r"ImageBase\s+([0-9a-f]+)", table)[1], 16)
        exported = dict(zip(
            re.findall(r"^\s+\[\s*\d+\] (\w+)$", table, re.M),
            (int(each, 16) for each in re.findall(r"\+base\[\s*\d+\]\s+([0-9a-f]+) Export RVA", table)),
        ))
        self.assertEqual(sorted(exported_functions()), sorted(exported))
        publics = run(tool("llvm-pdbutil"), "dump", "-publics", pdb).stdout
        places = {name: int(at) for name, at in re.findall(r"`(\w+)`\s+flags = function, addr = 0001:(\d+)", publics)}
        self.assertEqual(exported, {name: text - base + places.get(name, -text) for name in exported})
        # Those of the library's inside, too.
        self.assertGreater(len(places), 100)

    def test_nuget(self):
        """package: the NuGet package is whole, and its targets name files that it has"""
        with zipfile.ZipFile(OUTPUT / f"korvane.{version()}.nupkg") as file:
            names = set(file.namelist())
            types = ElementTree.fromstring(file.read("[Content_Types].xml"))
            description = ElementTree.fromstring(file.read("korvane.nuspec"))
            targets = {name: file.read(name).decode() for name in names if name.endswith(".targets")}
            self.assertEqual({"build/native", "build/net461", "buildTransitive/net461"}, set(map(posixpath.dirname, targets)))
            self.assertEqual(
                (unpacked() / "bin/korvane.dll").read_bytes(), file.read("runtimes/win-x64/native/korvane.dll")
            )
        self.assertEqual("korvane", description.find(".//{*}id").text)
        self.assertEqual(version(), description.find(".//{*}version").text)
        self.assertIn(description.find(".//{*}license").text, names)
        self.assertLessEqual({"lib/netstandard2.0/Korvane.Net.dll", "lib/netstandard2.0/Korvane.Net.xml", "README.md"}, names)
        for place, text in targets.items():
            ElementTree.fromstring(text)
            for name in re.findall(r"\$\(MSBuildThisFileDirectory\)([^;<\"]+)", text):
                found = posixpath.normpath(posixpath.join(posixpath.dirname(place), name.replace("\\", "/")))
                self.assertTrue(any(each == found or each.startswith(found + "/") for each in names), f"{place}: {found}")
        known = {each.get("Extension") for each in types}
        self.assertEqual(set(), {name.rsplit(".", 1)[1] for name in names} - known - {"xml"})

    def test_programs(self):
        """package: every program and DLL is hardened, without a time stamp, and has the project's version"""
        programs = sorted(file for file in unpacked().rglob("*") if file.suffix in (".exe", ".dll"))
        self.assertEqual(5, len(programs))
        for program in programs:
            report = run(OBJDUMP, "-x", str(program)).stdout
            flags = report.split("DllCharacteristics")[1].split("\n\n")[0]
            for flag in ("DYNAMIC_BASE", "HIGH_ENTROPY_VA", "NX_COMPAT"):
                self.assertIn(flag, flags, program.name)
            self.assertRegex(report, r"Time/Date\s+(Thu Jan  1 00:00:00 1970|0+\b)", program.name)
            image = program.read_bytes()
            if program.suffix == ".exe":
                self.assertIn(b"stack smashing detected", image, program.name)
            for name, value in (("FileVersion", version()), ("OriginalFilename", program.name)):
                text = image.split(f"{name}\0".encode("utf-16-le"))[1].lstrip(b"\0")
                self.assertEqual(value, text[:64].decode("utf-16-le", "replace").split("\0")[0], f"{program.name}: {name}")

    def test_notices(self):
        """package: the notices name every library that the companion program is built with"""
        libraries = re.search(r"foreach\(library ([\w ]+)\)", (ROOT / "host/CMakeLists.txt").read_text())[1].split()
        self.assertGreaterEqual(len(libraries), 3)
        notices = (unpacked() / "NOTICES.txt").read_text(encoding="utf-8")
        self.assertEqual([], [name for name in libraries if name not in notices])

    def test_reproducible(self):
        """package: with the DLL compiled again, every program linked again and all packed again elsewhere: the same bytes"""
        elsewhere = SCRATCH / "elsewhere"
        shutil.rmtree(elsewhere, ignore_errors=True)
        shutil.copytree(ROOT, elsewhere, ignore=shutil.ignore_patterns("build", ".git", "__pycache__"))
        for step in (("cmake", "--preset", "windows"),
                     ("cmake", "--build", "--preset", "windows", "--target", "korvane", "--", "-j2")):
            # A compiler cache would hand out what was compiled here.
            made = run(*step, cwd=elsewhere, env={**os.environ, "CCACHE_DISABLE": "1"})
            self.assertEqual(0, made.returncode, made.stdout + made.stderr)
        self.link_again(elsewhere)
        made = run("python3", "packaging/make_package.py", "build/windows", "build/package", cwd=elsewhere)
        self.assertEqual(0, made.returncode, made.stdout + made.stderr)
        for file in sorted(each for each in OUTPUT.iterdir() if each.is_file()):
            again = elsewhere / file.relative_to(ROOT)
            if file.read_bytes() != again.read_bytes():
                with zipfile.ZipFile(file) as one, zipfile.ZipFile(again) as other:
                    self.assertEqual([], [n for n in one.namelist() if one.read(n) != other.read(n)], file.name)
                self.fail(f"{file.name} differs")
        shutil.rmtree(elsewhere)

    def link_again(self, elsewhere):
        """Archives and links what stands beside the DLL: compiling it, in the same way, takes four times as long."""
        first, second = ROOT / "build/windows", elsewhere / "build/windows"
        programs = [built for built in (BUILT | WINE_BUILT).values() if not (second / built).exists()]
        self.assertEqual({"bin/korvane.exe", "bin/stage.dll", "bin/order_form.exe", "bin/wine_automation.dll"}, set(programs))
        commands = [
            command for command in run(tool("ninja"), "-C", str(second), "-t", "commands", *programs).stdout.splitlines()
            if " -c " not in command and " -o bin/korvane.dll " not in command
        ]
        for compiled in re.findall(r"\S+\.obj\b", "\n".join(commands)):
            put(first / compiled, second / compiled)
        for command in commands:
            made = run("bash", "-c", command, cwd=second)
            self.assertEqual(0, made.returncode, made.stdout + made.stderr)
        self.assertEqual([], [program for program in programs if not (second / program).exists()])
