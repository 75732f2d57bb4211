// Copyright (c) 2026 The Glazel DX authors. SPDX-License-Identifier: MIT
// Copy this file into your own program, under the terms of LICENSE.

// The identifiers of the product's two classes.
#pragma once

#include <windows.h>

#include <guiddef.h>

// clang-format off
inline constexpr CLSID CLSID_Plugin{0xB47A199B, 0x15E2, 0x4836, {0xBD, 0x39, 0x41, 0x99, 0x04, 0xB5, 0xD2, 0x92}};
inline constexpr CLSID CLSID_PluginPP{0xEE3AFD2C, 0xFB57, 0x41AC, {0xAB, 0xDE, 0x90, 0x42, 0x1C, 0x41, 0x40, 0xC3}};
// clang-format on
