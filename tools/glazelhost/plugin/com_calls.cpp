#include "tools/glazelhost/plugin/com_calls.h"

#include "tools/glazelhost/host_error.h"
#include "tools/glazelhost/plugin/message_boxes.h"
#include "tools/glazelhost/windows_text.h"

namespace GlazelHost
{

void CheckEffectCall(HRESULT result, const std::string& path, const char* what)
{
    ThrowRecordedMessageBoxes(path);
    if (FAILED(result))
    {
        throw HostError(path, std::string(what) + ": " + ResultText(result),
                        "see \"glazelhost info\" for what the plug-in and the renderer lack");
    }
}

void CheckEffectInterface(HRESULT result, const std::string& path, const char* name)
{
    if (FAILED(result))
    {
        throw HostError(path, std::string("its effect has no ") + name + ": " + ResultText(result),
                        "install the plug-in again");
    }
}

} // namespace GlazelHost
