// The effect's look as files have it: which file holds it, saving it, whether it would be lost.
// Tests: tests/tools/glazelhost/page/look_keeper_test.cpp.
#pragma once

#include "tools/glazelhost/page/command_text.h"
#include "tools/glazelhost/plugin/effect_controls.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace GlazelHost
{

// On the effect's thread; the controls outlive it. All calls throw HostError when the effect fails.
class LookKeeper
{
public:
    // The effect's look is now what `origin` holds; none: it was not read from a file.
    LookKeeper(EffectControls& controls, std::optional<LookFile> origin);
    LookKeeper(const LookKeeper&) = delete;
    LookKeeper& operator=(const LookKeeper&) = delete;

    bool HasLook();
    // The effect's look is neither the one it began with nor the one saved last.
    bool IsUnsaved();
    // Where a render finds the effect's look; none when no file holds it.
    std::optional<LookFile> File();
    // The name that a file of it may get: the origin's stem, else "untitled", with ".look".
    std::string SuggestedName() const;
    // Writes the effect's look. Throws HostError also when there is none. A file that this object
    // has written itself is replaced whatever `overwrite` says. When it is the file that the look
    // came from, that is no longer what it was.
    void Save(const std::string& path, bool overwrite);
    // Save has written this file.
    bool HasWritten(const std::string& path) const;
    // Save has written the effect's look as it is now into this file.
    bool IsSavedIn(const std::string& path);

private:
    struct Held
    {
        LookFile file;
        std::vector<std::byte> record;
    };

    EffectControls& m_controls;
    std::vector<std::byte> m_first;
    std::optional<LookFile> m_origin;
    std::optional<Held> m_saved;
    std::vector<Held> m_written; // one for each file
};

} // namespace GlazelHost
