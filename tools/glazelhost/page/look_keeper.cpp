#include "tools/glazelhost/page/look_keeper.h"

#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/safe_output.h"
#include "tools/glazelhost/plugin/look.h"
#include "tools/glazelhost/project/look_formats.h"

#include <algorithm>
#include <utility>

namespace GlazelHost
{

namespace
{

bool IsSamePath(const std::string& left, const std::string& right)
{
    return ::CompareStringOrdinal(Wide(left).c_str(), -1, Wide(right).c_str(), -1, TRUE) ==
           CSTR_EQUAL;
}

// `look` is FILE, FILE#ID or A|B.
bool IsOneOf(const std::string& path, const std::string& look)
{
    const std::size_t bar = look.find('|');
    const std::string first = look.substr(0, bar);
    return IsSamePath(path, first) || IsSamePath(path, first.substr(0, first.find_last_of('#'))) ||
           (bar != std::string::npos && IsOneOf(path, look.substr(bar + 1)));
}

} // namespace

LookKeeper::LookKeeper(EffectControls& controls, std::optional<LookFile> origin)
    : m_controls(controls), m_first(controls.StoredLook()), m_origin(std::move(origin))
{
}

bool LookKeeper::HasLook()
{
    return !m_controls.StoredLook().empty();
}

bool LookKeeper::IsUnsaved()
{
    const std::vector<std::byte> record = m_controls.StoredLook();
    return record != m_first && (!m_saved || record != m_saved->record);
}

std::optional<LookFile> LookKeeper::File()
{
    const std::vector<std::byte> record = m_controls.StoredLook();
    if (m_saved && m_saved->record == record)
    {
        return m_saved->file;
    }
    if (!m_origin || record.empty())
    {
        return std::nullopt;
    }
    if (record == m_first)
    {
        return m_origin;
    }
    // The check box alone may have been changed: a render can be told that.
    const auto option = LinearOption(record);
    std::vector<std::byte> first = m_first;
    if (option && SetLinearOption(first, *option) && first == record)
    {
        LookFile file = *m_origin;
        file.linear = option;
        return file;
    }
    return std::nullopt;
}

std::string LookKeeper::SuggestedName() const
{
    std::string name = m_origin ? m_origin->path : "untitled";
    const std::size_t mark = name.find_first_of("|#");
    name = name.substr(0, mark);
    name = name.substr(name.find_last_of("\\/:") + 1);
    return name.substr(0, name.find_last_of('.')) + ".look";
}

bool LookKeeper::HasWritten(const std::string& path) const
{
    return std::any_of(m_written.begin(), m_written.end(), [&path](const Held& written) {
        return IsSamePath(path, written.file.path);
    });
}

bool LookKeeper::IsSavedIn(const std::string& path)
{
    const auto held =
        std::find_if(m_written.begin(), m_written.end(),
                     [&path](const Held& written) { return IsSamePath(path, written.file.path); });
    return held != m_written.end() && held->record == m_controls.StoredLook();
}

void LookKeeper::Save(const std::string& path, bool overwrite)
{
    std::vector<std::byte> record = m_controls.StoredLook();
    if (record.empty())
    {
        throw HostError(path, "there is no look to save",
                        "press Edit... on the page and make one, or start with --look FILE");
    }
    CheckIsRecordName(path);
    const auto output = OpenSafeOutput(path, overwrite || HasWritten(path));
    output->Write(record.data(), record.size());
    output->Commit();
    if (m_origin && IsOneOf(path, m_origin->path))
    {
        m_origin.reset();
        m_first.clear();
    }
    m_saved = Held{{path, std::nullopt, false}, std::move(record)};
    std::erase_if(m_written,
                  [&path](const Held& written) { return IsSamePath(path, written.file.path); });
    m_written.push_back(*m_saved);
}

} // namespace GlazelHost
