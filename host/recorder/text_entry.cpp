#include "host/recorder/text_entry.h"

#include <algorithm>

#include "host/base/text.h"
#include "host/world/world.h"

namespace host {

namespace {

constexpr int kBackspace = 0x08;
constexpr int kEnd = 0x23;
constexpr int kHome = 0x24;
constexpr int kLeft = 0x25;
constexpr int kRight = 0x27;
constexpr int kInsert = 0x2d;
constexpr int kDelete = 0x2e;

// A field takes what was typed when its program gets to it; so long is waited for that.
constexpr double kSettleMs = 150;
constexpr int kLookAgainMs = 5;

void RemoveLastCharacter(std::string& utf8) {
  while (!utf8.empty() && (static_cast<unsigned char>(utf8.back()) & 0xc0) == 0x80) {
    utf8.pop_back();
  }
  if (!utf8.empty()) {
    utf8.pop_back();
  }
}

std::ptrdiff_t LineBreaks(const std::optional<std::string>& text) {
  return text ? std::count(text->begin(), text->end(), '\n') : 0;
}

}  // namespace

bool EditsText(const world::UserInput& key) {
  if (!key.text.empty() || key.key.virtualKey == world::kKeyOfInputMethod) {
    return true;
  }
  const world::Modifiers& modifiers = key.key.modifiers;
  if (modifiers.alt || modifiers.windows) {
    return false;
  }
  switch (key.key.virtualKey) {
    case kBackspace:
    case kDelete:
    case kLeft:
    case kRight:
    case kHome:
    case kEnd:
      return true;
    case kInsert:
      return modifiers.shift || modifiers.control;
    // Select all, copy, paste, cut, undo, redo.
    case 'A':
    case 'C':
    case 'V':
    case 'X':
    case 'Z':
    case 'Y':
      return modifiers.control && !modifiers.shift;
    default:
      return false;
  }
}

TextEntry::TextEntry(world::Element field, HWND control, bool hidesText)
    : field_(std::move(field)), control_(control), hidesText_(hidesText), before_(Read()), shown_(before_) {}

std::optional<std::string> TextEntry::Read() const {
  if (hidesText_) {
    return std::nullopt;
  }
  const auto value = world::ValueOf(field_);
  return value ? std::optional(Utf8(*value)) : std::nullopt;
}

void TextEntry::Add(const world::UserInput& key) {
  begun_ = true;
  unseen_ = true;
  if (!typed_) {
    return;
  }
  if (!key.text.empty()) {
    *typed_ += key.text;
  } else if (key.key.virtualKey == kBackspace && key.key.modifiers == world::Modifiers{} && !typed_->empty()) {
    RemoveLastCharacter(*typed_);
  } else {
    typed_.reset();
  }
}

void TextEntry::Look() {
  if (auto text = Read()) {
    shown_ = std::move(text);
    unseen_ = false;
  }
}

bool TextEntry::TakesEnter() {
  const std::optional<std::string> earlier = shown_;
  for (const double end = world::Now() + kSettleMs; world::Now() < end; delay(kLookAgainMs)) {
    const auto now = Read();
    if (!now) {
      return false;
    }
    if (LineBreaks(now) > LineBreaks(earlier)) {
      begun_ = true;
      shown_ = now;
      typed_.reset();
      return true;
    }
  }
  return false;
}

TextEntry::Result TextEntry::Finish() {
  if (!begun_) {
    return {};
  }
  if (hidesText_) {
    return {How::Secret, {}, {}};
  }
  std::optional<std::string> now = Read();
  const bool wasEmpty = !before_ || before_->empty();
  const bool keysTell = typed_ && !typed_->empty() && wasEmpty;
  // What was typed into an empty field is what it will hold, unless it changes it.
  for (const double end = world::Now() + kSettleMs; unseen_ && keysTell && now && now != typed_ && world::Now() < end;
       now = Read()) {
    delay(kLookAgainMs);
  }
  if (!now && unseen_) {
    // It is gone, or never told.
    if (keysTell) {
      return {before_ ? How::Paste : How::Type, *typed_,
              "the field could not be read any more: these are the keys that were pressed"};
    }
    return shown_ ? Result{How::Paste, *shown_, "the field was gone before its last keys could be seen"}
                  : Result{How::Nothing, {}, "the field does not tell its text, so what was entered is not known"};
  }
  now = now ? now : shown_;
  if (!now || now == before_) {
    return {};
  }
  if (keysTell && *now != *typed_) {
    return {How::Type, *typed_, {}};
  }
  return {How::Paste, *now, {}};
}

}  // namespace host
