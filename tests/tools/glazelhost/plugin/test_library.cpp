// A DLL for the tests of loading: what it needs and how it starts is said by definitions.
#include <windows.h>

#ifdef NEEDED_FUNCTION
extern "C" __declspec(dllimport) int NEEDED_FUNCTION();
#endif

extern "C" __declspec(dllexport) int EXPORTED_FUNCTION()
{
#ifdef NEEDED_FUNCTION
    return NEEDED_FUNCTION() + 1;
#else
    return 1;
#endif
}

BOOL WINAPI DllMain(HINSTANCE, DWORD, void*)
{
    return STARTS;
}
