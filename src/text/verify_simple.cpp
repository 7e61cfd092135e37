#include <algorithm>
#include <cwctype>
#include <optional>

#include "automation/automation_context.h"
#include "clipboard/clipboard.h"
#include "input/send_input.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "util/text_search.h"

namespace {

constexpr auto kName = "verifySimple";

bool IsKept(WCHAR unit) {
  constexpr WideView kMarks = TEXT("!,-.:?");
  return (unit >= TEXT('a') && unit <= TEXT('z')) || (unit >= TEXT('0') && unit <= TEXT('9')) ||
         (unit >= 0xC0 && unit <= 0xFF) || kMarks.find(unit) != WideView::npos;
}

// Lower-cased, and without what applications change on their own: blanks, line ends, typographic signs.
WideText Normalize(WideView text) {
  WideText normalized;
  normalized.reserve(text.size());
  for (const WCHAR unit : text) {
    if (const auto lower = static_cast<WCHAR>(std::towlower(unit)); IsKept(lower)) {
      normalized.push_back(lower);
    }
  }
  return normalized;
}

// Where two texts part; none when they are the same.
std::optional<std::size_t> FirstDifference(WideView a, WideView b) {
  const std::size_t shorter = std::min(a.size(), b.size());
  const auto at = std::mismatch(a.begin(), a.begin() + static_cast<std::ptrdiff_t>(shorter), b.begin()).first;
  const auto index = static_cast<std::size_t>(at - a.begin());
  if (index == shorter && a.size() == b.size()) {
    return std::nullopt;
  }
  return index;
}

// A text and what is compared of it.
struct ComparedText {
  explicit ComparedText(WideView text) : raw(text), normalized(Normalize(text)) {}
  WideView raw;
  WideText normalized;
};

void AppendPreview(Line& block, std::string_view label, WideView text) {
  constexpr std::size_t kShown = 100;
  block.Append(label, "\"", text.substr(0, kShown), text.size() > kShown ? "..." : "", "\"\r\n");
}

void AppendDifference(Line& block, WideView clipboard, WideView expected, std::size_t at) {
  constexpr std::size_t kContext = 20;
  const std::size_t shorter = std::min(clipboard.size(), expected.size());
  const std::size_t start = at < kContext ? 0 : at - kContext;
  const std::size_t end = std::min(at + kContext, shorter);
  block.Append("  First difference at position: ", at, "\r\n");
  block.Append("  Context (pos ", start, "-", end, "):\r\n");
  block.Append("    Clip: \"", clipboard.substr(start, end - start), "\"\r\n");
  block.Append("    Exp:  \"", expected.substr(start, end - start), "\"\r\n");
  if (at < shorter) {
    block.Append("  Hex at diff pos ", at, ": clip=0x", Padded{clipboard[at], 4, 16}, " exp=0x",
                 Padded{expected[at], 4, 16}, "\r\n");
  }
}

// The whole block is one write, so that lines of other threads do not stand in the middle of it.
void LogComparison(const ComparedText& clipboard, const ComparedText& expected, bool matches) {
  if (!LogIsOpen()) {
    return;
  }
  Line block;
  AppendLocalDateTime(block);
  block.Append(" VERIFY_SIMPLE_DEBUG:\r\n");
  AppendPreview(block, "  Clipboard: ", clipboard.raw);
  AppendPreview(block, "  Expected: ", expected.raw);
  block.Append("  Lengths: clipboard=", clipboard.raw.size(), ", expected=", expected.raw.size(), "\r\n");
  block.Append("  Normalized lengths: ", clipboard.normalized.size(), " vs ", expected.normalized.size(), "\r\n");
  if (const auto at = FirstDifference(clipboard.normalized, expected.normalized)) {
    AppendDifference(block, clipboard.normalized, expected.normalized, *at);
  } else {
    block.Append("  No character differences found - strings are identical!\r\n");
  }
  block.Append("  Match: ", matches ? "TRUE" : "FALSE");
  WriteLine(block);
}

// So that nothing found afterwards can be from before.
bool ClearClipboard() {
  const ClipboardHold hold = OpenClipboardOnce();
  if (!hold) {
    return false;
  }
  EmptyClipboard();
  return true;
}

std::optional<WideText> ReadCopiedText() {
  const ClipboardHold hold = OpenClipboardOnce();
  if (!hold) {
    return std::nullopt;
  }
  const HANDLE block = GetClipboardData(CF_UNICODETEXT);
  if (block == nullptr) {
    return std::nullopt;
  }
  const GlobalView view(block);
  if (view.Bytes() == nullptr) {
    return std::nullopt;
  }
  return WideText(ViewOf(static_cast<const WCHAR*>(view.Bytes())));
}

// The focused field's whole text, by way of the clipboard.
std::optional<WideText> CopyFocusedField() {
  // What applications need to select and to copy.
  constexpr DWORD kSelectMilliseconds = 50;
  constexpr DWORD kCopyMilliseconds = 100;
  if (!ClearClipboard() || !SendShortcut({VK_CONTROL, 'A'})) {
    return std::nullopt;
  }
  Sleep(kSelectMilliseconds);
  if (!SendShortcut({VK_CONTROL, 'C'})) {
    return std::nullopt;
  }
  Sleep(kCopyMilliseconds);
  return ReadCopiedText();
}

int VerifySimple(const KorvaneChar* expectedText, HWND window) {
  if (expectedText == nullptr) {
    return ReportError(KORVANE_INVALID_ARGUMENT, kName, "Invalid expectedText parameter");
  }
  if (ChooseWindow(window) == nullptr) {
    return KORVANE_INVALID_ARGUMENT;
  }
  const std::optional<WideText> copied = CopyFocusedField();
  if (!copied) {
    return KORVANE_FAILED;
  }
  const ComparedText clipboard{WideView(*copied)};
  const ComparedText expected{ViewOf(expectedText)};
  const bool matches =
      Contains(clipboard.normalized, expected.normalized) || Contains(expected.normalized, clipboard.normalized);
  LogComparison(clipboard, expected, matches);
  return matches ? KORVANE_OK : KORVANE_NOT_FOUND;
}

}  // namespace

int verifySimple(const KorvaneChar* expectedText, HWND window) noexcept {
  return GuardExport(kName, int{KORVANE_FAILED}, [&] { return VerifySimple(expectedText, window); });
}
