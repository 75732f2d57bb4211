// The effect's own dual interface and the identifiers that it goes by.
#pragma once

#include "contract/class_ids.h"
#include "platform/dxtransform/dxtrans.h"

// clang-format off
// The running effect answers QueryInterface for IPlugin and looks its type information up under
// these two. The embedded type library declares other ones, which hosts have come to rely on: both
// sets stay as they are.
inline constexpr IID IID_IPlugin{0xAC047D4A, 0xB6BB, 0x41DA, {0x82, 0x84, 0x91, 0x0F, 0xC0, 0xBA, 0x31, 0x65}};
inline constexpr GUID LIBID_EffectDispatch{0xC04E8340, 0x76B5, 0x4EDD, {0x98, 0x85, 0xE9, 0x2E, 0x77, 0x27, 0x49, 0x8C}};
// clang-format on

struct IPlugin : IDXEffect
{
};

// clang-format off
__CRT_UUID_DECL(IPlugin, 0xAC047D4A, 0xB6BB, 0x41DA, 0x82, 0x84, 0x91, 0x0F, 0xC0, 0xBA, 0x31, 0x65)
// clang-format on
