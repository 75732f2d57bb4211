#include "binding/session_data.h"

#include "support/trace.h"

#include <cstring>
#include <new>
#include <utility>

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
    if (HasOptionChunk(data, size))
    {
        std::memcpy(&flag, data + kOptionWord, sizeof flag);
    }
    return flag;
}

void SessionData::SetFlag(std::uint32_t value) noexcept
{
    flag = value;
    if (HasOptionChunk(data, size))
    {
        std::memcpy(data + kOptionWord, &flag, sizeof flag);
    }
}
