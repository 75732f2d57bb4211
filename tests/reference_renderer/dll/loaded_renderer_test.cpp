#include "tests/reference_renderer/dll/loaded_renderer.h"

#include "reference_renderer/core/look_icon.h"
#include "reference_renderer/core/look_record.h"
#include "reference_renderer/core/tool_chain.h"
#include "tests/doubles/test_thread.h"
#include "tests/module/heap_watch.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tests/reference_renderer/dll/debugger_watch.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <numeric>

namespace ReferenceRenderer
{

namespace
{

using namespace RendererAPI;
using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kFlags = kRenderFrame;

FrameBufferDesc Describe(void* pixels, std::uint32_t width, std::uint32_t height,
                         std::uint32_t format = kFormatBgra8)
{
    FrameBufferDesc desc{};
    desc.format = format;
    desc.pixels = pixels;
    desc.width = width;
    desc.height = height;
    desc.rowPitch = width;
    return desc;
}

// A folder of its own for each test, with a name that no code page holds.
class LoadedRendererTest : public testing::Test
{
protected:
    LoadedRendererTest()
    {
        wchar_t folder[MAX_PATH];
        ::GetTempPathW(MAX_PATH, folder);
        m_folder = std::wstring(folder) + L"Gr\u00FC\u00DFe \u65E5\u672C " +
                   std::to_wstring(::GetCurrentProcessId());
        ::CreateDirectoryW(m_folder.c_str(), nullptr);
    }

    ~LoadedRendererTest() override
    {
        for (const std::wstring& file : m_written)
        {
            ::DeleteFileW(file.c_str());
        }
        ::RemoveDirectoryW(m_folder.c_str());
    }

    // Writes a file and answers its path in UTF-8.
    std::string Write(const std::wstring& name, const std::string& contents)
    {
        const std::wstring path = m_folder + L"\\" + name;
        const HANDLE file =
            ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
        DWORD written = 0;
        ::WriteFile(file, contents.data(), static_cast<DWORD>(contents.size()), &written, nullptr);
        ::CloseHandle(file);
        m_written.push_back(path);
        char utf8[1024];
        ::WideCharToMultiByte(CP_UTF8, 0, path.c_str(), -1, utf8, sizeof utf8, nullptr, nullptr);
        return utf8;
    }

    std::int32_t Render(Bytes& pixels, std::uint32_t width, const Bytes& record)
    {
        const auto height = static_cast<std::uint32_t>(pixels.size() / 4 / width);
        FrameBufferDesc frame = Describe(pixels.data(), width, height);
        return m_library.renderFrame(&frame, &frame, record.data(),
                                     static_cast<std::uint32_t>(record.size()), kFlags, 0);
    }

