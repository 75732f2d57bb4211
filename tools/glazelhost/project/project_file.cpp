#include "tools/glazelhost/project/project_file.h"

#include "support/win32/utf8.h"
#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/file_identity.h"
#include "tools/glazelhost/media/file_stream.h"
#include "tools/glazelhost/media/safe_output.h"

#include <array>
#include <tuple>
#include <utility>

namespace GlazelHost
{

namespace
{

// Bytes. With the most keyframes of the largest looks it takes 175 MB.
constexpr std::size_t kLargestFile = std::size_t{256} << 20;

std::vector<std::byte> Read(const std::string& path)
{
    return ReadFirstBytes(path, kLargestFile + 1);
}

StoredProject Parse(const std::vector<std::byte>& bytes, const std::string& path)
{
    if (bytes.size() > kLargestFile)
    {
        ThrowNoProject(path);
    }
    return ParseProject({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, path);
}

std::string TextOf(const CLSID& classId)
{
    std::array<wchar_t, 39> text{}; // with braces and the terminating null
    ::StringFromGUID2(classId, text.data(), static_cast<int>(text.size()));
    return Utf8(text.data());
}

} // namespace

Project OpenProject(const std::string& path, EffectControls& effect)
{
    StoredProject stored = Parse(Read(path), path);
    if (stored.effect != TextOf(effect.ClassId()))
    {
        throw HostError(path, "the project's look belongs to another effect",
                        "give the plug-in that it was made with as --plugin");
    }
    effect.LoadLook(stored.look);
    // Asked back, because the effect alone decides what it takes.
    if (effect.StoredLook() != stored.look)
    {
        ThrowDamagedProject(path, "the effect's look");
    }
    return std::move(stored.project);
}

void CheckStorable(const std::string& look, std::span<const std::byte> record,
                   EffectControls& effect)
{
    const std::uint64_t largest = effect.LargestStored();
    if (record.size() > largest)
    {
        throw HostError(look,
                        "its record has " + std::to_string(record.size()) +
                            " bytes, and the effect stores at most " + std::to_string(largest),
                        "leave --save-project out, or use a smaller look");
    }
}

void CheckProjectTarget(const std::string& path, bool overwrite)
{
    CheckOutputTarget(path, overwrite);
    if (!IsThere(path))
    {
        return;
    }
    const std::vector<std::byte> bytes = Read(path);
    try
    {
        std::ignore = Parse(bytes, path);
    }
    catch (const HostError&)
    {
        throw HostError(path,
                        "it is not replaced, because it is no project that this version can read",
                        "choose another name for the new project");
    }
}

void SaveProject(const std::string& path, bool overwrite, const Project& project,
                 EffectControls& effect)
{
    CheckProjectTarget(path, overwrite);
    for (const Keyframe& keyframe : project.keyframes)
    {
        CheckStorable("keyframe at " + TextOf(keyframe.time), keyframe.record, effect);
    }
    const std::string text = TextOf({TextOf(effect.ClassId()), effect.StoredLook(), project});
    const auto output = OpenSafeOutput(path, overwrite);
    output->Write(std::as_bytes(std::span(text)).data(), text.size());
    output->Commit();
}

} // namespace GlazelHost
