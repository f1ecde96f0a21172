// Each call of saving a copy, failing once in every way: the functions of the browser, the library that
// exports them, and the system calls between them.
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
    // Injects the fault. shown is the file to save; the caller creates it again afterwards.
    std::function<void(save_browser& browser, const std::wstring& shown)> arrange;
    std::vector<std::string> calls; // of the browser's functions, in full
    int result = 0;                 // of SaveDocumentAs
    bool saves = false;             // whether the copy is at its place anyway
    // The library in the folder of the program; without one, the system's own.
    std::optional<ieframe> library = ieframe::complete;
};

std::vector<save_fault> every_save_fault();
// No fault.
save_fault no_save_fault();

// What every save must leave, whatever its result: the state released once if there was one, and no file but
// the saved one.
void expect_tidy(const save_browser& browser, const save_fault& fault);

} // namespace quill::test
