// What rows of the reference renderer cost on noisy gradients, every figure in every round, beside
// a plain copy of the same bytes. Prints JSON for ./bench.sh and judges nothing. Usage:
// kernel_bench ROUNDS [FOLDER]; a folder gets the 8-bit frame and the 33-point LUT.
#include "reference_renderer/core/cube_writer.h"
#include "reference_renderer/dll/row_workers.h"
#include "tests/bench/figures.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <vector>

using namespace ReferenceRenderer;

namespace
{

constexpr std::size_t kWidth = 1920;
constexpr std::size_t kHeight = 1080;

// Slow gradients plus noise of two codes, or pixels at random, each value given to `put`.
template <typename Put>
void Paint(std::size_t width, std::size_t height, bool random, Put&& put)
{
    std::mt19937 numbers(1);
    std::uniform_real_distribution<float> noise(-2.0F / 255.0F, 2.0F / 255.0F);
    std::uniform_real_distribution<float> any(0.0F, 1.0F);
    for (std::size_t y = 0; y < height; ++y)
    {
        const float down = static_cast<float>(y) / static_cast<float>(height);
        for (std::size_t x = 0; x < width; ++x)
        {
            const float across = static_cast<float>(x) / static_cast<float>(width);
            for (const float value : {across, down, (across + down) / 2.0F})
            {
                put(random ? any(numbers) : std::clamp(value + noise(numbers), 0.0F, 1.0F));
            }
            put(1.0F);
        }
    }
}

struct Frame
{
    std::vector<std::byte> source;
    std::vector<std::byte> target;
    std::size_t width;
    std::size_t height;
    std::size_t pixelBytes;

    Frame(std::size_t columns, std::size_t rows, bool floats, bool random = false)
        : width(columns), height(rows), pixelBytes(floats ? 16 : 4)
    {
        source.reserve(width * height * pixelBytes);
        Paint(width, height, random, [&](float value) {
            if (floats)
            {
                const auto* const bytes = reinterpret_cast<const std::byte*>(&value);
                source.insert(source.end(), bytes, bytes + sizeof value);
            }
            else
            {
                source.push_back(static_cast<std::byte>(value * 255.0F + 0.5F));
            }
        });
        target.resize(source.size());
    }

    FrameJob JobOf(const PreparedLook& look, RowFunction* row)
    {
        const std::size_t pitch = width * pixelBytes;
        return {source.data(), target.data(), pitch, pitch, width, height, pixelBytes, &look, row};
    }
};

class Bench
{
public:
    void AddCopy(const char* name, Frame& frame)
    {
        AddWork(name, frame, [&frame] {
            std::memcpy(frame.target.data(), frame.source.data(), frame.source.size());
            asm volatile("" : : "r"(frame.target.data()) : "memory");
        });
    }

    void Add(const char* name, Frame& frame, const PreparedLook& look, RowFunction* row)
    {
        const FrameJob job = frame.JobOf(look, row);
        AddWork(name, frame, [job] { job.RenderRows(0, job.height); });
    }

    void AddAllCores(const char* name, Frame& frame, const PreparedLook& look, RowFunction* row)
    {
        const FrameJob job = frame.JobOf(look, row);
        AddWork(name, frame, [this, job] { m_workers.Run(job); });
    }

    void Run(int rounds)
    {
        m_workers.Start();
        m_figures.Run(rounds);
        m_workers.Stop();
        m_figures.Print();
    }

private:
    void AddWork(const char* name, const Frame& frame, std::function<void()> work)
    {
        m_figures.Add(name, static_cast<double>(frame.width * frame.height), std::move(work));
    }

