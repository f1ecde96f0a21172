#include "sharepoint/editor/pdf_editor.h"

#include "logging/exception_barriers.h"
#include "logging/log_stream.h"
#include "platform/settings.h"
#include "platform/unique_handle.h"
#include "sharepoint/editor/editor_launch.h"
#include "sharepoint/host/com_error.h"

#include <atlutil.h>
#include <shellapi.h>

namespace quill {
namespace {

std::wstring text_of(const CUrl& url)
{
    DWORD length = url.GetUrlLength() + 1;
    std::wstring text(length, L'\0');
    if (!url.CreateUrl(text.data(), &length))
        throw_com_error(E_UNEXPECTED, "The URL cannot be created");
    text.resize(length);
    return text;
}

// The shell runs third-party code (extensions, hooks). A fault in it is thrown: the URL was not opened.
void open_with_default_handler(const std::wstring& url)
{
    barrier::call_host(
        [&] { return ShellExecuteW(nullptr, L"open", url.c_str(), nullptr, nullptr, SW_SHOWNORMAL); });
}

} // namespace

pdf_editor::pdf_editor() : exe_path_(read_exepath())
{
    QUILL_LOG(log_level::debug) << "PDF Editor: " << exe_path_;
}

void pdf_editor::open(const CUrl& url) const
{
    const std::wstring text = text_of(url);
    QUILL_LOG(log_level::info) << "checkout file " << text;
    if (!is_installed()) {
        open_with_default_handler(text);
        QUILL_LOG(log_level::warning) << "QuillStudio not found. Trying to use default pdf view...";
    } else if (!start(text)) {
        QUILL_LOG(log_level::warning) << "QuillStudio failed. Trying to use default pdf view...";
        open_with_default_handler(text);
    }
}

bool pdf_editor::is_installed() const
{
    return barrier::call_host([&] { return GetFileAttributesW(exe_path_.c_str()); }) !=
           INVALID_FILE_ATTRIBUTES;
}

bool pdf_editor::start(const std::wstring& url) const
{
    std::wstring command_line = editor_command_line(url); // CreateProcessW may write to it
    const std::wstring directory = parent_directory(exe_path_);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESHOWWINDOW;
    startup.wShowWindow = SW_SHOW;
    PROCESS_INFORMATION started{};
    if (!barrier::call_host([&] {
            return CreateProcessW(exe_path_.c_str(), command_line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                  directory.empty() ? nullptr : directory.c_str(), &startup, &started);
        }))
        return false;
    const unique_handle process(started.hProcess);
    const unique_handle thread(started.hThread);
    // The browser is the foreground process: without its permission the editor's window would only flash in
    // the task bar. A fault here is not thrown, because the URL is open.
    attempt([&] { barrier::call_host([&] { return AllowSetForegroundWindow(started.dwProcessId); }); });
    return true;
}

CUrl parse_url(std::wstring_view text)
{
    CUrl url;
    // CrackUrl would parse the part before an embedded null.
    if (text.find(L'\0') == std::wstring_view::npos)
        url.CrackUrl(std::wstring(text).c_str());
    return url;
}

} // namespace quill
