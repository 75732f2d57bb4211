#include "tests/module/stand_ins.h"

#include "tools/glazelhost/plugin/pe_image.h"

using namespace GlazelHost;

namespace
{

std::span<const std::byte> ImageOf(HMODULE module)
{
    const auto* const base = reinterpret_cast<const std::byte*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const nt = reinterpret_cast<const IMAGE_NT_HEADERS64*>(base + dos->e_lfanew);
    return {base, nt->OptionalHeader.SizeOfImage};
}

} // namespace

StandIns::StandIns(HMODULE module, std::span<const StandIn> table)
    : m_module(module), m_table(table)
{
    Exchange(true);
}

StandIns::~StandIns()
{
    HMODULE loaded = nullptr;
    if (::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                 GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                             reinterpret_cast<LPCWSTR>(m_module), &loaded) != FALSE)
    {
        Exchange(false);
    }
}

void StandIns::Exchange(bool in)
{
    const auto image = ReadPeImage(ImageOf(m_module), PeLayout::Loaded);
    if (!image)
    {
        return;
    }
    for (const ImportedLibrary& library : image->imports)
    {
        for (const ImportSlot& slot : library.slots)
        {
            for (const StandIn& standIn : m_table)
            {
                if (slot.function != standIn.name)
                {
                    continue;
                }
                auto* const place = reinterpret_cast<std::uintptr_t*>(
                    reinterpret_cast<std::byte*>(m_module) + slot.slotOffset);
                DWORD protection = 0;
                ::VirtualProtect(place, sizeof *place, PAGE_READWRITE, &protection);
                if (in)
                {
                    *standIn.real = *place;
                }
                *place = in ? standIn.call : *standIn.real;
                ::VirtualProtect(place, sizeof *place, protection, &protection);
                m_slots += in ? 1U : 0U;
            }
        }
    }
}
