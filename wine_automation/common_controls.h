// The messages of the common controls. Their header stands on the platform's.
#pragma once

#include "platform/uia.h"
// After it.
#include <commctrl.h>
