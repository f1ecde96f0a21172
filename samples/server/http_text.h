// The text of HTTP as the sample server speaks it: requests in, answers out. No sockets.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quill {

struct sample_request
{
    std::string method;
    std::string name; // the path without its leading slash, decoded; query and fragment left out
};

// The request in the head of a message, up to the empty line; nothing when it is none.
std::optional<sample_request> parse_request(std::string_view head);

// "a b.pdf" as a path in an address: bytes beyond letters, digits and a few signs become %XX.
std::string encode_path(std::string_view name);

// Head of an answer, with the empty line at its end.
std::string answer_head(int status, std::string_view content_type, std::size_t length);

// What a file of that name holds, for a browser.
std::string_view content_type_of(std::string_view name);

} // namespace quill