    std::wstring m_folder;
    std::vector<std::wstring> m_written;
    LoadedRenderer m_library;
};

} // namespace

TEST_F(LoadedRendererTest, OnlyTheOneModeStarts)
{
    EXPECT_EQ(m_library.initRenderer(3), 0);
    EXPECT_EQ(m_library.initRenderer(3), 0) << "once for every effect";
    EXPECT_NE(m_library.initRenderer(2), 0);
}

TEST_F(LoadedRendererTest, FilesAreFoundByAnyUnicodePath)
{
    const std::string path = Write(L"\u00E9t\u00E9.cube", CubeText(2, Inverted));
    Bytes pixels{10, 20, 30, 40};
    EXPECT_EQ(Render(pixels, 1, m_library.Import(path)), kFrameRendered);
    EXPECT_EQ(pixels, (Bytes{245, 235, 225, 40}));
}

TEST_F(LoadedRendererTest, PathsMayBeLongerThanTheClassicLimit)
{
    const std::wstring name = std::wstring(200, L'x') + L".cube";
    const std::string path = Write(name, CubeText(2, Inverted));
    std::string detour = path;
    const std::size_t slash = detour.rfind('\\');
    for (int i = 0; i < 40; ++i)
    {
        detour.insert(slash, "\\.");
    }
    EXPECT_GT(detour.size(), 300U);
    EXPECT_EQ(m_library.Import(detour).size(), kRecordSize);
}

TEST_F(LoadedRendererTest, AFailedImportLeavesNothingProduced)
{
    m_library.Import(Write(L"good.cube", CubeText(2, Inverted)));
    const DebuggerWatch watch;
    EXPECT_EQ(m_library.loadSessionFile("Z:\\no\\such\\file.cube", kImportRecord),
              kImportUnreadable);
    EXPECT_EQ(m_library.getSessionDataSize(), 0U);
    EXPECT_EQ(watch.CountOf("GZ3Renderer: Z:\\no\\such\\file.cube: cannot be opened"), 1U);
    std::uint8_t byte = 9;
    EXPECT_EQ(m_library.getSessionData(&byte, 1), 0);
    EXPECT_EQ(byte, 9);
}

TEST_F(LoadedRendererTest, BadArgumentsOfAnImportHaveTheirOwnResult)
{
    EXPECT_EQ(m_library.loadSessionFile(nullptr, kImportRecord), kImportBadArgument);
    EXPECT_EQ(m_library.loadSessionFile("", kImportRecord), kImportBadArgument);
    EXPECT_EQ(m_library.loadSessionFile("\xFF\xFE.cube", kImportRecord), kImportBadArgument);
    EXPECT_EQ(m_library.loadSessionFile("a.cube", 0x10), kImportBadArgument);
    EXPECT_EQ(m_library.loadSessionFile("Z:\\", kImportRecord), kImportUnreadable) << "a folder";
}

TEST_F(LoadedRendererTest, AnImportIsDescribedAsJson)
{
    const std::string path = Write(L"q.cube", "TITLE \"My look\"\n" + CubeText(66, Swirled));
    ASSERT_EQ(m_library.loadSessionFile(path.c_str(), kImportDescribe), kImportDone);
    const auto json = nlohmann::json::parse(m_library.ProducedText());
    EXPECT_EQ(json["kind"], "3D LUT");
    EXPECT_EQ(json["title"], "My look");
    EXPECT_EQ(json["contents"], "3D LUT: 65 nodes a side, domain 0..1");
    EXPECT_EQ(json["warnings"].size(), 1U);
    EXPECT_GT(json["largestError"].get<double>(), 1e-5);
}

TEST_F(LoadedRendererTest, AFailureIsDescribedAsJson)
{
    const std::string path = Write(L"bad.cube", "LUT_3D_SIZE 2\n0 0 0\n0 zero 0\n");
    EXPECT_EQ(m_library.loadSessionFile(path.c_str(), kImportDescribe), kImportMalformed);
    const auto json = nlohmann::json::parse(m_library.ProducedText());
    EXPECT_EQ(json["error"],
              path + ": line 3: 'zero' is not a number that can be used; correct it");
}

TEST_F(LoadedRendererTest, DescribingChangesNothingForALaterImport)
{
    const std::string path = Write(L"d.cube", CubeText(5, Swirled));
    const Bytes record = m_library.Import(path);
    m_library.loadSessionFile(path.c_str(), kImportDescribe);
    EXPECT_TRUE(m_library.Import(path) == record);
}

TEST_F(LoadedRendererTest, ABufferThatIsTooSmallIsNotWritten)
{
    m_library.Import(Write(L"a.cube", CubeText(2, Same)));
    Bytes buffer(kRecordSize, 7);
    EXPECT_EQ(m_library.getSessionData(buffer.data(), kRecordSize - 1), 0);
    EXPECT_EQ(buffer, Bytes(kRecordSize, 7));
    EXPECT_EQ(m_library.getSessionData(nullptr, kRecordSize), 0);
    EXPECT_EQ(m_library.getSessionData(buffer.data(), kRecordSize), 1);
    EXPECT_EQ(buffer[8], 'f');
}

TEST_F(LoadedRendererTest, LargeFramesAreRenderedWholeOnAllCores)
{
    const Bytes record = RecordOf(CubeLook(CubeOf(27, Swirled)));
    const auto look = Prepared(CubeLook(CubeOf(27, Swirled)));
    Bytes pixels(std::size_t{1921} * 1083 * 4);
    for (std::size_t i = 0; i < pixels.size(); ++i)
    {
        pixels[i] = static_cast<std::uint8_t>(i * 2654435761U >> 13);
    }
    Bytes expected = pixels;
    auto* const bytes = reinterpret_cast<std::byte*>(expected.data());
    look->Row8()(*look, bytes, bytes, expected.size() / 4);
    ASSERT_EQ(Render(pixels, 1921, record), kFrameRendered);
    EXPECT_TRUE(pixels == expected);
}

TEST_F(LoadedRendererTest, FramesOfManyThreadsAtOnceDoNotDisturbEachOther)
{
    std::atomic<int> wrong{0};
    std::vector<std::unique_ptr<TestThread>> threads;
    for (int number = 0; number < 10; ++number)
    {
        threads.push_back(std::make_unique<TestThread>([&, number] {
            Cdl cdl;
            cdl.slope = {0.0F, 0.0F, 0.0F};
            cdl.offset[0] = static_cast<float>(number) / 255.0F;
            const Bytes record = RecordOf(CdlLook(cdl));
            Bytes pixels(std::size_t{512} * 256 * 4, 99);
            for (int frame = 0; frame < 20; ++frame)
            {
                Render(pixels, 512, record);
                for (std::size_t i = 0; i < pixels.size(); i += 4)
                {
                    wrong += pixels[i + 2] != number || pixels[i + 3] != 99 ? 1 : 0;
                }
            }
        }));
    }
    threads.clear();
    EXPECT_EQ(wrong, 0);
}

TEST_F(LoadedRendererTest, RecordsThatCannotBeUsedLeaveThePictureAndAreReportedOnce)
{
    const DebuggerWatch watch;
    Bytes damaged = RecordOf({});
    damaged.resize(damaged.size() / 2);
    const Bytes foreign(1000, 0x5A);
    for (int i = 0; i < 3; ++i)
    {
        for (const Bytes& record : {damaged, foreign, Bytes()})
        {
            Bytes source{1, 2, 3, 4};
            Bytes target{0, 0, 0, 0};
            FrameBufferDesc from = Describe(source.data(), 1, 1);
            FrameBufferDesc to = Describe(target.data(), 1, 1);
            EXPECT_EQ(m_library.renderFrame(&from, &to, record.data(),
                                            static_cast<std::uint32_t>(record.size()), kFlags, 0),
                      kFrameUnchanged);
            EXPECT_EQ(target, source);
        }
    }
    EXPECT_EQ(watch.CountOf("the look record is damaged"), 1U);
    EXPECT_EQ(watch.CountOf("the look record is not one of this renderer"), 1U);
    EXPECT_EQ(watch.CountOf("the look record is empty"), 1U);
}

TEST_F(LoadedRendererTest, ANullRecordWithASizeIsEmpty)
{
    Bytes pixels{1, 2, 3, 4};
    FrameBufferDesc frame = Describe(pixels.data(), 1, 1);
    EXPECT_EQ(m_library.renderFrame(&frame, &frame, nullptr, 5000, kFlags, 0), kFrameUnchanged);
}

TEST_F(LoadedRendererTest, FramesThatCannotBeRenderedAreRefused)
{
    const Bytes record = RecordOf({});
    const auto size = static_cast<std::uint32_t>(record.size());
    Bytes pixels(64, 5);
    FrameBufferDesc frame = Describe(pixels.data(), 4, 4);
    FrameBufferDesc other = frame;
    other.format = 4;
    EXPECT_EQ(m_library.renderFrame(&frame, &other, record.data(), size, kFlags, 0),
              kFrameFormatRefused);
    EXPECT_EQ(m_library.renderFrame(nullptr, &frame, record.data(), size, kFlags, 0),
              kFrameInvalid);
    other = Describe(pixels.data(), 4, 3);
    EXPECT_EQ(m_library.renderFrame(&frame, &other, record.data(), size, kFlags, 0),
              kFrameSizesDiffer);
}

TEST_F(LoadedRendererTest, SteadyRenderingAndBlendingAllocateNothing)
{
    const Bytes a = RecordOf(CubeLook(CubeOf(27, Swirled)));
    const Bytes b = RecordOf(CubeLook(CubeOf(17, Inverted)));
    const auto size = static_cast<std::uint32_t>(kRecordSize);
    Bytes pixels(std::size_t{640} * 360 * 4);
    Bytes blend(kRecordSize);
    const auto play = [&](int frames) {
        for (int i = 0; i < frames; ++i)
        {
            m_library.interpolateSessionData(a.data(), size, b.data(), size, (i + 1) / 200.0,
                                             blend.data());
            Render(pixels, 640, blend);
            Render(pixels, 640, a);
        }
    };
    play(8); // until every place for a look was used
    const HeapWatch watch(m_library.Module());
    play(100);
    EXPECT_EQ(watch.Allocations(), 0U);
}

TEST_F(LoadedRendererTest, EachThreadKeepsTheIconThatItAskedFor)
{
    const Bytes plain = RecordOf({});
    const Bytes inverted = RecordOf(CubeLook(CubeOf(2, Inverted)));
    const auto size = static_cast<std::uint32_t>(kRecordSize);
    FrameBufferDesc icon{};
    ASSERT_EQ(m_library.getSessionIcon(plain.data(), size, &icon), 1);
    EXPECT_EQ(icon.width, kIconWidth);
    EXPECT_EQ(icon.height, kIconHeight);
    const auto* const pixels = static_cast<const std::uint32_t*>(icon.pixels);
    const std::vector<std::uint32_t> before(pixels, pixels + kIconPixels);
    TestThread([&] {
        FrameBufferDesc other{};
        EXPECT_EQ(m_library.getSessionIcon(inverted.data(), size, &other), 1);
        EXPECT_NE(other.pixels, icon.pixels);
    }).Join(INFINITE);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), pixels));
}

