#include "stand_ins/viewer/machine_program.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace quill {
namespace {

constexpr wchar_t shell_path[] = L"Z:\\bin\\sh";

// The shell opens the input and output files, whose names are passed encoded, runs the program with a
// time-out and writes the mark that poll() looks for. The files cannot be passed as standard handles: Wine 10
// closes those of a native program whose parent has no console. Standard error is discarded; the exit code
// suffices.
constexpr wchar_t shell_script[] =
    L"name() { printf '%b.' \"$1\"; }; in=$(name \"$1\"); out=$(name \"$2\"); shift 2; "
    L"[ -e \"${out%.}\" ] || exit 1; exec <\"${in%.}\" >>\"${out%.}\"; "
    L"timeout -k 5 60 \"$0\" \"$@\" 2>/dev/null; printf '\\nend %d\\n' $?";
constexpr std::string_view end_mark = "\nend ";
constexpr std::size_t longest_end = 16; // the mark, an exit code, a line end

constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// A temporary file that is deleted when its handle is closed.
struct result_file
{
    file_handle reader;
    std::wstring path;
};

result_file make_result_file()
{
    wchar_t folder[MAX_PATH + 1] = {};
    wchar_t path[MAX_PATH + 1] = {};
    if (GetTempPathW(MAX_PATH, folder) == 0 || GetTempFileNameW(folder, L"qpv", 0, path) == 0)
        return {};
    file_handle reader(CreateFileW(path, GENERIC_READ, share_all, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr));
    if (!reader)
        DeleteFileW(path);
    return {std::move(reader), path};
}

// The Unix path of a file, with each byte escaped for printf's %b so that the command line is ASCII. Empty if
// the path cannot be converted.
std::wstring encoded_machine_path(const std::wstring& path)
{
    using get_unix_file_name = char*(CDECL*)(const wchar_t*);
    const auto get = reinterpret_cast<get_unix_file_name>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    char* const name = get != nullptr ? get(path.c_str()) : nullptr;
    std::wstring encoded;
    for (const char* c = name; c != nullptr && *c != '\0'; ++c) {
        const auto byte = static_cast<unsigned char>(*c);
        for (const unsigned digit : {8u, byte / 64u, byte / 8u % 8u, byte % 8u})
            encoded += digit == 8 ? L"\\0" : std::to_wstring(digit);
    }
    HeapFree(GetProcessHeap(), 0, name);
    return encoded;
}

std::string read_file(HANDLE file, std::size_t start, std::size_t length)
{
    std::string content(length, '\0');
    OVERLAPPED position = {};
    position.Offset = static_cast<DWORD>(start);
    DWORD count = 0;
    if (!ReadFile(file, content.data(), static_cast<DWORD>(length), &count, &position))
        return {};
    content.resize(count);
    return content;
}

} // namespace

file_handle& file_handle::operator=(file_handle&& other) noexcept
{
    if (this != &other) {
        if (handle_ != INVALID_HANDLE_VALUE)
            CloseHandle(handle_);
        handle_ = other.release();
    }
    return *this;
}

file_handle::~file_handle()
{
    if (handle_ != INVALID_HANDLE_VALUE)
        CloseHandle(handle_);
}

HANDLE file_handle::release()
{
    HANDLE handle = handle_;
    handle_ = INVALID_HANDLE_VALUE;
    return handle;
}

std::wstring quoted_argument(const std::wstring& text)
{
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (wchar_t c : text) {
        // Backslashes are special only before a quotation mark.
        if (c == L'"')
            quoted.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    quoted.append(backslashes, L'\\');
    return quoted + L'"';
}

std::optional<machine_program> machine_program::start(const std::wstring& program,
                                                      const std::vector<std::wstring>& arguments,
                                                      const std::wstring& input)
{
    const file_handle document(CreateFileW(input.c_str(), GENERIC_READ, share_all, nullptr, OPEN_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, nullptr));
    result_file output = make_result_file();
    if (!document || !output.reader)
        return std::nullopt;

    std::wstring command = L"sh -c " + quoted_argument(shell_script) + L" " + quoted_argument(program);
    for (const std::wstring& file : {input, output.path})
        command += L" " + quoted_argument(encoded_machine_path(file));
    for (const std::wstring& argument : arguments)
        command += L" " + quoted_argument(argument);

    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(shell_path, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process))
        return std::nullopt;
    // For a native program Wine sets the process handle to null and does not set the thread handle.
    if (process.hProcess != nullptr) {
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }
    return machine_program(std::move(output.reader));
}

std::optional<machine_program::result> machine_program::poll() const
{
    LARGE_INTEGER file_size = {};
    constexpr LONGLONG largest = LONGLONG{1} << 30;
    if (!GetFileSizeEx(output_.get(), &file_size) || file_size.QuadPart <= 0 || file_size.QuadPart > largest)
        return std::nullopt;
    const auto size = static_cast<std::size_t>(file_size.QuadPart);
    const std::size_t tail_start = size - std::min(size, longest_end);
    const std::string tail = read_file(output_.get(), tail_start, size - tail_start);
    const std::size_t mark = tail.rfind(end_mark);
    if (mark == std::string::npos || tail.back() != '\n' || mark + end_mark.size() == tail.size())
        return std::nullopt;
    return result{std::atoi(tail.c_str() + mark + end_mark.size()),
                  read_file(output_.get(), 0, tail_start + mark)};
}

} // namespace quill
