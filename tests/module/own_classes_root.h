// A registry of classes for one process.
#pragma once

#include <gtest/gtest.h>

#include <windows.h>

#include <iterator>
#include <string>

// HKEY_CLASSES_ROOT is an empty key of this process's own for as long as this lives: registering
// changes nothing for anybody else.
class OwnClassesRoot
{
public:
    OwnClassesRoot()
    {
        ::RegCreateKeyExW(HKEY_CURRENT_USER, m_path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, &m_key, nullptr);
        EXPECT_EQ(::RegOverridePredefKey(HKEY_CLASSES_ROOT, m_key), ERROR_SUCCESS);
    }
    ~OwnClassesRoot()
    {
        ::RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
        ::RegDeleteTreeW(m_key, nullptr);
        ::RegCloseKey(m_key);
        ::RegDeleteKeyW(HKEY_CURRENT_USER, m_path.c_str());
    }
    OwnClassesRoot(const OwnClassesRoot&) = delete;
    OwnClassesRoot& operator=(const OwnClassesRoot&) = delete;

    // From now on nothing can be written there.
    void Vanish() const { ::RegDeleteKeyW(HKEY_CURRENT_USER, m_path.c_str()); }
    bool HasEffect() const { return Has(L"CLSID\\{B47A199B-15E2-4836-BD39-419904B5D292}\\ProgID"); }
    bool HasTypeLibrary() const
    {
        return Has(L"TypeLib\\{CF41FD25-F1F3-4B65-A240-3D4E880D868D}\\1.0");
    }
    // Another program registers an interface that the product's type library has too.
    void PutStranger(const std::wstring& library = kStranger) const
    {
        ::RegSetKeyValueW(m_key, kStrangersInterface, nullptr, REG_SZ, library.c_str(),
                          static_cast<DWORD>((library.size() + 1) * sizeof(wchar_t)));
    }
    bool HasStranger(const std::wstring& library = kStranger) const
    {
        wchar_t text[std::size(kStranger)] = L"";
        DWORD size = sizeof text;
        ::RegGetValueW(m_key, kStrangersInterface, nullptr, RRF_RT_REG_SZ, nullptr, text, &size);
        return text == library;
    }

private:
    bool Has(const wchar_t* path) const
    {
        HKEY key = nullptr;
        const bool has = ::RegOpenKeyExW(m_key, path, 0, KEY_READ, &key) == ERROR_SUCCESS;
        ::RegCloseKey(key);
        return has;
    }

    static constexpr wchar_t kStrangersInterface[] =
        L"Interface\\{E31FB81B-1335-11D1-8189-0000F87557DB}\\TypeLib";
    static constexpr wchar_t kStranger[] = L"{01234567-89AB-CDEF-0123-456789ABCDEF}";

    const std::wstring m_path =
        L"Software\\Glazel registration test " + std::to_wstring(::GetCurrentProcessId());
    HKEY m_key = nullptr;
};
