// The Process Monitor sink with a real device, which the test's driver creates.
#include "logging/procmon_sink.h"
#include "platform/mutex.h"
#include "tests/logging/procmon_protocol.h"
#include "tests/support/child_process.h"
#include "tests/support/log_file.h"
#include "tests/support/process_resources.h"
#include "tests/support/scopes.h"
#include "tests/support/wait.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <winsvc.h>

#include <memory>
#include <optional>
#include <string>

namespace quill {
namespace {

using test::process_resources;
using sink_type = spdlog_sinks::procmon_sink<platform::MutexImpl>;

static_assert(PROCMON_DEVICE_LOG == spdlog_sinks::procmon_log_control_code);

struct service_traits : null_is_empty<SC_HANDLE>
{
    static void close(SC_HANDLE value) noexcept { CloseServiceHandle(value); }
};
using unique_service = unique_resource<service_traits>;

// Installs the driver during its lifetime; start() and stop() create and remove the device.
class procmon_device
{
public:
    procmon_device() : manager_(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS))
    {
        remove();
        const std::wstring file = test::beside_this_program(L"procmon_device.sys");
        service_.reset(CreateServiceW(manager_.get(), name, name, SERVICE_ALL_ACCESS, SERVICE_KERNEL_DRIVER,
                                      SERVICE_DEMAND_START, SERVICE_ERROR_NORMAL, file.c_str(), nullptr,
                                      nullptr, nullptr, nullptr, nullptr));
    }

    ~procmon_device()
    {
        stop();
        service_.reset();
        remove();
    }

    procmon_device(const procmon_device&) = delete;
    procmon_device& operator=(const procmon_device&) = delete;

