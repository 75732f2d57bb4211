// A plug-in that hands everything on to the real one, which stands beside the running program, but
// for the one defect that the name of its own folder asks for: one call of the real objects is
// replaced in their tables. Under any other name it does not load.
#include "contract/class_ids.h"
#include "contract/host_interfaces.h"
#include "platform/dxtransform/dxtrans.h"
#include "support/win32/slim_lock.h"
#include "tests/doubles/zoo/own_folder.h"

#include <windows.h>

#include <objsafe.h>
#include <ocidl.h>
#include <olectl.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <mutex>
#include <string>

namespace
{

HMODULE real = nullptr;
unsigned calls = 0;
void* original = nullptr; // the call that the defect stands in for

template <typename Function>
Function* Real(const char* name)
{
    return std::bit_cast<Function*>(::GetProcAddress(real, name));
}

// The call that the defect has replaced.
template <typename... Arguments>
HRESULT Original(void* object, Arguments... arguments)
{
    using Call = HRESULT STDMETHODCALLTYPE(void*, Arguments...);
    return std::bit_cast<Call*>(original)(object, arguments...);
}

// Puts `call` in the place of an object's call, for all objects of its class.
void Replace(IUnknown* object, std::size_t slot, void* call)
{
    void** const place = *reinterpret_cast<void***>(object) + slot;
    DWORD old = 0;
    if (*place != call && ::VirtualProtect(place, sizeof *place, PAGE_READWRITE, &old))
    {
        original = *place;
        *place = call;
        ::VirtualProtect(place, sizeof *place, old, &old);
    }
}

// A surface that cannot be asked counts as one of the usual ones.
bool HasAlignedRows(IUnknown& object)
{
    IDXSurface* surface = nullptr;
    IDXARGBReadPtr* pointer = nullptr;
    DXNATIVETYPEINFO native{};
    if (SUCCEEDED(object.QueryInterface(IID_IDXSurface, reinterpret_cast<void**>(&surface))))
    {
        if (SUCCEEDED(surface->LockSurface(nullptr, 0, DXLOCKF_READ, IID_IDXARGBReadPtr,
                                           reinterpret_cast<void**>(&pointer), nullptr)))
        {
            pointer->GetNativeType(&native);
            pointer->Release();
        }
        surface->Release();
    }
    return native.lPitch % 4 == 0;
}

// What is replaced: one slot of one interface, counted from 0 with those of IUnknown.
struct Animal
{
    const char* name;
    const CLSID* classId; // null: the class objects themselves
    IID iid;
    std::size_t slot;
    void* call;
};

// Exports that differ, by the animal's name.
bool Is(const char* name);

template <typename Result, typename... Arguments>
void* Call(Result (*call)(Arguments...))
{
    return std::bit_cast<void*>(call);
}

constexpr CLSID kEffect = CLSID_Plugin;
constexpr CLSID kPage = CLSID_PluginPP;

// clang-format off
const Animal kAnimals[]{
    {"without_DllCanUnloadNow", nullptr, {}, 0, nullptr}, // built without it
    {"ends_when_loaded", nullptr, {}, 0, nullptr},
    {"hangs_when_loaded", nullptr, {}, 0, nullptr},
    {"creates_unknown_classes", nullptr, {}, 0, nullptr},
    {"never_unloads", nullptr, {}, 0, nullptr},
    {"always_unloads", nullptr, {}, 0, nullptr},
    {"leaks_slots", nullptr, {}, 0, nullptr},
    {"shows_a_box", nullptr, {}, 0, nullptr},
    {"dies_on_threads", nullptr, {}, 0, nullptr},
    {"answers_unknown_interfaces", &kEffect, IID_IDXEffect, 0, Call(+[](void* object, REFIID iid, void** place) {
        const HRESULT result = Original<REFIID, void**>(object, iid, place);
        return result == E_NOINTERFACE ? E_FAIL : result;
    })},
    {"leaks_references", &kEffect, IID_IDXTransform, 0, Call(+[](void* object, REFIID iid, void** place) {
        const HRESULT result = Original<REFIID, void**>(object, iid, place);
        if (SUCCEEDED(result) && iid == IID_IDispatch) { static_cast<IUnknown*>(*place)->AddRef(); }
        return result;
    })},
    {"hides_in_aggregates", &kEffect, IID_IDXTransform, 0, Call(+[](void* object, REFIID iid, void** place) {
        // The object itself instead of the one that it is a part of.
        if (iid == IID_IUnknown)
        {
            const HRESULT result = Original<REFIID, void**>(object, IID_IDXTransform, place);
            return result;
        }
        return Original<REFIID, void**>(object, iid, place);
    })},
    {"executes_nothing", &kEffect, IID_IDXTransform, 7, Call(+[](void*, const GUID*, const DXBNDS*, const DXVEC*) { return S_OK; })},
    {"takes_two_inputs", &kEffect, IID_IDXTransform, 6, Call(+[](void* object, IUnknown* const* in, ULONG ins, IUnknown* const* out, ULONG outs, DWORD flags) {
        return Original<IUnknown* const*, ULONG, IUnknown* const*, ULONG, DWORD>(object, in, std::min(ins, 1UL), out, outs, flags);
    })},
    {"needs_aligned_rows", &kEffect, IID_IDXTransform, 6, Call(+[](void* object, IUnknown* const* in, ULONG ins, IUnknown* const* out, ULONG outs, DWORD flags) {
        return ins == 1 && in != nullptr && in[0] != nullptr && !HasAlignedRows(*in[0]) ? E_INVALIDARG : Original<IUnknown* const*, ULONG, IUnknown* const*, ULONG, DWORD>(object, in, ins, out, outs, flags);
    })},
    {"hides_failed_frames", &kEffect, IID_IDXTransform, 7, Call(+[](void* object, const GUID* id, const DXBNDS* clip, const DXVEC* place) {
        const HRESULT result = Original<const GUID*, const DXBNDS*, const DXVEC*>(object, id, clip, place);
        return result == DXTERR_UNINITIALIZED ? result : S_OK;
    })},
    {"takes_any_progress", &kEffect, IID_IDXEffect, 9, Call(+[](void* object, float value) { return Original<float>(object, std::clamp(value, 0.0F, 1.0F)); })},
    {"names_no_page", &kEffect, IID_ISpecifyPropertyPages, 3, Call(+[](void*, CAUUID* pages) {
        if (pages == nullptr) { return E_POINTER; }
        *pages = {};
        return S_OK;
    })},
    {"terminates_full_names", &kEffect, IID_IStaticFilterPreset, 4, Call(+[](void* object, LONG index, WCHAR* name, ULONG capacity) {
        const HRESULT result = Original<LONG, WCHAR*, ULONG>(object, index, name, capacity);
        if (SUCCEEDED(result)) { name[capacity] = L'\0'; }
        return result;
    })},
    {"applies_any_preset", &kEffect, IID_IStaticFilterPreset, 5, Call(+[](void* object, LONG) { return Original<LONG>(object, 0); })},
    {"tells_too_much", &kEffect, IID_ISfVideoPluginExtension, 3, Call(+[](void* object, void* buffer, ULONG size) {
        const HRESULT result = Original<void*, ULONG>(object, buffer, size);
        if (SUCCEEDED(result)) { std::memset(buffer, 2, size < 8 ? 0 : 1); static_cast<char*>(buffer)[size - 1] = 0; }
        return result;
    })},
    {"stores_a_byte_more", &kEffect, IID_IPersistStreamInit, 6, Call(+[](void* object, IStream* stream, BOOL clears) {
        const HRESULT result = Original<IStream*, BOOL>(object, stream, clears);
        const char version = 1;
        if (SUCCEEDED(result)) { stream->Write(&version, 1, nullptr); }
        return result;
    })},
    {"stays_clean", &kEffect, IID_IPersistStreamInit, 4, Call(+[](void*) { return S_FALSE; })},
    {"hides_broken_streams", &kEffect, IID_IPersistStreamInit, 5, Call(+[](void* object, IStream* stream) {
        return stream != nullptr ? (Original<IStream*>(object, stream), S_OK) : E_POINTER;
    })},
    {"refuses_strange_looks", &kEffect, IID_IPersistStreamInit, 5, Call(+[](void* object, IStream* stream) {
        STATSTG facts{};
        if (stream == nullptr || FAILED(stream->Stat(&facts, STATFLAG_NONAME))) { return Original<IStream*>(object, stream); }
        const ULONGLONG size = facts.cbSize.QuadPart;
        return size > 0 && size < 20 ? E_FAIL : Original<IStream*>(object, stream);
    })},
    {"refuses_longer_looks", &kEffect, IID_IPersistStreamInit, 5, Call(+[](void* object, IStream* stream) {
        STATSTG facts{};
        if (stream == nullptr || FAILED(stream->Stat(&facts, STATFLAG_NONAME))) { return Original<IStream*>(object, stream); }
        const ULONGLONG size = facts.cbSize.QuadPart;
        return size > 130654 && size < 131072 ? E_FAIL : Original<IStream*>(object, stream);
    })},
    {"tells_nobody", &kEffect, IID_IDXTSfAutomation, 9, Call(+[](void* object, ISfChangeSink*) { return Original<ISfChangeSink*>(object, nullptr); })},
    {"holds_keyframes", &kEffect, IID_IDXTSfAutomation, 6, Call(+[](void* object, IStream* out, IStream* a, IStream* b, double n) {
        return Original<IStream*, IStream*, IStream*, double>(object, out, a, b, n < 1.0 ? 0.0 : n);
    })},
    {"limits_no_fraction", &kEffect, IID_IDXTSfAutomation, 8, Call(+[](void* object, double n) { return Original<double>(object, 1.0 - n); })},
    {"stores_elsewhere", &kEffect, IID_IPersistStorage, 7, Call(+[](void* object, IStorage* storage, BOOL same) {
        const HRESULT result = Original<IStorage*, BOOL>(object, storage, same);
        if (SUCCEEDED(result)) { storage->RenameElement(L"Contents", L"Look"); }
        return result;
    })},
    {"is_safe_for_all", &kEffect, IID_IObjectSafety, 3, Call(+[](void*, REFIID, DWORD* supported, DWORD* enabled) {
        if (supported == nullptr || enabled == nullptr) { return E_POINTER; }
        *supported = *enabled = INTERFACESAFE_FOR_UNTRUSTED_CALLER;
        return S_OK;
    })},
    {"takes_a_second_site", &kPage, IID_IPropertyPage, 3, Call(+[](void* object, IPropertyPageSite* site) {
        if (site != nullptr) { Original<IPropertyPageSite*>(object, nullptr); }
        return Original<IPropertyPageSite*>(object, site);
    })},
    {"stays_small", &kPage, IID_IPropertyPage, 4, Call(+[](void* object, HWND parent, const RECT* area, BOOL modal) {
        if (area == nullptr) { return E_POINTER; }
        RECT small = *area;
        small.right = std::min(small.right, small.left + 1000);
        return Original<HWND, const RECT*, BOOL>(object, parent, &small, modal);
    })},
    {"stays_open", &kPage, IID_IPropertyPage, 5, Call(+[](void*) { return S_OK; })},
};
// clang-format on

const Animal* self = nullptr;
constinit SlimLock breeding;

bool Is(const char* name)
{
    return std::strcmp(self->name, name) == 0;
}

// Once an object of the class exists, its table can be changed: by one thread, for all.
void Breed()
{
    const std::scoped_lock lock(breeding);
    IClassFactory* factory = nullptr;
    if (self->classId == nullptr || original != nullptr ||
        FAILED(Real<HRESULT(REFCLSID, REFIID, void**)>("DllGetClassObject")(
            *self->classId, IID_IClassFactory, reinterpret_cast<void**>(&factory))))
    {
        return;
    }
    IUnknown* object = nullptr;
    if (SUCCEEDED(factory->CreateInstance(nullptr, self->iid, reinterpret_cast<void**>(&object))))
    {
        Replace(object, self->slot, self->call);
        object->Release();
    }
    factory->Release();
}

} // namespace

