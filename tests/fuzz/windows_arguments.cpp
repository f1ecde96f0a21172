#include "tests/fuzz/windows_arguments.h"

namespace quill::fuzz {
namespace {

class argument_reader
{
public:
    explicit argument_reader(std::wstring_view line) : rest_(line) {}

    std::wstring first()
    {
        std::wstring argument;
        for (bool quoted = false; !rest_.empty() && (quoted || !is_blank(rest_.front()));) {
            const wchar_t c = take();
            if (c == L'"')
                quoted = !quoted;
            else
                argument += c;
        }
        return argument;
    }

    bool skip_blanks()
    {
        while (!rest_.empty() && is_blank(rest_.front()))
            take();
        return !rest_.empty();
    }

    std::wstring next()
    {
        std::wstring argument;
        for (bool quoted = false; !rest_.empty() && (quoted || !is_blank(rest_.front()));) {
            std::size_t backslashes = 0;
            while (!rest_.empty() && rest_.front() == L'\\') {
                take();
                ++backslashes;
            }
            if (rest_.empty() || rest_.front() != L'"') {
                argument.append(backslashes, L'\\');
                if (backslashes == 0)
                    argument += take();
                continue;
            }
            take();
            argument.append(backslashes / 2, L'\\');
            if (backslashes % 2 != 0)
                argument += L'"';
            else if (quoted && rest_.starts_with(L'"'))
                argument += take();
            else
                quoted = !quoted;
        }
        return argument;
    }

private:
    static bool is_blank(wchar_t c) { return c == L' ' || c == L'\t'; }

    wchar_t take()
    {
        const wchar_t c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    std::wstring_view rest_;
};

} // namespace

std::vector<std::wstring> windows_arguments(std::wstring_view line)
{
    argument_reader reader(line.substr(0, line.find(L'\0')));
    std::vector<std::wstring> arguments = {reader.first()};
    while (reader.skip_blanks())
        arguments.push_back(reader.next());
    return arguments;
}

} // namespace quill::fuzz
