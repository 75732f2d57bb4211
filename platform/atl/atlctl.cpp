#include "platform/atl/atlctl.h"

#include <algorithm>

namespace
{

constexpr WCHAR kContents[] = L"Contents";

bool HasPage(const CAUUID& pages, REFCLSID page) noexcept
{
    return std::any_of(pages.pElems, pages.pElems + pages.cElems,
                       [&](REFCLSID known) { return ::IsEqualCLSID(known, page) != FALSE; });
}

} // namespace

HRESULT AtlGetPropertyPages(const ATL_PROPMAP_ENTRY* map, CAUUID* pages) noexcept
{
    if (pages == nullptr)
    {
        return E_POINTER;
    }
    *pages = {};
    ULONG entries = 0;
    while (map[entries].pclsidPropPage != nullptr)
    {
        ++entries;
    }
    pages->pElems = static_cast<GUID*>(::CoTaskMemAlloc(entries * sizeof(GUID)));
    if (pages->pElems == nullptr)
    {
        return E_OUTOFMEMORY;
    }
    for (const ATL_PROPMAP_ENTRY* entry = map; entry->pclsidPropPage != nullptr; ++entry)
    {
        if (!HasPage(*pages, *entry->pclsidPropPage))
        {
            pages->pElems[pages->cElems++] = *entry->pclsidPropPage;
        }
    }
    return S_OK;
}

HRESULT AtlOpenContents(IStorage* storage, IStream** contents) noexcept
{
    return ForeignResult([&] {
        return storage->OpenStream(kContents, nullptr, STGM_DIRECT | STGM_SHARE_EXCLUSIVE, 0,
                                   contents);
    });
}

HRESULT AtlCreateContents(IStorage* storage, IStream** contents) noexcept
{
    return ForeignResult([&] {
        return storage->CreateStream(kContents, STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE,
                                     0, 0, contents);
    });
}
