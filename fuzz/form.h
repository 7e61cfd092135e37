// What all fuzzers act on and hold it to: a desktop with a form, and the promises that no input may break.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>

#include <initializer_list>
#include <string>

#include "korvane/korvane.h"
#include "standin/desktop/desktop.h"

namespace fuzz {

using Text = std::u16string;

struct Form {
  HWND window;  // a dialog with the others but the last
  HWND edit;    // AutomationId "7"
  HWND button;  // AutomationId "8"
  HWND other;   // another program's
};

// A desktop with nothing else on it, in front of a library that has nothing open but, if wanted, a log that goes
// nowhere: most of the time is spent on composing lines.
Form OpenForm(bool withLog);

// Ends the process, and with it the run, when the promise is broken.
void Require(bool kept, const char* promise);
void RequireCode(const char* function, int code, std::initializer_list<int> documented);
// After each call: everything but the context and the log has been given back.
void RequireNothingHeld();
// After the last: everything has.
void CloseForm();

// Any window a host might name, dead and made-up ones included.
HWND AnyWindow(FuzzedDataProvider& input, const Form& form);
// A record that finds something, nothing, or was never one: any bytes in any place.
TargetRecord AnyRecord(FuzzedDataProvider& input);
// Any units, lone surrogates included, without a NUL, which would only end the text.
Text AnyText(FuzzedDataProvider& input, std::size_t most);

}  // namespace fuzz
