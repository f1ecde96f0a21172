// Loads and unloads a library with the logging many times while threads that have logged keep running.
#include "platform/library_function.h"
#include "platform/unique_handle.h"
#include "tests/support/balance.h"
#include "tests/support/child_process.h"
#include "tests/support/crashes.h"
#include "tests/support/faults/import_table.h"
#include "tests/support/log_file.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gmock/gmock.h>

#include <utility>

namespace quill {
namespace {

using test::environment_scope;
using test::log_folder_scope;
using test::log_line;
using test::process_resources;
using testing::ElementsAre;

using write_line_function = void (*)(int level, const char* text);
constexpr const wchar_t* library_name = L"logging_library.dll";
constexpr int info = 2;

// Loads the library during its lifetime.
struct loaded_library
{
    unique_library library{LoadLibraryW(test::beside_this_program(library_name).c_str())};
    write_line_function write_line = library_function<write_line_function>(library.get(), "write_line");
};

struct Unload : testing::Test
{
    log_folder_scope logs;
    test::cross_process_lock device{L"procmon"};
    environment_scope level{L"QUILL_LOG_LEVEL", L"info"};
    environment_scope sinks{L"QUILL_LOG_SINKS", L"file,procmon"};

    static void write_and_unload(const char* text)
    {
        const loaded_library loaded;
        ASSERT_NE(loaded.write_line, nullptr);
        loaded.write_line(info, text);
    }
};

TEST_F(Unload, ClosesTheFileAndLeaksNothing)
{
    write_and_unload("first");
    const auto before = process_resources::now();
    write_and_unload("second");
    write_and_unload("third");
    EXPECT_EQ(process_resources::now(), before);
    EXPECT_EQ(GetModuleHandleW(library_name), nullptr);
    EXPECT_THAT(logs.lines(), ElementsAre(log_line{"info", "first"}, log_line{"info", "second"},
                                          log_line{"info", "third"}));
    // The file is not open.
    const unique_handle file(CreateFileW(logs.file_of(L"test_unload", GetCurrentProcessId()).c_str(),
                                         GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(file);
}

TEST_F(Unload, NoProgramStartedMeanwhileInheritsTheFile)
{
    PROCESS_INFORMATION process{};
    {
        const loaded_library loaded;
        loaded.write_line(info, "open");
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        const std::wstring program = test::beside_this_program(L"log_program.exe");
        ASSERT_TRUE(CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, TRUE, CREATE_SUSPENDED,
                                   nullptr, nullptr, &startup, &process));
    }
    const unique_handle started(process.hProcess);
    const unique_handle its_thread(process.hThread);
    const std::wstring path = logs.file_of(L"test_unload", GetCurrentProcessId());
    const unique_handle file(CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(file) << GetLastError();
    TerminateProcess(started.get(), 0);
    EXPECT_EQ(WaitForSingleObject(started.get(), 10'000), WAIT_OBJECT_0);
}

TEST_F(Unload, ReadsTheEnvironmentAgainWhenLoadedAgain)
{
    write_and_unload("on");
    SetEnvironmentVariableW(L"QUILL_LOG_LEVEL", nullptr);
    write_and_unload("off");
    EXPECT_THAT(logs.lines(), ElementsAre(log_line{"info", "on"}));
}

TEST_F(Unload, WhileAThreadThatLoggedIsRunning)
{
    struct shared
    {
        write_line_function write_line = nullptr;
        unique_handle written{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
        unique_handle finish{CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    } state;
    const auto write_and_wait = [](void* argument) -> DWORD {
        const auto& s = *static_cast<shared*>(argument);
        s.write_line(info, "from the thread");
        SetEvent(s.written.get());
        return WaitForSingleObject(s.finish.get(), INFINITE);
    };
    const auto run = [&] {
        unique_handle thread;
        {
            const loaded_library loaded;
            ASSERT_NE(loaded.write_line, nullptr);
            state.write_line = loaded.write_line;
            thread.reset(CreateThread(nullptr, 0, write_and_wait, &state, 0, nullptr));
            ASSERT_EQ(WaitForSingleObject(state.written.get(), 10'000), WAIT_OBJECT_0);
            loaded.write_line(info, "from here");
        }
        EXPECT_EQ(GetModuleHandleW(library_name), nullptr);
        SetEvent(state.finish.get());
        EXPECT_EQ(WaitForSingleObject(thread.get(), 10'000), WAIT_OBJECT_0);
    };
    int runs = 0;
    test::expect_balance([&] {
        run();
        ++runs;
    });
    std::vector<log_line> expected;
    for (int i = 0; i < runs; ++i) {
        expected.emplace_back(log_line{"info", "from the thread"});
        expected.emplace_back(log_line{"info", "from here"});
    }
    EXPECT_EQ(logs.lines(), expected);
}

TEST_F(Unload, AfterASetUpThatThrew)
{
    // A file has the name of the log's folder: the set-up throws for each line and is ignored.
    test::remove_path(test::profile_log_folder_path());
    wchar_t app_data[MAX_PATH] = {};
    GetEnvironmentVariableW(L"APPDATA", app_data, MAX_PATH);
    const std::wstring company = std::wstring(app_data) + L"\\Quill";
    test::remove_path(company);
    ASSERT_TRUE(test::write_file(company, "in the way"));
    write_and_unload("lost");
    const auto before = process_resources::now();
    write_and_unload("lost");
    write_and_unload("lost");
    EXPECT_EQ(process_resources::now(), before);
    EXPECT_EQ(GetModuleHandleW(library_name), nullptr);
    test::remove_path(company);
}

write_line_function write_inside = nullptr;

DWORD WINAPI write_and_get_variable(const char* name, char* value, DWORD size)
{
    if (const auto write = std::exchange(write_inside, nullptr))
        write(info, "inside");
    return GetEnvironmentVariableA(name, value, size);
}

// System functions that the set-up calls may load a library that calls the module.
TEST_F(Unload, ALineFromInsideTheSetUpIsDropped)
{
    {
        const loaded_library loaded;
        write_inside = loaded.write_line;
        ASSERT_NE(test::redirect_import(loaded.library.get(), "GetEnvironmentVariableA",
                                        reinterpret_cast<test::code_address>(&write_and_get_variable)),
                  nullptr);
        loaded.write_line(info, "first");
        EXPECT_EQ(write_inside, nullptr);
        loaded.write_line(info, "second");
    }
    EXPECT_EQ(GetModuleHandleW(library_name), nullptr);
    EXPECT_THAT(logs.lines(), ElementsAre(log_line{"info", "first"}, log_line{"info", "second"}));
}

constexpr DWORD deadline_ms = 10'000;
write_line_function write_elsewhere = nullptr;
bool has_written_elsewhere = false;

// The thread that logs.
unique_handle& elsewhere()
{
    static unique_handle thread;
    return thread;
}

DWORD WINAPI get_variable_while_another_thread_writes(const char* name, char* value, DWORD size)
{
    if (const auto write = std::exchange(write_elsewhere, nullptr)) {
        const auto run = [](void* function) -> DWORD {
            reinterpret_cast<write_line_function>(function)(info, "elsewhere");
            return 0;
        };
        elsewhere().reset(CreateThread(nullptr, 0, run, reinterpret_cast<void*>(write), 0, nullptr));
        has_written_elsewhere = WaitForSingleObject(elsewhere().get(), deadline_ms) == WAIT_OBJECT_0;
    }
    return GetEnvironmentVariableA(name, value, size);
}

// The set-up may need the loader lock, which the other thread may hold.
TEST_F(Unload, NoThreadWaitsForTheSetUpOfAnother)
{
    const auto write = [] {
        has_written_elsewhere = false;
        const loaded_library loaded;
        write_elsewhere = loaded.write_line;
        ASSERT_NE(test::redirect_import(
                      loaded.library.get(), "GetEnvironmentVariableA",
                      reinterpret_cast<test::code_address>(&get_variable_while_another_thread_writes)),
                  nullptr);
        loaded.write_line(info, "first");
        EXPECT_TRUE(has_written_elsewhere);
        EXPECT_EQ(WaitForSingleObject(elsewhere().get(), deadline_ms), WAIT_OBJECT_0);
        elsewhere().reset();
        loaded.write_line(info, "second");
    };
    write();
    const auto before = process_resources::now();
    write();
    EXPECT_EQ(process_resources::now(), before);
    EXPECT_EQ(GetModuleHandleW(library_name), nullptr);
    const log_line other{"info", "elsewhere"};
    const log_line first{"info", "first"};
    const log_line second{"info", "second"};
    EXPECT_THAT(logs.lines(), ElementsAre(other, first, second, other, first, second));
}

// A handler in the browser around a call. Returns whether it handled a system exception.
[[gnu::noinline]] bool faults_to_the_browser(void (*call)(const loaded_library&),
                                             const loaded_library& loaded)
{
    __try {
        call(loaded);
    } __except (EXCEPTION_EXECUTE_HANDLER) {
        return true;
    }
    return false;
}

TEST_F(Unload, ASetUpThatFaultedRunsAgain)
{
    {
        const loaded_library loaded;
        const auto original =
            test::redirect_import(loaded.library.get(), "GetEnvironmentVariableA",
                                  reinterpret_cast<test::code_address>(&test::read_nowhere));
        ASSERT_NE(original, nullptr);
        EXPECT_TRUE(faults_to_the_browser(
            [](const loaded_library& library) { library.write_line(info, "lost"); }, loaded));
        test::redirect_import(loaded.library.get(), "GetEnvironmentVariableA", original);
        loaded.write_line(info, "written");
    }
    EXPECT_EQ(GetModuleHandleW(library_name), nullptr);
    EXPECT_THAT(logs.lines(), ElementsAre(log_line{"info", "written"}));
}

int fail_behind_barrier(const loaded_library& loaded)
{
    const auto fail = library_function<int (*)(int)>(loaded.library.get(), "fail_behind_barrier");
    return fail ? fail(7) : 0;
}

TEST_F(Unload, TheLoadingOfTheSuitesLibrariesThatFaultedRunsAgain)
{
    {
        const loaded_library loaded;
        const auto original =
            test::redirect_import(loaded.library.get(), "LoadLibraryExW",
                                  reinterpret_cast<test::code_address>(&test::read_nowhere));
        ASSERT_NE(original, nullptr);
        EXPECT_TRUE(faults_to_the_browser([](const loaded_library& library) { fail_behind_barrier(library); },
                                          loaded));
        EXPECT_EQ(GetModuleHandleW(L"crashguard14.dll"), nullptr);
        test::redirect_import(loaded.library.get(), "LoadLibraryExW", original);
        EXPECT_EQ(fail_behind_barrier(loaded), 7);
        EXPECT_NE(GetModuleHandleW(L"crashguard14.dll"), nullptr);
    }
    EXPECT_EQ(GetModuleHandleW(L"crashguard14.dll"), nullptr);
    EXPECT_THAT(logs.lines(), ElementsAre(log_line{"info", "System exception in fail_behind_barrier"}));
}

int (*fail_while_freed)(int) = nullptr;
int result_while_freed = 0;

// With a crash library that calls back when it is freed.
TEST_F(Unload, ACallWhileTheSuitesLibrariesAreFreedUsesTheDefaults)
{
    const test::scratch_directory folder;
    ASSERT_TRUE(
        CopyFileW(test::beside_this_program(library_name).c_str(), (folder / library_name).c_str(), TRUE));
    ASSERT_TRUE(CopyFileW(test::beside_this_program(L"calling_library.dll").c_str(),
                          (folder / L"crashguard14.dll").c_str(), TRUE));
    testing::internal::CaptureStderr();
    {
        const unique_library library(LoadLibraryW((folder / library_name).c_str()));
        fail_while_freed = library_function<int (*)(int)>(library.get(), "fail_behind_barrier");
        ASSERT_NE(fail_while_freed, nullptr);
        EXPECT_EQ(fail_while_freed(7), 7);
    }
    EXPECT_EQ(result_while_freed, 8);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "crashguard: exception c0000005\n"); // the first
    EXPECT_EQ(GetModuleHandleW(L"crashguard14.dll"), nullptr);
    EXPECT_EQ(GetModuleHandleW(library_name), nullptr);
}

TEST_F(Unload, FreesTheSuitesLibraries)
{
    const auto fail_and_unload = [] {
        const loaded_library loaded;
        const auto fail = library_function<int (*)(int)>(loaded.library.get(), "fail_behind_barrier");
        ASSERT_NE(fail, nullptr);
        EXPECT_EQ(fail(7), 7);
        EXPECT_NE(GetModuleHandleW(L"crashguard14.dll"), nullptr);
    };
    fail_and_unload();
    const auto before = process_resources::now();
    fail_and_unload();
    for (const wchar_t* name : {library_name, L"crashguard14.dll", L"pdfcore.dll", L"as_compat.dll"})
        EXPECT_EQ(GetModuleHandleW(name), nullptr);
    EXPECT_EQ(process_resources::now(), before);
    const log_line line{"info", "System exception in fail_behind_barrier"};
    EXPECT_THAT(logs.lines(), ElementsAre(line, line));
}

} // namespace

extern "C" __declspec(dllexport) void library_ends()
{
    if (const auto fail = std::exchange(fail_while_freed, nullptr))
        result_while_freed = fail(8);
}

} // namespace quill
