// Texts to and from the system: UTF-8 inside this program, UTF-16 at its edge; errors in words.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>

// Malformed parts become the replacement character.
std::wstring Wide(std::string_view utf8);
std::string Utf8(std::wstring_view wide);

// "Module not found (Windows error 126)". The system's words, without their final stop.
std::string WindowsErrorText(DWORD error);

// "Invalid argument (0x80070057)".
std::string ResultText(HRESULT result);
