#include "propertypage/editor_launch.h"

#include "renderer/renderer_binding.h"

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace
{

constexpr char kNoPreviewText[] =
    "Sorry, unable to create a suitable preview frame for GlazelBuilder.";
constexpr char kNoEditorText[] = "Sorry, unable to launch the GlazelBuilder application.";

void Tell(const char* text) noexcept
{
    ::MessageBoxA(nullptr, text, nullptr, MB_OK);
}

// Runs the editor on a copy of the record's bytes: a change notice that is handled while the editor
// is open may free the record's own.
std::int32_t RunEditor(FrameBufferDesc* preview, const SessionData& record,
                       std::uint32_t linear) noexcept
{
    const std::unique_ptr<std::uint8_t[]> bytes(
        record.data != nullptr ? new (std::nothrow) std::uint8_t[record.size] : nullptr);
    if (bytes == nullptr && record.data != nullptr)
    {
        return RendererAPI::kEditorUnavailable;
    }
    if (bytes != nullptr)
    {
        std::memcpy(bytes.get(), record.data, record.size);
    }
    return RendererAPI::Binding().RunEditor(preview, bytes.get(), record.size, linear);
}

void FetchEditedLook(SessionData& record) noexcept
{
    const RendererAPI::RendererBinding& renderer = RendererAPI::Binding();
    const std::uint32_t size = renderer.GetSessionDataSize();
    std::uint8_t* const block = record.AllocateData(size);
    if (block != nullptr && size > 0)
    {
        renderer.GetSessionData(block, size);
    }
}

} // namespace

bool LaunchEditor(ISfExchangeProps<SessionData>* effect, SessionData& record) noexcept
{
    FrameBufferDesc* const preview = effect != nullptr ? effect->GetPreviewFrame() : nullptr;
    if (preview == nullptr || !preview->IsValid())
    {
        Tell(kNoPreviewText);
        return false;
    }
    const std::uint32_t option = record.GetFlag();
    const bool linear = preview->format == kFormatBgraFloat && option == kAssumeLinearGamma;
    switch (RunEditor(preview, record, linear ? 1 : 0))
    {
    case RendererAPI::kEditorAccepted:
        FetchEditedLook(record);
        record.SetFlag(option); // the check box is the page's, whatever the editor wrote
        return true;
    case RendererAPI::kEditorUnavailable:
        Tell(kNoEditorText);
        return false;
    default:
        return false;
    }
}
