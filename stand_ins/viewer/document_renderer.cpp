#include "stand_ins/viewer/document_renderer.h"

#include <algorithm>
#include <utility>

namespace quill {
namespace {

constexpr int exit_timed_out = 124;
constexpr int exit_no_program = 127;

// The name that pdftohtml uses for the document in links to its own pages.
constexpr char own_name[] = "document";
constexpr wchar_t own_name_argument[] = L"document";

constexpr wchar_t no_renderer[] =
    L"The page cannot be drawn: pdftoppm (poppler-utils) is not on this machine.";
constexpr wchar_t too_slow[] = L"The page cannot be drawn: the renderer did not answer in time.";
constexpr wchar_t unreadable[] = L"The document cannot be shown: it is damaged or protected by a password.";

const wchar_t* reason_for(int exit_code)
{
    switch (exit_code) {
    case exit_no_program:
        return no_renderer;
    case exit_timed_out:
        return too_slow;
    default:
        return unreadable;
    }
}

} // namespace

void document_renderer::open(const std::wstring& path)
{
    path_ = path;
    pages_.clear();
    links_.clear();
    failure_.clear();
    picture_ = {};
    waiting_.reset();
    start(task::learn_pages);
}

void document_renderer::request(const page_view& view)
{
    waiting_ = view;
    start_waiting_request();
}

void document_renderer::start_waiting_request()
{
    if (waiting_ && !busy() && !pages_.empty()) {
        current_ = *std::exchange(waiting_, std::nullopt);
        current_.page = std::min(current_.page, pages_.size() - 1);
        start(task::render);
    }
}

std::vector<std::wstring> document_renderer::arguments_for(task next) const
{
    const std::wstring page = std::to_wstring(current_.page + 1);
    switch (next) {
    case task::learn_pages:
        return {L"-f", L"1", L"-l", L"100000", L"-"};
    case task::render: {
        const unsigned resolution = resolution_for(pages_.at(current_.page), current_.zoom);
        return {L"-png", L"-r", std::to_wstring(resolution), L"-f", page, L"-l", page, L"-"};
    }
    case task::find_links:
        return {L"-xml", L"-i", L"-stdout", L"-f", page, L"-l", page, L"-", own_name_argument};
    case task::none:
        break;
    }
    return {};
}

void document_renderer::start(task next)
{
    const wchar_t* tool = next == task::learn_pages ? L"/usr/bin/pdfinfo"
                          : next == task::render    ? L"/usr/bin/pdftoppm"
                                                    : L"/usr/bin/pdftohtml";
    program_ = machine_program::start(tool, arguments_for(next), path_);
    task_ = next;
}

document_renderer::poll_result document_renderer::fail(std::wstring reason)
{
    failure_ = std::move(reason);
    waiting_.reset();
    task_ = task::none;
    return poll_result::failure;
}

document_renderer::poll_result document_renderer::poll()
{
    if (!busy())
        return poll_result::none;
    if (!program_)
        return fail(no_renderer);
    const std::optional<machine_program::result> result = program_->poll();
    if (!result)
        return poll_result::none;
    const poll_result outcome = finish(std::exchange(task_, task::none), *result);
    start_waiting_request();
    return outcome;
}

document_renderer::poll_result document_renderer::finish(task ended, const machine_program::result& result)
{
    program_.reset();
    if (ended == task::find_links) {
        // A failure to find links is ignored: the page is shown without them.
        links_ = parse_page_links(result.output, own_name);
        return poll_result::links;
    }
    if (result.exit_code != 0)
        return fail(reason_for(result.exit_code));
    if (ended == task::learn_pages) {
        pages_ = parse_page_sizes(result.output);
        return pages_.empty() ? fail(unreadable) : poll_result::pages;
    }
    if (waiting_)
        return poll_result::none; // superseded by a newer request
    picture_ = codec_.decode(result.output);
    if (!picture_)
        return fail(unreadable);
    links_.clear();
    start(task::find_links);
    if (!program_)
        task_ = task::none;
    return poll_result::picture;
}

} // namespace quill
