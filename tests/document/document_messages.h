// The document window's private messages as its viewer and its download worker send them.
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

// The URL that the worker would fetch, asked for as the worker asks.
std::wstring document_url(document_fixture& fixture);

// What GETINSTANCE answers.
std::uint32_t instance_number(HWND window);

// Hands the window a fetched file as the worker does, and loads it.
void load_fetched_file(document_fixture& fixture, const std::wstring& path);

// The lines that loading `path` writes, with the 16-bit result.
std::vector<std::string> load_lines(const std::wstring& path, int result);

} // namespace quill::test
