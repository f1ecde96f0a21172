// Distinguishes URLs from relative references and makes references absolute by text rules of the product, not
// those of RFC 3986. Plain code: no network, no COM.
#pragma once

#include <string>
#include <string_view>

namespace quill {

// Returns 1 if text contains "http://", "https://" or "ftp://" anywhere; also 1, with *is_other_scheme set to
// 1, if it contains "www.", "file://" or "mailto:" instead; 0 otherwise. Case-sensitive. *is_other_scheme is
// 0 in all other cases. Either pointer may be null.
int IsUrl(const wchar_t* text, int* is_other_scheme);

// Resolves a reference found in a page. If base contains "http://" or "https://" anywhere, its first 7 or 8
// characters are never removed. Returns 0 and clears out if base is empty; 1 otherwise. out may be one of
// the arguments. Throws std::bad_alloc only.
int CombineUrl(const std::wstring& relative, const std::wstring& base, std::wstring& out);

// Resolves a link inside the document. An "http://" or "https://" is protected only at the very start of
// document_url. Returns false and clears out if document_url is empty. Throws std::bad_alloc only.
bool resolve_link(std::wstring_view link, std::wstring_view document_url, std::wstring& out);

} // namespace quill
