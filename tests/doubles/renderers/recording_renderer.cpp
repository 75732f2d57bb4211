// A renderer that notes every call with its arguments and whose pictures are easy to foresee:
// RenderFrame inverts the three colours and keeps alpha. It allocates nothing.
#include "contract/entry_points.h"
#include "tests/doubles/renderers/recording.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#ifndef RECORDING_INIT_RESULT
#define RECORDING_INIT_RESULT 0
#endif

namespace
{

Recording g_recording;

RecordedCall& Note(Call call)
{
    static RecordedCall overflow; // shared by all calls that are not kept, and read by nobody
    const std::size_t index = g_recording.count++;
    RecordedCall& entry = index < Recording::kCapacity ? g_recording.calls[index] : overflow;
    entry = {};
    entry.call = call;
    if (call == g_recording.throwsFrom)
    {
        Throw(g_recording.throws);
    }
    if (g_recording.isDue != nullptr && g_recording.isDue(call))
    {
        Throw(Throws::CppException);
    }
    return entry;
}

void NoteFrame(std::array<std::byte, 72>& bytes, const FrameBufferDesc* desc)
{
    if (desc != nullptr)
    {
        std::memcpy(bytes.data(), desc, bytes.size());
    }
}

void NoteRecord(RecordedCall& entry, const void* record, std::uint32_t size)
{
    entry.recordA = record;
    entry.sizeA = size;
    if (record != nullptr)
    {
        std::memcpy(entry.bytesA.data(), record, std::min<std::size_t>(size, entry.bytesA.size()));
    }
}

void InvertRow(const std::uint8_t* source, std::uint8_t* target, std::uint32_t width)
{
    for (std::uint32_t x = 0; x < width * 4; ++x)
    {
        target[x] = x % 4 == 3 ? source[x] : static_cast<std::uint8_t>(255 - source[x]);
    }
}

void InvertRow(const float* source, float* target, std::uint32_t width)
{
    for (std::uint32_t x = 0; x < width * 4; ++x)
    {
        target[x] = x % 4 == 3 ? source[x] : 1.0F - source[x];
    }
}

template <typename Channel>
void Invert(const FrameBufferDesc& source, const FrameBufferDesc& target)
{
    for (std::uint32_t y = 0; y < std::min(source.height, target.height); ++y)
    {
        InvertRow(static_cast<const Channel*>(source.pixels) + std::size_t{y} * source.rowPitch * 4,
                  static_cast<Channel*>(target.pixels) + std::size_t{y} * target.rowPitch * 4,
                  std::min(source.width, target.width));
    }
}

#ifdef RECORDING_READS_FILES
// Every file is a record of this renderer, of which a program knows nothing.
void ReadAsRecord(const char* path)
{
    static std::array<std::uint8_t, 131072> record;
    if (std::FILE* const file = std::fopen(path, "rb"))
    {
        g_recording.sessionDataSize =
            static_cast<std::uint32_t>(std::fread(record.data(), 1, record.size(), file));
        g_recording.sessionData = record.data();
        std::fclose(file);
    }
}
#endif

std::int32_t Edit(Call call, const FrameBufferDesc* preview, const void* record,
                  std::uint32_t recordSize, std::uint32_t linear)
{
    RecordedCall& entry = Note(call);
    NoteFrame(entry.source, preview);
    NoteRecord(entry, record, recordSize);
    entry.word1 = linear;
    if (g_recording.onEdit != nullptr)
    {
        g_recording.onEdit(g_recording.editContext);
    }
    return g_recording.editorResult;
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_DETACH)
    {
        g_recording.detached = true;
    }
    return TRUE;
}

