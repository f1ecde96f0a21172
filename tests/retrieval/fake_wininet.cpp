#include "tests/retrieval/fake_wininet.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace quill::test {
namespace {

std::string narrow(const wchar_t* text)
{
    if (!text)
        return "-";
    std::string narrowed;
    for (; *text; ++text)
        narrowed += static_cast<char>(*text);
    return narrowed;
}

} // namespace

fake_wininet* fake_wininet::current_ = nullptr;

fake_wininet::fake_wininet()
    : functions_{open,         query_option, set_option,           open_url,  connect,     open_request,
                 send_request, query_info,   query_data_available, read_file, close_handle}
{
    EXPECT_EQ(current_, nullptr);
    current_ = this;
}

fake_wininet::~fake_wininet()
{
    EXPECT_EQ(open_handles(), std::vector<std::string>()) << "left open";
    current_ = nullptr;
}

std::vector<std::string> fake_wininet::open_handles() const
{
    std::vector<std::string> names;
    for (const auto& [handle, kind] : handles_)
        names.push_back(kind);
    return names;
}

bool fake_wininet::note(std::string call)
{
    current_->calls.push_back(std::move(call));
    const bool fails = current_->calls.size() == current_->failing_call;
    if (fails)
        SetLastError(ERROR_INTERNET_INTERNAL_ERROR);
    return fails;
}

std::string fake_wininet::name(HINTERNET handle)
{
    EXPECT_TRUE(current_->handles_.contains(handle)) << "not an open handle: " << handle;
    return fmt::format("#{}", reinterpret_cast<std::uintptr_t>(handle));
}

HINTERNET fake_wininet::make_handle(const char* kind, DWORD error)
{
    if (error) {
        SetLastError(error);
        return nullptr;
    }
    const auto handle = reinterpret_cast<HINTERNET>(++current_->last_handle_);
    current_->handles_[handle] = kind;
    return handle;
}

HINTERNET WINAPI fake_wininet::open(LPCWSTR agent, DWORD type, LPCWSTR proxy, LPCWSTR bypass, DWORD flags)
{
    if (note(fmt::format("open {} {} {} {} {}", narrow(agent), type, narrow(proxy), narrow(bypass), flags)))
        return nullptr;
    return make_handle("session", current_->open_error);
}

BOOL WINAPI fake_wininet::query_option(HINTERNET handle, DWORD option, LPVOID buffer, LPDWORD size)
{
    DWORD before = 77;
    std::memcpy(&before, buffer, sizeof before);
    if (note(fmt::format("query {} {} size {} holding {}", name(handle), option, *size, before)))
        return current_->returns_null;
    if (current_->options_fail)
        return FALSE;
    std::memcpy(buffer, &current_->initial_flags, sizeof current_->initial_flags);
    return TRUE;
}

BOOL WINAPI fake_wininet::set_option(HINTERNET handle, DWORD option, LPVOID buffer, DWORD size)
{
    DWORD value = 0;
    std::memcpy(&value, buffer, sizeof value);
    if (note(fmt::format("set {} {} size {} to {:#x}", name(handle), option, size, value)))
        return current_->returns_null;
    return current_->options_fail ? FALSE : TRUE;
}

HINTERNET WINAPI fake_wininet::open_url(HINTERNET session, LPCWSTR url, LPCWSTR headers, DWORD length,
                                        DWORD flags, DWORD_PTR context)
{
    if (note(fmt::format("open_url {} {} {} {} {} {}", name(session), narrow(url), narrow(headers), length,
                         flags, context)))
        return nullptr;
    return make_handle("request", current_->open_url_error);
}

HINTERNET WINAPI fake_wininet::connect(HINTERNET session, LPCWSTR host, INTERNET_PORT port, LPCWSTR user,
                                       LPCWSTR password, DWORD service, DWORD flags, DWORD_PTR context)
{
    if (note(fmt::format("connect {} {}:{} {} {} {} {} {}", name(session), narrow(host), port, narrow(user),
                         narrow(password), service, flags, context)))
        return nullptr;
    return make_handle("connection", current_->connect_error);
}

HINTERNET WINAPI fake_wininet::open_request(HINTERNET connection, LPCWSTR verb, LPCWSTR object,
                                            LPCWSTR version, LPCWSTR referrer, LPCWSTR* types, DWORD flags,
                                            DWORD_PTR context)
{
    if (note(fmt::format("open_request {} {} {} {} {} {} {:#x} {}", name(connection), narrow(verb),
                         narrow(object), narrow(version), narrow(referrer), types ? "types" : "-", flags,
                         context)))
        return nullptr;
    return make_handle("request", current_->open_request_error);
}

BOOL WINAPI fake_wininet::send_request(HINTERNET request, LPCWSTR headers, DWORD length, LPVOID optional,
                                       DWORD optional_length)
{
    if (note(fmt::format("send {} {} {} {} {}", name(request), narrow(headers), length,
                         optional ? "data" : "-", optional_length)))
        return FALSE;
    SetLastError(current_->send_error);
    return current_->send_error == 0;
}

BOOL WINAPI fake_wininet::query_info(HINTERNET request, DWORD info, LPVOID buffer, LPDWORD size,
                                     LPDWORD index)
{
    if (note(fmt::format("info {} {} size {} index {}", name(request), info, *size, *index)))
        return current_->returns_null;
    if (current_->content_length.empty()) {
        SetLastError(ERROR_HTTP_HEADER_NOT_FOUND);
        return FALSE;
    }
    // As some systems do: the text without a terminator.
    const std::size_t bytes = std::min<std::size_t>(*size, current_->content_length.size() * sizeof(wchar_t));
    std::memcpy(buffer, current_->content_length.data(), bytes);
    *size = static_cast<DWORD>(bytes);
    return TRUE;
}

BOOL WINAPI fake_wininet::query_data_available(HINTERNET request, LPDWORD count, DWORD flags,
                                               DWORD_PTR context)
{
    if (note(fmt::format("available {} {} {}", name(request), flags, context)))
        return current_->returns_null;
    EXPECT_EQ(*count, 0u);
    if (current_->available.empty())
        return TRUE;
    *count = current_->available.front();
    current_->available.pop_front();
    return TRUE;
}

BOOL WINAPI fake_wininet::read_file(HINTERNET request, LPVOID buffer, DWORD size, LPDWORD read)
{
    if (note(fmt::format("read {} {}", name(request), size))) {
        *read = 0;
        return current_->returns_null;
    }
    read_step step{size};
    if (!current_->reads.empty()) {
        step = current_->reads.front();
        current_->reads.pop_front();
    }
    *read = std::min(step.bytes, size);
    std::memset(buffer, 'x', *read);
    if (current_->on_read)
        current_->on_read();
    return step.result;
}

BOOL WINAPI fake_wininet::close_handle(HINTERNET handle)
{
    if (note(fmt::format("close {}", name(handle))))
        current_->handles_.erase(handle); // closed anyway
    if (current_->on_close)
        current_->on_close();
    current_->handles_.erase(handle);
    return TRUE;
}

} // namespace quill::test
