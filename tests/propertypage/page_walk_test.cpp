// The whole way of a user: from a frame on the screen through the page and the editor to the next
// frame, with the product and the reference renderer as they are built.
#include "contract/class_ids.h"
#include "reference_renderer/core/look_record.h"
#include "support/win32/com_scope.h"
#include "tests/propertypage/page_frame.h"
#include "tests/reference_renderer/core/look_fixtures.h"
#include "tests/reference_renderer/dll/loaded_renderer.h"
#include "tests/reference_renderer/editor/open_editor.h"
#include "tools/glazelhost/plugin/effect_controls.h"
#include "tools/glazelhost/plugin/effect_session.h"

#include <gtest/gtest.h>

#include <ocidl.h>

#include <atomic>
#include <memory>

using namespace GlazelHost;
using namespace ReferenceRenderer;

namespace
{

constexpr int kSteps = 20; // of a hundredth each

// Lives on the test's stack; its reference count is only checked.
template <typename Interface>
class StackObject : public Interface
{
public:
    explicit StackObject(REFIID iid) : m_iid(iid) {}
    ~StackObject() { EXPECT_EQ(references, 0U); }
    StackObject(const StackObject&) = delete;
    StackObject& operator=(const StackObject&) = delete;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override
    {
        const bool known = iid == m_iid || iid == IID_IUnknown;
        *object = known ? this : nullptr;
        references += known ? 1U : 0U;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ULONG references = 0;

private:
    IID m_iid;
};

// The host's ear: it would render again.
class Listener : public StackObject<ISfChangeSink>
{
public:
    Listener() : StackObject(IID_IUnknown) {}
    HRESULT STDMETHODCALLTYPE OnPropsChanged() override
    {
        ++changes;
        return S_OK;
    }

    int changes = 0;
};

class Site : public StackObject<IPropertyPageSite>
{
public:
    Site() : StackObject(IID_IPropertyPageSite) {}
    HRESULT STDMETHODCALLTYPE OnStatusChange(DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetLocaleID(LCID* locale) override
    {
        *locale = LOCALE_USER_DEFAULT;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetPageContainer(IUnknown** container) override
    {
        *container = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG*) override { return S_FALSE; }
};

// The effect's page in a container, from its creation to its last reference.
class ContainedPage
{
public:
    ContainedPage(const PluginModule& module, IUnknown& effect)
    {
        CComPtr<IClassFactory> factory;
        EXPECT_EQ(module.GetClassObject(CLSID_PluginPP, factory), S_OK);
        EXPECT_EQ(
            factory->CreateInstance(nullptr, IID_IPropertyPage, reinterpret_cast<void**>(&m_page)),
            S_OK);
        EXPECT_EQ(m_page->SetPageSite(&m_site), S_OK);
        IUnknown* objects[] = {&effect};
        EXPECT_EQ(m_page->SetObjects(1, objects), S_OK);
        const RECT place = m_frame.PageRect();
        EXPECT_EQ(m_page->Activate(m_frame.Window(), &place, FALSE), S_OK);
        EXPECT_EQ(m_page->Show(SW_SHOW), S_OK);
        ::SetForegroundWindow(m_frame.Window());
        HandleMessages();
    }
    ~ContainedPage()
    {
        IUnknown* none = nullptr;
        EXPECT_EQ(m_page->Deactivate(), S_OK);
        EXPECT_EQ(m_page->SetObjects(0, &none), S_OK);
        EXPECT_EQ(m_page->SetPageSite(nullptr), S_OK);
    }
    ContainedPage(const ContainedPage&) = delete;
    ContainedPage& operator=(const ContainedPage&) = delete;

    IPropertyPage& Page() const { return *m_page.p; }
    HWND Window() const { return m_frame.PageWindow(); }
    Picture Shown() const
    {
        HandleMessages(); // notices of changes among them
        ::UpdateWindow(Window());
        return ScreenOf(Window());
    }

private:
    Site m_site;
    PageFrame m_frame{{360, 110}};
    CComPtr<IPropertyPage> m_page;
};

// Somebody who waits for the editor of this thread, works in it and closes it, while this thread is
// inside of it.
class EditorUser
{
public:
    using Work = std::function<void(const ShownEditor&)>;
    EditorUser(Work work, int closeWith)
        : m_work(std::move(work)), m_closeWith(closeWith), m_editorThread(::GetCurrentThreadId()),
          m_thread(::CreateThread(nullptr, 0, Run, this, 0, nullptr))
    {
        EXPECT_NE(m_thread, nullptr);
    }
    ~EditorUser()
    {
        ::WaitForSingleObject(m_thread, INFINITE); // has deadlines of its own
        ::CloseHandle(m_thread);
    }
    EditorUser(const EditorUser&) = delete;
    EditorUser& operator=(const EditorUser&) = delete;

    // True from just before the editor is closed on.
    bool HasWorked() const { return m_hasWorked; }

private:
    static DWORD WINAPI Run(void* self) noexcept
    {
        auto* const user = static_cast<EditorUser*>(self);
        const ShownEditor editor(user->m_editorThread);
        if (editor.Window() != nullptr)
        {
            user->m_work(editor);
            user->m_hasWorked = true;
            editor.Click(user->m_closeWith);
        }
        return 0;
    }

    Work m_work;
    int m_closeWith;
    DWORD m_editorThread;
    std::atomic<bool> m_hasWorked = false;
    HANDLE m_thread; // last: it uses all others
};

// Lets other threads have something done by the one that made this, whatever modal loop that is in.
class HostThread
{
public:
    HostThread()
        : m_window(::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                     nullptr, nullptr))
    {
        ::SetWindowLongPtrW(m_window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(Procedure));
    }
    ~HostThread() { ::DestroyWindow(m_window); }
    HostThread(const HostThread&) = delete;
    HostThread& operator=(const HostThread&) = delete;

    // Returns when it is done.
    void Do(const std::function<void()>& what) const
    {
        ::SendMessageW(m_window, kDo, 0, reinterpret_cast<LPARAM>(&what));
    }

private:
    static constexpr UINT kDo = WM_APP;

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
    {
        if (message != kDo)
        {
            return ::DefWindowProcW(window, message, wParam, lParam);
        }
        (*reinterpret_cast<const std::function<void()>*>(lParam))();
        return 0;
    }

    HWND m_window;
};

class PageWalk : public testing::Test
{
protected:
    PageWalk()
    {
        Cdl cdl;
        cdl.slope = {0.9F, 1.0F, 1.1F};
        cdl.saturation = 0.8F;
        const std::vector<std::uint8_t> record = RecordOf(CdlLook(cdl));
        EffectControls(m_effect->Effect(), {}).LoadLook(std::as_bytes(std::span(record)));
        EXPECT_EQ(m_effect->Effect().QueryInterface(IID_IDXTSfAutomation,
                                                    reinterpret_cast<void**>(&m_automation)),
                  S_OK);
        EXPECT_EQ(m_automation->SetChangeSink(&m_listener), S_OK);
        for (std::size_t i = 0; i < m_input.pixels.size(); ++i)
        {
            m_input.pixels[i] = static_cast<std::byte>(i % 4 == 3 ? 255 - i % 7 : i * 37 % 251);
        }
    }
    ~PageWalk() override { EXPECT_EQ(m_automation->SetChangeSink(nullptr), S_OK); }

