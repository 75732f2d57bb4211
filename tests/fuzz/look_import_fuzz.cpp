// Files of looks: whatever they hold, an import gives a usable record or one line that says why
// not, and the record of an import is imported as it is.
#include "reference_renderer/core/import_error.h"
#include "reference_renderer/core/look_import.h"
#include "reference_renderer/core/look_record.h"

#include "tests/fuzz/fuzz_input.h"

using namespace ReferenceRenderer;

namespace
{

class OneFile final : public FileSource
{
public:
    explicit OneFile(std::string content) : m_content(std::move(content)) {}
    bool Exists(const std::string& path) const override { return path == "look"; }
    std::string Read(const std::string&) const override { return m_content; }

private:
    std::string m_content;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try
    {
        const ImportedLook look = ImportLook("look", 0, OneFile(StringOf(data, size)));
        Require(CheckRecord(look.record) == RecordState::Usable);
        const OneFile stored(StringOf(look.record.data(), look.record.size()));
        Require(ImportLook("look", 0, stored).record == look.record);
    }
    catch (const ImportError& error)
    {
        Require(error.code < 0 && !error.message.empty());
        Require(error.message.find('\n') == std::string::npos);
    }
    return 0;
}
