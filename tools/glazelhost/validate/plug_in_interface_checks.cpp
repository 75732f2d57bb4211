// The documented results of the effect's and the page's interfaces.
#include "contract/class_ids.h"
#include "tools/glazelhost/plugin/effect_interfaces.h"
#include "tools/glazelhost/surface/host_surface.h"
#include "tools/glazelhost/validate/judged_plug_in.h"
#include "tools/glazelhost/validate/plug_in_checks.h"

#include <olectl.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>

namespace GlazelHost
{

namespace
{

struct TaskMemoryDeleter
{
    void operator()(void* memory) const noexcept { ::CoTaskMemFree(memory); }
};
template <typename Content>
using TaskMemory = std::unique_ptr<Content, TaskMemoryDeleter>;

CComPtr<IPropertyPage> PageOf(Check& check, const JudgedPlugIn& plugIn)
{
    CComPtr<IPropertyPage> page;
    check.Answers(S_OK,
                  plugIn.Create(CLSID_PluginPP)
                      ->QueryInterface(IID_IPropertyPage, reinterpret_cast<void**>(&page)),
                  "QueryInterface of the page for IPropertyPage");
    return page;
}

// A host's place for pages that has nothing to say. Lives on the stack.
class CSilentSite final : public IPropertyPageSite
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override
    {
        *object = riid == IID_IUnknown || riid == IID_IPropertyPageSite ? this : nullptr;
        return *object != nullptr ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return --references; }
    HRESULT STDMETHODCALLTYPE OnStatusChange(DWORD) noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetLocaleID(LCID* locale) noexcept override
    {
        *locale = LOCALE_USER_DEFAULT;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetPageContainer(IUnknown** container) noexcept override
    {
        *container = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG*) noexcept override { return S_FALSE; }

    ULONG references = 1;
};

} // namespace

void CheckEffectProperties(Check& check)
{
    const JudgedEffect judged(check);
    const auto effect = judged.As<IDXEffect>(IID_IDXEffect, "IDXEffect");
    LONG capabilities = -1;
    check.Answers(S_OK, effect->get_Capabilities(&capabilities), "get_Capabilities");
    check.That(capabilities == 0, "a new effect has capabilities other than 0");
    check.Answers(E_POINTER, effect->get_Capabilities(nullptr), "get_Capabilities(null)");
    float value = -1.0F;
    check.Answers(S_OK, effect->get_Progress(&value), "get_Progress");
    check.That(value == 0.0F, "a new effect's progress is not 0");
    check.Answers(S_OK, effect->get_StepResolution(&value), "get_StepResolution");
    check.That(value == 1.0F, "a new effect's step resolution is not 1");
    check.Answers(S_OK, effect->get_Duration(&value), "get_Duration");
    check.That(value == 0.5F, "a new effect's duration is not 0.5");

    check.Answers(S_OK, effect->put_Progress(1.0F), "put_Progress(1)");
    check.Answers(E_INVALIDARG, effect->put_Progress(1.0001F), "put_Progress(1.0001)");
    check.Answers(E_INVALIDARG, effect->put_Progress(-0.5F), "put_Progress(-0.5)");
    std::ignore = effect->get_Progress(&value);
    check.That(value == 1.0F, "a progress that was refused is kept");
    check.Answers(S_OK, effect->put_Duration(2.0F), "put_Duration(2)");
    check.Answers(S_OK, effect->put_Duration(2.0F), "put_Duration of what it is");
    check.Answers(E_INVALIDARG, effect->put_Duration(0.0F), "put_Duration(0)");
    check.Answers(E_INVALIDARG, effect->put_Duration(-1.0F), "put_Duration(-1)");
    std::ignore = effect->get_Duration(&value);
    check.That(value == 2.0F, "a duration that was set is not the one that is told");
    UINT count = 0;
    check.Answers(S_OK, effect->GetTypeInfoCount(&count), "GetTypeInfoCount");
    check.That(count == 1, "GetTypeInfoCount tells something else than 1");
}

void CheckEffectSafety(Check& check)
{
    const JudgedEffect judged(check);
    const auto safety = judged.As<IObjectSafety>(IID_IObjectSafety, "IObjectSafety");
    DWORD supported = 9;
    DWORD enabled = 9;
    for (const IID& id :
         {IID_IDispatch, IID_IPersistPropertyBag, IID_IPersistStorage, IID_IPersistStream})
    {
        check.Answers(S_OK, safety->GetInterfaceSafetyOptions(id, &supported, &enabled),
                      "GetInterfaceSafetyOptions of a listed interface");
        check.That(supported == INTERFACESAFE_FOR_UNTRUSTED_CALLER && enabled == 0,
                   "a new effect's safety options are not 1 and 0");
        check.Answers(S_OK, safety->SetInterfaceSafetyOptions(id, 1, 1),
                      "SetInterfaceSafetyOptions of a listed interface");
        std::ignore = safety->GetInterfaceSafetyOptions(id, &supported, &enabled);
        check.That(enabled == 1, "a safety option that was set is not told");
    }
    check.Answers(E_NOINTERFACE,
                  safety->GetInterfaceSafetyOptions(kUnknownInterface, &supported, &enabled),
                  "GetInterfaceSafetyOptions of an unknown interface");
    check.That(supported == 0 && enabled == 0, "an unknown interface has safety options");
    check.Answers(E_NOINTERFACE, safety->SetInterfaceSafetyOptions(kUnknownInterface, 1, 1),
                  "SetInterfaceSafetyOptions of an unknown interface");
    check.Answers(E_POINTER, safety->GetInterfaceSafetyOptions(IID_IDispatch, nullptr, &enabled),
                  "GetInterfaceSafetyOptions without a place");
}

void CheckEffectPages(Check& check)
{
    const JudgedEffect judged(check);
    const auto pages =
        judged.As<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages, "ISpecifyPropertyPages");
    CAUUID list{};
    check.Answers(S_OK, pages->GetPages(&list), "GetPages");
    const TaskMemory<GUID> owner(list.pElems);
    check.That(list.cElems == 1 && list.pElems != nullptr && list.pElems[0] == CLSID_PluginPP,
               "GetPages names something else than the one page");
    check.Answers(E_POINTER, pages->GetPages(nullptr), "GetPages(null)");
}