TEST_F(LoadedRendererTest, ThereIsNoIconOfARecordThatCannotBeUsed)
{
    FrameBufferDesc icon = Describe(this, 5, 5);
    EXPECT_EQ(m_library.getSessionIcon(nullptr, 0, &icon), 0);
    EXPECT_EQ(icon.pixels, nullptr);
    EXPECT_EQ(icon.width, 0U);
    EXPECT_EQ(m_library.getSessionIcon(nullptr, 0, nullptr), 0);
}

TEST_F(LoadedRendererTest, ABlendKeepsTheHeaderAndTheOptionOfItsFirstRecord)
{
    Bytes a = RecordOf(CubeLook(CubeOf(9, Same)));
    const Bytes b = RecordOf(CubeLook(CubeOf(9, Inverted)));
    a[16] = 0;
    const auto size = static_cast<std::uint32_t>(kRecordSize);
    for (const double fraction : {0.0, 0.5, 1.0})
    {
        Bytes blend(kRecordSize, 0xCC);
        m_library.interpolateSessionData(a.data(), size, b.data(), size, fraction, blend.data());
        EXPECT_TRUE(std::equal(a.begin(), a.begin() + 20, blend.begin())) << fraction;
        Bytes pixels{0, 0, 0, 0};
        EXPECT_EQ(Render(pixels, 1, blend), kFrameRendered);
        EXPECT_NEAR(pixels[0], fraction * 255.0, 0.51);
    }
}

