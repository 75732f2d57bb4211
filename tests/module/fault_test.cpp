// Every operation of the effect and of its page, in the product itself, with each thing failing in
// turn that it asks of memory, of the system and of the host's objects. Once memory comes back at
// the next call, once it does not. Whatever failed: the result is the one that stands in the table,
// the same operation works afterwards, and the module gives back all that it took.
#include "binding/session_data.h"
#include "contract/class_ids.h"
#include "contract/host_interfaces.h"
#include "effect/iplugin.h"
#include "propertypage/panel_layout.h"
#include "tests/doubles/fake_surface.h"
#include "tests/doubles/renderers/renderer_variant.h"
#include "tests/doubles/test_thread.h"
#include "tests/module/fault_points.h"
#include "tests/module/own_classes_root.h"
#include "tests/module/plugin_module.h"
#include "tests/propertypage/page_frame.h"
#include "tools/glazelhost/validate/fake_stream.h"

#include <gtest/gtest.h>

#include <objsafe.h>
#include <ocidl.h>
#include <olectl.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

using GlazelHost::FakeStream;
using Bytes = std::vector<std::uint8_t>;

namespace
{

constexpr LONG kWidth = 8;
constexpr LONG kHeight = 4;
constexpr UINT kPropsChanged = 0x7F00;

Bytes Look(std::uint8_t fill, std::size_t size = 64)
{
    return Bytes(size, fill);
}

// A stream whose every call can fail.
class FaultyStream : public FakeStream
{
public:
    explicit FaultyStream(Bytes content = {}) : FakeStream(std::move(content))
    {
        onStat = [this] { statResult = FaultPoints::IsDue("Stat") ? E_FAIL : S_OK; };
        onRead = [this] { readResult = FaultPoints::IsDue("Read") ? E_FAIL : S_OK; };
        onWrite = [this] { writeResult = FaultPoints::IsDue("Write") ? E_FAIL : S_OK; };
    }
    void Rewind() { position = 0; }
};

bool IsRendererDue(Call call)
{
    static constexpr const char* names[] = {
#define NAME(pointer, name, required) #name,
        RENDERER_ENTRY_POINTS(NAME)
#undef NAME
    };
    return FaultPoints::IsDue(names[static_cast<std::size_t>(call)]);
}

// The product, freshly loaded, with an effect and a page, and all that a host gives them.
struct World
{
    World()
    {
        recording.Reset();
        recording.isDue = IsRendererDue;
        points.emplace(module.Handle());
    }
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    void MakeObjects(); // the effect and the page
    template <typename Interface>
    CComPtr<Interface> Effect(REFIID iid = __uuidof(Interface)) const
    {
        CComPtr<Interface> found;
        if (FAILED(effect->QueryInterface(iid, reinterpret_cast<void**>(&found))))
        {
            throw std::runtime_error("the effect lacks an interface");
        }
        return found;
    }
    CComPtr<ISfExchangeProps<SessionData>> Exchange() const
    {
        return Effect<ISfExchangeProps<SessionData>>(IID_ISfExchangeProps);
    }
    HRESULT Create(REFCLSID clsid, REFIID iid, void** object) const
    {
        CComPtr<IClassFactory> factory;
        const HRESULT result =
            module.GetClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory));
        return SUCCEEDED(result) ? factory->CreateInstance(nullptr, iid, object) : result;
    }
    void SetLook(const Bytes& look) const
    {
        FakeStream stream(look);
        Effect<IPersistStreamInit>()->Load(&stream);
    }
    Bytes CurrentLook() const
    {
        SessionData record;
        Exchange()->GetProps(&record);
        return {record.data, record.data + record.size};
    }
    std::uint32_t Option() const
    {
        SessionData record;
        Exchange()->GetProps(&record);
        return record.flag;
    }
    // Surfaces of that format, their calls failing when they are due.
    void MakeSurfaces(DXSAMPLEFORMATENUM format);
    HRESULT SetUp() const
    {
        IUnknown* const inputs[] = {static_cast<IDXSurface*>(input.p)};
        IUnknown* const outputs[] = {static_cast<IDXSurface*>(output.p)};
        return Effect<IDXTransform>()->Setup(inputs, 1, outputs, 1, 0);
    }
    // The page in a frame, painted, over the effect.
    void OpenPage();
    HRESULT Activate() const
    {
        const RECT rect = frame->PageRect();
        return page->Activate(frame->Window(), &rect, FALSE);
    }
    void SetObject() const
    {
        IUnknown* object = effect;
        page->SetObjects(1, &object);
    }
    HRESULT Send(UINT message, WPARAM wParam = 0) const
    {
        ::SendMessageW(frame->PageWindow(), message, wParam, 0);
        return S_OK;
    }
    void PointAt(Geometry::Point point) const
    {
        POINT place{point.x, point.y};
        ::ClientToScreen(frame->PageWindow(), &place);
        FaultPoints::PutPointer(place);
    }
    HRESULT Click() const
    {
        Send(WM_LBUTTONDOWN, MK_LBUTTON);
        return Send(WM_LBUTTONUP);
    }

    Recording& recording = UseRenderer(L"complete");
    std::optional<OwnClassesRoot> classes;
    std::optional<FaultPoints> points; // outlives the module, which gives back when it is unloaded
    PluginModule module;
    CComPtr<IUnknown> effect;
    CComPtr<IPropertyPage> page;
    std::unique_ptr<PageFrame> frame;
    CComPtr<FakeSurface> input;
    CComPtr<FakeSurface> output;
    CComPtr<IStorage> storage;
    FaultyStream first{Look(1)};
    FaultyStream second{Look(2)};
    FaultyStream written;
    Bytes edited = Look(9, 96);
    std::uint32_t iconPixel[4] = {~0U, ~0U, ~0U, ~0U};
};

