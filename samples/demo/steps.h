// Steps of a replay as a person reads them: what was tried, what came of it, how long it took.
#pragma once

#include <functional>
#include <string>

namespace demo {

class Steps {
 public:
  // Runs one step and writes its line to the screen and to the library's log. The action returns a result code, 0 when
  // all is well.
  bool Run(const std::string& what, const std::function<int()>& action);
  // A line of its own below the step that is running.
  void Remark(const std::string& remark);

  int Done() const {
    return done_;
  }
  int Failed() const {
    return failed_;
  }

 private:
  int done_ = 0;
  int failed_ = 0;
  std::string remark_;
};

}  // namespace demo
