// A renderer that hands every call on to the real one, which stands beside the running program, but
// for the one defect that the name of its own folder asks for. Under any other name it does not
// load.
#include "contract/entry_points.h"
#include "contract/option_chunk.h"
#include "tests/doubles/zoo/own_folder.h"

#include <windows.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace
{

using namespace RendererAPI;

EntryPoints real;
EntryPoints now; // the real ones but for the defect
unsigned calls = 0;
bool failedImport = false;

std::uint8_t* Pixels(const FrameBufferDesc& frame)
{
    return static_cast<std::uint8_t*>(frame.pixels);
}

// 0 for 8 bits.
float FirstBlue(const FrameBufferDesc& frame)
{
    float blue = 0.0F;
    if (frame.format == kFormatBgraFloat)
    {
        std::memcpy(&blue, Pixels(frame), sizeof blue);
    }
    return blue;
}

// Changes the first pixel's blue.
void Spoil(const FrameBufferDesc& frame)
{
    if (frame.format == kFormatBgraFloat)
    {
        float blue = 0.0F;
        std::memcpy(&blue, Pixels(frame), sizeof blue);
        blue += 1.0F;
        std::memcpy(Pixels(frame), &blue, sizeof blue);
    }
    else
    {
        Pixels(frame)[0] ^= 1U;
    }
}

std::int32_t Render(FrameBufferDesc* source, FrameBufferDesc* target, const void* record,
                    std::uint32_t size, std::uint32_t flags, std::int32_t frame)
{
    return real.renderFrame(source, target, record, size, flags, frame);
}

using FrameDefect = void(FrameBufferDesc& source, FrameBufferDesc& target);
FrameDefect* spoilFrame = nullptr;

// `defect` comes after each frame that was rendered.
void AfterEachFrame(FrameDefect* defect)
{
    spoilFrame = defect;
    now.renderFrame = [](FrameBufferDesc* source, FrameBufferDesc* target, const void* record,
                         std::uint32_t size, std::uint32_t flags, std::int32_t frame) {
        const std::int32_t result = Render(source, target, record, size, flags, frame);
        if (result == kFrameRendered)
        {
            spoilFrame(*source, *target);
        }
        return result;
    };
}

struct Animal
{
    const char* name;
    void (*breed)();
};

// clang-format off
const Animal kAnimals[]{
    {"ends_when_loaded", [] { EndTheProcess(); }},
    {"hangs_when_loaded", [] { ::Sleep(INFINITE); }},
    {"starts_only_once", [] {
        now.initRenderer = [](std::uint32_t mode) { return ++calls == 1 ? real.initRenderer(mode) : 1; };
    }},
    {"shows_a_box", [] {
        now.initRenderer = [](std::uint32_t mode) {
            ::MessageBoxA(nullptr, "a word from the renderer", nullptr, MB_OK);
            return real.initRenderer(mode);
        };
    }},
    {"writes_small_buffers", [] {
        now.getSessionData = [](void* buffer, std::uint32_t size) {
            if (size != 0) { *static_cast<char*>(buffer) = 1; }
            return real.getSessionData(buffer, size);
        };
    }},
    {"keeps_what_failed", [] {
        now.loadSessionFile = [](const void* path, std::uint32_t options) {
            const std::int32_t result = real.loadSessionFile(path, options);
            failedImport = result < 0;
            return result;
        };
        now.getSessionDataSize = [] { return failedImport ? 7U : real.getSessionDataSize(); };
    }},
    {"forgets_the_option_chunk", [] {
        now.getSessionData = [](void* buffer, std::uint32_t size) {
            const std::int32_t result = real.getSessionData(buffer, size);
            if (result == 1) { static_cast<char*>(buffer)[kOptionChunk] = 'F'; }
            return result;
        };
    }},
    {"new_records_are_off", [] {
        now.getSessionData = [](void* buffer, std::uint32_t size) {
            const std::int32_t result = real.getSessionData(buffer, size);
            if (result == 1) { static_cast<char*>(buffer)[kOptionWord] = 0; }
            return result;
        };
    }},
    {"blends_the_option", [] {
        now.interpolateSessionData = [](const void* a, std::uint32_t sizeA, const void* b, std::uint32_t sizeB, double fraction, void* output) {
            real.interpolateSessionData(a, sizeA, b, sizeB, fraction, output);
            static_cast<char*>(output)[kOptionWord] ^= fraction > 0.0 ? 1 : 0;
        };
    }},
    {"blends_too_far", [] {
        now.interpolateSessionData = [](const void* a, std::uint32_t sizeA, const void* b, std::uint32_t sizeB, double fraction, void* output) {
            real.interpolateSessionData(a, sizeA, b, sizeB, fraction, output);
            static_cast<volatile char*>(output)[sizeA] = 0;
        };
    }},
    {"writes_between_rows", [] {
        AfterEachFrame([](FrameBufferDesc&, FrameBufferDesc& target) {
            if (target.height > 1 && target.rowPitch > target.width)
            {
                Pixels(target)[target.width * BytesPerPixel(target.format)] = 0;
            }
        });
    }},
    {"writes_past_the_end", [] {
        AfterEachFrame([](FrameBufferDesc&, FrameBufferDesc& target) {
            const std::size_t end = target.RowBytes() * (target.height - 1) + target.width * BytesPerPixel(target.format);
            const_cast<volatile std::uint8_t*>(Pixels(target))[end] = 0;
        });
    }},
    {"writes_before_the_start", [] {
        AfterEachFrame([](FrameBufferDesc&, FrameBufferDesc& target) {
            if (target.pixels != nullptr) { const_cast<volatile std::uint8_t*>(Pixels(target))[-1] = 0; }
        });
    }},
    {"believes_flipped_pitches", [] {
        now.renderFrame = [](FrameBufferDesc* source, FrameBufferDesc* target, const void* record, std::uint32_t size, std::uint32_t flags, std::int32_t frame) {
            const std::int32_t result = Render(source, target, record, size, flags, frame);
            if ((flags & kRenderFlipped) != 0) { const_cast<volatile std::uint8_t*>(Pixels(*target))[-1] = 0; }
            return result;
        };
    }},
    {"loses_alpha", [] {
        AfterEachFrame([](FrameBufferDesc&, FrameBufferDesc& target) {
            Pixels(target)[BytesPerPixel(target.format) - 1] ^= 1U;
        });
    }},
    {"differs_in_place", [] {
        AfterEachFrame([](FrameBufferDesc& source, FrameBufferDesc& target) {
            if (source.pixels == target.pixels) { Spoil(target); }
        });
    }},
    {"differs_every_time", [] {
        AfterEachFrame([](FrameBufferDesc&, FrameBufferDesc& target) {
            if (++calls % 2 == 0) { Spoil(target); }
        });
    }},
    {"differs_on_threads", [] {
        calls = ::GetCurrentThreadId();
        AfterEachFrame([](FrameBufferDesc&, FrameBufferDesc& target) {
            if (::GetCurrentThreadId() != calls) { Spoil(target); }
        });
    }},
    {"shares_a_buffer", [] {
        now.renderFrame = [](FrameBufferDesc* source, FrameBufferDesc* target, const void* record, std::uint32_t size, std::uint32_t flags, std::int32_t frame) {
            static volatile LONG inside = 0;
            const bool isAlone = ::InterlockedIncrement(&inside) == 1;
            const std::int32_t result = Render(source, target, record, size, flags, frame);
            ::SwitchToThread();
            if (!isAlone) { Spoil(*target); }
            ::InterlockedDecrement(&inside);
            return result;
        };
    }},
    {"draws_no_thumbnail", [] {
        now.getSessionIcon = [](const void*, std::uint32_t, FrameBufferDesc*) { return 0; };
    }},
    {"draws_anything", [] {
        now.getSessionIcon = [](const void* record, std::uint32_t size, FrameBufferDesc* icon) {
            static std::uint32_t pixel = 0xFF000000U;
            if (real.getSessionIcon(record, size, icon) == 0)
            {
                icon->pixels = &pixel;
                icon->width = icon->height = 1;
            }
            return 1;
        };
    }},
    {"writes_refused_frames", [] {
        now.renderFrame = [](FrameBufferDesc* source, FrameBufferDesc* target, const void* record, std::uint32_t size, std::uint32_t flags, std::int32_t frame) {
            const std::int32_t result = Render(source, target, record, size, flags, frame);
            if (result < 0 && target->pixels != nullptr) { Pixels(*target)[0] = 0; }
            return result;
        };
    }},
    {"refuses_no_frame", [] {
        now.renderFrame = [](FrameBufferDesc* source, FrameBufferDesc* target, const void* record, std::uint32_t size, std::uint32_t flags, std::int32_t frame) {
            return std::max(Render(source, target, record, size, flags, frame), kFrameRendered);
        };
    }},
    {"imports_anything", [] {
        now.loadSessionFile = [](const void* path, std::uint32_t options) {
            const std::int32_t result = real.loadSessionFile(path, options);
            return result == kImportMalformed || result == kImportUnrecognised ? kImportDone : result;
        };
    }},
    {"trusts_records", [] {
        now.renderFrame = [](FrameBufferDesc* source, FrameBufferDesc* target, const void* record, std::uint32_t size, std::uint32_t flags, std::int32_t frame) {
            const volatile auto* const bytes = static_cast<const volatile std::uint8_t*>(record);
            // What begins right is believed to be whole.
            static_cast<void>(size > 0 && bytes[0] == 'G' ? bytes[130000] : 0);
            return Render(source, target, record, size, flags, frame);
        };
    }},
    {"believes_later_versions", [] {
        now.renderFrame = [](FrameBufferDesc* source, FrameBufferDesc* target, const void* record, std::uint32_t size, std::uint32_t flags, std::int32_t frame) {
            const volatile auto* const bytes = static_cast<const volatile std::uint8_t*>(record);
            // The next version is believed to be longer.
            static_cast<void>(size > 8 && bytes[0] == 'G' && bytes[4] == 3 ? bytes[size] : 0);
            return Render(source, target, record, size, flags, frame);
        };
    }},
    {"refuses_longer_records", [] {
        now.renderFrame = [](FrameBufferDesc* source, FrameBufferDesc* target, const void* record, std::uint32_t size, std::uint32_t flags, std::int32_t frame) {
            const bool isLonger = size > 130654 && static_cast<const char*>(record)[0] == 'G';
            return isLonger ? -7 : Render(source, target, record, size, flags, frame);
        };
    }},
    {"trusts_numbers", [] {
        AfterEachFrame([](FrameBufferDesc& source, FrameBufferDesc&) {
            static const volatile std::uint8_t table[256]{};
            // What a conversion answers that has no answer.
            const volatile std::ptrdiff_t index = std::isnan(FirstBlue(source)) ? std::numeric_limits<std::ptrdiff_t>::min() : 0;
            static_cast<void>(table[index]);
        });
    }},
    {"differs_where_no_number_is", [] {
        AfterEachFrame([](FrameBufferDesc& source, FrameBufferDesc& target) {
            if (std::isnan(FirstBlue(source)) && ++calls % 2 == 0) { Pixels(target)[0] ^= 1U; }
        });
    }},
    {"changes_records", [] {
        now.getSessionIcon = [](const void* record, std::uint32_t size, FrameBufferDesc* icon) {
            const std::int32_t result = real.getSessionIcon(record, size, icon);
            if (size != 0) { *const_cast<volatile char*>(static_cast<const char*>(record)) = 'g'; }
            return result;
        };
    }},
    {"leaks_handles", [] {
        now.exitRenderer = [] {
            static_cast<void>(::CreateEventW(nullptr, FALSE, FALSE, nullptr));
            real.exitRenderer();
        };
    }},
    {"leaks_slots", [] {
        now.exitRenderer = [] {
            static_cast<void>(::TlsAlloc());
            real.exitRenderer();
        };
    }},
    {"leaks_memory", [] {
        now.exitRenderer = [] {
            static_cast<void>(::HeapAlloc(::GetProcessHeap(), 0, 100));
            real.exitRenderer();
        };
    }},
    {"pretends_to_edit", [] {
        now.doModalUI2 = [](FrameBufferDesc*, const void*, std::uint32_t, std::uint32_t) { return kEditorAccepted; };
    }},
    {"waits_for_ever", [] {
        now.getSessionIcon = [](const void*, std::uint32_t, FrameBufferDesc*) {
            ::Sleep(INFINITE);
            return 0;
        };
    }},
};
// clang-format on

bool Hatch()
{
    const std::string name = OwnFolderName(&now);
    const auto* const animal = std::find_if(std::begin(kAnimals), std::end(kAnimals),
                                            [&](const Animal& row) { return name == row.name; });
    const std::string path = ProgramFolderPath() + kLibraryName;
    const HMODULE module = animal != std::end(kAnimals) ? ::LoadLibraryA(path.c_str()) : nullptr;
    if (module == nullptr)
    {
        return false;
    }
#define FIND(pointer, name, required)                                                              \
    real.pointer = std::bit_cast<name##Function*>(::GetProcAddress(module, #name));
    RENDERER_ENTRY_POINTS(FIND)
#undef FIND
    now = real;
    animal->breed();
    return true;
}

} // namespace

