#include "stand_ins/viewer/host_requests.h"

#include "retrieval/download/window_messages.h"

namespace quill {
namespace {

LPARAM as_parameter(const void* pointer)
{
    return reinterpret_cast<LPARAM>(pointer);
}

} // namespace

void host_requests::open_link(const std::wstring& link, bool new_window) const
{
    if (link_)
        SendMessageW(link_.window, link_.message, new_window ? 1 : 0, as_parameter(link.c_str()));
}

void host_requests::save_as() const
{
    if (save_)
        SendMessageW(save_.window, save_.message, 0, 0);
}

// The link target also handles the other messages of the protocol.
void host_requests::log(const std::wstring& text, bool flag) const
{
    if (link_)
        SendMessageW(link_.window, WM_USER_LOGFILE, flag ? 1 : 0, as_parameter(text.c_str()));
}

unsigned host_requests::instance() const
{
    std::uint32_t number = 0;
    if (link_)
        SendMessageW(link_.window, WM_USER_GETINSTANCE, 0, as_parameter(&number));
    return number;
}

} // namespace quill
