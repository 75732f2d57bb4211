// A type library as text, one line for each thing in it, for tests to compare.
#pragma once

#include <windows.h>

#include <oleauto.h>

#include <string>

// UTF-8. Throws std::runtime_error when the library does not answer.
std::string TextOf(ITypeLib* library);
