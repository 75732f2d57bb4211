// Persistence, pages and safety as a control without a window gets them ready-made.
#include "platform/atl/atlctl.h"
#include "tests/platform/atl/sample_objects.h"

#include <objbase.h>

#include <array>
#include <cstdint>
#include <vector>

namespace
{

constexpr CLSID kPageA{1, 0, 0, {}};
constexpr CLSID kPageB{2, 0, 0, {}};

// Keeps one number and notes how it was asked.
class NumberStream : public IPersistStreamInit
{
public:
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsDirty() noexcept override { return m_dirty; }
    HRESULT STDMETHODCALLTYPE Load(IStream* stream) noexcept override
    {
        ULONG read = 0;
        return stream->Read(&m_number, sizeof(m_number), &read);
    }
    HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clearDirty) noexcept override
    {
        m_clearDirty = clearDirty;
        ULONG written = 0;
        return stream->Write(&m_number, sizeof(m_number), &written);
    }
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER*) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InitNew() noexcept override
    {
        m_number = 7;
        return S_OK;
    }

    std::uint32_t m_number = 0;
    HRESULT m_dirty = S_FALSE;
    BOOL m_clearDirty = FALSE;

protected:
    ~NumberStream() = default;
};

// With `hasStream` false the stream interface is there but not in the map.
template <bool hasStream>
class CControl : public CComObjectRootEx<CComMultiThreadModel>,
                 public CComCoClass<CControl<hasStream>, &CLSID_Sample>,
                 public NumberStream,
                 public IPersistStorageImpl<CControl<hasStream>>,
                 public IPersistPropertyBagImpl<CControl<hasStream>>,
                 public ISpecifyPropertyPagesImpl<CControl<hasStream>>,
                 public IObjectSafetyImpl2<CControl<hasStream>>
{
public:
    DECLARE_POLY_AGGREGATABLE(CControl)

    BEGIN_COM_MAP(CControl)
    COM_INTERFACE_ENTRY(IPersistStorage)
    COM_INTERFACE_ENTRY(IPersistPropertyBag)
    COM_INTERFACE_ENTRY_IID((hasStream ? IID_IPersistStreamInit : IID_INobody), IPersistStreamInit)
    COM_INTERFACE_ENTRY(ISpecifyPropertyPages)
    COM_INTERFACE_ENTRY_IID(IID_IObjectSafety, IObjectSafety)
    END_COM_MAP()

    BEGIN_PROPERTY_MAP(CControl)
    PROP_PAGE(kPageA)
    PROP_PAGE(kPageB)
    PROP_PAGE(kPageA)
    END_PROPERTY_MAP()

    std::uint32_t m_bRequiresSave = 0;
};