extern "C"
{

Recording* GetRecording()
{
    return &g_recording;
}

std::int32_t InitRenderer(std::uint32_t mode)
{
    Note(Call::InitRenderer).word1 = mode;
    return g_recording.initResult + RECORDING_INIT_RESULT;
}

void ExitRenderer()
{
    Note(Call::ExitRenderer);
    if (g_recording.onExit != nullptr)
    {
        g_recording.onExit(g_recording.exitContext);
    }
}

std::int32_t DoModalUI(FrameBufferDesc* preview, const void* record, std::uint32_t recordSize)
{
    return Edit(Call::DoModalUI, preview, record, recordSize, 0);
}

std::int32_t DoModalUI2(FrameBufferDesc* preview, const void* record, std::uint32_t recordSize,
                        std::uint32_t linear)
{
    return Edit(Call::DoModalUI2, preview, record, recordSize, linear);
}

std::int32_t DoModalUIWithProfile(FrameBufferDesc* preview, const void* record,
                                  std::uint32_t recordSize, const void* profile,
                                  std::uint32_t profileSize, std::uint32_t linear)
{
    const std::int32_t result =
        Edit(Call::DoModalUIWithProfile, preview, record, recordSize, linear);
    RecordedCall& entry =
        g_recording.calls[std::min(g_recording.count.load(), Recording::kCapacity) - 1];
    entry.recordB = profile;
    entry.sizeB = profileSize;
    return result;
}

std::int32_t RenderFrame(FrameBufferDesc* source, FrameBufferDesc* destination, const void* record,
                         std::uint32_t recordSize, std::uint32_t flags, std::int32_t frameNumber)
{
    RecordedCall& entry = Note(Call::RenderFrame);
    NoteFrame(entry.source, source);
    NoteFrame(entry.destination, destination);
    NoteRecord(entry, record, recordSize);
    entry.word1 = flags;
    entry.frameNumber = frameNumber;
    entry.caller = __builtin_return_address(0);
    if (!g_recording.rendersPixels)
    {
        return g_recording.renderResult;
    }
    if (source->format == kFormatBgra8 && destination->format == kFormatBgra8)
    {
        Invert<std::uint8_t>(*source, *destination);
    }
    else if (source->format == kFormatBgraFloat && destination->format == kFormatBgraFloat)
    {
        Invert<float>(*source, *destination);
    }
    return g_recording.renderResult;
}

std::int32_t LoadSessionFile(const void* path, std::uint32_t options)
{
    RecordedCall& entry = Note(Call::LoadSessionFile);
    entry.recordA = path;
    entry.word1 = options;
#ifdef RECORDING_READS_FILES
    ReadAsRecord(static_cast<const char*>(path));
#endif
    return 1;
}

std::int32_t GetSessionIcon(const void* record, std::uint32_t recordSize, FrameBufferDesc* icon)
{
    RecordedCall& entry = Note(Call::GetSessionIcon);
    NoteRecord(entry, record, recordSize);
    NoteFrame(entry.destination, icon);
    icon->pixels = g_recording.iconPixels;
    icon->width = g_recording.iconWidth;
    icon->height = g_recording.iconHeight;
    return g_recording.iconResult;
}

std::uint32_t GetSessionDataSize()
{
    Note(Call::GetSessionDataSize);
    return g_recording.sessionDataSize;
}

std::int32_t GetSessionData(void* buffer, std::uint32_t bufferSize)
{
    RecordedCall& entry = Note(Call::GetSessionData);
    entry.recordA = buffer;
    entry.word1 = bufferSize;
    if (g_recording.sessionDataResult != 0)
    {
        std::copy_n(g_recording.sessionData, std::min(bufferSize, g_recording.sessionDataSize),
                    static_cast<std::uint8_t*>(buffer));
    }
    return g_recording.sessionDataResult;
}

// Blends byte by byte but for the first twenty, which are those of A.
void InterpolateSessionData(const void* recordA, std::uint32_t sizeA, const void* recordB,
                            std::uint32_t sizeB, double fraction, void* output)
{
    RecordedCall& entry = Note(Call::InterpolateSessionData);
    NoteRecord(entry, recordA, sizeA);
    entry.recordB = recordB;
    entry.sizeB = sizeB;
    entry.number = fraction;
    const auto* const a = static_cast<const std::uint8_t*>(recordA);
    const auto* const b = static_cast<const std::uint8_t*>(recordB);
    auto* const blended = static_cast<std::uint8_t*>(output);
    for (std::uint32_t i = 0; i < sizeA; ++i)
    {
        const double value = a[i] + (b[i] - a[i]) * fraction;
        blended[i] = i < 20 ? a[i] : static_cast<std::uint8_t>(value + 0.5);
    }
}

std::int32_t BeginToolChain()
{
    Note(Call::BeginToolChain);
    return 11;
}

std::int32_t AddToolToChain(std::uint32_t tool)
{
    Note(Call::AddToolToChain).word1 = tool;
    return 12;
}

void SetToolParameterValue(std::uint32_t tool, std::uint32_t parameter, double value)
{
    RecordedCall& entry = Note(Call::SetToolParameterValue);
    entry.word1 = tool;
    entry.word2 = parameter;
    entry.number = value;
}

void EnableFeature(std::uint32_t feature, std::uint32_t on)
{
    RecordedCall& entry = Note(Call::EnableFeature);
    entry.word1 = feature;
    entry.word2 = on;
}

void SetTopLevelMaskParameterValue(std::uint32_t parameter, double value)
{
    RecordedCall& entry = Note(Call::SetTopLevelMaskParameterValue);
    entry.word1 = parameter;
    entry.number = value;
}

} // extern "C"
