#!/usr/bin/env python3
"""Writes the layer of plain functions of the bindings from the public header: declarations, types and explanations.

make_bindings.py [--check]      --check writes nothing and fails when a file is not what would be written
"""

import re
import sys
import textwrap

from bindings import capital, underscored
from interface import functions
from written import write_or_check

WIDTH = 120
CONSTANT = re.compile(r"KORVANE_(METHOD_|KEY_)?([A-Z_]+)")


class Words:
    """How a language calls what an explanation mentions."""

    def __init__(self, function_name, parameter_name, null, code="Code.{}", method="Method.{}"):
        self.function_name, self.parameter_name, self.null = function_name, parameter_name, null
        self.code, self.method = code, method
        self.names = {each.name for each in functions()}

    def own(self, name):
        if name in self.names:
            return self.function_name(name)
        return self.parameter_name(name) if re.fullmatch(r"[a-z]+([A-Z]\w*)?", name) else name

    def __call__(self, text):
        text = text.replace("owned by the caller, who gives it back to `freeTextResult`; ", "")
        text = text.replace("the fragment as UTF-8 bytes, NUL-terminated, copied unchanged", "the fragment")
        text = re.sub(r"`(\w+)`", lambda match: f"`{self.own(match[1])}`", text)
        text = CONSTANT.sub(lambda match: (self.method if match[1] == "METHOD_" else self.code).format(match[2]), text)
        text = re.sub(r"\bnull\b", self.null, text)
        text = text.replace("1 inserts at the caret, any other value replaces the whole text", "inserts at the caret; without it the whole text is replaced")
        return text[:1].upper() + text[1:]


def sentence(text):
    return text if text.endswith(".") else text + "."


def explained(function, words):
    """Paragraphs, parameters with an explanation, what success means, and errors."""
    paragraphs = [words(each) for each in function.summary]
    parameters = [(each.name, sentence(words(each.explained))) for each in function.parameters if each.explained]
    succeeds = function.succeeds
    if match := re.match(r"as (`\w+`)", succeeds):
        paragraphs.append(words(f"it fails as {match[1]} does"))
        paragraphs[-1] = sentence(paragraphs[-1])
        succeeds = ""
    succeeds = sentence(words(succeeds)) if succeeds and not (function.returned and "filled" in succeeds) else ""
    gathered = {}
    for error, when in function.errors:
        # A record that the binding makes itself is never null.
        if not (function.returned and when == "`target` is null"):
            gathered.setdefault(error, []).append(words(when).replace("`target` is %s, the" % words.null, "the"))
    errors = [(error, sentence("; ".join(when))) for error, when in gathered.items()]
    return paragraphs, parameters, succeeds, errors


# ---- TypeScript ----


def typescript():
    words = Words(str, str, "null")
    types = {"record": "TargetRecord", "window": "WindowHandle", "text": "string", "html": "string", "int": "number",
             "int64": "number | bigint", "flag": "boolean", "owned text": "string | null"}
    results = {"nothing": "void", "code": "void", "answer": "boolean", "match": "boolean", "flag": "boolean",
               "owned text": "string | null", "window": "WindowHandle | null"}
    handed = {"record": "TargetRecord", "info": "WindowInfo"}
    lines = ["// Written by scripts/make_bindings.py from include/korvane/korvane.h.",
             "import { TargetRecord, WindowHandle, WindowInfo } from './records';"]
    for function in functions():
        paragraphs, parameters, succeeds, errors = explained(function, words)
        text = list(paragraphs)
        tags = [f"@param {name} {what}" for name, what in parameters]
        if function.result in ("nothing", "code"):
            if succeeds:
                text.append("Success means: " + succeeds[:1].lower() + succeeds[1:])
        elif succeeds:
            tags.append(f"@returns {'true: ' if function.result in ('answer', 'match', 'flag') else ''}{succeeds[:1].lower() + succeeds[1:]}")
        tags += [f"@throws {{{error}Error}} {when}" for error, when in errors]
        lines += ["", "/**"]
        for i, paragraph in enumerate(text):
            lines += ([" *"] if i else []) + textwrap.wrap(paragraph, WIDTH, initial_indent=" * ", subsequent_indent=" * ")
        for tag in tags:
            lines += textwrap.wrap(tag, WIDTH, initial_indent=" * ", subsequent_indent=" *   ")
        lines.append(" */")
        own = []
        for each in function.parameters:
            optional = "?" if each.default or each.kind == "owned text" else ""
            nullable = " | null" if each.default == "none" or function.name == "setTargetWindow" else ""
            own.append(f"{each.name}{optional}: {types[each.kind]}{nullable}")
        lines.append(f"export function {function.name}({', '.join(own)}): {handed.get(function.returned) or results[function.result]};")
    return "\n".join(lines) + "\n"


