#include "tests/fuzz/subjects.h"

#include <algorithm>

namespace quill::fuzz {

std::span<const subject> subjects()
{
    static constexpr subject all[] = {
        {"link_rewriting", link_rewriting}, {"settings_text", settings_text},
        {"page_kind", page_kind},           {"pdf_check", pdf_check},
        {"pdf_names", pdf_names},           {"registry_script", registry_script},
        {"repeat_guard", repeat_guard},     {"sharepoint_links", sharepoint_links},
        {"url_escapes", url_escapes},       {"url_file_name", url_file_name},
        {"url_fragment", url_fragment},     {"url_parts", url_parts},
        {"url_resolution", url_resolution}, {"diagnosis", diagnosis},
    };
    return all;
}

const subject* find_subject(std::string_view name)
{
    const auto found = std::ranges::find(subjects(), name, &subject::name);
    return found == subjects().end() ? nullptr : &*found;
}

} // namespace quill::fuzz