void CheckEffectPresets(Check& check)
{
    JudgedEffect judged(check);
    const auto presets =
        judged.As<IStaticFilterPreset>(IID_IStaticFilterPreset, "IStaticFilterPreset");
    ULONG count = 0;
    check.Answers(S_OK, presets->GetPresetCount(&count), "GetPresetCount");
    check.That(count == 1, "there are " + std::to_string(count) + " presets instead of 1");
    std::array<WCHAR, 64> name{};
    name.fill(L'#');
    check.Answers(S_OK, presets->GetPresetName(0, name.data(), 63), "GetPresetName(0)");
    name.back() = L'\0';
    check.That(std::wstring(name.data()) == L"(Default)", "preset 0 is not called \"(Default)\"");
    name.fill(L'#');
    check.Answers(S_OK, presets->GetPresetName(0, name.data(), 4), "GetPresetName with 4 letters");
    check.That(std::wstring(name.data(), 5) == L"(Def#",
               "GetPresetName with room for 4 letters does not give just these");
    for (const LONG index : {-1L, 1L, 1000000L})
    {
        name.fill(L'#');
        const std::string call = "(" + std::to_string(index) + ")";
        check.Answers(E_INVALIDARG, presets->GetPresetName(index, name.data(), 64),
                      "GetPresetName" + call);
        check.That(name[0] == L'#', "GetPresetName" + call + " writes a name all the same");
        check.Answers(E_INVALIDARG, presets->ApplyPreset(index), "ApplyPreset" + call);
    }
    const Record look = WithOption(judged.plugIn.LookOf(), false);
    judged.controls.LoadLook(look);
    check.Answers(S_OK, presets->ApplyPreset(0), "ApplyPreset(0)");
    check.That(judged.controls.StoredLook() == WithOption(look, true),
               "ApplyPreset(0) does more, or less, than turn the look's option on");
}

void CheckEffectExtension(Check& check)
{
    const JudgedEffect judged(check);
    const auto extension =
        judged.As<ISfVideoPluginExtension>(IID_ISfVideoPluginExtension, "ISfVideoPluginExtension");
    check.Answers(E_POINTER, extension->GetExtensionInfo(nullptr, 32), "GetExtensionInfo(null)");
    std::array<std::uint8_t, 64> whole{};
    whole.fill(0xA5);
    check.Answers(S_OK, extension->GetExtensionInfo(whole.data(), 64), "GetExtensionInfo(64)");
    const std::array<std::uint32_t, 8> expected{2, 0, 0, 0x3FF00000, 1, 1, 0x841, 0};
    check.That(std::memcmp(whole.data(), expected.data(), sizeof expected) == 0,
               "GetExtensionInfo tells other capabilities");
    check.That(std::all_of(whole.begin() + 32, whole.end(), [](auto b) { return b == 0xA5; }),
               "GetExtensionInfo writes more than 32 bytes");
    std::array<std::uint8_t, 32> part{};
    part.fill(0xA5);
    check.Answers(S_OK, extension->GetExtensionInfo(part.data(), 8), "GetExtensionInfo(8)");
    check.That(std::equal(part.begin(), part.begin() + 8, whole.begin()) && part[8] == 0xA5,
               "GetExtensionInfo(8) does not write just 8 bytes");
    for (const double value : {-3.0, 0.25, 7.5, std::nan("")})
    {
        check.Answers(S_OK, extension->SetExtensionValue(value), "SetExtensionValue");
    }
}