// The real one stays loaded for good.
extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH)
    {
        const std::string name = OwnFolderName(&calls);
        self = std::find_if(std::begin(kAnimals), std::end(kAnimals),
                            [&](const Animal& row) { return name == row.name; });
        if (self != std::end(kAnimals) && Is("ends_when_loaded"))
        {
            EndTheProcess();
        }
        if (self != std::end(kAnimals) && Is("hangs_when_loaded"))
        {
            ::Sleep(INFINITE);
        }
        real = self != std::end(kAnimals)
                   ? ::LoadLibraryA((ProgramFolderPath() + "GlazelDX_x64.dll").c_str())
                   : nullptr;
    }
    if (reason == DLL_PROCESS_DETACH && real != nullptr && Is("leaks_slots"))
    {
        static_cast<void>(::TlsAlloc());
    }
    return real != nullptr ? TRUE : FALSE;
}

extern "C"
{

HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID classId, REFIID iid, void** object)
{
    const auto get = Real<HRESULT(REFCLSID, REFIID, void**)>("DllGetClassObject");
    Breed();
    if (Is("shows_a_box"))
    {
        ::MessageBoxA(nullptr, "a word from the plug-in", nullptr, MB_OK);
    }
    const bool isKnown = classId == CLSID_Plugin || classId == CLSID_PluginPP;
    if (Is("dies_on_threads") && isKnown && ::InterlockedIncrement(&calls) > 40)
    {
        ::RaiseException(EXCEPTION_ACCESS_VIOLATION, 0, 0, nullptr);
    }
    return get(Is("creates_unknown_classes") && !isKnown ? CLSID_Plugin : classId, iid, object);
}

HRESULT STDAPICALLTYPE DllCanUnloadNow()
{
    return Is("never_unloads")    ? S_FALSE
           : Is("always_unloads") ? S_OK
                                  : Real<HRESULT()>("DllCanUnloadNow")();
}

HRESULT STDAPICALLTYPE DllRegisterServer()
{
    return Real<HRESULT()>("DllRegisterServer")();
}

HRESULT STDAPICALLTYPE DllUnregisterServer()
{
    return Real<HRESULT()>("DllUnregisterServer")();
}

} // extern "C"
