"""The exported functions as korvane.h declares and explains them, in the terms of languages with errors and results."""

import re
from dataclasses import dataclass, field
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]
HEADER = ROOT / "include/korvane/korvane.h"
SECTION = re.compile(r"/\* -{4} (.+?) -+ \*/")
DECLARATION = re.compile(
    r"(?:/\*\*?(?P<comment>(?:(?!\*/).)*)\*/\s*)?"
    r"^(?P<declaration>[A-Za-z][\w ]*[ *]+\w+\([^()]*\)) KORVANE_NOEXCEPT;(?:[ ]*/\*\*< (?P<trailing>.*?) \*/)?",
    re.M | re.S,
)
TYPES = {
    "const TargetRecord*": "record", "TargetRecord*": "record out", "WindowInfo*": "info out", "HWND": "window",
    "const KorvaneChar*": "text", "KorvaneChar*": "owned text", "const char*": "html", "int": "int", "int64_t": "int64",
}
ANSWERS = {"isTargetEmpty", "targetContainsText", "targetContainsPartialText"}
# Without a window these use the one of setTargetWindow, or need none.
WINDOW_MAY_BE_LEFT_OUT = {"clickTarget", "pasteToTargetWithVerify", "pasteToTargetSimple", "verifySimple"}
ERRORS = {"KORVANE_NOT_FOUND": "NotFound", "KORVANE_INVALID_ARGUMENT": "InvalidArgument", "KORVANE_FAILED": "Failed",
          "KORVANE_CANCELLED": "Cancelled", "-1": "NotFound"}


@dataclass
class Parameter:
    kind: str  # of TYPES, or "flag"
    name: str
    explained: str = ""
    default: str = ""  # "none", or a number


@dataclass
class Function:
    name: str
    section: str
    # nothing, code, answer (yes or no, below 0 a code), match (of a comparison), flag, owned text, window
    result: str
    parameters: list
    returned: str = ""  # "", record or info: what a pointer of C hands back
    summary: list = field(default_factory=list)  # paragraphs
    succeeds: str = ""  # what success means, or what is returned
    errors: list = field(default_factory=list)  # pairs of NotFound and the like and when


def plain(comment):
    """A comment's text on one line per paragraph or tag."""
    lines = [re.sub(r"^\s*\* ?", "", line).strip() for line in comment.strip().splitlines()]
    text = re.sub(r"\s*@(param|return)", r"\n\n@\1", "\n".join(lines))
    return [re.sub(r"\s+", " ", paragraph).strip() for paragraph in re.split(r"\n\s*\n", text) if paragraph.strip()]


def result_of(name, declared):
    if name in ANSWERS:
        return "answer"
    if name == "verifySimple":
        return "match"
    if name == "isCancelled":
        return "flag"
    return {"void": "nothing", "int": "code", "KorvaneChar*": "owned text", "HWND": "window"}[declared]


def parameters_of(name, declared):
    for one in declared.split(","):
        kind, own = re.match(r"\s*(.*?[ *])\s*(\w+)$", one).groups()
        parameter = Parameter(TYPES[kind.strip()], own)
        if own == "mode":
            parameter = Parameter("flag", "insert", default="no")
        elif own == "window" and name in WINDOW_MAY_BE_LEFT_OUT:
            parameter.default = "none"
        elif own == "logPath":
            parameter.default = "none"
        elif own == "pauseMs":
            parameter.default = "1"
        yield parameter


def read_comment(function, paragraphs):
    """Sorts what a comment says into the function's summary, parameters, success and errors."""
    for paragraph in paragraphs:
        if match := re.match(r"@param (\w+) (.*)", paragraph):
            name = "insert" if match[1] == "mode" else match[1]
            for parameter in function.parameters:
                if parameter.name == name:
                    parameter.explained = match[2]
        elif match := re.match(r"@return (.*)", paragraph):
            text = match[1].rstrip(".")
            for part in re.split(r"(?:;|, or) (?=KORVANE_|-?\d\b)", text):
                code, rest = re.match(r"(KORVANE_\w+|-?\d)?,? ?(.*)", part).groups()
                if function.result == "match" and code == "KORVANE_NOT_FOUND":
                    function.succeeds += f"; not when {rest}"
                elif code in ERRORS:
                    function.errors.append((ERRORS[code], rest))
                elif code != "0" or function.result == "flag":
                    function.succeeds = rest or function.succeeds
        else:
            function.summary.append(paragraph)


def functions():
    """All of them, in the header's order. One without a comment of its own shares the one above it."""
    text = HEADER.read_text(encoding="utf-8")
    pieces = SECTION.split(text)
    for section, body in zip(pieces[1::2], pieces[2::2]):
        shared = ""
        for match in DECLARATION.finditer(body):
            shared = match["comment"] or shared
            declared, name, parameters = re.match(
                r"([\w ]+?\*?)\s*(\w+)\((.*)\)$", re.sub(r"\s+", " ", match["declaration"])).groups()
            every = [] if parameters == "void" else list(parameters_of(name, parameters))
            function = Function(name, section, result_of(name, declared.strip()), [
                each for each in every if not each.kind.endswith(" out")])
            function.returned = next((each.kind[:-4] for each in every if each.kind.endswith(" out")), "")
            comment = re.sub(r"^.*?(?=@return)", f"{match['trailing']}.\n", shared, flags=re.S) if match["trailing"] else shared
            read_comment(function, plain(comment))
            yield function
