// What the plug-in's module, class objects and objects owe to COM.
#include "contract/class_ids.h"
#include "tools/glazelhost/plugin/effect_interfaces.h"
#include "tools/glazelhost/plugin/message_boxes.h"
#include "tools/glazelhost/validate/judged_plug_in.h"
#include "tools/glazelhost/validate/load_check.h"
#include "tools/glazelhost/validate/parallel.h"
#include "tools/glazelhost/validate/plug_in_checks.h"

#include <olectl.h>

#include <array>
#include <atomic>
#include <bit>
#include <tuple>

namespace GlazelHost
{

namespace
{

struct NamedClass
{
    const char* name;
    CLSID id;
};
constexpr std::array kClasses{NamedClass{"Plugin", CLSID_Plugin},
                              NamedClass{"PluginPP", CLSID_PluginPP}};

CComPtr<IUnknown> IdentityOf(IUnknown& object)
{
    CComPtr<IUnknown> identity;
    std::ignore = object.QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&identity));
    return identity;
}

// Every interface leads to every other one and to one and the same IUnknown.
void CheckQueries(Check& check, IUnknown& object, std::span<const NamedInterface> interfaces)
{
    const CComPtr<IUnknown> identity = IdentityOf(object);
    for (const NamedInterface& from : interfaces)
    {
        CComPtr<IUnknown> first;
        const HRESULT answered = object.QueryInterface(from.iid, reinterpret_cast<void**>(&first));
        const std::string name = std::string("QueryInterface for ") + from.name;
        if (!check.Answers(S_OK, answered, name) ||
            !check.That(first != nullptr, name + " answers S_OK without an object"))
        {
            continue;
        }
        check.That(IdentityOf(*first).p == identity.p,
                   std::string(from.name) + " has another IUnknown than the object");
        for (const NamedInterface& to : interfaces)
        {
            CComPtr<IUnknown> second;
            check.Answers(S_OK, first->QueryInterface(to.iid, reinterpret_cast<void**>(&second)),
                          std::string("QueryInterface of ") + from.name + " for " + to.name);
        }
        void* nothing = &check; // must become null
        check.Answers(E_NOINTERFACE, first->QueryInterface(kUnknownInterface, &nothing),
                      std::string("QueryInterface of ") + from.name + " for an unknown interface");
        check.That(nothing == nullptr, std::string("QueryInterface of ") + from.name +
                                           " leaves a pointer where it has no interface");
    }
}

// Stands around an effect as an aggregate does. Lives on the stack.
class COuter final : public IUnknown
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) noexcept override
    {
        if (riid == IID_IUnknown)
        {
            AddRef();
            *object = this;
            return S_OK;
        }
        return inner != nullptr ? inner->QueryInterface(riid, object) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return --references; }

    CComPtr<IUnknown> inner;
    ULONG references = 1;
};

} // namespace

void CheckPlugInExports(Check& check)
{
    LibraryState state;
    const LoadedLibrary library = LoadLibraryFile(check.File(), state);
    if (!check.That(static_cast<bool>(library), "it does not load: " + state.why))
    {
        return;
    }
    RedirectMessageBoxesOfLoadedModules();
    bool complete = true;
    for (const char* const name :
         {"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer", "DllUnregisterServer"})
    {
        complete &= check.That(::GetProcAddress(library.Get(), name) != nullptr,
                               std::string("it does not export ") + name);
    }
    if (!complete)
    {
        return;
    }
    const auto getClassObject = std::bit_cast<HRESULT STDAPICALLTYPE (*)(REFCLSID, REFIID, void**)>(
        ::GetProcAddress(library.Get(), "DllGetClassObject"));
    const auto canUnloadNow = std::bit_cast<HRESULT STDAPICALLTYPE (*)()>(
        ::GetProcAddress(library.Get(), "DllCanUnloadNow"));
    check.Answers(S_OK, canUnloadNow(), "DllCanUnloadNow of a module that nobody used");
    void* object = &state;
    check.Answers(CLASS_E_CLASSNOTAVAILABLE,
                  getClassObject(kUnknownInterface, IID_IClassFactory, &object),
                  "DllGetClassObject for an unknown class");
    check.That(object == nullptr, "DllGetClassObject leaves a pointer where it has no class");
    check.Answers(E_POINTER, getClassObject(CLSID_Plugin, IID_IClassFactory, nullptr),
                  "DllGetClassObject without a place for the answer");
}

void CheckPlugInFactory(Check& check)
{
    const JudgedPlugIn plugIn(check);
    for (const NamedClass& row : kClasses)
    {
        const std::string name = std::string("the class object of ") + row.name;
        CComPtr<IClassFactory> factory;
        CComPtr<IClassFactory> again;
        if (!check.Answers(S_OK, plugIn.module.GetClassObject(row.id, factory), name) || !factory)
        {
            continue;
        }
        std::ignore = plugIn.module.GetClassObject(row.id, again);
        check.That(again.p == factory.p, name + " is another one when it is asked for again");
        void* object = &factory;
        check.Answers(E_NOINTERFACE, factory->CreateInstance(nullptr, kUnknownInterface, &object),
                      name + ": CreateInstance for an unknown interface");
        check.That(object == nullptr, name + ": CreateInstance leaves a pointer when it fails");
        check.Answers(E_POINTER, factory->CreateInstance(nullptr, IID_IUnknown, nullptr),
                      name + ": CreateInstance without a place for the object");
        again.Release();
        check.Answers(S_OK, factory->LockServer(TRUE), name + ": LockServer(TRUE)");
        factory.Release();
        check.Answers(S_FALSE, plugIn.module.CanUnloadNow(), "DllCanUnloadNow while it is locked");
        std::ignore = plugIn.module.GetClassObject(row.id, factory);
        check.Answers(S_OK, factory->LockServer(FALSE), name + ": LockServer(FALSE)");
        factory.Release();
        check.Answers(S_OK, plugIn.module.CanUnloadNow(), "DllCanUnloadNow without an object");
        {
            const CComPtr<IUnknown> alive = plugIn.Create(row.id);
            check.Answers(S_FALSE, plugIn.module.CanUnloadNow(),
                          std::string("DllCanUnloadNow while there is a ") + row.name);
        }
        check.Answers(S_OK, plugIn.module.CanUnloadNow(),
                      std::string("DllCanUnloadNow after the last release of a ") + row.name);
    }
}

