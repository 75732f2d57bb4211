#include "renderer/session_data.h"

#include "support/trace.h"

#include <bit>
#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

namespace
{

// The part of the block that is not the renderer's own: behind its 8-byte header stands a chunk of
// a tag, a length and a value.
constexpr std::size_t kTagOffset = 8;
constexpr std::size_t kLengthOffset = 12;
constexpr std::size_t kValueOffset = 16;
constexpr std::uint32_t kChunkEnd = 20;
constexpr std::uint32_t kFlagTag = 0x666C6167; // "flag"
constexpr std::uint32_t kFlagLength = 4;

// Tag and length are big-endian; the value is stored in the machine's order, which is
// little-endian.
static_assert(std::endian::native == std::endian::little);

std::uint32_t ReadBigEndian(const std::uint8_t* bytes) noexcept
{
    return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
           std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[3]};
}

} // namespace

SessionData::SessionData(std::uint8_t* initialData, std::uint32_t initialSize) noexcept
    : data(initialData), size(initialSize)
{
}

SessionData::~SessionData()
{
    FreeData();
}

std::uint8_t* SessionData::AllocateData(std::uint32_t newSize) noexcept
{
    if (newSize == size)
    {
        return data;
    }
    FreeData();
    if (newSize == 0)
    {
        return nullptr;
    }
    Trace(0, "SessionData::AllocateData  size = %d \n", newSize);
    data = static_cast<std::uint8_t*>(::operator new(newSize, std::nothrow));
    size = data != nullptr ? newSize : 0;
    return data;
}

std::uint8_t* SessionData::AllocateClearedData(std::uint32_t newSize) noexcept
{
    const bool isNew = newSize != size;
    if (AllocateData(newSize) != nullptr && isNew)
    {
        std::memset(data, 0, newSize);
    }
    return data;
}

void SessionData::FreeData() noexcept
{
    ::operator delete(data);
    data = nullptr;
    size = 0;
}

void SessionData::SwapData(SessionData& other) noexcept
{
    std::swap(data, other.data);
    std::swap(size, other.size);
}

std::uint32_t SessionData::GetFlag() noexcept
{
    if (HasFlagChunk())
    {
        std::memcpy(&flag, data + kValueOffset, sizeof flag);
    }
    return flag;
}

void SessionData::SetFlag(std::uint32_t value) noexcept
{
    flag = value;
    if (HasFlagChunk())
    {
        std::memcpy(data + kValueOffset, &flag, sizeof flag);
    }
}

bool SessionData::HasFlagChunk() const noexcept
{
    return data != nullptr && size >= kChunkEnd && ReadBigEndian(data + kTagOffset) == kFlagTag &&
           ReadBigEndian(data + kLengthOffset) == kFlagLength;
}
