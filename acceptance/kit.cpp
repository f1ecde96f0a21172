#include "acceptance/kit.h"

#include "acceptance/kit_contents.h"
#include "acceptance/windows_text.h"
#include "platform/text.h"
#include "platform/unique_handle.h"

#include <windows.h>

#include <bcrypt.h>

#include <array>
#include <cstdio>

namespace quill::acceptance {
namespace {

// SHA-256 of a file's contents; empty if it cannot be computed.
std::string checksum_of(const std::string& contents)
{
    BCRYPT_ALG_HANDLE algorithm = nullptr;
    if (BCryptOpenAlgorithmProvider(&algorithm, BCRYPT_SHA256_ALGORITHM, nullptr, 0) < 0)
        return {};
    std::array<unsigned char, 32> digest{};
    BCRYPT_HASH_HANDLE hash = nullptr;
    bool done = BCryptCreateHash(algorithm, &hash, nullptr, 0, nullptr, 0, 0) >= 0;
    std::string copy = contents; // the function takes writable memory
    done = done &&
           BCryptHashData(hash, reinterpret_cast<unsigned char*>(copy.data()),
                          static_cast<ULONG>(copy.size()), 0) >= 0 &&
           BCryptFinishHash(hash, digest.data(), static_cast<ULONG>(digest.size()), 0) >= 0;
    if (hash != nullptr)
        BCryptDestroyHash(hash);
    BCryptCloseAlgorithmProvider(algorithm, 0);
    std::string text;
    for (const unsigned char byte : digest) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return done ? text : std::string();
}

} // namespace

kit own_kit()
{
    std::wstring path(32'768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    kit found;
    found.folder = path.substr(0, path.find_last_of(L'\\'));
    found.folder.resize(found.folder.find_last_of(L'\\'));
    return found;
}

std::string damage_of(kit& checked)
{
    const auto files = parse_kit_contents(read_whole_file(checked.folder + L"\\contents.txt"));
    if (!files)
        return "contents.txt is missing or damaged";
    std::wstring installer;
    for (const kit_file& file : *files) {
        const std::wstring path = checked.folder + L"\\" + to_wide(file.path);
        if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES)
            return file.path + " is missing";
        if (checksum_of(read_whole_file(path)) != file.checksum)
            return file.path + " is damaged: another checksum than in contents.txt";
        if (file.path.ends_with(".msi"))
            installer = path;
    }
    if (installer.empty() || !read_package(installer, checked.installer))
        return "the installer package is missing or cannot be read";
    return {};
}

bool write_durably(const std::wstring& path, const std::string& text)
{
    const std::wstring temporary = path + L".new";
    {
        const unique_handle file(
            CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        DWORD written = 0;
        if (!file ||
            !WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) ||
            written != text.size() || !FlushFileBuffers(file.get()))
            return false;
    }
    return MoveFileExW(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) !=
           FALSE;
}

bool delete_folder(const std::wstring& path)
{
    WIN32_FIND_DATAW found{};
    {
        const unique_find_handle search(FindFirstFileW((path + L"\\*").c_str(), &found));
        if (!search)
            return GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES;
        do {
            const std::wstring name = found.cFileName;
            const std::wstring entry = path + L"\\" + name;
            const bool is_folder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
            if (name == L"." || name == L"..")
                continue;
            if (is_folder && (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
                delete_folder(entry);
            else if (is_folder)
                RemoveDirectoryW(entry.c_str());
            else if (!DeleteFileW(entry.c_str()) && SetFileAttributesW(entry.c_str(), FILE_ATTRIBUTE_NORMAL))
                DeleteFileW(entry.c_str());
        } while (FindNextFileW(search.get(), &found));
    }
    return RemoveDirectoryW(path.c_str()) != FALSE;
}

} // namespace quill::acceptance
