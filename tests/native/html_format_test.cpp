// The bytes of the clipboard's "HTML Format".
#include "clipboard/html_format.h"

#include <gtest/gtest.h>

namespace tests {
namespace {

using namespace korvane;

std::string DataOf(std::string_view fragment) {
  const HtmlClipboardData data(fragment);
  std::string bytes(data.Size(), 0);
  data.WriteTo(bytes.data());
  return bytes;
}

TEST(HtmlFormatTest, WholeData) {
  EXPECT_EQ(DataOf("<b>9</b>!"),
            "Version:0.9\r\n"
            "StartHTML:0000000105\r\n"
            "EndHTML:0000000182\r\n"
            "StartFragment:0000000139\r\n"
            "EndFragment:0000000148\r\n"
            "<html><body>\r\n<!--StartFragment--><b>9</b>!<!--EndFragment-->\r\n</body></html>");
}

std::size_t Offset(const std::string& data, const std::string& name) {
  return std::stoull(data.substr(data.find("\n" + name + ":") + name.size() + 2, 10));
}

TEST(HtmlFormatTest, OffsetsCountBytesAndTheFragmentIsUnchanged) {
  const std::string fragments[] = {
      "", "\xC3\xA9", "line\r\nline\n", "<!--EndFragment-->", "&\"<\xFF\x01\t", std::string(70000, 'x')};
  for (const std::string& fragment : fragments) {
    SCOPED_TRACE(fragment.substr(0, 40));
    const std::string data = DataOf(fragment);
    EXPECT_EQ(data.size(), 173 + fragment.size());
    EXPECT_EQ(Offset(data, "StartHTML"), data.find("<html>"));
    EXPECT_EQ(Offset(data, "EndHTML"), data.size());
    EXPECT_EQ(Offset(data, "StartFragment"), 139U);
    EXPECT_EQ(Offset(data, "EndFragment"), 139 + fragment.size());
    EXPECT_EQ(data.substr(139, fragment.size()), fragment);
    EXPECT_EQ(data.substr(139 + fragment.size()), "<!--EndFragment-->\r\n</body></html>");
  }
}

TEST(HtmlFormatTest, HeaderNumbersAreFilledToTenDigitsAndNeverCut) {
  EXPECT_EQ(FormatHtmlClipboardHeader(0, 9999999999, 10000000000, 18446744073709551615U),
            "Version:0.9\r\n"
            "StartHTML:0000000000\r\n"
            "EndHTML:9999999999\r\n"
            "StartFragment:10000000000\r\n"
            "EndFragment:18446744073709551615\r\n");
}

}  // namespace
}  // namespace tests