void World::MakeObjects()
{
    if (FAILED(module.CreateEffect(IID_IUnknown, reinterpret_cast<void**>(&effect))) ||
        FAILED(Create(CLSID_PluginPP, IID_IPropertyPage, reinterpret_cast<void**>(&page))))
    {
        throw std::runtime_error("the product makes no objects");
    }
}

World::~World()
{
    if (page != nullptr)
    {
        page->Deactivate();
    }
    if (frame != nullptr)
    {
        EXPECT_EQ(frame->PageWindow(), nullptr) << "the page's window stays";
    }
    for (const FakeStream* const stream : {&first, &second, &written})
    {
        EXPECT_EQ(stream->references, 0U);
    }
}

void World::MakeSurfaces(DXSAMPLEFORMATENUM format)
{
    FakeSurfaceSettings settings;
    settings.width = kWidth;
    settings.height = kHeight;
    settings.format = format;
    settings.frame = FrameInformation{};
    input = FakeSurface::Make(settings);
    output = FakeSurface::Make(settings);
    for (FakeSurface* const surface : {input.p, output.p})
    {
        surface->fails = [](const char* method) { return FaultPoints::IsDue(method); };
    }
}

void World::OpenPage()
{
    SetLook(Look(5));
    SetObject();
    frame = std::make_unique<PageFrame>();
    Activate();
    page->Show(SW_SHOWNA);
    ::UpdateWindow(frame->PageWindow());
    recording.iconPixels = iconPixel;
    recording.iconWidth = 2;
    recording.iconHeight = 2;
}

struct Operation
{
    const char* name;
    void (*prepare)(World& world); // null: nothing was made yet
    HRESULT (*run)(World& world);
    // Its points in their order, each with the result when it fails: a name alone is S_OK, and so
    // is the result when none fails.
    const char* answers;
    // After it worked.
    void (*check)(World& world);
};

void PrintTo(const Operation& operation, std::ostream* out)
{
    *out << operation.name;
}

void Nothing(World&) {}

void CheckLook(World& world, const Bytes& look)
{
    EXPECT_EQ(world.CurrentLook(), look);
}

CComPtr<IStorage> MemoryStorage()
{
    CComPtr<ILockBytes> memory;
    CComPtr<IStorage> storage;
    ::CreateILockBytesOnHGlobal(nullptr, TRUE, &memory);
    ::StgCreateDocfileOnILockBytes(memory, STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE, 0,
                                   &storage);
    return storage;
}

template <DXSAMPLEFORMATENUM kFormat>
void PrepareFrame(World& world)
{
    world.SetLook(Look(5));
    world.MakeSurfaces(kFormat);
    EXPECT_EQ(world.SetUp(), S_OK);
    world.input->Fill(DXSAMPLE(0xFF336699));
}

HRESULT Execute(World& world)
{
    const HRESULT result = world.Effect<IDXTransform>()->Execute(nullptr, nullptr, nullptr);
    EXPECT_EQ(world.input->openReadLocks + world.output->openReadLocks, 0);
    EXPECT_EQ(world.input->openWriteLocks + world.output->openWriteLocks, 0);
    return result;
}

