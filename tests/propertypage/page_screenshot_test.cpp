// A picture of the page over the reference renderer, for the documentation and for whoever changes
// how it looks.
#include "binding/renderer_binding.h"
#include "propertypage/plugin_pp.h"
#include "tests/doubles/fake_exchange.h"
#include "tests/propertypage/page_fixture.h"
#include "tools/glazelhost/media/open_frames.h"

#include <cstring>
#include <filesystem>
#include <set>

using namespace GlazelHost;

namespace
{

constexpr char kFolder[] = "../screenshots"; // beside bin/, where the test runs
constexpr char kLook[] = GLAZEL_SOURCE_DIR "/samples/looks/warm_print.cube";

std::vector<std::uint8_t> ImportedRecord(const char* path)
{
    const RendererAPI::RendererBinding& renderer = RendererAPI::Binding();
    EXPECT_EQ(renderer.LoadSessionFile(path, RendererAPI::kImportRecord), RendererAPI::kImportDone);
    std::vector<std::uint8_t> bytes(renderer.GetSessionDataSize());
    EXPECT_EQ(renderer.GetSessionData(bytes.data(), static_cast<std::uint32_t>(bytes.size())), 1);
    return bytes;
}

void Write(const Picture& picture, const std::string& name)
{
    Image image;
    image.width = picture.size.width;
    image.height = picture.size.height;
    image.pixels.resize(image.RowBytes() * static_cast<std::size_t>(image.height));
    for (std::size_t i = 0; i < picture.pixels.size(); ++i)
    {
        const std::uint32_t opaque = picture.pixels[i] | 0xFF000000;
        std::memcpy(image.pixels.data() + i * sizeof opaque, &opaque, sizeof opaque);
    }
    std::filesystem::create_directories(kFolder);
    SinkOptions options;
    options.path = std::string(kFolder) + "/" + name;
    options.overwrite = true;
    const auto sink = OpenSink(options, {});
    sink->Write(image);
    sink->Finish();
}

} // namespace

TEST(PageScreenshot, ShowsTheThumbnailOfALook)
{
    ASSERT_NE(::LoadLibraryW((BinFolder() + L"\\GZ3Renderer_x64.dll").c_str()), nullptr);
    ASSERT_EQ(RendererAPI::Binding().Start(RendererAPI::kStartMode), 0);
    FakeExchange effect;
    effect.bytes = ImportedRecord(kLook);
    CComObject<CPluginPP>* object = nullptr;
    ASSERT_EQ(CComObject<CPluginPP>::CreateInstance(&object), S_OK);
    const CComPtr<CPluginPP> page = object;
    const PageFrame host({360, 110});
    IUnknown* effects[] = {&effect};
    ASSERT_EQ(page->SetObjects(1, effects), S_OK);
    const RECT rect = host.PageRect();
    ASSERT_EQ(page->Activate(host.Window(), &rect, FALSE), S_OK);
    ASSERT_EQ(page->Show(SW_SHOWNA), S_OK);
    ::UpdateWindow(host.PageWindow());

    const Picture screen = ScreenOf(host.PageWindow());
    Write(screen, "page.png");
    EXPECT_TRUE(std::filesystem::exists(std::string(kFolder) + "/page.png"));
    const std::set<std::uint32_t> colours(screen.pixels.begin(), screen.pixels.end());
    EXPECT_GT(colours.size(), 200U) << "the thumbnail is a picture";
    EXPECT_EQ(page->Deactivate(), S_OK);
}
