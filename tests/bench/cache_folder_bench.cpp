// The folder of a downloaded document, in temporary folders with many documents.
#include "retrieval/download/cache_folder.h"
#include "tests/bench/plain_benchmarks.h"
#include "tests/bench/support/report.h"

#include <windows.h>

#include <optional>
#include <stdexcept>
#include <string>

namespace quill::bench {
namespace {

// The minimal work of finding the number: every entry is read, none is parsed.
void read_and_create(const std::wstring& temporary, const std::wstring& folder)
{
    WIN32_FIND_DATAW entry{};
    const HANDLE search = FindFirstFileExW((temporary + L"qll*").c_str(), FindExInfoBasic, &entry,
                                           FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (search != INVALID_HANDLE_VALUE) {
        while (FindNextFileW(search, &entry)) {
        }
        FindClose(search);
    }
    CreateDirectoryW(folder.c_str(), nullptr);
}

void probe_and_create(const std::wstring& temporary)
{
    std::wstring folder;
    int number = 0;
    do
        folder = temporary + L"qll" + std::to_wstring(number++);
    while (GetFileAttributesW(folder.c_str()) != INVALID_FILE_ATTRIBUTES);
    CreateDirectoryW(folder.c_str(), nullptr);
}

struct old_documents
{
    std::string what;
    std::wstring temporary; // with a trailing backslash
    int rounds;
    std::optional<target> of_probing; // against probing each number
};

void compare(const old_documents& documents)
{
    const std::wstring& temporary = documents.temporary;
    const std::wstring expected = create_cache_folder(temporary);
    if (expected.empty())
        throw std::runtime_error("there is no folder with " + documents.what);
    RemoveDirectoryW(expected.c_str());
    const auto timed = [&expected](const auto& create) {
        return [&expected, create] {
            const double start = now();
            create();
            const double taken = now() - start;
            if (!RemoveDirectoryW(expected.c_str()))
                throw std::runtime_error("a cache folder got another number");
            return taken;
        };
    };
    const auto ours = timed([&] { keep(create_cache_folder(temporary)); });
    const int rounds = is_short_run() ? 2 : documents.rounds;
    const std::string line = "cache folder among " + documents.what + " : ";
    report(line + "listing and creating",
           compare_medians(ours, timed([&] { read_and_create(temporary, expected); }), rounds), 1.3);
    report(line + "a query for each number",
           compare_medians(ours, timed([&] { probe_and_create(temporary); }), rounds), documents.of_probing);
}

} // namespace

void cache_folder_benchmarks()
{
    const std::wstring& documents = current_options().documents;
    if (documents.empty())
        throw std::runtime_error("--documents is missing");
    compare({"no others", documents + L"\\none\\", 401, 3.0});
    compare({"1000 others", documents + L"\\some\\", 41, 1.0});
    compare({"20000 others", documents + L"\\many\\", 10, 1.0});
    // Probing stops at the first gap, reading at the last entry.
    compare({"20000 others with gaps", documents + L"\\gaps\\", 10, std::nullopt});
}

} // namespace quill::bench
