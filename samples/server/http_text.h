// Parses requests and formats responses of the sample server. No sockets.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quill {

struct sample_request
{
    std::string method;
    std::string name; // the decoded path without its leading slash, query and fragment
};

// Parses the head of a message, up to the empty line; nullopt if it is not a request.
std::optional<sample_request> parse_request(std::string_view head);

// Encodes a file name as a URL path: bytes other than letters, digits and some punctuation become %XX.
std::string encode_path(std::string_view name);

// The head of a response, including the empty line.
std::string response_head(int status, std::string_view content_type, std::size_t length);

// The MIME type for a file name.
std::string_view content_type_of(std::string_view name);

} // namespace quill
