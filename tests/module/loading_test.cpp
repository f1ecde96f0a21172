// The DLL must not load other libraries while it is being loaded.
#include "tests/module/loaded_module.h"
#include "tests/support/library_notice.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace quill::test {
namespace {

void CALLBACK take_name(ULONG reason, const library_notice* notice, void* names)
{
    if (reason == library_loaded)
        static_cast<std::vector<std::wstring>*>(names)->emplace_back(
            notice->base_name->Buffer, notice->base_name->Length / sizeof(wchar_t));
}

// Includes libraries that are freed again before LoadLibrary returns.
TEST(Loading, LoadsNoOtherLibrary)
{
    keep_system_libraries_loaded();
    const auto listen = system_function<register_function>("LdrRegisterDllNotification");
    const auto stop_listening = system_function<unregister_function>("LdrUnregisterDllNotification");
    ASSERT_TRUE(listen && stop_listening);
    std::vector<std::wstring> names;
    void* cookie = nullptr;
    ASSERT_EQ(listen(0, take_name, &names, &cookie), 0);
    {
        const loaded_module module;
    }
    EXPECT_EQ(stop_listening(cookie), 0);
    EXPECT_THAT(names, testing::ElementsAre(L"QuillPDF.IE.dll"));
}

} // namespace
} // namespace quill::test
