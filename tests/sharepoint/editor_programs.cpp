#include "tests/sharepoint/editor_programs.h"

#include "tests/support/child_process.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <string_view>

namespace quill::test {
namespace {

constexpr wchar_t settings_path[] = L"SOFTWARE\\Quill\\DocStudio\\14\\Settings";
constexpr const wchar_t* handler_keys[] = {L"Software\\Classes\\http\\shell\\open\\command",
                                           L"Software\\Classes\\https\\shell\\open\\command"};
constexpr wchar_t end_mark[] = L"--end-mark";

std::wstring recorder()
{
    return beside_this_program(L"quill_editor.exe");
}

std::wstring read_default(const wchar_t* key)
{
    wchar_t text[1024] = {};
    DWORD size = sizeof text;
    RegGetValueW(HKEY_LOCAL_MACHINE, key, nullptr, RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND,
                 nullptr, text, &size);
    return text;
}

void write_default(const wchar_t* key, const std::wstring& text)
{
    EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, key, nullptr, REG_SZ, text.c_str(),
                              static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
}

std::wstring from_utf8(std::string_view text)
{
    std::wstring wide(text.size(), L'\0');
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()),
                                           wide.data(), static_cast<int>(wide.size()));
    wide.resize(static_cast<std::size_t>(std::max(length, 0)));
    return wide;
}

// Decodes the escapes of a recorded argument.
std::wstring unescaped(std::wstring_view ascii)
{
    std::wstring text;
    while (!ascii.empty()) {
        const bool is_escape = ascii.front() == L'\\';
        text += is_escape ? static_cast<wchar_t>(std::stoul(std::wstring(ascii.substr(2, 4)), nullptr, 16))
                          : ascii.front();
        ascii.remove_prefix(is_escape ? 6 : 1);
    }
    return text;
}

std::vector<std::wstring> arguments_of(const std::wstring& record, std::wstring_view label)
{
    std::vector<std::wstring> arguments;
    for (std::size_t begin = record.find(label); begin != std::wstring::npos;
         begin = record.find(label, begin)) {
        begin += label.size();
        arguments.push_back(unescaped(record.substr(begin, record.find(L"\r\n", begin) - begin)));
    }
    return arguments;
}

// The rest of the line that begins with the label.
std::wstring value_of(const std::wstring& record, std::wstring_view label)
{
    const std::size_t begin = record.find(label);
    if (begin == std::wstring::npos)
        return {};
    const std::size_t value = begin + label.size();
    return record.substr(value, record.find(L"\r\n", value) - value);
}

} // namespace

void PrintTo(const program_start& start, std::ostream* out)
{
    *out << testing::PrintToString(start.command_line) << " parsed as "
         << testing::PrintToString(start.crt_arguments) << " and "
         << testing::PrintToString(start.shell_arguments) << " in " << testing::PrintToString(start.directory)
         << " show " << start.show_command << (start.has_canary ? " with the canary handle" : "");
}

editor_programs::editor_programs(default_handlers handlers)
    : lock_(L"editor programs"), record_(L"QUILL_EDITOR_RECORD", scratch_ / L"starts.txt"),
      settings_64_(HKEY_LOCAL_MACHINE, settings_path, KEY_WOW64_64KEY),
      settings_32_(HKEY_LOCAL_MACHINE, settings_path, KEY_WOW64_32KEY)
{
    if (handlers == default_handlers::untouched)
        return;
    for (const wchar_t* key : handler_keys) {
        handlers_before_.push_back(read_default(key));
        write_default(key, L"\"" + recorder() + L"\" --default \"%1\"");
    }
}

editor_programs::~editor_programs()
{
    for (std::size_t i = 0; i < handlers_before_.size(); ++i)
        write_default(handler_keys[i], handlers_before_[i]);
}

void editor_programs::use_second_default_handler()
{
    for (const wchar_t* key : handler_keys)
        write_default(key, L"\"" + recorder() + L"\" --second \"%1\"");
}

void editor_programs::break_default_handler()
{
    for (const wchar_t* key : handler_keys)
        write_default(key, L"C:\\nowhere\\handler.exe \"%1\"");
}

void editor_programs::set_editor(const std::wstring& path, REGSAM view)
{
    (view == KEY_WOW64_64KEY ? settings_64_ : settings_32_).set_string(L"exepath", path);
}

std::wstring editor_programs::install_editor(const std::wstring& relative_path)
{
    const std::wstring path = scratch_ / relative_path;
    for (std::size_t slash = path.find(L'\\', scratch_.path().size() + 1); slash != std::wstring::npos;
         slash = path.find(L'\\', slash + 1))
        CreateDirectoryW(path.substr(0, slash).c_str(), nullptr);
    EXPECT_TRUE(CopyFileW(recorder().c_str(), path.c_str(), FALSE));
    return path;
}

std::vector<program_start> editor_programs::starts(std::size_t expected)
{
    EXPECT_TRUE(wait_until([&] { return read_starts().size() >= expected; }))
        << expected << " starts expected";
    EXPECT_TRUE(run_program(recorder(), end_mark).started);
    return read_starts();
}

std::vector<program_start> editor_programs::read_starts() const
{
    const std::wstring text = from_utf8(read_file(scratch_ / L"starts.txt").value_or(""));
    constexpr std::wstring_view record_end = L"\r\n\r\n";
    std::vector<program_start> all; // without the end marks
    std::size_t begin = 0;
    for (std::size_t end = text.find(record_end); end != std::wstring::npos;
         end = text.find(record_end, begin)) {
        const std::wstring record = text.substr(begin, end + record_end.size() - begin);
        all.push_back({value_of(record, L"command line: "), arguments_of(record, L"\r\ncrt argument: "),
                       arguments_of(record, L"\r\nshell argument: "), value_of(record, L"directory: "),
                       _wtoi(value_of(record, L"show: ").c_str()),
                       record.find(L"canary: inherited") != std::wstring::npos});
        begin = end + record_end.size();
        if (all.back().command_line.ends_with(end_mark))
            all.pop_back();
    }
    return all;
}

std::wstring editor_programs::default_handler_line(const std::wstring& url)
{
    return L"\"" + recorder() + L"\" --default \"" + url + L"\"";
}

std::wstring editor_programs::second_default_handler_line(const std::wstring& url)
{
    return L"\"" + recorder() + L"\" --second \"" + url + L"\"";
}

program_start editor_programs::editor_start(const std::wstring& url) const
{
    const std::vector<std::wstring> arguments = {L"/pdf", L"sharepoint://" + url};
    return {L"/pdf \"sharepoint://" + url + L"\"", arguments, arguments, scratch_ / L"Editor", SW_SHOW};
}

} // namespace quill::test
