#include "tests/reference_renderer/core/look_fixtures.h"

#include "reference_renderer/core/lut_sampling.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace ReferenceRenderer
{

bool MemoryFiles::Exists(const std::string& path) const
{
    return files.count(path) != 0;
}

std::string MemoryFiles::Read(const std::string& path) const
{
    const auto file = files.find(path);
    if (file == files.end())
    {
        throw ImportError{RendererAPI::kImportUnreadable, path + ": cannot be opened"};
    }
    return file->second;
}

Cube CubeOf(std::uint32_t size, const Grading& grading, const Domain& domain)
{
    Cube cube{size, domain, {}};
    for (std::uint32_t b = 0; b < size; ++b)
    {
        for (std::uint32_t g = 0; g < size; ++g)
        {
            for (std::uint32_t r = 0; r < size; ++r)
            {
                const Rgb node =
                    grading({EntryValue(domain[0], r, size), EntryValue(domain[1], g, size),
                             EntryValue(domain[2], b, size)});
                cube.nodes.insert(cube.nodes.end(), {node.r, node.g, node.b});
            }
        }
    }
    cube.nodes.resize(cube.nodes.size() + kNodePadding);
    return cube;
}

Curves CurvesOf(std::uint32_t size, const std::function<double(double)>& function,
                const Domain& domain)
{
    Curves curves{size, domain, {}};
    for (const Interval& interval : domain)
    {
        for (std::uint32_t i = 0; i < size; ++i)
        {
            const double value = EntryValue(interval, i, size);
            curves.values.push_back(static_cast<float>(function(value)));
        }
    }
    return curves;
}

std::string CubeText(std::uint32_t size, const Grading& grading)
{
    std::string text = "LUT_3D_SIZE " + std::to_string(size) + "\n";
    const Cube cube = CubeOf(size, grading);
    for (std::size_t i = 0; i + kNodePadding < cube.nodes.size(); i += 3)
    {
        text += std::to_string(cube.nodes[i]) + " " + std::to_string(cube.nodes[i + 1]) + " " +
                std::to_string(cube.nodes[i + 2]) + "\n";
    }
    return text;
}

std::vector<std::uint8_t> RecordOf(const Look& look)
{
    const auto stored = std::make_unique<StoredLook>();
    StoreLook(look, *stored);
    std::vector<std::uint8_t> record(kRecordSize);
    WriteRecord(*stored, RecordBytes(record.data(), kRecordSize));
    return record;
}

std::vector<std::uint8_t> PlainRecordOf(const Look& look)
{
    const auto stored = std::make_unique<StoredLook>();
    StoreLook(look, *stored);
    std::uint8_t* next = stored->coded.data();
    const auto put = [&](float value, const Interval& range) {
        const float share =
            range.low < range.high ? (value - range.low) / (range.high - range.low) : 0.0F;
        const auto code = static_cast<std::uint16_t>(std::lround(share * 65535.0F));
        std::memcpy(next, &code, sizeof code);
        next += sizeof code;
    };
    for (std::size_t i = 0; i < std::size_t{3} * stored->curveSize; ++i)
    {
        put(stored->curveValues[i], stored->curveRange[i / stored->curveSize]);
    }
    for (std::size_t i = 0; i < 3 * NodeCount(stored->cubeSize); ++i)
    {
        put(stored->cubeNodes[i], stored->cubeRange[i % 3]);
    }
    std::fill(next, stored->coded.data() + stored->coded.size(), std::uint8_t{0});
    stored->codedVersion = kPlainVersion;
    std::vector<std::uint8_t> record(kRecordSize);
    WriteRecord(*stored, RecordBytes(record.data(), kRecordSize));
    return record;
}

std::unique_ptr<PreparedLook> Prepared(const Look& look)
{
    auto prepared = std::make_unique<PreparedLook>();
    if (prepared->Read(RecordOf(look)) != RecordState::Usable)
    {
        throw std::runtime_error("the look made no usable record");
    }
    return prepared;
}

Look CubeLook(Cube cube)
{
    Look look;
    look.cube = std::move(cube);
    return look;
}

Look CurveLook(Curves curves)
{
    Look look;
    look.curves = std::move(curves);
    return look;
}

Look CdlLook(const Cdl& cdl, CdlMode mode)
{
    Look look;
    look.cdlMode = mode;
    look.cdl = cdl;
    return look;
}

Rgb Same(const Rgb& value)
{
    return value;
}

Rgb Inverted(const Rgb& value)
{
    return {1.0F - value.r, 1.0F - value.g, 1.0F - value.b};
}

Rgb Swirled(const Rgb& value)
{
    return {1.2F * value.r * value.r - 0.1F * value.b,
            0.7F * value.g + 0.3F * std::sin(3.0F * value.r),
            0.5F * value.b + 0.4F * value.g * value.r + 0.1F};
}

std::string ImportMessage(const std::string& text, const std::string& path)
{
    MemoryFiles files;
    files.files[path] = text;
    try
    {
        ImportLook(path, 0, files);
        return {};
    }
    catch (const ImportError& error)
    {
        return error.message;
    }
}

double Distance(const Rgb& left, const Rgb& right)
{
    return std::max({std::abs(double{left.r} - right.r), std::abs(double{left.g} - right.g),
                     std::abs(double{left.b} - right.b)});
}

} // namespace ReferenceRenderer
