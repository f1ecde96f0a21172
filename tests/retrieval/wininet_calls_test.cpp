// The calls of the download one by one: their order and arguments, and that every path closes what it opened.
#include "retrieval/download/wininet_download.h"
#include "tests/retrieval/fake_wininet.h"
#include "tests/retrieval/progress_steps.h"
#include "tests/support/balance.h"
#include "tests/support/log_capture.h"
#include "tests/support/scopes.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <new>

namespace {

// Larger than any buffer of a test: an allocation of this size is the one that must fail.
constexpr std::size_t impossible_size = 0xFFFFFFF0;

} // namespace

// Replaces the allocation of the download's buffers.
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return size >= impossible_size ? nullptr : std::malloc(size);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void* operator new[](std::size_t size)
{
    if (void* const memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

namespace quill::test {
namespace {

using testing::ElementsAre;

struct WinInetCalls : testing::Test
{
    fake_wininet wininet;
    fake_document_window window{{}};
    log_capture log;
    scratch_directory folder;
    std::wstring path = folder / L"a.pdf";
    HANDLE cancel = CreateEventW(nullptr, TRUE, FALSE, nullptr);

    ~WinInetCalls() override { CloseHandle(cancel); }

    std::uint32_t download(const wchar_t* url = L"http://h/a.pdf")
    {
        return DownloadWithWinINet({window.handle(), cancel, nullptr}, url, path.c_str(),
                                   wininet.functions());
    }

    // The calls between the opening and the first query for data, which most cases do not concern.
    std::vector<std::string> calls_of(const std::string& verb) const
    {
        std::vector<std::string> found;
        for (const std::string& call : wininet.calls) {
            if (call.starts_with(verb + " "))
                found.push_back(call);
        }
        return found;
    }
};

TEST_F(WinInetCalls, FetchInOrder)
{
    wininet.content_length = L"12";
    wininet.available = {8, 4};
    wininet.on_close = [&] {
        const HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
        EXPECT_NE(file, INVALID_HANDLE_VALUE) << "the file is closed first";
        CloseHandle(file);
    };
    EXPECT_EQ(download(), 0u);
    EXPECT_THAT(wininet.calls,
                ElementsAre("open Quill5_IEactivedoc 0 - - 0", "query #1 31 size 4 holding 0",
                            "set #1 31 size 4 to 0x3100", "open_url #1 http://h/a.pdf - 0 0 0",
                            "info #2 5 size 128 index 0", "available #2 0 0", "read #2 8", "available #2 0 0",
                            "read #2 4", "available #2 0 0", "close #2", "close #1"));
    EXPECT_EQ(read_file(path), std::string(12, 'x'));
    EXPECT_THAT(steps_of(window), ElementsAre(progress_step{8, 12}, progress_step{12, 12}));
    EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DEBUG SUCCESS"));
}

TEST_F(WinInetCalls, KeepOtherSecurityFlags)
{
    wininet.initial_flags = 0x80000080;
    EXPECT_EQ(download(), 0u);
    EXPECT_THAT(calls_of("set"), ElementsAre("set #1 31 size 4 to 0x80003180"));
}

TEST_F(WinInetCalls, ContinueWhenTheSessionRefusesAnOption)
{
    wininet.options_fail = true;
    wininet.available = {3};
    EXPECT_EQ(download(), 0u);
    EXPECT_THAT(calls_of("set"), ElementsAre("set #1 31 size 4 to 0x3100"));
    EXPECT_EQ(read_file(path), "xxx");
}

TEST_F(WinInetCalls, NeverSendTheFragment)
{
    EXPECT_EQ(download(L"http://h/a.pdf?q=1#page=2#zoom=50"), 0u);
    EXPECT_THAT(calls_of("open_url"), ElementsAre("open_url #1 http://h/a.pdf?q=1 - 0 0 0"));
}

TEST_F(WinInetCalls, ReportAMissingSession)
{
    wininet.open_error = 1234;
    EXPECT_EQ(download(), 1u);
    EXPECT_THAT(wininet.calls, ElementsAre("open Quill5_IEactivedoc 0 - - 0"));
    EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DownloadPDFFile MISSING FILE 1234"));
}

TEST_F(WinInetCalls, StopAtAnErrorThatIsNoCertificateError)
{
    // Time-out, no connection, channel error, revoked and unchecked revocation: none is ignored here.
    for (const DWORD error : {12002u, 12007u, 12029u, 12030u, 12152u, 12157u, 12056u, 12057u, 12170u, 5u}) {
        SCOPED_TRACE(error);
        wininet.calls.clear();
        log.clear();
        wininet.open_url_error = error;
        EXPECT_EQ(download(), 1u);
        EXPECT_EQ(calls_of("open_url").size(), 1u);
        EXPECT_EQ(calls_of("connect").size(), 0u);
        EXPECT_THAT(log.lines(),
                    ElementsAre("debug: ACTIVEDOC DEBUG InternetOpenUrl FAILED " + std::to_string(error)));
        EXPECT_EQ(wininet.open_handles(), std::vector<std::string>());
        EXPECT_EQ(read_file(path), std::nullopt);
    }
}

TEST_F(WinInetCalls, RepeatTheRequestRelaxedAfterACertificateError)
{
    for (const DWORD error : {12037u, 12038u, 12045u, 12055u, 12169u}) {
        SCOPED_TRACE(error);
        wininet.calls.clear();
        log.clear();
        wininet.open_url_error = error;
        wininet.available = {5};
        EXPECT_EQ(download(L"https://user:secret@h:444/x/a.pdf?q=%20#page=2"), 0u);
        EXPECT_EQ(read_file(path), "xxxxx");
        EXPECT_EQ(calls_of("open_url").size(), 1u);
        EXPECT_EQ(calls_of("send").size(), 1u);
        EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DEBUG SUCCESS"));
    }
}

TEST_F(WinInetCalls, RelaxARequestBetweenItsCreationAndItsSending)
{
    wininet.open_url_error = 12045;
    wininet.initial_flags = 0x1;
    EXPECT_EQ(download(L"https://user:secret@h:444/x/a.pdf?q=%20#page=2"), 0u);
    EXPECT_THAT(wininet.calls, ElementsAre("open Quill5_IEactivedoc 0 - - 0", "query #1 31 size 4 holding 0",
                                           "set #1 31 size 4 to 0x3101",
                                           "open_url #1 https://user:secret@h:444/x/a.pdf?q=%20 - 0 0 0",
                                           "connect #1 h:444 user secret 3 0 0",
                                           "open_request #2 GET /x/a.pdf?q=%20 - - - 0xc00000 0",
                                           "query #3 31 size 4 holding 0", "set #3 31 size 4 to 0x3101",
                                           "send #3 - 0 - 0", "info #3 5 size 128 index 0",
                                           "available #3 0 0", "close #3", "close #2", "close #1"));
}

TEST_F(WinInetCalls, RelaxARequestThatWasRedirectedToABadCertificate)
{
    wininet.open_url_error = 12045;
    EXPECT_EQ(download(L"http://h"), 0u);
    EXPECT_THAT(calls_of("connect"), ElementsAre("connect #1 h:80 - - 3 0 0"));
    EXPECT_THAT(calls_of("open_request"), ElementsAre("open_request #2 GET / - - - 0x400000 0"));
}

TEST_F(WinInetCalls, StopAfterTheRelaxedRequest)
{
    struct failure
    {
        DWORD fake_wininet::* step;
        DWORD error;
        std::size_t closed;
    };
    // A second certificate error is final.
    for (const auto& [step, error, closed] : {failure{&fake_wininet::connect_error, 12005, 1},
                                              failure{&fake_wininet::open_request_error, 12006, 2},
                                              failure{&fake_wininet::send_error, 12045, 3}}) {
        SCOPED_TRACE(error);
        wininet.calls.clear();
        log.clear();
        wininet.open_url_error = 12037;
        wininet.*step = error;
        EXPECT_EQ(download(L"https://h/a.pdf"), 1u);
        EXPECT_EQ(calls_of("open_url").size(), 1u);
        EXPECT_EQ(calls_of("connect").size(), 1u);
        EXPECT_EQ(calls_of("close").size(), closed);
        EXPECT_EQ(wininet.open_handles(), std::vector<std::string>());
        EXPECT_THAT(log.lines(),
                    ElementsAre("debug: ACTIVEDOC DEBUG InternetOpenUrl FAILED " + std::to_string(error)));
        wininet.*step = 0;
    }
}

// Some systems crack such a URL without an error and return no host.
TEST_F(WinInetCalls, ReportAUrlWithoutAHostAsInvalid)
{
    for (const wchar_t* url : {L"http:///a.pdf", L"https://", L"http://:80/a.pdf", L"file:///a.pdf"}) {
        SCOPED_TRACE(testing::PrintToString(url));
        wininet.calls.clear();
        log.clear();
        wininet.open_url_error = ERROR_INTERNET_INVALID_CA;
        EXPECT_EQ(download(url), 1u);
        EXPECT_THAT(calls_of("connect"), ElementsAre());
        EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DEBUG InternetOpenUrl FAILED " +
                                             std::to_string(ERROR_INTERNET_INVALID_URL)));
    }
}

TEST_F(WinInetCalls, CloseEverythingWhenTheFileCannotBeCreated)
{
    path = folder / L"missing\\a.pdf";
    EXPECT_EQ(download(), 1u);
    EXPECT_THAT(calls_of("close"), ElementsAre("close #2", "close #1"));
    EXPECT_THAT(calls_of("available"), ElementsAre());
    EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DEBUG FAILED TO CREATE CACHE FILE 3"));
}

TEST_F(WinInetCalls, StopBetweenChunksAndKeepThePart)
{
    wininet.available = {4, 4, 4};
    wininet.on_read = [&] {
        if (calls_of("read").size() == 2)
            SetEvent(cancel);
    };
    EXPECT_EQ(download(), 0x80004004u);
    EXPECT_EQ(read_file(path), std::string(8, 'x'));
    EXPECT_THAT(calls_of("available").size(), 3u);
    EXPECT_THAT(calls_of("close"), ElementsAre("close #2", "close #1"));
    EXPECT_THAT(log.lines(), ElementsAre());
}

TEST_F(WinInetCalls, FinishWhatIsCompleteAlsoWhenCancelled)
{
    SetEvent(cancel);
    EXPECT_EQ(download(), 0u);
    EXPECT_THAT(log.lines(), ElementsAre("debug: ACTIVEDOC DEBUG SUCCESS"));
}

TEST_F(WinInetCalls, WorkWithoutAnEventAndWithoutAWindow)
{
    wininet.available = {4};
    EXPECT_EQ(
        DownloadWithWinINet({nullptr, nullptr, nullptr}, L"http://h/", path.c_str(), wininet.functions()),
        0u);
    EXPECT_EQ(read_file(path), "xxxx");
}

TEST_F(WinInetCalls, FailWithoutMemoryForABuffer)
{
    wininet.available = {2, static_cast<DWORD>(impossible_size)};
    EXPECT_EQ(download(), 1u);
    EXPECT_THAT(calls_of("read"), ElementsAre("read #2 2"));
    EXPECT_THAT(calls_of("close"), ElementsAre("close #2", "close #1"));
    EXPECT_THAT(log.lines(), ElementsAre());
}

TEST_F(WinInetCalls, ContinueReadingUntilTheAnnouncedLength)
{
    wininet.available = {100, 7};
    wininet.reads = {{10}, {20}, {30}};
    EXPECT_EQ(download(), 0u);
    // 90 remain after 10, 70 after 30; 40 remain after 60 and are left to the next query.
    EXPECT_THAT(calls_of("read"), ElementsAre("read #2 100", "read #2 90", "read #2 70", "read #2 7"));
    EXPECT_THAT(steps_of(window), ElementsAre(progress_step{10, 0}, progress_step{30, 0},
                                              progress_step{60, 0}, progress_step{67, 0}));
    EXPECT_EQ(read_file(path), std::string(67, 'x'));
}

TEST_F(WinInetCalls, KeepTheDataOfAFailingRead)
{
    wininet.available = {8};
    wininet.reads = {{6, FALSE}};
    EXPECT_EQ(download(), 0u);
    EXPECT_EQ(read_file(path), std::string(6, 'x'));
}

TEST_F(WinInetCalls, FailWhenTheAnnouncedDataIsMissing)
{
    wininet.available = {8, 8, 8};
    wininet.reads = {{8}, {0, FALSE}};
    EXPECT_EQ(download(), 1u);
    EXPECT_EQ(calls_of("read").size(), 2u);
    EXPECT_THAT(calls_of("close"), ElementsAre("close #2", "close #1"));
}

// /dev/full accepts files of any name and fails every write: a full disk.
TEST_F(WinInetCalls, FailOnAFullDisk)
{
    path = L"Z:\\dev\\full";
    wininet.available = {4};
    EXPECT_EQ(download(), 1u) << "shows only when the file is closed";
    EXPECT_THAT(calls_of("close"), ElementsAre("close #2", "close #1"));
    wininet.calls.clear();
    wininet.available = {1'000'000, 1'000'000};
    EXPECT_EQ(download(), 1u);
    EXPECT_EQ(calls_of("read").size(), 1u) << "shows at the write";
    EXPECT_THAT(log.lines(), ElementsAre());
}

TEST_F(WinInetCalls, ReadTheLengthFromItsText)
{
    const std::pair<const wchar_t*, std::uint32_t> lengths[] = {
        {L"", 0},
        {L"0", 0},
        {L"123456", 123456},
        {L"4294967295", 4294967295u},
        {L"4294967297", 1}, // the low 32 bits
        {L"much", 0},
        {L"0000000000000000000000000000000000000000000000000000000000000042", 42}, // fills the buffer
        {L"99999999999999999999999999", 0xFFFFFFFFu},
    };
    for (const auto& [text, length] : lengths) {
        SCOPED_TRACE(length);
        fake_document_window own_window({});
        wininet.content_length = text;
        wininet.available = {1};
        EXPECT_EQ(DownloadWithWinINet({own_window.handle(), cancel, nullptr}, L"http://h/", path.c_str(),
                                      wininet.functions()),
                  0u);
        EXPECT_THAT(steps_of(own_window), ElementsAre(progress_step{1, length}));
    }
}

TEST_F(WinInetCalls, RefuseNullTexts)
{
    wininet.open_url_error = ERROR_INTERNET_UNRECOGNIZED_SCHEME;
    EXPECT_EQ(download(nullptr), 1u);
    EXPECT_THAT(calls_of("open_url"), ElementsAre("open_url #1  - 0 0 0"));
    wininet.open_url_error = 0;
    EXPECT_EQ(
        DownloadWithWinINet({window.handle(), cancel, nullptr}, L"http://h/", nullptr, wininet.functions()),
        1u);
}

TEST_F(WinInetCalls, LeakNoHandle)
{
    expect_balance([this] {
        wininet.available = {4, 4};
        EXPECT_EQ(download(), 0u);
        wininet.available = {4, static_cast<DWORD>(impossible_size)};
        EXPECT_EQ(download(), 1u);
        wininet.available = {4, 4};
        wininet.on_read = [&] { SetEvent(cancel); };
        EXPECT_EQ(download(), 0x80004004u);
        wininet.on_read = nullptr;
        ResetEvent(cancel);
    });
}

} // namespace
} // namespace quill::test