void CheckEffectSetup(Check& check)
{
    const JudgedEffect judged(check);
    const auto transform = judged.As<IDXTransform>(IID_IDXTransform, "IDXTransform");
    check.Answers(DXTERR_UNINITIALIZED, transform->Execute(nullptr, nullptr, nullptr),
                  "Execute before Setup");
    const SurfaceLayout layout{4, 3, SurfaceFormat::Straight8, false};
    const CComPtr<CHostSurface> surface(new CHostSurface(layout));
    const CComPtr<CHostSurface> other(new CHostSurface(layout));
    const std::array<IUnknown*, 2> inputs{static_cast<IDXSurface*>(surface.p),
                                          static_cast<IDXSurface*>(surface.p)};
    const std::array<IUnknown*, 2> outputs{static_cast<IDXSurface*>(other.p),
                                           static_cast<IDXSurface*>(other.p)};
    const std::array<IUnknown*, 1> nothing{};
    check.Answers(E_INVALIDARG, transform->Setup(inputs.data(), 1, outputs.data(), 1, 1),
                  "Setup with a reserved flag");
    check.Answers(E_INVALIDARG, transform->Setup(inputs.data(), 2, outputs.data(), 1, 0),
                  "Setup with two inputs");
    check.Answers(E_INVALIDARG, transform->Setup(inputs.data(), 1, outputs.data(), 2, 0),
                  "Setup with two outputs");
    check.Answers(E_INVALIDARG, transform->Setup(inputs.data(), 1, nothing.data(), 1, 0),
                  "Setup with a null output");
    check.Answers(E_INVALIDARG, transform->Setup(nothing.data(), 1, outputs.data(), 1, 0),
                  "Setup with a null input");
    check.Answers(S_OK, transform->Setup(inputs.data(), 1, outputs.data(), 1, 0), "Setup");
    check.Answers(S_OK, transform->Execute(nullptr, nullptr, nullptr), "Execute");
    check.Answers(S_OK, transform->Setup(nullptr, 0, nullptr, 0, 0), "Setup with nothing");
    check.Answers(DXTERR_UNINITIALIZED, transform->Execute(nullptr, nullptr, nullptr),
                  "Execute after Setup with nothing");
    check.Answers(E_POINTER, transform->GetMiscFlags(nullptr), "GetMiscFlags(null)");
    check.Answers(E_POINTER, transform->GetGenerationId(nullptr), "GetGenerationId(null)");
    check.Answers(E_INVALIDARG, transform->SetQuality(2.0F), "SetQuality(2)");
    ULONG before = 0;
    ULONG after = 0;
    std::ignore = transform->GetGenerationId(&before);
    std::ignore = judged.As<IDXEffect>(IID_IDXEffect, "IDXEffect")->put_Progress(0.5F);
    std::ignore = transform->GetGenerationId(&after);
    check.That(before != after, "a property that changed does not raise the generation id");
}

void CheckPageCalls(Check& check)
{
    const JudgedPlugIn plugIn(check);
    const CComPtr<IUnknown> effect = plugIn.module.CreateEffect();
    CComPtr<IPropertyPage> page = PageOf(check, plugIn);
    if (!page)
    {
        return;
    }
    check.Answers(E_FAIL, page->Help(L""), "Help");
    check.Answers(S_FALSE, page->IsPageDirty(), "IsPageDirty of a new page");
    check.Answers(E_UNEXPECTED, page->Show(SW_SHOW), "Show without a window");
    const RECT area{0, 0, 100, 50};
    check.Answers(E_UNEXPECTED, page->Move(&area), "Move without a window");
    check.Answers(E_POINTER, page->Activate(nullptr, nullptr, FALSE), "Activate without an area");
    check.Answers(S_OK, page->Deactivate(), "Deactivate without a window");
    check.Answers(E_POINTER, page->SetObjects(0, nullptr), "SetObjects without a place");
    check.Answers(E_POINTER, page->GetPageInfo(nullptr), "GetPageInfo(null)");

    PROPPAGEINFO info{};
    info.cb = sizeof info;
    check.Answers(S_OK, page->GetPageInfo(&info), "GetPageInfo");
    const TaskMemory<WCHAR> title(info.pszTitle);
    const TaskMemory<WCHAR> text(info.pszDocString);
    const TaskMemory<WCHAR> help(info.pszHelpFile);
    check.That(title != nullptr && std::wstring(title.get()) == L"Brellin Glazel",
               "the page has another title");
    check.That(info.size.cx > 0 && info.size.cy > 0, "the page has no size");

    CSilentSite site;
    CSilentSite second;
    check.Answers(S_OK, page->SetPageSite(nullptr), "SetPageSite(null) without a site");
    check.Answers(S_OK, page->SetPageSite(&site), "SetPageSite");
    check.Answers(E_UNEXPECTED, page->SetPageSite(&second), "SetPageSite with a second site");
    check.That(second.references == 1, "a site that was refused is kept");
    IUnknown* object = effect;
    effect.p->AddRef();
    const ULONG before = effect.p->Release();
    check.Answers(S_OK, page->SetObjects(1, &object), "SetObjects");
    check.Answers(S_OK, page->Apply(), "Apply");
    check.Answers(S_OK, page->SetObjects(0, &object), "SetObjects with none");
    effect.p->AddRef();
    const ULONG after = effect.p->Release();
    check.That(before == after, "an object that the page had is not released");
    check.Answers(S_OK, page->SetPageSite(nullptr), "SetPageSite(null)");
    check.That(site.references == 1, "a site that the page had is not released");
    check.Answers(S_OK, page->SetObjects(1, &object), "SetObjects again");
    page.Release();
    effect.p->AddRef();
    check.That(effect.p->Release() == before, "a page that goes keeps its object");
}

