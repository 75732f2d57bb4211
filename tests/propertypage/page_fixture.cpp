#include "tests/propertypage/page_fixture.h"

#include "binding/renderer_binding.h"

#include <stdexcept>

std::vector<std::uint8_t> PageRecord(std::uint8_t fill, std::uint32_t flag, std::size_t size)
{
    std::vector<std::uint8_t> bytes{'h', 'e', 'a', 'd', 'e', 'r', '0', '1',
                                    'f', 'l', 'a', 'g', 0,   0,   0,   4};
    for (int shift = 0; shift < 32; shift += 8)
    {
        bytes.push_back(static_cast<std::uint8_t>(flag >> shift));
    }
    bytes.resize(size, fill);
    return bytes;
}

PageTest::PageTest(const std::wstring& renderer) : recording(UseRenderer(renderer))
{
    recording.Reset();
    if (RendererAPI::Binding().Start(RendererAPI::kStartMode) != 0)
    {
        throw std::runtime_error("the renderer does not start");
    }
    CComObject<CPluginPP>* object = nullptr;
    if (FAILED(CComObject<CPluginPP>::CreateInstance(&object)))
    {
        throw std::runtime_error("the page was not created");
    }
    page = object;
    exchange.bytes = PageRecord(7);
}

PageTest::~PageTest()
{
    Close();
    page.Release();
    HandleMessages();
    EXPECT_EQ(exchange.references, 0U) << "the page keeps its effect";
    EXPECT_TRUE(boxes.boxes.empty()) << boxes.boxes[0].text;
}

std::string PageTest::TakeBox()
{
    if (boxes.boxes.size() != 1)
    {
        throw std::runtime_error(std::to_string(boxes.boxes.size()) + " message boxes");
    }
    const MessageBoxWatch::Box box = boxes.boxes[0];
    boxes.boxes.clear();
    EXPECT_FALSE(box.hasOwner);
    EXPECT_TRUE(box.isPlain);
    EXPECT_EQ(box.caption, "Error") << "the system's own caption";
    return box.text;
}

void PageTest::SetObject(IUnknown* object)
{
    if (FAILED(page->SetObjects(1, &object)))
    {
        throw std::runtime_error("the page takes no object");
    }
}

void PageTest::Open(Geometry::Extent size)
{
    SetObject(&exchange);
    if (frame == nullptr)
    {
        frame = std::make_unique<PageFrame>(size);
    }
    const RECT rect = frame->PageRect();
    if (FAILED(page->Activate(frame->Window(), &rect, FALSE)) || FAILED(page->Show(SW_SHOWNA)))
    {
        throw std::runtime_error("the page does not open");
    }
    ::SetForegroundWindow(frame->Window());
    HandleMessages();
    ::UpdateWindow(PageWindow());
}

void PageTest::Close()
{
    if (page != nullptr)
    {
        page->Deactivate();
    }
}

void PageTest::Repaint() const
{
    ::RedrawWindow(PageWindow(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
}

void PageTest::Click(Geometry::Point point) const
{
    const HWND window = PageWindow();
    MovePointer(window, point);
    ::SendMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, 0);
    ::SendMessageW(window, WM_LBUTTONUP, 0, 0);
}

bool PageTest::TakeErase() const
{
    PAINTSTRUCT paint{};
    ::BeginPaint(PageWindow(), &paint);
    ::EndPaint(PageWindow(), &paint);
    return paint.fErase != FALSE; // the page itself erases nothing
}

void PageTest::Show(Thumbnail& thumbnail)
{
    recording.iconPixels = thumbnail.pixels.data();
    recording.iconWidth = static_cast<std::uint32_t>(thumbnail.size.width);
    recording.iconHeight = static_cast<std::uint32_t>(thumbnail.size.height);
}

std::size_t PageTest::CallsOf(Call call) const
{
    std::size_t count = 0;
    for (std::size_t i = 0; i < recording.count; ++i)
    {
        count += recording.calls[i].call == call ? 1U : 0U;
    }
    return count;
}

RecordedCall PageTest::LastOf(Call call) const
{
    for (std::size_t i = recording.count; i > 0; --i)
    {
        if (recording.calls[i - 1].call == call)
        {
            return recording.calls[i - 1];
        }
    }
    throw std::runtime_error("the renderer was not called");
}
