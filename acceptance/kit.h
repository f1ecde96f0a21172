// The unpacked kit: its folders and files.
#pragma once

#include "acceptance/package.h"

#include <string>
#include <vector>

namespace quill::acceptance {

struct kit
{
    std::wstring folder; // with accept.cmd, without a backslash at its end
    package installer;

    std::wstring bin(const std::wstring& name) const { return folder + L"\\bin\\" + name; }
    std::wstring report() const { return folder + L"\\report.txt"; }
    // The report of a start that is refused, if there is a report of an earlier run.
    std::wstring refused_report() const { return folder + L"\\report-refused.txt"; }
    std::wstring journal() const { return folder + L"\\journal.txt"; }
    // Deleted at the end of a run.
    std::wstring work() const { return folder + L"\\work"; }
    // Windows Installer's logs, which stay.
    std::wstring log(const std::wstring& what) const { return folder + L"\\msiexec-" + what + L".log"; }
};

// The kit that this program belongs to.
kit own_kit();

// What is wrong with the kit's files, by the list of its contents; empty if nothing is. Reads the package.
std::string damage_of(kit& checked);

// Replaces the file, completely or not at all, and waits until it is on the disk.
bool write_durably(const std::wstring& path, const std::string& text);

// Deletes a folder with everything in it. False if something is left.
bool delete_folder(const std::wstring& path);

} // namespace quill::acceptance
