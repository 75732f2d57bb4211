// Compares graded pictures with those of an independent program. Needs ffmpeg.
#include "reference_renderer/core/prepared_look.h"
#include "tests/reference_renderer/core/ffmpeg_samples.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <stdexcept>

#include <unistd.h>

namespace ReferenceRenderer
{

namespace
{

namespace fs = std::filesystem;

const fs::path kSamples = fs::path(GLAZEL_SOURCE_DIR) / "samples";

std::string TextOf(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class FfmpegAgreement : public testing::TestWithParam<std::string>
{
protected:
    FfmpegAgreement()
        : m_folder(fs::temp_directory_path() / ("renderer-" + std::to_string(::getpid())))
    {
        fs::create_directories(m_folder);
        std::ofstream(m_folder / "swirl.cube") << CubeText(27, Swirled);
        std::ofstream(m_folder / "small.cube") << CubeText(2, Inverted);
        std::ofstream curve(m_folder / "curve.cube");
        curve << "LUT_1D_SIZE 1024\n";
        for (int i = 0; i < 1024; ++i)
        {
            const double x = i / 1023.0;
            curve << x * x << " " << 1.0 - x << " " << std::sqrt(x) << "\n";
        }
    }
    ~FfmpegAgreement() override { fs::remove_all(m_folder); }

    // The LUT of this test: a sample look, or one that is made here.
    fs::path Lut() const
    {
        const fs::path sample = kSamples / "looks" / GetParam();
        return fs::exists(sample) ? sample : m_folder / GetParam();
    }

    std::string Filter() const
    {
        return GetParam() == "curve.cube" ? "lut1d=file=" + Lut().string() + ":interp=linear"
                                          : "lut3d=file=" + Lut().string() + ":interp=tetrahedral";
    }

    std::unique_ptr<PreparedLook> Look() const
    {
        MemoryFiles files;
        files.files["lut"] = TextOf(Lut());
        auto look = std::make_unique<PreparedLook>();
        EXPECT_EQ(look->Read(ImportLook("lut", 0, files).record), RecordState::Usable);
        return look;
    }

    fs::path m_folder;
};

} // namespace

TEST_P(FfmpegAgreement, EightBitPicturesDifferByAtMostOneCode)
{
    const auto look = Look();
    for (const char* name : {"coffee.png", "rocket.jpg"})
    {
        const std::string input = "-i " + (kSamples / "images" / name).string();
        // Both filters start from the very same bytes.
        std::vector<std::uint8_t> ours = SamplesFrom<std::uint8_t>(input + " -pix_fmt bgra");
        const auto theirs =
            SamplesFrom<std::uint8_t>(input + " -vf format=bgra," + Filter() + " -pix_fmt bgra");
        ASSERT_EQ(ours.size(), theirs.size());
        auto* const bytes = reinterpret_cast<std::byte*>(ours.data());
        look->Row8()(*look, bytes, bytes, ours.size() / 4);
        int largest = 0;
        for (std::size_t i = 0; i < ours.size(); ++i)
        {
            largest = std::max(largest, std::abs(ours[i] - theirs[i]));
        }
        EXPECT_LE(largest, 1) << name;
    }
}

TEST_P(FfmpegAgreement, FloatPicturesDifferByAtMostOne4096th)
{
    // Planes of green, blue, red; beyond the domain on both sides.
    constexpr std::size_t kWidth = 256;
    constexpr std::size_t kPixels = kWidth * 256;
    std::mt19937 random(21);
    std::uniform_real_distribution<float> value(-0.25F, 1.25F);
    std::vector<float> planes(3 * kPixels);
    std::generate(planes.begin(), planes.end(), [&] { return value(random); });
    const fs::path raw = m_folder / "float.raw";
    std::ofstream(raw, std::ios::binary)
        .write(reinterpret_cast<const char*>(planes.data()),
               static_cast<std::streamsize>(planes.size() * sizeof(float)));
    const auto theirs =
        SamplesFrom<float>("-f rawvideo -pix_fmt gbrpf32le -s 256x256 -i " + raw.string() +
                           " -vf " + Filter() + " -pix_fmt gbrpf32le");
    ASSERT_EQ(theirs.size(), planes.size());

    const auto look = Look();
    double largest = 0.0;
    for (std::size_t i = 0; i < kPixels; ++i)
    {
        const Rgb ours = look->Grade({planes[2 * kPixels + i], planes[i], planes[kPixels + i]});
        largest = std::max(
            largest, Distance(ours, {theirs[2 * kPixels + i], theirs[i], theirs[kPixels + i]}));
    }
    EXPECT_LE(largest, 1.0 / 4096.0);
    RecordProperty("LargestDifference", std::to_string(largest));
}

INSTANTIATE_TEST_SUITE_P(Luts, FfmpegAgreement,
                         testing::Values("warm_print.cube", "bleach_bypass.cube", "swirl.cube",
                                         "small.cube", "curve.cube"),
                         [](const auto& lut) { return lut.param.substr(0, lut.param.find('.')); });

} // namespace ReferenceRenderer
