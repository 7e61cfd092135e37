#include "host/base/console.h"

#include <iostream>
#include <streambuf>
#include <string>

#include "host/base/text.h"

namespace host {

namespace {

// Holds a line until it is complete, or asked for: only then no character is in two parts.
class EscapingBuffer : public std::streambuf {
 public:
  explicit EscapingBuffer(std::ostream& stream) : stream_(stream), below_(stream.rdbuf(this)) {}
  EscapingBuffer(const EscapingBuffer&) = delete;
  EscapingBuffer& operator=(const EscapingBuffer&) = delete;
  ~EscapingBuffer() override {
    Pass();
    stream_.rdbuf(below_);
  }

  bool Pass() {
    const std::string shown = Escaped(line_);
    line_.clear();
    const auto size = static_cast<std::streamsize>(shown.size());
    return below_->sputn(shown.data(), size) == size;
  }
  std::streambuf* Below() const {
    return below_;
  }

 protected:
  int_type overflow(int_type character) override {
    if (traits_type::eq_int_type(character, traits_type::eof())) {
      return traits_type::not_eof(character);
    }
    if (character != '\n') {
      line_ += traits_type::to_char_type(character);
      return character;
    }
    return Pass() && below_->sputc('\n') != traits_type::eof() ? character : traits_type::eof();
  }
  int sync() override {
    return Pass() ? below_->pubsync() : -1;
  }

 private:
  std::ostream& stream_;
  std::streambuf* below_;
  std::string line_;
};

struct Streams {
  EscapingBuffer output{std::cout};
  EscapingBuffer errors{std::cerr};
  std::ostream unescaped{output.Below()};
};
Streams* g_streams = nullptr;

}  // namespace

Console::Console() {
  g_streams = new Streams;
}

Console::~Console() {
  delete g_streams;
  g_streams = nullptr;
}

std::ostream& Console::Unescaped() {
  std::cout.flush();
  return g_streams->unescaped;
}

bool Console::Flush() {
  std::cout.flush();
  g_streams->unescaped.flush();
  return std::cout.good() && g_streams->unescaped.good();
}

}  // namespace host