void CheckPlugInIdentity(Check& check)
{
    const JudgedPlugIn plugIn(check);
    const std::array pageInterfaces{NamedInterface{"IUnknown", IID_IUnknown},
                                    NamedInterface{"IPropertyPage", IID_IPropertyPage}};
    const std::array<std::span<const NamedInterface>, 2> interfaces{kEffectInterfaces,
                                                                    pageInterfaces};
    for (std::size_t index = 0; index < kClasses.size(); ++index)
    {
        CComPtr<IUnknown> object = plugIn.Create(kClasses[index].id);
        const std::string name = kClasses[index].name;
        object->AddRef();
        const ULONG before = object->Release();
        CheckQueries(check, *object, interfaces[index]);
        object->AddRef();
        const ULONG after = object->Release();
        check.That(before == after, "after all that was asked for was released, a " + name +
                                        " has " + std::to_string(after) +
                                        " references instead of " + std::to_string(before));
        check.That(before == 1, "a " + name + " that was just created has " +
                                    std::to_string(before) + " references instead of 1");
    }
}

void CheckPlugInAggregation(Check& check)
{
    const JudgedPlugIn plugIn(check);
    for (const NamedClass& row : kClasses)
    {
        const std::string name = row.name;
        CComPtr<IClassFactory> factory;
        std::ignore = plugIn.module.GetClassObject(row.id, factory);
        if (!check.That(factory != nullptr, name + " has no class object"))
        {
            continue;
        }
        const IID own = row.id == CLSID_Plugin ? IID_IDXTransform : IID_IPropertyPage;
        COuter outer;
        void* wrong = nullptr;
        check.Fails(factory->CreateInstance(&outer, own, &wrong),
                    name + ": CreateInstance in an aggregate for another interface than IUnknown");
        const HRESULT created =
            factory->CreateInstance(&outer, IID_IUnknown, reinterpret_cast<void**>(&outer.inner));
        if (!check.Answers(S_OK, created, name + ": CreateInstance in an aggregate"))
        {
            continue;
        }
        check.That(IdentityOf(*outer.inner).p == outer.inner.p,
                   name + ": the inner IUnknown is not its own");
        {
            const ULONG before = outer.references;
            CComPtr<IUnknown> inside;
            check.Answers(S_OK, outer.inner->QueryInterface(own, reinterpret_cast<void**>(&inside)),
                          name + ": the inner IUnknown's QueryInterface");
            check.That(outer.references == before + 1,
                       name + ": an interface of an aggregate does not count for the outer object");
            check.That(inside != nullptr && IdentityOf(*inside).p == &outer,
                       name + ": an interface of an aggregate does not lead to the outer object");
        }
        check.That(outer.references == 1, name + ": in an aggregate references are left behind");
        outer.inner.Release();
        factory.Release();
        check.Answers(S_OK, plugIn.module.CanUnloadNow(),
                      "DllCanUnloadNow after an aggregated " + name);
    }
}

void CheckPlugInUnload(Check& check)
{
    constexpr unsigned kLoads = 25;
    // It stays, as in a host: the plug-in leaves it loaded for good.
    const RendererLibrary renderer(check.RendererFolder());
    renderer.Require();
    CheckLoads(check, kLoads, [&check] {
        const JudgedPlugIn plugIn(check);
        const CComPtr<IUnknown> page = plugIn.Create(CLSID_PluginPP);
        const CComPtr<IUnknown> effect = plugIn.Create(CLSID_Plugin);
        EffectControls controls(*effect, check.File());
        std::ignore = controls.StoredLook();
        return plugIn.module.Get();
    });
}

void CheckPlugInThreads(Check& check)
{
    constexpr unsigned kThreads = 4;
    constexpr unsigned kRepeats = 50;
    const JudgedPlugIn plugIn(check);
    std::atomic<unsigned> failures = 0;
    OnThreads(kThreads, [&](unsigned thread) {
        const bool isApartment = thread % 2 == 0;
        std::ignore = ::CoInitializeEx(nullptr, isApartment ? COINIT_APARTMENTTHREADED
                                                            : COINIT_MULTITHREADED);
        try
        {
            for (unsigned repeat = 0; repeat < kRepeats; ++repeat)
            {
                const CComPtr<IUnknown> effect = plugIn.module.CreateEffect();
                const CComPtr<IUnknown> page = plugIn.Create(CLSID_PluginPP);
                const Record look = EffectControls(*effect, check.File()).StoredLook();
                failures += look.empty() ? 0U : 1U; // a new effect has none
            }
        }
        catch (...)
        {
            ++failures;
        }
        ::CoUninitialize();
    });
    check.That(failures == 0, "effects and pages are not created and used on four threads at once");
    check.Answers(S_OK, plugIn.module.CanUnloadNow(),
                  "DllCanUnloadNow after four threads created and released");
}

} // namespace GlazelHost
