#include "host/engine/result_words.h"

#include "korvane/korvane.h"

namespace host {

std::string WordsOfCode(int code) {
  switch (code) {
    case KORVANE_OK:
      return "ok";
    case KORVANE_NOT_FOUND:
      return "not found";
    case KORVANE_INVALID_ARGUMENT:
      return "invalid argument";
    case KORVANE_FAILED:
      return "failed";
    case KORVANE_CANCELLED:
      return "cancelled";
    default:
      return "code " + std::to_string(code);
  }
}

}  // namespace host
