// The DLL itself: loading, creating an object, unloading.
#include "tests/bench/support/loaded_library.h"
#include "tests/bench/support/report.h"

#include <ole2.h>

#include <stdexcept>

namespace quill::bench {
namespace {

constexpr wchar_t empty_server[] = L"bench_empty_server.dll";
constexpr double most_of_an_empty_one = 2.5;

// A browser has loaded the system libraries that the module imports long before it.
class system_libraries
{
public:
    system_libraries()
    {
        for (const wchar_t* name : {L"wininet.dll", L"urlmon.dll", L"shell32.dll", L"shlwapi.dll",
                                    L"oleaut32.dll", L"user32.dll", L"gdi32.dll", L"advapi32.dll"})
            if (!LoadLibraryW(name))
                throw std::runtime_error("a system library is missing");
    }
};

repeated load_and_create(const wchar_t* name, const CLSID& class_id)
{
    return [=](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i) {
            const loaded_library library(name);
            library.create(class_id)->Release();
            if (!library.can_unload())
                throw std::runtime_error("an object is still there");
        }
    };
}

repeated create_object(const loaded_library& library, const CLSID& class_id)
{
    return [&library, class_id](std::size_t times) {
        for (std::size_t i = 0; i < times; ++i)
            library.create(class_id)->Release();
    };
}

void benchmarks()
{
    if (FAILED(OleInitialize(nullptr)))
        throw std::runtime_error("OLE does not start");
    const system_libraries in_every_browser;
    report("load, create a document, release, unload : an empty COM DLL",
           compare_shortest(load_and_create(module_name, active_document_class),
                            load_and_create(empty_server, {})),
           most_of_an_empty_one);
    report("load, create a helper, release, unload : an empty COM DLL",
           compare_shortest(load_and_create(module_name, helper_class), load_and_create(empty_server, {})),
           most_of_an_empty_one);
    {
        const loaded_library module(module_name), empty(empty_server);
        report("create and release a document : an empty object",
               compare_shortest(create_object(module, active_document_class), create_object(empty, {})));
        report("create and release a helper : an empty object",
               compare_shortest(create_object(module, helper_class), create_object(empty, {})));
    }
    if (GetModuleHandleW(module_name))
        throw std::runtime_error("the module stays loaded");
    OleUninitialize();
}

} // namespace
} // namespace quill::bench

int wmain(int argc, wchar_t** argv)
{
    return quill::bench::run(argc, argv, quill::bench::benchmarks);
}
