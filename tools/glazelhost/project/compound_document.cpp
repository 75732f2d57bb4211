#include "tools/glazelhost/project/compound_document.h"

#include "tools/glazelhost/project/compound_check.h"

#include <cstring>
#include <new>
#include <utility>

namespace GlazelHost
{

namespace
{

constexpr DWORD kMake = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kRead = STGM_READ | STGM_SHARE_EXCLUSIVE;

CComPtr<ILockBytes> LockBytesOf(std::span<const std::byte> bytes)
{
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    CComPtr<ILockBytes> lockBytes;
    if (memory == nullptr)
    {
        throw std::bad_alloc();
    }
    std::memcpy(::GlobalLock(memory), bytes.data(), bytes.size());
    ::GlobalUnlock(memory);
    if (FAILED(::CreateILockBytesOnHGlobal(memory, TRUE, &lockBytes)))
    {
        ::GlobalFree(memory);
        throw std::bad_alloc();
    }
    ULARGE_INTEGER size{};
    size.QuadPart = bytes.size(); // the block may be larger than what was asked for
    CheckStorageCall(lockBytes->SetSize(size));
    return lockBytes;
}

} // namespace

void CheckStorageCall(HRESULT result)
{
    if (FAILED(result))
    {
        throw std::bad_alloc();
    }
}

CompoundDocument::CompoundDocument()
{
    CheckStorageCall(::CreateILockBytesOnHGlobal(nullptr, TRUE, &m_bytes));
    CheckStorageCall(::StgCreateDocfileOnILockBytes(m_bytes, kMake, 0, &m_root));
}

std::vector<std::byte> CompoundDocument::Bytes() const
{
    CheckStorageCall(m_root->Commit(STGC_DEFAULT));
    STATSTG facts{};
    CheckStorageCall(m_bytes->Stat(&facts, STATFLAG_NONAME));
    std::vector<std::byte> bytes(facts.cbSize.LowPart);
    ULONG done = 0;
    CheckStorageCall(m_bytes->ReadAt({}, bytes.data(), facts.cbSize.LowPart, &done));
    bytes.resize(done);
    return bytes;
}

CComPtr<IStorage> CreateStorage(IStorage& parent, const std::wstring& name)
{
    CComPtr<IStorage> storage;
    CheckStorageCall(parent.CreateStorage(name.c_str(), kMake, 0, 0, &storage));
    return storage;
}

void WriteStream(IStorage& storage, const std::wstring& name, std::span<const std::byte> bytes)
{
    CComPtr<IStream> stream;
    CheckStorageCall(storage.CreateStream(name.c_str(), kMake, 0, 0, &stream));
    ULONG done = 0;
    const auto size = static_cast<ULONG>(bytes.size());
    const HRESULT result = stream->Write(bytes.data(), size, &done);
    CheckStorageCall(SUCCEEDED(result) && done != size ? STG_E_MEDIUMFULL : result);
}

CComPtr<IStorage> OpenCompoundDocument(std::span<const std::byte> bytes)
{
    CComPtr<IStorage> root;
    if (IsSoundCompound(bytes))
    {
        const CComPtr<ILockBytes> lockBytes = LockBytesOf(bytes);
        if (FAILED(::StgOpenStorageOnILockBytes(lockBytes, nullptr, kRead, nullptr, 0, &root)))
        {
            root.Release();
        }
    }
    return root;
}

CComPtr<IStorage> OpenStorage(IStorage& parent, const std::wstring& name)
{
    CComPtr<IStorage> storage;
    if (FAILED(parent.OpenStorage(name.c_str(), nullptr, kRead, nullptr, 0, &storage)))
    {
        storage.Release();
    }
    return storage;
}

std::optional<std::vector<std::byte>> ReadStream(IStorage& storage, const std::wstring& name,
                                                 std::size_t largest)
{
    CComPtr<IStream> stream;
    STATSTG facts{};
    if (FAILED(storage.OpenStream(name.c_str(), nullptr, kRead, 0, &stream)) ||
        FAILED(stream->Stat(&facts, STATFLAG_NONAME)) || facts.cbSize.QuadPart > largest)
    {
        return std::nullopt;
    }
    std::vector<std::byte> bytes(facts.cbSize.LowPart);
    ULONG done = 0;
    const HRESULT result = stream->Read(bytes.data(), facts.cbSize.LowPart, &done);
    return SUCCEEDED(result) && done == bytes.size() ? std::optional(std::move(bytes))
                                                     : std::nullopt;
}

} // namespace GlazelHost
