// A renderer under judgement: its entry points, pictures beside forbidden pages, and looks to ask
// with.
#pragma once

#include "contract/entry_points.h"
#include "tools/glazelhost/plugin/library_file.h"
#include "tools/glazelhost/validate/check.h"
#include "tools/glazelhost/validate/guarded_block.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace GlazelHost
{

using Record = std::vector<std::byte>;

// Texts of looks that most renderers read: crossed channels, and a plain correction.
inline constexpr std::string_view kCubeText =
    "LUT_3D_SIZE 2\n0.1 0 0\n0.9 0.1 0\n0 0.8 0.2\n1 0.9 0.1\n0.1 0.2 0.7\n0.8 0 1\n0.2 1 0.9\n1 1 "
    "1\n";
inline constexpr std::string_view kOtherCubeText =
    "LUT_3D_SIZE 2\n1 1 1\n0 1 1\n1 0 1\n0 0 1\n1 1 0\n0 1 0\n1 0 0\n0 0 0\n";

// Loaded and, as far as its entry points are there, started as an effect does it.
class JudgedRenderer
{
public:
    // Throws HostError when it does not load.
    explicit JudgedRenderer(const std::string& path);
    ~JudgedRenderer(); // ends what was started
    JudgedRenderer(const JudgedRenderer&) = delete;
    JudgedRenderer& operator=(const JudgedRenderer&) = delete;

    HMODULE Module() const noexcept { return m_library.Get(); }
    const RendererAPI::EntryPoints& Calls() const noexcept { return m_calls; }
    // False, with a failure in `check`, when a required entry point is missing or it does not
    // start.
    bool Start(Check& check);

    // What was last produced; none, with a failure in `check`, when it is not handed out.
    std::optional<Record> Produced(Check& check) const;
    std::int32_t Import(const std::string& path) const;
    // The record of a look in the text of a .cube file. Empty, and the group is skipped, when the
    // renderer does not read that.
    Record LookOf(Check& check, std::string_view cube = kCubeText) const;

    std::int32_t Render(FrameBufferDesc& source, FrameBufferDesc& target,
                        std::span<const std::byte> record,
                        std::uint32_t flags = RendererAPI::kRenderFrame) const;

private:
    LoadedLibrary m_library;
    RendererAPI::EntryPoints m_calls{};
    bool m_isStarted = false;
};

struct PictureShape
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t format = kFormatBgra8;
    std::uint32_t gap = 0; // pixels between two rows, which are not the picture's
};

// "3 x 5 pixels of format 17".
std::string NameOf(const PictureShape& shape);

// An image in guarded memory that ends with its last pixel.
class JudgedPicture
{
public:
    explicit JudgedPicture(const PictureShape& shape, GuardedEnd end = GuardedEnd::Back);

    FrameBufferDesc Description() const noexcept;
    GuardedBlock& Memory() noexcept { return m_memory; }
    std::span<std::byte> Row(std::uint32_t y) const noexcept;
    // Colours and alpha from 0 to 1 in whatever format.
    void FillAtRandom(Check& check);
    // What floats can hold besides numbers from 0 to 1, alpha too: not a number, infinite, ...
    void FillWithStrangeNumbers(Check& check);
    // Everything, the gaps included, with one byte.
    void Fill(std::byte value) noexcept;
    bool GapsHold(std::byte value) const noexcept;
    bool SameAs(const JudgedPicture& other) const noexcept; // gaps apart
    bool SameAlphaAs(const JudgedPicture& other) const noexcept;
    bool IsFinite() const noexcept;

private:
    PictureShape m_shape;
    GuardedBlock m_memory;
};

} // namespace GlazelHost
