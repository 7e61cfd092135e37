#include "clipboard/html_format.h"

#include <algorithm>
#include <charconv>

namespace korvane {
namespace {

constexpr std::string_view kOpening = "<html><body>\r\n<!--StartFragment-->";
constexpr std::string_view kClosing = "<!--EndFragment-->\r\n</body></html>";

void AppendHeaderLine(std::string& header, std::string_view name, std::uint64_t offset) {
  constexpr std::size_t kWidth = 10;
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, offset).ptr;
  const auto length = static_cast<std::size_t>(end - digits);
  header.append(name).append(":");
  header.append(length < kWidth ? kWidth - length : 0, '0').append(digits, length).append("\r\n");
}

}  // namespace

std::string FormatHtmlClipboardHeader(std::uint64_t startHtml, std::uint64_t endHtml, std::uint64_t startFragment,
                                      std::uint64_t endFragment) {
  std::string header = "Version:0.9\r\n";
  AppendHeaderLine(header, "StartHTML", startHtml);
  AppendHeaderLine(header, "EndHTML", endHtml);
  AppendHeaderLine(header, "StartFragment", startFragment);
  AppendHeaderLine(header, "EndFragment", endFragment);
  return header;
}

HtmlClipboardData::HtmlClipboardData(std::string_view fragment) : fragment_(fragment) {
  const std::size_t headerSize = FormatHtmlClipboardHeader(0, 0, 0, 0).size();
  const std::size_t startFragment = headerSize + kOpening.size();
  const std::size_t endFragment = startFragment + fragment.size();
  const std::size_t endHtml = endFragment + kClosing.size();
  beginning_ = FormatHtmlClipboardHeader(headerSize, endHtml, startFragment, endFragment).append(kOpening);
}

std::size_t HtmlClipboardData::Size() const {
  return beginning_.size() + fragment_.size() + kClosing.size();
}

void HtmlClipboardData::WriteTo(void* bytes) const {
  auto* to = static_cast<char*>(bytes);
  for (const std::string_view part : {std::string_view(beginning_), fragment_, kClosing}) {
    to = std::copy(part.begin(), part.end(), to);
  }
}

}  // namespace korvane
