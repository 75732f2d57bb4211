// Small COM classes to try the shells on, and a module around each test.
#pragma once

#include "platform/atl/atlcom.h"
#include "tests/doubles/foreign_exception.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <new>

// clang-format off
inline constexpr IID IID_IFirst{0x51A0F8A1, 0x0001, 0x4C0E, {0x9A, 0x11, 0x5B, 0x2C, 0x7D, 0x1E, 0x40, 0x01}};
inline constexpr IID IID_ISecond{0x51A0F8A1, 0x0002, 0x4C0E, {0x9A, 0x11, 0x5B, 0x2C, 0x7D, 0x1E, 0x40, 0x01}};
inline constexpr IID IID_INobody{0x51A0F8A1, 0x0004, 0x4C0E, {0x9A, 0x11, 0x5B, 0x2C, 0x7D, 0x1E, 0x40, 0x01}};
inline constexpr CLSID CLSID_Sample{0x51A0F8A1, 0x0101, 0x4C0E, {0x9A, 0x11, 0x5B, 0x2C, 0x7D, 0x1E, 0x40, 0x01}};
inline constexpr CLSID CLSID_Other{0x51A0F8A1, 0x0102, 0x4C0E, {0x9A, 0x11, 0x5B, 0x2C, 0x7D, 0x1E, 0x40, 0x01}};
// clang-format on

struct IFirst : IUnknown
{
    virtual int STDMETHODCALLTYPE First() = 0;
};
struct ISecond : IUnknown
{
    virtual int STDMETHODCALLTYPE Second() = 0;
};
// clang-format off
__CRT_UUID_DECL(IFirst, 0x51A0F8A1, 0x0001, 0x4C0E, 0x9A, 0x11, 0x5B, 0x2C, 0x7D, 0x1E, 0x40, 0x01)
__CRT_UUID_DECL(ISecond, 0x51A0F8A1, 0x0002, 0x4C0E, 0x9A, 0x11, 0x5B, 0x2C, 0x7D, 0x1E, 0x40, 0x01)
// clang-format on

// What CSample is to do, and what it did.
struct SampleScript
{
    HRESULT finalConstruct = S_OK;
    bool queryInFinalConstruct = false;
    bool queryInFinalRelease = false;
    enum class Throw
    {
        Nothing,
        BadAlloc,
        Other
    } constructorThrows = Throw::Nothing;
    int alive = 0;
    int finalReleases = 0;
};
inline SampleScript g_script;

class CSampleBase : public CComObjectRootEx<CComMultiThreadModel>, public ISecond
{
public:
    BEGIN_COM_MAP(CSampleBase)
    COM_INTERFACE_ENTRY(ISecond)
    END_COM_MAP()

    int STDMETHODCALLTYPE Second() override { return 2; }
};

// IFirst of its own, ISecond of its base, and the free-threaded marshaler aggregated.
class CSample : public CSampleBase, public CComCoClass<CSample, &CLSID_Sample>, public IFirst
{
public:
    CSample()
    {
        if (g_script.constructorThrows == SampleScript::Throw::BadAlloc)
        {
            throw std::bad_alloc();
        }
        if (g_script.constructorThrows == SampleScript::Throw::Other)
        {
            throw 1;
        }
        ++g_script.alive;
    }
    ~CSample() { --g_script.alive; }
    CSample(const CSample&) = delete;
    CSample& operator=(const CSample&) = delete;

    DECLARE_GET_CONTROLLING_UNKNOWN()

    BEGIN_COM_MAP(CSample)
    COM_INTERFACE_ENTRY(IFirst)
    COM_INTERFACE_ENTRY_AGGREGATE(IID_IMarshal, m_marshaler.p)
    COM_INTERFACE_ENTRY_CHAIN(CSampleBase)
    END_COM_MAP()

    HRESULT FinalConstruct() noexcept
    {
        if (g_script.queryInFinalConstruct)
        {
            Query();
        }
        const HRESULT hr = ::CoCreateFreeThreadedMarshaler(GetControllingUnknown(), &m_marshaler);
        return SUCCEEDED(hr) ? g_script.finalConstruct : hr;
    }
    void FinalRelease() noexcept
    {
        ++g_script.finalReleases;
        if (g_script.queryInFinalRelease)
        {
            Query();
        }
    }

    int STDMETHODCALLTYPE First() override { return 1; }

    CComPtr<IUnknown> m_marshaler;

private:
    void Query() noexcept
    {
        CComPtr<ISecond> second;
        GetControllingUnknown()->QueryInterface(IID_ISecond, reinterpret_cast<void**>(&second));
    }
};

class CPolySample : public CSample
{
public:
    DECLARE_POLY_AGGREGATABLE(CPolySample)
};

// ISecond alone.
class COther : public CSampleBase, public CComCoClass<COther, &CLSID_Other>
{
};

// An outer object that knows nothing but its inner one.
class Outer : public IUnknown
{
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        ++queries;
        if (::IsEqualIID(riid, IID_IUnknown))
        {
            *ppv = this;
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return inner != nullptr ? inner->QueryInterface(riid, ppv) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override
    {
        Throw(throwsFromAddRef);
        return ++references;
    }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    CComPtr<IUnknown> inner;
    Throws throwsFromAddRef = Throws::Nothing;
    ULONG references = 1; // lives on the test's stack
    int queries = 0;
};

// COM for the test's thread and a module of its own; afterwards nothing may be left alive.
class AtlTest : public ::testing::Test
{
protected:
    AtlTest()
    {
        ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        g_script = {};
    }
    ~AtlTest() override { ::CoUninitialize(); }
    AtlTest(const AtlTest&) = delete;
    AtlTest& operator=(const AtlTest&) = delete;

    void TearDown() override
    {
        EXPECT_EQ(g_script.alive, 0);
        EXPECT_EQ(m_module.GetLockCount(), 0);
    }

    CComModule m_module;
};

template <typename Q>
CComPtr<Q> Query(IUnknown* object)
{
    CComPtr<Q> found;
    object->QueryInterface(__uuidof(Q), reinterpret_cast<void**>(&found));
    return found;
}
