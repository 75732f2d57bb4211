// What the adapter itself costs: its copy of rows beside a memcpy of the same bytes, and the first
// and a further effect of a process. Prints JSON for ./bench.sh and judges nothing. Usage:
// adapter_bench ROUNDS.
#include "effect/surface_memory.h"
#include "platform/dxtransform/dxtrans.h"
#include "tests/bench/figures.h"
#include "tests/module/plugin_module.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

namespace
{

struct Size
{
    const char* name;
    std::uint32_t width;
    std::uint32_t height;
};

constexpr Size kSizes[]{{"160x90", 160, 90},
                        {"640x360", 640, 360},
                        {"1280x720", 1280, 720},
                        {"1920x1080", 1920, 1080},
                        {"3840x2160", 3840, 2160}};

// Float pixels of one surface and a buffer for them.
struct FloatFrame
{
    explicit FloatFrame(const Size& size)
        : source(std::size_t{size.width} * size.height * 16, 1), target(source.size())
    {
        memory.firstByte = source.data();
        memory.pitch = std::int64_t{size.width} * 16;
        memory.width = size.width;
        memory.height = size.height;
        buffer.format = kFormatBgraFloat;
        buffer.pixels = target.data();
        buffer.width = size.width;
        buffer.height = size.height;
        buffer.rowPitch = size.width;
    }

    std::vector<std::uint8_t> source;
    std::vector<std::uint8_t> target;
    SurfaceMemory memory;
    FrameBufferDesc buffer;
};

// Each with a frame of its own, so that neither finds in the caches what the other left there.
class Copies
{
public:
    explicit Copies(const Size& size) : m_plain(size), m_rows(size) {}

    void AddTo(Figures& figures, const Size& size)
    {
        const std::string behind = std::string(" float, ") + size.name;
        const double pixels = static_cast<double>(size.width) * size.height;
        figures.Add("memcpy" + behind, pixels, [this] {
            std::memcpy(m_plain.target.data(), m_plain.source.data(), m_plain.source.size());
            asm volatile("" : : "r"(m_plain.target.data()) : "memory"); // it must really happen
        });
        figures.Add("row copy" + behind, pixels,
                    [this] { CopyRows(m_rows.memory, m_rows.buffer); });
    }

private:
    FloatFrame m_plain;
    FloatFrame m_rows;
};

void AddEffects(Figures& figures)
{
    const auto effect = [](const PluginModule& module) {
        CComPtr<IDXTransform> made;
        if (FAILED(module.CreateEffect(IID_IDXTransform, reinterpret_cast<void**>(&made))))
        {
            throw std::runtime_error("the effect was not created");
        }
        return made;
    };
    CComPtr<IDXTransform> first;
    std::unique_ptr<PluginModule> module;
    figures.AddTime("first effect", MedianMicroseconds(1, [&] {
                                        module = std::make_unique<PluginModule>();
                                        first = effect(*module);
                                    }) / 1e3);
    figures.AddTime("further effect",
                    MedianMicroseconds(31, [&] { std::ignore = effect(*module); }) / 1e3);
    first = nullptr;
}

} // namespace

int main(int count, char** words)
{
    const std::string text = count == 2 ? words[1] : "";
    int rounds = 0;
    std::from_chars(text.data(), text.data() + text.size(), rounds);
    if (rounds < 1)
    {
        std::fprintf(stderr, "adapter_bench: say how many rounds: adapter_bench ROUNDS\n");
        return 2;
    }
    Figures figures;
    AddEffects(figures);
    std::vector<std::unique_ptr<Copies>> copies;
    for (const Size& size : kSizes)
    {
        copies.push_back(std::make_unique<Copies>(size));
        copies.back()->AddTo(figures, size);
    }
    figures.Run(rounds);
    figures.Print();
    return 0;
}
