// Why a step failed, in one paragraph: what was tried, in which order, why each failed, and what to do next.
#pragma once

#include <string>
#include <vector>

#include "host/engine/identify.h"
#include "host/engine/run_step.h"

namespace host {

// `alone` holds what each identification finds when tried by itself after the failure; empty when that was not tried.
std::string Explain(const StepResult& result, const std::vector<Attempt>& alone, const std::string& file);

}  // namespace host
