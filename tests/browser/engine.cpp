#include "tests/browser/engine.h"

#include "tests/support/child_process.h"
#include "tests/support/scopes.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

#include <atlbase.h>
#include <gtest/gtest.h>
#include <ole2.h>

#include <algorithm>
#include <array>

namespace quill::test {
namespace {

// The COM objects of the browser count on a module object, which is otherwise unused.
class test_module : public CAtlModuleT<test_module>
{
};
test_module module_object;

struct search
{
    std::wstring window_class;
    HWND found = nullptr;
};

BOOL CALLBACK look_at_window(HWND window, LPARAM parameter)
{
    auto& wanted = *reinterpret_cast<search*>(parameter);
    std::array<wchar_t, 128> name = {};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    if (wanted.window_class != name.data())
        return TRUE;
    wanted.found = window;
    return FALSE;
}

} // namespace

ole_apartment::ole_apartment()
{
    EXPECT_EQ(OleInitialize(nullptr), S_OK);
}

ole_apartment::~ole_apartment()
{
    OleUninitialize();
}

engine::engine()
    : window_(CreateWindowExW(0, L"STATIC", L"engine", WS_POPUP | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, 900,
                              700, nullptr, nullptr, nullptr, nullptr))
{
    EXPECT_NE(window_, nullptr);
    EXPECT_EQ(control_.open(window_, *this), S_OK);
}

engine::~engine()
{
    close();
}

void engine::open(const std::wstring& url)
{
    EXPECT_EQ(control_.navigate(url), S_OK) << to_utf8(url);
}

void engine::close()
{
    control_.close();
    if (window_ != nullptr)
        DestroyWindow(window_);
    window_ = nullptr;
    pump_messages();
}

HWND engine::find_window(const std::wstring& window_class) const
{
    search wanted = {window_class};
    EnumChildWindows(window_, look_at_window, reinterpret_cast<LPARAM>(&wanted));
    return wanted.found;
}

std::string sample(const std::wstring& name)
{
    // Beside the program in the acceptance kit, otherwise in the clone, where Z: is the root of the file
    // system.
    std::wstring path = beside_this_program(L"samples/" + name);
    if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
        path = L"Z:" + to_wide(QUILL_SAMPLES) + L"/" + name;
    std::replace(path.begin(), path.end(), L'/', L'\\');
    const auto content = read_file(path);
    EXPECT_TRUE(content.has_value()) << to_utf8(path);
    return content.value_or(std::string());
}

} // namespace quill::test
