// A log sink that adds each line to the events of Process Monitor.
#pragma once

#include "platform/unique_handle.h"

#include <windows.h>

#include <spdlog/sinks/base_sink.h>
#include <winioctl.h>

#include <boost/container/small_vector.hpp>
#include <string>

namespace quill::spdlog_sinks {

// Process Monitor's control code for one line of text: a user-defined device type, function 0x81.
inline constexpr DWORD procmon_log_control_code =
    CTL_CODE(DWORD{0x9535}, DWORD{0x81}, METHOD_BUFFERED, FILE_WRITE_ACCESS);
static_assert(procmon_log_control_code == 0x95358204);

// Opens Process Monitor's device once. Lines are dropped without an error if the device does not exist or has
// failed before.
template <typename Mutex>
class procmon_sink : public spdlog::sinks::base_sink<Mutex>
{
public:
    procmon_sink()
        : device_(CreateFileW(L"\\\\.\\Global\\ProcmonDebugLogger", GENERIC_WRITE, FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr))
    {
    }
    ~procmon_sink() override = default;
    procmon_sink(const procmon_sink&) = delete;
    procmon_sink& operator=(const procmon_sink&) = delete;

protected:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        if (!device_ || message.payload.size() == 0)
            return;
        spdlog::memory_buf_t formatted;
        spdlog::sinks::base_sink<Mutex>::formatter_->format(message, formatted);
        send(std::string(formatted.data(), formatted.size()));
    }

    void flush_() override {}

private:
    void send(const std::string& line)
    {
        const int line_size = static_cast<int>(line.size());
        const int length = MultiByteToWideChar(CP_UTF8, 0, line.data(), line_size, nullptr, 0);
        if (length < 1)
            return;
        boost::container::small_vector<wchar_t, 2048> text(static_cast<std::size_t>(length),
                                                           boost::container::default_init);
        if (MultiByteToWideChar(CP_UTF8, 0, line.data(), line_size, text.data(), length) == 0)
            return;
        // Without the "\n" at the end, because Process Monitor ends each line itself.
        const DWORD size = static_cast<DWORD>(length - 1) * DWORD{sizeof(wchar_t)};
        DWORD returned = 0;
        if (!DeviceIoControl(device_.get(), procmon_log_control_code, text.data(), size, nullptr, 0,
                             &returned, nullptr))
            device_.reset();
    }

    unique_handle device_;
};

} // namespace quill::spdlog_sinks
