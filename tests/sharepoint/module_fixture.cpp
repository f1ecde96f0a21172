#include "tests/sharepoint/module_fixture.h"

#include "sharepoint/identifiers.h"
#include "tests/support/child_process.h"

#include <gtest/gtest.h>

#include <optional>

namespace quill::test {
namespace {

std::optional<std::wstring> text_or_nothing(const wchar_t* text)
{
    return text ? std::optional<std::wstring>(text) : std::nullopt;
}

template <class Function>
Function* find_export(HMODULE module, const char* name)
{
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

} // namespace

module_fixture::module_fixture(const suite_setup& suite, const wchar_t* log_level)
    : level_(L"QUILL_LOG_LEVEL", log_level), sinks_(L"QUILL_LOG_SINKS", L"file"),
      verdict_(L"QUILL_CRASHGUARD", text_or_nothing(suite.verdict)),
      error_code_(L"QUILL_PDFCORE_ERROR", text_or_nothing(suite.error_code)),
      error_text_(L"QUILL_PDFCORE_TEXT", text_or_nothing(suite.error_text))
{
    std::vector<const wchar_t*> files = suite.libraries;
    files.push_back(L"QuillPDF.IE.dll");
    for (const wchar_t* name : files)
        EXPECT_TRUE(CopyFileW(beside_this_program(name).c_str(), (folder_ / name).c_str(), TRUE));
    module_ = LoadLibraryW((folder_ / L"QuillPDF.IE.dll").c_str());
    EXPECT_NE(module_, nullptr);
}

module_fixture::~module_fixture()
{
    EXPECT_TRUE(expects_leaks_ || can_unload()) << "an object keeps the DLL loaded";
    FreeLibrary(module_);
}

bool module_fixture::can_unload() const
{
    auto* const can_unload_now = find_export<HRESULT WINAPI()>(module_, "DllCanUnloadNow");
    return can_unload_now && can_unload_now() == S_OK;
}

CComPtr<IObjectWithSite> module_fixture::make_helper() const
{
    CComPtr<IObjectWithSite> helper;
    EXPECT_EQ(create_helper(&helper), S_OK);
    return helper;
}

HRESULT module_fixture::create_helper(IObjectWithSite** out) const
{
    auto* const get_class_object =
        find_export<HRESULT WINAPI(REFCLSID, REFIID, void**)>(module_, "DllGetClassObject");
    CComPtr<IClassFactory> factory;
    const HRESULT result = get_class_object
                               ? get_class_object(CLSID_SharepointBrowserHelperObject, IID_IClassFactory,
                                                  reinterpret_cast<void**>(&factory))
                               : E_UNEXPECTED;
    EXPECT_EQ(factory != nullptr, SUCCEEDED(result));
    if (!factory)
        return result;
    return factory->CreateInstance(nullptr, IID_IObjectWithSite, reinterpret_cast<void**>(out));
}

std::vector<std::string> module_fixture::new_lines()
{
    const std::vector<log_line> all = logs_.lines();
    std::vector<std::string> lines;
    for (; seen_lines_ < all.size(); ++seen_lines_)
        lines.push_back(all[seen_lines_].level + ": " + all[seen_lines_].text);
    return lines;
}

} // namespace quill::test
