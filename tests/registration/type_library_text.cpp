#include "tests/registration/type_library_text.h"

#include "platform/atl/atlcomcli.h"

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <type_traits>

namespace
{

void Check(HRESULT result, const char* what)
{
    if (FAILED(result))
    {
        throw std::runtime_error(what);
    }
}

std::string Utf8(const wchar_t* text)
{
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string converted(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text, -1, converted.data(), size, nullptr, nullptr);
    converted.resize(converted.size() - 1); // the final zero
    return converted;
}

std::string Text(REFGUID guid)
{
    WCHAR text[64] = L"";
    ::StringFromGUID2(guid, text, 64);
    return Utf8(text);
}

// A string of COM's, freed with this.
class Words
{
public:
    Words() = default;
    ~Words() { ::SysFreeString(m_text); }
    Words(const Words&) = delete;
    Words& operator=(const Words&) = delete;
    BSTR* operator&() { return &m_text; }
    std::string Quoted() const { return '"' + Utf8(m_text == nullptr ? L"" : m_text) + '"'; }

private:
    BSTR m_text = nullptr;
};

// An attribute record, given back with this.
template <typename Record, typename Owner>
class Attributes
{
public:
    using GiveBack = void (STDMETHODCALLTYPE Owner::*)(Record*);
    Attributes(Owner* owner, Record* record, GiveBack giveBack)
        : m_owner(owner), m_record(record), m_giveBack(giveBack)
    {
    }
    ~Attributes() { (m_owner->*m_giveBack)(m_record); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const Record* operator->() const { return m_record; }

private:
    Owner* m_owner;
    Record* m_record;
    GiveBack m_giveBack;
};

Attributes<TYPEATTR, ITypeInfo> AttributesOf(ITypeInfo* info)
{
    TYPEATTR* record = nullptr;
    Check(info->GetTypeAttr(&record), "GetTypeAttr");
    return {info, record, &ITypeInfo::ReleaseTypeAttr};
}

std::string NameOf(ITypeInfo* info, MEMBERID member)
{
    Words name;
    Check(info->GetDocumentation(member, &name, nullptr, nullptr, nullptr), "GetDocumentation");
    return name.Quoted();
}

const char* KindText(TYPEKIND kind)
{
    switch (kind)
    {
    case TKIND_INTERFACE:
        return "interface";
    case TKIND_DISPATCH:
        return "dispatch";
    case TKIND_COCLASS:
        return "coclass";
    default:
        return "other";
    }
}

const char* InvokeText(INVOKEKIND kind)
{
    switch (kind)
    {
    case INVOKE_PROPERTYGET:
        return "get";
    case INVOKE_PROPERTYPUT:
        return "put";
    case INVOKE_FUNC:
        return "call";
    default:
        return "other";
    }
}

// Variant type numbers; a pointer has a star after what it points to.
std::string TypeText(const TYPEDESC& type)
{
    return type.vt == VT_PTR ? TypeText(*type.lptdesc) + "*" : std::to_string(type.vt);
}

std::string FunctionText(ITypeInfo* info, UINT index)
{
    FUNCDESC* record = nullptr;
    Check(info->GetFuncDesc(index, &record), "GetFuncDesc");
    const Attributes<FUNCDESC, ITypeInfo> function{info, record, &ITypeInfo::ReleaseFuncDesc};
    std::string text = "  " + std::string(InvokeText(function->invkind)) + " " +
                       NameOf(info, function->memid) + " id " + std::to_string(function->memid) +
                       " slot " +
                       std::to_string(function->oVft / static_cast<SHORT>(sizeof(void*))) +
                       " returns " + TypeText(function->elemdescFunc.tdesc) + " takes";
    for (SHORT parameter = 0; parameter < function->cParams; ++parameter)
    {
        const ELEMDESC& element = function->lprgelemdescParam[parameter];
        text += " " + TypeText(element.tdesc) + ":" + std::to_string(element.paramdesc.wParamFlags);
    }
    return text + "\n";
}

// What an interface derives from or a class implements.
std::string ParentText(ITypeInfo* info, UINT index)
{
    HREFTYPE reference = 0;
    Check(info->GetRefTypeOfImplType(index, &reference), "GetRefTypeOfImplType");
    CComPtr<ITypeInfo> parent;
    Check(info->GetRefTypeInfo(reference, &parent), "GetRefTypeInfo");
    INT flags = 0;
    Check(info->GetImplTypeFlags(index, &flags), "GetImplTypeFlags");
    return "  of " + NameOf(parent, MEMBERID_NIL) + " " + Text(AttributesOf(parent)->guid) +
           " flags " + std::to_string(flags) + "\n";
}

std::string InfoText(ITypeInfo* info)
{
    const auto attributes = AttributesOf(info);
    Words name;
    Words help;
    Check(info->GetDocumentation(MEMBERID_NIL, &name, &help, nullptr, nullptr), "GetDocumentation");
    char flags[16] = "";
    std::snprintf(flags, sizeof flags, "%X", attributes->wTypeFlags);
    std::string text = std::string(KindText(attributes->typekind)) + " " + name.Quoted() + " " +
                       Text(attributes->guid) + " " + help.Quoted() + " flags " + flags + "\n";
    // The vtable's view of a dual interface tells its base and its functions as they are declared.
    CComPtr<ITypeInfo> told = info;
    HREFTYPE interfaceView = 0;
    if (attributes->typekind == TKIND_DISPATCH &&
        SUCCEEDED(info->GetRefTypeOfImplType(static_cast<UINT>(-1), &interfaceView)))
    {
        told.Release();
        Check(info->GetRefTypeInfo(interfaceView, &told), "GetRefTypeInfo");
    }
    const auto toldAttributes = AttributesOf(told);
    for (UINT index = 0; index < toldAttributes->cImplTypes; ++index)
    {
        text += ParentText(told, index);
    }
    for (UINT index = 0; index < toldAttributes->cFuncs; ++index)
    {
        text += FunctionText(told, index);
    }
    for (UINT index = 0; index < toldAttributes->cVars; ++index)
    {
        text += "  variable\n";
    }
    return text;
}

} // namespace

std::string TextOf(ITypeLib* library)
{
    TLIBATTR* record = nullptr;
    Check(library->GetLibAttr(&record), "GetLibAttr");
    const Attributes<TLIBATTR, ITypeLib> attributes{library, record, &ITypeLib::ReleaseTLibAttr};
    Words name;
    Words help;
    Check(library->GetDocumentation(-1, &name, &help, nullptr, nullptr), "GetDocumentation");
    std::string text = "library " + name.Quoted() + " " + Text(attributes->guid) + " version " +
                       std::to_string(attributes->wMajorVerNum) + "." +
                       std::to_string(attributes->wMinorVerNum) + " locale " +
                       std::to_string(attributes->lcid) + " system " +
                       std::to_string(attributes->syskind) + " " + help.Quoted() + "\n";
    const UINT count = library->GetTypeInfoCount();
    text += "type infos " + std::to_string(count) + "\n";
    for (UINT index = 0; index < count; ++index)
    {
        CComPtr<ITypeInfo> info;
        Check(library->GetTypeInfo(index, &info), "GetTypeInfo");
        text += InfoText(info);
    }
    return text;
}
