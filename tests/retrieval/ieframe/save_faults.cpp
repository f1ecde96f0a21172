#include "tests/retrieval/ieframe/save_faults.h"

#include <gmock/gmock.h>

namespace quill::test {
namespace {

using calls = std::vector<std::string>;

const calls asked_only = {"dialog"};
const calls cancelled = {"dialog", "folder", "cancel"};
const calls whole = {"dialog", "folder", "save"};

void add_dialog(std::vector<save_fault>& faults)
{
    faults.push_back({.name = "dialog fails and hands out a path",
                      .arrange = [](save_browser& browser, auto&) { browser.dialog_result = E_FAIL; },
                      .calls = asked_only});
    faults.push_back({.name = "dialog fails",
                      .arrange =
                          [](save_browser& browser, auto&) {
                              browser.dialog_result = E_ACCESSDENIED;
                              browser.gives_destination = false;
                          },
                      .calls = asked_only});
    // The caller does not own the path; an invalid state is for the browser to refuse.
    for (const bool writes_null : {true, false}) {
        const std::string how = writes_null ? "null" : "nothing";
        faults.push_back({.name = "dialog gives " + how + " for a path",
                          .arrange =
                              [=](save_browser& browser, auto&) {
                                  browser.gives_destination = false;
                                  browser.writes_null = writes_null;
                              },
                          .calls = whole,
                          .result = 1,
                          .saves = true});
        faults.push_back({.name = "dialog gives " + how + " at all",
                          .arrange =
                              [=](save_browser& browser, auto&) {
                                  browser.gives_destination = false;
                                  browser.returns_state = false;
                                  browser.writes_null = writes_null;
                              },
                          .calls = whole});
    }
}

void add_folder(std::vector<save_fault>& faults)
{
    for (const HRESULT result : {E_FAIL, S_OK}) {
        for (const bool writes_null : {true, false}) {
            faults.push_back({.name = std::string("folder ") + (result == S_OK ? "succeeds" : "fails") +
                                      (writes_null ? " with null" : " with nothing"),
                              .arrange =
                                  [=](save_browser& browser, auto&) {
                                      browser.folder_result = result;
                                      browser.gives_folder = false;
                                      browser.writes_null = writes_null;
                                  },
                              .calls = cancelled});
        }
    }
    faults.push_back({.name = "folder fails and hands out a path",
                      .arrange = [](save_browser& browser, auto&) { browser.folder_result = E_FAIL; },
                      .calls = cancelled});
}

void add_system_calls(std::vector<save_fault>& faults)
{
    faults.push_back(
        {.name = "no temporary file: no such folder",
         .arrange = [](save_browser& browser, auto&) { browser.cache_path = browser.cache / L"missing"; },
         .calls = cancelled});
    faults.push_back(
        {.name = "no temporary file: no room for its name",
         .arrange = [](save_browser& browser, auto&) { browser.cache_path = std::wstring(300, L'x'); },
         .calls = cancelled});
    faults.push_back(
        {.name = "no copy: the shown file is gone",
         .arrange = [](save_browser&, const std::wstring& shown) { EXPECT_TRUE(DeleteFileW(shown.c_str())); },
         .calls = cancelled});
    faults.push_back({.name = "no copy: the shown file goes while the dialog is up",
                      .arrange =
                          [](save_browser& browser, const std::wstring& shown) {
                              browser.while_dialog_is_up = [shown] {
                                  EXPECT_TRUE(DeleteFileW(shown.c_str()));
                              };
                          },
                      .calls = cancelled});
}

void add_save(std::vector<save_fault>& faults)
{
    for (const HRESULT result : {E_FAIL, S_FALSE}) {
        faults.push_back({.name = result == S_FALSE ? "save succeeds with nothing" : "save fails",
                          .arrange = [=](save_browser& browser, auto&) { browser.save_result = result; },
                          .calls = whole});
    }
    faults.push_back({.name = "save says that it succeeded, and has left the copy where it was",
                      .arrange = [](save_browser& browser, auto&) { browser.moves_copy = false; },
                      .calls = whole,
                      .result = 1});
    for (const HRESULT result : {E_FAIL, S_FALSE}) {
        faults.push_back({.name = result == S_FALSE ? "cancel succeeds with nothing" : "cancel fails",
                          .arrange =
                              [=](save_browser& browser, auto&) {
                                  browser.folder_result = E_FAIL;
                                  browser.cancel_result = result;
                              },
                          .calls = cancelled});
    }
}

void add_library(std::vector<save_fault>& faults)
{
    const auto add = [&](const char* name, std::optional<ieframe> library, calls expected) {
        faults.push_back(
            {.name = name, .arrange = [](auto&&...) {}, .calls = std::move(expected), .library = library});
    };
    add("no library", std::nullopt, {});
    add("no dialog function", ieframe::without_dialog, {});
    add("no folder function", ieframe::without_folder, {"dialog", "cancel"});
    add("no save function", ieframe::without_save, {"dialog", "folder"});
    add("no cancel function", ieframe::without_cancel, {"dialog", "folder"});
    faults.back().arrange = [](save_browser& browser, auto&) { browser.folder_result = E_FAIL; };
}

} // namespace

save_fault no_save_fault()
{
    return {.name = "none",
            .arrange = [](auto&&...) {},
            .calls = {"dialog", "folder", "save"},
            .result = 1,
            .saves = true};
}

std::vector<save_fault> every_save_fault()
{
    std::vector<save_fault> faults;
    add_dialog(faults);
    add_folder(faults);
    add_system_calls(faults);
    add_save(faults);
    add_library(faults);
    return faults;
}

void expect_tidy(const save_browser& browser, const save_fault& fault)
{
    EXPECT_EQ(browser.calls, fault.calls);
    const bool cannot_return =
        fault.library == ieframe::without_save || fault.library == ieframe::without_cancel;
    EXPECT_EQ(browser.states_released, cannot_return ? 0 : browser.states_returned);
    EXPECT_EQ(browser.loads, browser.unloads);
    EXPECT_THAT(files_in(browser.cache.path()), testing::IsEmpty());
    const std::vector<std::wstring> saved = {L"saved.pdf"};
    EXPECT_EQ(files_in(browser.chosen.path()), fault.saves ? saved : std::vector<std::wstring>{});
}

} // namespace quill::test
