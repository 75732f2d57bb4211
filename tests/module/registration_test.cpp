// Self-registration with a registrar in the system's place: what it is asked for, and in which
// order, and that its failures come back as they are. What the real one writes:
// tests/registration/.
#include "module/resource.h"
#include "tests/module/own_classes_root.h"
#include "tests/module/plugin_module.h"

#include <gtest/gtest.h>

#include <objbase.h>
#include <oleauto.h>

#include <iterator>
#include <string>
#include <vector>

namespace
{

// clang-format off
constexpr CLSID kRegistrarClass{0x44EC053A, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
constexpr IID kRegistrarInterface{0x44EC053B, 0x400F, 0x11D0, {0x9D, 0xCD, 0x00, 0xA0, 0xC9, 0x03, 0x91, 0xD3}};
// clang-format on
constexpr HRESULT kFirstFailure = static_cast<HRESULT>(0x80040ABCU);
constexpr HRESULT kSecondFailure = static_cast<HRESULT>(0x80040DEFU);

// The system's registrar interface.
struct IRegistrar : IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE AddReplacement(LPCOLESTR key, LPCOLESTR item) noexcept = 0;
    virtual HRESULT STDMETHODCALLTYPE ClearReplacements() noexcept = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegisterSz(LPCOLESTR, LPCOLESTR,
                                                         LPCOLESTR) noexcept = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregisterSz(LPCOLESTR, LPCOLESTR,
                                                           LPCOLESTR) noexcept = 0;
    virtual HRESULT STDMETHODCALLTYPE FileRegister(LPCOLESTR) noexcept = 0;
    virtual HRESULT STDMETHODCALLTYPE FileUnregister(LPCOLESTR) noexcept = 0;
    virtual HRESULT STDMETHODCALLTYPE StringRegister(LPCOLESTR) noexcept = 0;
    virtual HRESULT STDMETHODCALLTYPE StringUnregister(LPCOLESTR) noexcept = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceRegister(LPCOLESTR file, UINT id,
                                                       LPCOLESTR type) noexcept = 0;
    virtual HRESULT STDMETHODCALLTYPE ResourceUnregister(LPCOLESTR file, UINT id,
                                                         LPCOLESTR type) noexcept = 0;
};

// Notes what it is asked for and answers with `results`, one for each script; writes nothing.
class FakeRegistrar : public IRegistrar
{
public:
    std::vector<std::wstring> asked;
    std::vector<HRESULT> results;

    // IUnknown; lives longer than all who use it
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override
    {
        const bool known = iid == IID_IUnknown || iid == kRegistrarInterface;
        *object = known ? static_cast<IRegistrar*>(this) : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 2; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }

