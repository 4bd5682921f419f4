// The library's entry point. The system calls it when the DLL is loaded or
// unloaded and when threads start or end; the library keeps no global state
// to set up or tear down, so it does nothing and reports success.
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD /*reason*/, LPVOID /*reserved*/) {
    return TRUE;
}