// A storage that notes how its streams are opened and refuses.
class RefusingStorage : public IStorage
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateStream(const OLECHAR* name, DWORD mode, DWORD, DWORD,
                                           IStream** stream) override
    {
        return Note(name, mode, stream);
    }
    HRESULT STDMETHODCALLTYPE OpenStream(const OLECHAR* name, void*, DWORD mode, DWORD,
                                         IStream** stream) override
    {
        return Note(name, mode, stream);
    }
    // clang-format off
    HRESULT STDMETHODCALLTYPE CreateStorage(const OLECHAR*, DWORD, DWORD, DWORD, IStorage**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OpenStorage(const OLECHAR*, IStorage*, DWORD, SNB, DWORD, IStorage**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(DWORD, const IID*, SNB, IStorage*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE MoveElementTo(const OLECHAR*, IStorage*, const OLECHAR*, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumElements(DWORD, void*, DWORD, IEnumSTATSTG**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DestroyElement(const OLECHAR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE RenameElement(const OLECHAR*, const OLECHAR*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetElementTimes(const OLECHAR*, const FILETIME*, const FILETIME*, const FILETIME*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetClass(REFCLSID) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetStateBits(DWORD, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
    // clang-format on

    std::wstring m_name;
    DWORD m_mode = 0;

private:
    HRESULT Note(const OLECHAR* name, DWORD mode, IStream** stream)
    {
        m_name = name;
        m_mode = mode;
        *stream = nullptr;
        return STG_E_ACCESSDENIED;
    }
};

class ControlTest : public AtlTest
{
protected:
    template <bool hasStream = true>
    CComPtr<CComObject<CControl<hasStream>>> Make()
    {
        CComObject<CControl<hasStream>>* object = nullptr;
        CComObject<CControl<hasStream>>::CreateInstance(&object);
        return object;
    }
    CComPtr<IStorage> MemoryStorage()
    {
        CComPtr<ILockBytes> bytes;
        ::CreateILockBytesOnHGlobal(nullptr, TRUE, &bytes);
        CComPtr<IStorage> storage;
        ::StgCreateDocfileOnILockBytes(bytes, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE,
                                       0, &storage);
        return storage;
    }
};

TEST_F(ControlTest, ClassIdsAreTheClasss)
{
    const auto control = Make();
    CLSID clsid{};
    EXPECT_EQ(static_cast<IPersistStorage*>(control.p)->GetClassID(&clsid), S_OK);
    EXPECT_TRUE(::IsEqualCLSID(clsid, CLSID_Sample));
    EXPECT_EQ(static_cast<IPersistPropertyBag*>(control.p)->GetClassID(nullptr), E_POINTER);
    EXPECT_EQ(static_cast<IPersistStorage*>(control.p)->GetClassID(nullptr), E_POINTER);
}

TEST_F(ControlTest, PagesAreListedOnceEach)
{
    CAUUID pages{};
    ASSERT_EQ(Make()->GetPages(&pages), S_OK);
    ASSERT_EQ(pages.cElems, 2U);
    EXPECT_TRUE(::IsEqualCLSID(pages.pElems[0], kPageA));
    EXPECT_TRUE(::IsEqualCLSID(pages.pElems[1], kPageB));
    ::CoTaskMemFree(pages.pElems);
    EXPECT_EQ(Make()->GetPages(nullptr), E_POINTER);
}

TEST_F(ControlTest, WhatIsSavedInAStorageIsLoadedFromIt)
{
    const auto storage = MemoryStorage();
    const auto saved = Make();
    saved->m_number = 0xC0FFEE;
    const CComPtr<IPersistStorage> savedStorage(saved.p);
    ASSERT_EQ(savedStorage->Save(storage, TRUE), S_OK);
    EXPECT_EQ(saved->m_clearDirty, TRUE);

    const auto loaded = Make();
    ASSERT_EQ(CComPtr<IPersistStorage>(loaded.p)->Load(storage), S_OK);
    EXPECT_EQ(loaded->m_number, 0xC0FFEEU);
}

TEST_F(ControlTest, AStorageWithoutContentsIsTheStoragesError)
{
    EXPECT_EQ(CComPtr<IPersistStorage>(Make().p)->Load(MemoryStorage()), STG_E_FILENOTFOUND);
}

TEST_F(ControlTest, TheStreamIsOpenedWithTheModesThatHostsExpect)
{
    const CComPtr<IPersistStorage> persist(Make().p);
    RefusingStorage storage;
    EXPECT_EQ(persist->Load(&storage), STG_E_ACCESSDENIED);
    EXPECT_EQ(storage.m_name, L"Contents");
    EXPECT_EQ(storage.m_mode, DWORD{STGM_DIRECT | STGM_SHARE_EXCLUSIVE});
    EXPECT_EQ(persist->Save(&storage, FALSE), STG_E_ACCESSDENIED);
    EXPECT_EQ(storage.m_name, L"Contents");
    EXPECT_EQ(storage.m_mode, DWORD{STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_CREATE});
}

TEST_F(ControlTest, StorageCallsGoToTheObjectsOwnStream)
{
    const auto control = Make();
    const CComPtr<IPersistStorage> persist(control.p);
    EXPECT_EQ(persist->IsDirty(), S_FALSE);
    control->m_dirty = S_OK;
    EXPECT_EQ(persist->IsDirty(), S_OK);
    EXPECT_EQ(persist->InitNew(nullptr), S_OK);
    EXPECT_EQ(control->m_number, 7U);
    EXPECT_EQ(persist->SaveCompleted(nullptr), S_OK);
    EXPECT_EQ(persist->HandsOffStorage(), S_OK);
}

TEST_F(ControlTest, ANullStorageIsAnInvalidArgument)
{
    const CComPtr<IPersistStorage> persist(Make().p);
    EXPECT_EQ(persist->Load(nullptr), E_INVALIDARG);
    EXPECT_EQ(persist->Save(nullptr, TRUE), E_INVALIDARG);
}

TEST_F(ControlTest, AnObjectWithoutAStreamFailsToPersistInAStorage)
{
    const CComPtr<IPersistStorage> persist(Make<false>().p);
    const auto storage = MemoryStorage();
    EXPECT_EQ(persist->IsDirty(), E_FAIL);
    EXPECT_EQ(persist->InitNew(storage), E_FAIL);
    EXPECT_EQ(persist->Load(storage), E_FAIL);
    EXPECT_EQ(persist->Save(storage, TRUE), E_FAIL);
}

TEST_F(ControlTest, InsideAnAggregateItsOwnStreamIsUsed)
{
    Outer outer; // answers for nothing until it has its inner object
    CComPtr<IUnknown> inner;
    ASSERT_EQ(CControl<true>::_CreatorClass::CreateInstance(&outer, IID_IUnknown,
                                                            reinterpret_cast<void**>(&inner)),
              S_OK);
    EXPECT_EQ(Query<IPersistStorage>(inner)->InitNew(nullptr), S_OK);
}

TEST_F(ControlTest, APropertyBagHoldsNothingButMustBeThere)
{
    const auto control = Make();
    const CComPtr<IPersistPropertyBag> persist(control.p);
    EXPECT_EQ(persist->Load(nullptr, nullptr), E_POINTER);
    EXPECT_EQ(persist->Save(nullptr, TRUE, TRUE), E_POINTER);
    EXPECT_EQ(control->m_bRequiresSave, 0U);
    EXPECT_EQ(persist->InitNew(), S_OK);
    EXPECT_EQ(control->m_bRequiresSave, 1U);
}

TEST_F(ControlTest, SafetyIsSupportedForUntrustedCallersOfTheListedInterfaces)
{
    const auto control = Make();
    for (const IID* iid :
         {&IID_IDispatch, &IID_IPersistPropertyBag, &IID_IPersistStorage, &IID_IPersistStream})
    {
        DWORD supported = 9;
        DWORD enabled = 9;
        EXPECT_EQ(control->GetInterfaceSafetyOptions(*iid, &supported, &enabled), S_OK);
        EXPECT_EQ(supported, DWORD{INTERFACESAFE_FOR_UNTRUSTED_CALLER});
        EXPECT_EQ(enabled, 0U);
    }
}

TEST_F(ControlTest, SafetyIsUnknownForOtherInterfaces)
{
    const auto control = Make();
    DWORD supported = 9;
    DWORD enabled = 9;
    EXPECT_EQ(control->GetInterfaceSafetyOptions(IID_IPersistStreamInit, &supported, &enabled),
              E_NOINTERFACE);
    EXPECT_EQ(supported, 0U);
    EXPECT_EQ(enabled, 0U);
    EXPECT_EQ(control->SetInterfaceSafetyOptions(IID_IPersistStreamInit, 1, 1), E_NOINTERFACE);
}

TEST_F(ControlTest, SafetyIsKeptForEachInterfaceAsEnabledUnderTheMask)
{
    const auto control = Make();
    DWORD supported = 0;
    DWORD enabled = 0;
    EXPECT_EQ(control->SetInterfaceSafetyOptions(IID_IDispatch, 3, 3), S_OK);
    control->GetInterfaceSafetyOptions(IID_IDispatch, &supported, &enabled);
    EXPECT_EQ(enabled, 1U); // of what was stored only the supported option is shown
    control->GetInterfaceSafetyOptions(IID_IPersistStorage, &supported, &enabled);
    EXPECT_EQ(enabled, 0U);
    EXPECT_EQ(control->SetInterfaceSafetyOptions(IID_IDispatch, 0, 1), S_OK);
    control->GetInterfaceSafetyOptions(IID_IDispatch, &supported, &enabled);
    EXPECT_EQ(enabled, 0U);
}

TEST_F(ControlTest, SafetyNeedsBothPlaces)
{
    const auto control = Make();
    DWORD place = 0;
    EXPECT_EQ(control->GetInterfaceSafetyOptions(IID_IDispatch, nullptr, &place), E_POINTER);
    EXPECT_EQ(control->GetInterfaceSafetyOptions(IID_IDispatch, &place, nullptr), E_POINTER);
}

} // namespace
