// Stands in for the suite's desktop editor on machines without the suite: shows how it was started. With
// the environment variable QUILL_EDITOR_RECORD it writes that into the file named there instead, and ends.
#include "platform/environment.h"
#include "suite/editor/editor_window.h"
#include "suite/editor/start_record.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show_command)
{
    const auto record = quill::editor::start_record::of_this_program();
    if (const auto file = quill::environment_variable(L"QUILL_EDITOR_RECORD"))
        return quill::editor::append_to_file(*file, record.text()) ? 0 : 1;
    return quill::editor::show_text(instance, record.text(), show_command);
}
