#include "tests/retrieval/download_fixture.h"

#include "platform/text.h"

#include <regex>

namespace quill::test {
namespace {

constexpr DWORD end_deadline_ms = 30'000;

void replace_all(std::string& text, const std::string& from, const std::string& to)
{
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

} // namespace

download_thread::download_thread(const download_job& job)
    : job_(job), thread_(CreateThread(nullptr, 0, run, this, 0, nullptr))
{
}

download_thread::~download_thread()
{
    WaitForSingleObject(thread_, INFINITE); // if it hangs, the watchdog ends the test
    CloseHandle(thread_);
}

DWORD WINAPI download_thread::run(void* self)
{
    return DownloadPDFFile(static_cast<download_thread*>(self)->job_);
}

bool download_thread::ended_within(DWORD timeout_ms) const
{
    DWORD exit_code = 1;
    return WaitForSingleObject(thread_, timeout_ms) == WAIT_OBJECT_0 &&
           GetExitCodeThread(thread_, &exit_code) && exit_code == 0;
}

download_fixture::download_fixture()
    : override_(L"QUILL_TMP_FOLDER", temporary_.path()), user_settings_(HKEY_CURRENT_USER, switch_key),
      machine_settings_(HKEY_LOCAL_MACHINE, switch_key, KEY_WOW64_64KEY),
      machine_settings_32_(HKEY_LOCAL_MACHINE, switch_key, KEY_WOW64_32KEY),
      cancel_event_(CreateEventW(nullptr, TRUE, FALSE, nullptr))
{
}

download_fixture::~download_fixture()
{
    CloseHandle(cancel_event_);
}

download_job download_fixture::job_for(const fake_document_window& window) const
{
    return {window.handle(), cancel_event_, nullptr};
}

void download_fixture::download(fake_document_window& window) const
{
    const download_thread worker(job_for(window));
    EXPECT_TRUE(worker.ended_within(end_deadline_ms));
}

std::vector<std::string> download_fixture::lines()
{
    static const std::regex error_code("(Default - [0-9]) [0-9]+$");
    auto result = log_.lines();
    log_.clear();
    for (std::string& line : result) {
        line = std::regex_replace(line, error_code, "$1 CODE");
        replace_all(line, to_utf8(temporary_.path()), "TEMP");
    }
    return result;
}

std::vector<std::string> download_fixture::lines_up_to_download(const std::wstring& url,
                                                                const std::string& file) const
{
    return {"debug: ACTIVEDOC DownloadPDFFile URL: " + to_utf8(url),
            "debug: ACTIVEDOC DownloadPDFFile CACHE: TEMP\\" + file,
            "debug: ACTIVEDOC KIEBrowserPlugin: Default - 1 CODE"};
}

std::string download_fixture::contents(const std::wstring& file) const
{
    return read_file(temporary_ / file).value_or("no file");
}

} // namespace quill::test
