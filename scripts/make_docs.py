#!/usr/bin/env python3
"""Writes docs/reference.md and docs/bindings.md from the public header and the bindings.

make_docs.py [--check]      --check writes nothing and fails when a page is not what would be written
"""

import re
import sys

from bindings import BINDINGS, covered
from interface import DECLARATION, HEADER, ROOT, SECTION, plain
from written import write_or_check

CODES = {"0": "OK", "-1": "NOT_FOUND", "-2": "INVALID_ARGUMENT", "-3": "FAILED", "-4": "CANCELLED"}
NUMBERS = {name: number for number, name in CODES.items()}
# What the object layers offer, and how it is said in each.
OBJECTS = [
    ("a session",
     "with korvane.Session(log) as session:",
     "await Session.use({ log }, async (session) => …)",
     "using (var session = new Session(log))",
     "korvane::Session session(log);"),
    ("a window by its name",
     "session.window(title, class_name, process)",
     "session.window({ title, className, process })",
     "session.Window(title, className, process)",
     "WaitForWindow(window, {title, className, process})"),
    ("a window that the user clicks",
     "session.pick_window()",
     "session.pickWindow()",
     "session.PickWindow()",
     "PickWindow()"),
    ("a target at a point",
     "window.target_at(x, y)",
     "window.targetAt(x, y)",
     "window.TargetAt(x, y)",
     "window.TargetAt(target, x, y)"),
    ("under the mouse",
     "window.target_at_cursor()",
     "window.targetAtCursor()",
     "window.TargetAtCursor()",
     "window.TargetAtCursor(target)"),
    ("of a record that was kept",
     "window.target(record)",
     "window.target(record)",
     "window.Target(record)",
     "window.TargetOf(record)"),
    ("of a recording's step",
     "session.target_of_step(file, step)",
     "session.targetOfStep(file, step)",
     "session.TargetOfStep(file, step)",
     "TargetOfStep(target, file, step)"),
    ("act",
     "target.click(), .paste(text), .type(text)",
     "target.click(), .paste(text), .type(text)",
     "target.Click(), .Paste(text), .Type(text)",
     "target.Click(), .Paste(text), .Type(text)"),
    ("read, test, wait",
     "target.text(), .check(text), .wait(text)",
     "target.text(), .check(text), .wait(text)",
     "target.Text(), .Check(text), .Wait(text)",
     "target.Text(), .Check(text), .Wait(text)"),
    ("errors",
     "NotFoundError, InvalidArgumentError, FailedError, CancelledError",
     "NotFoundError, InvalidArgumentError, FailedError, CancelledError",
     "NotFoundException, InvalidArgumentException, FailedException, CancelledException",
     "Code::NotFound, InvalidArgument, Failed, Cancelled"),
]
GENERATED = "<!-- Written by scripts/make_docs.py from {}. -->\n\n"


def results(text):
    """A list of results, when the text is one: 'KORVANE_OK found; KORVANE_NOT_FOUND not found; ...'."""
    text = re.sub(r"\bKORVANE_(" + "|".join(CODES.values()) + r")\b", lambda name: NUMBERS[name[1]], text)
    parts = re.split(r"(?:;|, or) (?=-?\d\b)", text.rstrip("."))
    if not re.match(r"-?\d\b", text):
        return [f"Returns {text}"]
    yes_or_no = parts[0].startswith("1 ")
    lines = []
    for part in parts:
        code, rest = re.match(r"(-?\d),? ?(.*)", part).groups()
        name = CODES.get(code) if not yes_or_no or code not in ("0", "1", "-1") else None
        shown = f"`{code}`" + (f" `KORVANE_{name}`" if name else "")
        lines.append(f"- {shown}: {rest}" if rest else f"- {shown}")
    return ["Returns", "\n".join(lines)]


def function_entry(declaration, comment):
    name = re.search(r"(\w+)\(", declaration)[1]
    parts = [f"### {name}", "```c\n" + re.sub(r"\s+", " ", declaration) + ";\n```"]
    parameters = []
    for paragraph in plain(comment):
        if match := re.match(r"@param (\w+) (.*)", paragraph):
            parameters.append(f"- `{match[1]}`: {match[2]}")
        elif match := re.match(r"@return (.*)", paragraph):
            parts += results(match[1])
        else:
            parts.append(paragraph)
    if parameters:
        before = next((at for at, part in enumerate(parts) if part.startswith("Returns")), len(parts))
        parts.insert(before, "\n".join(parameters))
    return name, "\n\n".join(parts)


def functions(section):
    """The entries of a section; one without a comment of its own shares the one above it."""
    shared = ""
    for match in DECLARATION.finditer(section):
        comment, trailing = match["comment"], match["trailing"]
        if comment is not None:
            shared = comment
        own = f"{trailing}.\n" if trailing else ""
        text = re.sub(r"^.*?(?=@return)", own, shared, flags=re.S) if trailing else comment or shared
        yield function_entry(match["declaration"], text)


