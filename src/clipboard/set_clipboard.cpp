#include <cstring>

#include "clipboard/clipboard.h"
#include "clipboard/html_format.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"

namespace korvane {
namespace {

struct BlockFailures {
  std::string_view allocation;
  std::string_view locking;
};

// Makes a block of `size` bytes that `fill` has written.
template <class Fill>
Outcome FillGlobalBlock(GlobalBlock& block, std::size_t size, const BlockFailures& failures, Fill&& fill) {
  GlobalBlock filled(GlobalAlloc(GMEM_MOVEABLE, size));
  if (!filled) {
    return {KORVANE_FAILED, failures.allocation};
  }
  const GlobalView view(filled.Get());
  if (view.Bytes() == nullptr) {
    return {KORVANE_FAILED, failures.locking};
  }
  fill(view.Bytes());
  block = std::move(filled);
  return KORVANE_OK;
}

Outcome CopyTextToGlobalBlock(GlobalBlock& block, const WCHAR* text, const BlockFailures& failures) {
  const std::size_t size = (ViewOf(text).size() + 1) * sizeof(WCHAR);
  return FillGlobalBlock(block, size, failures, [&](void* bytes) { std::memcpy(bytes, text, size); });
}

Outcome OpenEmptiedClipboard(ClipboardHold& hold) {
  hold = OpenClipboardWithRetry();
  if (!hold) {
    return {KORVANE_FAILED, "Failed to open clipboard after retries"};
  }
  if (!EmptyClipboard()) {
    return {KORVANE_FAILED, "Failed to empty clipboard"};
  }
  return KORVANE_OK;
}

// Hands the block over: from then on it belongs to the system.
bool GiveToClipboard(UINT format, GlobalBlock& block) {
  if (SetClipboardData(format, block.Get()) == nullptr) {
    return false;
  }
  block.Detach();
  return true;
}

Outcome WriteText(const WCHAR* text) {
  GlobalBlock block;
  if (const Outcome copied =
          CopyTextToGlobalBlock(block, text, {"Failed to allocate global memory", "Failed to lock global memory"});
      !copied.IsOk()) {
    return copied;
  }
  ClipboardHold hold;
  if (const Outcome opened = OpenEmptiedClipboard(hold); !opened.IsOk()) {
    return opened;
  }
  if (!GiveToClipboard(CF_UNICODETEXT, block)) {
    return {KORVANE_FAILED, "Failed to set clipboard data"};
  }
  return KORVANE_OK;
}

Outcome WriteTextAndHtml(const WCHAR* text, const char* fragment) {
  GlobalBlock textBlock;
  if (const Outcome copied = CopyTextToGlobalBlock(
          textBlock, text, {"Failed to allocate global memory (text)", "Failed to lock global memory (text)"});
      !copied.IsOk()) {
    return copied;
  }
  const HtmlClipboardData html(fragment);
  GlobalBlock htmlBlock;
  if (const Outcome copied =
          FillGlobalBlock(htmlBlock, html.Size() + 1,
                          {"Failed to allocate global memory (html)", "Failed to lock global memory (html)"},
                          [&](void* bytes) {
                            html.WriteTo(bytes);
                            static_cast<char*>(bytes)[html.Size()] = 0;
                          });
      !copied.IsOk()) {
    return copied;
  }
  ClipboardHold hold;
  if (const Outcome opened = OpenEmptiedClipboard(hold); !opened.IsOk()) {
    return opened;
  }
  if (!GiveToClipboard(CF_UNICODETEXT, textBlock)) {
    return {KORVANE_FAILED, "Failed to set unicode clipboard data"};
  }
  // A clipboard with the text alone still serves most programs.
  if (const UINT format = RegisterClipboardFormatW(TEXT("HTML Format")); format != 0) {
    GiveToClipboard(format, htmlBlock);
  }
  return KORVANE_OK;
}

// Whether the text that was written is there for others too.
Outcome VerifyWritten(const Outcome& written, const WCHAR* text) {
  if (written.IsOk() && !VerifyClipboardText(text)) {
    return {KORVANE_FAILED, "Clipboard verification failed"};
  }
  return written;
}

}  // namespace
}  // namespace korvane

int setClipboardText(const KorvaneChar* text) noexcept {
  return korvane::AnswerExport("setClipboardText", KORVANE_FAILED, [&]() -> korvane::Outcome {
    if (text == nullptr) {
      return {KORVANE_INVALID_ARGUMENT, "Invalid text parameter"};
    }
    return korvane::VerifyWritten(korvane::WriteText(text), text);
  });
}

int setClipboardTextAndHtml(const KorvaneChar* text, const char* html) noexcept {
  return korvane::AnswerExport("setClipboardTextAndHtml", KORVANE_FAILED, [&]() -> korvane::Outcome {
    if (text == nullptr || html == nullptr) {
      return {KORVANE_INVALID_ARGUMENT, "Invalid parameter"};
    }
    return korvane::VerifyWritten(korvane::WriteTextAndHtml(text, html), text);
  });
}