void CheckPageWindow(Check& check)
{
    const JudgedPlugIn plugIn(check);
    const CComPtr<IUnknown> effect = plugIn.module.CreateEffect();
    CComPtr<IPropertyPage> page = PageOf(check, plugIn);
    if (!page)
    {
        return;
    }
    const HWND parent = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 600, 200, nullptr,
                                          nullptr, nullptr, nullptr);
    if (parent == nullptr)
    {
        check.Skip("there is no desktop here");
        return;
    }
    CSilentSite site;
    IUnknown* object = effect;
    std::ignore = page->SetPageSite(&site);
    std::ignore = page->SetObjects(1, &object);
    const RECT area{0, 0, 500, 120};
    for (int round = 0; round < 20; ++round)
    {
        check.Answers(S_OK, page->Activate(parent, &area, FALSE), "Activate");
        const HWND window = ::GetWindow(parent, GW_CHILD);
        check.That(window != nullptr, "after Activate there is no window");
        check.Answers(S_OK, page->Show(SW_SHOW), "Show");
        const RECT moved{5, 5, 305, 105};
        check.Answers(S_OK, page->Move(&moved), "Move");
        RECT place{};
        ::GetWindowRect(window, &place);
        check.That(place.right - place.left == 300 && place.bottom - place.top == 100,
                   "after Move the page has another size");
        check.Answers(E_POINTER, page->Move(nullptr), "Move(null)");
        ::UpdateWindow(window);
        MSG message{};
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE))
        {
            ::DispatchMessageW(&message);
        }
        check.Answers(S_OK, page->Deactivate(), "Deactivate");
        check.That(::GetWindow(parent, GW_CHILD) == nullptr, "after Deactivate there is a window");
    }
    // A page has no scale of its own: on a larger display the host gives it a larger area.
    PROPPAGEINFO info{};
    info.cb = sizeof info;
    std::ignore = page->GetPageInfo(&info);
    const TaskMemory<WCHAR> title(info.pszTitle);
    const TaskMemory<WCHAR> text(info.pszDocString);
    const TaskMemory<WCHAR> help(info.pszHelpFile);
    for (const LONG percent : {100L, 150L, 200L})
    {
        const RECT scaled{0, 0, info.size.cx * percent / 100, info.size.cy * percent / 100};
        check.Answers(S_OK, page->Activate(parent, &scaled, FALSE), "Activate");
        const HWND window = ::GetWindow(parent, GW_CHILD);
        std::ignore = page->Show(SW_SHOW);
        RECT client{};
        ::GetClientRect(window, &client);
        check.That(::EqualRect(&client, &scaled) != FALSE,
                   "at " + std::to_string(percent) + " % the page does not fill its area");
        ::UpdateWindow(window);
        check.That(::GetUpdateRect(window, nullptr, FALSE) == FALSE,
                   "at " + std::to_string(percent) + " % the page does not paint its whole area");
        std::ignore = page->Deactivate();
    }
    // A host that goes down may take the window away first.
    check.Answers(S_OK, page->Activate(parent, &area, FALSE), "Activate");
    ::DestroyWindow(parent);
    check.Answers(S_OK, page->Deactivate(), "Deactivate after the host's window has gone");
    std::ignore = page->SetPageSite(nullptr);
    page.Release();
    check.That(site.references == 1, "a page that goes keeps its site");
}

} // namespace GlazelHost
