#include "samples/server/http_text.h"

namespace quill {
namespace {

int hexadecimal_value(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

std::string decode_path(std::string_view path)
{
    std::string decoded;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const int high = path[i] == '%' && i + 2 < path.size() ? hexadecimal_value(path[i + 1]) : -1;
        const int low = high >= 0 ? hexadecimal_value(path[i + 2]) : -1;
        if (low >= 0) {
            decoded += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            decoded += path[i];
        }
    }
    return decoded;
}

std::string_view reason_of(int status)
{
    switch (status) {
    case 200:
        return "OK";
    case 404:
        return "Not Found";
    case 405:
        return "Method Not Allowed";
    default:
        return "Bad Request";
    }
}

} // namespace

std::optional<sample_request> parse_request(std::string_view head)
{
    const std::string_view line = head.substr(0, head.find("\r\n"));
    const std::size_t first = line.find(' ');
    const std::size_t last = line.rfind(' ');
    if (first == std::string_view::npos || last <= first || line.substr(last + 1, 5) != "HTTP/")
        return std::nullopt;
    std::string_view target = line.substr(first + 1, last - first - 1);
    if (target.empty() || target.front() != '/')
        return std::nullopt;
    target = target.substr(1, target.find_first_of("?#") - 1);
    return sample_request{std::string(line.substr(0, first)), decode_path(target)};
}

std::string encode_path(std::string_view name)
{
    constexpr std::string_view plain = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~()";
    constexpr char digits[] = "0123456789ABCDEF";
    std::string encoded;
    for (const char c : name) {
        if (plain.find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            const auto byte = static_cast<unsigned char>(c);
            encoded += '%';
            encoded += digits[byte >> 4];
            encoded += digits[byte & 15];
        }
    }
    return encoded;
}

std::string response_head(int status, std::string_view content_type, std::size_t length)
{
    return "HTTP/1.1 " + std::to_string(status) + " " + std::string(reason_of(status)) +
           "\r\nContent-Type: " + std::string(content_type) +
           "\r\nContent-Length: " + std::to_string(length) +
           "\r\nCache-Control: no-cache\r\nConnection: close\r\n\r\n";
}

std::string_view content_type_of(std::string_view name)
{
    const std::size_t dot = name.rfind('.');
    std::string extension(dot == std::string_view::npos ? std::string_view() : name.substr(dot));
    for (char& c : extension)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
    if (extension == ".pdf")
        return "application/pdf";
    if (extension == ".html" || extension == ".htm")
        return "text/html";
    return "application/octet-stream";
}

} // namespace quill
