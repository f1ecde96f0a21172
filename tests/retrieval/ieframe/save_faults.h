// Every call of saving a copy, going wrong once in each way that it may: the browser's functions, the
// library that they are in, and the system's calls between them.
#pragma once

#include "tests/retrieval/ieframe/own_folder.h"
#include "tests/retrieval/ieframe/save_browser.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quill::test {

struct save_fault
{
    std::string name;
    // Arranges it. shown is the file that is to be saved; whoever arranges makes it anew afterwards.
    std::function<void(save_browser& browser, const std::wstring& shown)> arrange;
    std::vector<std::string> calls; // of the browser's functions, to its end
    int result = 0;                 // of SaveDocumentAs
    bool saves = false;             // whether the copy is at its place all the same
    // What is beside the program; nothing: the system's own library.
    std::optional<ieframe> library = ieframe::complete;
};

std::vector<save_fault> every_save_fault();
// Nothing goes wrong.
save_fault no_save_fault();

// What every save has to leave behind, whatever became of it: the state given back once if there was one,
// and no file but the saved one.
void expect_tidy(const save_browser& browser, const save_fault& fault);

} // namespace quill::test
