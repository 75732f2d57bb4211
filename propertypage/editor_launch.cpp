#include "propertypage/editor_launch.h"

#include "binding/record_bytes.h"
#include "binding/renderer_binding.h"

#include <windows.h>

#include <cstdint>

namespace
{

constexpr char kNoPreviewText[] =
    "Sorry, unable to create a suitable preview frame for GlazelBuilder.";
constexpr char kNoEditorText[] = "Sorry, unable to launch the GlazelBuilder application.";

void Tell(const char* text) noexcept
{
    ::MessageBoxA(nullptr, text, nullptr, MB_OK);
}

void FetchEditedLook(SessionData& record)
{
    const RendererAPI::RendererBinding& renderer = RendererAPI::Binding();
    const std::uint32_t size = renderer.GetSessionDataSize();
    std::uint8_t* const block = record.AllocateClearedData(size); // a renderer may fill less
    if (block != nullptr && size > 0)
    {
        renderer.GetSessionData(block, size);
    }
}

} // namespace

bool LaunchEditor(const EffectExchange& effect, SessionData& record)
{
    FrameBufferDesc* const preview = effect.PreviewFrame();
    if (preview == nullptr || !preview->IsValid())
    {
        Tell(kNoPreviewText);
        return false;
    }
    const std::uint32_t option = record.GetFlag();
    const bool linear = preview->format == kFormatBgraFloat && option == kAssumeLinearGamma;
    const RecordBytes bytes(record);
    switch (RendererAPI::Binding().RunEditor(preview, bytes.Data(), bytes.Size(), linear ? 1 : 0))
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
