// What the report says about the machine, and what decides whether the kit can run on it.
#pragma once

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

namespace quill::acceptance {

// The version of Wine; empty on Windows.
std::string wine_version();

// Names and values: system, processor, browser, libraries, with what is missing said so.
std::vector<std::pair<std::string, std::string>> system_facts();

// Whether this process has an administrator's rights.
bool has_administrator_rights();

// The DLL of a class in the machine's part of the registry; empty if it is not registered.
std::wstring server_of_class(const std::wstring& class_id);

// What of the browser's engine is missing; empty if nothing is.
std::string missing_engine_part();

// "11.0.9600.20000 (C:\Windows\System32\ieframe.dll)", or why there is none.
std::string file_version(const std::wstring& path);

} // namespace quill::acceptance
