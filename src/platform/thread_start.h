// The start routine of our threads. It runs ThreadBody and sets the event that this returns, if any, as its very last
// act: whoever sees the event set knows that the thread has no instruction of ours left to run, so that the code may go
// away. Waiting for the thread itself would not do while the library is being unloaded.
#pragma once

#include "platform/platform.h"

extern "C" {

DWORD WINAPI StartThreadBody(LPVOID parameter);

// Defined by whoever starts the thread.
HANDLE ThreadBody(LPVOID parameter);
}
