#include <cstdio>

#include "host/base/text.h"
#include "host/export/program.h"

namespace host {

namespace {

constexpr const char* kProgram =
    R"(/*
 * Does what was recorded. C has no reader of recordings, so that where everything is stands in this file.
 *
 *     PROGRAM NAME=VALUE ...
 *
 * C11, linked with korvane and user32; mingw also takes -municode.
 */
#if defined(_WIN32)
#include <windows.h>
#else
#include <locale.h>
#include <wchar.h>
#endif
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "korvane/korvane.h"

#if defined(_WIN32)
#define T(text) L##text
#else
#define T(text) u##text
HWND FindWindowExW(HWND parent, HWND after, const KorvaneChar* className, const KorvaneChar* title);
#endif

enum { kTimeoutMs = 3000, kPauseMs = 50, kMostUnits = 16384 };

struct WindowName {
  const KorvaneChar* title;
  const KorvaneChar* className;
  const KorvaneChar* process;
};

/* What a step of the recording acts on. */
static const struct RecordedTarget {
  int step;
  const char* name;
  struct WindowName window;
  TargetRecord record;
} kTargets[] = {
@TARGETS@    {0, NULL, {NULL, NULL, NULL}, {.x = 0}},
};

/* What is given, comes from the environment, or is read. */
static struct Value {
  const char* name;
  int needed;
  const KorvaneChar* text;
} g_values[] = {
@VALUES@    {NULL, 0, NULL},
};

struct Target {
  const TargetRecord* record;
  HWND window;
};

static void Print(FILE* file, const KorvaneChar* text) {
  for (; *text != 0; ++text) {
    unsigned long code = (unsigned long)*text;
    if (code >= 0xD800 && code < 0xDC00 && text[1] >= 0xDC00 && text[1] < 0xE000) {
      code = 0x10000 + ((code - 0xD800) << 10) + ((unsigned long)*++text - 0xDC00);
    }
    if (code < 0x80) {
      fprintf(file, "%c", (int)code);
    } else if (code < 0x800) {
      fprintf(file, "%c%c", (int)(0xC0 | code >> 6), (int)(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
      fprintf(file, "%c%c%c", (int)(0xE0 | code >> 12), (int)(0x80 | (code >> 6 & 0x3F)), (int)(0x80 | (code & 0x3F)));
    } else {
      fprintf(file, "%c%c%c%c", (int)(0xF0 | code >> 18), (int)(0x80 | (code >> 12 & 0x3F)),
              (int)(0x80 | (code >> 6 & 0x3F)), (int)(0x80 | (code & 0x3F)));
    }
  }
}

static void Fail(const char* why) {
  fprintf(stderr, "%s\n", why);
  cleanupAutomation();
  exit(1);
}

static void Must(int code, const char* what) {
  if (code != KORVANE_OK) {
    fprintf(stderr, "%s: code %d; korvane.log tells more\n", what, code);
    Fail("the recording was not done to its end");
  }
}

static size_t Length(const KorvaneChar* text) {
  size_t length = 0;
  while (text[length] != 0) {
    ++length;
  }
  return length;
}

/* How far `text` is equal to `other` from its beginning, the terminator of `other` left out. */
static int BeginsWith(const KorvaneChar* text, const KorvaneChar* other) {
  while (*other != 0 && *text == *other) {
    ++text;
    ++other;
  }
  return *other == 0;
}

static int Contains(const KorvaneChar* text, const KorvaneChar* part) {
  for (; !BeginsWith(text, part); ++text) {
    if (*text == 0) {
      return 0;
    }
  }
  return 1;
}

static int Equals(const KorvaneChar* text, const KorvaneChar* other) {
  return BeginsWith(text, other) && Length(text) == Length(other);
}

static KorvaneChar* Copy(const KorvaneChar* text) {
  const size_t bytes = (Length(text) + 1) * sizeof *text;
  KorvaneChar* copy = malloc(bytes);
  if (copy == NULL) {
    Fail("out of memory");
  }
  memcpy(copy, text, bytes);
  return copy;
}

static struct Value* Find(const char* name) {
  struct Value* value = g_values;
  while (value->name != NULL && strcmp(value->name, name) != 0) {
    ++value;
  }
  return value->name == NULL ? NULL : value;
}

const KorvaneChar* Value(const char* name) {
  return Find(name)->text;
}

/* Several texts after each other, the last followed by NULL; valid until the next call. */
const KorvaneChar* Join(const KorvaneChar* first, ...) {
  static KorvaneChar joined[kMostUnits];
  size_t length = 0;
  va_list rest;
  va_start(rest, first);
  for (const KorvaneChar* text = first; text != NULL; text = va_arg(rest, const KorvaneChar*)) {
    for (; *text != 0 && length + 1 < kMostUnits; ++text) {
      joined[length++] = *text;
    }
    if (*text != 0) {
      Fail("a text is too long");
    }
  }
  va_end(rest);
  joined[length] = 0;
  return joined;
}

/* The only window of that name, as soon as it is there. */
static HWND WindowNamed(const struct WindowName* name) {
  for (int waited = 0; waited <= kTimeoutMs; waited += kPauseMs) {
    HWND found = NULL;
    for (HWND each = NULL; (each = FindWindowExW(NULL, each, name->className, name->title)) != NULL;) {
      WindowInfo info;
      if (getWindowInfo(each, &info) == KORVANE_OK && Equals(info.processName, name->process)) {
        if (found != NULL) {
          Fail("there are several windows of the name of a step's");
        }
        found = each;
      }
    }
    if (found != NULL) {
      return found;
    }
    delay(kPauseMs);
  }
  Fail("the window of a step is not there");
  return NULL;
}

/* The target of a step by its number, as soon as it is there. */
static struct Target Step(int number) {
  const struct RecordedTarget* recorded = kTargets;
  while (recorded->step != number) {
    ++recorded;
  }
  const struct Target target = {&recorded->record, WindowNamed(&recorded->window)};
  int code = KORVANE_NOT_FOUND;
  for (int waited = 0; code == KORVANE_NOT_FOUND && waited <= kTimeoutMs; waited += kPauseMs) {
    delay(waited == 0 ? 0 : kPauseMs);
    clearElementCache();
    code = verifyTarget(target.record, target.window);
  }
  Must(code, recorded->name);
  return target;
}

void Click(struct Target target) {
  Must(clickTarget(target.record, target.window), "click");
}

void DoubleClick(struct Target target) {
  Click(target);
  Click(target);
}

void Empty(struct Target target) {
  Click(target);
  Must(sendCtrlA(), "Ctrl+A");
  Must(sendKey(0x2E), "Delete");
}

void Paste(struct Target target, const KorvaneChar* text) {
  Must(setClipboardText(text), "clipboard");
  Must(pasteToTargetWithVerifyEx(target.record, target.window, kTimeoutMs), "paste");
}

void Type(struct Target target, const KorvaneChar* text) {
  Click(target);
  Must(sendKeySequence(text, 1), "type");
}

void Focus(struct WindowName name) {
  Must(ensureWindowFocus(WindowNamed(&name)), "focus");
}

/* Asserts that it shows the text, or when `exact` nothing else, in this time. */
void Expect(struct Target target, const KorvaneChar* text, int exact, int timeoutMs) {
  for (int waited = 0;; waited += kPauseMs) {
    KorvaneChar* const shown = getTargetText(target.record, target.window);
    const int met = shown != NULL && (exact ? Equals(shown, text) : Contains(shown, text));
    if (!met && waited >= timeoutMs) {
      Print(stderr, shown == NULL ? T("no text") : shown);
      fprintf(stderr, " is shown, not ");
      Print(stderr, text);
      fprintf(stderr, "\n");
    }
    freeTextResult(shown);
    if (met) {
      return;
    }
    if (waited >= timeoutMs) {
      Fail("the recording was not done to its end");
    }
    delay(kPauseMs);
  }
}

/* Into the value of that name, which is also shown. */
void Read(struct Target target, const char* name) {
  KorvaneChar* const shown = getTargetText(target.record, target.window);
  if (shown == NULL) {
    Fail("a target shows no text");
  }
  Find(name)->text = Copy(shown);
  printf("%s = ", name);
  Print(stdout, shown);
  printf("\n");
  freeTextResult(shown);
}

static void Run(void) {
@STEPS@}

/* NAME=VALUE; 0: there is no such name. */
static int Take(const KorvaneChar* argument) {
  for (struct Value* value = g_values; value->name != NULL; ++value) {
    size_t i = 0;
    while (value->name[i] != 0 && (KorvaneChar)value->name[i] == argument[i]) {
      ++i;
    }
    if (value->name[i] == 0 && argument[i] == '=') {
      value->text = Copy(argument + i + 1);
      return 1;
    }
  }
  return 0;
}

#if defined(_WIN32)
static const KorvaneChar* FromEnvironment(const char* name) {
  WCHAR wide[256];
  MultiByteToWideChar(CP_UTF8, 0, name, -1, wide, 256);
  return _wgetenv(wide);
}

int wmain(int count, wchar_t** arguments) {
#else
static const KorvaneChar* FromSystem(const char* text) {
  static KorvaneChar wide[kMostUnits];
  size_t length = 0;
  mbstate_t state = {0};
  for (size_t read = 1; text != NULL && read != 0 && length + 1 < kMostUnits;) {
    read = mbrtoc16(&wide[length], text, strlen(text) + 1, &state);
    if (read == (size_t)-1 || read == (size_t)-2) {
      Fail("an argument is no text");
    }
    ++length;
    text += read == (size_t)-3 ? 0 : read;
  }
  return text == NULL ? NULL : wide;
}

static const KorvaneChar* FromEnvironment(const char* name) {
  return FromSystem(getenv(name));
}

int main(int count, char** arguments) {
  setlocale(LC_ALL, "");
#endif
  for (int i = 1; i < count; ++i) {
#if defined(_WIN32)
    const KorvaneChar* const argument = arguments[i];
#else
    const KorvaneChar* const argument = FromSystem(arguments[i]);
#endif
    if (!Take(argument)) {
      Print(stderr, argument);
      Fail(": is not NAME=VALUE with a name of the recording");
    }
  }
  for (struct Value* value = g_values; value->name != NULL; ++value) {
    if (strncmp(value->name, "SECRET_", 7) == 0) {
      const KorvaneChar* const secret = FromEnvironment(value->name);
      value->text = secret == NULL ? NULL : Copy(secret);
    }
    if (value->needed && value->text == NULL) {
      fprintf(stderr, "no value for %s\n", value->name);
      return 1;
    }
  }
  initializeLog(T("korvane.log"));
  Must(initializeAutomation(), "UI Automation");
  startCancelMonitor();
  Run();
  cleanupAutomation();
  return 0;
}
)";

std::string Variable(const std::string& name) {
  return "Value(" + LiteralOfC(name) + ")";
}

std::string Wide(const std::string& text) {
  return "T(" + LiteralOfC(text) + ")";
}

// Texts of a record need not be text: lone halves of pairs are written as numbers.
std::string Units(const KorvaneChar* text, std::size_t size) {
  const WideView view(text, WideView(text, size).find(KorvaneChar{0}));
  if (IsWellFormed(view)) {
    return Wide(Utf8(view));
  }
  std::string units;
  for (const KorvaneChar unit : view) {
    units += (units.empty() ? "{" : ", ") + std::to_string(static_cast<unsigned>(unit));
  }
  return units + "}";
}

std::string Numbers(const std::int32_t* numbers, std::int32_t count) {
  std::string list;
  for (std::int32_t i = 0; i < count; ++i) {
    list += (list.empty() ? "" : ", ") + std::to_string(numbers[i]);
  }
  return "{" + list + "}";
}

std::string NameIn(const WindowName& window) {
  const auto part = [](const std::string& text) { return text.empty() ? std::string("NULL") : Wide(text); };
  return "{" + part(window.title) + ", " + part(window.className) + ", " + Wide(window.process) + "}";
}

std::string TargetIn(const Recording& recording, std::size_t index) {
  const Step& step = recording.steps[index];
  const TargetRecord& record = step.target;
  std::string text = "    {" + std::to_string(index + 1) + ", " + LiteralOfC(NameOf(index, step)) + ", " +
                     NameIn(recording.windows[step.window]) +
                     ",\n     {.automationId = " + Units(record.automationId, KORVANE_AUTOMATION_ID_SIZE) +
                     ", .x = " + std::to_string(record.x) + ", .y = " + std::to_string(record.y) +
                     ", .identificationMethod = " + std::to_string(record.identificationMethod) +
                     ", .pathLength = " + std::to_string(record.pathLength);
  if (record.pathLength > 0) {
    std::string classes;
    for (std::int32_t level = 0; level < record.pathLength; ++level) {
      classes += (classes.empty() ? "" : ", ") + Units(record.classNames[level], KORVANE_CLASS_NAME_SIZE);
    }
    text += ",\n      .controlTypes = " + Numbers(record.controlTypes, record.pathLength) + ", .classNames = {" +
            classes + "},\n      .childIndices = " + Numbers(record.childIndices, record.pathLength);
  }
  return text + "}},\n";
}

class C final : public Dialect {
 public:
  std::string Target(const std::string& name, std::size_t number) const override {
    // Nothing in a name may end the comment.
    const std::string comment = name.empty() ? "" : " /* " + Replaced(Escaped(name), "*", "") + " */";
    return "Step(" + std::to_string(number) + comment + ")";
  }
  std::string Text(const std::string& text) const override {
    const auto parts = PartsOf(text);
    if (parts.size() < 2) {
      return parts.empty() ? Wide("") : parts[0].isVariable ? Variable(parts[0].text) : Wide(parts[0].text);
    }
    std::string joined;
    for (const TextPart& part : parts) {
      joined += (part.isVariable ? Variable(part.text) : Wide(part.text)) + ", ";
    }
    return "Join(" + joined + "NULL)";
  }
  std::string Click(const std::string& target) const override {
    return "Click(" + target + ");";
  }
  std::string DoubleClick(const std::string& target) const override {
    return "DoubleClick(" + target + ");";
  }
  std::string Empty(const std::string& target) const override {
    return "Empty(" + target + ");";
  }
  std::string Type(const std::string& target, const std::string& text) const override {
    return "Type(" + target + ", " + text + ");";
  }
  std::string Paste(const std::string& target, const std::string& text) const override {
    return "Paste(" + target + ", " + text + ");";
  }
  std::string Expect(const std::string& target, const std::string& text, Match match,
                     std::optional<int> timeoutMs) const override {
    return "Expect(" + target + ", " + text + (match == Match::Equals ? ", 1, " : ", 0, ") +
           (!timeoutMs        ? "0"
            : *timeoutMs == 0 ? "kTimeoutMs"
                              : std::to_string(*timeoutMs)) +
           ");";
  }
  std::string Focus(const WindowName& window) const override {
    return "Focus((struct WindowName)" + NameIn(window) + ");";
  }
  std::string Send(const std::string& sender, int key, const std::string& keys) const override {
    return "Must(" + (sender.empty() ? "sendKey(" + std::to_string(key) + ")" : sender + "()") + ", " +
           LiteralOfC(keys) + ");";
  }
  std::vector<std::string> Read(const std::string& target, const std::string& variable) const override {
    return {"Read(" + target + ", " + LiteralOfC(variable) + ");"};
  }
};

}  // namespace

std::string ExportedC(const ExportedProgram& program) {
  std::string targets;
  std::string values;
  const auto add = [&](const std::string& name, bool needed) {
    values += "    {" + LiteralOfC(name) + (needed ? ", 1, NULL},\n" : ", 0, NULL},\n");
  };
  for (const std::string& name : program.given) {
    add(name, true);
  }
  for (const std::string& name : program.secrets) {
    add(name, true);
  }
  for (std::size_t i = 0; i < program.recording.steps.size(); ++i) {
    const Step& step = program.recording.steps[i];
    targets += step.hasTarget ? TargetIn(program.recording, i) : "";
    if (step.action == Action::Read) {
      add(step.text, false);
    }
  }
  return Filled(kProgram, {{"TARGETS", targets}, {"VALUES", values}, {"STEPS", StepsIn(C(), program, "  ")}});
}

}  // namespace host
