#include "host/export/program.h"

namespace host {

namespace {

constexpr const char* kProgram =
    R"("""Does what the recording beside this file says, which also tells where everything is.

    python PROGRAM.py NAME=VALUE ...      once
    python PROGRAM.py rows.csv            for each row; the first row holds the names
"""

import csv
import os
import sys
import time

import korvane
from korvane import functions

RECORDING = os.path.join(os.path.dirname(os.path.abspath(__file__)), @RECORDING@)
GIVEN = [@GIVEN@]
SECRETS = [@SECRETS@]  # from environment variables of these names
TIMEOUT = 3.0  # seconds, for windows, elements and texts


def run(session, values):
    """The steps. `values` has what was given, and gets what is read."""

    def step(name):
        return target(session, name)

@STEPS@

def target(session, name):
    """What a step of the recording acts on, as soon as it is there."""
    found = session.target_of_step(RECORDING, name, TIMEOUT)
    end = time.monotonic() + TIMEOUT
    while True:
        functions.clear_element_cache()
        try:
            functions.verify_target(found.record, found.window.handle)
            return found
        except korvane.NotFoundError:
            if time.monotonic() >= end:
                raise
            time.sleep(0.05)


def expect(target, text, exact=False, timeout=0.0):
    """Asserts that it shows the text, or when `exact` nothing else, within so many seconds."""
    end = time.monotonic() + timeout
    while True:
        shown = target.text()
        if shown is not None and (shown == text if exact else text in shown):
            return
        if time.monotonic() >= end:
            raise AssertionError(f"{target!r} shows {shown!r}, not {text!r}")
        time.sleep(0.05)


def read(target):
    text = target.text()
    assert text is not None, f"{target!r} shows no text"
    return text


def empty(target):
    target.click()
    functions.send_ctrl_a()
    functions.send_key(0x2E)  # Delete


def double_click(target):
    target.click()
    functions.click_target(target.record, target.window.handle)


def rows():
    """The values of each run."""
    if len(sys.argv) == 2 and sys.argv[1].lower().endswith(".csv"):
        with open(sys.argv[1], encoding="utf-8-sig", newline="") as file:
            yield from csv.DictReader(file)
    else:
        yield dict(argument.split("=", 1) for argument in sys.argv[1:])


def main():
    with korvane.Session("korvane.log") as session, korvane.CancelMonitor():
        for values in rows():
            values.update((name, os.environ[name]) for name in SECRETS)
            missing = [name for name in GIVEN if name not in values]
            if missing:
                sys.exit("no value for " + ", ".join(missing))
            run(session, values)


if __name__ == "__main__":
    main()
)";

std::string Variable(const std::string& name) {
  return "values[" + Quoted(name) + "]";
}

std::string Seconds(int milliseconds) {
  return milliseconds == 0 ? "TIMEOUT" : std::to_string(milliseconds) + " / 1000";
}

std::string Underscored(const std::string& name) {
  std::string own;
  for (const char letter : name) {
    const bool capital = letter >= 'A' && letter <= 'Z';
    own += capital ? std::string("_") + static_cast<char>(letter + 32) : std::string(1, letter);
  }
  return own;
}

std::string WindowOf(const WindowName& window) {
  return "session.window(" + (window.title.empty() ? "" : "title=" + Quoted(window.title) + ", ") +
         (window.className.empty() ? "" : "class_name=" + Quoted(window.className) + ", ") +
         (window.process.empty() ? "" : "process=" + Quoted(window.process) + ", ") + "timeout=TIMEOUT)";
}

class Python final : public Dialect {
 public:
  std::string Target(const std::string& name, std::size_t number) const override {
    return "step(" + (name.empty() ? std::to_string(number) : Quoted(name)) + ")";
  }
  std::string Text(const std::string& text) const override {
    return Joined(text, Quoted, Variable);
  }
  std::string Click(const std::string& target) const override {
    return target + ".click()";
  }
  std::string DoubleClick(const std::string& target) const override {
    return "double_click(" + target + ")";
  }
  std::string Empty(const std::string& target) const override {
    return "empty(" + target + ")";
  }
  std::string Type(const std::string& target, const std::string& text) const override {
    return target + ".type(" + text + ")";
  }
  std::string Paste(const std::string& target, const std::string& text) const override {
    return target + ".paste(" + text + ", TIMEOUT)";
  }
  std::string Expect(const std::string& target, const std::string& text, Match match,
                     std::optional<int> timeoutMs) const override {
    return "expect(" + target + ", " + text + (match == Match::Equals ? ", exact=True" : "") +
           (timeoutMs ? ", timeout=" + Seconds(*timeoutMs) : "") + ")";
  }
  std::string Focus(const WindowName& window) const override {
    return WindowOf(window) + ".focus()";
  }
  std::string Send(const std::string& sender, int key, const std::string& keys) const override {
    return sender.empty() ? "functions.send_key(" + std::to_string(key) + ")  # " + keys
                          : "functions." + Underscored(sender) + "()";
  }
  std::vector<std::string> Read(const std::string& target, const std::string& variable) const override {
    return {Variable(variable) + " = read(" + target + ")",
            "print(" + Quoted(variable + " =") + ", " + Variable(variable) + ")"};
  }
};

}  // namespace

std::string ExportedPython(const ExportedProgram& program) {
  return Filled(kProgram, {{"RECORDING", Quoted(program.file)},
                           {"GIVEN", Listed(program.given, Quoted)},
                           {"SECRETS", Listed(program.secrets, Quoted)},
                           {"STEPS", StepsIn(Python(), program, "    ")}});
}

}  // namespace host
