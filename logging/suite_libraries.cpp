#include "logging/suite_libraries.h"

#include "logging/system_exceptions.h"
#include "platform/impl/windows/module_traits.h"
#include "platform/library_function.h"
#include "platform/process_end.h"
#include "platform/unique_handle.h"

#include <atomic>
#include <exception>
#include <memory>
#include <string>

namespace quill {
namespace {

int run_the_handler(EXCEPTION_POINTERS*)
{
    return EXCEPTION_EXECUTE_HANDLER;
}

int no_error_code()
{
    return 0;
}

wchar_t* no_error_string(int, wchar_t* buffer, std::uint64_t size)
{
    if (buffer && size > 0)
        *buffer = L'\0';
    return buffer;
}

// The folder of the module, with a trailing backslash.
std::wstring own_folder()
{
    HMODULE self = nullptr;
    constexpr DWORD flags =
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (!GetModuleHandleExW(flags, reinterpret_cast<const wchar_t*>(&run_the_handler), &self))
        return {};
    const std::wstring path = module_path(self);
    return path.substr(0, path.find_last_of(L'\\') + 1);
}

unique_library load(const std::wstring& folder, const wchar_t* name)
{
    constexpr DWORD beside = LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS;
    unique_library library;
    if (!folder.empty())
        library.reset(LoadLibraryExW((folder + name).c_str(), nullptr, beside));
    if (!library)
        library.reset(LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_DEFAULT_DIRS));
    return library;
}

template <typename Function>
Function function_or(const unique_library& library, const char* name, Function otherwise)
{
    const auto found = library_function<Function>(library.get(), name);
    return found ? found : otherwise;
}

class suite_libraries
{
public:
    suite_libraries()
    {
        const std::wstring folder = own_folder();
        crash_guard_ = load(folder, L"crashguard14.dll");
        pdf_core_ = load(folder, L"pdfcore.dll");
        compatibility_ = load(folder, L"as_compat.dll");
        functions_.handle_exception = function_or(crash_guard_, "HandleException", &run_the_handler);
        functions_.get_exception_error_code =
            function_or(pdf_core_, "ASGetExceptionErrorCode", &no_error_code);
        functions_.get_error_string = function_or(compatibility_, "ASGetErrorString", &no_error_string);
    }

    const suite_functions& functions() const { return functions_; }

private:
    unique_library crash_guard_;
    unique_library pdf_core_;
    unique_library compatibility_;
    suite_functions functions_{run_the_handler, no_error_code, no_error_string};
};

constexpr suite_functions default_functions{run_the_handler, no_error_code, no_error_string};

// No lock is held while the libraries load: a thread that waited for it inside a DllMain would deadlock with
// the loader lock. Concurrent threads each load the libraries, and the first result is kept.
class kept_libraries
{
public:
    constexpr kept_libraries() = default;
    ~kept_libraries()
    {
        // The DllMain of a library that is freed may call back into the module.
        has_ended_.store(true, std::memory_order_release);
        const suite_libraries* const loaded = kept_.exchange(nullptr, std::memory_order_acq_rel);
        // While the process ends, the libraries may have been detached before this module.
        if (!process_is_ending())
            delete loaded;
    }
    kept_libraries(const kept_libraries&) = delete;
    kept_libraries& operator=(const kept_libraries&) = delete;

    const suite_libraries* get() const noexcept { return kept_.load(std::memory_order_acquire); }
    bool has_ended() const noexcept { return has_ended_.load(std::memory_order_acquire); }

    const suite_libraries& keep(std::unique_ptr<const suite_libraries> loaded) noexcept
    {
        const suite_libraries* first = nullptr;
        if (kept_.compare_exchange_strong(first, loaded.get(), std::memory_order_acq_rel))
            first = loaded.release();
        return *first;
    }

private:
    std::atomic<const suite_libraries*> kept_{nullptr};
    std::atomic<bool> has_ended_{false};
};

constinit kept_libraries kept;

// The DllMain of a library that is loaded, or a hook of the loader, may call back into the module.
constinit thread_local bool is_loading_here = false;

const suite_libraries& load_libraries()
{
    const suite_libraries* loaded = nullptr;
    is_loading_here = true;
    // A system exception in a DllMain skips destructors, but not the second function.
    barrier::call_and_end(
        [](void* out) {
            *static_cast<const suite_libraries**>(out) =
                &kept.keep(std::make_unique<const suite_libraries>());
        },
        [](void*) { is_loading_here = false; }, &loaded);
    return *loaded;
}

} // namespace

const suite_functions& suite_library_functions()
{
    if (const suite_libraries* const libraries = kept.get())
        return libraries->functions();
    if (is_loading_here || kept.has_ended())
        return default_functions; // the libraries are not loaded yet, or freed
    try {
        return load_libraries().functions();
    } catch (const std::exception&) {
        return default_functions; // out of memory, or no module path
    }
}

} // namespace quill
