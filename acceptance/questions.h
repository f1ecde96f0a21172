// The questions of docs/known-limits.md that only Windows can answer, in the order of that document.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quill::acceptance {

struct question
{
    std::string_view id;   // as in the document
    std::string_view text; // as in the document
    // How the kit measures it; empty if it does not.
    std::string_view measured_by;
    // Why the kit cannot answer it; empty if it can.
    std::string_view reason;
};

const std::vector<question>& questions();

// The part of the report about them. A question that the kit measures and that has no answer is said to be
// not answered, with `missing` as the reason.
std::vector<std::string> answer_lines(const std::map<std::string, std::string>& answers,
                                      std::string_view missing);

} // namespace quill::acceptance
