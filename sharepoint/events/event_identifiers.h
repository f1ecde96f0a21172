// Identifiers of the event interfaces and type libraries of the browser and the HTML engine.
#pragma once

#include <windows.h>

namespace quill {

// DWebBrowserEvents2 and its type library.
inline constexpr IID IID_browser_events = {
    0x34A715A0, 0x6587, 0x11D0, {0x92, 0x4A, 0x00, 0x20, 0xAF, 0xC7, 0xAC, 0x4D}};
inline constexpr GUID LIBID_browser = {
    0xEAB22AC0, 0x30C1, 0x11CF, {0xA7, 0xEB, 0x00, 0x00, 0xC0, 0x5B, 0xAE, 0x0B}};
inline constexpr WORD browser_library_major = 1;
inline constexpr WORD browser_library_minor = 1;

// HTMLDocumentEvents2 and its type library; not every import library defines them.
inline constexpr IID IID_html_document_events = {
    0x3050F613, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}};
inline constexpr GUID LIBID_html_engine = {
    0x3050F1C5, 0x98B5, 0x11CF, {0xBB, 0x82, 0x00, 0xAA, 0x00, 0xBD, 0xCE, 0x0B}};
inline constexpr WORD html_library_major = 4;
inline constexpr WORD html_library_minor = 0;

} // namespace quill
