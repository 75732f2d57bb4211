#include "tools/glazelhost/validate/judged_plug_in.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/look.h"
#include "tools/glazelhost/validate/scratch_file.h"

namespace GlazelHost
{

CComPtr<IUnknown> JudgedPlugIn::Create(REFCLSID classId) const
{
    CComPtr<IClassFactory> factory;
    CComPtr<IUnknown> object;
    const HRESULT found = module.GetClassObject(classId, factory);
    if (FAILED(found) || !factory ||
        FAILED(factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object))) ||
        !object)
    {
        throw HostError(module.Path(), "an object of one of its classes is not created",
                        "see the groups of a lower level");
    }
    return object;
}

Record JudgedPlugIn::LookOf(std::string_view cube) const
{
    const ScratchFile file(".cube", cube);
    return renderer.ImportLook(file.Path(), RendererAPI::kImportRecord).record;
}

Record WithOption(Record record, bool on)
{
    SetLinearOption(record, on);
    return record;
}

} // namespace GlazelHost