TEST_F(LoadedRendererTest, RecordsOfBothVersionsBlend)
{
    const Bytes a = PlainRecordOf(CubeLook(CubeOf(9, Same)));
    const Bytes b = RecordOf(CubeLook(CubeOf(33, Inverted)));
    const auto size = static_cast<std::uint32_t>(kRecordSize);
    for (const double fraction : {0.0, 0.5, 1.0})
    {
        for (const bool plainFirst : {true, false})
        {
            const Bytes& first = plainFirst ? a : b;
            const Bytes& second = plainFirst ? b : a;
            Bytes blend(kRecordSize, 0xCC);
            m_library.interpolateSessionData(first.data(), size, second.data(), size, fraction,
                                             blend.data());
            Bytes pixels{0, 0, 0, 0};
            EXPECT_EQ(Render(pixels, 1, blend), kFrameRendered);
            EXPECT_NEAR(pixels[0], (plainFirst ? fraction : 1.0 - fraction) * 255.0, 0.51);
        }
    }
}

TEST_F(LoadedRendererTest, ABlendRendersAsItsRecordReadElsewhere)
{
    const Bytes a = RecordOf(CubeLook(CubeOf(33, Swirled)));
    const Bytes b = RecordOf(CubeLook(CubeOf(33, Inverted)));
    Bytes blend(kRecordSize);
    m_library.interpolateSessionData(a.data(), kRecordSize, b.data(), kRecordSize, 0.3,
                                     blend.data());
    Bytes pixels(64);
    std::iota(pixels.begin(), pixels.end(), std::uint8_t{50});
    Bytes kept = pixels;
    EXPECT_EQ(Render(kept, 16, blend), kFrameRendered);
    m_library.exitRenderer(); // forgets what was ready
    Bytes decoded = pixels;
    EXPECT_EQ(Render(decoded, 16, blend), kFrameRendered);
    EXPECT_TRUE(kept == decoded);
}