void CheckFrame(World& world)
{
    EXPECT_EQ(DWORD{world.output->Sample(kWidth - 1, kHeight - 1)}, 0xFFCC9966U) << "inverted";
}

void Listen(World& world)
{
    world.SetLook(Look(5));
    world.frame = std::make_unique<PageFrame>();
    world.Exchange()->SetNotifyWindow(world.frame->Window(), kPropsChanged);
}

void OpenPage(World& world)
{
    world.OpenPage();
}

template <std::int32_t kResult>
void PrepareEditor(World& world)
{
    PrepareFrame<DXPF_ARGB32>(world);
    Execute(world); // whose input the editor previews
    world.OpenPage();
    world.recording.editorResult = kResult;
    world.recording.sessionData = world.edited.data();
    world.recording.sessionDataSize = static_cast<std::uint32_t>(world.edited.size());
    world.PointAt(kOnEdit);
}

void CheckPanel(World& world)
{
    const Picture screen = ScreenOf(world.frame->PageWindow());
    const Thumbnail thumbnail{{2, 2}, {~0U, ~0U, ~0U, ~0U}};
    EXPECT_EQ(FirstDifference(
                  screen, ExpectedPanel(screen.size, {.checked = true, .thumbnail = &thumbnail})),
              "");
}

const Operation kOperations[] = {
    {"CreateEffect", nullptr,
     [](World& world) {
         CComPtr<IUnknown> made;
         const HRESULT result =
             world.module.CreateEffect(IID_IUnknown, reinterpret_cast<void**>(&made));
         EXPECT_EQ(made != nullptr, SUCCEEDED(result));
         return result;
     },
     "malloc=memory malloc=memory LoadLibraryA=invalid InitRenderer=invalid "
     "CoCreateFreeThreadedMarshaler",
     Nothing},
    {"CreatePage", nullptr,
     [](World& world) {
         CComPtr<IUnknown> made;
         const HRESULT result =
             world.Create(CLSID_PluginPP, IID_IUnknown, reinterpret_cast<void**>(&made));
         EXPECT_EQ(made != nullptr, SUCCEEDED(result));
         return result;
     },
     "malloc=memory malloc=memory", Nothing},
    // COM is not started on this thread, so the registrar comes from its DLL.
    {"Register",
     [](World& world) {
         world.classes.emplace();
         world.classes->PutStranger();
     },
     [](World& world) { return world.module.RegisterServer(); },
     "malloc=memory GetModuleFileNameW=memory CoCreateInstance "
     "LoadLibraryExW=notinitialised malloc=memory malloc=memory "
     "GetModuleFileNameW=memory CoCreateInstance LoadLibraryExW=notinitialised "
     "malloc=memory RegOpenKeyExW=memory RegGetValueW=memory RegCreateKeyExW=memory "
     "RegDeleteTreeW=memory RegCreateKeyExW=memory RegCopyTreeW=memory "
     "RegOpenKeyExW=memory RegOpenKeyExW=memory RegOpenKeyExW=memory malloc=memory "
     "GetModuleFileNameW=memory LoadTypeLibEx=memory",
     [](World& world) {
         EXPECT_TRUE(world.classes->HasEffect());
         EXPECT_EQ(world.module.UnregisterServer(), S_OK);
         EXPECT_TRUE(world.classes->HasStranger());
     }},
    {"Unregister",
     [](World& world) {
         world.classes.emplace();
         world.classes->PutStranger();
         EXPECT_EQ(world.module.RegisterServer(), S_OK);
     },
     [](World& world) {
         if (!world.classes->HasEffect() || !world.classes->HasTypeLibrary())
         {
             world.module.RegisterServer();
         }
         return world.module.UnregisterServer();
     },
     "malloc=memory GetModuleFileNameW=memory CoCreateInstance "
     "LoadLibraryExW=notinitialised malloc=memory malloc=memory "
     "GetModuleFileNameW=memory CoCreateInstance LoadLibraryExW=notinitialised "
     "malloc=memory RegOpenKeyExW=memory RegGetValueW=memory RegOpenKeyExW=memory "
     "RegGetValueW=memory RegOpenKeyExW=memory RegOpenKeyExW=memory malloc=memory "
     "GetModuleFileNameW=memory LoadTypeLibEx=memory RegOpenKeyExW=memory "
     "RegOpenKeyExW=memory RegDeleteTreeW=memory RegCreateKeyExW=memory "
     "RegCopyTreeW=memory RegOpenKeyExW=memory RegOpenKeyExW=memory RegOpenKeyExW=memory "
     "RegDeleteTreeW=memory",
     [](World& world) {
         EXPECT_FALSE(world.classes->HasEffect());
         EXPECT_TRUE(world.classes->HasStranger());
     }},
    {"Setup", [](World& world) { world.MakeSurfaces(DXPF_ARGB32); },
     [](World& world) { return world.SetUp(); },
     "malloc=memory malloc=memory GetGenerationId GetGenerationId GetGenerationId",
     [](World& world) { Execute(world); }},
    {"ExecuteBuffered", PrepareFrame<DXPF_ARGB32>, Execute,
     "GetGenerationId GetGenerationId GetBounds=fail GetBounds=fail malloc "
     "GetPixelFormat GetPixelFormat LockSurface=fail GetBounds=fail malloc=memory "
     "GetFrameInformation malloc=memory RenderFrame LockSurface=fail GetGenerationId",
     CheckFrame},
    {"ExecuteDirect", PrepareFrame<DXPF_NONSTANDARD>, Execute,
     "GetGenerationId GetGenerationId GetBounds=fail GetBounds=fail malloc "
     "GetPixelFormat GetPixelFormat LockSurface=fail GetBounds=fail malloc=memory "
     "GetFrameInformation LockSurface=fail GetBounds=fail GetPixelFormat "
     "GetFrameInformation LockSurface=fail GetBounds=fail GetPixelFormat "
     "GetFrameInformation RenderFrame GetGenerationId",
     CheckFrame},
    {"ExecuteAnimated",
     [](World& world) {
         PrepareFrame<DXPF_ARGB32>(world);
         FakeStream from(Look(1));
         FakeStream to(Look(2));
         world.Effect<IDXTSfAutomation>()->SetKeyframeProps(&from, &to);
         world.Effect<IDXTSfAutomation>()->SetKeyframeFraction(0.5);
         world.Effect<IDXTSfAutomation>()->SetAutomationActive(1);
     },
     Execute,
     "GetGenerationId GetGenerationId GetBounds=fail GetBounds=fail malloc "
     "InterpolateSessionData GetPixelFormat GetPixelFormat LockSurface=fail "
     "GetBounds=fail malloc=memory GetFrameInformation malloc=memory RenderFrame "
     "LockSurface=fail GetGenerationId",
     CheckFrame},
    {"PointPick", PrepareFrame<DXPF_ARGB32>,
     [](World& world) {
         DXVEC point{};
         ULONG index = 7;
         DXVEC found{};
         CComPtr<IDXSurfacePick> pick = world.Effect<IDXSurfacePick>();
         return pick->PointPick(&point, &index, &found);
     },
     "GetBounds=fail GetBounds=fail GetBounds=fail LockSurface=fail", Nothing},
    {"MapBoundsIn2Out", PrepareFrame<DXPF_ARGB32>,
     [](World& world) {
         DXBNDS bounds{};
         return world.Effect<IDXTransform>()->MapBoundsIn2Out(nullptr, 0, 0, &bounds);
     },
     "GetBounds=fail", Nothing},
    {"GetGenerationId", PrepareFrame<DXPF_ARGB32>,
     [](World& world) {
         ULONG id = 0;
         return world.Effect<IDXTransform>()->GetGenerationId(&id);
     },
     "GetGenerationId GetGenerationId", Nothing},
    {"Load", Nothing,
     [](World& world) {
         world.first.Rewind();
         return world.Effect<IPersistStreamInit>()->Load(&world.first);
     },
     "Stat=fail malloc Read=fail", [](World& world) { CheckLook(world, Look(1)); }},
    {"Save", [](World& world) { world.SetLook(Look(5)); },
     [](World& world) {
         world.written.bytes.clear();
         return world.Effect<IPersistStreamInit>()->Save(&world.written, TRUE);
     },
     "malloc Write=fail", [](World& world) { EXPECT_EQ(world.written.bytes, Look(5)); }},
    {"LoadProps", Nothing,
     [](World& world) {
         world.first.Rewind();
         return world.Effect<IDXTSfAutomation>()->LoadProps(&world.first);
     },
     "Stat=fail malloc Read=fail", [](World& world) { CheckLook(world, Look(1)); }},
    {"SaveProps", [](World& world) { world.SetLook(Look(5)); },
     [](World& world) {
         world.written.bytes.clear();
         return world.Effect<IDXTSfAutomation>()->SaveProps(&world.written);
     },
     "malloc Write=fail", [](World& world) { EXPECT_EQ(world.written.bytes, Look(5)); }},
    {"SetKeyframeProps", [](World& world) { world.SetLook(Look(5, 32)); },
     [](World& world) {
         world.first.Rewind();
         world.second.Rewind();
         return world.Effect<IDXTSfAutomation>()->SetKeyframeProps(&world.first, &world.second);
     },
     "Stat=fail malloc Read=fail Stat=fail malloc Read=fail", Nothing},
    {"InterpolateStreams", Nothing,
     [](World& world) {
         world.first.Rewind();
         world.second.Rewind();
         world.written.bytes.clear();
         return world.Effect<IDXTSfAutomation>()->InterpolateStreams(&world.written, &world.first,
                                                                     &world.second, 0.5);
     },
     "Stat=fail malloc Read=fail Stat=fail malloc Read=fail malloc "
     "InterpolateSessionData malloc Write=fail",
     [](World& world) { EXPECT_EQ(world.written.bytes.size(), 64U); }},
    {"GetProps", [](World& world) { world.SetLook(Look(5)); },
     [](World& world) {
         SessionData record;
         return world.Exchange()->GetProps(&record);
     },
     "malloc", [](World& world) { CheckLook(world, Look(5)); }},
    {"SetProps", Nothing,
     [](World& world) {
         SessionData record;
         std::ranges::copy(Look(6), record.AllocateData(64));
         return world.Exchange()->SetProps(&record);
     },
     "malloc", [](World& world) { CheckLook(world, Look(6)); }},
    {"GetPages", Nothing,
     [](World& world) {
         CAUUID pages{7, nullptr};
         const HRESULT result = world.Effect<ISpecifyPropertyPages>()->GetPages(&pages);
         EXPECT_EQ(pages.cElems, SUCCEEDED(result) ? 1U : 0U);
         ::CoTaskMemFree(pages.pElems);
         return result;
     },
     "CoTaskMemAlloc=memory", Nothing},
    {"GetPresetName", Nothing,
     [](World& world) {
         WCHAR name[32] = L"?";
         const HRESULT result = world.Effect<IStaticFilterPreset>()->GetPresetName(0, name, 32);
         EXPECT_STREQ(name, SUCCEEDED(result) ? L"(Default)" : L"");
         return result;
     },
     "LoadStringA=fail", Nothing},
    {"ApplyPreset", Listen,
     [](World& world) { return world.Effect<IStaticFilterPreset>()->ApplyPreset(0); },
     "PostMessageA", Nothing},
    {"InitNew", Listen, [](World& world) { return world.Effect<IPersistStreamInit>()->InitNew(); },
     "PostMessageA", Nothing},
    {"LoadEmpty", Nothing,
     [](World& world) {
         FaultyStream empty;
         return world.Effect<IPersistStreamInit>()->Load(&empty);
     },
     "Stat=fail malloc calloc TlsSetValue", Nothing},
    {"StorageSave",
     [](World& world) {
         world.SetLook(Look(5));
         world.storage = MemoryStorage();
     },
     [](World& world) { return world.Effect<IPersistStorage>()->Save(world.storage, TRUE); },
     "malloc",
     [](World& world) {
         world.SetLook(Look(1));
         EXPECT_EQ(world.Effect<IPersistStorage>()->Load(world.storage), S_OK);
         CheckLook(world, Look(5));
     }},
    {"StorageLoad",
     [](World& world) {
         world.SetLook(Look(5));
         world.storage = MemoryStorage();
         EXPECT_EQ(world.Effect<IPersistStorage>()->Save(world.storage, TRUE), S_OK);
         world.SetLook(Look(1, 32));
     },
     [](World& world) { return world.Effect<IPersistStorage>()->Load(world.storage); }, "malloc",
     [](World& world) { CheckLook(world, Look(5)); }},
    {"MapBoundsOut2In", Nothing,
     [](World& world) {
         DXBNDS from{};
         DXBNDS to{};
         return world.Effect<IDXTransform>()->MapBoundsOut2In(0, &from, 0, &to);
     },
     "", Nothing},
    {"IncrementGenerationId", PrepareFrame<DXPF_ARGB32>,
     [](World& world) { return world.Effect<IDXTransform>()->IncrementGenerationId(TRUE); },
     "GetGenerationId GetGenerationId GetGenerationId", Nothing},
    {"GetObjectSize", Nothing,
     [](World& world) {
         ULONG size = 0;
         return world.Effect<IDXTransform>()->GetObjectSize(&size);
     },
     "", Nothing},
    {"SetMiscFlags", Nothing,
     [](World& world) { return world.Effect<IDXTransform>()->SetMiscFlags(DXTMF_DITHER_OUTPUT); },
     "", Nothing},
    {"GetMiscFlags", Nothing,
     [](World& world) {
         DWORD flags = 0;
         return world.Effect<IDXTransform>()->GetMiscFlags(&flags);
     },
     "", Nothing},
    {"GetInOutInfo", Nothing,
     [](World& world) {
         DWORD flags = 0;
         return world.Effect<IDXTransform>()->GetInOutInfo(FALSE, 0, &flags, nullptr, nullptr,
                                                           nullptr);
     },
     "", Nothing},
    {"GetQuality", Nothing,
     [](World& world) {
         float quality = 0;
         return world.Effect<IDXTransform>()->GetQuality(&quality);
     },
     "", Nothing},
    {"SetSite", Nothing,
     [](World& world) {
         return world.Effect<IObjectWithSite>()->SetSite(world.effect) +
                world.Effect<IObjectWithSite>()->SetSite(nullptr);
     },
     "", Nothing},
    {"GetCapabilities", Nothing,
     [](World& world) {
         LONG value = 0;
         return world.Effect<IDXEffect>()->get_Capabilities(&value);
     },
     "", Nothing},
    {"Progress", Nothing,
     [](World& world) {
         float value = 0;
         world.Effect<IDXEffect>()->get_Progress(&value);
         return world.Effect<IDXEffect>()->put_Progress(0.5F);
     },
     "", Nothing},
    {"StepResolution", Nothing,
     [](World& world) {
         float value = 0;
         return world.Effect<IDXEffect>()->get_StepResolution(&value);
     },
     "", Nothing},
    {"Duration", Nothing,
     [](World& world) {
         float value = 0;
         world.Effect<IDXEffect>()->get_Duration(&value);
         return world.Effect<IDXEffect>()->put_Duration(2.0F);
     },
     "", Nothing},
    {"ObjectSafety", Nothing,
     [](World& world) {
         return world.Effect<IObjectSafety>(IID_IObjectSafety)
             ->SetInterfaceSafetyOptions(IID_IDispatch, 1, 1);
     },
     "", Nothing},
    {"GetClassId", Nothing,
     [](World& world) {
         CLSID id;
         return world.Effect<IPersistStreamInit>()->GetClassID(&id);
     },
     "", Nothing},
    {"GetSizeMax", Nothing,
     [](World& world) {
         ULARGE_INTEGER size;
         return world.Effect<IPersistStreamInit>()->GetSizeMax(&size);
     },
     "", Nothing},
    {"BagInitNew", Nothing,
     [](World& world) { return world.Effect<IPersistPropertyBag>()->InitNew(); }, "", Nothing},
    {"GetPresetCount", Nothing,
     [](World& world) {
         ULONG count = 0;
         return world.Effect<IStaticFilterPreset>()->GetPresetCount(&count);
     },
     "", Nothing},
    {"GetExtensionInfo", Nothing,
     [](World& world) {
         char info[32];
         return world.Effect<ISfVideoPluginExtension>()->GetExtensionInfo(info, 32);
     },
     "", Nothing},
    {"SetExtensionValue", Nothing,
     [](World& world) { return world.Effect<ISfVideoPluginExtension>()->SetExtensionValue(0.5); },
     "", Nothing},
    {"SetAutomationActive", Nothing,
     [](World& world) { return world.Effect<IDXTSfAutomation>()->SetAutomationActive(1); }, "",
     Nothing},
    {"SetKeyframeFraction", Nothing,
     [](World& world) { return world.Effect<IDXTSfAutomation>()->SetKeyframeFraction(0.5); }, "",
     Nothing},
    {"SetChangeSink", Nothing,
     [](World& world) { return world.Effect<IDXTSfAutomation>()->SetChangeSink(nullptr); }, "",
     Nothing},
    {"SetNotifyWindow", Nothing,
     [](World& world) { return world.Exchange()->SetNotifyWindow(nullptr, 0); }, "", Nothing},
    {"GetPreviewFrame", Nothing,
     [](World& world) { return world.Exchange()->GetPreviewFrame() != nullptr ? S_OK : E_POINTER; },
     "", Nothing},
    {"PageSetPageSite", Nothing, [](World& world) { return world.page->SetPageSite(nullptr); }, "",
     Nothing},
    {"PageShow", OpenPage, [](World& world) { return world.page->Show(SW_SHOWNA); }, "", Nothing},
    {"PageMove", OpenPage,
     [](World& world) {
         const RECT rect = world.frame->PageRect();
         return world.page->Move(&rect);
     },
     "MoveWindow", Nothing},
    {"PageDeactivate", OpenPage, [](World& world) { return world.page->Deactivate(); }, "",
     Nothing},
    {"PageTranslateAccelerator", OpenPage,
     [](World& world) {
         MSG message{};
         return world.page->TranslateAccelerator(&message) == S_FALSE ? S_OK : E_FAIL;
     },
     "", Nothing},
    {"PageSetObjects", Nothing,
     [](World& world) {
         IUnknown* object = world.effect;
         return world.page->SetObjects(1, &object);
     },
     "malloc=memory", [](World& world) { EXPECT_EQ(world.page->Apply(), S_OK); }},
    {"PageGetPageInfo", Nothing,
     [](World& world) {
         PROPPAGEINFO info{};
         const HRESULT result = world.page->GetPageInfo(&info);
         EXPECT_TRUE(FAILED(result) || (info.size.cx > 100 && info.size.cy > 10));
         ::CoTaskMemFree(info.pszTitle);
         ::CoTaskMemFree(info.pszDocString);
         ::CoTaskMemFree(info.pszHelpFile);
         return result;
     },
     "FindResourceW=unexpected LoadResource=unexpected LockResource=unexpected "
     "malloc=memory GetDC CreateFontIndirectW SelectObject GetTextExtentPointW "
     "GetTextMetricsW SelectObject LoadStringW CoTaskMemAlloc LoadStringW "
     "CoTaskMemAlloc LoadStringW CoTaskMemAlloc",
     Nothing},
    {"PageActivate",
     [](World& world) {
         world.SetLook(Look(5));
         world.SetObject();
         world.frame = std::make_unique<PageFrame>();
     },
     [](World& world) {
         world.page->Deactivate();
         const HRESULT result = world.Activate();
         EXPECT_EQ(world.frame->PageWindow() != nullptr, SUCCEEDED(result));
         return result;
     },
     "CreateDialogParamW=memory malloc InvalidateRect MoveWindow", Nothing},
    {"PagePaint", OpenPage,
     [](World& world) {
         ::RedrawWindow(world.frame->PageWindow(), nullptr, nullptr,
                        RDW_INVALIDATE | RDW_UPDATENOW);
         return S_OK;
     },
     "GetClientRect BeginPaint CreateSolidBrush FrameRect ExtTextOutW malloc "
     "SetDIBitsToDevice malloc SetDIBitsToDevice malloc GetSessionIcon malloc "
     "SetDIBitsToDevice",
     CheckPanel},
    {"PageRefresh",
     [](World& world) {
         OpenPage(world);
         world.SetLook(Look(6, 80));
     },
     [](World& world) { return world.Send(WM_COMMAND, kPropsChanged); }, "malloc InvalidateRect",
     [](World& world) {
         EXPECT_EQ(world.page->Apply(), S_OK);
         CheckLook(world, Look(6, 80));
     }},
    {"PageApply",
     [](World& world) {
         OpenPage(world);
         world.SetLook(Look(6, 80)); // the page's own record has another size
     },
     [](World& world) { return world.page->Apply(); }, "malloc",
     [](World& world) { CheckLook(world, Look(5)); }},
    {"PageCheckBox",
     [](World& world) {
         OpenPage(world);
         world.PointAt(kOnCheckBox);
     },
     [](World& world) { return world.Click(); },
     "GetCursorPos ScreenToClient GetDC malloc SetDIBitsToDevice",
     [](World& world) {
         const std::uint32_t before = world.Option();
         world.Click();
         EXPECT_EQ(world.Option(), before ^ 1U);
     }},
    {"PageEdit", PrepareEditor<RendererAPI::kEditorAccepted>,
     [](World& world) { return world.Click(); },
     "GetCursorPos ScreenToClient GetDC malloc SetDIBitsToDevice GetDC malloc "
     "SetDIBitsToDevice malloc DoModalUI2 GetSessionDataSize malloc GetSessionData "
     "malloc InvalidateRect",
     [](World& world) { CheckLook(world, Look(9, 96)); }},
    {"PageEditUnavailable", PrepareEditor<RendererAPI::kEditorUnavailable>,
     [](World& world) { return world.Click(); },
     "GetCursorPos ScreenToClient GetDC malloc SetDIBitsToDevice GetDC malloc "
     "SetDIBitsToDevice malloc DoModalUI2",
     [](World& world) {
         FaultPoints::TakeBoxes();
         world.Click();
         EXPECT_EQ(FaultPoints::TakeBoxes().size(), 1U);
         CheckLook(world, Look(5));
     }},
};