def reference():
    text = HEADER.read_text(encoding="utf-8")
    pieces = SECTION.split(text)
    introduction = re.search(r"/\*\*\n \* @file korvane.h(.*?)\*/", text, re.S)[1]
    conventions = re.sub(r"^ \* ?", "", introduction, flags=re.M).strip()
    conventions = re.sub(r"(?<!`)<windows.h>", "`<windows.h>`", conventions)
    page = ["# Reference", GENERATED.format("include/korvane/korvane.h").strip(), conventions]
    page.append("Result codes:\n\n| | | |\n|---|---|---|\n" + "\n".join(
        f"| `{value}` | `KORVANE_{name}` | {meaning} |"
        for meaning, name, value in re.findall(r"/\*\* ([^/]*?) \*/\s+KORVANE_(OK|NOT_FOUND|INVALID_ARGUMENT|FAILED|CANCELLED) = (-?\d)", text)
    ))
    page.append("The records `TargetRecord` and `WindowInfo` are described in [korvane.h](../include/korvane/korvane.h), their "
                "layout in [bindings.md](bindings.md#record-layout).")
    names = []
    for title, section in zip(pieces[1::2], pieces[2::2]):
        entries = list(functions(section))
        names += [name for name, _ in entries]
        page.append(f"## {title}")
        page.append(" · ".join(f"[{name}](#{name.lower()})" for name, _ in entries))
        page += [entry for _, entry in entries]
    return "\n\n".join(page) + "\n", names


def bindings(names):
    page = ["# Bindings", GENERATED.format("include/korvane/korvane.h and bindings/").strip()]
    page.append("Each language calls all exported functions, under names of its own habit. What answers a result code is an "
                "error of the language there, except in C++, which returns the code. "
                "`freeTextResult` is called by what hands a text out.")
    page.append("| Language | Binding | Example | Tried |\n|---|---|---|---|\n"
                "| C | [korvane.h](../include/korvane/korvane.h) | [order_form.c](../examples/c/order_form.c), "
                "[load_at_run_time.c](../examples/c/load_at_run_time.c) | mingw, the DLL under Wine |\n"
                "| C++17 | `korvane.hpp` beside korvane.h in the package | [order_form.cpp](../examples/cpp/order_form.cpp) "
                "| mingw, the DLL under Wine; g++ on the stand-in |\n"
                "| Python 3.8 | wheel, [README](../bindings/python/README.md) | [order_form.py](../examples/python/order_form.py) "
                "| the wheel installed by pip: CPython 3.11 on the stand-in; mypy --strict; not on Windows |\n"
                "| Node.js 18 | npm package, [README](../bindings/node/README.md) | [order_form.js](../examples/node/order_form.js) "
                "| installed from the packed file: Node.js 18 for Windows with the DLL under Wine; Node.js on the stand-in; "
                "TypeScript 5.9 |\n"
                "| .NET Standard 2.0 | NuGet package, [README](../bindings/csharp/README.md) | "
                "[OrderForm.cs](../examples/csharp/OrderForm.cs), [Stage.cs](../examples/csharp/Stage.cs) "
                "| its assembly: Mono's compiler, Mono on the stand-in; not on Windows, not with .NET, no NuGet client |")
    page.append("## Sessions, windows and targets")
    page.append("The same words in each language. Errors carry the code, the exported function and the last lines of the log; C++ returns "
                "codes. What is "
                "below is a small layer over the functions: it names windows, chooses a record's strongest identification, "
                "forgets remembered points before each click, and keeps two clicks from becoming a double click.")
    page.append("| | Python (seconds) | Node.js (milliseconds, promises) | .NET (TimeSpan) | C++ (codes, std::chrono) |\n|---|---|---|---|---|\n" + "\n".join(
        f"| {what} | {' | '.join(f'`{each}`' if each else '—' for each in how)} |" for what, *how in OBJECTS))
    languages = list(BINDINGS)
    rows, gaps = [], []
    for name in names:
        own = {language: covered(language, name) for language in languages}
        gaps += [f"{language} lacks {name}" for language, found in own.items() if found is None]
        rows.append(f"| [{name}](reference.md#{name.lower()}) | "
                    + " | ".join(f"`{found}`" if found else "—" for found in own.values()) + " |")
    page.append(f"## The {len(names)} functions")
    page.append("| C | " + " | ".join(languages) + " |\n|" + "---|" * (len(languages) + 1) + "\n" + "\n".join(rows))
    layout = (ROOT / "tests/checks/header.c").read_text(encoding="utf-8")
    page.append("## Record layout")
    page.append("Little-endian, without padding; every binding is compared with it, field by field.")
    for record, size in re.findall(r"sizeof\((TargetRecord|WindowInfo)\) == (\d+)", layout):
        fields = re.findall(rf"offsetof\({record}, (\w+)\) == (\d+)", layout)
        page.append(f"`{record}`, {int(size):,} bytes:\n\n| Offset | Field |\n|---|---|\n"
                    + "\n".join(f"| {at} | `{field}` |" for field, at in fields))
    return "\n\n".join(page) + "\n", gaps


def main():
    page, names = reference()
    table, gaps = bindings(names)
    problems = write_or_check("make_docs.py", {"docs/reference.md": page, "docs/bindings.md": table}, gaps)
    print("\n".join(problems) if problems else f"{len(names)} functions, in every binding")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
