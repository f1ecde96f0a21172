// The private messages of the document window as its viewer and its download worker send them.
#pragma once

#include "tests/document/document_fixture.h"

#include <cstdint>
#include <string>

namespace quill::test {

inline constexpr UINT message_reserved = 0x8701;
inline constexpr UINT message_open_link = 0x8702;
inline constexpr UINT message_load_file = 0x8703;
inline constexpr UINT message_progress = 0x8704;
inline constexpr UINT message_get_url = 0x8705;
inline constexpr UINT message_get_url_length = 0x8706;
inline constexpr UINT message_set_cache_file = 0x8707;
inline constexpr UINT message_log = 0x8708;
inline constexpr UINT message_get_browser_window = 0x8709;
inline constexpr UINT message_get_instance = 0x8710;
inline constexpr UINT message_save_as = 0x8711;
inline constexpr UINT message_release = 0x8712;
// Not a message of the document, and far from the next free number.
inline constexpr UINT message_unknown = 0x87f0;

// The URL that the worker would fetch, read as the worker reads it.
std::wstring document_url(document_fixture& fixture);

// The result of GETINSTANCE.
std::uint32_t instance_number(HWND window);

// Passes the window a fetched file as the worker does, and loads it.
void load_fetched_file(document_fixture& fixture, const std::wstring& path);

// The log lines of loading `path`, with the 16-bit result.
std::vector<std::string> load_lines(const std::wstring& path, int result);

} // namespace quill::test
