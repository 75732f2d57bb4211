#include "tools/glazelhost/project/project_file.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/media/file_stream.h"
#include "tools/glazelhost/media/safe_output.h"
#include "tools/glazelhost/plugin/library_file.h"
#include "tools/glazelhost/project/compound_check.h"
#include "tools/glazelhost/project/compound_document.h"
#include "tools/glazelhost/project/project_description.h"

#include <optional>
#include <tuple>
#include <utility>

namespace GlazelHost
{

namespace
{

constexpr wchar_t kDescriptionStream[] = L"Project";
constexpr wchar_t kEffectStorage[] = L"Effect";
constexpr wchar_t kKeyframeStorage[] = L"Keyframes";
// Of a description with the most keyframes: some 70 bytes for each.
constexpr std::size_t kLargestDescription = 128 * kMostKeyframes;

// "0000", "0001", ...
std::wstring StreamNameOf(std::size_t keyframe)
{
    std::wstring name = std::to_wstring(keyframe);
    name.insert(0, 4 - name.size(), L'0');
    return name;
}

// The parts of a project file whose seals are unbroken, but for the effect's storage, which only
// the effect can read.
struct OpenedProject
{
    CComPtr<IStorage> root;
    ProjectDescription description;
    Project project;
};

OpenedProject Open(const std::string& path)
{
    OpenedProject opened;
    const std::vector<std::byte> bytes = ReadWholeFile(path);
    opened.root = OpenCompoundDocument(bytes);
    if (!opened.root && LooksCompound(bytes))
    {
        ThrowDamagedProject(path, "its structure");
    }
    if (!opened.root)
    {
        ThrowNoProject(path);
    }
    const auto text = ReadStream(*opened.root, kDescriptionStream, kLargestDescription);
    if (!text)
    {
        ThrowNoProject(path);
    }
    opened.description =
        ParseProjectDescription({reinterpret_cast<const char*>(text->data()), text->size()}, path);
    opened.project.ease = opened.description.ease;

    const CComPtr<IStorage> keyframes = OpenStorage(*opened.root, kKeyframeStorage);
    for (const ProjectDescription::Key& key : opened.description.keys)
    {
        const std::size_t index = opened.project.keyframes.size();
        auto record = keyframes ? ReadStream(*keyframes, StreamNameOf(index),
                                             static_cast<std::size_t>(key.seal.size))
                                : std::nullopt;
        if (!record || SealOf(*record) != key.seal)
        {
            ThrowDamagedProject(path, "the keyframe at " + TextOf(key.time));
        }
        opened.project.keyframes.push_back({key.time, std::move(*record)});
    }
    return opened;
}

ProjectDescription DescriptionOf(const Project& project, std::span<const std::byte> look)
{
    ProjectDescription description{project.ease, SealOf(look), {}};
    for (const Keyframe& keyframe : project.keyframes)
    {
        description.keys.push_back({keyframe.time, SealOf(keyframe.record)});
    }
    return description;
}

} // namespace

Project OpenProject(const std::string& path, EffectControls& effect)
{
    OpenedProject opened = Open(path);
    const CComPtr<IStorage> storage = OpenStorage(*opened.root, kEffectStorage);
    CLSID owner{};
    if (!storage || FAILED(::ReadClassStg(storage, &owner)))
    {
        ThrowDamagedProject(path, "the effect's look");
    }
    if (owner != effect.ClassId())
    {
        throw HostError(path, "the project's look belongs to another effect",
                        "give the plug-in that it was made with as --plugin");
    }
    // Asked back, because only the effect knows what it keeps in its storage.
    if (!effect.LoadFrom(*storage) || SealOf(effect.StoredLook()) != opened.description.look)
    {
        ThrowDamagedProject(path, "the effect's look");
    }
    return std::move(opened.project);
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
    if (!FileExists(path))
    {
        return;
    }
    try
    {
        std::ignore = Open(path);
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
    const CompoundDocument document;
    IStorage& root = document.Root();
    const std::string text = TextOf(DescriptionOf(project, effect.StoredLook()));
    WriteStream(root, kDescriptionStream, std::as_bytes(std::span(text)));

    const CComPtr<IStorage> storage = CreateStorage(root, kEffectStorage);
    CheckStorageCall(::WriteClassStg(storage, effect.ClassId()));
    effect.SaveTo(*storage);
    if (!project.keyframes.empty())
    {
        const CComPtr<IStorage> keyframes = CreateStorage(root, kKeyframeStorage);
        for (std::size_t index = 0; index < project.keyframes.size(); ++index)
        {
            WriteStream(*keyframes, StreamNameOf(index), project.keyframes[index].record);
        }
    }
    const std::vector<std::byte> bytes = document.Bytes();
    const auto output = OpenSafeOutput(path, overwrite);
    output->Write(bytes.data(), bytes.size());
    output->Commit();
}

} // namespace GlazelHost
