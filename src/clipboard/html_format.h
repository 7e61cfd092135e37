// The clipboard's "HTML Format": a fragment of HTML behind a header that tells where it lies, counted in bytes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korvane {

// The five header lines, 105 bytes for every number of at most ten digits.
std::string FormatHtmlClipboardHeader(std::uint64_t startHtml, std::uint64_t endHtml, std::uint64_t startFragment,
                                      std::uint64_t endFragment);

// Header and opening, the fragment unchanged (UTF-8, which the format prescribes), and closing. The fragment is kept as
// a view, so that a large one is copied only once: to where it is written.
class HtmlClipboardData {
 public:
  explicit HtmlClipboardData(std::string_view fragment);

  // In bytes, without a terminator.
  std::size_t Size() const;
  // Fills the Size() bytes at `bytes`.
  void WriteTo(void* bytes) const;

 private:
  std::string beginning_;
  std::string_view fragment_;
};

}  // namespace korvane
