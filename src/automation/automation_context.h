// The UI Automation context of the process.
#pragma once

#include "log/outcome.h"
#include "platform/owners.h"

namespace korvane {

using AutomationPtr = ComPtr<IUIAutomation>;

// The caller's own reference to the automation object, or none while there is no context. An operation keeps it while
// it works, so that a cleanup on another thread cannot take the object away.
AutomationPtr CurrentAutomation();

// Makes sure that the automation object exists. A failure is KORVANE_FAILED, reported already.
Outcome InitializeAutomation() noexcept;

// What an automation context consists of, for whoever ends it.
struct AutomationContext {
  AutomationPtr automation;
  // Whether making it initialised the object model, and on which thread.
  bool comInitialized = false;
  DWORD comThread = 0;
};

// Takes the context away from the process; it is empty when there was none.
AutomationContext TakeAutomationContext() noexcept;

}  // namespace korvane
