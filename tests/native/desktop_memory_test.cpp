// The scripted desktop: clipboard, memory blocks, strings and files.
#include <algorithm>
#include <cstring>
#include <filesystem>

#include "tests/native/desktop_fixture.h"

namespace tests {
namespace {

TEST_F(StandinTest, ClipboardOwnsWhatItWasGiven) {
  const auto allocate = [] {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 4);
    std::memcpy(GlobalLock(block), u"x", 4);
    return block;
  };
  const HGLOBAL block = allocate();
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("global memory", "lock of global memory"));
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, block), nullptr) << "not open";
  EXPECT_TRUE(OpenClipboard(nullptr));
  EXPECT_FALSE(OpenClipboard(nullptr));
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, block), nullptr) << "locked";
  GlobalUnlock(block);
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, block), block);
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("clipboard held open"));
  EXPECT_EQ(GetClipboardData(CF_UNICODETEXT), block);
  const void* before = GlobalLock(block);
  GlobalUnlock(block);
  EXPECT_EQ(GlobalFree(block), block) << "the system's";
  EXPECT_TRUE(CloseClipboard());
  EXPECT_FALSE(CloseClipboard());
  EXPECT_EQ(GlobalLock(block), nullptr) << "closed";

  EXPECT_TRUE(OpenClipboard(nullptr));
  EXPECT_NE(GlobalLock(block), before) << "nobody gets away with a pointer kept from the time before";
  GlobalUnlock(block);
  const HGLOBAL second = allocate();
  GlobalUnlock(second);
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, second), second);
  EXPECT_THAT(TheDesktop().Clipboard().Formats(), ElementsAre("CF_UNICODETEXT"));
  EXPECT_EQ(TheDesktop().Clipboard().Bytes("CF_UNICODETEXT"), (std::vector<std::uint8_t>{'x', 0, 0, 0}));
  const HGLOBAL fixed = GlobalAlloc(0, 2);
  EXPECT_EQ(SetClipboardData(CF_UNICODETEXT, fixed), fixed) << "accepted here, though a misuse";
  EXPECT_TRUE(EmptyClipboard());
  EXPECT_TRUE(CloseClipboard());
  EXPECT_EQ(TheDesktop().Clipboard().Text(), std::nullopt);
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
  EXPECT_EQ(TakeMisuses().size(), 5U);
}

TEST_F(StandinTest, LedgerNamesWhatIsLeftAndWhatIsGivenBackTwice) {
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_FALSE);
  EXPECT_EQ(CoInitializeEx(nullptr, 0), RPC_E_CHANGED_MODE);
  const BSTR text = SysAllocString(u"ab");
  EXPECT_EQ(SysStringLen(text), 2U);
  void* const block = CoTaskMemAlloc(3);
  const HANDLE process = OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, TheDesktop().Windows().AddProcess(u"C:\\a.exe"));
  EXPECT_TRUE(SetPropW(GetDesktopWindow(), u"Property", process));
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(),
              ElementsAre("BSTR", "COM initialisation", "COM initialisation", "handle of a process", "task memory",
                          "window property"));
  for (int i = 0; i < 2; ++i) {
    SysFreeString(text);
    CoTaskMemFree(block);
    CloseHandle(process);
    RemovePropW(GetDesktopWindow(), u"Property");
  }
  for (int i = 0; i < 3; ++i) {
    CoUninitialize();
  }
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), IsEmpty());
  EXPECT_EQ(TakeMisuses().size(), 4U);

  TheDesktop().Host().InitializeComMultithreaded();
  EXPECT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), RPC_E_CHANGED_MODE);
  TheDesktop().Host().UninitializeCom();
}

TEST_F(StandinTest, Utf8) {
  struct Case {
    standin::Text text;
    std::string bytes;
  };
  const Case cases[] = {{u"", ""},
                        {u"a\u00E9\u4E2D", "a\xC3\xA9\xE4\xB8\xAD"},
                        {u"\xD83D\xDE00", "\xF0\x9F\x98\x80"},
                        {u"\xD83Dx\xDE00", "\xEF\xBF\xBDx\xEF\xBF\xBD"}};
  for (const auto& [text, bytes] : cases) {
    char buffer[32];
    const int size = static_cast<int>(bytes.size()) + 1;
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, buffer, size, nullptr, nullptr), size);
    EXPECT_EQ(buffer, bytes);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, buffer, size - 1, nullptr, nullptr), 0);
  }
}

TEST_F(StandinTest, FilesAreAppendedTo) {
  WCHAR* folder = nullptr;
  ASSERT_EQ(SHGetKnownFolderPath(FOLDERID_LocalAppData, 0, nullptr, &folder), S_OK);
  const standin::Text path = standin::Text(folder) + u"\\made\\file.txt";
  CoTaskMemFree(folder);
  const auto open = [&] {
    return CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, 0, nullptr);
  };
  EXPECT_EQ(open(), INVALID_HANDLE_VALUE) << "no such folder";
  EXPECT_TRUE(CreateDirectoryW(path.substr(0, path.rfind(u'\\')).c_str(), nullptr));
  const HANDLE first = open();
  const HANDLE second = open();
  DWORD written = 0;
  for (const HANDLE file : {first, second, first}) {
    EXPECT_TRUE(WriteFile(file, "ab", 2, &written, nullptr));
  }
  EXPECT_THAT(TheDesktop().Ledger().Outstanding(), ElementsAre("handle of a file", "handle of a file"));
  EXPECT_TRUE(CloseHandle(first));
  EXPECT_TRUE(CloseHandle(second));
  standin::Text machinePath = path;
  std::replace(machinePath.begin(), machinePath.end(), u'\\', u'/');
  EXPECT_EQ(std::filesystem::file_size(machinePath), 6U);
  std::filesystem::remove_all(std::filesystem::path(machinePath).parent_path());
}

}  // namespace
}  // namespace tests
