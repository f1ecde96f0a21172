// Fixture: recording programs take the place of the desktop editor and of the system's default handler.
#pragma once

#include "tests/support/scopes.h"

#include <windows.h>

#include <string>
#include <vector>

namespace quill::test {

// One start of a recording program.
struct program_start
{
    std::wstring command_line;
    // The command line as the C library and CommandLineToArgvW parse it.
    std::vector<std::wstring> crt_arguments;
    std::vector<std::wstring> shell_arguments;
    std::wstring directory;
    int show_command = -1;
    bool has_canary = false; // inherited the handle that QUILL_EDITOR_CANARY names

    friend bool operator==(const program_start&, const program_start&) = default;
};
void PrintTo(const program_start& start, std::ostream* out);

enum class default_handlers
{
    recorded, // of the machine: http and https URLs go to a recorder
    untouched // for a test that needs the editor only
};

// At first the settings name no editor, and http and https URLs go to a recorder unless untouched. The
// destructor restores the settings and the default handlers.
class editor_programs
{
public:
    explicit editor_programs(default_handlers handlers = default_handlers::recorded);
    ~editor_programs();
    editor_programs(const editor_programs&) = delete;
    editor_programs& operator=(const editor_programs&) = delete;

    // Starts the default handler with another switch from now on.
    void use_second_default_handler();
    // Makes starting the default handler fail from now on.
    void break_default_handler();
    // Writes the editor's path to a registry view of the settings.
    void set_editor(const std::wstring& path, REGSAM view = KEY_WOW64_64KEY);
    // Copies the recorder to a path in the scratch folder and returns the full path.
    std::wstring install_editor(const std::wstring& relative_path);
    // Makes the installed recorder the editor.
    void use_editor() { set_editor(install_editor(L"Editor\\editor.exe")); }

    // Waits until there are as many starts as expected and returns them. Then starts one more program and
    // waits for it, so that a start in excess is recorded too.
    std::vector<program_start> starts(std::size_t expected);

    // The expected starts of the default handler and of the editor; url as the command line has it.
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
