#include "samples/order_form/behaviour.h"

namespace order_form {

Text FormatPhone(TextView text) {
  Text formatted;
  int digits = 0;
  for (const WCHAR unit : text) {
    if (unit < '0' || unit > '9') {
      continue;
    }
    if (digits > 0 && digits % 3 == 0) {
      formatted += ' ';
    }
    formatted += unit;
    ++digits;
  }
  return formatted;
}

Text Stars(TextView text) {
  return Text(text.size(), '*');
}

Text SubmittedStatus(TextView name, TextView article) {
  Text status = TEXT("Submitted: ");
  status += name;
  status += TEXT(" / ");
  status += article;
  return status;
}

TextView ReadyStatus() {
  return TEXT("Ready");
}

}  // namespace order_form
