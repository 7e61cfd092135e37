"""A recipe for Conan 2 that builds from the source tree that it lies in: conan create packaging/conan"""

import re
from pathlib import Path

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load

SOURCES = ("CMakeLists.txt", "LICENSE.txt", "NOTICES.txt", "cmake/*", "include/*", "platform/*", "src/*",
           "bindings/cpp/*", "packaging/*.cmake", "packaging/*.in")


class Korvane(ConanFile):
    name = "korvane"
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"

    def _root(self):
        return Path(self.recipe_folder).parents[1]

    def set_version(self):
        text = load(self, str(self._root() / "CMakeLists.txt"))
        self.version, self.description = re.search(r'project\(korvane VERSION ([\d.]+) DESCRIPTION "([^"]+)"', text).groups()
        self.license = re.match(r"SPDX-License-Identifier: (.+)", load(self, str(self._root() / "LICENSE.txt")))[1]

    def export_sources(self):
        for pattern in SOURCES:
            copy(self, pattern, str(self._root()), self.export_sources_folder)

    def validate(self):
        if (self.settings.os, self.settings.arch, self.settings.compiler) != ("Windows", "x86_64", "gcc"):
            raise ConanInvalidConfiguration("korvane is built with mingw for 64-bit Windows")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["KORVANE_LIBRARY_ONLY"] = True
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        for name in ("LICENSE.txt", "NOTICES.txt"):
            copy(self, name, self.source_folder, str(Path(self.package_folder) / "licenses"))

    def package_info(self):
        # The package's own CMake files are used.
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = ["lib/cmake/korvane"]
        self.cpp_info.libs = ["korvane"]
