// Runs every saved input of the subjects named on the command line, or of all: replay FOLDER [SUBJECT...].
// For builds without libFuzzer: with the system's own functions, and when coverage is counted.
#include "tests/fuzz/subjects.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

std::size_t replay(const quill::fuzz::subject& subject, const std::filesystem::path& corpus)
{
    std::size_t inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(corpus / subject.name)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> content{std::istreambuf_iterator<char>(file),
                                        std::istreambuf_iterator<char>()};
        std::vector<std::uint8_t> input(content.begin(), content.end());
        input.shrink_to_fit();
        std::printf("%s %s\n", subject.name.data(), entry.path().filename().string().c_str());
        std::fflush(stdout);
        subject.run(input);
        ++inputs;
    }
    return inputs;
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 2) {
        std::fputs("usage: replay FOLDER [SUBJECT...]\n", stderr);
        return 2;
    }
    for (int i = 2; i < count; ++i) {
        if (!quill::fuzz::find_subject(arguments[i])) {
            std::fprintf(stderr, "there is no subject %s\n", arguments[i]);
            return 2;
        }
    }
    for (const auto& subject : quill::fuzz::subjects()) {
        bool wanted = count == 2;
        for (int i = 2; i < count; ++i)
            wanted = wanted || subject.name == arguments[i];
        if (wanted && replay(subject, arguments[1]) == 0) {
            std::fprintf(stderr, "%s has no saved input\n", subject.name.data());
            return 1;
        }
    }
    return 0;
}
