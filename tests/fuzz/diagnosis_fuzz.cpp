// The diagnosis. Input: the first byte selects what the rest is. A file of the module, or a value of the
// registry: type, place among those that the checks read (two bytes), data. There is one finding for each
// check in any case.
#include "diagnose/image_file.h"
#include "tests/diagnose/stated_machine.h"
#include "tests/fuzz/subjects.h"

#include <algorithm>
#include <utility>

namespace quill::fuzz {
namespace {

using namespace diagnose;

struct stated_case
{
    stated_case() : checks(computer.diagnose().size())
    {
        places.assign(computer.machine.asked.begin(), computer.machine.asked.end());
    }

    stated_computer computer;
    std::size_t checks;
    std::vector<stated_machine::place> places;
};

void check_report(const stated_case& stated)
{
    const report findings = stated.computer.diagnose();
    FUZZ_CHECK(findings.size() == stated.checks);
    for (const finding& finding : findings) {
        const std::wstring text = text_of(finding);
        FUZZ_CHECK(std::ranges::count(text, L'\n') == 4);
        FUZZ_CHECK(std::ranges::none_of(text, [](wchar_t c) { return c < 0x20 && c != L'\n'; }));
        FUZZ_CHECK((finding.result == state::ok) == finding.to_do.empty());
    }
}

void diagnose_file(stated_case& stated, const std::string& contents)
{
    const image_facts facts = read_image(contents);
    FUZZ_CHECK(!facts.has_class_objects || facts.kind == image_kind::bits_64);
    FUZZ_CHECK(!facts.version || facts.has_version);
    file_contents& file = stated.computer.machine.files[test_module_path];
    const file_contents before = std::exchange(file, {0, false, contents});
    check_report(stated);
    file = before;
}

void diagnose_value(stated_case& stated, bytes input)
{
    constexpr std::size_t head = 3;
    if (input.size() < head)
        return;
    const std::size_t index = (input[1] + 256u * input[2]) % stated.places.size();
    const auto& [root, view, path, name] = stated.places[index];
    const auto before = stated.computer.machine.values;
    const bytes data = input.subspan(head);
    stated.computer.machine.set({root, path, view}, name,
                                {input[0] == 0xFF ? ERROR_ACCESS_DENIED : ERROR_SUCCESS, input[0],
                                 std::vector<BYTE>(data.begin(), data.end())});
    check_report(stated);
    stated.computer.machine.values = before;
}

} // namespace

void diagnosis(bytes input)
{
    static stated_case stated;
    if (input.empty())
        return;
    if (input[0] % 2 == 0)
        diagnose_file(stated, narrow_text(input.subspan(1)));
    else
        diagnose_value(stated, input.subspan(1));
}

} // namespace quill::fuzz
