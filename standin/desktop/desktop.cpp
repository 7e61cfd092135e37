#include "standin/desktop/desktop.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "standin/desktop/state.h"

namespace standin {

void State::Reset() {
  if (!JoinThreads()) {
    std::fprintf(stderr, "stand-in desktop: reset while a thread made by CreateThread runs on\n");
    std::abort();
  }
  for (const auto& [handle, object] : handles) {
    Close(object);
  }
  static_cast<Model&>(*this) = Model();
  ResetCallCounts();

  Thread& self = Self();
  self.takesTurns = true;
  running = &self;

  Node& root = nodes[kRootElement];
  root.id = kRootElement;
  root.isWindow = true;
  root.window.className = u"#32769";
  root.rect = {0, 0, 1920, 1080};
  cursorShape = reinterpret_cast<HCURSOR>(const_cast<WCHAR*>(IDC_ARROW));

  if (ownLocalAppData.empty()) {
    std::string folder = (std::filesystem::temp_directory_path() / "standin-desktop-XXXXXX").string();
    if (const char* made = mkdtemp(folder.data())) {
      ownLocalAppData = made;
    }
  }
  localAppData = ownLocalAppData;
}

Desktop::Desktop() : state_(std::make_unique<State>()) {}

Desktop::~Desktop() {
  const std::lock_guard guard(state_->mutex);
  // As at the end of a process.
  state_->TerminateThreads();
  state_->JoinThreads();
  if (!state_->ownLocalAppData.empty()) {
    std::error_code ignored;
    std::filesystem::remove_all(state_->ownLocalAppData, ignored);
  }
}

void Desktop::Reset() {
  const std::lock_guard guard(state_->mutex);
  state_->Reset();
  Clock().SetLocalTime({2026, 11, 3, 18, 9, 5, 7, 45});
}

standin::Clock Desktop::Clock() const {
  return standin::Clock(*state_);
}

standin::Windows Desktop::Windows() const {
  return standin::Windows(*state_);
}

standin::Controls Desktop::Controls() const {
  return standin::Controls(*state_);
}

standin::Elements Desktop::Elements() const {
  return standin::Elements(*state_);
}

standin::User Desktop::User() const {
  return standin::User(*state_);
}

standin::Input Desktop::Input() const {
  return standin::Input(*state_);
}

standin::Clipboard Desktop::Clipboard() const {
  return standin::Clipboard(*state_);
}

standin::Host Desktop::Host() const {
  return standin::Host(*state_);
}

standin::Calls Desktop::Calls() const {
  return standin::Calls(*state_);
}

standin::Faults Desktop::Faults() const {
  return standin::Faults(*state_);
}

standin::Ledger Desktop::Ledger() const {
  return standin::Ledger(*state_);
}

Desktop& TheDesktop() {
  static Desktop& desktop = []() -> Desktop& {
    static Desktop instance;
    instance.Reset();
    return instance;
  }();
  return desktop;
}

}  // namespace standin
