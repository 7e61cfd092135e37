"""The recipes for vcpkg and Conan, without those tools, which Debian does not have: each runs against a stand-in for the
tool's own functions, which does with CMake what the tool would do, and a program is built against the outcome."""

import importlib.util
import json
import re
import sys
import types
import unittest
from pathlib import Path

from check_consumers import HOST, TOOLCHAIN
from check_dll import version
from repository import ROOT, run, tool
from unpacked import run_windows, scratch

VCPKG = """
set(CURRENT_PACKAGES_DIR {prefix})
function(vcpkg_cmake_configure)
  cmake_parse_arguments(PARSE_ARGV 0 given "" "SOURCE_PATH" "OPTIONS")
  execute_process(COMMAND ${{CMAKE_COMMAND}} -G Ninja -S ${{given_SOURCE_PATH}} -B {build} -DCMAKE_TOOLCHAIN_FILE={toolchain}
                          -DCMAKE_BUILD_TYPE=Release ${{given_OPTIONS}} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
function(vcpkg_cmake_install)
  # Compiling once more would take a minute: what would be built is listed, and what ./package built is installed.
  execute_process(COMMAND ninja -C {build} -n -v OUTPUT_FILE {build}/listed.txt COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND ${{CMAKE_COMMAND}} --install {built} --prefix {prefix} COMMAND_ERROR_IS_FATAL ANY)
endfunction()
function(vcpkg_install_copyright)
  cmake_parse_arguments(PARSE_ARGV 0 given "" "" "FILE_LIST")
  file(COPY ${{given_FILE_LIST}} DESTINATION {prefix}/share/korvane)
endfunction()
include({port}/portfile.cmake)
"""

PROJECT = """
cmake_minimum_required(VERSION 3.16)
project(host LANGUAGES C)
find_package(korvane {version} CONFIG REQUIRED)
add_executable(host host.c)
target_link_libraries(host PRIVATE korvane::korvane)
"""


class Recipes(unittest.TestCase):
    def succeeds(self, *command, **options):
        result = run(*map(str, command), timeout=300, **options)
        self.assertEqual(0, result.returncode, result.stdout + result.stderr)
        return result.stdout

    def test_vcpkg(self):
        """recipes: the port for vcpkg builds the library alone, and find_package finds what it installs"""
        folder = scratch("vcpkg")
        port, prefix = ROOT / "packaging/vcpkg/korvane", folder / "installed"
        described = json.loads((port / "vcpkg.json").read_text())
        self.assertEqual(("korvane", version()), (described["name"], described["version"]))
        (folder / "run.cmake").write_text(
            VCPKG.format(prefix=prefix, build=folder / "build", built=ROOT / "build/windows", toolchain=TOOLCHAIN,
                         port=port))
        self.succeeds("cmake", "-P", folder / "run.cmake")
        listed = (folder / "build/listed.txt").read_text()
        self.assertEqual(["bin/korvane.dll"], re.findall(r" -o (bin/\S+)", listed))
        there = {file.relative_to(prefix).as_posix() for file in prefix.rglob("*") if file.is_file()}
        self.assertLessEqual({
            "bin/korvane.dll", "bin/korvane.dll.debug", "lib/libkorvane.dll.a", "include/korvane/korvane.h",
            "include/korvane/korvane.hpp", "include/korvane/recording.hpp", "include/korvane/version.h", "lib/pkgconfig/korvane.pc", "share/korvane/LICENSE.txt",
        }, there)
        (folder / "host.c").write_text(HOST)
        (folder / "CMakeLists.txt").write_text(PROJECT.format(version=version()))
        self.succeeds("cmake", "-G", "Ninja", "-S", folder, "-B", folder / "host", f"-DCMAKE_PREFIX_PATH={prefix}",
                      f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}")
        self.succeeds("cmake", "--build", folder / "host")
        (folder / "host/korvane.dll").symlink_to(prefix / "bin/korvane.dll")
        self.assertEqual((0, "code 0, process"), run_windows("host.exe", folder=folder / "host"))

    def test_conan(self):
        """recipes: the one for Conan exports what the library is built from, and takes version and licence from the project"""
        exported = scratch("conan")
        recipe = self.recipe()(recipe_folder=str(ROOT / "packaging/conan"), export_sources_folder=str(exported))
        recipe.set_version()
        licence = re.match(r"SPDX-License-Identifier: (.+)", (ROOT / "LICENSE.txt").read_text())[1]
        self.assertEqual(("korvane", version(), licence), (recipe.name, recipe.version, recipe.license))
        recipe.export_sources()
        # What was exported is enough to configure, which names every source file.
        self.succeeds("cmake", "-G", "Ninja", "-S", exported, "-B", exported / "build", "-DKORVANE_LIBRARY_ONLY=ON",
                      f"-DCMAKE_TOOLCHAIN_FILE={TOOLCHAIN}")
        inputs = self.succeeds(tool("ninja"), "-C", exported / "build", "-t", "inputs", "korvane")
        self.assertEqual([], [name for name in inputs.split() if name.startswith("/") and str(exported) in name
                              and "/build/" not in name and not Path(name).exists()])
        for settings, refused in ((("Windows", "x86_64", "gcc"), False), (("Windows", "x86_64", "msvc"), True),
                                  (("Linux", "x86_64", "gcc"), True)):
            recipe.settings = types.SimpleNamespace(**dict(zip(("os", "arch", "compiler"), settings)))
            if refused:
                self.assertRaises(ValueError, recipe.validate)
            else:
                recipe.validate()

    def recipe(self):
        """The recipe's class, with just enough of Conan to import it."""
        def copy(_, pattern, source, target):
            found = [file for file in Path(source).glob(pattern)]
            self.assertTrue(found, pattern)
            for file in (each for path in found for each in ([path] if path.is_file() else path.rglob("*")) if each.is_file()):
                place = Path(target) / file.relative_to(source)
                place.parent.mkdir(parents=True, exist_ok=True)
                place.write_bytes(file.read_bytes())

        conan_file = type("ConanFile", (), {"__init__": lambda self, **values: self.__dict__.update(values)})
        modules = {
            "conan": {"ConanFile": conan_file}, "conan.errors": {"ConanInvalidConfiguration": ValueError}, "conan.tools": {},
            "conan.tools.cmake": {"CMake": None, "CMakeToolchain": None, "cmake_layout": None},
            "conan.tools.files": {"copy": copy, "load": lambda _, path: Path(path).read_text(encoding="utf-8")},
        }
        for name, members in modules.items():
            module = types.ModuleType(name)
            module.__dict__.update(members)
            sys.modules[name] = module
        try:
            described = importlib.util.spec_from_file_location("recipe", ROOT / "packaging/conan/conanfile.py")
            module = importlib.util.module_from_spec(described)
            described.loader.exec_module(module)
            return module.Korvane
        finally:
            for name in modules:
                del sys.modules[name]
