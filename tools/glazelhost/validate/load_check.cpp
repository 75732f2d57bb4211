#include "tools/glazelhost/validate/load_check.h"

#include "tools/glazelhost/validate/process_census.h"

#include <array>

namespace GlazelHost
{

void CheckLoads(Check& check, unsigned loads, const std::function<HMODULE()>& use)
{
    constexpr unsigned kWarmUp = 5;
    // Loading the system's own libraries again each time would take most of the time.
    for (const wchar_t* const library : {L"gdi32", L"oleaut32", L"comdlg32", L"shell32"})
    {
        ::LoadLibraryW(library);
    }
    HMODULE place = nullptr;
    for (unsigned load = 0; load < kWarmUp; ++load)
    {
        place = use();
        if (place == nullptr)
        {
            return;
        }
    }
    TakeCensus(place); // what taking it needs itself stays
    const ProcessCensus before = TakeCensus(place);
    for (unsigned load = 0; load < loads; ++load)
    {
        place = use();
    }
    const ProcessCensus after = TakeCensus(place);

    struct Kind
    {
        const char* name;
        std::size_t before;
        std::size_t after;
    };
    // Free slots grow fewer, so their ends are exchanged.
    const std::array kinds{
        Kind{"handles", before.handles, after.handles},
        Kind{"thread-local slots", after.freeTlsSlots, before.freeTlsSlots},
        Kind{"fiber-local slots", after.freeFlsSlots, before.freeFlsSlots},
        Kind{"window classes", before.classes, after.classes},
        Kind{"modules", before.modules, after.modules},
        Kind{"threads", before.threads, after.threads},
        Kind{"GDI objects", before.gdiObjects, after.gdiObjects},
        Kind{"windows and menus", before.userObjects, after.userObjects},
        Kind{"heap blocks", before.heapBlocks, after.heapBlocks},
    };
    for (const Kind& kind : kinds)
    {
        // The system's own pools move by a few; what is lost is lost each time.
        check.That(kind.after < kind.before + loads / 2,
                   "each load and unload leaves " + std::string(kind.name) + " behind");
    }
}

} // namespace GlazelHost
