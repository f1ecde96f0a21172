// A URL scheme of this process whose handler cannot be aborted: it ignores the sink's results and reports
// success.
#pragma once

#include <windows.h>

#include <urlmon.h>
#include <wrl/client.h>

#include <string>

namespace quill::test {

inline constexpr wchar_t unabortable_scheme[] = L"quillunabortable";

// Registers the scheme in its scope. Each of its URLs returns the file at path.
class unabortable_protocol
{
public:
    explicit unabortable_protocol(const std::wstring& path);
    ~unabortable_protocol();
    unabortable_protocol(const unabortable_protocol&) = delete;
    unabortable_protocol& operator=(const unabortable_protocol&) = delete;

private:
    Microsoft::WRL::ComPtr<IInternetSession> session_;
    Microsoft::WRL::ComPtr<IClassFactory> factory_;
};

} // namespace quill::test
