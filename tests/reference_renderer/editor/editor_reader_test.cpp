// What a screen reader gets of the editor.
#include "tests/reference_renderer/editor/editor_fixture.h"

#include "support/win32/com_scope.h"
#include "support/win32/utf8.h"
#include "tests/reference_renderer/core/look_fixtures.h"

#include <memory>
#include <set>
#include <string>

#include <oleacc.h>

namespace ReferenceRenderer
{

namespace
{

struct Read
{
    std::string name;
    std::string value;
    LONG role = 0;
};

struct Releaser
{
    void operator()(IAccessible* object) const noexcept { object->Release(); }
};

class EditorReader : public EditorTest
{
protected:
    using Object = std::unique_ptr<IAccessible, Releaser>;

    static Object ObjectOf(HWND window)
    {
        IAccessible* object = nullptr;
        EXPECT_EQ(::AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT),
                                               __uuidof(IAccessible),
                                               reinterpret_cast<void**>(&object)),
                  S_OK);
        return Object(object);
    }
    static Read ReadWindow(HWND window) { return ReadObject(ObjectOf(window).get()); }
    static Read ReadObject(IAccessible* object)
    {
        Read read;
        if (object == nullptr)
        {
            return read;
        }
        VARIANT self{};
        self.vt = VT_I4;
        self.lVal = CHILDID_SELF;
        read.name = TextOf([&](BSTR* text) { return object->get_accName(self, text); });
        read.value = TextOf([&](BSTR* text) { return object->get_accValue(self, text); });
        VARIANT role{};
        if (SUCCEEDED(object->get_accRole(self, &role)) && role.vt == VT_I4)
        {
            read.role = role.lVal;
        }
        return read;
    }

    ComScope m_com{true};

private:
    template <typename Get>
    static std::string TextOf(Get&& get)
    {
        BSTR text = nullptr;
        std::string read = get(&text) == S_OK && text != nullptr ? Utf8(text) : "";
        ::SysFreeString(text);
        return read;
    }
};

TEST_F(EditorReader, ASliderHasItsNameItsValueAndItsRole)
{
    OpenEditor editor = Open();
    editor.Type(Control::PowerGreen, L"1.25");
    const Read read = ReadWindow(editor.Slider(Control::PowerGreen));
    EXPECT_EQ(read.name, "Power, green");
    EXPECT_EQ(read.value, "1.250");
    EXPECT_EQ(read.role, ROLE_SYSTEM_SLIDER);
}

TEST_F(EditorReader, AnObjectThatIsKeptTellsTheValueOfNow)
{
    OpenEditor editor = Open();
    const Object object = ObjectOf(editor.Slider(Control::SlopeRed));
    EXPECT_EQ(ReadObject(object.get()).value, "1.000");
    editor.Type(Control::SlopeRed, L"1.5");
    EXPECT_EQ(ReadObject(object.get()).value, "1.500");
    EXPECT_EQ(editor.CloseWith(IDCANCEL), 0);
    EXPECT_EQ(ReadObject(object.get()).value, "") << "of a window that is gone";
}

TEST_F(EditorReader, ANumberHasTheNameOfItsSliderAndItsText)
{
    OpenEditor editor = Open();
    const Read read = ReadWindow(editor.Number(Control::OffsetBlue));
    EXPECT_EQ(read.name, "Offset, blue");
    EXPECT_EQ(read.value, "0.000");
    EXPECT_EQ(read.role, ROLE_SYSTEM_TEXT);
    editor.Type(Control::OffsetBlue, L"0.5");
    EXPECT_EQ(editor.NumberText(Control::OffsetBlue), "0.5") << "it is the edit control still";
}

TEST_F(EditorReader, AWheelSaysWhereItStands)
{
    OpenEditor editor = Open();
    EXPECT_EQ(ReadWindow(editor.Pad(4)).value, "0 right, 0 up");
    ::SendMessageW(editor.Pad(4), WM_KEYDOWN, VK_RIGHT, 0);
    const Read read = ReadWindow(editor.Pad(4));
    EXPECT_EQ(read.name, "Slope, colour");
    EXPECT_EQ(read.value.substr(0, 11), "0.05 right,");
    EXPECT_EQ(read.role, ROLE_SYSTEM_SLIDER);
}

// What is told to readers of a window's value, while this lives; comes to this thread's messages.
class ValueEvents
{
public:
    explicit ValueEvents(const ShownEditor& editor)
        : m_hook(::SetWinEventHook(EVENT_OBJECT_VALUECHANGE, EVENT_OBJECT_VALUECHANGE, nullptr,
                                   Hear, 0, editor.Thread(), WINEVENT_OUTOFCONTEXT))
    {
        told = nullptr;
    }
    ~ValueEvents() { ::UnhookWinEvent(m_hook); }
    ValueEvents(const ValueEvents&) = delete;
    ValueEvents& operator=(const ValueEvents&) = delete;

    static bool Come(HWND window)
    {
        return Eventually([&] {
            MSG message{};
            while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
            {
                ::DispatchMessageW(&message);
            }
            return told == window;
        });
    }

private:
    static void CALLBACK Hear(HWINEVENTHOOK, DWORD, HWND window, LONG, LONG, DWORD, DWORD) noexcept
    {
        told = window;
    }

    static inline HWND told = nullptr;
    HWINEVENTHOOK m_hook;
};

TEST_F(EditorReader, AReaderIsToldOfANewValue)
{
    OpenEditor editor = Open();
    const ValueEvents events(editor);
    editor.SlideKey(Control::SlopeRed, VK_RIGHT);
    EXPECT_TRUE(ValueEvents::Come(editor.Pad(4))) << "which shows the same numbers";
    editor.SlideKey(Control::Saturation, VK_RIGHT);
    EXPECT_TRUE(ValueEvents::Come(editor.Slider(Control::Saturation)));
}

// Everything that the Tab key can reach has a name, and no two have the same name and role.
TEST_F(EditorReader, WhatTheKeyboardReachesHasANameOfItsOwn)
{
    OpenEditor editor = Open(RecordOf(CubeLook(CubeOf(2, Inverted))));
    for (const View view : {View::Light, View::Wheels, View::Cdl})
    {
        editor.ShowView(view);
        std::set<std::pair<std::string, LONG>> known;
        for (HWND child = ::GetWindow(editor.Window(), GW_CHILD); child != nullptr;
             child = ::GetWindow(child, GW_HWNDNEXT))
        {
            if (::IsWindowVisible(child) &&
                (::GetWindowLongPtrW(child, GWL_STYLE) & WS_TABSTOP) != 0)
            {
                const Read read = ReadWindow(child);
                EXPECT_NE(read.name, "") << "control " << ::GetDlgCtrlID(child);
                EXPECT_TRUE(known.insert({read.name, read.role}).second) << read.name;
            }
        }
        EXPECT_GT(known.size(), 20U);
    }
}

} // namespace

} // namespace ReferenceRenderer
