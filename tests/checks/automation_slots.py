"""A program that calls every UI Automation method as uia.h declares it, on objects made with an independent declaration
of the same interfaces: Wine's, generated from its own IDL. Each call has to arrive at the method of that name, with the
arguments that were given and the answer that was returned.
"""

import re
from pathlib import Path

from repository import PLATFORM, SCRATCH, missing, run, source, tool

OURS = PLATFORM / "uia.h"
HEADERS = Path("/usr/include/wine/wine/windows")
REFERENCE = HEADERS / "uiautomationclient.h"
UNKNOWN = ["QueryInterface", "AddRef", "Release"]

RECEIVER = """
#define COBJMACROS
#define CINTERFACE
#include <windows.h>
#include <ole2.h>
#ifndef _WIN32
/* The system's own convention, as the native library has it. */
#undef STDMETHODCALLTYPE
#define STDMETHODCALLTYPE
#endif
#include <uiautomationclient.h>

void Arrived(const char* method);
void ArgumentArrived(const void* bytes, unsigned size);

%s
"""

CALLER = """
#include <cstdio>
#include <cstring>
#include <string>
#include <tuple>
#include <type_traits>
#include "platform/uia.h"

namespace {

std::string g_sent;
std::string g_arrived;
int g_calls = 0;
int g_differences = 0;

void Append(std::string& text, const void* bytes, std::size_t size) {
  char digits[4];
  for (std::size_t i = 0; i < size; ++i) {
    std::snprintf(digits, sizeof digits, "%%02x", static_cast<const unsigned char*>(bytes)[i]);
    text += digits;
  }
  text += ' ';
}

// A value that no other argument has.
template <class T>
T Value(int& number) {
  T value;
  std::memset(static_cast<void*>(&value), 0x10 + number++, sizeof value);
  return value;
}

template <class Argument>
void Send(const std::remove_reference_t<Argument>& value) {
  if constexpr (std::is_reference_v<Argument>) {
    const void* const address = &value;
    Append(g_sent, &address, sizeof address);
  } else {
    Append(g_sent, &value, sizeof value);
  }
}

template <class Interface, class Declaring, class Result, class... Arguments>
void Call(const char* name, void* object, unsigned place, bool withArguments,
          Result (STDMETHODCALLTYPE Declaring::*method)(Arguments...)) {
  int number = 0;
  std::tuple<std::decay_t<Arguments>...> values{Value<std::decay_t<Arguments>>(number)...};
  g_sent = std::string(name) + " ";
  g_arrived.clear();
  const Result result = std::apply(
      [&](auto&... each) {
        if (withArguments) {
          (Send<Arguments>(each), ...);
        }
        return (static_cast<Interface*>(object)->*method)(each...);
      },
      values);
  ++g_calls;
  if (g_sent != g_arrived || static_cast<unsigned>(result) != 0x80000000u + place) {
    ++g_differences;
    std::printf("called %%s, arrived %%s, result %%08x\\n", g_sent.c_str(), g_arrived.c_str(),
                static_cast<unsigned>(result));
  }
}

}  // namespace

extern "C" void Arrived(const char* method) {
  g_arrived += std::string(method) + " ";
}

extern "C" void ArgumentArrived(const void* bytes, unsigned size) {
  Append(g_arrived, bytes, size);
}

extern "C" {
%s
}

int main() {
%s
  std::printf("%%d methods called, %%d differ\\n", g_calls, g_differences);
  return g_differences == 0 ? 0 : 1;
}
"""


def our_interfaces():
    """Each interface with its methods in order: name, and parameters or None for a slot that is never called."""
    text = re.sub(r"#define.*?[^\\]\n", "", source(OURS), flags=re.S)
    for name, body in re.findall(r"struct (\w+) : IUnknown \{(.*?)\};", text, re.S):
        body = re.sub(r"\{[^{}]*\}", "", body)
        methods = re.findall(
            r"KORVANE_UNUSED_SLOT\((\w+)\)|virtual HRESULT STDMETHODCALLTYPE (\w+)\(([^()]*)\) = 0;", body
        )
        yield name, [(unused or called, None if unused else parameters) for unused, called, parameters in methods]


