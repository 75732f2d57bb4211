// Compound documents in memory, as structured storage makes and reads them.
#pragma once

#include "platform/atl/atlcomcli.h"

#include <windows.h>

#include <objidl.h>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace GlazelHost
{

// Throws std::bad_alloc: in memory nothing else fails.
void CheckStorageCall(HRESULT result);

// A document that is being made.
class CompoundDocument
{
public:
    CompoundDocument();
    CompoundDocument(const CompoundDocument&) = delete;
    CompoundDocument& operator=(const CompoundDocument&) = delete;

    IStorage& Root() const noexcept { return *m_root; }
    // Of the whole document; what was made of the root has been released.
    std::vector<std::byte> Bytes() const;

private:
    CComPtr<ILockBytes> m_bytes;
    CComPtr<IStorage> m_root;
};

CComPtr<IStorage> CreateStorage(IStorage& parent, const std::wstring& name);
void WriteStream(IStorage& storage, const std::wstring& name, std::span<const std::byte> bytes);

// The root to read from; null when the bytes are no compound document, or not a sound one.
CComPtr<IStorage> OpenCompoundDocument(std::span<const std::byte> bytes);
// Null when there is none that can be read.
CComPtr<IStorage> OpenStorage(IStorage& parent, const std::wstring& name);
// None when there is no such stream, it cannot be read whole, or it is longer than `largest`.
std::optional<std::vector<std::byte>> ReadStream(IStorage& storage, const std::wstring& name,
                                                 std::size_t largest);

} // namespace GlazelHost