# ---- Python ----


def python():
    words = Words(underscored, underscored, "None")
    types = {"record": "TargetRecord", "window": "int", "text": "str", "html": "str", "int": "int", "int64": "int",
             "flag": "bool", "owned text": "Optional[str]"}
    c_types = {"int": "c_int", "int64": "c_int64", "flag": "c_int"}  # the others are pointers
    # ctypes itself would take a text or an array for the address of anything.
    converted = {"record": "record_of({})", "window": "handle({})", "text": "units({})", "html": "utf8({})"}
    results = {"nothing": ("None", "None"), "code": ("None", "c_int"), "answer": ("bool", "c_int"),
               "match": ("bool", "c_int"), "flag": ("bool", "c_int"), "owned text": ("Optional[str]", "c_void_p"),
               "window": ("Optional[int]", "c_void_p")}
    handed = {"record": "TargetRecord", "info": "WindowInfo"}
    lines = ['"""The 54 functions of korvane.h, in lower case with underscores.', "",
             "What answers a result code there returns nothing here and raises an `Error` unless it is OK; what answers yes or no",
             "returns a bool. Windows are integers. Texts are str: lone surrogates pass in both directions, and a text with a NUL,",
             'which would be cut off there, is a ValueError.', '"""', "",
             "# Written by scripts/make_bindings.py from include/korvane/korvane.h.", "",
             "from __future__ import annotations", "",
             "from ctypes import c_int, c_int64, c_void_p",
             "from typing import Optional", "",
             "from ._library import (",
             "    answer_of, check, declare, handle, info_of, library, open_log, owned_text, record_of, units, utf8,", ")", "from .records import TargetRecord, WindowInfo", ""]
    body = []
    every = list(functions())
    lines.append("__all__ = [")
    lines += textwrap.wrap(", ".join(f'"{underscored(each.name)}"' for each in every) + ",", WIDTH - 4,
                           initial_indent="    ", subsequent_indent="    ")
    lines += ["]", ""]
    for function in every:
        arguments = [c_types.get(each.kind, "c_void_p") for each in function.parameters]
        if function.returned == "record":
            arguments = ["c_void_p", *arguments]
        elif function.returned == "info":
            arguments.append("c_void_p")
        lines.append(f'declare("{function.name}", {results[function.result][1]}, [{", ".join(arguments)}])')
        paragraphs, parameters, succeeds, errors = explained(function, words)
        text = list(paragraphs)
        text += [f"{underscored(name)}: {what[:1].lower() + what[1:]}" for name, what in parameters]
        if succeeds:
            lead = {"nothing": "Success means: ", "code": "Returns when this is so: ", "answer": "True: ",
                    "match": "True: ", "flag": "True: "}.get(function.result, "Returns ")
            text.append(lead + succeeds[:1].lower() + succeeds[1:])
        text += [f"{error}Error: {when[:1].lower() + when[1:]}" for error, when in errors]
        own, given = [], []
        for each in function.parameters:
            name = "result" if each.name == "result" else underscored(each.name)
            optional = each.default == "none" or function.name == "setTargetWindow"
            kind = f"Optional[{types[each.kind]}]" if optional else types[each.kind]
            default = {"none": " = None", "no": " = False", "1": " = 1"}.get(each.default, "")
            own.append(f"{name}: {kind}{default}")
            given.append(converted.get(each.kind, "{}").format(name))
        returned = handed.get(function.returned) or results[function.result][0]
        body += ["", "", f"def {underscored(function.name)}({', '.join(own)}) -> {returned}:"]
        text = [each.replace("\\", "\\\\") for each in text]
        body += [line for i, paragraph in enumerate(text)
                 for line in ([""] if i else []) + textwrap.wrap(paragraph, WIDTH - 4, initial_indent='    """' if i == 0 else "    ",
                                                               subsequent_indent="    ")]
        if len(text) == 1 and len(body[-1]) < WIDTH - 2:
            body[-1] += '"""'
        else:
            body.append('    """')
        call = f"library.{function.name}({', '.join(given)})"
        if function.name == "freeTextResult":
            body += ["    # It was given back when the str was made."]
        elif function.name == "initializeLog":
            body += [f"    {call}", "    open_log(log_path)"]
        elif function.name == "cleanupAutomation":
            body += [f"    {call}", "    open_log(False)"]
        elif function.returned == "record":
            body += ["    target = TargetRecord()", f'    check("{function.name}", library.{function.name}({", ".join(["record_of(target)", *given])}))',
                     "    return target"]
        elif function.returned == "info":
            body += ["    info = WindowInfo()", f'    check("{function.name}", library.{function.name}({", ".join([*given, "info_of(info)"])}))', "    return info"]
        elif function.result == "nothing":
            body.append(f"    {call}")
        elif function.result == "code":
            body.append(f'    check("{function.name}", {call})')
        elif function.result == "answer":
            body.append(f'    return answer_of("{function.name}", {call})')
        elif function.result == "match":
            body.append(f'    return answer_of("{function.name}", {call}, found=0, not_found=-1)')
        elif function.result == "flag":
            body.append(f"    return bool({call})")
        elif function.result == "owned text":
            body.append(f"    return owned_text({call})")
        else:
            body += [f"    window: Optional[int] = {call}", "    return window"]
    return "\n".join(lines + body) + "\n"


