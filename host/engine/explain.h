// Why a step failed, in one paragraph: what was tried, in which order, why each failed, and what to do next.
#pragma once

#include <string>

#include "host/engine/step_result.h"

namespace host {

std::string Explain(const StepResult& result, const std::string& file);

}  // namespace host
