// Registers libraries of the build for the length of a scope, so that the browser finds them.
#pragma once

#include "tests/support/scopes.h"

#include <windows.h>

#include <string>

namespace quill::test {

// A library that lies beside the test program, registered per machine through its own exports.
class registered_library
{
public:
    explicit registered_library(const std::wstring& name);
    // Unregisters it. Whether everything of it was released is for the test to ask, on a quiet engine: this
    // platform's keeps a document for good when data of its own request came late.
    ~registered_library();
    registered_library(const registered_library&) = delete;
    registered_library& operator=(const registered_library&) = delete;

    // Whether everything that it handed out has been released.
    bool can_unload() const;

private:
    FARPROC find(const char* name) const;

    HMODULE handle_;
};

// The module, registered while no other test program changes the registration.
class registered_module
{
public:
    bool can_unload() const { return library_.can_unload(); }

private:
    cross_process_lock lock_{L"registration"};
    registered_library library_{L"QuillPDF.IE.dll"};
};

} // namespace quill::test