def reference_text():
    if not REFERENCE.exists():
        missing(f"{REFERENCE} (Debian's libwine-dev) is not installed")
    return re.sub(r"/\*.*?\*/", " ", REFERENCE.read_text(encoding="utf-8"), flags=re.S)


def reference_table(text, interface):
    """The reference's methods in order: result, name and parameters, the first of which is the object."""
    body = re.search(rf"typedef struct {interface}Vtbl \{{(.*?)END_INTERFACE", text, re.S)[1]
    return re.findall(r"(\w+) \(STDMETHODCALLTYPE \*(\w+)\)\(([^()]*)\)", body)


def program():
    """The receiver in C, the caller in C++, and how many methods are called."""
    reference = reference_text()
    functions, objects, calls = [], [], []
    for interface, methods in our_interfaces():
        table = reference_table(reference, interface)
        places = {name: place for place, (_, name, _) in enumerate(table)}
        called = [(name, "") for name in UNKNOWN] + methods
        for name, parameters in called:
            result, _, arguments = table[places[name]]
            names = [re.search(r"\w+$", argument.strip())[0] for argument in arguments.split(",")][1:]
            recorded = names if parameters is not None else []
            functions.append(
                f"static {result} STDMETHODCALLTYPE {interface}_{name}_arrives({arguments}) {{\n"
                f'  Arrived("{interface}::{name}");\n'
                + "".join(f"  ArgumentArrived(&{n}, sizeof {n});\n" for n in recorded)
                + f"  return ({result})(0x80000000u + {places[name]});\n}}"
            )
            method = f"&{interface}::{name}"
            if name == "QueryInterface":
                method = f"static_cast<HRESULT (STDMETHODCALLTYPE IUnknown::*)(REFIID, void**)>({method})"
            has = "true" if parameters is not None else "false"
            calls.append(
                f'  Call<{interface}>("{interface}::{name}", g_{interface}(), {places[name]}, {has}, {method});'
            )
        functions.append(f"static {interface}Vtbl table_of_{interface} = {{")
        functions += [f"  .{name} = {interface}_{name}_arrives," for name, _ in called]
        functions.append(
            f"}};\nstatic {interface} object_{interface} = {{&table_of_{interface}}};\n"
            f"void* g_{interface}(void) {{ return &object_{interface}; }}"
        )
        objects.append(f"void* g_{interface}();")
    return RECEIVER % "\n".join(functions), CALLER % ("\n".join(objects), "\n".join(calls)), len(calls)


def build(world):
    """The program of one world, "native" or "windows", and how many methods it calls."""
    receiver, caller, count = program()
    folder = SCRATCH / f"automation_slots_{world}"
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "receiver.c").write_text(receiver, encoding="utf-8")
    (folder / "caller.cpp").write_text(caller, encoding="utf-8")
    if world == "native":
        prefix, suffix, options = "", "", ["-fshort-wchar", "-I", str(HEADERS)]
    else:
        # Wine's interfaces over the compiler's own headers.
        prefix, suffix, options = "x86_64-w64-mingw32-", "-win32", ["-I", str(folder)]
        for name in ("uiautomationclient.h", "uiautomationcore.h"):
            (folder / name).write_bytes((HEADERS / name).read_bytes())
    result = folder / "slots.exe"
    for command in (
        ["gcc", "-w", *options, "-c", str(folder / "receiver.c"), "-o", str(folder / "receiver.o")],
        ["g++", "-std=c++20", "-w", "-I", str(PLATFORM.parent), "-c", str(folder / "caller.cpp"),
         "-o", str(folder / "caller.o")],
        ["g++", "-static", str(folder / "caller.o"), str(folder / "receiver.o"), "-o", str(result)],
    ):  # fmt: skip
        built = run(tool(prefix + command[0] + suffix), *command[1:])
        assert built.returncode == 0, built.stderr
    return result, count
