// Copyright (c) 2026 The Glazel DX authors. SPDX-License-Identifier: MIT
// Copy this file into your own program, under the terms of LICENSE.

// The sixteen entry points of the renderer library: names, signatures, what each one promises, and
// which of them a renderer must export.
// Both sides include this header: the binding that calls them and a renderer that exports them.
// Pure: no windows.h. x64 has one calling convention, so none is spelled.
#pragma once

#include "contract/frame_buffer_desc.h"

#include <cstdint>

namespace RendererAPI
{

inline constexpr char kLibraryName[] = "GZ3Renderer_x64.dll";

// The only mode that the effect starts the renderer in.
inline constexpr std::uint32_t kStartMode = 3;

// Bits of RenderFrame's flags.
inline constexpr std::uint32_t kRenderFrame = 0x31;   // always set
inline constexpr std::uint32_t kRenderLinear = 0x200; // the source holds linear light
inline constexpr std::uint32_t kRenderFlipped = 0x8;  // the images are stored bottom row first

// Results of RenderFrame. -1 is the binding's own answer while no library is loaded.
inline constexpr std::int32_t kFrameRendered = 0;
inline constexpr std::int32_t kFrameUnchanged = 1;      // unusable record: destination = source
inline constexpr std::int32_t kFrameInvalid = -2;       // a frame record without pixels or size
inline constexpr std::int32_t kFrameFormatRefused = -3; // not one format that is known, or two
inline constexpr std::int32_t kFrameSizesDiffer = -4;

// Options of LoadSessionFile.
inline constexpr std::uint32_t kImportRecord = 0;
inline constexpr std::uint32_t kImportUnclampedCdl = 0x1; // no clamp after the steps of a CDL
// Imports nothing: what was last produced is then a UTF-8 JSON text without NUL that describes the
// file, or why it cannot be imported (docs/renderer-contract.md). May be combined with the above.
inline constexpr std::uint32_t kImportDescribe = 0x80000000;

// Results of LoadSessionFile. 0 is the binding's own answer while no library is loaded.
inline constexpr std::int32_t kImportDone = 1;
inline constexpr std::int32_t kImportBadArgument = -1;  // null, empty or not UTF-8; unknown option
inline constexpr std::int32_t kImportUnreadable = -2;   // the file is missing or cannot be read
inline constexpr std::int32_t kImportUnrecognised = -3; // no kind of file that is known
inline constexpr std::int32_t kImportMalformed = -4;    // the kind is known, the contents are wrong
inline constexpr std::int32_t kImportNotFound = -5;     // no correction has the asked id
inline constexpr std::int32_t kImportOutOfMemory = -6;

// Results of the editor.
inline constexpr std::int32_t kEditorAccepted = 1;
inline constexpr std::int32_t kEditorUnavailable = 10;

// 0 = success. May be called again while the library is started: once for every effect.
using InitRendererFunction = std::int32_t(std::uint32_t mode);
using ExitRendererFunction = void();

// Modal editors on `preview`, starting from a look record; kEditorAccepted leaves a new record
// behind GetSessionDataSize and GetSessionData. DoModalUI serves where DoModalUI2 is missing.
using DoModalUIFunction = std::int32_t(FrameBufferDesc* preview, const void* record,
                                       std::uint32_t recordSize);
using DoModalUI2Function = std::int32_t(FrameBufferDesc* preview, const void* record,
                                        std::uint32_t recordSize, std::uint32_t linear);
using DoModalUIWithProfileFunction = std::int32_t(FrameBufferDesc* preview, const void* record,
                                                  std::uint32_t recordSize, const void* profile,
                                                  std::uint32_t profileSize, std::uint32_t linear);

// Renders `source` into `destination` with the look in `record`. The record is opaque to the
// caller but for its option chunk. The two images are the same memory or do not overlap; a negative
// result leaves the destination untouched.
using RenderFrameFunction = std::int32_t(FrameBufferDesc* source, FrameBufferDesc* destination,
                                         const void* record, std::uint32_t recordSize,
                                         std::uint32_t flags, std::int32_t frameNumber);

// Imports a look as the "last produced" record; a failure leaves nothing produced. `path` is UTF-8
// and NUL-terminated: FILE, FILE#ID for one correction out of a collection, or CDL|LUT for both.
using LoadSessionFileFunction = std::int32_t(const void* path, std::uint32_t options);

// Draws a thumbnail of the look; the renderer fills pixels, width and height and keeps owning the
// pixels, which stay valid until the same thread asks again. 1 = drawn; otherwise 0 and no pixels.
using GetSessionIconFunction = std::int32_t(const void* record, std::uint32_t recordSize,
                                            FrameBufferDesc* icon);

// Size in bytes, and bytes, of what an import, the editor or a tool chain last produced; size 0
// when there is nothing. GetSessionData answers 1, or 0 without writing when the buffer is too
// small.
using GetSessionDataSizeFunction = std::uint32_t();
using GetSessionDataFunction = std::int32_t(void* buffer, std::uint32_t bufferSize);

// Writes the blend of two records to `output`, which has room for sizeA bytes: A at fraction 0, B
// at 1, with the option chunk of A.
using InterpolateSessionDataFunction = void(const void* recordA, std::uint32_t sizeA,
                                            const void* recordB, std::uint32_t sizeB,
                                            double fraction, void* output);

// A look built by numbers instead of from a file.
using BeginToolChainFunction = std::int32_t();
using AddToolToChainFunction = std::int32_t(std::uint32_t tool);
using SetToolParameterValueFunction = void(std::uint32_t tool, std::uint32_t parameter,
                                           double value);
using EnableFeatureFunction = void(std::uint32_t feature, std::uint32_t on);
using SetTopLevelMaskParameterValueFunction = void(std::uint32_t parameter, double value);

// clang-format off
// One row for each: name of its pointer, exported name, and whether a library without it is refused.
// The build reads the names for a renderer's .def file from here.
#define RENDERER_ENTRY_POINTS(ROW)                                             \
    ROW(initRenderer,                  InitRenderer,                  true)    \
    ROW(exitRenderer,                  ExitRenderer,                  true)    \
    ROW(doModalUI,                     DoModalUI,                     true)    \
    ROW(doModalUI2,                    DoModalUI2,                    false)   \
    ROW(doModalUIWithProfile,          DoModalUIWithProfile,          false)   \
    ROW(renderFrame,                   RenderFrame,                   true)    \
    ROW(loadSessionFile,               LoadSessionFile,               true)    \
    ROW(getSessionIcon,                GetSessionIcon,                true)    \
    ROW(getSessionDataSize,            GetSessionDataSize,            true)    \
    ROW(getSessionData,                GetSessionData,                true)    \
    ROW(interpolateSessionData,        InterpolateSessionData,        true)    \
    ROW(beginToolChain,                BeginToolChain,                true)    \
    ROW(addToolToChain,                AddToolToChain,                true)    \
    ROW(setToolParameterValue,         SetToolParameterValue,         true)    \
    ROW(enableFeature,                 EnableFeature,                 true)    \
    ROW(setTopLevelMaskParameterValue, SetTopLevelMaskParameterValue, true)
// clang-format on

struct EntryPointName
{
    const char* name;
    bool required;
};

#define RENDERER_NAME(pointer, name, required) EntryPointName{#name, required},
inline constexpr EntryPointName kEntryPoints[]{RENDERER_ENTRY_POINTS(RENDERER_NAME)};
#undef RENDERER_NAME

// Where a loaded library has them; null where it has not. In the order of the rows.
struct EntryPoints
{
#define RENDERER_POINTER(pointer, name, required)                                                  \
    name##Function* pointer; // NOLINT(bugprone-macro-parentheses): a declaration
    RENDERER_ENTRY_POINTS(RENDERER_POINTER)
#undef RENDERER_POINTER
};

} // namespace RendererAPI