TEST_F(LoadedRendererTest, ABlendMayBeWrittenOverEitherRecord)
{
    const Bytes a = RecordOf(CubeLook(CubeOf(9, Same)));
    const Bytes b = RecordOf(CubeLook(CubeOf(9, Inverted)));
    const auto size = static_cast<std::uint32_t>(kRecordSize);
    for (const double fraction : {0.0, 0.25, 1.0, std::nan("")})
    {
        Bytes expected(kRecordSize);
        m_library.interpolateSessionData(a.data(), size, b.data(), size, fraction, expected.data());
        Bytes overA = a;
        m_library.interpolateSessionData(overA.data(), size, b.data(), size, fraction,
                                         overA.data());
        EXPECT_TRUE(overA == expected) << fraction;
        Bytes overB = b;
        m_library.interpolateSessionData(a.data(), size, overB.data(), size, fraction,
                                         overB.data());
        EXPECT_TRUE(overB == expected) << fraction;
    }
}

TEST_F(LoadedRendererTest, ABlendWithAnUnusableRecordIsTheFirstRecord)
{
    const Bytes a = RecordOf(CubeLook(CubeOf(9, Same)));
    const Bytes junk(50, 0x33);
    Bytes blend(kRecordSize, 0xCC);
    m_library.interpolateSessionData(a.data(), kRecordSize, junk.data(), 50, 0.5, blend.data());
    EXPECT_TRUE(blend == a);
    Bytes small(51, 0xCC);
    m_library.interpolateSessionData(junk.data(), 50, a.data(), kRecordSize, 0.5, small.data());
    EXPECT_TRUE(std::equal(junk.begin(), junk.end(), small.begin()));
    EXPECT_EQ(small[50], 0xCC) << "no more than the size of the first";
    m_library.interpolateSessionData(nullptr, 50, a.data(), kRecordSize, 0.5, small.data());
    m_library.interpolateSessionData(a.data(), kRecordSize, a.data(), kRecordSize, 0.5, nullptr);
}

