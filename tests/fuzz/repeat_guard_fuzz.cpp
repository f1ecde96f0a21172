// Repeated events of one navigation. A line is an event: "a" is a navigation to the URL that follows; "f"
// forgets the last one; a digit n advances the clock by 2^n - 1 milliseconds, "-" sets it back.
#include "sharepoint/decisions/repeat_guard.h"
#include "tests/fuzz/reference_text.h"
#include "tests/fuzz/subjects.h"

namespace quill::fuzz {
namespace {

constexpr std::size_t most_events = 256;
constexpr std::uint64_t start = 1000;

class run_beside_a_model
{
public:
    void step(const std::wstring& event)
    {
        const wchar_t kind = event.empty() ? L'\0' : event[0];
        if (kind == L'a')
            announce(event.substr(1));
        else if (kind == L'f')
            forget();
        else if (kind >= L'0' && kind <= L'9')
            now_ += (std::uint64_t{1} << (kind - L'0')) - 1;
        else if (kind == L'-')
            now_ -= now_ > start ? 1 : 0;
    }

private:
    void announce(const std::wstring& url)
    {
        const bool is_same = lower_ascii(url) == last_url_;
        const bool is_soon = now_ >= last_tick_ && now_ - last_tick_ < 100;
        FUZZ_CHECK(guard_.is_repeat(exact_copy<wchar_t>(url), now_) == (is_same && is_soon));
        guard_.cancelled(url, now_);
        last_url_ = lower_ascii(url);
        last_tick_ = now_;
        FUZZ_CHECK(guard_.is_repeat(url, now_ + 99) && !guard_.is_repeat(url, now_ + 100));
    }

    void forget()
    {
        guard_.forget_url();
        last_url_.clear();
    }

    quill::repeat_guard guard_{start};
    std::wstring last_url_;
    std::uint64_t last_tick_ = start;
    std::uint64_t now_ = start;
};

} // namespace

void repeat_guard(bytes input)
{
    run_beside_a_model run;
    for (const std::wstring& event : wide_lines_of(input, most_events)) {
        if (is_ascii(event))
            run.step(event);
    }
}

} // namespace quill::fuzz