std::string WordOf(HRESULT result)
{
    switch (result)
    {
    case S_OK:
        return "";
    case E_OUTOFMEMORY:
    case HRESULT_FROM_WIN32(ERROR_NOT_ENOUGH_MEMORY):
        return "=memory";
    case E_FAIL:
        return "=fail";
    case E_INVALIDARG:
        return "=invalid";
    case E_UNEXPECTED:
        return "=unexpected";
    case CO_E_NOTINITIALIZED:
        return "=notinitialised";
    default:
        return "=" + std::to_string(static_cast<unsigned long>(result));
    }
}

struct Outcome
{
    std::vector<std::string> failed;
    HRESULT result = S_OK;
    HRESULT again = S_OK;
};

// In a thread of its own, whose first exception the module has not seen.
Outcome RunOperation(const Operation& operation, std::size_t nth, FaultPoints::Which which)
{
    Outcome outcome;
    TestThread thread([&] {
        World world;
        if (operation.prepare != nullptr)
        {
            world.MakeObjects();
            operation.prepare(world);
        }
        world.points->Arm(nth, which);
        outcome.result = operation.run(world);
        outcome.failed = world.points->Disarm();
        if (world.effect != nullptr)
        {
            const Bytes look = world.CurrentLook();
            EXPECT_TRUE(std::ranges::all_of(look, [&](auto byte) {
                return byte == look[0] && byte != 0;
            })) << "half a look";
        }
        outcome.again = operation.run(world);
        operation.check(world);
    });
    thread.Join(INFINITE);
    return outcome;
}

