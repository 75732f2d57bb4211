// Dialog templates that are cut or wrong are read to their end at most.
#include "platform/atl/dialog_template.h"

#include "tests/fuzz/fuzz_input.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto measure = MeasureDialogTemplate(std::as_bytes(std::span(data, size)));
    Require(!measure || !measure->font || measure->font->face.find(u'\0') == std::u16string::npos);
    return 0;
}