TEST_F(LoadedRendererTest, AToolChainProducesALook)
{
    EXPECT_EQ(m_library.beginToolChain(), 1);
    EXPECT_EQ(m_library.addToolToChain(kToolOffset), 0);
    EXPECT_EQ(m_library.addToolToChain(99), -1);
    m_library.setToolParameterValue(kToolOffset, kParameterRed, 1.0);
    m_library.setToolParameterValue(kToolSlope, kParameterAll, 0.0); // not in the chain
    m_library.setToolParameterValue(kToolOffset, kParameterRed, std::nan(""));
    Bytes pixels{10, 20, 30, 40};
    EXPECT_EQ(Render(pixels, 1, m_library.Produced()), kFrameRendered);
    EXPECT_EQ(pixels, (Bytes{10, 20, 255, 40}));
    EXPECT_EQ(m_library.beginToolChain(), 1);
    EXPECT_EQ(Render(pixels, 1, m_library.Produced()), kFrameRendered);
    EXPECT_EQ(pixels, (Bytes{10, 20, 255, 40})) << "neutral again";
}

TEST_F(LoadedRendererTest, FeaturesAndMasksAreAcceptedWithoutEffect)
{
    const Bytes record = RecordOf(CubeLook(CubeOf(2, Inverted)));
    Bytes pixels{10, 20, 30, 40};
    m_library.enableFeature(1, 1);
    m_library.setTopLevelMaskParameterValue(1, 0.5);
    EXPECT_EQ(Render(pixels, 1, record), kFrameRendered);
    EXPECT_EQ(pixels, (Bytes{245, 235, 225, 40}));
}

TEST_F(LoadedRendererTest, RenderingGoesOnAfterTheRendererWasStopped)
{
    const Bytes record = RecordOf(CubeLook(CubeOf(2, Inverted)));
    for (int i = 0; i < 3; ++i)
    {
        m_library.exitRenderer();
        m_library.exitRenderer();
        Bytes pixels(std::size_t{512} * 512 * 4, 10);
        EXPECT_EQ(Render(pixels, 512, record), kFrameRendered);
        EXPECT_EQ(pixels[4], 245);
        EXPECT_EQ(m_library.initRenderer(3), 0);
        EXPECT_EQ(Render(pixels, 512, record), kFrameRendered);
        EXPECT_EQ(pixels[4], 10);
    }
}

TEST(LoadedRendererLife, LoadingAndUnloadingManyTimesLeavesNothingBehind)
{
    const Bytes record = RecordOf(CubeLook(CubeOf(2, Inverted)));
    DWORD handles = 0;
    for (int i = 0; i < 60; ++i)
    {
        const LoadedRenderer library;
        Bytes pixels(std::size_t{256} * 256 * 4, 10);
        FrameBufferDesc frame = Describe(pixels.data(), 256, 256);
        ASSERT_EQ(library.renderFrame(&frame, &frame, record.data(), kRecordSize, kFlags, 0), 0);
        FrameBufferDesc icon{};
        ASSERT_EQ(library.getSessionIcon(record.data(), kRecordSize, &icon), 1);
        if (i == 10)
        {
            ::GetProcessHandleCount(::GetCurrentProcess(), &handles);
        }
    }
    EXPECT_EQ(::GetModuleHandleA(kLibraryName), nullptr);
    DWORD after = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &after);
    EXPECT_LT(after, handles + 20) << "threads of pools end a little later";
}

TEST(LoadedRendererLife, UnloadingWithoutStoppingIsSafe)
{
    const Bytes record = RecordOf(CubeLook(CubeOf(2, Inverted)));
    for (int i = 0; i < 20; ++i)
    {
        const HMODULE module = ::LoadLibraryA(kLibraryName);
        const auto init =
            std::bit_cast<InitRendererFunction*>(::GetProcAddress(module, "InitRenderer"));
        const auto render =
            std::bit_cast<RenderFrameFunction*>(::GetProcAddress(module, "RenderFrame"));
        ASSERT_EQ(init(kStartMode), 0);
        Bytes pixels(std::size_t{512} * 512 * 4, 10);
        FrameBufferDesc frame = Describe(pixels.data(), 512, 512);
        ASSERT_EQ(render(&frame, &frame, record.data(), kRecordSize, kFlags, 0), kFrameRendered);
        ::FreeLibrary(module);
        ASSERT_EQ(::GetModuleHandleA(kLibraryName), nullptr);
    }
}

} // namespace ReferenceRenderer
