// Errors of the system in words, UTF-8.
#pragma once

#include <windows.h>

#include <string>

namespace GlazelHost
{

// "Module not found (Windows error 126)". The system's words, without their final stop.
std::string WindowsErrorText(DWORD error);

// "Invalid argument (0x80070057)".
std::string ResultText(HRESULT result);

} // namespace GlazelHost
