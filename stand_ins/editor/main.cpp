// Stands in for the suite's desktop editor: shows its command line and working directory. Two environment
// variables name output files: QUILL_EDITOR_RECORD, to which a record of the start is appended, and
// QUILL_EDITOR_PICTURE, for a screenshot. With QUILL_EDITOR_RECORD alone no window is shown.
#include "platform/environment.h"
#include "stand_ins/editor/editor_window.h"
#include "stand_ins/editor/start_record.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show_command)
{
    const auto start = quill::editor::start_record::of_this_program();
    const auto record = quill::environment_variable(L"QUILL_EDITOR_RECORD");
    const auto picture = quill::environment_variable(L"QUILL_EDITOR_PICTURE");
    if (record && !quill::editor::append_to_file(*record, start.text()))
        return 1;
    if (record && !picture)
        return 0;
    return quill::editor::show_start(instance, start, show_command, picture.value_or(std::wstring()));
}
