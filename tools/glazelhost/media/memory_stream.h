// A COM stream over bytes in memory that grows as it is written.
#pragma once

#include <windows.h>

#include <objidl.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace GlazelHost
{

// Counted from one: `CComPtr<CMemoryStream> stream; stream.Attach(new CMemoryStream);`. One thread
// at a time. Locks, clones, transactions and copies are not supported: E_NOTIMPL or
// STG_E_INVALIDFUNCTION.
class CMemoryStream final : public IStream
{
public:
    CMemoryStream() = default;
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

} // namespace GlazelHost
