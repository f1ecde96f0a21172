#include "acceptance/steps.h"

#include <algorithm>

namespace quill::acceptance {

const std::vector<step>& test_steps()
{
    static const std::vector<step> steps = {
        {"plain", "decisions about URLs, names, pages and settings", "test_plain.exe", "*", 120},
        {"platform", "settings, files, temporary folders, locks", "test_platform.exe", "*", 120},
        {"framework", "COM objects, registrar, dispatch, event sinks", "test_framework.exe", "*", 300},
        {"retrieval", "the browser's download service, cache folders, PDF check", "test_retrieval.exe", "*",
         300},
        {"document", "the document object in a strict container", "test_document.exe", "*", 1200},
    };
    return steps;
}

const std::vector<step>& installed_steps()
{
    static const std::vector<step> steps = {
        {"engine", "the browser's engine opens a PDF at its page", "test_installed.exe", "Engine.*", 180},
        {"embedded", "a page with embedded PDFs", "test_installed.exe", "EmbeddedPage.*", 180},
        {"library",
         "a document library, with the editor's stand-in; the helper object is created by the step",
         "test_installed.exe", "Library.*", 180},
        {"download", "questions about the download services", "test_installed.exe", "Download*", 180},
        {"integrity", "questions about low integrity", "test_installed.exe", "Integrity.*", 120},
        {"system", "questions about classes, functions and signatures", "test_installed.exe", "System.*",
         120},
    };
    return steps;
}

const std::vector<std::string_view>& installer_steps()
{
    static const std::vector<std::string_view> steps = {"rollback", "repair", "admin-image"};
    return steps;
}

namespace {

bool is_step(std::string_view name)
{
    const auto has_name = [&](const step& each) { return each.name == name; };
    return std::any_of(test_steps().begin(), test_steps().end(), has_name) ||
           std::any_of(installed_steps().begin(), installed_steps().end(), has_name) ||
           std::find(installer_steps().begin(), installer_steps().end(), name) != installer_steps().end();
}

} // namespace

std::optional<std::vector<std::string>> parse_selection(std::string_view names)
{
    std::vector<std::string> selected;
    for (;;) {
        const std::size_t comma = names.find(',');
        selected.emplace_back(names.substr(0, comma));
        if (!is_step(selected.back()))
            return std::nullopt;
        if (comma == std::string_view::npos)
            return selected;
        names.remove_prefix(comma + 1);
    }
}

} // namespace quill::acceptance
