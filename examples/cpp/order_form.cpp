// Captures four elements of the order form, opens the form elsewhere and fills it in by the records.
#include <windows.h>

#include <cstdio>
#include <korvane/korvane.hpp>

#include "stage.h"

using namespace std::chrono_literals;
using korvane::Code;

namespace {

constexpr auto kTimeout = 3000ms;

struct Order {
  TargetRecord name{};
  TargetRecord article{};
  TargetRecord submit{};
  TargetRecord status{};

  Code Record();
  Code Replay(HWND form) const;
};

Code Capture(int control, TargetRecord& record) {
  std::int32_t x = 0;
  std::int32_t y = 0;
  if (stageCentreOf(control, &x, &y) != 0) {
    return Code::NotFound;
  }
  const Code code = korvane::CaptureTargetAtPoint(record, x, y);
  korvane::Use(record, korvane::Method::TreePath);
  return code;
}

Code Paste(const TargetRecord& record, HWND form, const korvane::Text& text) {
  const Code code = korvane::SetClipboardText(text);
  return code != Code::Ok ? code : korvane::PasteToTargetWithVerifyEx(record, form, kTimeout);
}

Code Order::Record() {
  Code code = Capture(STAGE_NAME, name);
  if (code == Code::Ok)
    code = Capture(STAGE_ARTICLE, article);
  if (code == Code::Ok)
    code = Capture(STAGE_SUBMIT, submit);
  if (code == Code::Ok)
    code = Capture(STAGE_STATUS, status);
  return code;
}

Code Order::Replay(HWND form) const {
  Code code = korvane::VerifyTarget(name, form);
  if (code == Code::Ok)
    code = Paste(name, form, L"Ren\u00E9e Garc\u00EDa");
  if (code == Code::Ok)
    code = Paste(article, form, L"Brass compass");
  if (code == Code::Ok)
    code = korvane::ClickTarget(submit, form);
  if (code == Code::Ok)
    code = korvane::WaitForTargetContainsPartialText(status, form, L"Submitted", kTimeout);
  return code;
}

}  // namespace

int main() {
  const korvane::Session session(L"korvane.log");
  Order order;
  Code code = session.Started();
  if (code == Code::Ok)
    code = stageOpenForm(40, 40) == 0 ? order.Record() : Code::NotFound;
  // Anywhere else, at any later time.
  if (code == Code::Ok)
    code = stageOpenForm(420, 300) == 0 ? order.Replay(stageFormWindow()) : Code::NotFound;
  if (code == Code::Ok) {
    const korvane::OwnedText shown = korvane::GetTargetText(order.status, stageFormWindow());
    char utf8[1024];
    const int size = WideCharToMultiByte(CP_UTF8, 0, shown.View().data(), static_cast<int>(shown.View().size()), utf8,
                                         sizeof utf8, nullptr, nullptr);
    SetConsoleOutputCP(CP_UTF8);
    std::printf("%.*s\n", size, utf8);
  } else {
    std::printf("%s; korvane.log tells why\n", korvane::NameOf(code));
  }
  stageCloseForm();
  return code == Code::Ok ? 0 : 1;
}