    RowWorkers m_workers;
    Figures m_figures;
};

void WriteInputs(const std::string& folder, const Frame& frame, const Look& look)
{
    std::ofstream(folder + "/frame.bgra", std::ios::binary)
        .write(reinterpret_cast<const char*>(frame.source.data()),
               static_cast<std::streamsize>(frame.source.size()));
    std::ofstream(folder + "/look.cube", std::ios::binary) << CubeFileText(look);
}

int Measure(int rounds, const char* folder)
{
    const Look lut = CubeLook(CubeOf(33, Swirled));
    Cdl correction{{1.1F, 1.0F, 0.9F}, {0.01F, 0.0F, 0.02F}, {1.0F, 1.0F, 1.0F}, 1.0F};
    Cdl colourful = correction;
    colourful.saturation = 1.2F;
    Cdl bent = colourful;
    bent.power = {1.2F, 1.1F, 0.9F};
    const auto look33 = Prepared(lut);
    const auto look65 = Prepared(CubeLook(CubeOf(65, Swirled)));
    const auto cdl = Prepared(CdlLook(correction));
    const auto cdlMixed = Prepared(CdlLook(colourful));
    Look mixedLut = lut;
    mixedLut.cdlMode = CdlMode::Clamped;
    mixedLut.cdl = colourful;
    const auto lutMixed = Prepared(mixedLut);
    const auto cdlBent = Prepared(CdlLook(bent));
    const auto curves = Prepared(CurveLook(CurvesOf(1024, [](double x) { return x * x; })));

    Frame codes(kWidth, kHeight, false);
    Frame randomCodes(kWidth, kHeight, false, true);
    Frame floats(kWidth, kHeight, true);
    Frame codes720(1280, 720, false);
    Frame codes2160(3840, 2160, false);
    Frame codes4320(7680, 4320, false);
    if (folder != nullptr)
    {
        WriteInputs(folder, codes, lut);
    }
    Bench bench;
    bench.AddCopy("copy 8-bit", codes);
    bench.Add("LUT 8-bit", codes, *look33, look33->Row8());
    bench.AddAllCores("LUT 8-bit, all cores", codes, *look33, look33->Row8());
    bench.Add("LUT 8-bit, random pixels", randomCodes, *look33, look33->Row8());
    bench.Add("LUT 8-bit, 65 points", codes, *look65, look65->Row8());
    bench.Add("LUT 8-bit, 65 points, random pixels", randomCodes, *look65, look65->Row8());
    bench.Add("CDL 8-bit", codes, *cdl, cdl->Row8());
    bench.Add("CDL 8-bit with saturation", codes, *cdlMixed, cdlMixed->Row8());
    bench.Add("CDL with saturation and LUT 8-bit", codes, *lutMixed, lutMixed->Row8());
    bench.Add("curves 8-bit", codes, *curves, curves->Row8());
    bench.Add("LUT 8-bit, 1280x720", codes720, *look33, look33->Row8());
    bench.Add("LUT 8-bit, 3840x2160", codes2160, *look33, look33->Row8());
    bench.Add("LUT 8-bit, 7680x4320", codes4320, *look33, look33->Row8());
    bench.AddCopy("copy float", floats);
    bench.Add("LUT float", floats, *look33, look33->RowFloat(false));
    bench.AddAllCores("LUT float, all cores", floats, *look33, look33->RowFloat(false));
    bench.Add("LUT linear float", floats, *look33, look33->RowFloat(true));
    bench.Add("CDL float", floats, *cdlMixed, cdlMixed->RowFloat(false));
    bench.Add("CDL float with power", floats, *cdlBent, cdlBent->RowFloat(false));
    bench.Run(rounds);
    return 0;
}

} // namespace

int main(int count, char** words)
{
    const std::string text = count > 1 ? words[1] : "";
    int rounds = 0;
    std::from_chars(text.data(), text.data() + text.size(), rounds);
    if (rounds < 1 || count > 3)
    {
        std::fprintf(stderr, "kernel_bench: say how many rounds: kernel_bench ROUNDS [FOLDER]\n");
        return 2;
    }
    return Measure(rounds, count == 3 ? words[2] : nullptr);
}
