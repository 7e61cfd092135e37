"""The documents: what they link to is there, what they quote occurs, their samples compile, generated pages are current."""

import re
import unittest

from repository import ROOT, run, tool

PAGES = sorted([*ROOT.glob("*.md"), *(ROOT / "docs").glob("*.md"), ROOT / "packaging/README.md"])
WARNINGS = ["-Wall", "-Wextra", "-Wno-unused-function", "-Wconversion", "-Werror", "-fsyntax-only"]
INCLUDES = ["-I", str(ROOT / "include"), "-I", str(ROOT / "bindings/cpp")]
# A sample that is no file of its own is the body of a function of a host.
BODY = """#include <korvane/korvane.h>
int Host(TargetRecord record, HWND form);
int Host(TargetRecord record, HWND form) {{
  int result = KORVANE_OK;
  (void)record, (void)form;
{}
  return result;
}}
"""
# Where these are in the package, seen from the README that is packed with it.
PACKED = {"include/korvane/korvane.hpp": "bindings/cpp/korvane/korvane.hpp"}


def blocks(page, language):
    return re.findall(rf"^```{language}\n(.*?)^```", page.read_text(encoding="utf-8"), re.M | re.S)


def prose(page):
    """Without code, where a bracket is no link."""
    return re.sub(r"^```.*?^```", "", page.read_text(encoding="utf-8"), flags=re.M | re.S)


def anchors(page):
    titles = re.findall(r"^#+ (.*)$", prose(page), re.M)
    return {re.sub(r"[^\w\- ]", "", title.lower()).replace(" ", "-") for title in titles}


def place_of(page, target):
    if page.parent.name != "packaging":
        return page.parent / target
    return ROOT / PACKED.get(target, target)


def literals():
    text = "".join(file.read_text(encoding="utf-8") for file in sorted((ROOT / "src").rglob("*.*")))
    # Literals that follow each other are one.
    text = re.sub(r'"\s*\n\s*"', "", text)
    return {literal.replace('\\"', '"').replace("\\r\\n", "") for literal in re.findall(r'"((?:\\.|[^"\\\n])*)"', text)}


def occurs(line, known):
    """Whether the source can write the line, in which … stands for what differs."""
    if match := re.fullmatch(r"ERROR (\w+) Code:(-\d) Details:(.*)", line):
        return " Code:" in known and match[1] in known and match[3] in known
    if line.startswith("Details:"):
        return " Details:" in known and line[8:] in known
    prefix = re.match(r"\[\w+\] ", line)
    if prefix and prefix[0] in known:
        line = line[len(prefix[0]) :]
    fragments = [fragment for fragment in line.split("…") if fragment.strip()]
    return bool(fragments) and all(any(fragment in literal for literal in known) for fragment in fragments)


class Docs(unittest.TestCase):
    maxDiff = None

    def test_links(self):
        """docs: every link leads to a file and a heading that are there"""
        broken = []
        for page in PAGES:
            for target in re.findall(r"\]\(([^)\s]+)\)", prose(page)):
                name, _, anchor = target.partition("#")
                place = place_of(page, name) if name else page
                if not place.exists() or (anchor and anchor not in anchors(place)):
                    broken.append(f"{page.relative_to(ROOT)}: {target}")
        self.assertEqual([], broken)
        self.assertGreater(len(PAGES), 8)

    def test_generated(self):
        """docs: the reference, the table of bindings and their plain functions are current, and no binding has a gap"""
        for script in ("make_docs.py", "make_bindings.py"):
            result = run("python3", str(ROOT / "scripts" / script), "--check")
            self.assertEqual(0, result.returncode, result.stdout + result.stderr)

    def test_quoted_log_lines(self):
        """docs: every log line that is explained can be written by the source"""
        known = literals()
        quoted = []
        for name in ("log", "troubleshooting"):
            for cell in re.findall(r"^\| (`.*?) \|", (ROOT / f"docs/{name}.md").read_text(encoding="utf-8"), re.M):
                quoted += re.findall(r"`([^`]+)`", cell)
        self.assertGreater(len(quoted), 40)
        self.assertEqual([], [line for line in quoted if not occurs(line, known)])

    def test_c_samples(self):
        """docs: the samples in C and C++ compile"""
        for language, compiler, standard in (("c", "gcc", "c11"), ("cpp", "g++", "c++17")):
            command = tool(f"x86_64-w64-mingw32-{compiler}-win32")
            for page in PAGES:
                if page.name == "reference.md":
                    continue  # declarations, taken from the header itself
                for sample in blocks(page, language):
                    code = sample if "#include" in sample else BODY.format(sample)
                    kind = "c" if language == "c" else "c++"
                    result = run(command, f"-x{kind}", f"-std={standard}", *WARNINGS, *INCLUDES, "-", input=code)
                    self.assertEqual(0, result.returncode, f"{page.name}:\n{sample}\n{result.stderr}")

    def test_shell_samples(self):
        """docs: the commands are well formed, and those of this repository exist"""
        for page in PAGES:
            for sample in blocks(page, "(?:sh)?"):
                if not re.match(r"(\./|cmake|scripts/|apt-get|python)", sample):
                    continue
                result = run("bash", "-n", input=sample)
                self.assertEqual(0, result.returncode, f"{page.name}:\n{sample}\n{result.stderr}")
                for command in re.findall(r"^((?:\./|scripts/)\S+)", sample, re.M):
                    self.assertTrue((ROOT / command).is_file(), f"{page.name}: {command}")
                for preset in re.findall(r"--preset (\w+)", sample):
                    self.assertIn(f'"name": "{preset}"', (ROOT / "CMakePresets.json").read_text(encoding="utf-8"))
