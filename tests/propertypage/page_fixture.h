// A page in a window of its own, over the recording renderer and an effect that a test steers.
#pragma once

#include "propertypage/plugin_pp.h"
#include "tests/doubles/fake_exchange.h"
#include "tests/doubles/renderers/renderer_variant.h"
#include "tests/module/message_box_watch.h"
#include "tests/propertypage/page_frame.h"
#include "tests/propertypage/panel_picture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// A record's bytes: a header, the option chunk with `flag`, then `fill` up to `size` bytes.
std::vector<std::uint8_t> PageRecord(std::uint8_t fill, std::uint32_t flag = 1,
                                     std::size_t size = 64);

class PageTest : public testing::Test
{
protected:
    // `renderer`: see UseRenderer. It is started, as an effect would have done.
    explicit PageTest(const std::wstring& renderer = L"complete");
    ~PageTest() override;

    void SetObject(IUnknown* object);
    // Opens the page on the effect, in a frame of that size that stays when the page is closed, and
    // lets it paint.
    void Open(Geometry::Extent size = {300, 120});
    void Close();
    HWND PageWindow() const { return frame->PageWindow(); }
    // Paints all of it anew.
    void Repaint() const;
    // Moves the pointer there, presses and releases the button. On "Edit..." it comes back when the
    // editor is closed.
    void Click(Geometry::Point point) const;
    // Whether the page is to be painted with its ground erased first; ends that.
    bool TakeErase() const;
    // Lets the recording renderer hand out this thumbnail, which must live on.
    void Show(Thumbnail& thumbnail);
    std::size_t CallsOf(Call call) const;
    RecordedCall LastOf(Call call) const; // throws std::runtime_error when there is none

    // The text of the one message box that was shown since the last call; throws
    // std::runtime_error when there was none or several. None may be left at the end of a test.
    std::string TakeBox();

    Recording& recording;
    MessageBoxWatch boxes;
    FakeExchange exchange;
    std::unique_ptr<PageFrame> frame;
    CComPtr<CPluginPP> page; // created on its own, not aggregated
};
