#include <iconv.h>

#include <array>
#include <cerrno>

#include "host/base/encoding.h"
#include "host/base/failure.h"
#include "host/base/text.h"

namespace host {

namespace {

struct Converter {
  explicit Converter(const std::string& from) : handle(iconv_open("UTF-8", from.c_str())) {}
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;
  ~Converter() {
    if (IsOpen()) {
      iconv_close(handle);
    }
  }
  bool IsOpen() const {
    return handle != reinterpret_cast<iconv_t>(-1);
  }
  iconv_t handle;
};

}  // namespace

std::string Decoded(const std::string& file, std::string_view bytes, const std::string& encoding) {
  // A slash would begin one of its own options.
  const Converter converter(encoding.find('/') == std::string::npos ? encoding : std::string("?"));
  if (!converter.IsOpen()) {
    throw Failure(ExitCode::Usage, "--encoding " + Shortened(encoding, kNameColumns) + ": is not known here");
  }
  std::string text;
  std::string input(bytes);
  char* from = input.data();
  std::size_t left = input.size();
  std::array<char, 4096> part{};
  while (left > 0) {
    char* to = part.data();
    std::size_t room = part.size();
    const std::size_t result = iconv(converter.handle, &from, &left, &to, &room);
    text.append(part.data(), part.size() - room);
    if (result == static_cast<std::size_t>(-1) && errno != E2BIG) {
      throw Failure(ExitCode::BadFile, file + ": is not in " + encoding + ": byte " +
                                           std::to_string(input.size() - left + 1) + " means nothing there");
    }
  }
  return text;
}

}  // namespace host
