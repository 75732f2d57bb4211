#include "tools/glazelhost/validate/judged_renderer.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/message_boxes.h"
#include "tools/glazelhost/validate/scratch_file.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace GlazelHost
{

namespace
{

constexpr std::uint32_t kLargestProduct = 1U << 24; // beyond all reason

} // namespace

JudgedRenderer::JudgedRenderer(const std::string& path)
{
    LibraryState state;
    m_library = LoadLibraryFile(path, state);
    if (!m_library)
    {
        throw HostError(path, state.why, state.remedy);
    }
    RedirectMessageBoxesOfLoadedModules();
#define FIND_ENTRY_POINT(pointer, name, required)                                                  \
    m_calls.pointer =                                                                              \
        std::bit_cast<RendererAPI::name##Function*>(::GetProcAddress(m_library.Get(), #name));
    RENDERER_ENTRY_POINTS(FIND_ENTRY_POINT)
#undef FIND_ENTRY_POINT
}

JudgedRenderer::~JudgedRenderer()
{
    if (m_isStarted)
    {
        m_calls.exitRenderer();
    }
}

bool JudgedRenderer::Start(Check& check)
{
    bool complete = true;
    for (const RendererAPI::EntryPointName& entry : RendererAPI::kEntryPoints)
    {
        if (entry.required)
        {
            complete &= check.That(::GetProcAddress(m_library.Get(), entry.name) != nullptr,
                                   std::string("it does not export ") + entry.name);
        }
    }
    if (!complete)
    {
        return false;
    }
    const std::int32_t result = m_calls.initRenderer(RendererAPI::kStartMode);
    m_isStarted = check.That(result == 0,
                             "InitRenderer(3) answers " + std::to_string(result) + " instead of 0");
    return m_isStarted;
}

std::optional<Record> JudgedRenderer::Produced(Check& check) const
{
    const std::uint32_t size = m_calls.getSessionDataSize();
    if (!check.That(size <= kLargestProduct, "GetSessionDataSize answers more than 16 MB"))
    {
        return std::nullopt;
    }
    const GuardedBlock block(size);
    if (size != 0 && !check.That(m_calls.getSessionData(block.Data(), size) == 1,
                                 "GetSessionData does not answer 1 for a buffer of the size that "
                                 "GetSessionDataSize answers"))
    {
        return std::nullopt;
    }
    return Record(block.Bytes().begin(), block.Bytes().end());
}

std::int32_t JudgedRenderer::Import(const std::string& path) const
{
    return m_calls.loadSessionFile(path.c_str(), RendererAPI::kImportRecord);
}

Record JudgedRenderer::LookOf(Check& check, std::string_view cube) const
{
    const ScratchFile file(".cube", cube);
    if (Import(file.Path()) != RendererAPI::kImportDone)
    {
        check.Skip("it does not import a .cube file, so there is no look to ask with");
        return {};
    }
    return Produced(check).value_or(Record());
}

std::int32_t JudgedRenderer::Render(FrameBufferDesc& source, FrameBufferDesc& target,
                                    std::span<const std::byte> record, std::uint32_t flags) const
{
    return m_calls.renderFrame(&source, &target, record.data(),
                               static_cast<std::uint32_t>(record.size()), flags, 0);
}

std::string NameOf(const PictureShape& shape)
{
    return std::to_string(shape.width) + " x " + std::to_string(shape.height) +
           " pixels of format " + std::to_string(shape.format) +
           (shape.gap != 0 ? " with gaps between the rows" : "");
}

JudgedPicture::JudgedPicture(const PictureShape& shape, GuardedEnd end)
    : m_shape(shape),
      m_memory((std::size_t{shape.width + shape.gap} * (shape.height - 1) + shape.width) *
                   BytesPerPixel(shape.format),
               end)
{
}

FrameBufferDesc JudgedPicture::Description() const noexcept
{
    FrameBufferDesc description{};
    description.format = m_shape.format;
    description.pixels = m_memory.Data();
    description.width = m_shape.width;
    description.height = m_shape.height;
    description.rowPitch = m_shape.width + m_shape.gap;
    return description;
}

std::span<std::byte> JudgedPicture::Row(std::uint32_t y) const noexcept
{
    const std::size_t pixel = BytesPerPixel(m_shape.format);
    return {m_memory.Data() + std::size_t{m_shape.width + m_shape.gap} * pixel * y,
            m_shape.width * pixel};
}

void JudgedPicture::FillAtRandom(Check& check)
{
    for (std::uint32_t y = 0; y < m_shape.height; ++y)
    {
        const std::span<std::byte> row = Row(y);
        for (std::size_t at = 0; at < row.size(); at += m_shape.format == kFormatBgraFloat ? 4 : 1)
        {
            const std::uint32_t code = check.Random(256);
            const float value = static_cast<float>(code) / 255.0F;
            if (m_shape.format == kFormatBgraFloat)
            {
                std::memcpy(&row[at], &value, sizeof value);
            }
            else
            {
                row[at] = static_cast<std::byte>(code);
            }
        }
    }
}

void JudgedPicture::FillWithStrangeNumbers(Check& check)
{
    constexpr std::array<std::uint32_t, 12> kBits{
        0x7FC00000, // not a number
        0xFFC00000, // the same, negative
        0x7F800001, // signalling
        0x7F800000, // infinite
        0xFF800000, // the same, negative
        0x7F7FFFFF, // the largest
        0xFF7FFFFF, // the smallest
        0x00000001, // beside zero
        0x80000000, // negative zero
        0x4F000000, // beyond 32-bit integers
        0xBF800000, // -1
        0x3F000000, // 0.5
    };
    for (std::uint32_t y = 0; y < m_shape.height; ++y)
    {
        const std::span<std::byte> row = Row(y);
        for (std::size_t at = 0; at < row.size(); at += sizeof(float))
        {
            // The first of every picture is one of the strangest.
            const std::uint32_t chosen = y == 0 && at == 0 ? 0 : check.Random(kBits.size());
            std::memcpy(&row[at], &kBits[chosen], sizeof(float));
        }
    }
}

void JudgedPicture::Fill(std::byte value) noexcept
{
    std::ranges::fill(m_memory.Bytes(), value);
}

bool JudgedPicture::GapsHold(std::byte value) const noexcept
{
    const std::size_t gap = std::size_t{m_shape.gap} * BytesPerPixel(m_shape.format);
    for (std::uint32_t y = 0; y + 1 < m_shape.height; ++y)
    {
        const std::span<std::byte> row = Row(y);
        if (!std::all_of(row.data() + row.size(), row.data() + row.size() + gap,
                         [value](std::byte byte) { return byte == value; }))
        {
            return false;
        }
    }
    return true;
}

bool JudgedPicture::SameAs(const JudgedPicture& other) const noexcept
{
    for (std::uint32_t y = 0; y < m_shape.height; ++y)
    {
        if (!std::ranges::equal(Row(y), other.Row(y)))
        {
            return false;
        }
    }
    return true;
}

bool JudgedPicture::SameAlphaAs(const JudgedPicture& other) const noexcept
{
    const std::size_t pixel = BytesPerPixel(m_shape.format);
    const std::size_t channel = pixel / 4;
    for (std::uint32_t y = 0; y < m_shape.height; ++y)
    {
        for (std::size_t at = pixel - channel; at < Row(y).size(); at += pixel)
        {
            if (std::memcmp(&Row(y)[at], &other.Row(y)[at], channel) != 0)
            {
                return false;
            }
        }
    }
    return true;
}

bool JudgedPicture::IsFinite() const noexcept
{
    for (std::uint32_t y = 0; m_shape.format == kFormatBgraFloat && y < m_shape.height; ++y)
    {
        for (std::size_t at = 0; at < Row(y).size(); at += sizeof(float))
        {
            float value = 0.0F;
            std::memcpy(&value, &Row(y)[at], sizeof value);
            if (!std::isfinite(value))
            {
                return false;
            }
        }
    }
    return true;
}

} // namespace GlazelHost
