// A COM stream over bytes in memory that grows as it is written. The system's own streams in memory
// grow by what is written and no more: under Wine an encoder's 16 MB in small pieces take 20 s.
// Tests: tests/tools/glazelhost/media/memory_stream_test.cpp.
#pragma once

#include "platform/atl/atlcomcli.h"

#include <windows.h>

#include <objidl.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace GlazelHost
{

// Counted from one: see StreamOf. One thread at a time. Locks, clones, transactions and copies are
// not supported: E_NOTIMPL or STG_E_INVALIDFUNCTION.
class CMemoryStream final : public IStream
{
public:
    explicit CMemoryStream(std::vector<std::byte> bytes) : m_bytes(std::move(bytes)) {}
    CMemoryStream(const CMemoryStream&) = delete;
    CMemoryStream& operator=(const CMemoryStream&) = delete;

    const std::vector<std::byte>& Bytes() const noexcept { return m_bytes; }
    std::vector<std::byte> TakeBytes() noexcept { return std::exchange(m_bytes, {}); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override;
    // ISequentialStream
    HRESULT STDMETHODCALLTYPE Read(void* target, ULONG size, ULONG* done) noexcept override;
    HRESULT STDMETHODCALLTYPE Write(const void* source, ULONG size, ULONG* done) noexcept override;
    // IStream
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                   ULARGE_INTEGER* position) noexcept override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) noexcept override;
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                     ULARGE_INTEGER*) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Revert() noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override
    {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) noexcept override
    {
        return STG_E_INVALIDFUNCTION;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* facts, DWORD what) noexcept override;
    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) noexcept override;

private:
    ~CMemoryStream() = default;

    std::vector<std::byte> m_bytes;
    std::uint64_t m_position = 0; // may lie behind the end
    std::atomic<ULONG> m_references = 1;
};

// Stands at the beginning of `bytes`.
inline CComPtr<CMemoryStream> StreamOf(std::vector<std::byte> bytes = {})
{
    CComPtr<CMemoryStream> stream;
    stream.Attach(new CMemoryStream(std::move(bytes)));
    return stream;
}

inline CComPtr<CMemoryStream> StreamOf(std::span<const std::byte> bytes)
{
    return StreamOf(std::vector(bytes.begin(), bytes.end()));
}

} // namespace GlazelHost
