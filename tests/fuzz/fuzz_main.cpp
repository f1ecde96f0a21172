// The entry points that libFuzzer calls. Its own options begin with one dash; "--subject=NAME" selects the
// subject.
#include "tests/fuzz/subjects.h"

#include <cstdio>
#include <cstdlib>

namespace {

const quill::fuzz::subject* chosen;

} // namespace

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int LLVMFuzzerInitialize(int* count, char*** arguments)
{
    constexpr std::string_view option = "--subject=";
    for (int i = 1; i < *count; ++i) {
        const std::string_view argument = (*arguments)[i];
        if (argument.starts_with(option))
            chosen = quill::fuzz::find_subject(argument.substr(option.size()));
    }
    if (!chosen) {
        std::fputs("--subject=NAME is needed, one of:", stderr);
        for (const auto& each : quill::fuzz::subjects())
            std::fprintf(stderr, " %.*s", static_cast<int>(each.name.size()), each.name.data());
        std::fputs("\n", stderr);
        std::exit(2);
    }
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    chosen->run({data, size});
    return 0;
}
