#include "reference_renderer/editor/accessible_control.h"

#include <array>
#include <atomic>
#include <new>
#include <string_view>
#include <utility>

#include <oleacc.h>

namespace ReferenceRenderer
{

namespace
{

BSTR TextFor(std::wstring_view text) noexcept
{
    return ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
}

bool IsSelf(const VARIANT& child) noexcept
{
    return child.vt == VT_I4 && child.lVal == CHILDID_SELF;
}

// Lives as long as a reader holds it, which may be longer than the window: the system's object
// knows that.
class AccessibleControl final : public IAccessible
{
public:
    AccessibleControl(HWND window, IAccessible* system, AccessibleFacts&& facts) noexcept
        : m_window(window), m_system(system), m_facts(std::move(facts))
    {
        m_system->AddRef();
    }
    AccessibleControl(const AccessibleControl&) = delete;
    AccessibleControl& operator=(const AccessibleControl&) = delete;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) noexcept override
    {
        if (object == nullptr)
        {
            return E_POINTER;
        }
        const bool known = id == IID_IUnknown || id == IID_IDispatch || id == __uuidof(IAccessible);
        *object = known ? this : nullptr;
        if (known)
        {
            AddRef();
        }
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override
    {
        const ULONG left = --m_references;
        if (left == 0)
        {
            delete this;
        }
        return left;
    }

    // IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) noexcept override
    {
        return m_system->GetTypeInfoCount(count);
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale,
                                          ITypeInfo** info) noexcept override
    {
        return m_system->GetTypeInfo(index, locale, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID id, LPOLESTR* names, UINT count, LCID locale,
                                            DISPID* found) noexcept override
    {
        return m_system->GetIDsOfNames(id, names, count, locale, found);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID id, LCID locale, WORD flags,
                                     DISPPARAMS* given, VARIANT* result, EXCEPINFO* thrown,
                                     UINT* wrong) noexcept override
    {
        return m_system->Invoke(member, id, locale, flags, given, result, thrown, wrong);
    }

    // IAccessible
    HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** parent) noexcept override
    {
        return m_system->get_accParent(parent);
    }
    HRESULT STDMETHODCALLTYPE get_accChildCount(LONG* count) noexcept override
    {
        return m_system->get_accChildCount(count);
    }
    HRESULT STDMETHODCALLTYPE get_accChild(VARIANT child, IDispatch** object) noexcept override
    {
        return m_system->get_accChild(child, object);
    }
    HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* name) noexcept override
    {
        return IsSelf(child) ? Give(m_facts.name, name) : m_system->get_accName(child, name);
    }
    HRESULT STDMETHODCALLTYPE get_accValue(VARIANT child, BSTR* value) noexcept override
    {
        return IsSelf(child) && m_facts.textIsValue ? GiveText(value)
                                                    : m_system->get_accValue(child, value);
    }
    HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT child, BSTR* text) noexcept override
    {
        return m_system->get_accDescription(child, text);
    }
    HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT* role) noexcept override
    {
        if (!IsSelf(child) || !m_facts.role || role == nullptr)
        {
            return m_system->get_accRole(child, role);
        }
        role->vt = VT_I4;
        role->lVal = *m_facts.role;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT* state) noexcept override
    {
        return m_system->get_accState(child, state);
    }
    HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT child, BSTR* help) noexcept override
    {
        return m_system->get_accHelp(child, help);
    }
    HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* file, VARIANT child,
                                               LONG* topic) noexcept override
    {
        return m_system->get_accHelpTopic(file, child, topic);
    }
    HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT child, BSTR* key) noexcept override
    {
        return m_system->get_accKeyboardShortcut(child, key);
    }
    HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* child) noexcept override
    {
        return m_system->get_accFocus(child);
    }
    HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* children) noexcept override
    {
        return m_system->get_accSelection(children);
    }
    HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT child, BSTR* action) noexcept override
    {
        return m_system->get_accDefaultAction(child, action);
    }
    HRESULT STDMETHODCALLTYPE accSelect(LONG flags, VARIANT child) noexcept override
    {
        return m_system->accSelect(flags, child);
    }
    HRESULT STDMETHODCALLTYPE accLocation(LONG* left, LONG* top, LONG* width, LONG* height,
                                          VARIANT child) noexcept override
    {
        return m_system->accLocation(left, top, width, height, child);
    }
    HRESULT STDMETHODCALLTYPE accNavigate(LONG way, VARIANT start, VARIANT* end) noexcept override
    {
        return m_system->accNavigate(way, start, end);
    }
    HRESULT STDMETHODCALLTYPE accHitTest(LONG left, LONG top, VARIANT* child) noexcept override
    {
        return m_system->accHitTest(left, top, child);
    }
    HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT child) noexcept override
    {
        return m_system->accDoDefaultAction(child);
    }
    HRESULT STDMETHODCALLTYPE put_accName(VARIANT child, BSTR name) noexcept override
    {
        return m_system->put_accName(child, name);
    }
    HRESULT STDMETHODCALLTYPE put_accValue(VARIANT child, BSTR value) noexcept override
    {
        return m_system->put_accValue(child, value);
    }

private:
    ~AccessibleControl() { m_system->Release(); }

    static HRESULT Give(std::wstring_view text, BSTR* given) noexcept
    {
        if (given == nullptr)
        {
            return E_INVALIDARG;
        }
        *given = TextFor(text);
        return *given != nullptr ? S_OK : E_OUTOFMEMORY;
    }

    // Nothing of a window that is gone. Values are short.
    HRESULT GiveText(BSTR* given) const noexcept
    {
        std::array<wchar_t, 128> text{};
        const int length = ::GetWindowTextW(m_window, text.data(), static_cast<int>(text.size()));
        return Give({text.data(), static_cast<std::size_t>(length)}, given);
    }

    const HWND m_window;
    IAccessible* const m_system; // owned
    const AccessibleFacts m_facts;
    std::atomic<ULONG> m_references = 1;
};

} // namespace

std::optional<LRESULT> AnswerAccessible(HWND window, WPARAM wParam, LPARAM lParam,
                                        AccessibleFacts facts)
{
    if (static_cast<LONG>(lParam) != OBJID_CLIENT)
    {
        return {};
    }
    IAccessible* system = nullptr;
    if (FAILED(::CreateStdAccessibleObject(window, OBJID_CLIENT, __uuidof(IAccessible),
                                           reinterpret_cast<void**>(&system))))
    {
        return {};
    }
    auto* const object = new (std::nothrow) AccessibleControl(window, system, std::move(facts));
    system->Release();
    if (object == nullptr)
    {
        return {};
    }
    const LRESULT answer = ::LresultFromObject(__uuidof(IAccessible), wParam, object);
    object->Release();
    return answer > 0 ? std::optional(answer) : std::nullopt; // a thread without COM has none
}

} // namespace ReferenceRenderer