// The real one stays loaded for good.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*)
{
    return reason != DLL_PROCESS_ATTACH || Hatch() ? TRUE : FALSE;
}

extern "C"
{

std::int32_t InitRenderer(std::uint32_t mode)
{
    return now.initRenderer(mode);
}

void ExitRenderer()
{
    now.exitRenderer();
}

std::int32_t DoModalUI(FrameBufferDesc* preview, const void* record, std::uint32_t size)
{
    return now.doModalUI(preview, record, size);
}

std::int32_t DoModalUI2(FrameBufferDesc* preview, const void* record, std::uint32_t size,
                        std::uint32_t linear)
{
    return now.doModalUI2(preview, record, size, linear);
}

std::int32_t DoModalUIWithProfile(FrameBufferDesc* preview, const void* record, std::uint32_t size,
                                  const void* profile, std::uint32_t profileSize,
                                  std::uint32_t linear)
{
    return now.doModalUIWithProfile(preview, record, size, profile, profileSize, linear);
}

std::int32_t RenderFrame(FrameBufferDesc* source, FrameBufferDesc* target, const void* record,
                         std::uint32_t size, std::uint32_t flags, std::int32_t frame)
{
    return now.renderFrame(source, target, record, size, flags, frame);
}

std::int32_t LoadSessionFile(const void* path, std::uint32_t options)
{
    return now.loadSessionFile(path, options);
}

std::int32_t GetSessionIcon(const void* record, std::uint32_t size, FrameBufferDesc* icon)
{
    return now.getSessionIcon(record, size, icon);
}

std::uint32_t GetSessionDataSize()
{
    return now.getSessionDataSize();
}

std::int32_t GetSessionData(void* buffer, std::uint32_t size)
{
    return now.getSessionData(buffer, size);
}

void InterpolateSessionData(const void* a, std::uint32_t sizeA, const void* b, std::uint32_t sizeB,
                            double fraction, void* output)
{
    now.interpolateSessionData(a, sizeA, b, sizeB, fraction, output);
}

std::int32_t BeginToolChain()
{
    return now.beginToolChain();
}

std::int32_t AddToolToChain(std::uint32_t tool)
{
    return now.addToolToChain(tool);
}

void SetToolParameterValue(std::uint32_t tool, std::uint32_t parameter, double value)
{
    now.setToolParameterValue(tool, parameter, value);
}

void EnableFeature(std::uint32_t feature, std::uint32_t on)
{
    now.enableFeature(feature, on);
}

void SetTopLevelMaskParameterValue(std::uint32_t parameter, double value)
{
    now.setTopLevelMaskParameterValue(parameter, value);
}

} // extern "C"
