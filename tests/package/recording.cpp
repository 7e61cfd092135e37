// Targets of a recording, and of what is under the mouse, by the C++ binding.
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <korvane/recording.hpp>

#include "stage.h"

using namespace std::chrono_literals;
using korvane::Code;

namespace {

void Check(bool holds, const char* what) {
  if (!holds) {
    std::printf("wrong: %s\n", what);
    std::exit(1);
  }
}

std::string Narrow(korvane::TextView text) {
  return {text.begin(), text.end()};
}

// As the companion program writes one, with a name beyond ASCII, escapes, and a text as units.
void WriteRecording(const TargetRecord& record, const std::string& title) {
  std::ofstream file("order.json");
  char window[24];
  std::snprintf(window, sizeof window, "%llx",
                static_cast<unsigned long long>(reinterpret_cast<std::uintptr_t>(record.hwnd)));
  file << "{\"korvane\": 1, \"windows\": [{\"title\": \"" << title << "\", \"class\": \"OrderForm\", \"process\": "
       << "\"order_form.exe\", \"rect\": [40, 40, 500, 460]}], \"steps\": [{\"name\": \"F10\", \"action\": "
          "\"shortcut\", "
       << "\"keys\": \"F10\", \"window\": 1}, {\"name\": \"N\xC3\xA4me \xF0\x9F\xA7\xAD \\ud83d\\udc4d\\n\", "
          "\"action\": "
       << "\"click\", \"window\": 1, \"target\": {\"identificationMethod\": \"automation-id\", \"automationId\": "
       << "{\"units\": [\"0031\", \"0030\", \"0031\"]}, \"x\": " << record.x << ", \"y\": " << record.y
       << ", \"hwnd\": \"" << window << "\", \"pathLength\": " << record.pathLength << ", \"levels\": [";
  for (int i = 0; i < record.pathLength; ++i) {
    file << (i == 0 ? "" : ", ") << "{\"controlType\": " << record.controlTypes[i] << ", \"className\": \""
         << Narrow(record.classNames[i]) << "\", \"childIndex\": " << record.childIndices[i] << "}";
  }
  file << "]}}]}\n";
}

void TryBadFiles() {
  korvane::Target target;
  const char* const kBad[] = {"",
                              "{",
                              "[1,",
                              "{\"steps\": [{\"name\": \"a\"}]}",
                              "{\"steps\": 1e9}",
                              "\"\\u12\"",
                              "\xFF",
                              "{\"steps\": [{\"name\": \"a\", \"target\": {\"x\": 99999999999999999999}}]}"};
  for (const char* const text : kBad) {
    std::ofstream("bad.json", std::ios::binary) << text;
    Check(korvane::TargetOfStep(target, "bad.json", u"a", 1ms) == Code::InvalidArgument, text);
  }
  std::ofstream("bad.json") << std::string(100000, '[');
  Check(korvane::TargetOfStep(target, "bad.json", 1, 1ms) == Code::InvalidArgument, "depth");
  Check(korvane::TargetOfStep(target, "nowhere.json", 1, 1ms) == Code::InvalidArgument, "no file");
}

}  // namespace

int main() {
  const korvane::Session session(u"recording.log");
  Check(stageOpenForm(60, 60) == 0, "form");
  std::int32_t x = 0;
  std::int32_t y = 0;
  stageCentreOf(STAGE_NAME, &x, &y);
  TargetRecord captured{};
  Check(korvane::CaptureTargetAtPoint(captured, x, y) == Code::Ok, "capture");
  korvane::Use(captured, korvane::Method::AutomationId);
  WriteRecording(captured, "Order form");

  const char* const file = "order.json";
  korvane::Target name;
  Check(korvane::TargetOfStep(name, file, u"N\u00E4me \U0001F9ED \U0001F44D\n") == Code::Ok, "by name");
  Check(std::memcmp(&name.Record(), &captured, sizeof captured) == 0, "the record");
  Check(korvane::TargetOfStep(name, file, 2) == Code::Ok && name.WindowHandle() == stageFormWindow(), "by number");
  for (const int number : {0, 1, 3, -1}) {
    Check(korvane::TargetOfStep(name, file, number, 1ms) == Code::InvalidArgument, "no such step, or no target");
  }
  Check(korvane::TargetOfStep(name, file, u"F1", 1ms) == Code::InvalidArgument, "no such name");
  Check(name.Paste(u"Ada") == Code::Ok && name.Text().View() == u"Ada", "paste");
  korvane::Target under;
  Check(korvane::Window(stageFormWindow()).TargetAtCursor(under) == Code::Ok, "under the mouse");
  Check(korvane::TextView(under.Record().automationId) == u"101", "what was clicked is under the mouse");
  WriteRecording(captured, "Another form");
  Check(korvane::TargetOfStep(name, "order.json", 2, 1ms) == Code::NotFound, "its window is not there");
  TryBadFiles();
  stageCloseForm();
}
