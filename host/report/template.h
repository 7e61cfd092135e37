// The page as its own files make it, put together when this program is built.
#pragma once

namespace host {

extern const char* const kReportBeforeData;
extern const char* const kReportAfterData;

}  // namespace host
