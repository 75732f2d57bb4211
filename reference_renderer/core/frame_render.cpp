#include "reference_renderer/core/frame_render.h"

#include "contract/entry_points.h"

#include <cstring>

namespace ReferenceRenderer
{

namespace
{

using namespace RendererAPI;

bool HasPixels(const FrameBufferDesc* image) noexcept
{
    return image != nullptr && image->pixels != nullptr && image->width != 0 &&
           image->height != 0 && image->rowPitch >= image->width;
}

bool IsKnown(std::uint32_t format) noexcept
{
    return format == kFormatBgra8 || format == kFormatBgraFloat;
}

} // namespace

void FrameJob::RenderRows(std::size_t first, std::size_t end) const noexcept
{
    for (std::size_t i = first; i < end; ++i)
    {
        const std::byte* const from = source + i * sourcePitch;
        std::byte* const to = target + i * targetPitch;
        if (row != nullptr)
        {
            row(*look, from, to, width);
        }
        else if (from != to)
        {
            std::memmove(to, from, width * pixelBytes);
        }
    }
}

std::int32_t DescribeFrame(const FrameBufferDesc* source, const FrameBufferDesc* destination,
                           const PreparedLook* look, std::uint32_t flags, FrameJob& job) noexcept
{
    if (!HasPixels(source) || !HasPixels(destination))
    {
        return kFrameInvalid;
    }
    if (!IsKnown(source->format) || source->format != destination->format)
    {
        return kFrameFormatRefused;
    }
    if (source->width != destination->width || source->height != destination->height)
    {
        return kFrameSizesDiffer;
    }
    job.source = static_cast<const std::byte*>(source->pixels);
    job.target = static_cast<std::byte*>(destination->pixels);
    job.sourcePitch = source->RowBytes();
    job.targetPitch = destination->RowBytes();
    job.width = source->width;
    job.height = source->height;
    job.pixelBytes = BytesPerPixel(source->format);
    job.look = look;
    job.row = nullptr;
    if (look != nullptr)
    {
        const bool linear = (flags & kRenderLinear) != 0;
        job.row = source->format == kFormatBgra8 ? look->Row8() : look->RowFloat(linear);
    }
    return kFrameRendered;
}

} // namespace ReferenceRenderer