    // What the effect makes of the picture.
    std::vector<std::byte> Frame()
    {
        Image output;
        m_effect->Render(m_input, output, {});
        return {output.pixels.begin(), output.pixels.end()};
    }
    std::vector<std::byte> Record() { return EffectControls(m_effect->Effect(), {}).StoredLook(); }

    // What the renderer itself makes of the picture with a look.
    std::vector<std::byte> FrameOfRenderer(const std::vector<std::byte>& record)
    {
        std::vector<std::byte> pixels(m_input.pixels.size());
        FrameBufferDesc source{};
        source.format = kFormatBgra8;
        source.pixels = m_input.pixels.data();
        source.width = source.rowPitch = static_cast<std::uint32_t>(m_input.width);
        source.height = static_cast<std::uint32_t>(m_input.height);
        FrameBufferDesc target = source;
        target.pixels = pixels.data();
        EXPECT_EQ(m_renderer.renderFrame(&source, &target, record.data(),
                                         static_cast<std::uint32_t>(record.size()),
                                         RendererAPI::kRenderFrame, 0),
                  RendererAPI::kFrameRendered);
        return pixels;
    }

    // Presses "Edit..." with the mouse and comes back when the editor is closed again.
    static void Edit(const ContainedPage& page, EditorUser::Work work, int closeWith)
    {
        MovePointer(page.Window(), kOnEdit);
        PushButton();
        ASSERT_TRUE(HandleMessagesUntil([&] { return ::GetCapture() == page.Window(); }));
        const EditorUser user(std::move(work), closeWith);
        LiftButton();
        ASSERT_TRUE(HandleMessagesUntil([&] { return user.HasWorked(); }));
    }

    // Moves red's slope up; the editor's picture before and after.
    struct Slide
    {
        Picture before;
        Picture after;
        std::string number;

