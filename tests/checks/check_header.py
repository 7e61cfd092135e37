"""The public header as hosts compile it."""

import re
import unittest

from repository import ROOT, run, tool

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Wconversion", "-Werror", "-fsyntax-only"]
INCLUDES = ["-I", str(ROOT / "include"), "-I", str(ROOT)]
SOURCE = str(ROOT / "tests/checks/header.c")
C = [["-xc", "-std=c11"], ["-xc", "-std=c17"]]
CXX = [["-xc++", "-std=c++11"], ["-xc++", "-std=c++20"]]
ALONE = []


def around(header):
    return [[f"-DPLATFORM_HEADER_BEFORE={header}"], [f"-DPLATFORM_HEADER_AFTER={header}"]]


class Header(unittest.TestCase):
    def compiles(self, compiler, languages, surroundings):
        tool(compiler)
        for language in languages:
            for surrounding in [ALONE, *surroundings]:
                result = run(compiler, *language, *WARNINGS, *INCLUDES, *surrounding, SOURCE)
                self.assertEqual(0, result.returncode, f"{language} {surrounding}\n{result.stderr}")

    def test_gcc(self):
        """header: gcc compiles it as C and finds the layouts"""
        self.compiles("gcc", C, [])

    def test_gxx(self):
        """header: g++ compiles it as C++ and finds the layouts"""
        self.compiles("g++", CXX, [])
        self.compiles("g++", CXX[1:], around('"platform/platform.h"'))

    def test_clang(self):
        """header: clang compiles it as C and C++ and finds the layouts"""
        self.compiles("clang", C + CXX, [])

    def test_windows(self):
        """header: mingw compiles it as C and C++, with and without <windows.h>, and finds the layouts"""
        loose = [[flags[0], "-DNO_STRICT"] for flags in around("<windows.h>")]
        self.compiles("x86_64-w64-mingw32-gcc-win32", C, around("<windows.h>") + loose)
        self.compiles("x86_64-w64-mingw32-g++-win32", CXX, around("<windows.h>") + loose)

    def test_readme(self):
        """header: the example of the README compiles"""
        compiler = tool("x86_64-w64-mingw32-gcc-win32")
        example = re.search(r"```c\n(.*?)```", (ROOT / "README.md").read_text(encoding="utf-8"), re.S)[1]
        result = run(compiler, "-xc", "-std=c11", *WARNINGS, *INCLUDES, "-", input=example)
        self.assertEqual(0, result.returncode, result.stderr)
