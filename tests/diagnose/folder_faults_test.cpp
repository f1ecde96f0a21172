// Faults in the folders that a tab writes to.
#include "tests/diagnose/diagnosed_computer.h"

namespace quill::test {
namespace {

class FolderFault : public DiagnosedComputer
{
protected:
    static std::function<undo()> variable(const wchar_t* name, const std::wstring& value)
    {
        return [=] { return make_undo<environment_scope>(name, value); };
    }

    // As long as the handle is open, others can neither list the folder nor open it for deletion.
    static std::function<undo()> locked_folder(const std::wstring& path)
    {
        return [path] {
            const HANDLE folder = CreateFileW(path.c_str(), FILE_LIST_DIRECTORY, 0, nullptr, OPEN_EXISTING,
                                              FILE_FLAG_BACKUP_SEMANTICS, nullptr);
            EXPECT_NE(folder, INVALID_HANDLE_VALUE);
            return undo(folder, [](void* handle) { CloseHandle(handle); });
        };
    }
};

const char* const temp_check = "Temporary folder";
const char* const variable_check = "Downloads, QUILL_TMP_FOLDER";

TEST_F(FolderFault, OfTheTemporaryFolder)
{
    const std::wstring missing = temp_folder() + L"\\missing";
    const std::wstring file = temp_folder() + L"\\file";
    const std::wstring other = temp_folder() + L"\\other";
    CreateDirectoryW(other.c_str(), nullptr);
    ASSERT_TRUE(write_file(file, "x"));
    const auto system_folder = [](const std::wstring& path) {
        auto all = std::make_shared<undo_stack>();
        for (const wchar_t* name : {L"TMP", L"TEMP"})
            all->push_back(make_undo<environment_scope>(name, path));
        return undo(all);
    };
    expect_each_alone({
        {"another folder",
         variable(L"QUILL_TMP_FOLDER", other),
         {{temp_check, "OK", "(from QUILL_TMP_FOLDER): can be written"},
          {variable_check, "OK", "0 folders"}}},
        {"a missing folder",
         variable(L"QUILL_TMP_FOLDER", missing),
         {{temp_check, "PROBLEM", "cannot be written: does not exist"},
          {variable_check, "OK", "does not exist"}}},
        {"a file",
         variable(L"QUILL_TMP_FOLDER", file),
         {{temp_check, "PROBLEM", "is a file, not a folder\n"},
          {variable_check, "NOTE", "cannot be listed: is a file, not a folder"}}},
        {"a relative path",
         variable(L"QUILL_TMP_FOLDER", L"."),
         {{temp_check, "PROBLEM", "\".\" (from QUILL_TMP_FOLDER): is no full path"},
          {variable_check, "NOTE", "is no full path"}}},
        {"a name that is none",
         variable(L"QUILL_TMP_FOLDER", L"C:\\a<b>|\"c"),
         {{temp_check, "PROBLEM", "cannot be written"},
          {variable_check, "NOTE", "cannot be listed: error 123"}}},
        {"no temporary folder of the system",
         [&] { return system_folder(missing); },
         {{temp_check, "PROBLEM", "temp\\missing\": does not exist"},
          {"Downloads, system's temporary folder", "OK", "no such folder"}}},
        {"a file as temporary folder of the system",
         [&] { return system_folder(file); },
         {{temp_check, "PROBLEM", "temp\\file\": is a file, not a folder"},
          {"Downloads, system's temporary folder", "OK", "no such folder"}}},
    });
    for (const std::wstring& path : {other, file})
        remove_path(path);
}

TEST_F(FolderFault, OfTheLog)
{
    const std::wstring profile = temp_folder() + L"\\profile";
    const auto level = [](const wchar_t* text) { return variable(L"QUILL_LOG_LEVEL", text); };
    const auto sinks = [](const wchar_t* text) {
        return [text] {
            auto all = std::make_shared<undo_stack>();
            all->push_back(make_undo<environment_scope>(L"QUILL_LOG_LEVEL", L"debug"));
            all->push_back(make_undo<environment_scope>(L"QUILL_LOG_SINKS", text));
            return undo(all);
        };
    };
    expect_each_alone({
        {"no level", level(L"loud"), {{"Log", "NOTE", "\"loud\", which is no level"}}},
        {"an empty level", level(L""), {{"Log", "NOTE", "\"\", which is no level"}}},
        {"on", level(L"info"), {{"Log", "NOTE", "not tested: the system does not lower the integrity"}}},
        {"not to a file", sinks(L"stdout,procmon"), {{"Log", "OK", "on, level \"debug\", not to a file"}}},
        {"in upper case",
         sinks(L"FILE"),
         {{"Log", "NOTE", "QUILL_LOG_SINKS has what is no destination: \"FILE\""}}},
        {"a word among others",
         sinks(L"stdout, syslog;Procmon"),
         {{"Log", "NOTE",
           "not to a file; QUILL_LOG_SINKS has what is no destination: \"syslog\"; \"Procmon\""}}},
    });
}

TEST_F(FolderFault, OfManyOrUnreadableDownloads)
{
    const char* const check = "Downloads, system's temporary folder";
    const auto folder = [&](int number) { return temp_folder() + L"\\qll" + std::to_wstring(number); };
    const auto downloads = [&](int count) {
        return [=] {
            for (int i = 0; i < count; ++i)
                CreateDirectoryW(folder(i).c_str(), nullptr);
            EXPECT_TRUE(write_file(folder(0) + L"\\a.pdf", "12345"));
            return undo(nullptr, [=](void*) {
                for (int i = 0; i < count; ++i)
                    remove_path(folder(i));
            });
        };
    };
    const auto unreadable = [&] {
        auto all = std::make_shared<undo_stack>();
        all->push_back(downloads(2)());
        all->push_back(locked_folder(folder(1))());
        return undo(all);
    };
    expect_each_alone({
        {"some", downloads(3), {{check, "OK", "3 folders with 5 bytes, the oldest of 0 days"}}},
        {"many", downloads(500), {{check, "NOTE", "500 folders with 5 bytes"}}},
        {"unreadable",
         unreadable,
         {{check, "NOTE", "2 folders with 5 bytes, the oldest of 0 days, and 1 that cannot be listed"}}},
    });
}

} // namespace
} // namespace quill::test
