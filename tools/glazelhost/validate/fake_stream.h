// A stream over bytes in memory that can fail, read short and lie about its size.
#pragma once

#include <windows.h>

#include <objidl.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <vector>

namespace GlazelHost
{

// Lives on the stack of a check or a test; its reference count is only checked. Not thread-safe.
class FakeStream : public IStream
{
public:
    FakeStream() = default;
    explicit FakeStream(std::vector<std::uint8_t> content) : bytes(std::move(content)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        *object = iid == IID_IUnknown || iid == IID_IStream ? this : nullptr;
        return *object != nullptr ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    HRESULT STDMETHODCALLTYPE Read(void* target, ULONG wanted, ULONG* got) override
    {
        ++reads;
        if (onRead)
        {
            onRead();
        }
        const std::size_t left = bytes.size() - std::min(position, bytes.size());
        const std::size_t count = std::min({std::size_t{wanted}, left, mostBytesRead});
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), count,
                    static_cast<std::uint8_t*>(target));
        position += count;
        if (got != nullptr)
        {
            *got = static_cast<ULONG>(count);
        }
        return readResult;
    }
    HRESULT STDMETHODCALLTYPE Write(const void* source, ULONG count, ULONG* written) override
    {
        ++writes;
        if (onWrite)
        {
            onWrite();
        }
        if (SUCCEEDED(writeResult))
        {
            const auto* const first = static_cast<const std::uint8_t*>(source);
            bytes.insert(bytes.end(), first, first + count);
        }
        if (written != nullptr)
        {
            *written = SUCCEEDED(writeResult) ? count : 0;
        }
        return writeResult;
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override
    {
        ++seeks;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                     ULARGE_INTEGER*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* statistics, DWORD flags) override
    {
        statFlags = flags;
        if (onStat)
        {
            onStat();
        }
        if (SUCCEEDED(statResult))
        {
            *statistics = {};
            statistics->cbSize.QuadPart = bytes.size() + extraSize;
        }
        return statResult;
    }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

    std::vector<std::uint8_t> bytes;
    std::size_t position = 0; // of reading; writing appends
    HRESULT statResult = S_OK;
    HRESULT readResult = S_OK;
    HRESULT writeResult = S_OK;
    ULONGLONG extraSize = 0;              // what Stat promises beyond the bytes
    std::size_t mostBytesRead = SIZE_MAX; // by one Read
    std::function<void()> onRead;         // each inside its call, which it may end by an exception
    std::function<void()> onWrite;
    std::function<void()> onStat;
    DWORD statFlags = 0;
    int reads = 0;
    int writes = 0;
    int seeks = 0;
    ULONG references = 0;
};

} // namespace GlazelHost
