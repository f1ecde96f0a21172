// QuillDiagnose.exe started in a session where a PDF would open, and faults that are put into it one at a
// time.
#pragma once

#include "tests/support/child_process.h"
#include "tests/support/scopes.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quill::test {

inline constexpr wchar_t document_clsid[] = L"{5E2C7A90-1B3D-4F6E-8A21-C4D9E07B3F15}";
inline constexpr wchar_t helper_clsid[] = L"{8D41F0B2-6C7A-4E93-B5D8-2A0F19C6E4D7}";
inline constexpr wchar_t viewer_clsid[] = L"{B7D25A34-91CE-4E08-A6F3-5C0E8D419B72}";

// Changes a value and restores it, or removes it with the keys that were created for it.
class value_change
{
public:
    struct data
    {
        DWORD type = REG_NONE;
        std::string bytes;
    };

    value_change(HKEY root, std::wstring path, std::wstring name, const std::optional<data>& value,
                 REGSAM view = KEY_WOW64_64KEY);
    ~value_change();
    value_change(const value_change&) = delete;
    value_change& operator=(const value_change&) = delete;

private:
    HKEY root_;
    std::wstring path_;
    std::wstring name_;
    REGSAM view_;
    std::wstring created_; // the topmost key that did not exist
    std::optional<data> before_;
};

value_change::data text_data(const std::wstring& text, DWORD type = REG_SZ);
value_change::data number_data(DWORD number);
value_change::data binary_data(std::size_t size);
// REG_SZ whose last character is not null.
value_change::data unterminated_data(const std::wstring& text);

// Denies everyone access to a key.
class denied_key
{
public:
    denied_key(HKEY root, const std::wstring& path);
    ~denied_key();
    denied_key(const denied_key&) = delete;
    denied_key& operator=(const denied_key&) = delete;

private:
    HKEY key_ = nullptr;
    std::string before_;
};

// Replaces a file, or removes it, and restores it.
class file_change
{
public:
    file_change(std::wstring path, const std::optional<std::string>& contents);
    ~file_change();
    file_change(const file_change&) = delete;
    file_change& operator=(const file_change&) = delete;

private:
    std::wstring path_;
    std::optional<std::string> before_;
};

struct diagnosis
{
    DWORD exit_code = 0;
    std::string output;
    std::string errors;
    std::map<std::string, std::string> findings; // check -> its lines
    std::vector<std::string> checks;             // in order
};

// Runs a second time, and prints that, if there was no output: under Wine a program occasionally fails before
// its first instruction.
diagnosis run_again_if_silent(const std::function<diagnosis()>& run);

diagnosis run_diagnosis(const std::wstring& arguments = L"");

// A symbolic link to a file or folder.
void make_link(const std::wstring& target, const std::wstring& link);

// Whatever undoes the fault in its destructor.
using undo = std::shared_ptr<void>;

// Undoes several changes, the last one first.
class undo_stack
{
public:
    ~undo_stack()
    {
        while (!changes_.empty())
            changes_.pop_back();
    }
    void push_back(undo change) { changes_.push_back(std::move(change)); }

private:
    std::vector<undo> changes_;
};

template <typename Type, typename... Arguments>
undo make_undo(Arguments&&... arguments)
{
    return std::make_shared<Type>(std::forward<Arguments>(arguments)...);
}

struct changed_finding
{
    std::string check;
    std::string state; // "OK", "NOTE", "PROBLEM"
    std::string text;  // that the finding contains
};

struct fault
{
    std::string name;
    std::function<undo()> inject;
    std::vector<changed_finding> changes;
};

// The product registered from a folder of its own, the viewer, the editor and 64-bit tabs: a PDF would open.
class DiagnosedComputer : public testing::Test
{
protected:
    DiagnosedComputer();
    ~DiagnosedComputer() override;

    // Puts each fault in alone: exactly the stated findings must change, and the exit code is 1 if one of
    // them is a problem. Afterwards the diagnosis must be as before.
    void expect_each_alone(const std::vector<fault>& faults);
    void expect_alone(const fault& fault);

    const std::wstring& module_path() const { return module_; }
    const std::wstring& viewer_path() const { return viewer_; }
    const std::wstring& temp_folder() const { return temp_; }
    const std::wstring& editor_path() const { return editor_; }
    const diagnosis& before() const { return before_; }

private:
    cross_process_lock lock_{L"registration"};
    scratch_directory folder_;
    std::wstring module_ = folder_ / L"QuillPDF.IE.dll";
    std::wstring viewer_ = folder_ / L"Viewer \u03A9.dll"; // a name beyond the code page
    std::wstring editor_ = folder_ / L"editor.exe";
    std::wstring temp_ = folder_ / L"temp";
    std::optional<undo_stack> state_{std::in_place};
    diagnosis before_;
};

} // namespace quill::test
