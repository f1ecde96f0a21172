// Telling addresses from references, and making references absolute: plain text operations, no network
// and no COM. The results are part of what the user gets to see, so the rules are kept simple and exact.
#pragma once

#include <string>
#include <string_view>

namespace quill {

// 1 when the text holds "http://", "https://" or "ftp://" anywhere. Also 1, with *is_other_scheme set to
// 1, when it holds "www.", "file://" or "mailto:" instead. 0 for everything else. Case-sensitive.
// *is_other_scheme is 0 in every other case. Either pointer may be null.
int IsUrl(const wchar_t* text, int* is_other_scheme);

// The address that a reference found in a page stands for. An "http://" or "https://" anywhere in the
// base makes its first 7 or 8 characters the part that is never cut. 0, with out cleared, for an empty
// base; 1 otherwise. out may be one of the arguments. Throws std::bad_alloc only.
int CombineUrl(const std::wstring& relative, const std::wstring& base, std::wstring& out);

// The address that a link inside the document leads to. Only an "http://" or "https://" at the very start
// of the document's own address is protected from cutting. false, with out cleared, for an empty document
// address. Throws std::bad_alloc only.
bool resolve_link(std::wstring_view link, std::wstring_view document_url, std::wstring& out);

} // namespace quill
