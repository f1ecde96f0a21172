#include "diagnose/clean_up.h"

#include "diagnose/path_place.h"
#include "diagnose/report.h"
#include "retrieval/download/folder_numbers.h"

#include <algorithm>

namespace quill::diagnose {
namespace {

bool has_download_name(std::wstring_view name)
{
    return name.ends_with(L".pdf");
}

judgement foreign(std::wstring reason)
{
    return {verdict::foreign, std::move(reason)};
}

} // namespace

bool is_download_folder_name(std::wstring_view name)
{
    // The module writes the prefix in lower case only.
    const auto number = cache_folder_number(name);
    return number && *number < folder_numbers::end && name.starts_with(cache_folder_prefix);
}

bool is_download_folder(const folder_entry& entry)
{
    return is_download_folder_name(entry.name) && (entry.is_folder || entry.is_link);
}

clean_up_plan plan_clean_up(const product_settings& settings)
{
    clean_up_plan plan;
    const auto add = [&](const std::wstring& folder) {
        const auto is_same = [&](const std::wstring& other) { return equal_names(other, folder); };
        if (!folder.empty() && std::ranges::none_of(plan.folders, is_same))
            plan.folders.push_back(folder);
    };
    add(settings.system_temp_folder);
    add(settings.low_temp_folder);
    if (settings.system_temp_folder.empty())
        plan.skipped.push_back(L"skipped: the system has no temporary folder: " +
                               settings.system_temp_variable + L" is " + quoted(settings.system_temp_value));
    if (settings.is_temp_folder_set && !is_absolute(settings.temp_folder))
        plan.skipped.push_back(L"skipped: " + settings.temp_variable + L" is " +
                               quoted(settings.temp_folder) + L", which is no full path");
    else if (settings.is_temp_folder_set)
        add(settings.temp_folder);
    return plan;
}

judgement judge(const folder_entry& folder, const std::vector<folder_entry>& contents, file_time now,
                unsigned days)
{
    if (!is_download_folder_name(folder.name))
        return foreign(L"another name");
    file_time newest = folder.newest;
    for (const folder_entry& entry : contents)
        newest = std::max(newest, entry.newest);
    if (newest >= now || now - newest <= days * ticks_per_day)
        return {verdict::too_new, L""};
    if (folder.is_link)
        return foreign(L"a link");
    if (!folder.is_folder)
        return foreign(L"not a folder");
    if (contents.size() > 1)
        return foreign(L"it holds " + number_text(contents.size()) + L" files and folders");
    for (const folder_entry& entry : contents) {
        if (entry.is_link)
            return foreign(L"it holds a link, " + quoted(entry.name));
        if (entry.is_folder)
            return foreign(L"it holds a folder, " + quoted(entry.name));
        if (!has_download_name(entry.name))
            return foreign(L"it holds " + quoted(entry.name) + L", which is no download");
    }
    return {verdict::remove, L""};
}

} // namespace quill::diagnose
