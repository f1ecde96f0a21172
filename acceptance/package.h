// The kit's Windows Installer package: what it is, whether it is installed, and msiexec.
#pragma once

#include "acceptance/child.h"
#include "acceptance/msiexec_result.h"

#include <string>
#include <vector>

namespace quill::acceptance {

struct package
{
    std::wstring path;
    std::wstring product_code;
    std::wstring upgrade_code;
    std::wstring version;
};

// Reads the package's properties. False if it is not a package.
bool read_package(const std::wstring& path, package& read);

// The product codes of all installed versions of the product.
std::vector<std::wstring> installed_products(const package& of);

// Copies the package and adds an action to the copy that fails at the end of the installation.
bool make_failing_package(const package& original, const std::wstring& copy);

// msiexec with these arguments, quiet and with a log of that path. It is waited for, also by a run that is
// broken off. While another installation is in progress it is tried again, for ten minutes at most.
child_result run_msiexec(const std::wstring& arguments, const std::wstring& log, const std::wstring& work);

msi_outcome outcome_of(const child_result& ended);

} // namespace quill::acceptance
