"""Rules of the source tree that no compiler knows."""

import re
import unittest

from repository import ROOT, includes, run, source, sources, tool

# From bottom to top. Rooms on one floor do not see each other.
FLOORS = [
    ["log"],
    ["clipboard", "util"],
    ["automation"],
    ["capture"],
    ["resolve"],
    ["input"],
    ["text"],
]
HEIGHT = {room: height for height, rooms in enumerate(FLOORS) for room in rooms}
HOST_FLOORS = ["base", "world", "recording", "engine", "recorder", "export", "report", "commands"]
CODE = ["platform", "src", "include", "standin", "wine_automation", "samples", "tests", "host", "bindings", "examples",
        "fuzz", "benchmarks"]
NATIVE = ROOT / "platform/native.h"


def rule_breakers(folder, allowed):
    """The quoted includes below a folder that `allowed(file, included)` refuses."""
    return [
        f"{file.relative_to(ROOT)}:{number}: {included}"
        for file in sources(folder)
        for number, included in includes(file)
        if not allowed(file, included)
    ]


class Source(unittest.TestCase):
    maxDiff = None

    def test_floors(self):
        """source: platform is the ground, and every room of src/ includes only its own floor and lower ones"""
        self.assertEqual([], rule_breakers("platform", lambda file, included: included.startswith("platform/")))
        rooms = {folder.name for folder in (ROOT / "src").iterdir() if folder.is_dir()}
        self.assertEqual(set(HEIGHT), rooms)

        def allowed(file, included):
            room, other = file.parent.name, included.split("/")[0]
            return other in ("korvane", "platform", room) or HEIGHT.get(other, 99) < HEIGHT[room]

        self.assertEqual([], rule_breakers("src", allowed))

    def test_companion(self):
        """source: the companion program sees lower floors of its own, the public header, and in one place the platform"""

        def allowed(file, included):
            place, *rest = included.split("/")
            if place == "host":
                own = file.parent.name
                return own == "host" or HOST_FLOORS.index(rest[0]) <= HOST_FLOORS.index(own)
            if place == "platform":
                return file.name == "elements.cpp"
            return place == "korvane" or (file.name.startswith("world_standin") and place in ("samples", "standin"))

        self.assertEqual([], rule_breakers("host", allowed))

    def test_circles(self):
        """source: no header includes itself in a circle"""
        roots = [ROOT, ROOT / "src", ROOT / "include"]
        graph = {}
        for file in sources(*CODE, suffixes=(".h",)):
            found = (root / included for _, included in includes(file) for root in roots)
            graph[file] = {other for other in found if other.is_file()}
        # Whatever includes nothing that is left is taken away until nothing changes; circles stay.
        while ends := [file for file, others in graph.items() if not others & graph.keys()]:
            for file in ends:
                del graph[file]
        self.assertEqual([], [str(file.relative_to(ROOT)) for file in graph])

    def test_stand_in(self):
        """source: the stand-in sees platform and nothing else of the library"""

        def allowed(file, included):
            return included.split("/")[0] not in HEIGHT

        self.assertEqual([], rule_breakers("standin", allowed))

    def test_wine_automation(self):
        """source: the UI Automation for Wine sees its own files, the client objects and their door to the platform"""

        def allowed(file, included):
            return included.split("/")[0] == "wine_automation" or included.startswith("standin/uia/") \
                or included == "platform/uia.h"

        self.assertEqual([], rule_breakers("wine_automation", allowed))

    def test_hosts(self):
        """source: the public header and its hosts know nothing of src/"""
        self.assertEqual([], rule_breakers("include", lambda file, included: False))

    def test_conditionals(self):
        """source: only platform and the public header know which world they are compiled for"""
        found = [
            f"{file.relative_to(ROOT)}: {line.strip()}"
            for file in sources("src")
            for line in source(file).splitlines()
            if re.match(r"\s*#\s*(if|ifdef|ifndef|elif|else)\b", line)
        ]
        self.assertEqual([], found)

    def test_platform_calls(self):
        """source: the native declarations are of functions that the library calls, no others"""
        declared = re.findall(r"(\w+)\([^()]*\);", source(NATIVE))
        self.assertGreater(len(declared), 60)
        library = "\n".join(source(file) for file in sources("platform", "src") if file != NATIVE)
        self.assertEqual([], [name for name in declared if not re.search(rf"\b{name}[(>]", library)])

    def test_build_lists_every_source(self):
        """source: src/CMakeLists.txt lists every file of the library"""
        text = (ROOT / "src/CMakeLists.txt").read_text(encoding="utf-8").replace("${platform}", "platform")
        listed = set(re.findall(r"\b\w+/\w+\.cpp\b", text))
        there = {str(file.relative_to(ROOT / "src")) for file in sources("src", suffixes=(".cpp",))}
        there |= {str(file.relative_to(ROOT)) for file in sources("platform", suffixes=(".cpp",))}
        self.assertEqual(there, listed)

    def test_format(self):
        """source: formatted by clang-format"""
        formatter = tool("clang-format-19")
        files = [str(file) for file in sources(*CODE)]
        result = run(formatter, "--dry-run", "--Werror", *files, cwd=ROOT)
        wrong = sorted(set(re.findall(rf"^{ROOT}/(\S+?):\d+", result.stderr, re.M)))
        self.assertEqual([], wrong)
        self.assertEqual(0, result.returncode, result.stderr)
