// A URL scheme of this process whose handler cannot be aborted: it ignores the sink's results and reports
// success.
#pragma once

#include <windows.h>

#include <urlmon.h>
#include <wrl/client.h>

#include <string>

namespace quill::test {

inline constexpr wchar_t deaf_scheme[] = L"quilldeaf";

// Registers the scheme in its scope. Each of its URLs returns the file at path.
class deaf_protocol
{
public:
    explicit deaf_protocol(const std::wstring& path);
    ~deaf_protocol();
    deaf_protocol(const deaf_protocol&) = delete;
    deaf_protocol& operator=(const deaf_protocol&) = delete;

private:
    Microsoft::WRL::ComPtr<IInternetSession> session_;
    Microsoft::WRL::ComPtr<IClassFactory> factory_;
};

} // namespace quill::test