# ---- C# ----


def xml(text):
    text = text.replace("&", "&amp;").replace("<", "&lt;").replace(">", "&gt;")
    return re.sub(r"`([^`]*)`", r"<c>\1</c>", text)


def csharp():
    words = Words(capital, str, "null", code="Code.{}")
    fix = {"NOT_FOUND": "NotFound", "INVALID_ARGUMENT": "InvalidArgument", "OK": "Ok", "FAILED": "Failed", "CANCELLED": "Cancelled",
           "AUTOMATION_ID": "AutomationId", "TREE_PATH": "TreePath", "COORDINATES": "Coordinates", "UNDECIDED": "Undecided"}
    types = {"record": "TargetRecord", "window": "IntPtr", "text": "string", "html": "string", "int": "int", "int64": "long",
             "flag": "bool", "owned text": "string"}
    natives = {"record": "ref TargetRecord", "window": "IntPtr", "text": "string", "html": "byte[]", "int": "int", "int64": "long",
               "flag": "int", "owned text": "IntPtr"}
    results = {"nothing": ("void", "void"), "code": ("void", "int"), "answer": ("bool", "int"), "match": ("bool", "int"),
               "flag": ("bool", "int"), "owned text": ("string", "IntPtr"), "window": ("IntPtr", "IntPtr")}
    handed = {"record": "TargetRecord", "info": "WindowInfo"}
    native, public = [], []
    for function in functions():
        arguments = [f"{natives[each.kind]} {each.name}" for each in function.parameters]
        if function.returned:
            last = f"out {handed[function.returned]} {'target' if function.returned == 'record' else 'info'}"
            arguments = [last, *arguments] if function.returned == "record" else [*arguments, last]
        charset = ", CharSet = CharSet.Unicode" if any(each.kind == "text" for each in function.parameters) else ""
        native.append(f"        [DllImport(Library{charset})] public static extern {results[function.result][1]} {function.name}({', '.join(arguments)});")
        if function.name == "freeTextResult":
            continue
        paragraphs, parameters, succeeds, errors = explained(function, words)
        repair = lambda text: xml(re.sub(r"\b(Code|Method)\.(\w+)", lambda m: f"{m[1]}.{fix.get(m[2], m[2])}", text))
        lead = paragraphs or ["Tests the target's text." if function.result == "answer" else "Asks whether Escape was pressed."
                              if function.result == "flag" else "Waits."]
        tags = ["<summary>" + " ".join(repair(each) for each in lead[:1])
                + (f" Success means: {repair(succeeds[:1].lower() + succeeds[1:])}" if succeeds and results[function.result][0] == "void" else "") + "</summary>"]
        if lead[1:]:
            tags.append("<remarks>" + " ".join(repair(each) for each in lead[1:]) + "</remarks>")
        tags += [f'<param name="{name}">{repair(what)}</param>' for name, what in parameters]
        if succeeds and results[function.result][0] != "void":
            tags.append(f"<returns>{'True: ' if results[function.result][0] == 'bool' else ''}{repair(succeeds[:1].lower() + succeeds[1:])}</returns>")
        tags += [f'<exception cref="{error}Exception">{repair(when)}</exception>' for error, when in errors]
        public.append("")
        for tag in tags:
            public += textwrap.wrap(tag, WIDTH - 8, initial_indent="        /// ", subsequent_indent="        /// ", break_long_words=False)
        own, given = [], []
        for each in function.parameters:
            default = {"none": " = default(IntPtr)" if each.kind == "window" else " = null", "no": " = false", "1": " = 1"}.get(each.default, "")
            allow = "[AllowNull] " if each.default == "none" and each.kind == "text" else ""
            own.append(f"{allow}{types[each.kind]} {each.name}{default}")
            given.append({"record": f"ref {each.name}", "text": f"Texts.Whole({each.name})", "html": f"Texts.Utf8({each.name})",
                          "flag": f"{each.name} ? 1 : 0"}.get(each.kind, each.name))
        name = capital(function.name)
        returned = handed.get(function.returned) or results[function.result][0]
        if function.result == "owned text":
            public.append("        [return: MaybeNull]")
        head = f"        public static {returned} {name}({', '.join(own)})"
        call = f"Native.{function.name}({', '.join(given)})"
        if function.returned:
            out = "target" if function.returned == "record" else "info"
            given = [f"out var {out}", *given] if function.returned == "record" else [*given, f"out var {out}"]
            public += [head, "        {", f'            Results.Check("{function.name}", Native.{function.name}({", ".join(given)}));',
                       f"            return {out};", "        }"]
        elif function.name == "initializeLog":
            public += [head, "        {", f"            {call};", "            Results.OpenLog(logPath);", "        }"]
        elif function.name == "cleanupAutomation":
            public += [head, "        {", f"            {call};", "            Results.CloseLog();", "        }"]
        elif function.result == "nothing" or function.result == "window":
            public.append(f"{head} => {call};")
        elif function.result == "code":
            public.append(f'{head} => Results.Check("{function.name}", {call});')
        elif function.result == "answer":
            public.append(f'{head} => Results.Answer("{function.name}", {call});')
        elif function.result == "match":
            public.append(f'{head} => Results.Match("{function.name}", {call});')
        elif function.result == "flag":
            public.append(f"{head} => {call} == 1;")
        else:
            public.append(f"{head} => Texts.Owned({call});")
    return "\n".join([
        "// Written by scripts/make_bindings.py from include/korvane/korvane.h.", "using System;",
        "using System.Diagnostics.CodeAnalysis;", "using System.Runtime.InteropServices;", "", "namespace Korvane", "{",
        "    // DllImport rather than LibraryImport: it means the same for these plain signatures, and every compiler takes it, from",
        "    // .NET Framework and Mono to the present .NET.",
        "    internal static class Native", "    {", '        private const string Library = "korvane";', "", *native, "    }", "",
        "    /// <summary>", "    /// Every function of korvane.h under its name with a capital first letter. What answers a result code there returns",
        "    /// nothing here and throws a <see cref=\"KorvaneException\"/> unless it is Ok; what answers yes or no returns a bool. Lone",
        "    /// surrogates pass in both directions; a text with a NUL is an ArgumentException. Windows are handles; IntPtr.Zero",
        "    /// stands for none.", "    /// </summary>", "#if NULLABLE_BY_HAND",
        "    [System.Runtime.CompilerServices.NullableContext(1)]", "#endif", "    public static class Automation", "    {",
        "        /// <summary>The value of SendKey that stands for Ctrl+A.</summary>", "        public const int KeyCtrlA = 9999;",
        *public, "    }", "}"]) + "\n"


WRITTEN = {"bindings/node/functions.d.ts": typescript, "bindings/python/korvane/functions.py": python,
           "bindings/csharp/Automation.cs": csharp}


def main():
    problems = write_or_check("make_bindings.py", {name: write() for name, write in WRITTEN.items()})
    print("\n".join(problems) if problems else f"{len(WRITTEN)} files from korvane.h")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
