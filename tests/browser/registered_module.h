// Registers libraries of the build in a scope, so that the browser finds them.
#pragma once

#include "tests/support/scopes.h"

#include <windows.h>

#include <string>

namespace quill::test {

// A library in the folder of the test program, registered per machine through its own exports.
class registered_library
{
public:
    explicit registered_library(const std::wstring& name);
    // Unregisters it. Tests check for leaked references themselves, with an idle engine: this platform's
    // engine leaks a document whose own data arrived late.
    ~registered_library();
    registered_library(const registered_library&) = delete;
    registered_library& operator=(const registered_library&) = delete;

    // Whether all references to its objects are released.
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
