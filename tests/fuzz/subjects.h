// The fuzz subjects: each runs the code under test on one input and checks properties of the result. A broken
// property ends the process.
#pragma once

#include "tests/fuzz/input.h"

#include <span>
#include <string_view>

namespace quill::fuzz {

struct subject
{
    std::string_view name; // of its folder in corpus/ too
    void (*run)(bytes input);
};

std::span<const subject> subjects();
const subject* find_subject(std::string_view name);

void url_escapes(bytes input);
void url_file_name(bytes input);
void url_fragment(bytes input);
void url_resolution(bytes input);
void url_parts(bytes input);
void pdf_check(bytes input);
void pdf_names(bytes input);
void sharepoint_links(bytes input);
void link_rewriting(bytes input);
void page_kind(bytes input);
void repeat_guard(bytes input);
void settings_text(bytes input);
void registry_script(bytes input);
void diagnosis(bytes input);

} // namespace quill::fuzz
