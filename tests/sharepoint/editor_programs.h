// Where the desktop editor and the system's default handler are recorders, started for real.
#pragma once

#include "tests/support/scopes.h"

#include <windows.h>

#include <string>
#include <vector>

namespace quill::test {

// How a recorder was started.
struct program_start
{
    std::wstring command_line;
    // The command line as the C library and as the shell's function take it apart.
    std::vector<std::wstring> crt_arguments;
    std::vector<std::wstring> shell_arguments;
    std::wstring directory;
    int show_command = -1;
    bool has_canary = false; // the handle that QUILL_EDITOR_CANARY names

    friend bool operator==(const program_start&, const program_start&) = default;
};
void PrintTo(const program_start& start, std::ostream* out);

// The machine's settings name no editor at first; http and https addresses go to a recorder. The settings
// and the handlers are as before at the end.
class editor_bench
{
public:
    editor_bench();
    ~editor_bench();
    editor_bench(const editor_bench&) = delete;
    editor_bench& operator=(const editor_bench&) = delete;

    // Addresses go to a recorder with another mark on its command line from here on.
    void use_second_default_handler();
    // Nothing can be started from here on.
    void break_default_handler();
    // Writes the editor's path into a view of the settings.
    void set_editor(const std::wstring& path, REGSAM view = KEY_WOW64_64KEY);
    // Copies the recorder to a file in the scratch folder (folders are made) and returns its full path.
    std::wstring install_editor(const std::wstring& relative_path);
    // Makes the installed recorder the editor.
    void use_editor() { set_editor(install_editor(L"Editor\\editor.exe")); }

    // All starts so far, after waiting until there are as many as expected. One more program is started and
    // waited for, so that a start too many has had its time.
    std::vector<program_start> starts(std::size_t expected);

    // What the default handler's and the editor's start looks like. For the editor, url is the text that the
    // command line has.
    static std::wstring default_handler_line(const std::wstring& url);
    static std::wstring second_default_handler_line(const std::wstring& url);
    program_start editor_start(const std::wstring& url) const;
    const scratch_directory& scratch() const { return scratch_; }

private:
    std::vector<program_start> read_starts() const;

    cross_process_lock lock_;
    scratch_directory scratch_;
    environment_scope record_;
    registry_key_scope settings_64_;
    registry_key_scope settings_32_;
    std::vector<std::wstring> handlers_before_;
};

} // namespace quill::test
