#include <windows.h>

#include "thread_name.h"

// MinGW-w64's headers know it from version 11 on.
extern "C" WINBASEAPI HRESULT WINAPI GetThreadDescription(HANDLE thread, PWSTR* description);

std::string zant::sim::threadName() {
    PWSTR description = nullptr;
    if (FAILED(GetThreadDescription(GetCurrentThread(), &description))) return {};
    std::string name;
    for (const wchar_t* unit = description; *unit != L'\0'; ++unit) name.push_back(static_cast<char>(*unit));
    LocalFree(description);
    return name;
}
