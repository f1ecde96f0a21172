// The product's constants and settings as the module has them, for plain code. Filled from the module's
// headers, resources and functions by product_facts.cpp.
#pragma once

#include "diagnose/registry_value.h"

#include <optional>
#include <string>
#include <vector>

namespace quill::diagnose {

// A value that registration writes; without a name for the key alone.
struct registered_value
{
    std::wstring path;                // below HKEY_LOCAL_MACHINE
    std::optional<std::wstring> name; // empty: the default value
    DWORD type = 0;
    std::vector<BYTE> data;
    bool is_module_path = false; // then there is no data
};

struct product_constants
{
    std::wstring document_class; // "{...}"
    std::wstring helper_class;
    std::wstring type_library;
    std::wstring app_container_category;
    std::wstring viewer_progid;
    std::wstring module_file;
    std::wstring version; // of this program, four numbers
    std::vector<registered_value> document_values;
    std::vector<registered_value> helper_values;
};

enum class switch_source
{
    none,
    user,
    machine,
    machine_32_bit
};

// Results of the module's own functions.
struct product_settings
{
    bool uses_wininet = false;
    switch_source wininet_source = switch_source::none;
    std::wstring wininet_key;
    std::wstring wininet_value;
    std::wstring editor_path;
    std::wstring editor_key;

    std::wstring temp_folder;        // of a tab of medium integrity; empty: none
    bool is_temp_folder_set = false; // by the environment variable
    std::wstring temp_variable;
    std::wstring system_temp_folder; // empty: none
    // Then the variable that names no folder or no full path, TMP or TEMP, and its value; empty: neither is
    // set.
    std::wstring system_temp_variable;
    std::wstring system_temp_value;
    std::wstring low_temp_folder;

    bool is_log_set = false; // the environment variable with the level exists
    bool is_log_on = false;  // and names a level
    bool is_log_to_file = false;
    std::wstring log_level;
    std::wstring log_folder;                 // only if the log goes to a file
    std::vector<std::wstring> unknown_sinks; // words that select no destination of a log that is on

    std::vector<std::wstring> variables; // the environment variables that the module reads
};

struct system_facts
{
    std::wstring user;
    bool is_elevated = false;
    std::wstring windows_version;
    std::wstring program_files;
    std::wstring system_folder;
    // Of the system, for example 6 and 1; 0 and 0 if it is not known.
    DWORD windows_major = 0;
    DWORD windows_minor = 0;
};

} // namespace quill::diagnose
