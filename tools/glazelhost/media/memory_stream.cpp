#include "tools/glazelhost/media/memory_stream.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace GlazelHost
{

namespace
{

// Runs what may need memory and turns its lack into the stream's own result.
template <typename Operation>
HRESULT WithMemory(Operation&& operation) noexcept
{
    try
    {
        operation();
        return S_OK;
    }
    catch (const std::exception&) // no memory, or more than a vector holds
    {
        return STG_E_MEDIUMFULL;
    }
}

} // namespace

HRESULT STDMETHODCALLTYPE CMemoryStream::QueryInterface(REFIID id, void** object) noexcept
{
    if (object == nullptr)
    {
        return E_POINTER;
    }
    *object = nullptr;
    if (id != IID_IUnknown && id != IID_ISequentialStream && id != IID_IStream)
    {
        return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IStream*>(this);
    return S_OK;
}

ULONG STDMETHODCALLTYPE CMemoryStream::Release() noexcept
{
    const ULONG left = --m_references;
    if (left == 0)
    {
        delete this;
    }
    return left;
}

HRESULT STDMETHODCALLTYPE CMemoryStream::Read(void* target, ULONG size, ULONG* done) noexcept
{
    if (target == nullptr)
    {
        return STG_E_INVALIDPOINTER;
    }
    const std::uint64_t left = m_bytes.size() - std::min<std::uint64_t>(m_position, m_bytes.size());
    const auto count = static_cast<ULONG>(std::min<std::uint64_t>(size, left));
    if (count != 0)
    {
        std::memcpy(target, m_bytes.data() + m_position, count);
        m_position += count;
    }
    if (done != nullptr)
    {
        *done = count;
    }
    return count == size ? S_OK : S_FALSE;
}

HRESULT STDMETHODCALLTYPE CMemoryStream::Write(const void* source, ULONG size, ULONG* done) noexcept
{
    if (done != nullptr)
    {
        *done = 0;
    }
    if (source == nullptr)
    {
        return STG_E_INVALIDPOINTER;
    }
    const std::uint64_t end = m_position + size;
    if (end > m_bytes.size())
    {
        const HRESULT result = WithMemory([&] { m_bytes.resize(static_cast<std::size_t>(end)); });
        if (FAILED(result))
        {
            return result;
        }
    }
    if (size != 0)
    {
        std::memcpy(m_bytes.data() + m_position, source, size);
    }
    m_position = end;
    if (done != nullptr)
    {
        *done = size;
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMemoryStream::Seek(LARGE_INTEGER move, DWORD origin,
                                              ULARGE_INTEGER* position) noexcept
{
    if (origin > STREAM_SEEK_END)
    {
        return STG_E_INVALIDFUNCTION;
    }
    const std::uint64_t origins[] = {0, m_position, m_bytes.size()};
    const auto from = static_cast<std::int64_t>(origins[origin]);
    std::int64_t to = 0;
    if (__builtin_add_overflow(from, move.QuadPart, &to) || to < 0)
    {
        return STG_E_INVALIDFUNCTION;
    }
    m_position = static_cast<std::uint64_t>(to);
    if (position != nullptr)
    {
        position->QuadPart = m_position;
    }
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMemoryStream::SetSize(ULARGE_INTEGER size) noexcept
{
    return WithMemory([&] { m_bytes.resize(static_cast<std::size_t>(size.QuadPart)); });
}

HRESULT STDMETHODCALLTYPE CMemoryStream::Stat(STATSTG* facts, DWORD) noexcept
{
    if (facts == nullptr)
    {
        return STG_E_INVALIDPOINTER;
    }
    *facts = {}; // no name, whether asked for or not
    facts->type = STGTY_STREAM;
    facts->cbSize.QuadPart = m_bytes.size();
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CMemoryStream::Clone(IStream** clone) noexcept
{
    if (clone != nullptr)
    {
        *clone = nullptr;
    }
    return E_NOTIMPL;
}

} // namespace GlazelHost