        void operator()(const ShownEditor& editor)
        {
            before = ScreenOf(editor.Child(IDC_PICTURE));
            for (int i = 0; i < kSteps; ++i)
            {
                editor.SlideKey(Control::SlopeRed, VK_RIGHT);
            }
            after = ScreenOf(editor.Child(IDC_PICTURE));
            number = editor.NumberText(Control::SlopeRed);
        }
    };

    ComScope m_com{true};
    LoadedRenderer m_renderer;
    PluginModule m_module{""}; // the one beside this program
    std::unique_ptr<EffectSession> m_effect = std::make_unique<EffectSession>(m_module);
    CComPtr<IDXTSfAutomation> m_automation;
    Listener m_listener;
    Image m_input{64, 36, SampleType::Byte, true, {std::size_t{64} * 36 * 4, std::byte{}}};
};

} // namespace

TEST_F(PageWalk, ALookThatIsEditedIsSeenInTheNextFrameAndOneThatIsCancelledIsNot)
{
    const std::vector<std::byte> firstRecord = Record();
    const std::vector<std::byte> firstFrame = Frame();
    EXPECT_EQ(firstFrame, FrameOfRenderer(firstRecord));
    Picture pageAfter;
    {
        const ContainedPage page(m_module, m_effect->Effect());
        const Picture pageBefore = page.Shown();
        Slide slide;
        Edit(page, std::ref(slide), IDOK);
        EXPECT_EQ(slide.number, "1.100");
        EXPECT_NE(FirstDifference(slide.after, slide.before), "") << "the editor shows the change";
        pageAfter = page.Shown();
        EXPECT_NE(FirstDifference(pageAfter, pageBefore), "") << "the thumbnail is the new look's";
    }
    EXPECT_EQ(m_listener.changes, 1) << "the host is told to render again";
    const std::vector<std::byte> secondRecord = Record();
    StoredLook look;
    ASSERT_EQ(ReadRecord(
                  {reinterpret_cast<const std::uint8_t*>(secondRecord.data()), secondRecord.size()},
                  look),
              RecordState::Usable);
    EXPECT_EQ(look.cdl.slope, (std::array{1.1F, 1.0F, 1.1F}));
    EXPECT_EQ(look.cdl.saturation, 0.8F);
    const std::vector<std::byte> secondFrame = Frame();
    EXPECT_NE(secondFrame, firstFrame);
    EXPECT_EQ(secondFrame, FrameOfRenderer(secondRecord));

    {
        const ContainedPage page(m_module, m_effect->Effect());
        EXPECT_EQ(FirstDifference(page.Shown(), pageAfter), "") << "opened anew, it looks the same";
        Slide slide;
        Edit(page, std::ref(slide), IDCANCEL);
        EXPECT_EQ(slide.number, "1.300") << "the editor opened on the new look";
        EXPECT_NE(FirstDifference(slide.after, slide.before), "");
        EXPECT_EQ(FirstDifference(page.Shown(), pageAfter), "");
    }
    EXPECT_EQ(m_listener.changes, 1);
    EXPECT_EQ(Record(), secondRecord);
    EXPECT_EQ(Frame(), secondFrame);
}

TEST_F(PageWalk, APageThatIsClosedUnderItsEditorStillAppliesTheLook)
{
    const std::vector<std::byte> firstFrame = Frame();
    const HostThread host;
    const ContainedPage page(m_module, m_effect->Effect());
    Slide slide;
    Edit(
        page,
        [&](const ShownEditor& editor) {
            slide(editor);
            host.Do([&] { EXPECT_EQ(page.Page().Deactivate(), S_OK); });
        },
        IDOK);
    EXPECT_EQ(page.Window(), nullptr);
    EXPECT_EQ(m_listener.changes, 1);
    EXPECT_NE(Frame(), firstFrame);
    EXPECT_EQ(Frame(), FrameOfRenderer(Record()));
}

TEST_F(PageWalk, APageThatIsLetGoUnderItsEditorLeavesTheLookAsItWas)
{
    const std::vector<std::byte> firstRecord = Record();
    const std::vector<std::byte> firstFrame = Frame();
    const HostThread host;
    auto page = std::make_unique<ContainedPage>(m_module, m_effect->Effect());
    Slide slide;
    Edit(
        *page,
        [&](const ShownEditor& editor) {
            slide(editor);
            host.Do([&] { page.reset(); });
        },
        IDOK);
    EXPECT_EQ(slide.number, "1.100");
    EXPECT_EQ(m_listener.changes, 0) << "there is no effect to apply it to";
    EXPECT_EQ(Record(), firstRecord);
    EXPECT_EQ(Frame(), firstFrame);
}
