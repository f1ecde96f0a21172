#include "tests/retrieval/ieframe/save_browser.h"

#include "tests/retrieval/ieframe/browser_script.h"

#include <gmock/gmock.h>
#include <objbase.h>

namespace quill::test {
namespace {

save_browser* current = nullptr;

wchar_t* task_string(const std::wstring& text)
{
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    auto* const copy = static_cast<wchar_t*>(CoTaskMemAlloc(bytes));
    text.copy(copy, text.size());
    copy[text.size()] = L'\0';
    return copy;
}

// Called by the functions of the library. The system may load the library outside any test.

void loaded(bool is_loaded)
{
    if (current)
        ++(is_loaded ? current->loads : current->unloads);
}

HRESULT show_dialog(HWND window, const wchar_t* file_name, const wchar_t* folder, const wchar_t* filter,
                    const wchar_t* extension, DWORD filter_index, DWORD flags, wchar_t** destination,
                    HANDLE* state)
{
    save_browser& browser = *current;
    browser.calls.emplace_back("dialog");
    browser.suggested = file_name;
    EXPECT_EQ(window, browser.owner);
    EXPECT_EQ(folder, nullptr);
    EXPECT_STREQ(filter, L"PDF files (*.pdf)|*.PDF|");
    EXPECT_STREQ(extension, L"pdf");
    EXPECT_EQ(filter_index, 0u);
    EXPECT_EQ(flags, 2u);
    EXPECT_EQ(*destination, nullptr);
    EXPECT_EQ(*state, nullptr);
    if (browser.while_dialog_is_up)
        browser.while_dialog_is_up();
    if (browser.gives_destination)
        *destination = task_string(browser.destination);
    else if (browser.writes_null)
        *destination = nullptr;
    if (browser.dialog_result == S_OK && browser.returns_state) {
        *state = save_browser::state;
        ++browser.states_returned;
    } else if (browser.writes_null) {
        *state = nullptr;
    }
    return browser.dialog_result;
}

HRESULT get_folder(REFKNOWNFOLDERID folder_id, wchar_t** folder)
{
    static constexpr GUID internet_cache = {
        0x352481E8, 0x33BE, 0x4251, {0xBA, 0x85, 0x60, 0x07, 0xCA, 0xED, 0xCF, 0x9D}};
    current->calls.emplace_back("folder");
    EXPECT_TRUE(IsEqualGUID(folder_id, internet_cache));
    EXPECT_EQ(*folder, nullptr);
    if (current->gives_folder)
        *folder = task_string(current->cache_path);
    else if (current->writes_null)
        *folder = nullptr;
    return current->folder_result;
}

// False for the state of a dialog that returned none.
bool release_state(HANDLE state)
{
    EXPECT_EQ(state, current->returns_state ? save_browser::state : nullptr);
    current->states_released += state != nullptr;
    return state != nullptr;
}

// Moves the copy to the chosen place, as the broker of the browser does.
HRESULT save_file(HANDLE state, const wchar_t* source)
{
    save_browser& browser = *current;
    browser.calls.emplace_back("save");
    if (!release_state(state))
        return E_HANDLE;
    EXPECT_TRUE(std::wstring(source).starts_with(browser.cache_path + L"\\qIE"))
        << testing::PrintToString(source);
    if (browser.before_save)
        browser.before_save(source);
    if (browser.save_result == S_OK && browser.moves_copy)
        EXPECT_TRUE(MoveFileExW(source, browser.destination.c_str(),
                                MOVEFILE_REPLACE_EXISTING | MOVEFILE_COPY_ALLOWED));
    return browser.save_result;
}

HRESULT cancel_save(HANDLE state)
{
    current->calls.emplace_back("cancel");
    return release_state(state) ? current->cancel_result : E_HANDLE;
}

} // namespace

const HANDLE save_browser::state = reinterpret_cast<HANDLE>(0x5678);

std::vector<std::wstring> files_in(const std::wstring& folder)
{
    std::vector<std::wstring> names;
    WIN32_FIND_DATAW found{};
    const HANDLE search = FindFirstFileW((folder + L"\\*").c_str(), &found);
    for (BOOL more = search != INVALID_HANDLE_VALUE; more; more = FindNextFileW(search, &found)) {
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            names.emplace_back(found.cFileName);
    }
    FindClose(search);
    return names;
}

save_browser::save_browser()
{
    EXPECT_EQ(current, nullptr);
    current = this;
}

save_browser::~save_browser()
{
    EXPECT_THAT(files_in(cache.path()), testing::IsEmpty()) << "left in the folder for copies";
    EXPECT_EQ(loads, unloads);
    EXPECT_EQ(GetModuleHandleW(L"ieframe.dll"), nullptr);
    current = nullptr;
}

} // namespace quill::test

extern "C" {
__declspec(dllexport) extern const browser_script quill_browser_script;
}
const browser_script quill_browser_script = {quill::test::loaded, quill::test::show_dialog,
                                             quill::test::get_folder, quill::test::save_file,
                                             quill::test::cancel_save};
