// What the order form does with its texts, whichever world it runs in.
#pragma once

#include <string>
#include <string_view>

#include "samples/order_form/layout.h"

namespace order_form {

using Text = std::basic_string<WCHAR>;
using TextView = std::basic_string_view<WCHAR>;

// The digits of `text` in groups of three, separated by blanks.
Text FormatPhone(TextView text);
// As many stars as `text` has units.
Text Stars(TextView text);
// What the status field shows after Submit.
Text SubmittedStatus(TextView name, TextView article);
// What the status field shows before Submit and after Clear.
TextView ReadyStatus();

}  // namespace order_form
