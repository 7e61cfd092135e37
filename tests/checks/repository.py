"""What the checks share: where things are, what the public header declares, compilers, the built DLL."""

import os
import re
import shutil
import subprocess
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
HEADER = ROOT / "include/korvane/korvane.h"
DLL = ROOT / "build/windows/bin/korvane.dll"
# The door to the operating system.
PLATFORM = ROOT / "platform"
SCRATCH = ROOT / "build/test"
OBJDUMP = "x86_64-w64-mingw32-objdump"


def without_comments(text):
    """C and C++ source without comments and without the contents of literals."""
    pattern = r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])*\''
    return re.sub(pattern, lambda match: " " if match[0].startswith("/") else '""', text, flags=re.S)


def source(path):
    return without_comments(Path(path).read_text(encoding="utf-8"))


def sources(*folders, suffixes=(".h", ".hpp", ".c", ".cpp")):
    return sorted(file for folder in folders for file in (ROOT / folder).rglob("*") if file.suffix in suffixes)


def includes(path):
    """The quoted includes of a file, with their line numbers."""
    for number, line in enumerate(Path(path).read_text(encoding="utf-8").splitlines(), 1):
        if match := re.match(r'\s*#\s*include\s+"([^"]+)"', line):
            yield number, match[1]


def exported_functions():
    """The names that the public header declares."""
    text = re.sub(r"^\s*#.*$", "", source(HEADER), flags=re.M)
    return re.findall(r"(\w+)\s*\([^()]*\)\s*KORVANE_NOEXCEPT\s*;", text)


def tool(name):
    """The tool, or the test that needs it ends: skipped, but failed where everything has to be there."""
    found = shutil.which(name)
    if found is None:
        missing(f"{name} is not installed")
    return found


def missing(what):
    if os.environ.get("CI") == "true":
        raise AssertionError(what)
    raise unittest.SkipTest(what)


def run(*command, **options):
    if "input" not in options:
        options["stdin"] = subprocess.DEVNULL
    return subprocess.run(command, capture_output=True, text=True, check=False, **options)


def run_windows(*command, folder, environment=None, seconds=120):
    """Exit code and output. The output goes through a file: some Windows programs cannot write to a pipe."""
    tool("wine")
    if not os.environ.get("DISPLAY") or not os.environ.get("WINEPREFIX"):
        missing("no Wine is started: ./test does")
    output = Path(folder) / "output.txt"
    with open(output, "wb") as file:
        result = subprocess.run(
            ["wine", *map(str, command)], stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.STDOUT, cwd=folder,
            env={**os.environ, **(environment or {})}, timeout=seconds, check=False,
        )
    return result.returncode, output.read_bytes().decode("utf-8", "replace").replace("\r", "")


def dll():
    """The built DLL, brought up to date."""
    tool("x86_64-w64-mingw32-g++-win32")
    if not (ROOT / "build/windows/build.ninja").exists():
        configured = run("cmake", "--preset", "windows", cwd=ROOT)
        assert configured.returncode == 0, configured.stdout + configured.stderr
    built = run("cmake", "--build", "--preset", "windows", "--target", "korvane", "--", "-j2", cwd=ROOT)
    assert built.returncode == 0, built.stdout + built.stderr
    return DLL
