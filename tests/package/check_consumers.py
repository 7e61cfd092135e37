"""Programs built against the unpacked package, run under Wine."""

import os
import shlex
import shutil
import unittest

from check_dll import version
from repository import ROOT, run, tool
from unpacked import SUBMITTED, demonstrated, run_windows, scratch, unpacked

TOOLCHAIN = ROOT / "cmake/mingw-w64.cmake"
GCC = "x86_64-w64-mingw32-gcc-win32"
GXX = "x86_64-w64-mingw32-g++-win32"
WARNINGS = ["-Wall", "-Wextra", "-Wconversion", "-Werror"]
ORDERED = SUBMITTED.format("é", "í")

FIND = """
cmake_minimum_required(VERSION 3.16)
project(find LANGUAGES C)
if(DEFINED POINTER)
  set(CMAKE_SIZEOF_VOID_P ${POINTER})
endif()
find_package(korvane ${WANTED} CONFIG QUIET)
message(STATUS "found: ${korvane_FOUND}")
"""

HOST = """
#include <stdio.h>
#include <windows.h>
#include <korvane/korvane.h>
int main(void) {
  WindowInfo info;
  printf("code %d, process", getWindowInfo(GetDesktopWindow(), &info));
  return 0;
}
"""

# Nothing here takes a tenth of it.
SECONDS = 300


class Consumers(unittest.TestCase):
    def succeeds(self, *command, **options):
        result = run(*map(str, command), timeout=SECONDS, **options)
        self.assertEqual(0, result.returncode, result.stdout + result.stderr)
        return result.stdout

    def orders(self, folder, program):
        self.assertEqual((0, ORDERED), run_windows(program, folder=folder), program)

    def put_dlls(self, folder):
        for name in ("bin/korvane.dll", "examples/stage/stage.dll", "examples/stage/order_form.exe"):
            shutil.copy2(unpacked() / name, folder)

    def test_find_package(self):
        """consumers: C11 and C++ by find_package, and one that loads the DLL at run time"""
        folder = scratch("by cmake")
        self.succeeds(
            "cmake", "-G", "Ninja", "-S", unpacked() / "examples", "-B", folder, f"-DCMAKE_PREFIX_PATH={unpacked()}",
            f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}", f"-DCMAKE_C_FLAGS={' '.join(WARNINGS)}",
            f"-DCMAKE_CXX_FLAGS={' '.join(WARNINGS)}",
        )
        self.succeeds("cmake", "--build", folder, "--", "-j2")
        self.orders(folder, "order_form_c.exe")
        self.orders(folder, "order_form_cpp.exe")
        code, output = run_windows("load_at_run_time.exe", folder=folder)
        self.assertEqual((0, "code 0, process"), (code, output[:15]), output)
        (folder / "korvane.dll").unlink()
        code, output = run_windows("load_at_run_time.exe", folder=folder)
        self.assertEqual((1, "no korvane.dll beside"), (code, output[:21]), output)
        # One that lies in the current folder is not taken.
        (folder / "elsewhere").mkdir()
        shutil.copy2(unpacked() / "bin/korvane.dll", folder / "elsewhere")
        code, output = run_windows("../load_at_run_time.exe", folder=folder / "elsewhere")
        self.assertEqual((1, "no korvane.dll beside"), (code, output[:21]), output)

    def test_found_versions(self):
        """consumers: find_package gives what was asked for or nothing"""
        folder = scratch("find")
        (folder / "CMakeLists.txt").write_text(FIND)
        major, minor, patch = map(int, version().split("."))
        cases = [
            ("", None, True),
            (f"{major}.{minor}", None, True),
            (f"{major}.{minor}.{patch}", None, True),
            (f"{major}.{minor}.{patch + 1}", None, False),
            (f"{major}.{minor + 1}", None, False),
            (f"{major + 1}.0", None, False),
            ("", 4, False),
        ]
        for wanted, pointer, found in cases:
            output = self.succeeds(
                "cmake", "-G", "Ninja", "-S", folder, "-B", folder / "build", f"-DCMAKE_PREFIX_PATH={unpacked()}",
                f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}", f"-DWANTED={wanted}", "-Ukorvane_DIR", "-UPOINTER",
                *([f"-DPOINTER={pointer}"] if pointer else []),
            )
            self.assertIn(f"found: {1 if found else 0}", output.replace("TRUE", "1").replace("FALSE", "0"), wanted)

    def test_pkg_config(self):
        """consumers: C11 and C++ by pkg-config"""
        environment = {**os.environ, "PKG_CONFIG_LIBDIR": str(unpacked() / "lib/pkgconfig")}
        flags = self.succeeds(tool("pkg-config"), "--cflags", "--libs", "korvane", env=environment)
        folder = scratch("by pkg-config")
        examples = unpacked() / "examples"
        stage = ["-I", examples / "stage", examples / "stage/stage.lib"]
        for compiler, standard, source in ((GCC, "c11", "c/order_form.c"), (GXX, "c++17", "cpp/order_form.cpp")):
            program = folder / f"{standard}.exe"
            self.succeeds(
                compiler, f"-std={standard}", *WARNINGS, "-static", examples / source, "-o", program,
                *shlex.split(flags), *stage,
            )
            self.put_dlls(folder)
            self.orders(folder, program.name)

    def test_other_import_library(self):
        """consumers: C11 by the import library for MSVC, which this linker reads too"""
        folder = scratch("by import library")
        examples = unpacked() / "examples"
        self.succeeds(
            GCC, "-std=c11", *WARNINGS, "-static", "-I", unpacked() / "include", "-I", examples / "stage",
            examples / "c/order_form.c", "-o", folder / "order.exe", unpacked() / "lib/korvane.lib",
            examples / "stage/stage.lib",
        )
        self.put_dlls(folder)
        self.orders(folder, "order.exe")

    def test_demo(self):
        """consumers: the demonstration of the zip records, replays and reports, as a double click starts it"""
        self.assertIn("Brass compass", (demonstrated() / "report.html").read_text(encoding="utf-8"))
        self.assertEqual({"order.json", "korvane.log", "report.html"}, {file.name for file in demonstrated().iterdir()})

    def test_run_under_wine(self):
        """consumers: the script for continuous integration runs a host of the package, and tells plainly what it lacks"""
        script = unpacked() / "scripts/run_under_wine.sh"
        absent = run("bash", str(script), "absent.exe")
        self.assertEqual((1, "run_under_wine: no such program: absent.exe\n"), (absent.returncode, absent.stderr))
        self.assertEqual(2, run("bash", str(script)).returncode)

        tool("wine")
        folder = scratch("continuous integration")
        (folder / "host.c").write_text(HOST)
        self.succeeds(
            GCC, "-std=c11", "-static", "-I", unpacked() / "include", folder / "host.c", "-o", folder / "host.exe",
            unpacked() / "lib/korvane.lib",
        )
        # The Wine of the other checks is in use.
        environment = {**os.environ, "KORVANE_WINE_PREFIX": str(ROOT / "build/test/wine-prefix")}
        output = self.succeeds(
            "bash", script, "--start", unpacked() / "examples/stage/order_form.exe", "--picture", folder / "screen.png",
            folder / "host.exe", env=environment,
        )
        self.assertIn("code 0, process", output)
        # An empty screen takes some 300 bytes.
        self.assertGreater((folder / "screen.png").stat().st_size, 1500)
