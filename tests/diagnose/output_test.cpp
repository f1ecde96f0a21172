// The program's output on a console and where it cannot be written, and its error mode.
#include "tests/diagnose/diagnosed_computer.h"
#include "tests/support/text.h"
#include "tests/support/wait.h"

namespace quill::test {
namespace {

struct started_program
{
    explicit started_program(HANDLE output, const std::wstring& arguments = L"")
    {
        STARTUPINFOW startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = output;
        startup.hStdError = output;
        const std::wstring program = beside_this_program(L"QuillDiagnose.exe");
        std::wstring command_line = L"\"" + program + L"\" " + arguments;
        EXPECT_TRUE(CreateProcessW(program.c_str(), command_line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                   nullptr, &startup, &process_));
    }
    ~started_program()
    {
        TerminateProcess(process_.hProcess, ERROR_TIMEOUT);
        CloseHandle(process_.hThread);
        CloseHandle(process_.hProcess);
    }
    started_program(const started_program&) = delete;
    started_program& operator=(const started_program&) = delete;

    HANDLE process() const { return process_.hProcess; }
    DWORD wait() const
    {
        DWORD code = STILL_ACTIVE;
        EXPECT_EQ(WaitForSingleObject(process_.hProcess, 30'000), WAIT_OBJECT_0);
        GetExitCodeProcess(process_.hProcess, &code);
        return code;
    }

private:
    PROCESS_INFORMATION process_{};
};

SECURITY_ATTRIBUTES inheritable()
{
    return {sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
}

// A screen buffer of a console of this program, large enough for a whole diagnosis.
class screen
{
public:
    static constexpr SHORT width = 1200;
    static constexpr SHORT height = 400;

    explicit screen(DWORD access = GENERIC_READ | GENERIC_WRITE)
    {
        FreeConsole();
        EXPECT_TRUE(AllocConsole()) << GetLastError();
        SECURITY_ATTRIBUTES security = inheritable();
        buffer_ = CreateConsoleScreenBuffer(GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                            &security, CONSOLE_TEXTMODE_BUFFER, nullptr);
        EXPECT_NE(buffer_, INVALID_HANDLE_VALUE) << GetLastError();
        EXPECT_TRUE(SetConsoleScreenBufferSize(buffer_, {width, height})) << GetLastError();
        EXPECT_TRUE(
            DuplicateHandle(GetCurrentProcess(), buffer_, GetCurrentProcess(), &passed_, access, TRUE, 0))
            << GetLastError();
    }
    ~screen()
    {
        CloseHandle(passed_);
        CloseHandle(buffer_);
        FreeConsole();
    }
    screen(const screen&) = delete;
    screen& operator=(const screen&) = delete;

    HANDLE handle() const { return passed_; }

    // Its lines without the spaces at their ends, up to the last one that is not empty.
    std::string text() const
    {
        std::string all;
        std::size_t end = 0;
        for (SHORT row = 0; row < height; ++row) {
            std::wstring line(width, L' ');
            DWORD count = 0;
            if (!ReadConsoleOutputCharacterW(buffer_, line.data(), width, {0, row}, &count))
                return "no console: error " + std::to_string(GetLastError());
            line.resize(line.find_last_not_of(L" \0") + 1);
            all += to_utf8(line) + "\r\n";
            if (!line.empty())
                end = all.size();
        }
        return all.substr(0, end);
    }

private:
    HANDLE buffer_ = nullptr;
    HANDLE passed_ = nullptr;
};

class DiagnosisOutput : public DiagnosedComputer
{
};

TEST_F(DiagnosisOutput, IsTheSameOnAConsole)
{
    const screen screen;
    const started_program program(screen.handle());
    EXPECT_EQ(program.wait(), 0u);
    EXPECT_EQ(screen.text(), before().output);
}

// A handle that may only be read.
TEST_F(DiagnosisOutput, ThatCannotBeWrittenIsAFailure)
{
    const screen screen(GENERIC_READ);
    EXPECT_EQ(started_program(screen.handle()).wait(), 1u);
    EXPECT_EQ(screen.text(), "");

    const scratch_directory folder;
    ASSERT_TRUE(write_file(folder / L"out", ""));
    SECURITY_ATTRIBUTES security = inheritable();
    const HANDLE file = CreateFileW((folder / L"out").c_str(), GENERIC_READ, FILE_SHARE_READ, &security,
                                    OPEN_EXISTING, 0, nullptr);
    EXPECT_EQ(started_program(file).wait(), 1u);
    CloseHandle(file);
}

// Asked by a thread in the program, while it waits for its output to be read.
TEST_F(DiagnosisOutput, IsWrittenWithoutDialogsOfTheSystem)
{
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    SECURITY_ATTRIBUTES security = inheritable();
    ASSERT_TRUE(CreatePipe(&reading, &writing, &security, 16));
    SetHandleInformation(reading, HANDLE_FLAG_INHERIT, 0);
    {
        const started_program program(writing);
        CloseHandle(writing);
        DWORD available = 0;
        EXPECT_TRUE(wait_until([&] {
            return PeekNamedPipe(reading, nullptr, 0, nullptr, &available, nullptr) && available > 0;
        }));
        const auto get_mode = reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<void*>(GetErrorMode));
        const HANDLE thread =
            CreateRemoteThread(program.process(), nullptr, 0, get_mode, nullptr, 0, nullptr);
        ASSERT_NE(thread, nullptr) << GetLastError();
        EXPECT_EQ(WaitForSingleObject(thread, 30'000), WAIT_OBJECT_0);
        DWORD mode = 0;
        GetExitCodeThread(thread, &mode);
        CloseHandle(thread);
        EXPECT_EQ(mode & (SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX),
                  static_cast<DWORD>(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX));
    }
    CloseHandle(reading);
}

} // namespace
} // namespace quill::test
