// IDispatch over registered type libraries: one that nobody registers, and the system's own.
#include "tests/doubles/deadline.h"
#include "tests/doubles/failing_allocation.h"
#include "tests/doubles/test_thread.h"
#include "tests/platform/atl/sample_objects.h"

#include <oleauto.h>
#include <olectl.h>

#include <memory>

namespace
{

// clang-format off
constexpr GUID kUnregisteredLibrary{0x51A0F8A1, 0x0201, 0x4C0E, {0x9A, 0x11, 0x5B, 0x2C, 0x7D, 0x1E, 0x40, 0x01}};
constexpr GUID kStandardOle{0x00020430, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
constexpr IID kFontDisp{0xBEF6E003, 0xA874, 0x101A, {0x8B, 0xBA, 0x00, 0xAA, 0x00, 0x30, 0x0C, 0xAB}};
// clang-format on

template <const IID* piid, const GUID* plibid, WORD wMajor>
class CDispatching : public CComObjectRootEx<CComMultiThreadModel>,
                     public IDispatchImpl<IDispatch, piid, plibid, wMajor, 0>
{
public:
    BEGIN_COM_MAP(CDispatching)
    COM_INTERFACE_ENTRY(IDispatch)
    END_COM_MAP()
};
using CUnregistered = CDispatching<&kFontDisp, &kUnregisteredLibrary, 1>;
using CRegistered = CDispatching<&kFontDisp, &kStandardOle, 2>;
using CWrongVersion = CDispatching<&kFontDisp, &kStandardOle, 99>;
using CWrongInterface = CDispatching<&IID_INobody, &kStandardOle, 2>;

template <typename Class>
CComPtr<IDispatch> Make()
{
    CComObject<Class>* object = nullptr;
    CComObject<Class>::CreateInstance(&object);
    return CComPtr<IDispatch>(object);
}

using DispatchTest = AtlTest;

TEST_F(DispatchTest, SaysThatThereIsTypeInformationWithoutLoadingAny)
{
    UINT count = 0;
    EXPECT_EQ(Make<CUnregistered>()->GetTypeInfoCount(&count), S_OK);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(Make<CUnregistered>()->GetTypeInfoCount(nullptr), E_POINTER);
}

TEST_F(DispatchTest, AnUnregisteredLibraryIsReportedByEveryCallThatNeedsIt)
{
    const auto object = Make<CUnregistered>();
    ITypeInfo* info = reinterpret_cast<ITypeInfo*>(this);
    EXPECT_EQ(object->GetTypeInfo(0, LOCALE_NEUTRAL, &info), TYPE_E_LIBNOTREGISTERED);
    EXPECT_EQ(info, nullptr);
    WCHAR text[] = L"Name";
    LPOLESTR name = text;
    DISPID id = 0;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_NEUTRAL, &id),
              TYPE_E_LIBNOTREGISTERED);
    DISPPARAMS none{};
    EXPECT_EQ(object->Invoke(0, IID_NULL, LOCALE_NEUTRAL, DISPATCH_PROPERTYGET, &none, nullptr,
                             nullptr, nullptr),
              TYPE_E_LIBNOTREGISTERED);
}

TEST_F(DispatchTest, AnotherVersionOfTheLibraryIsNotTaken)
{
    CComPtr<ITypeInfo> info;
    EXPECT_EQ(Make<CWrongVersion>()->GetTypeInfo(0, LOCALE_NEUTRAL, &info),
              TYPE_E_LIBNOTREGISTERED);
}

TEST_F(DispatchTest, AnInterfaceThatTheLibraryLacksIsTheLoadersError)
{
    CComPtr<ITypeInfo> info;
    EXPECT_EQ(Make<CWrongInterface>()->GetTypeInfo(0, LOCALE_NEUTRAL, &info),
              TYPE_E_ELEMENTNOTFOUND);
}

TEST_F(DispatchTest, ThereIsOneTypeInformationOnly)
{
    CComPtr<ITypeInfo> info;
    EXPECT_EQ(Make<CRegistered>()->GetTypeInfo(1, LOCALE_NEUTRAL, &info), DISP_E_BADINDEX);
    EXPECT_EQ(Make<CRegistered>()->GetTypeInfo(0, LOCALE_NEUTRAL, nullptr), E_POINTER);
}

TEST_F(DispatchTest, FindsNamesInARegisteredLibrary)
{
    WCHAR text[] = L"Bold";
    LPOLESTR name = text;
    DISPID id = 0;
    EXPECT_EQ(Make<CRegistered>()->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_NEUTRAL, &id), S_OK);
    EXPECT_EQ(id, DISPID_FONT_BOLD);
}

TEST_F(DispatchTest, LoadsTheTypeInformationOnceForAllObjectsAndAgainAfterTerm)
{
    CComPtr<ITypeInfo> first;
    CComPtr<ITypeInfo> second;
    ASSERT_EQ(Make<CRegistered>()->GetTypeInfo(0, LOCALE_NEUTRAL, &first), S_OK);
    ASSERT_EQ(Make<CRegistered>()->GetTypeInfo(0, LOCALE_NEUTRAL, &second), S_OK);
    EXPECT_EQ(first.p, second.p);
    const auto references = [&] {
        first->AddRef();
        return first->Release();
    };
    const ULONG kept = references();
    m_module.Term();
    EXPECT_EQ(references(), kept - 1) << "let go of";
    CComPtr<ITypeInfo> third;
    EXPECT_EQ(Make<CRegistered>()->GetTypeInfo(0, LOCALE_NEUTRAL, &third), S_OK);
}

TEST_F(DispatchTest, TypeInformationThatNobodyCouldLetGoOfIsNotKept)
{
    const auto object = Make<CRegistered>();
    CComPtr<ITypeInfo> info;
    {
        const NoMemory shortage;
        EXPECT_EQ(object->GetTypeInfo(0, LOCALE_NEUTRAL, &info), E_OUTOFMEMORY);
        EXPECT_EQ(info, nullptr);
    }
    EXPECT_EQ(object->GetTypeInfo(0, LOCALE_NEUTRAL, &info), S_OK);
}

// Loading takes the cache's lock and then the module's; ending the module must not wait for a cache
// with its own lock held.
TEST_F(DispatchTest, TypeInformationLoadsWhileTheModuleRunsItsTermFunctions)
{
    struct Loader
    {
        bool loaded = false;
        static void WINAPI Load(DWORD_PTR self)
        {
            // NOLINTNEXTLINE(performance-no-int-to-ptr): a term function's argument is an integer
            auto& loader = *reinterpret_cast<Loader*>(self);
            loader.thread = std::make_unique<TestThread>([] {
                ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
                CComPtr<ITypeInfo> info;
                EXPECT_EQ(Make<CRegistered>()->GetTypeInfo(0, LOCALE_NEUTRAL, &info), S_OK);
                info.Release();
                ::CoUninitialize();
            });
            loader.loaded = loader.thread->Join(kDeadlineMs);
        }
        std::unique_ptr<TestThread> thread;
    } loader;
    ASSERT_EQ(m_module.AddTermFunc(&Loader::Load, reinterpret_cast<DWORD_PTR>(&loader)), S_OK);
    m_module.Term();
    EXPECT_TRUE(loader.loaded) << "neither waits for the other";
    loader.thread.reset();
}

} // namespace
