#include "tests/soak/engine_soak_fixture.h"

#include "tests/soak/closing_plan.h"
#include "tests/support/module_threads.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace quill::soak {

void engine_soak_fixture::print_last_lines() const
{
    constexpr std::size_t wanted = 12;
    const auto lines = log.lines();
    for (std::size_t i = lines.size() > wanted ? lines.size() - wanted : 0; i < lines.size(); ++i)
        std::printf("  %s %s\n", lines[i].time.c_str(), lines[i].text.c_str());
    std::fflush(stdout);
}

long engine_soak_fixture::live_documents() const
{
    constexpr std::string_view made = "ACTIVEDOC ", gone = "~ACTIVEDOC ";
    long count = 0;
    for (const auto& line : log.lines()) {
        const std::string_view text = line.text;
        count -= text.starts_with(gone);
        count += text.starts_with(made) && text.find(' ', made.size()) == std::string_view::npos;
    }
    return count;
}

void module_guest::begin(download_path way)
{
    downloads_.use(way);
    viewers_ = std::make_unique<viewer_store>();
    viewers_->calls.allow("viewer class::CreateInstance");
    viewers_->script.answers_ole_object = true;
}

bool module_guest::load_waits() const
{
    return load_is_posted();
}

std::size_t module_guest::end()
{
    viewers_.reset();
    downloads_.empty_cache();
    return workers();
}

std::size_t module_guest::workers() const
{
    return test::threads_of(GetModuleHandleW(L"QuillPDF.IE.dll"));
}

void trivial_guest::begin(download_path way)
{
    fetched_ = 0;
    documents_.give_work([this, way](const std::wstring& url) {
        const std::wstring file = files_ / (std::to_wstring(files_made_++) + L".bin");
        return std::make_shared<bare_download>(way, url, file, &fetched_);
    });
}

std::size_t trivial_guest::end()
{
    leave();
    for (; files_made_ > 0; --files_made_)
        test::remove_path(files_ / (std::to_wstring(files_made_ - 1) + L".bin"));
    return workers();
}

} // namespace quill::soak
