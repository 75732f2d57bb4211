#include "tests/doubles/renderers/renderer_variant.h"

#include "contract/entry_points.h"

#include <bit>
#include <stdexcept>

// Tests that need an empty folder around them stand one level below it.
std::wstring BinFolder()
{
    std::wstring folder(MAX_PATH, L'\0'); // of the running program
    folder.resize(::GetModuleFileNameW(nullptr, folder.data(), MAX_PATH));
    folder.resize(folder.find_last_of(L'\\'));
    const std::wstring last = folder.substr(folder.find_last_of(L'\\') + 1);
    return last == L"bin" ? folder : folder.substr(0, folder.find_last_of(L'\\'));
}

int TakeLoads()
{
    int loads = 0;
    while (const HMODULE module = ::GetModuleHandleA(RendererAPI::kLibraryName))
    {
        ::FreeLibrary(module);
        ++loads;
    }
    return loads;
}

Recording& UseRenderer(const std::wstring& variant)
{
    const std::wstring file = BinFolder() + L"\\renderers\\" + variant + L"\\GZ3Renderer_x64.dll";
    const HMODULE module = ::LoadLibraryW(file.c_str());
    if (module == nullptr)
    {
        throw std::runtime_error("cannot load the test renderer: " +
                                 std::to_string(::GetLastError()));
    }
    const auto getRecording =
        std::bit_cast<GetRecordingFunction*>(::GetProcAddress(module, "GetRecording"));
    return *getRecording();
}
