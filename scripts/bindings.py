"""How each binding calls the exported functions, and what in its source shows that it does."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parents[1]


def capital(name):
    return name[0].upper() + name[1:]


def underscored(name):
    return re.sub(r"[A-Z]", lambda match: "_" + match[0].lower(), name)


# The function that gives a text back is called by what hands it out; only Node.js shows it, too.
FREED_BY = {"C++": "OwnedText", "Python": "get_target_text", "C#": "GetTargetText"}

# Language: its file, the name there, and a pattern of its definition and one of the call.
BINDINGS = {
    "C++": ("bindings/cpp/korvane/korvane.hpp", capital, r"\b{own}\b", r"::{name}\("),
    "Python": ("bindings/python/korvane/functions.py", underscored, r"def {own}\(", r"\b{name}\b"),
    "Node.js": ("bindings/node/functions.js", str, r"'{name}'", r"'{name}'"),
    "C#": ("bindings/csharp/Automation.cs", capital, r"public static \w+ {own}\(", r"\b{name}\("),
}


def own_name(language, name):
    if name == "freeTextResult" and language in FREED_BY:
        return FREED_BY[language]
    return BINDINGS[language][1](name)


def covered(language, name):
    """The binding's own name of the function, or None when it is not there."""
    file, _, definition, call = BINDINGS[language]
    text = (ROOT / file).read_text(encoding="utf-8")
    own = own_name(language, name)
    if name == "freeTextResult":
        definition = r"\b{own}\b"
    shown = all(re.search(pattern.format(own=own, name=name), text) for pattern in (definition, call))
    return own if shown else None
