// A host at work: captures the fields of an order form, closes the form, opens it elsewhere on the screen, and fills in
// and submits an order by what it recorded.
//
//   demo FOLDER       log, records and pictures go to the folder
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "korvane/korvane.h"
#include "samples/demo/records.h"
#include "samples/demo/steps.h"
#include "samples/order_form/program.h"

namespace demo {
namespace {

using order_form::ControlId;
using order_form::Point;
using order_form::Text;

constexpr int kTimeoutMs = 3000;
constexpr Point kRecordedAt{40, 40};
constexpr Point kReplayedAt{560, 380};

struct Field {
  const char* name;
  ControlId control;
  int method;
  const WCHAR* text;  // null: nothing is pasted into it
};

// Each method of finding an element again has its turn; none of them minds that the form has moved.
constexpr Field kFields[] = {
    {"Name", order_form::kName, KORVANE_METHOD_AUTOMATION_ID, TEXT("Ren\u00E9e Garc\u00EDa")},
    {"Street", order_form::kStreet, KORVANE_METHOD_TREE_PATH, TEXT("12 Harbour Lane")},
    {"City", order_form::kCity, KORVANE_METHOD_TREE_PATH, TEXT("Port Ellis")},
    {"Article", order_form::kArticle, KORVANE_METHOD_AUTOMATION_ID, TEXT("Brass compass")},
    {"Note", order_form::kNote, KORVANE_METHOD_TREE_PATH, TEXT("Please ring twice.")},
    {"Phone", order_form::kPhone, KORVANE_METHOD_AUTOMATION_ID, TEXT("555 010 420")},
    {"Submit", order_form::kSubmit, KORVANE_METHOD_TREE_PATH, nullptr},
    {"Status", order_form::kStatus, KORVANE_METHOD_AUTOMATION_ID, nullptr},
};
constexpr std::size_t kSubmitField = 6;
constexpr std::size_t kStatusField = 7;

Text Wide(const std::string& text) {
  return {text.begin(), text.end()};
}

// For the screen: what is not ASCII shows as a question mark.
std::string Narrow(const Text& text) {
  std::string narrow;
  for (const WCHAR unit : text) {
    narrow += unit < 0x80 ? static_cast<char>(unit) : '?';
  }
  return narrow;
}

class Demo {
 public:
  explicit Demo(std::string folder) : folder_(std::move(folder)) {}

  bool Record();
  bool Reopen();
  void Replay();
  void Finish();
  const Steps& Result() const {
    return steps_;
  }

 private:
  bool Open(Point corner);
  int PickWindow();
  int Capture(const Field& field);
  int Paste(const Field& field, const TargetRecord& record);
  int Compare(const TargetRecord& record, const Text& expected);
  std::string File(const char* name) const {
    return folder_ + "/" + name;
  }

  std::string folder_;
  Steps steps_;
  order_form::Program form_;
  HWND window_ = nullptr;
  std::vector<TargetRecord> records_;
};

bool Demo::Open(Point corner) {
  return steps_.Run("open the form at " + std::to_string(corner.x) + "," + std::to_string(corner.y),
                    [&] { return form_.Start(corner.x, corner.y) ? KORVANE_OK : KORVANE_FAILED; });
}

// Somebody clicks into the form a moment later; the form itself does not notice.
int Demo::PickWindow() {
  order_form::ClickAfter(200, form_.CentreOf(order_form::kNote));
  window_ = findWindowByClick();
  WindowInfo info{};
  if (window_ == nullptr || getWindowInfo(window_, &info) != KORVANE_OK) {
    return KORVANE_FAILED;
  }
  steps_.Remark("\"" + Narrow(info.title) + "\" of " + Narrow(info.processName));
  return window_ == form_.Window() ? KORVANE_OK : KORVANE_NOT_FOUND;
}

int Demo::Capture(const Field& field) {
  TargetRecord record{};
  const Point point = form_.CentreOf(field.control);
  const int code = captureTargetAtPoint(&record, point.x, point.y);
  record.identificationMethod = field.method;
  records_.push_back(record);
  return code;
}

bool Demo::Record() {
  initializeLog(Wide(File("korvane.log")).c_str());
  steps_.Run("start", [] { return initializeAutomation(); });
  if (!Open(kRecordedAt)) {
    return false;
  }
  steps_.Run("pick the form's window with a click", [&] { return PickWindow(); });
  for (const Field& field : kFields) {
    steps_.Run(std::string("capture ") + field.name, [&] { return Capture(field); });
  }
  return steps_.Run("store the records",
                    [&] { return SaveRecords(File("records.bin"), records_) ? KORVANE_OK : KORVANE_FAILED; });
}

bool Demo::Reopen() {
  form_.Stop();
  records_.clear();
  if (!Open(kReplayedAt)) {
    return false;
  }
  window_ = form_.Window();
  order_form::TakePicture(File("before.png").c_str());
  return steps_.Run("read the records", [&] {
    records_ = LoadRecords(File("records.bin"));
    return records_.size() == std::size(kFields) ? KORVANE_OK : KORVANE_FAILED;
  });
}

int Demo::Paste(const Field& field, const TargetRecord& record) {
  const int code = setClipboardText(field.text);
  return code != KORVANE_OK ? code : pasteToTargetWithVerifyEx(&record, window_, kTimeoutMs);
}

int Demo::Compare(const TargetRecord& record, const Text& expected) {
  KorvaneChar* text = getTargetText(&record, window_);
  const Text shown = text != nullptr ? Text(text) : Text();
  freeTextResult(text);
  if (shown == expected) {
    return KORVANE_OK;
  }
  steps_.Remark("shows \"" + Narrow(shown) + "\", not \"" + Narrow(expected) + "\"");
  return KORVANE_FAILED;
}

void Demo::Replay() {
  for (std::size_t i = 0; i < std::size(kFields); ++i) {
    if (kFields[i].text != nullptr) {
      steps_.Run(std::string("paste into ") + kFields[i].name, [&] { return Paste(kFields[i], records_[i]); });
    }
  }
  steps_.Run("click Submit", [&] { return clickTarget(&records_[kSubmitField], window_); });
  steps_.Run("wait for the status", [&] {
    return waitForTargetContainsPartialText(&records_[kStatusField], window_, TEXT("Submitted"), kTimeoutMs);
  });
  for (std::size_t i = 0; i < std::size(kFields); ++i) {
    if (kFields[i].text != nullptr) {
      steps_.Run(std::string("read back ") + kFields[i].name, [&] { return Compare(records_[i], kFields[i].text); });
    }
  }
  steps_.Run("read back Status", [&] {
    return Compare(records_[kStatusField], order_form::SubmittedStatus(kFields[0].text, kFields[3].text));
  });
}

void Demo::Finish() {
  order_form::TakePicture(File("after.png").c_str());
  clearElementCache();
  cleanupAutomation();
  std::printf("\n  %d steps, %d failed\n  log:     %s\n  records: %s\n", steps_.Done(), steps_.Failed(),
              File("korvane.log").c_str(), File("records.bin").c_str());
}

}  // namespace
}  // namespace demo

int main(int count, char** arguments) {
  if (count != 2) {
    std::fprintf(stderr, "usage: demo FOLDER\n");
    return 2;
  }
  demo::Demo demo(arguments[1]);
  if (demo.Record() && demo.Reopen()) {
    demo.Replay();
  }
  demo.Finish();
  return demo.Result().Failed() == 0 ? 0 : 1;
}
