// Executable images with damaged headers and tables, as files and as loaded modules: no call
// slot of a module lies outside it.
#include "tools/glazelhost/plugin/pe_image.h"

#include "tests/fuzz/fuzz_input.h"
#include "tests/tools/glazelhost/plugin/tiny_dll.h"

using namespace GlazelHost;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const PeLayout layout = input.ConsumeBool() ? PeLayout::File : PeLayout::Loaded;
    TinyDll dll;
    Damage(dll.bytes, input);
    const auto image = ReadPeImage(dll.bytes, layout);
    if (image && layout == PeLayout::Loaded)
    {
        for (const auto* const libraries : {&image->imports, &image->delayedImports})
        {
            for (const ImportedLibrary& library : *libraries)
            {
                for (const ImportSlot& slot : library.slots)
                {
                    Require(slot.slotOffset <= dll.bytes.size() - 8); // where a call is redirected
                }
            }
        }
    }
    return 0;
}