class Faults : public testing::TestWithParam<Operation>
{
};

} // namespace

TEST_P(Faults, AtEveryPointGiveTheStatedResultAndLeaveNothing)
{
    std::string answers;
    std::set<HRESULT> known{S_OK};
    for (const auto which : {FaultPoints::Which::One, FaultPoints::Which::Onward})
    {
        for (std::size_t nth = 1;; ++nth)
        {
            SCOPED_TRACE((which == FaultPoints::Which::One ? "only point " : "from point ") +
                         std::to_string(nth));
            const Outcome outcome = RunOperation(GetParam(), nth, which);
            EXPECT_EQ(outcome.again, S_OK);
            EXPECT_EQ(FaultPoints::Held(), (std::map<std::string, int>{}));
            EXPECT_EQ(FakeSurface::LiveSurfaces(), 0);
            EXPECT_EQ(::GetModuleHandleW(L"GlazelDX_x64.dll"), nullptr);
            if (outcome.failed.empty())
            {
                EXPECT_EQ(outcome.result, S_OK) << "nothing failed";
                break;
            }
            if (which == FaultPoints::Which::One)
            {
                answers +=
                    (answers.empty() ? "" : " ") + outcome.failed[0] + WordOf(outcome.result);
                known.insert(outcome.result);
            }
            else
            {
                EXPECT_TRUE(known.contains(outcome.result)) << WordOf(outcome.result);
            }
        }
    }
    EXPECT_EQ(answers, GetParam().answers);
}

// More threads than there is a reserve for, one after the other.
TEST(FaultsOfThreads, WhoseFirstExceptionComesWhenMemoryIsShortLeaveNothing)
{
    TestThread thread([] {
        World world;
        world.MakeObjects();
        const auto load = [&world](FaultPoints::Which which) {
            FaultyStream empty;
            world.points->Arm(2, which);
            EXPECT_EQ(world.Effect<IPersistStreamInit>()->Load(&empty), S_OK);
            EXPECT_GT(world.points->Disarm().size(), 0U);
        };
        load(FaultPoints::Which::One); // this thread's own notes, which the others' come before
        for (int other = 0; other < 200; ++other)
        {
            const auto which =
                other % 2 == 0 ? FaultPoints::Which::Onward : FaultPoints::Which::One;
            const TestThread shortLived([&] { load(which); });
        }
        world.SetLook(Look(5));
        CheckLook(world, Look(5));
    });
    thread.Join(INFINITE);
    EXPECT_EQ(FaultPoints::Held(), (std::map<std::string, int>{}));
}

INSTANTIATE_TEST_SUITE_P(Product, Faults, testing::ValuesIn(kOperations),
                         [](const auto& operation) { return std::string(operation.param.name); });