    // IRegistrar
    HRESULT STDMETHODCALLTYPE AddReplacement(LPCOLESTR key, LPCOLESTR item) noexcept override
    {
        asked.push_back(std::wstring(key) + L"=" + item);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ClearReplacements() noexcept override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ResourceRegisterSz(LPCOLESTR, LPCOLESTR, LPCOLESTR) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE ResourceUnregisterSz(LPCOLESTR, LPCOLESTR,
                                                   LPCOLESTR) noexcept override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE FileRegister(LPCOLESTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE FileUnregister(LPCOLESTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE StringRegister(LPCOLESTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE StringUnregister(LPCOLESTR) noexcept override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ResourceRegister(LPCOLESTR file, UINT id,
                                               LPCOLESTR type) noexcept override
    {
        return Script(L"register ", file, id, type);
    }
    HRESULT STDMETHODCALLTYPE ResourceUnregister(LPCOLESTR file, UINT id,
                                                 LPCOLESTR type) noexcept override
    {
        return Script(L"unregister ", file, id, type);
    }

private:
    HRESULT Script(const wchar_t* deed, LPCOLESTR file, UINT id, LPCOLESTR type)
    {
        asked.push_back(deed + std::to_wstring(id) + L" " + type + L" of " + file);
        return m_scripts < results.size() ? results[m_scripts++] : E_UNEXPECTED;
    }

    std::size_t m_scripts = 0;
};

class FakeFactory : public IClassFactory
{
public:
    explicit FakeFactory(FakeRegistrar& registrar) : m_registrar(registrar) {}

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override
    {
        const bool known = iid == IID_IUnknown || iid == IID_IClassFactory;
        *object = known ? this : nullptr;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() noexcept override { return 2; }
    ULONG STDMETHODCALLTYPE Release() noexcept override { return 1; }

    // IClassFactory
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** object) noexcept override
    {
        return m_registrar.QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) noexcept override { return S_OK; }

private:
    FakeRegistrar& m_registrar;
};

class Registration : public testing::Test
{
protected:
    Registration()
    {
        EXPECT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        EXPECT_EQ(::CoRegisterClassObject(kRegistrarClass, &m_factory, CLSCTX_INPROC_SERVER,
                                          REGCLS_MULTIPLEUSE, &m_cookie),
                  S_OK);
    }
    ~Registration() override
    {
        ::CoRevokeClassObject(m_cookie);
        ::CoUninitialize();
    }

    std::wstring ModulePath() const
    {
        wchar_t path[MAX_PATH] = L"";
        ::GetModuleFileNameW(m_module.Handle(), path, static_cast<DWORD>(std::size(path)));
        return path;
    }
    // What the registrar is asked for when these scripts are run.
    std::vector<std::wstring> Scripts(const wchar_t* deed, const std::vector<int>& ids)
    {
        const std::wstring path = ModulePath();
        std::vector<std::wstring> expected;
        for (const int id : ids)
        {
            expected.push_back(L"Module=" + path);
            expected.push_back(L"Module_Raw=" + path);
            expected.push_back(std::wstring(deed) + L" " + std::to_wstring(id) + L" REGISTRY of " +
                               path);
        }
        return expected;
    }

    FakeRegistrar m_registrar;
    FakeFactory m_factory{m_registrar};
    DWORD m_cookie = 0;
    PluginModule m_module;
    OwnClassesRoot m_classes;
};

} // namespace

TEST_F(Registration, EndsWithTheFirstScriptsFailure)
{
    m_registrar.results = {kFirstFailure};
    EXPECT_EQ(m_module.RegisterServer(), kFirstFailure);
    EXPECT_EQ(m_registrar.asked, Scripts(L"register", {IDR_PLUGIN}));
    EXPECT_FALSE(m_classes.HasTypeLibrary());
}

TEST_F(Registration, RunsTheEffectsScriptAndThenThePages)
{
    m_registrar.results = {S_OK, kSecondFailure};
    EXPECT_EQ(m_module.RegisterServer(), kSecondFailure);
    EXPECT_EQ(m_registrar.asked, Scripts(L"register", {IDR_PLUGIN, IDR_PLUGINPP}));
    EXPECT_FALSE(m_classes.HasTypeLibrary());
}

TEST_F(Registration, RegistersTheTypeLibraryAfterTheScripts)
{
    m_registrar.results = {S_OK, S_OK};
    EXPECT_EQ(m_module.RegisterServer(), S_OK);
    EXPECT_EQ(m_registrar.asked, Scripts(L"register", {IDR_PLUGIN, IDR_PLUGINPP}));
    EXPECT_TRUE(m_classes.HasTypeLibrary());
}

TEST_F(Registration, GivesAnInterfaceBackWhateverItsLibraryIsCalled)
{
    m_registrar.results = {S_OK, S_OK, S_OK, S_OK};
    m_classes.PutStranger(L"no identifier");
    EXPECT_EQ(m_module.RegisterServer(), S_OK);
    EXPECT_FALSE(m_classes.HasStranger(L"no identifier"));
    EXPECT_EQ(m_module.UnregisterServer(), S_OK);
    EXPECT_TRUE(m_classes.HasStranger(L"no identifier"));
}

TEST_F(Registration, ReturnsTheFailureOfTheTypeLibrary)
{
    CComPtr<ITypeLib> library;
    std::wstring path = ModulePath();
    ASSERT_EQ(::LoadTypeLibEx(path.c_str(), REGKIND_NONE, &library), S_OK);
    m_registrar.results = {S_OK, S_OK};
    m_classes.Vanish();
    const HRESULT failure = ::RegisterTypeLib(library, path.data(), nullptr);
    ASSERT_TRUE(FAILED(failure));
    EXPECT_EQ(m_module.RegisterServer(), failure);
    EXPECT_EQ(m_registrar.asked, Scripts(L"register", {IDR_PLUGIN, IDR_PLUGINPP}));
}

TEST_F(Registration, TakesOutWhatItCanAndReturnsTheFirstFailure)
{
    m_registrar.results = {S_OK, S_OK, kFirstFailure, kSecondFailure};
    ASSERT_EQ(m_module.RegisterServer(), S_OK);
    m_registrar.asked.clear();
    EXPECT_EQ(m_module.UnregisterServer(), kFirstFailure);
    EXPECT_EQ(m_registrar.asked, Scripts(L"unregister", {IDR_PLUGIN, IDR_PLUGINPP}));
    EXPECT_FALSE(m_classes.HasTypeLibrary());
}

TEST_F(Registration, ALaterFailureOfUnregisteringIsReturnedToo)
{
    m_registrar.results = {S_OK, kSecondFailure};
    EXPECT_EQ(m_module.UnregisterServer(), kSecondFailure);
}
