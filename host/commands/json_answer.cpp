#include "host/commands/json_answer.h"

#include <iostream>

#include "host/base/console.h"

namespace host {

namespace {

class SaidAsErrors {
 public:
  SaidAsErrors() : output_(std::cout.rdbuf(std::cerr.rdbuf())) {}
  SaidAsErrors(const SaidAsErrors&) = delete;
  SaidAsErrors& operator=(const SaidAsErrors&) = delete;
  ~SaidAsErrors() {
    std::cout.flush();
    std::cout.rdbuf(output_);
  }

 private:
  std::streambuf* output_;
};

// In characters of ASCII alone, so that no terminal obeys a text in it.
void Write(Json json, ExitCode code) {
  json["exitCode"] = static_cast<int>(code);
  Console::Unescaped() << json.dump(2, ' ', true, Json::error_handler_t::replace) << "\n";
}

}  // namespace

ExitCode AnswerInJson(bool wanted, const char* command, const std::function<ExitCode(Json&)>& run) {
  Json answer = {{"korvane", 1}, {"command", command}};
  if (!wanted) {
    return run(answer);
  }
  try {
    const ExitCode code = [&] {
      const SaidAsErrors errors;
      return run(answer);
    }();
    Write(std::move(answer), code);
    return code;
  } catch (const Failure& failure) {
    answer["error"] = failure.what();
    Write(std::move(answer), failure.Code());
    throw;
  }
}

}  // namespace host