    bool start()
    {
        if (!StartServiceW(service_.get(), 0, nullptr))
            return false;
        view_.reset(CreateFileW(L"\\\\.\\ProcmonDebugLogger", GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
        return static_cast<bool>(view_);
    }

    void stop()
    {
        view_.reset();
        SERVICE_STATUS status{};
        if (ControlService(service_.get(), SERVICE_CONTROL_STOP, &status))
            test::wait_until([&] {
                return !QueryServiceStatus(service_.get(), &status) ||
                       status.dwCurrentState == SERVICE_STOPPED;
            });
    }

    // The oldest unread line as it was sent; std::nullopt without one.
    std::optional<std::wstring> read()
    {
        std::wstring text(100'000, L'#');
        DWORD size = 0;
        if (!DeviceIoControl(view_.get(), PROCMON_DEVICE_READ, nullptr, 0, text.data(),
                             static_cast<DWORD>(text.size() * sizeof(wchar_t)), &size, nullptr))
            return std::nullopt;
        EXPECT_EQ(size % sizeof(wchar_t), 0u);
        text.resize(size / sizeof(wchar_t));
        return text;
    }

    void fail_next_line() { query(PROCMON_DEVICE_FAIL_NEXT); }
    DWORD handles() { return query(PROCMON_DEVICE_HANDLES) - 1; }
    DWORD lines() { return query(PROCMON_DEVICE_LINES); }

private:
    static constexpr const wchar_t* name = L"QuillTestProcmon";

    DWORD query(DWORD code)
    {
        DWORD value = 0;
        DWORD size = 0;
        EXPECT_TRUE(DeviceIoControl(view_.get(), code, nullptr, 0, &value, sizeof value, &size, nullptr));
        return value;
    }

    void remove()
    {
        const unique_service before(OpenServiceW(manager_.get(), name, SERVICE_ALL_ACCESS));
        SERVICE_STATUS status{};
        if (before) {
            ControlService(before.get(), SERVICE_CONTROL_STOP, &status);
            DeleteService(before.get());
        }
    }

    test::cross_process_lock lock_{L"procmon"};
    unique_service manager_;
    unique_service service_;
    unique_handle view_;
};

std::unique_ptr<spdlog::logger> logger_with(const std::shared_ptr<sink_type>& sink)
{
    auto logger = std::make_unique<spdlog::logger>("test", sink);
    logger->set_formatter(
        std::make_unique<spdlog::pattern_formatter>("[%l] %v", spdlog::pattern_time_type::local, "\r\n"));
    return logger;
}

struct ProcmonSink : testing::Test
{
    procmon_device device;
};

TEST_F(ProcmonSink, SendsTheFormattedLineWithoutItsLastCharacter)
{
    ASSERT_TRUE(device.start());
    const auto sink = std::make_shared<sink_type>();
    EXPECT_EQ(device.handles(), 1u);
    const auto logger = logger_with(sink);
    logger->info("ACTIVEDOC 0x1 DoVerb {");
    logger->error("\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80");
    logger->info("x");
    EXPECT_EQ(device.read(), L"[info] ACTIVEDOC 0x1 DoVerb {\r");
    EXPECT_EQ(device.read(), L"[error] \x00e4\x20ac\xd83d\xde00\r");
    EXPECT_EQ(device.read(), L"[info] x\r");
    EXPECT_EQ(device.read(), std::nullopt);
}

TEST_F(ProcmonSink, SendsNothingForAnEmptyText)
{
    ASSERT_TRUE(device.start());
    const auto logger = logger_with(std::make_shared<sink_type>());
    logger->info("");
    EXPECT_EQ(device.lines(), 0u);
}

TEST_F(ProcmonSink, SendsLongLinesCompletely)
{
    ASSERT_TRUE(device.start());
    const auto logger = logger_with(std::make_shared<sink_type>());
    // "[info] " and "\r\n" make nine characters: just below, at and above the inline buffer, and far above.
    for (const std::size_t length : {2038u, 2039u, 2040u, 30'000u}) {
        logger->info(std::string(length, 'l'));
        EXPECT_EQ(device.read(), L"[info] " + std::wstring(length, L'l') + L"\r") << length;
    }
}

TEST_F(ProcmonSink, FlushDoesNothing)
{
    ASSERT_TRUE(device.start());
    const auto logger = logger_with(std::make_shared<sink_type>());
    logger->flush();
    EXPECT_EQ(device.lines(), 0u);
}

TEST_F(ProcmonSink, ClosesTheDeviceInItsDestructor)
{
    ASSERT_TRUE(device.start());
    const auto before = process_resources::now();
    auto sink = std::make_shared<sink_type>();
    EXPECT_EQ(device.handles(), 1u);
    sink.reset();
    EXPECT_EQ(device.handles(), 0u);
    EXPECT_EQ(process_resources::now(), before);
}

TEST_F(ProcmonSink, DropsEveryLineAfterAFailure)
{
    ASSERT_TRUE(device.start());
    const auto logger = logger_with(std::make_shared<sink_type>());
    logger->info("sent");
    device.fail_next_line();
    logger->info("failed");
    EXPECT_EQ(device.handles(), 0u);
    logger->info("dropped");
    EXPECT_EQ(device.read(), L"[info] sent\r");
    EXPECT_EQ(device.read(), std::nullopt);
    EXPECT_EQ(device.lines(), 2u);
}

TEST_F(ProcmonSink, ToleratesTheRemovalOfTheDevice)
{
    ASSERT_TRUE(device.start());
    const auto logger = logger_with(std::make_shared<sink_type>());
    logger->info("sent");
    EXPECT_EQ(device.read(), L"[info] sent\r");
    device.stop();
    const auto with_handle = process_resources::now().kernel_handles;
    logger->info("lost");
    EXPECT_EQ(process_resources::now().kernel_handles, with_handle - 1);
    logger->info("lost too");
}

TEST_F(ProcmonSink, OpensTheDeviceOnceOnly)
{
    const auto logger = logger_with(std::make_shared<sink_type>());
    logger->info("before the device came");
    ASSERT_TRUE(device.start());
    logger->info("after it came");
    EXPECT_EQ(device.handles(), 0u);
    EXPECT_EQ(device.lines(), 0u);
}

class counting_formatter : public spdlog::formatter
{
public:
    explicit counting_formatter(int& count) : count_(count) {}
    void format(const spdlog::details::log_msg&, spdlog::memory_buf_t& text) override
    {
        ++count_;
        text.push_back('\n');
    }
    std::unique_ptr<spdlog::formatter> clone() const override
    {
        return std::make_unique<counting_formatter>(count_);
    }

private:
    int& count_;
};

TEST_F(ProcmonSink, FormatsNothingThatItDoesNotSend)
{
    int formatted = 0;
    const auto log_with_new_sink = [&](std::string_view text) {
        spdlog::logger logger("test", std::make_shared<sink_type>());
        logger.set_formatter(std::make_unique<counting_formatter>(formatted));
        logger.info(text);
    };
    log_with_new_sink("without a device");
    EXPECT_EQ(formatted, 0);
    ASSERT_TRUE(device.start());
    log_with_new_sink("");
    EXPECT_EQ(formatted, 0);
    log_with_new_sink("with it");
    EXPECT_EQ(formatted, 1);
    EXPECT_EQ(device.lines(), 1u);
    EXPECT_EQ(device.read(), L"");
}

TEST_F(ProcmonSink, DropsEmptyFormattedLines)
{
    ASSERT_TRUE(device.start());
    const auto sink = std::make_shared<sink_type>();
    spdlog::logger logger("test", sink);
    logger.set_formatter(
        std::make_unique<spdlog::pattern_formatter>("", spdlog::pattern_time_type::local, ""));
    logger.info("x");
    EXPECT_EQ(device.lines(), 0u);
    EXPECT_EQ(device.handles(), 1u);
}

// Every combination of sinks in a separate process.
TEST_F(ProcmonSink, EveryCombinationOfSinksGetsTheLineOnce)
{
    ASSERT_TRUE(device.start());
    const test::log_folder_scope folder;
    const test::environment_scope level(L"QUILL_LOG_LEVEL", L"info");
    for (int choice = 0; choice < 8; ++choice) {
        SCOPED_TRACE(choice);
        const bool to_stdout = (choice & 1) != 0;
        const bool to_device = (choice & 2) != 0;
        const bool to_file = (choice & 4) != 0 || choice == 0; // the default
        std::wstring text;
        for (const auto& [bit, word] : {std::pair(2, L"procmon"), {1, L"stdout"}, {4, L"file"}})
            text += (choice & bit) != 0 ? (text.empty() ? L"" : L",") + std::wstring(word) : L"";
        const test::environment_scope sinks(L"QUILL_LOG_SINKS", text);
        const auto result = test::run_program(test::beside_this_program(L"log_program.exe"), L"info=yes");
        EXPECT_EQ(result.exit_code, 0u);
        EXPECT_EQ(result.errors, "");
        const auto file = test::read_file(folder.file_of(L"log_program", result.process_id));
        const bool is_on_device = device.read().has_value();
        const std::vector<test::log_line> line{{"info", "yes"}};
        const std::vector<test::log_line> no_line;
        EXPECT_EQ(file.has_value(), to_file);
        EXPECT_EQ(test::parse_log(file.value_or("")), to_file ? line : no_line);
        EXPECT_EQ(test::parse_log(result.output), to_stdout ? line : no_line);
        EXPECT_EQ(is_on_device, to_device);
        EXPECT_EQ(device.read(), std::nullopt);
    }
}

TEST_F(ProcmonSink, GetsTheModulesOwnLines)
{
    ASSERT_TRUE(device.start());
    const test::environment_scope level(L"QUILL_LOG_LEVEL", L"info");
    const test::environment_scope sinks(L"QUILL_LOG_SINKS", L"procmon");
    const auto result =
        test::run_program(test::beside_this_program(L"log_program.exe"), L"debug=no info=yes");
    EXPECT_EQ(result.exit_code, 0u);
    const std::wstring line = device.read().value_or(L"");
    EXPECT_EQ(line.substr(2, 1), L":");
    EXPECT_THAT(line, testing::EndsWith(L"] [info] yes\r"));
    EXPECT_EQ(device.read(), std::nullopt);
    EXPECT_EQ(device.handles(), 0u);
}

} // namespace
} // namespace quill
