#include <algorithm>
#include <cwctype>
#include <optional>

#include "automation/target_window.h"
#include "clipboard/clipboard.h"
#include "input/send_input.h"
#include "korvane/korvane.h"
#include "log/export_guard.h"
#include "util/text_search.h"

namespace korvane {
namespace {

bool IsKept(WCHAR unit) {
  constexpr WideView kMarks = TEXT("!,-.:?");
  return (unit >= TEXT('a') && unit <= TEXT('z')) || (unit >= TEXT('0') && unit <= TEXT('9')) ||
         (unit >= 0xC0 && unit <= 0xFF) || kMarks.find(unit) != WideView::npos;
}

// What a unit is compared as: lower-cased, or 0 when it is not compared. Asked of the runtime once for each of the
// units that nearly all texts are made of: a field can hold millions.
class ComparedUnits {
 public:
  ComparedUnits() {
    for (std::size_t unit = 0; unit < std::size(common_); ++unit) {
      common_[unit] = Ask(static_cast<WCHAR>(unit));
    }
  }
  WCHAR operator()(WCHAR unit) const {
    return unit < std::size(common_) ? common_[unit] : Ask(unit);
  }

 private:
  static WCHAR Ask(WCHAR unit) {
    const auto lower = static_cast<WCHAR>(std::towlower(unit));
    return IsKept(lower) ? lower : WCHAR{0};
  }

  WCHAR common_[256];
};

// Lower-cased, and without what applications change on their own: blanks, line ends, typographic signs. By way of a
// piece that the processor keeps near, so that a text of millions of units is read once and written once.
WideText Normalize(WideView text) {
  const ComparedUnits compared;
  WideText normalized;
  normalized.reserve(text.size());
  WCHAR piece[2048];
  while (!text.empty()) {
    const WideView read = text.substr(0, std::size(piece));
    WCHAR* end = piece;
    for (const WCHAR unit : read) {
      *end = compared(unit);
      end += *end != 0 ? 1 : 0;
    }
    normalized.append(piece, end);
    text.remove_prefix(read.size());
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

// What is compared of a text, and what the log shows of it.
struct ComparedText {
  explicit ComparedText(WideView text)
      : length(text.size()), beginning(text.substr(0, kShown)), normalized(Normalize(text)) {}
  static constexpr std::size_t kShown = 100;
  std::size_t length;
  WideText beginning;
  WideText normalized;
};

void AppendPreview(Line& block, std::string_view label, const ComparedText& text) {
  block.Append(label, "\"", WideView(text.beginning), text.length > ComparedText::kShown ? "..." : "", "\"\r\n");
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
  AppendPreview(block, "  Clipboard: ", clipboard);
  AppendPreview(block, "  Expected: ", expected);
  block.Append("  Lengths: clipboard=", clipboard.length, ", expected=", expected.length, "\r\n");
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

std::optional<ComparedText> ReadCopiedText() {
  const ClipboardText clipboard(OpenClipboardOnce());
  const std::optional<WideView> text = clipboard.View();
  return text ? std::optional<ComparedText>(*text) : std::nullopt;
}

// The focused field's whole text, by way of the clipboard.
std::optional<ComparedText> CopyFocusedField() {
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

// Whether the focused field shows the text.
Outcome CompareFocusedField(const WCHAR* expectedText, HWND window) {
  if (expectedText == nullptr) {
    return {KORVANE_INVALID_ARGUMENT, "Invalid expectedText parameter"};
  }
  if (ChooseWindow(window) == nullptr) {
    return KORVANE_INVALID_ARGUMENT;
  }
  const std::optional<ComparedText> clipboard = CopyFocusedField();
  if (!clipboard) {
    return KORVANE_FAILED;
  }
  const ComparedText expected(ViewOf(expectedText));
  const bool matches =
      Contains(clipboard->normalized, expected.normalized) || Contains(expected.normalized, clipboard->normalized);
  LogComparison(*clipboard, expected, matches);
  return matches ? KORVANE_OK : KORVANE_NOT_FOUND;
}

}  // namespace
}  // namespace korvane

int verifySimple(const KorvaneChar* expectedText, HWND window) noexcept {
  return korvane::AnswerExport("verifySimple", KORVANE_FAILED,
                               [&] { return korvane::CompareFocusedField(expectedText, window); });
}
