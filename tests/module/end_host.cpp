// A host program that loads the module in its folder, makes it load the suite's libraries, and unloads it
// ("unload") or exits without unloading it ("exit"). Prints the number of loaded libraries and each later
// call of FreeLibrary.
#include "sharepoint/identifiers.h"
#include "tests/support/faults/import_table.h"

#include <windows.h>

#include <ocidl.h>

#include <cwchar>
#include <string>
#include <string_view>

namespace {

// Works until the end of the process.
void print(std::string_view line)
{
    DWORD written = 0;
    const std::string text = std::string(line) + "\n";
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text.data(), static_cast<DWORD>(text.size()), &written,
              nullptr);
}

BOOL WINAPI print_and_free_library(HMODULE library)
{
    print("FreeLibrary");
    return FreeLibrary(library);
}

// Uses a barrier, which loads the libraries.
bool use_helper_object(HMODULE module)
{
    using get_class_object = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
    const auto get = reinterpret_cast<get_class_object>(
        reinterpret_cast<void*>(GetProcAddress(module, "DllGetClassObject")));
    IClassFactory* factory = nullptr;
    if (FAILED(get(quill::CLSID_SharepointBrowserHelperObject, IID_IClassFactory,
                   reinterpret_cast<void**>(&factory))))
        return false;
    IObjectWithSite* helper = nullptr;
    const HRESULT result =
        factory->CreateInstance(nullptr, IID_IObjectWithSite, reinterpret_cast<void**>(&helper));
    factory->Release();
    if (FAILED(result))
        return false;
    const bool is_fine = helper->SetSite(nullptr) == S_OK;
    helper->Release();
    return is_fine;
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count != 2)
        return 2;
    const HMODULE module = LoadLibraryW(L"QuillPDF.IE.dll");
    if (!module || !use_helper_object(module))
        return 1;
    int loaded = 0;
    for (const wchar_t* name : {L"crashguard14.dll", L"pdfcore.dll", L"as_compat.dll"})
        loaded += GetModuleHandleW(name) != nullptr;
    print(std::to_string(loaded) + " loaded");
    quill::test::redirect_import(module, "FreeLibrary",
                                 reinterpret_cast<quill::test::code_address>(&print_and_free_library));
    if (std::wcscmp(arguments[1], L"unload") == 0) {
        FreeLibrary(module);
        print(GetModuleHandleW(L"QuillPDF.IE.dll") ? "still loaded" : "unloaded");
    }
    return 0;
}
