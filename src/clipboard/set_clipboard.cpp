#include <cstring>

#include "clipboard/clipboard.h"
#include "clipboard/html_format.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"

namespace {

// What a step that went wrong is called in the log; null when all is well. Steps hand back the details instead of
// reporting, so that the clipboard is closed and every block freed before the line is written.
using Failure = const char*;

struct BlockFailures {
  Failure allocation;
  Failure locking;
};

Failure CopyToGlobalBlock(GlobalBlock& block, const void* bytes, std::size_t size, const BlockFailures& failures) {
  GlobalBlock filled(GlobalAlloc(GMEM_MOVEABLE, size));
  if (!filled) {
    return failures.allocation;
  }
  const GlobalView view(filled.Get());
  if (view.Bytes() == nullptr) {
    return failures.locking;
  }
  std::memcpy(view.Bytes(), bytes, size);
  block = std::move(filled);
  return nullptr;
}

Failure CopyTextToGlobalBlock(GlobalBlock& block, const WCHAR* text, const BlockFailures& failures) {
  return CopyToGlobalBlock(block, text, (ViewOf(text).size() + 1) * sizeof(WCHAR), failures);
}

struct EmptiedClipboard {
  ClipboardHold hold;
  Failure failure;
};

EmptiedClipboard OpenEmptiedClipboard() {
  ClipboardHold hold = OpenClipboardWithRetry();
  if (!hold) {
    return {std::move(hold), "Failed to open clipboard after retries"};
  }
  const bool emptied = EmptyClipboard() != FALSE;
  return {std::move(hold), emptied ? nullptr : "Failed to empty clipboard"};
}

// Hands the block over: from then on it belongs to the system.
bool GiveToClipboard(UINT format, GlobalBlock& block) {
  if (SetClipboardData(format, block.Get()) == nullptr) {
    return false;
  }
  block.Detach();
  return true;
}

Failure WriteText(const WCHAR* text) {
  GlobalBlock block;
  if (const Failure failure =
          CopyTextToGlobalBlock(block, text, {"Failed to allocate global memory", "Failed to lock global memory"})) {
    return failure;
  }
  const EmptiedClipboard clipboard = OpenEmptiedClipboard();
  if (clipboard.failure != nullptr) {
    return clipboard.failure;
  }
  return GiveToClipboard(CF_UNICODETEXT, block) ? nullptr : "Failed to set clipboard data";
}

Failure WriteTextAndHtml(const WCHAR* text, const char* fragment) {
  GlobalBlock textBlock;
  if (const Failure failure = CopyTextToGlobalBlock(
          textBlock, text, {"Failed to allocate global memory (text)", "Failed to lock global memory (text)"})) {
    return failure;
  }
  const std::string html = BuildHtmlClipboardData(fragment);
  GlobalBlock htmlBlock;
  if (const Failure failure =
          CopyToGlobalBlock(htmlBlock, html.c_str(), html.size() + 1,
                            {"Failed to allocate global memory (html)", "Failed to lock global memory (html)"})) {
    return failure;
  }
  const EmptiedClipboard clipboard = OpenEmptiedClipboard();
  if (clipboard.failure != nullptr) {
    return clipboard.failure;
  }
  if (!GiveToClipboard(CF_UNICODETEXT, textBlock)) {
    return "Failed to set unicode clipboard data";
  }
  // A clipboard with the text alone still serves most programs.
  if (const UINT format = RegisterClipboardFormatW(TEXT("HTML Format")); format != 0) {
    GiveToClipboard(format, htmlBlock);
  }
  return nullptr;
}

int ReportWritten(const char* name, Failure failure, const WCHAR* text) {
  if (failure != nullptr) {
    return ReportError(KORVANE_FAILED, name, failure);
  }
  if (!VerifyClipboardText(text)) {
    return ReportError(KORVANE_FAILED, name, "Clipboard verification failed");
  }
  return KORVANE_OK;
}

}  // namespace

int setClipboardText(const KorvaneChar* text) noexcept {
  constexpr auto kName = "setClipboardText";
  return GuardExport(kName, int{KORVANE_FAILED}, [&] {
    if (text == nullptr) {
      return ReportError(KORVANE_INVALID_ARGUMENT, kName, "Invalid text parameter");
    }
    return ReportWritten(kName, WriteText(text), text);
  });
}

int setClipboardTextAndHtml(const KorvaneChar* text, const char* html) noexcept {
  constexpr auto kName = "setClipboardTextAndHtml";
  return GuardExport(kName, int{KORVANE_FAILED}, [&] {
    if (text == nullptr || html == nullptr) {
      return ReportError(KORVANE_INVALID_ARGUMENT, kName, "Invalid parameter");
    }
    return ReportWritten(kName, WriteTextAndHtml(text, html), text);
  });
}
