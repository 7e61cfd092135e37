// The only door to the operating system. On Windows the platform's own headers; elsewhere the same declarations,
// limited to what is called. The rules are in docs/platform.md.
#pragma once

#ifdef _WIN32
#ifndef UNICODE
#define UNICODE
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
// windows.h comes before the headers that need it.
#include <windows.h>

#include <knownfolders.h>
#include <objbase.h>
#include <oleauto.h>
#include <psapi.h>
#include <shlobj.h>
#else
#include "platform/native.h"
#endif
